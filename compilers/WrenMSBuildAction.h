// The MSBuild action: builds a project file with the framework's msbuild.exe.
#pragma once

#include <string>
#include <vector>

#include "dotnet/WrenDotNetAction.h"

namespace wren {

/// MSBuild's console verbosity.
enum class TMSLogLevel { llQuiet, llMinimal, llNormal, llDetailed, llDiagnostic };

const std::vector<std::string>& MSLogLevelNames();

/// The command line with every ';' inside a quoted part of its /property: switch written as
/// MSBuild's escape "%3B". MSBuild on Windows reads its raw command line, where the quotes keep
/// such a ';' inside one value; a program started with an argv gets the value without its quotes,
/// and MSBuild would cut it there into two properties. The escape means ';' on every platform.
std::string EscapeQuotedPropertySeparators(const std::string& commandLine);

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
  /// On POSIX, the command line with each property value kept whole
  /// (EscapeQuotedPropertySeparators).
  std::string GetProcessCommandLine(const std::string& commandLine) override;

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
