#include "pages/WrenFxCopFrames.h"

#include "WrenUtils.h"
#include "dotnet/WrenDotNetAction.h"
#include "pages/WrenToolOptionsFrame.h"
#include "tools/WrenFxCopAction.h"

namespace wren {

void TFrameFxCopTargets::SetUseProjectFile(bool useProjectFile) {
  rbProjectFile.checked = useProjectFile;
  rbTargets.checked = !useProjectFile;
  edProjectFile.enabled = useProjectFile;
  mmTargets.enabled = !useProjectFile;
}

void TFrameFxCopTargets::ReadActionData(TWrenAction& action) {
  const auto* fxcop = dynamic_cast<const TWrenFxCopAction*>(&action);
  if (!fxcop) return;
  SetUseProjectFile(fxcop->UseProjectFile);
  edProjectFile.text = fxcop->ProjectFile;
  mmTargets.lines = fxcop->Targets;
  mmDependencyDirectories.lines = fxcop->DependencyDirectories;
  edPlatformDirectory.text = fxcop->PlatformDirectory;
  cbSearchGac.checked = fxcop->SearchGac;
  mmImports.lines = fxcop->Imports;
}

void TFrameFxCopTargets::WriteActionData(TWrenAction& action) {
  auto* fxcop = dynamic_cast<TWrenFxCopAction*>(&action);
  if (!fxcop) return;
  fxcop->UseProjectFile = rbProjectFile.checked;
  fxcop->ProjectFile = edProjectFile.text;
  fxcop->Targets = mmTargets.lines;
  fxcop->DependencyDirectories = mmDependencyDirectories.lines;
  fxcop->PlatformDirectory = edPlatformDirectory.text;
  fxcop->SearchGac = cbSearchGac.checked;
  fxcop->Imports = mmImports.lines;
}

bool TFrameFxCopTargets::CheckPage(std::string& message) {
  if (rbProjectFile.checked) {
    if (!Trim(edProjectFile.text).empty()) return true;
    message = "Project File is required.";
    return false;
  }
  for (const std::string& line : mmTargets.lines)
    if (!Trim(line).empty()) return true;
  message = "At least one target assembly is required.";
  return false;
}

bool TFrameFxCopTargets::BrowseProjectFile() { return GetFile(edProjectFile, kProjectFilter); }

bool TFrameFxCopTargets::BrowsePlatformDirectory() {
  return GetFolder(edPlatformDirectory, "Select Platform Directory");
}

void TFrameFxCopTargets::ListControls(TWrenPageControls& controls) {
  const auto follow = [this] { SetUseProjectFile(rbProjectFile.checked); };
  controls.RadioButton("rbTargets", "source", rbTargets, follow);
  controls.RadioButton("rbProjectFile", "source", rbProjectFile, follow);
  controls.Edit("edProjectFile", edProjectFile);
  controls.Button("btnProjectFile", "...", [this] { BrowseProjectFile(); }, edProjectFile.enabled);
  controls.Memo("mmTargets", mmTargets);
  controls.Memo("mmDependencyDirectories", mmDependencyDirectories);
  controls.Edit("edPlatformDirectory", edPlatformDirectory);
  controls.Button("btnPlatformDirectory", "...", [this] { BrowsePlatformDirectory(); });
  controls.CheckBox("cbSearchGac", cbSearchGac);
  controls.Memo("mmImports", mmImports);
}

void TFrameFxCopRules::ListControls(TWrenPageControls& controls) {
  controls.Memo("mmRuleLibraries", mmRuleLibraries);
  controls.Memo("mmRuleIds", mmRuleIds);
  controls.Edit("edDictionary", edDictionary);
  controls.Button("btnDictionary", "...", [this] { BrowseDictionary(); });
}

void TFrameFxCopOptions::ListControls(TWrenPageControls& controls) {
  controls.Edit("edOutputFile", edOutputFile);
  controls.Button("btnOutputFile", "...", [this] { BrowseOutputFile(); });
  controls.Edit("edOutputXsl", edOutputXsl);
  controls.Button("btnOutputXsl", "...", [this] { BrowseOutputXsl(); });
  controls.CheckBox("cbApplyOutputXsl", cbApplyOutputXsl);
  controls.CheckBox("cbForceOutput", cbForceOutput);
  controls.CheckBox("cbToConsole", cbToConsole);
  controls.Edit("edConsoleXsl", edConsoleXsl);
  controls.Button("btnConsoleXsl", "...", [this] { BrowseConsoleXsl(); });
  controls.CheckBox("cbSummary", cbSummary);
  controls.CheckBox("cbVerbose", cbVerbose);
  controls.CheckBox("cbQuiet", cbQuiet);
  controls.CheckBox("cbUpdateProject", cbUpdateProject);
  controls.CheckBox("cbIgnoreGeneratedCode", cbIgnoreGeneratedCode);
  controls.Edit("edTimeout", edTimeout);
}

void TFrameFxCopTypesAndMembers::ListControls(TWrenPageControls& controls) {
  controls.Memo("mmTypes", mmTypes);
}

void TFrameFxCopAdditional::ListControls(TWrenPageControls& controls) {
  controls.Memo("mmExtraSwitches", mmExtraSwitches);
  controls.CheckBox("cbReferenceErrorsFail", cbReferenceErrorsFail);
  controls.CheckBox("cbFailOnMessages", cbFailOnMessages);
}

void TFrameFxCopRules::ReadActionData(TWrenAction& action) {
  const auto* fxcop = dynamic_cast<const TWrenFxCopAction*>(&action);
  if (!fxcop) return;
  mmRuleLibraries.lines = fxcop->RuleLibraries;
  mmRuleIds.lines = fxcop->RuleIds;
  edDictionary.text = fxcop->Dictionary;
}

void TFrameFxCopRules::WriteActionData(TWrenAction& action) {
  auto* fxcop = dynamic_cast<TWrenFxCopAction*>(&action);
  if (!fxcop) return;
  fxcop->RuleLibraries = mmRuleLibraries.lines;
  fxcop->RuleIds = mmRuleIds.lines;
  fxcop->Dictionary = edDictionary.text;
}

void TFrameFxCopOptions::ReadActionData(TWrenAction& action) {
  const auto* fxcop = dynamic_cast<const TWrenFxCopAction*>(&action);
  if (!fxcop) return;
  edOutputFile.text = fxcop->OutputFile;
  edOutputXsl.text = fxcop->OutputXsl;
  cbApplyOutputXsl.checked = fxcop->ApplyOutputXsl;
  cbForceOutput.checked = fxcop->ForceOutput;
  cbToConsole.checked = fxcop->ToConsole;
  edConsoleXsl.text = fxcop->ConsoleXsl;
  cbSummary.checked = fxcop->Summary;
  cbVerbose.checked = fxcop->Verbose;
  cbQuiet.checked = fxcop->Quiet;
  cbUpdateProject.checked = fxcop->UpdateProject;
  cbIgnoreGeneratedCode.checked = fxcop->IgnoreGeneratedCode;
  edTimeout.text = fxcop->Timeout;
}

void TFrameFxCopOptions::WriteActionData(TWrenAction& action) {
  auto* fxcop = dynamic_cast<TWrenFxCopAction*>(&action);
  if (!fxcop) return;
  fxcop->OutputFile = edOutputFile.text;
  fxcop->OutputXsl = edOutputXsl.text;
  fxcop->ApplyOutputXsl = cbApplyOutputXsl.checked;
  fxcop->ForceOutput = cbForceOutput.checked;
  fxcop->ToConsole = cbToConsole.checked;
  fxcop->ConsoleXsl = edConsoleXsl.text;
  fxcop->Summary = cbSummary.checked;
  fxcop->Verbose = cbVerbose.checked;
  fxcop->Quiet = cbQuiet.checked;
  fxcop->UpdateProject = cbUpdateProject.checked;
  fxcop->IgnoreGeneratedCode = cbIgnoreGeneratedCode.checked;
  fxcop->Timeout = edTimeout.text;
}

bool TFrameFxCopOptions::CheckPage(std::string& message) {
  if (!Trim(edOutputFile.text).empty() || cbToConsole.checked || !Trim(edConsoleXsl.text).empty() ||
      cbUpdateProject.checked)
    return true;
  message = "A report file or console output is required.";
  return false;
}

void TFrameFxCopTypesAndMembers::ReadActionData(TWrenAction& action) {
  if (const auto* fxcop = dynamic_cast<const TWrenFxCopAction*>(&action))
    mmTypes.lines = fxcop->Types;
}

void TFrameFxCopTypesAndMembers::WriteActionData(TWrenAction& action) {
  if (auto* fxcop = dynamic_cast<TWrenFxCopAction*>(&action)) fxcop->Types = mmTypes.lines;
}

void TFrameFxCopAdditional::ReadActionData(TWrenAction& action) {
  const auto* fxcop = dynamic_cast<const TWrenFxCopAction*>(&action);
  if (!fxcop) return;
  mmExtraSwitches.lines = fxcop->ExtraSwitches;
  cbReferenceErrorsFail.checked = fxcop->ReferenceErrorsFail;
  cbFailOnMessages.checked = fxcop->FailOnMessages;
}

void TFrameFxCopAdditional::WriteActionData(TWrenAction& action) {
  auto* fxcop = dynamic_cast<TWrenFxCopAction*>(&action);
  if (!fxcop) return;
  fxcop->ExtraSwitches = mmExtraSwitches.lines;
  fxcop->ReferenceErrorsFail = cbReferenceErrorsFail.checked;
  fxcop->FailOnMessages = cbFailOnMessages.checked;
}

std::vector<TWrenPagePropertyInfo> TFrameFxCopTargets::PropertyInfo() const {
  return {{"UseProjectFile", rbProjectFile.caption},
          {"ProjectFile", edProjectFile.caption, "", "", true},
          {"Targets", mmTargets.caption},
          {"DependencyDirectories", mmDependencyDirectories.caption},
          {"PlatformDirectory", edPlatformDirectory.caption},
          {"SearchGac", cbSearchGac.caption},
          {"Imports", mmImports.caption}};
}

std::vector<TWrenPagePropertyInfo> TFrameFxCopRules::PropertyInfo() const {
  return {{"RuleLibraries", mmRuleLibraries.caption},
          {"RuleIds", mmRuleIds.caption},
          {"Dictionary", edDictionary.caption}};
}

std::vector<TWrenPagePropertyInfo> TFrameFxCopOptions::PropertyInfo() const {
  return {{"OutputFile", edOutputFile.caption},
          {"OutputXsl", edOutputXsl.caption},
          {"ApplyOutputXsl", cbApplyOutputXsl.caption},
          {"ForceOutput", cbForceOutput.caption},
          {"ToConsole", cbToConsole.caption},
          {"ConsoleXsl", edConsoleXsl.caption},
          {"Summary", cbSummary.caption},
          {"Verbose", cbVerbose.caption},
          {"Quiet", cbQuiet.caption},
          {"UpdateProject", cbUpdateProject.caption},
          {"IgnoreGeneratedCode", cbIgnoreGeneratedCode.caption},
          {"Timeout", edTimeout.caption}};
}

std::vector<TWrenPagePropertyInfo> TFrameFxCopTypesAndMembers::PropertyInfo() const {
  return {{"Types", mmTypes.caption}};
}

std::vector<TWrenPagePropertyInfo> TFrameFxCopAdditional::PropertyInfo() const {
  return {{"ExtraSwitches", mmExtraSwitches.caption},
          {"ReferenceErrorsFail", cbReferenceErrorsFail.caption},
          {"FailOnMessages", cbFailOnMessages.caption}};
}

}  // namespace wren
