// The MSBuild action: builds a project file with the framework's msbuild.exe.
#pragma once

#include <string>
#include <vector>

#include "dotnet/WrenDotNetAction.h"

namespace wren {

/// MSBuild's console verbosity.
enum class TMSLogLevel { llQuiet, llMinimal, llNormal, llDetailed, llDiagnostic };

const std::vector<std::string>& MSLogLevelNames();

/// Builds an MSBuild project with the framework's msbuild.exe; the options travel on the command
/// line, all properties together in one /property: switch.
class TMSBuildAction : public TWrenDotNetAction {
 public:
  TMSBuildAction();

  static std::string StaticClassName() { return "TMSBuildAction"; }
  static std::string GetActionName() { return "MSBuild Project"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 4570; }
  std::string GetQuickHelpFilename() const override { return "msbuild.htm"; }

  TWrenDotNetToolType GetDotNetToolType() const override {
    return TWrenDotNetToolType::ttFramework;
  }
  std::string GetDotNetTool() const override { return "msbuild.exe"; }

  bool Validate(IWrenActionValidationError& errors) override;
  bool GetCommandLine(ICommandLineBuilder& builder) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string BuildFile;
  /// name=value lines.
  TStrings Properties;
  TMSLogLevel LogLevel = TMSLogLevel::llNormal;
  /// Kept with the action for the page; the build does not read it.
  bool OutputToLog = false;
  /// Target names separated by semicolons.
  std::string Targets;
  bool NoLogo = false;
  bool Restricted = false;
};

}  // namespace wren
