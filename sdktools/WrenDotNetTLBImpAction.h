// Importing a COM type library into an interop assembly with the SDK's TLBImp.
#pragma once

#include <string>

#include "dotnet/WrenDotNetAction.h"

namespace wren {

/// Names the tool (TLBImp.exe in the SDK). Publishes nothing; not registered.
class TTLBImportBaseAction : public TWrenDotNetAction {
 public:
  static std::string StaticClassName() { return "TTLBImportBaseAction"; }
  static std::string GetActionName() { return "TlbImp"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }

  TWrenDotNetToolType GetDotNetToolType() const override { return TWrenDotNetToolType::ttSDK; }
  std::string GetDotNetTool() const override { return "TLBImp.exe"; }
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    (void)builder;
    return true;
  }
};

/// Builds an interop assembly from a type library: TLBImp <tlb>[\<resource id>] /out:... [...].
class TTLBImportAction : public TTLBImportBaseAction {
 public:
  static std::string StaticClassName() { return "TTLBImportAction"; }
  static std::string GetActionName() { return "Type Library Import"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2720; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\DotNetTLBImport.html"; }

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string TypeLibraryName;
  std::string ResourceID;
  std::string AssemblyOutFile;
  std::string Namespace;
  std::string AsmVersion;
  TStrings References;
  std::string PublicKeyFile;
  std::string KeyFile;
  std::string KeyContainer;
  bool DelaySign = false;
  bool AllowUnsafe = false;
  bool NoLogo = false;
  bool Silent = false;
  bool Verbose = false;
  bool Primary = false;
  bool SysArray = false;
  bool Transform = false;
  bool StrictRef = false;
};

}  // namespace wren
