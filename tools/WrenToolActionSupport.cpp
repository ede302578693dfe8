#include "tools/WrenToolActionSupport.h"

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

bool ValidateToolLocation(IWrenActionValidationError& errors, const std::string& location,
                          const std::string& program, const std::string& optionsField) {
  if (location.empty()) {
    errors.AddError(optionsField,
                    "Path to " + program + " not defined, please check Tools->Options");
    return false;
  }
  if (!FileExists(location)) {
    errors.AddError("Options", "Path to " + program + " not correct, please check Tools->Options");
    return false;
  }
  return true;
}

bool AddExtraSwitches(TCustomWrenAction& action, ICommandLineBuilder& builder,
                      const TStrings& lines) {
  for (const std::string& line : lines) {
    if (Trim(line).empty()) continue;
    std::string value;
    if (!action.TryExpandExpression("Extra Switch", Trim(line), false, value)) return false;
    builder.AddArgument("", value, 0);
  }
  return true;
}

bool AddEachLine(TCustomWrenAction& action, ICommandLineBuilder& builder, const TStrings& lines,
                 const std::string& caption, const std::string& switchText) {
  for (const std::string& line : lines) {
    if (Trim(line).empty()) continue;
    std::string value;
    if (!action.TryExpandExpression(caption, line, false, value)) return false;
    builder.AddArgument(switchText, value, 2);
  }
  return true;
}

std::string FirstPathDir(TCustomWrenAction& action, const TStrings& paths,
                         const std::string& fallback) {
  for (const std::string& path : paths) {
    if (Trim(path).empty()) continue;
    const std::string dir = ExtractFilePath(action.ExpandExpression(path));
    if (!dir.empty()) return dir;
    break;
  }
  return ExtractFilePath(fallback);
}

}  // namespace wren
