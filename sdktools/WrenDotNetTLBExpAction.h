// Exporting a COM type library from a .NET assembly with the SDK's TLBExp.
#pragma once

#include <string>

#include "dotnet/WrenDotNetAction.h"

namespace wren {

/// Names the tool (TLBExp.exe in the SDK). Publishes nothing; not registered.
class TTLBExportBaseAction : public TWrenDotNetAction {
 public:
  static std::string StaticClassName() { return "TTLBExportBaseAction"; }
  static std::string GetActionName() { return "TlbExp"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }

  TWrenDotNetToolType GetDotNetToolType() const override { return TWrenDotNetToolType::ttSDK; }
  std::string GetDotNetTool() const override { return "TLBExp.exe"; }
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    (void)builder;
    return true;
  }
};

/// Writes the type library of an assembly: TLBExp <assembly> /out:<file> [...].
class TTLBExportAction : public TTLBExportBaseAction {
 public:
  static std::string StaticClassName() { return "TTLBExportAction"; }
  static std::string GetActionName() { return "Type Library Export"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2730; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\DotNetTLBExport.html"; }

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string OutputFile;
  std::string AssemblyName;
  bool NoLogo = false;
  bool Silent = false;
  std::string NamesCaseFile;
};

}  // namespace wren
