#include "sdktools/WrenDotNetALAction.h"

namespace wren {

TALBaseAction::TALBaseAction() {
  MinimumSDKVersion = "1.0";
  SetDefaultSDKVersion("1.0");
}

}  // namespace wren
