// Property page of the NAnt action and the options page of the NAnt options.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "WrenPluginAPI.h"

namespace wren {

/// A two-column grid of NAnt properties: one row per name and value.
struct TNAntPropertyGridModel {
  std::vector<std::string> titles{"Property", "Value"};
  std::vector<std::pair<std::string, std::string>> rows;
};

/// Build file, properties, targets, framework, logging, indentation and banner of a NAnt step.
/// The log file edit is enabled only while output goes to a log.
class TNAntFrame : public TFrame {
 public:
  static constexpr const char* kBuildFilter =
      "NAnt Build Files (*.build)|*.build|All Files (*.*)|*.*";
  static constexpr const char* kLogFilter = "Log Files (*.log)|*.log|All Files (*.*)|*.*";

  TNAntFrame();
  static std::string StaticClassName() { return "TNAntFrame"; }
  std::string PageName() const override { return "NAnt"; }

  void ReadActionData(TWrenAction& action) override;
  /// Rows without a name are not stored.
  void WriteActionData(TWrenAction& action) override;
  bool CheckPage(std::string& message) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  void SetOutputToLog(bool outputToLog);
  bool BrowseBuildFile();
  bool BrowsePropFile();
  bool BrowseLogFile();

  TEditModel edBuildFile{"Build File", ""};
  TLabelModel grpProperties{"Properties"};
  TNAntPropertyGridModel Properties;
  TEditModel edPropFile{"Property File", ""};
  TEditModel edTargets{"Targets", ""};
  TLabelModel lblTargetsHint{"separate multiple targets with spaces"};
  TEditModel edFramework{"Default Framework", ""};
  TComboBoxModel cbLogLevel;
  TCheckBoxModel cbOutputToLog{"Output to Log File"};
  TEditModel edLogFile{"Log File", ""};
  TComboBoxModel cbIndentLevel;
  TCheckBoxModel cbNoLogo{"No Logo"};
};

/// Where nant.exe is installed.
class TNAntOptionsFrame : public TWrenOptionsFrame {
 public:
  static std::string StaticClassName() { return "TNAntOptionsFrame"; }
  std::string GetPageName() const override { return ""; }
  void ReadOptions(TWrenOptionsObject& options) override;
  void WriteOptions(TWrenOptionsObject& options) override;
  void ListControls(TWrenPageControls& controls) override;
  bool BrowseNAntLocation();

  TEditModel edNAntLocation{"Location of NAnt.exe", ""};
};

}  // namespace wren
