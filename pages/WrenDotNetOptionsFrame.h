// The options page of the .NET options: the default SDK version.
#pragma once

#include <string>

#include "WrenPluginAPI.h"

namespace wren {

/// Picks the default .NET SDK version among the installed ones.
class TDotNetOptionsFrame : public TWrenOptionsFrame {
 public:
  static std::string StaticClassName() { return "TDotNetOptionsFrame"; }

  std::string GetPageName() const override { return ""; }
  void ReadOptions(TWrenOptionsObject& options) override;
  void WriteOptions(TWrenOptionsObject& options) override;
  void ListControls(TWrenPageControls& controls) override;

  TLabelModel lblHeading{"Default .NET SDK Version"};
  TComboBoxModel cbSDKVersion;
};

}  // namespace wren
