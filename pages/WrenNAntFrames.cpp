#include "pages/WrenNAntFrames.h"

#include "WrenUtils.h"
#include "pages/WrenPageGrid.h"
#include "dotnet/WrenDotNetAction.h"
#include "tools/WrenNAnt.h"
#include "tools/WrenNAntOptions.h"

namespace wren {

namespace {

/// The combo's index as an enumeration value, or the current one when nothing valid is selected.
template <class E>
E SelectedValue(const TComboBoxModel& combo, E current) {
  if (combo.itemIndex < 0 || combo.itemIndex >= static_cast<int>(combo.items.size())) return current;
  return static_cast<E>(combo.itemIndex);
}

}  // namespace

TNAntFrame::TNAntFrame() {
  cbLogLevel.caption = "Log Level";
  cbLogLevel.items = {"Quiet", "Normal", "Verbose", "Debug"};
  cbIndentLevel.caption = "Indent Level";
  cbIndentLevel.items = {"Default", "0", "1", "2", "3", "4", "5", "6"};
  SetOutputToLog(false);
}

void TNAntFrame::SetOutputToLog(bool outputToLog) {
  cbOutputToLog.checked = outputToLog;
  edLogFile.enabled = outputToLog;
}

void TNAntFrame::ReadActionData(TWrenAction& action) {
  const auto* nant = dynamic_cast<const TNAntAction*>(&action);
  if (!nant) return;
  edBuildFile.text = nant->BuildFile;
  Properties.rows.clear();
  for (const std::string& line : nant->Properties) {
    const size_t eq = line.find('=');
    if (eq == std::string::npos)
      Properties.rows.emplace_back(line, "");
    else
      Properties.rows.emplace_back(line.substr(0, eq), line.substr(eq + 1));
  }
  edPropFile.text = nant->PropFile;
  edTargets.text = nant->Targets;
  edFramework.text = nant->Framework;
  cbLogLevel.itemIndex = static_cast<int>(nant->LogLevel);
  SetOutputToLog(nant->OutputToLog);
  edLogFile.text = nant->LogFile;
  cbIndentLevel.itemIndex = static_cast<int>(nant->IndentLevel);
  cbNoLogo.checked = nant->NoLogo;
}

void TNAntFrame::WriteActionData(TWrenAction& action) {
  auto* nant = dynamic_cast<TNAntAction*>(&action);
  if (!nant) return;
  nant->BuildFile = edBuildFile.text;
  nant->Properties.clear();
  for (const auto& [name, value] : Properties.rows)
    if (!Trim(name).empty()) nant->Properties.push_back(name + "=" + value);
  nant->PropFile = edPropFile.text;
  nant->Targets = edTargets.text;
  nant->Framework = edFramework.text;
  nant->LogLevel = SelectedValue(cbLogLevel, nant->LogLevel);
  nant->OutputToLog = cbOutputToLog.checked;
  nant->LogFile = edLogFile.text;
  nant->IndentLevel = SelectedValue(cbIndentLevel, nant->IndentLevel);
  nant->NoLogo = cbNoLogo.checked;
}

bool TNAntFrame::CheckPage(std::string& message) {
  if (!Trim(edBuildFile.text).empty()) return true;
  message = "Build File is required.";
  return false;
}

bool TNAntFrame::BrowseBuildFile() { return GetFile(edBuildFile, kBuildFilter); }
bool TNAntFrame::BrowsePropFile() {
  return GetFile(edPropFile, "Property Files (*.properties)|*.properties|All Files (*.*)|*.*");
}
bool TNAntFrame::BrowseLogFile() { return GetFile(edLogFile, kLogFilter); }

void TNAntOptionsFrame::ReadOptions(TWrenOptionsObject& options) {
  if (const auto* nant = dynamic_cast<const IWrenNAntOptions*>(&options))
    edNAntLocation.text = nant->GetNAntLocation();
}

void TNAntOptionsFrame::WriteOptions(TWrenOptionsObject& options) {
  if (auto* nant = dynamic_cast<IWrenNAntOptions*>(&options))
    nant->SetNAntLocation(edNAntLocation.text);
}

bool TNAntOptionsFrame::BrowseNAntLocation() {
  return GetFile(edNAntLocation, "NAnt (nant.exe)|nant.exe|Programs (*.exe)|*.exe");
}

void TNAntFrame::ListControls(TWrenPageControls& controls) {
  controls.Edit("edBuildFile", edBuildFile);
  controls.Button("btnBuildFile", "...", [this] { BrowseBuildFile(); });
  controls.Label("grpProperties", grpProperties);
  NameValueGrid(controls, "Properties", grpProperties.caption, Properties.titles,
                Properties.rows);
  controls.Edit("edPropFile", edPropFile);
  controls.Button("btnPropFile", "...", [this] { BrowsePropFile(); });
  controls.Edit("edTargets", edTargets);
  controls.Label("lblTargetsHint", lblTargetsHint);
  controls.Edit("edFramework", edFramework);
  controls.ComboBox("cbLogLevel", cbLogLevel);
  controls.CheckBox("cbOutputToLog", cbOutputToLog,
                    [this] { SetOutputToLog(cbOutputToLog.checked); });
  controls.Edit("edLogFile", edLogFile);
  controls.Button("btnLogFile", "...", [this] { BrowseLogFile(); }, edLogFile.enabled);
  controls.ComboBox("cbIndentLevel", cbIndentLevel);
  controls.CheckBox("cbNoLogo", cbNoLogo);
}

void TNAntOptionsFrame::ListControls(TWrenPageControls& controls) {
  controls.Edit("edNAntLocation", edNAntLocation);
  controls.Button("btnNAntLocation", "...", [this] { BrowseNAntLocation(); });
}

std::vector<TWrenPagePropertyInfo> TNAntFrame::PropertyInfo() const {
  return {{"BuildFile", edBuildFile.caption, "", "", true},
          {"Properties", grpProperties.caption},
          {"PropFile", edPropFile.caption, "", "", true},
          {"Targets", edTargets.caption, lblTargetsHint.caption, " "},
          {"Framework", edFramework.caption},
          {"LogLevel", cbLogLevel.caption},
          {"OutputToLog", cbOutputToLog.caption},
          {"LogFile", edLogFile.caption, "", "", true},
          {"IndentLevel", cbIndentLevel.caption},
          {"NoLogo", cbNoLogo.caption}};
}

}  // namespace wren
