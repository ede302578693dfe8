// The base property page of .NET tool actions: a heading and the SDK or framework version picker.
#pragma once

#include <string>

#include "WrenPluginAPI.h"
#include "dotnet/WrenDotNetAction.h"  // the actions these pages edit, and GetFile for their edits

namespace wren {

/// Lets the user run an action with the default SDK version or a chosen one. Pages of the .NET
/// actions derive from it and add their own controls; the version panel is hidden for tools that
/// are not looked up in a framework or SDK.
class TDotNetToolBaseFrame : public TFrame {
 public:
  static std::string StaticClassName() { return "TDotNetToolBaseFrame"; }

  void InitPage(TWrenAction& action) override;
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  /// The heading and the version panel; pages list theirs after it.
  void ListControls(TWrenPageControls& controls) override;

  /// Whether the version panel applies to the action last read.
  bool VersionInUse() const { return versionInUse_; }

  TLabelModel lblHeading{"Output File"};
  TPanelModel pnlVersion;
  TLabelModel lblVersion{"SDK Version"};
  TRadioButtonModel rbDefaultVersion{"Use Default SDK Version"};
  TRadioButtonModel rbUseVersion{"Use"};
  TComboBoxModel cbVersion;

 protected:
  /// The version panel alone, for pages that show it below their own controls.
  void ListVersionPanel(TWrenPageControls& controls);

 private:
  bool versionInUse_ = false;
};

/// Fills a drop-down with the SDK versions of the installed frameworks, in detection order, and
/// selects the one equal to selected (ignoring case), else the first, else none.
void FillSDKVersions(TComboBoxModel& combo, const std::string& selected);

}  // namespace wren
