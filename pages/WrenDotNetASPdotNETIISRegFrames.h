// Property page of the Run ASPNET_REGIIS.EXE action.
#pragma once

#include <string>

#include "pages/WrenDotNetFreeCommandLineFrame.h"

namespace wren {

/// The IIS registration tool's whole command line and its working folder.
class TASPdotNetIISInstallFrame : public TFreeCommandLineFrame {
 public:
  TASPdotNetIISInstallFrame();
  static std::string StaticClassName() { return "TASPdotNetIISInstallFrame"; }
  std::string PageName() const override { return "ASP .Net IIS Install"; }
};

}  // namespace wren
