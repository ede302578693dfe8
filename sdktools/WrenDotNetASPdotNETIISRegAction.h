// Running the framework's ASP.NET IIS registration tool with a command line the user writes.
#pragma once

#include <cstdint>
#include <string>

#include "dotnet/WrenDotNetAction.h"
#include "sdktools/WrenDotNetFreeCommandLine.h"

namespace wren {

/// Names the tool (Aspnet_regiis.exe in the framework directory). Publishes nothing; not
/// registered.
class TASPIISRegBaseAction : public TWrenDotNetAction {
 public:
  static std::string StaticClassName() { return "TASPIISRegBaseAction"; }
  static std::string GetActionName() { return "ASP.Net IIS Registration"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }

  TWrenDotNetToolType GetDotNetToolType() const override {
    return TWrenDotNetToolType::ttFramework;
  }
  std::string GetDotNetTool() const override { return "Aspnet_regiis.exe"; }
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    (void)builder;
    return true;
  }
};

/// Runs the tool with the user's options in the user's working folder, and judges the run by its
/// output as well as its exit code: any line on standard output or error fails the step.
class TASPIISRegGeneric : public TFreeCommandLineAction<TASPIISRegBaseAction> {
 public:
  TASPIISRegGeneric() : TFreeCommandLineAction("Working folder") {}

  static std::string StaticClassName() { return "TASPIISRegGeneric"; }
  static std::string GetActionName() { return "ASP.Net IIS Registration"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2760; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\DotNetASPIISReg.html"; }

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  void OnStdOutData(const std::string& text) override;
  void OnStdErrData(const std::string& text) override;
  /// Success only with exit code 0 and no output line since the command line was built.
  bool InterpretResult(int32_t exitCode) override;

 private:
  bool runResult_ = false;
};

}  // namespace wren
