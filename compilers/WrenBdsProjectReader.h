// Reads C#Builder project files (.bdsproj, the Borland container with a CSharp.Personality) into
// the same plain data as a Visual Studio project, so that one loader builds both.
#pragma once

#include <string>

#include "compilers/WrenVSProjectReader.h"

namespace wren {

/// Loads a C#Builder project. The container holds one set of options (the active
/// configuration's), so configName is only recorded. Options are looked up by name in the
/// personality's option groups; the file list gives sources (.cs), resources (.resx and files of
/// a resource container) and referenced assemblies (entries with an AssemblyName or an assembly
/// container). False with the cause in error when the file is missing, not a Borland project, or
/// of another personality.
bool ReadBdsProject(const std::string& fileName, const std::string& configName,
                    TVSProject& project, std::string& error);

}  // namespace wren
