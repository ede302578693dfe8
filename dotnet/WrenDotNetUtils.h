// Registry lookups shared by the .NET actions: type libraries, the GAC and assembly folders.
#pragma once

#include <cstdint>
#include <string>

#include "WrenRegistry.h"

namespace wren {

/// The win32 file of a registered type library, looked up under its hexadecimal version first and
/// its decimal version second; "" when not registered. guid is written with braces.
std::string FindTypLib(const std::string& guid, int32_t major, int32_t minor, int32_t localeId);

/// The global assembly cache folder: Fusion's CacheLocation when set, otherwise the Windows
/// directory's assembly/GAC/ when it exists, otherwise "".
std::string GetGACFolder();

/// The folder of a project's reference folder key (the text after its last delimiter): the primary
/// interop assemblies folder, or the registered AssemblyFolders entry; "" when unknown.
std::string FindAssemblyKeyFolder(const std::string& referenceFolder);

/// The first subkey of root\keyPath whose name contains assemblyName (ignoring case), with every
/// '|' turned into a path delimiter; "" when none matches.
std::string FindAssemblyPath(const std::string& assemblyName, TRegistryRoot root,
                             const std::string& keyPath);

}  // namespace wren
