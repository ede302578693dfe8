// The property pages of the AssemblyInfo updater: the files and switches, and the attribute grid.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "WrenPluginAPI.h"

namespace wren {

/// The options page: the file list and the three switches of the updater.
class TAssemblyInfoUpdaterFrame : public TFrame {
 public:
  TAssemblyInfoUpdaterFrame();
  static std::string StaticClassName() { return "TAssemblyInfoUpdaterFrame"; }
  std::string PageName() const override { return "Options"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TMemoModel Files;
  TCheckBoxModel BackupFiles;
  TCheckBoxModel Recurse;
  TCheckBoxModel UpdateOnly;
};

/// A push button of a page.
struct TButtonModel {
  std::string caption;
  bool enabled = true;
};

/// A grid of name/value rows under two column titles.
struct TNameValueGridModel {
  std::vector<std::string> titles;
  std::vector<std::pair<std::string, std::string>> rows;
};

/// The attributes page: one row per attribute name and the value to set.
class TAssemblyInfoUpdaterEntriesFrame : public TFrame {
 public:
  TAssemblyInfoUpdaterEntriesFrame();
  static std::string StaticClassName() { return "TAssemblyInfoUpdaterEntriesFrame"; }
  std::string PageName() const override { return "Attributes"; }
  void ReadActionData(TWrenAction& action) override;
  /// Rows without a name (a new row never filled in) are not stored.
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  /// The grid (rows edited, added or removed by a change), the hint and the add button.
  void ListControls(TWrenPageControls& controls) override;

  /// The "&Add" button and Shift+Insert: a new empty row at the end.
  void AddRow();
  /// Ctrl+Del: removes the row; an index outside the grid does nothing.
  void RemoveRow(int index);

  TNameValueGridModel Grid;
  TLabelModel Hint;
  TButtonModel AddButton;
};

}  // namespace wren
