// A registry read from files in the .reg export format: the registry backend on POSIX.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "WrenRegistry.h"

namespace wren {

/// Parses .reg text ("REGEDIT4" or "Windows Registry Editor Version 5.00"): [ROOT\key] sections,
/// "name"="string" values and @= defaults, with the escapes of that format. Keys that are named
/// only as parents exist too. Later text adds to earlier; "[-key]" and "name"=- remove.
/// On a syntax error returns nullptr and names the line in error.
std::shared_ptr<IWrenRegistry> ParseRegistryText(const std::string& text, const std::string& fileName,
                                                 std::string& error);

/// Reads and merges the files in order (UTF-8, or UTF-16 with a byte-order mark).
std::shared_ptr<IWrenRegistry> LoadRegistryHive(const std::vector<std::string>& files,
                                                std::string& error);

}  // namespace wren
