#include "WrenAssemblyInfoUpdaterFrame.h"

#include "assemblyinfo/WrenAssemblyInfoUpdaterAction.h"
#include "WrenUtils.h"
#include "pages/WrenPageGrid.h"

namespace wren {

namespace {

// Pages are only ever given the action they were registered for.
TWrenAssemblyInfoUpdaterAction& Updater(TWrenAction& action) {
  return dynamic_cast<TWrenAssemblyInfoUpdaterAction&>(action);
}

}  // namespace

TAssemblyInfoUpdaterFrame::TAssemblyInfoUpdaterFrame() {
  Files.caption = "Files";
  BackupFiles.caption = "Backup Files";
  Recurse.caption = "Recurse Subdirectories";
  UpdateOnly.caption = "Update Only";
}

void TAssemblyInfoUpdaterFrame::ReadActionData(TWrenAction& action) {
  const TWrenAssemblyInfoUpdaterAction& a = Updater(action);
  Files.lines = a.Selection;
  BackupFiles.checked = a.BackupFiles;
  Recurse.checked = a.Recurse;
  UpdateOnly.checked = a.UpdateOnly;
}

void TAssemblyInfoUpdaterFrame::WriteActionData(TWrenAction& action) {
  TWrenAssemblyInfoUpdaterAction& a = Updater(action);
  a.Selection = Files.lines;
  a.BackupFiles = BackupFiles.checked;
  a.Recurse = Recurse.checked;
  a.UpdateOnly = UpdateOnly.checked;
}

TAssemblyInfoUpdaterEntriesFrame::TAssemblyInfoUpdaterEntriesFrame() {
  Grid.titles = {"Attribute", "Value"};
  Hint.caption =
      "Use Ctrl+Del to remove a variable from the list. Use Shift+Insert to add a new Attribute.";
  AddButton.caption = "&Add";
}

void TAssemblyInfoUpdaterEntriesFrame::ReadActionData(TWrenAction& action) {
  Grid.rows.clear();
  for (const std::string& line : Updater(action).Attributes)
    Grid.rows.emplace_back(NameOfLine(line), ValueOfLine(line));
}

void TAssemblyInfoUpdaterEntriesFrame::WriteActionData(TWrenAction& action) {
  TStrings lines;
  for (const auto& [name, value] : Grid.rows)
    if (!Trim(name).empty()) lines.push_back(name + "=" + value);
  Updater(action).Attributes = std::move(lines);
}

void TAssemblyInfoUpdaterEntriesFrame::AddRow() { Grid.rows.emplace_back(); }

void TAssemblyInfoUpdaterEntriesFrame::RemoveRow(int index) {
  if (index >= 0 && index < static_cast<int>(Grid.rows.size()))
    Grid.rows.erase(Grid.rows.begin() + index);
}

void TAssemblyInfoUpdaterFrame::ListControls(TWrenPageControls& controls) {
  controls.Memo("Files", Files);
  controls.CheckBox("BackupFiles", BackupFiles);
  controls.CheckBox("Recurse", Recurse);
  controls.CheckBox("UpdateOnly", UpdateOnly);
}

void TAssemblyInfoUpdaterEntriesFrame::ListControls(TWrenPageControls& controls) {
  NameValueGrid(controls, "Grid", PageName(), Grid.titles, Grid.rows);
  controls.Label("Hint", Hint);
  controls.Button("AddButton", AddButton.caption, [this] { AddRow(); }, AddButton.enabled);
}

std::vector<TWrenPagePropertyInfo> TAssemblyInfoUpdaterFrame::PropertyInfo() const {
  return {{"Selection", Files.caption},
          {"BackupFiles", BackupFiles.caption},
          {"Recurse", Recurse.caption},
          {"UpdateOnly", UpdateOnly.caption}};
}

std::vector<TWrenPagePropertyInfo> TAssemblyInfoUpdaterEntriesFrame::PropertyInfo() const {
  // The grid fills the page, so the tab names it.
  return {{"Attributes", PageName(), Hint.caption}};
}

}  // namespace wren
