// Actions that install assemblies into, remove them from, and manage the download cache of the
// global assembly cache through the SDK's gacutil.
#pragma once

#include <string>

#include "dotnet/WrenDotNetAction.h"

namespace wren {

/// The common ground of the three gacutil actions: every property their pages edit, the tool, and
/// the switches install and uninstall share (forced operation, traced reference). Not registered.
class TWrenGACAction : public TWrenDotNetAction {
 public:
  TWrenGACAction();

  static std::string StaticClassName() { return "TWrenGACAction"; }
  static std::string GetActionName() { return "GAC Util"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }

  TWrenDotNetToolType GetDotNetToolType() const override { return TWrenDotNetToolType::ttSDK; }
  std::string GetDotNetTool() const override { return "gacutil.exe"; }

  /// Appends "/f" and the "/r" reference triple; false when a reference field fails to expand.
  bool GetCommandLine(ICommandLineBuilder& builder) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string AssemblyName;
  std::string AssemblyPath;
  std::string AssemblyListFile;
  bool UseListFile = false;
  bool Force = false;
  bool ReferenceCount = false;
  std::string RefScheme;
  std::string RefID;
  std::string RefDescription;
};

/// Installs one assembly (/i) or every assembly of a list file (/il) into the GAC.
class TGACInstallAction : public TWrenGACAction {
 public:
  TGACInstallAction();

  static std::string StaticClassName() { return "TGACInstallAction"; }
  static std::string GetActionName() { return "GAC Install"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2630; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\GACInstall.html"; }

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  bool Validate(IWrenActionValidationError& errors) override;
};

/// Removes an assembly from the GAC by display name or by file (/u), or a list of them (/ul).
class TGACUninstallAction : public TWrenGACAction {
 public:
  TGACUninstallAction();

  static std::string StaticClassName() { return "TGACUninstallAction"; }
  static std::string GetActionName() { return "GAC Uninstall"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2640; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\GACUninstall.html"; }

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  bool UseAssemblyPath = false;
};

/// Lists (/ldl) or deletes (/cdl) the download cache. Force and the reference have no effect here.
class TGACListAction : public TWrenGACAction {
 public:
  static std::string StaticClassName() { return "TGACListAction"; }
  static std::string GetActionName() { return "GAC Download Cache"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2650; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\GACList.html"; }

  bool GetCommandLine(ICommandLineBuilder& builder) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  bool DeleteDownloadCache = false;
};

}  // namespace wren
