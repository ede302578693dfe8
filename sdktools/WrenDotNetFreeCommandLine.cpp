#include "sdktools/WrenDotNetFreeCommandLine.h"

namespace wren {

bool AddFreeCommandLine(TCustomWrenAction& action, const std::string& options,
                        ICommandLineBuilder& builder) {
  std::string text;
  if (!action.TryExpandExpression("Options", options, false, text)) return false;
  builder.SetSeparator(" ");
  // The user wrote the whole line: it goes to the tool exactly as written.
  builder.AddArgument(text, "", 2);
  return true;
}

std::string FreeStartingDir(TCustomWrenAction& action, const std::string& startDir) {
  std::string dir;
  if (!action.TryExpandExpression("Working Directory", startDir, true, dir)) {
    action.SendMessage("Warning: working directory is blank");
    return "";
  }
  return dir;
}

}  // namespace wren
