// Running a NAnt build file.
#pragma once

#include <string>

#include "WrenExecuteAction.h"

namespace wren {

/// NAnt's verbosity.
enum class TNAntLogLevel { llQuiet, llNormal, llVerbose, llDebug };
/// The indentation of NAnt's output: NAnt's own, or 0 to 6 levels.
enum class TNAntIndent { iDefault, i0, i1, i2, i3, i4, i5, i6 };

/// A build step that runs nant.exe (from the NAnt options' NAntLocation) on a build file with
/// properties, targets and logging switches. A missing nant.exe or build file ends the step before
/// anything runs.
class TNAntAction : public TWrenExecuteAbstractAction {
 public:
  static std::string StaticClassName() { return "TNAntAction"; }
  static std::string GetActionName() { return "NAnt Project"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  std::string GetQuickHelpFilename() const override { return "Plugins\\NAnt.html"; }

  std::string GetExecutable() override;
  bool GetCommandLine(ICommandLineBuilder& builder) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string BuildFile;
  TStrings Properties;   // name=value lines passed as -D: properties
  std::string PropFile;  // kept with the action; not passed to NAnt
  TNAntLogLevel LogLevel = TNAntLogLevel::llNormal;
  bool OutputToLog = false;
  std::string LogFile;
  std::string Targets;   // blank-separated
  TNAntIndent IndentLevel = TNAntIndent::iDefault;
  bool NoLogo = false;
  std::string Framework;
};

}  // namespace wren
