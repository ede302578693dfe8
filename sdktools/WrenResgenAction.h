// Compiling resource files (.resx, .txt) to binary .resources with the SDK's resgen.
#pragma once

#include <string>

#include "dotnet/WrenDotNetAction.h"

namespace wren {

/// Runs resgen on the input text and, when given, an output file: each goes to the tool as one
/// quoted argument.
class TWrenResGenAction : public TWrenDotNetAction {
 public:
  TWrenResGenAction();

  static std::string StaticClassName() { return "TWrenResGenAction"; }
  static std::string GetActionName() { return "Resource Compiler [ResGen]"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2890; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\DotNetResGen.html"; }

  TWrenDotNetToolType GetDotNetToolType() const override { return TWrenDotNetToolType::ttSDK; }
  std::string GetDotNetTool() const override { return "resgen.exe"; }

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string InputFiles;
  std::string OutputFile;
};

}  // namespace wren
