// Running NUnit's console runner over a test project or a list of test assemblies.
#pragma once

#include <string>

#include "WrenExecuteAction.h"

namespace wren {

/// A build step that runs the NUnit console runner found at the NUnit options' NUnitLocation, in
/// the folder of the project file or first assembly. The step succeeds when every test passed
/// (exit code 0).
class TWrenNUnitAction : public TWrenExecuteAbstractAction {
 public:
  TWrenNUnitAction();

  static std::string StaticClassName() { return "TWrenNUnitAction"; }
  static std::string GetActionName() { return "NUnit"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  std::string GetQuickHelpFilename() const override { return "Plugins\\NUnit.html"; }

  std::string GetExecutable() override;
  bool GetCommandLine(ICommandLineBuilder& builder) override;
  std::string GetStartingDir(const std::string& fileName) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  bool UseProjectFile = false;
  std::string ProjectFile;  // an NUnit project
  TStrings Assemblies;      // test assemblies, one per line
  std::string Fixture;
  std::string XMLOutputFile;
  std::string TransformFile;
  bool NoLogo = false;
  bool XMLToConsole = false;
  std::string ProjectConfig;
};

}  // namespace wren
