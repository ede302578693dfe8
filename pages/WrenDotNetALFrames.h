// Property page of the Run AL.EXE action.
#pragma once

#include <string>

#include "pages/WrenDotNetFreeCommandLineFrame.h"

namespace wren {

/// The linker's whole command line and its working folder.
class TALGenericFrame : public TFreeCommandLineFrame {
 public:
  TALGenericFrame();
  static std::string StaticClassName() { return "TALGenericFrame"; }
  std::string PageName() const override { return "Run AL.EXE"; }
};

}  // namespace wren
