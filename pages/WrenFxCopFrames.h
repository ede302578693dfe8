// Property pages of the FxCop action.
#pragma once

#include <string>

#include "WrenPluginAPI.h"
#include "dotnet/WrenDotNetAction.h"  // GetFile for the browse buttons

namespace wren {

/// What FxCop analyses: an FxCop project or target assemblies, with the folders and imports that
/// resolve them. The controls of the choice not taken are disabled.
class TFrameFxCopTargets : public TFrame {
 public:
  static constexpr const char* kProjectFilter =
      "FxCop Projects (*.FxCop)|*.FxCop|All Files (*.*)|*.*";
  TFrameFxCopTargets() { SetUseProjectFile(false); }
  static std::string StaticClassName() { return "TFrameFxCopTargets"; }
  std::string PageName() const override { return "Targets"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  bool CheckPage(std::string& message) override;
  void SetUseProjectFile(bool useProjectFile);
  bool BrowseProjectFile();
  /// The folder dialog for the platform directory; false (unchanged) when cancelled.
  bool BrowsePlatformDirectory();
  void ListControls(TWrenPageControls& controls) override;

  TRadioButtonModel rbTargets{"Target Assemblies"};
  TRadioButtonModel rbProjectFile{"FxCop Project File"};
  TEditModel edProjectFile{"Project File", ""};
  TMemoModel mmTargets{"Targets", {}};
  TMemoModel mmDependencyDirectories{"Dependency Directories", {}};
  TEditModel edPlatformDirectory{"Platform Directory", ""};
  TCheckBoxModel cbSearchGac{"Search the GAC for missing references"};
  TMemoModel mmImports{"Import Reports", {}};
};

/// Rule libraries (a leading + or - enables or disables all their rules), single rules and the
/// spelling dictionary.
class TFrameFxCopRules : public TFrame {
 public:
  static constexpr const char* kDictionaryFilter = "XML Files (*.xml)|*.xml|All Files (*.*)|*.*";
  static std::string StaticClassName() { return "TFrameFxCopRules"; }
  std::string PageName() const override { return "Rules"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  bool BrowseDictionary() { return GetFile(edDictionary, kDictionaryFilter); }
  void ListControls(TWrenPageControls& controls) override;

  TMemoModel mmRuleLibraries{"Rule Libraries", {}};
  TMemoModel mmRuleIds{"Rules (Category#CheckId)", {}};
  TEditModel edDictionary{"Custom Dictionary", ""};
};

/// Where the findings go (report, style sheets, console) and how FxCop runs.
class TFrameFxCopOptions : public TFrame {
 public:
  static constexpr const char* kReportFilter = "XML Files (*.xml)|*.xml|All Files (*.*)|*.*";
  static constexpr const char* kXslFilter = "Style Sheets (*.xsl)|*.xsl|All Files (*.*)|*.*";
  static std::string StaticClassName() { return "TFrameFxCopOptions"; }
  std::string PageName() const override { return "Options"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  bool CheckPage(std::string& message) override;
  bool BrowseOutputFile() { return GetFile(edOutputFile, kReportFilter); }
  bool BrowseOutputXsl() { return GetFile(edOutputXsl, kXslFilter); }
  bool BrowseConsoleXsl() { return GetFile(edConsoleXsl, kXslFilter); }
  void ListControls(TWrenPageControls& controls) override;

  TEditModel edOutputFile{"Report File", ""};
  TEditModel edOutputXsl{"Report XSL", ""};
  TCheckBoxModel cbApplyOutputXsl{"Apply the XSL to the report"};
  TCheckBoxModel cbForceOutput{"Write the report even without messages"};
  TCheckBoxModel cbToConsole{"Messages to the console"};
  TEditModel edConsoleXsl{"Console XSL", ""};
  TCheckBoxModel cbSummary{"Summary"};
  TCheckBoxModel cbVerbose{"Verbose"};
  TCheckBoxModel cbQuiet{"Quiet"};
  TCheckBoxModel cbUpdateProject{"Save the results in the project"};
  TCheckBoxModel cbIgnoreGeneratedCode{"Ignore generated code"};
  TEditModel edTimeout{"Rule timeout (seconds)", ""};
};

/// The types analysed alone, one per line (a trailing * is a wildcard).
class TFrameFxCopTypesAndMembers : public TFrame {
 public:
  static std::string StaticClassName() { return "TFrameFxCopTypesAndMembers"; }
  std::string PageName() const override { return "Types and Members"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TMemoModel mmTypes{"Types", {}};
};

/// Extra switches passed as written, and how the result is judged.
class TFrameFxCopAdditional : public TFrame {
 public:
  static std::string StaticClassName() { return "TFrameFxCopAdditional"; }
  std::string PageName() const override { return "Additional"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TMemoModel mmExtraSwitches{"Extra Switches", {}};
  TCheckBoxModel cbReferenceErrorsFail{"Fail on assembly reference errors"};
  TCheckBoxModel cbFailOnMessages{"Fail when the report lists any message"};
};

}  // namespace wren
