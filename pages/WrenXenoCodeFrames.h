// Property page of the XenoCode action.
#pragma once

#include <string>

#include "WrenPluginAPI.h"

namespace wren {

/// The Xenocode project file and the switches passed before it, as written.
class TXenoCodeFrame : public TFrame {
 public:
  static constexpr const char* kProjectFilter = "All Files (*.*)|*.*";
  static std::string StaticClassName() { return "TXenoCodeFrame"; }
  std::string PageName() const override { return "XenoCode"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  bool CheckPage(std::string& message) override;
  bool BrowseProjectFile();
  void ListControls(TWrenPageControls& controls) override;

  TEditModel edProjectFile{"Project File", ""};
  TMemoModel mmExtraSwitches{"Switches (one per line)", {}};
  TLabelModel lblHint{
      "Xenocode's switches are not publicly documented; they are passed as written"};
};

}  // namespace wren
