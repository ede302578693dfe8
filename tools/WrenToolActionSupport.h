// Steps shared by the actions that run an outside tool from the location in its options.
#pragma once

#include <string>

#include "WrenActionAPI.h"
#include "WrenCommandLine.h"

namespace wren {

/// Reports a tool location that is not set ("<program> Options") or names no file ("Options"),
/// in the words the NUnit and NAnt actions use; false when it reported.
bool ValidateToolLocation(IWrenActionValidationError& errors, const std::string& location,
                          const std::string& program, const std::string& optionsField);

/// Adds each non-blank line, expanded under "Extra Switch", as it stands: no quoting, so a line
/// may carry several words. False when an expansion fails.
bool AddExtraSwitches(TCustomWrenAction& action, ICommandLineBuilder& builder,
                      const TStrings& lines);

/// Adds switchText + value for each line of the list, expanded under caption; blank lines are
/// skipped. False when an expansion fails.
bool AddEachLine(TCustomWrenAction& action, ICommandLineBuilder& builder, const TStrings& lines,
                 const std::string& caption, const std::string& switchText);

/// The directory of the first non-blank path (expanded); otherwise that of fallback.
std::string FirstPathDir(TCustomWrenAction& action, const TStrings& paths,
                         const std::string& fallback);

}  // namespace wren
