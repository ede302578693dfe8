// Property page of the Dotfuscator action.
#pragma once

#include <string>

#include "WrenPluginAPI.h"

namespace wren {

/// The configuration file and what the command line adds to or overrides in it: properties,
/// inputs, output and map, renaming, and the run's verbosity. Verbose is disabled while Quiet is
/// checked, as quiet wins.
class TDotfuscatorFrame : public TFrame {
 public:
  static constexpr const char* kConfigFilter =
      "Dotfuscator Configurations (*.xml)|*.xml|All Files (*.*)|*.*";
  static constexpr const char* kMapFilter = "Map Files (*.xml)|*.xml|All Files (*.*)|*.*";
  TDotfuscatorFrame();
  static std::string StaticClassName() { return "TDotfuscatorFrame"; }
  std::string PageName() const override { return "Dotfuscator"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  bool CheckPage(std::string& message) override;
  void SetQuiet(bool quiet);
  bool BrowseConfigFile();
  bool BrowseOutputDirectory();
  bool BrowseMakeConfig();
  bool BrowseMapFile();
  void ListControls(TWrenPageControls& controls) override;

  TEditModel edConfigFile{"Configuration File", ""};
  TCheckBoxModel cbQuiet{"Quiet"};
  TCheckBoxModel cbVerbose{"Verbose"};
  TCheckBoxModel cbInvestigate{"Investigate only (map file, no output)"};
  TMemoModel mmProperties{"Properties (name=value per line)", {}};
  TMemoModel mmInputAssemblies{"Input Assemblies", {}};
  TEditModel edOutputDirectory{"Output Directory", ""};
  TEditModel edMakeConfig{"Save effective configuration to", ""};
  TCheckBoxModel cbDisableAll{"Disable all transforms"};
  TComboBoxModel cbRename;
  TComboBoxModel cbKeep;
  TEditModel edMapFile{"Map File", ""};
  TCheckBoxModel cbOverwriteMap{"Overwrite the map file"};
  TMemoModel mmExtraSwitches{"Extra Switches", {}};
};

}  // namespace wren
