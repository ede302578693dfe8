// The page shape the free-command-line actions share: the tool's options and a working folder.
#pragma once

#include <string>

#include "WrenPluginAPI.h"

namespace wren {

/// Edits the "Options" and "StartDir" properties of a free-command-line action (through its
/// published properties, so any such action fits). Subclasses give the captions and page name.
class TFreeCommandLineFrame : public TFrame {
 public:
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;
  /// The folder dialog "Select the working folder", starting from the expanded folder; true with
  /// the edit set when a folder was chosen.
  bool BrowseWorkingFolder();

  TEditModel edOptions;
  TEditModel edWorkingFolder;
};

}  // namespace wren
