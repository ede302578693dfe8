// What the free-command-line actions (Run SN.EXE, Run AL.EXE, Run ASPNET_REGIIS.EXE) share: the
// user's whole options text as the command line, and the user's working folder.
#pragma once

#include <string>

#include "WrenActionAPI.h"
#include "WrenCommandLine.h"

namespace wren {

/// Expands options (caption "Options", blank allowed) and appends it as one switch without value,
/// neither split nor quoted, after setting the separator to one blank. False when the expansion
/// fails.
bool AddFreeCommandLine(TCustomWrenAction& action, const std::string& options,
                        ICommandLineBuilder& builder);

/// The expanded working folder (caption "Working Directory", blank fails). When the expansion
/// fails, logs "Warning: working directory is blank" and answers "" (the host's directory).
std::string FreeStartingDir(TCustomWrenAction& action, const std::string& startDir);

}  // namespace wren
