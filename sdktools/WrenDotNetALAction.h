// Running the SDK's assembly linker al with a command line the user writes.
#pragma once

#include <string>

#include "dotnet/WrenDotNetAction.h"
#include "sdktools/WrenDotNetFreeCommandLine.h"

namespace wren {

/// Names the tool (al.exe in the SDK) and its version settings. Publishes nothing; not registered.
class TALBaseAction : public TWrenDotNetAction {
 public:
  TALBaseAction();

  static std::string StaticClassName() { return "TALBaseAction"; }
  static std::string GetActionName() { return "AL"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }

  TWrenDotNetToolType GetDotNetToolType() const override { return TWrenDotNetToolType::ttSDK; }
  std::string GetDotNetTool() const override { return "al.exe"; }
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    (void)builder;
    return true;
  }
};

/// Runs al with the user's whole options text in the user's working folder.
class TALGenericAL : public TFreeCommandLineAction<TALBaseAction> {
 public:
  TALGenericAL() : TFreeCommandLineAction("Working folder") {}

  static std::string StaticClassName() { return "TALGenericAL"; }
  static std::string GetActionName() { return "Run AL.EXE"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2750; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\DotNetAL.html"; }
};

}  // namespace wren
