// The property page of the MSBuild action.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "pages/WrenDotNetBaseFrame.h"

namespace wren {

/// A two-column grid of MSBuild properties: one row per name and value.
struct TMSBuildPropertyGridModel {
  std::vector<std::string> titles;
  std::vector<std::pair<std::string, std::string>> rows;
};

/// Project file, properties, targets, logging level, the two switches and the SDK version.
class TMSBuildFrame : public TDotNetToolBaseFrame {
 public:
  TMSBuildFrame();
  static std::string StaticClassName() { return "TMSBuildFrame"; }
  std::string PageName() const override { return "MSBuild"; }

  void InitPage(TWrenAction& action) override;
  void ReadActionData(TWrenAction& action) override;
  /// Rows without a name are not stored.
  void WriteActionData(TWrenAction& action) override;
  bool CheckPage(std::string& message) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  /// Its own controls in the order of their groups, then the version panel.
  void ListControls(TWrenPageControls& controls) override;

  /// The file dialog for the project file; false (unchanged) when cancelled.
  bool BrowseBuildFile();

  TLabelModel grpProjectFile{"Project File"};
  TEditModel BuildFile;
  TLabelModel grpProperties{"Properties"};
  TMSBuildPropertyGridModel Properties;
  TLabelModel grpTargets{"Targets"};
  TEditModel Targets;
  TLabelModel TargetsHint{"separate multiple targets with semi-colons"};
  TLabelModel grpLogOptions{"Log Options"};
  TComboBoxModel LogLevel;
  TLabelModel grpOtherOptions{"Other Options"};
  TCheckBoxModel NoLogo{"Surpress display of logo banner"};
  TCheckBoxModel Restricted{"Restricted (build process runs with fewer permissions)"};
};

}  // namespace wren
