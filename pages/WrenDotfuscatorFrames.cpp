#include "pages/WrenDotfuscatorFrames.h"

#include "WrenUtils.h"
#include "dotnet/WrenDotNetAction.h"
#include "pages/WrenToolOptionsFrame.h"
#include "tools/WrenDotfuscatorAction.h"

namespace wren {

namespace {

template <class E>
E Chosen(const TComboBoxModel& combo, E current) {
  if (combo.itemIndex < 0 || combo.itemIndex >= static_cast<int>(combo.items.size()))
    return current;
  return static_cast<E>(combo.itemIndex);
}

}  // namespace

TDotfuscatorFrame::TDotfuscatorFrame() {
  cbRename.caption = "Renaming";
  cbRename.items = {"As configured", "On", "Off"};
  cbKeep.caption = "Keep when renaming";
  cbKeep.items = {"As configured", "Namespaces", "Type hierarchy", "Nothing"};
}

void TDotfuscatorFrame::SetQuiet(bool quiet) {
  cbQuiet.checked = quiet;
  cbVerbose.enabled = !quiet;
}

void TDotfuscatorFrame::ReadActionData(TWrenAction& action) {
  const auto* d = dynamic_cast<const TWrenDotfuscatorAction*>(&action);
  if (!d) return;
  edConfigFile.text = d->ConfigFile;
  SetQuiet(d->Quiet);
  cbVerbose.checked = d->Verbose;
  cbInvestigate.checked = d->Investigate;
  mmProperties.lines = d->Properties;
  mmInputAssemblies.lines = d->InputAssemblies;
  edOutputDirectory.text = d->OutputDirectory;
  edMakeConfig.text = d->MakeConfig;
  cbDisableAll.checked = d->DisableAll;
  cbRename.itemIndex = static_cast<int>(d->Rename);
  cbKeep.itemIndex = static_cast<int>(d->Keep);
  edMapFile.text = d->MapFile;
  cbOverwriteMap.checked = d->OverwriteMap;
  mmExtraSwitches.lines = d->ExtraSwitches;
}

void TDotfuscatorFrame::WriteActionData(TWrenAction& action) {
  auto* d = dynamic_cast<TWrenDotfuscatorAction*>(&action);
  if (!d) return;
  d->ConfigFile = edConfigFile.text;
  d->Quiet = cbQuiet.checked;
  d->Verbose = cbVerbose.checked;
  d->Investigate = cbInvestigate.checked;
  d->Properties = mmProperties.lines;
  d->InputAssemblies = mmInputAssemblies.lines;
  d->OutputDirectory = edOutputDirectory.text;
  d->MakeConfig = edMakeConfig.text;
  d->DisableAll = cbDisableAll.checked;
  d->Rename = Chosen(cbRename, d->Rename);
  d->Keep = Chosen(cbKeep, d->Keep);
  d->MapFile = edMapFile.text;
  d->OverwriteMap = cbOverwriteMap.checked;
  d->ExtraSwitches = mmExtraSwitches.lines;
}

bool TDotfuscatorFrame::CheckPage(std::string& message) {
  if (!Trim(edConfigFile.text).empty()) return true;
  for (const std::string& line : mmInputAssemblies.lines)
    if (!Trim(line).empty()) return true;
  message = "Configuration File is required.";
  return false;
}

bool TDotfuscatorFrame::BrowseConfigFile() { return GetFile(edConfigFile, kConfigFilter); }
bool TDotfuscatorFrame::BrowseOutputDirectory() {
  return GetFolder(edOutputDirectory, "Select Output Directory");
}
bool TDotfuscatorFrame::BrowseMakeConfig() { return GetFile(edMakeConfig, kConfigFilter); }
bool TDotfuscatorFrame::BrowseMapFile() { return GetFile(edMapFile, kMapFilter); }

void TDotfuscatorFrame::ListControls(TWrenPageControls& controls) {
  controls.Edit("edConfigFile", edConfigFile);
  controls.Button("btnConfigFile", "...", [this] { BrowseConfigFile(); });
  controls.CheckBox("cbQuiet", cbQuiet, [this] { SetQuiet(cbQuiet.checked); });
  controls.CheckBox("cbVerbose", cbVerbose);
  controls.CheckBox("cbInvestigate", cbInvestigate);
  controls.Memo("mmProperties", mmProperties);
  controls.Memo("mmInputAssemblies", mmInputAssemblies);
  controls.Edit("edOutputDirectory", edOutputDirectory);
  controls.Button("btnOutputDirectory", "...", [this] { BrowseOutputDirectory(); });
  controls.Edit("edMakeConfig", edMakeConfig);
  controls.Button("btnMakeConfig", "...", [this] { BrowseMakeConfig(); });
  controls.CheckBox("cbDisableAll", cbDisableAll);
  controls.ComboBox("cbRename", cbRename);
  controls.ComboBox("cbKeep", cbKeep);
  controls.Edit("edMapFile", edMapFile);
  controls.Button("btnMapFile", "...", [this] { BrowseMapFile(); });
  controls.CheckBox("cbOverwriteMap", cbOverwriteMap);
  controls.Memo("mmExtraSwitches", mmExtraSwitches);
}

std::vector<TWrenPagePropertyInfo> TDotfuscatorFrame::PropertyInfo() const {
  return {{"ConfigFile", edConfigFile.caption, "", "", true},
          {"Quiet", cbQuiet.caption},
          {"Verbose", cbVerbose.caption},
          {"Investigate", cbInvestigate.caption},
          {"Properties", mmProperties.caption},
          {"InputAssemblies", mmInputAssemblies.caption},
          {"OutputDirectory", edOutputDirectory.caption},
          {"MakeConfig", edMakeConfig.caption},
          {"DisableAll", cbDisableAll.caption},
          {"Rename", cbRename.caption},
          {"Keep", cbKeep.caption},
          {"MapFile", edMapFile.caption},
          {"OverwriteMap", cbOverwriteMap.caption},
          {"ExtraSwitches", mmExtraSwitches.caption}};
}

}  // namespace wren
