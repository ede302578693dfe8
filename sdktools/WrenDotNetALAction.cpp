#include "sdktools/WrenDotNetALAction.h"

#include "sdktools/WrenDotNetFreeCommandLine.h"

namespace wren {

TALBaseAction::TALBaseAction() {
  MinimumSDKVersion = "1.0";
  SetDefaultSDKVersion("1.0");
}

const TPropertyTable& TALGenericAL::ClassProperties() {
  static const TPropertyTable table =
      ChainProperties(TALBaseAction::ClassProperties(),
                      {StringProperty("Options", &TALGenericAL::Options),
                       StringProperty("StartDir", &TALGenericAL::StartDir)});
  return table;
}

bool TALGenericAL::GetCommandLine(ICommandLineBuilder& builder) {
  return AddFreeCommandLine(*this, Options, builder);
}

bool TALGenericAL::Validate(IWrenActionValidationError& errors) {
  if (StartDir.empty()) {
    errors.AddError("Working folder", "Working folder has not been set");
    return false;
  }
  return true;
}

std::string TALGenericAL::GetStartingDir(const std::string& fileName) {
  (void)fileName;
  return FreeStartingDir(*this, StartDir);
}

}  // namespace wren
