#include "pages/WrenDotNetGACFrames.h"

#include <utility>

#include "sdktools/WrenDotNetGACAction.h"

namespace wren {

namespace {

const char kReferenceRequired[] =
    "Scheme, ID, and Description are all required for reference counting.";

/// Enables the reference fields and everything in their panel only while the box is checked.
void EnableReference(bool checked, TCheckBoxModel& box, TEditModel& scheme, TEditModel& id,
                     TEditModel& description) {
  box.checked = checked;
  scheme.enabled = checked;
  id.enabled = checked;
  description.enabled = checked;
}

bool ReferenceComplete(const TEditModel& scheme, const TEditModel& id,
                       const TEditModel& description) {
  return !scheme.text.empty() && !id.text.empty() && !description.text.empty();
}

void ReadReference(const TWrenGACAction& gac, TEditModel& scheme, TEditModel& id,
                   TEditModel& description) {
  scheme.text = gac.RefScheme;
  id.text = gac.RefID;
  description.text = gac.RefDescription;
}

void WriteReference(TWrenGACAction& gac, const TEditModel& scheme, const TEditModel& id,
                    const TEditModel& description) {
  gac.RefScheme = scheme.text;
  gac.RefID = id.text;
  gac.RefDescription = description.text;
}

/// The force box and the reference box with its three fields, in the order both pages show them.
void ListForceAndReference(TWrenPageControls& controls, TCheckBoxModel& force,
                           TCheckBoxModel& box, TEditModel& scheme, TEditModel& id,
                           TEditModel& description, TWrenPageControls::TReaction onClick) {
  controls.CheckBox("cbForce", force);
  controls.CheckBox("cbReferenceCount", box, std::move(onClick));
  controls.Edit("edScheme", scheme);
  controls.Edit("edID", id);
  controls.Edit("edDescription", description);
}

}  // namespace

// --- Install ---

TGACInstallFrame::TGACInstallFrame() {
  lblHeading.caption = "Assembly to install";
  rbAssemblyPath.caption = "Assembly Path (name of a file which contains an assembly manifest)";
  rbAssemblyPath.checked = true;
  rbAssemblyListFile.caption = "Assembly ListFile";
  cbForce.caption = "Force Re-install (will overwrite an existing assembly with the same name)";
  cbReferenceCount.caption = "Add reference count";
  edScheme.caption = "Scheme :";
  edID.caption = "ID :";
  edDescription.caption = "Description :";
  SetReferenceCount(false);
}

void TGACInstallFrame::SetReferenceCount(bool checked) {
  EnableReference(checked, cbReferenceCount, edScheme, edID, edDescription);
}

void TGACInstallFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  auto* gac = dynamic_cast<TWrenGACAction*>(&action);
  if (!gac) return;
  rbAssemblyListFile.checked = gac->UseListFile;
  rbAssemblyPath.checked = !gac->UseListFile;
  edAssemblyPath.text = gac->AssemblyPath;
  edAssemblyListFile.text = gac->AssemblyListFile;
  cbForce.checked = gac->Force;
  ReadReference(*gac, edScheme, edID, edDescription);
  SetReferenceCount(gac->ReferenceCount);
}

void TGACInstallFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* gac = dynamic_cast<TWrenGACAction*>(&action);
  if (!gac) return;
  gac->UseListFile = rbAssemblyListFile.checked;
  gac->AssemblyPath = edAssemblyPath.text;
  gac->AssemblyListFile = edAssemblyListFile.text;
  gac->Force = cbForce.checked;
  gac->ReferenceCount = cbReferenceCount.checked;
  WriteReference(*gac, edScheme, edID, edDescription);
}

void TGACInstallFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  controls.RadioButton("rbAssemblyPath", "source", rbAssemblyPath);
  controls.Edit("edAssemblyPath", edAssemblyPath);
  controls.Button("btnAssemblyPath", "...", [this] { BrowseAssemblyPath(); });
  controls.RadioButton("rbAssemblyListFile", "source", rbAssemblyListFile);
  controls.Edit("edAssemblyListFile", edAssemblyListFile);
  controls.Button("btnAssemblyListFile", "...", [this] { BrowseListFile(); });
  ListForceAndReference(controls, cbForce, cbReferenceCount, edScheme, edID, edDescription,
                        [this] { SetReferenceCount(cbReferenceCount.checked); });
}

bool TGACInstallFrame::CheckPage(std::string& message) {
  if (rbAssemblyPath.checked && edAssemblyPath.text.empty()) {
    message = "Assembly Path is required.";
    return false;
  }
  if (rbAssemblyListFile.checked && edAssemblyListFile.text.empty()) {
    message = "Assembly Listfile is required.";
    return false;
  }
  if (cbReferenceCount.checked && !ReferenceComplete(edScheme, edID, edDescription)) {
    message = kReferenceRequired;
    return false;
  }
  return true;
}

// --- Uninstall ---

TGACUninstallFrame::TGACUninstallFrame() {
  lblHeading.caption = "Assembly to uninstall";
  rbAssemblyName.caption = "Assembly Name";
  rbAssemblyName.checked = true;
  rbAssemblyPath.caption = "Assembly Path";
  rbAssemblyListFile.caption = "Assembly ListFile";
  cbForce.caption = "Force Un-install (removes all references to the assembly)";
  cbReferenceCount.caption = "Uninstall reference to assembly";
  edScheme.caption = "Scheme :";
  edID.caption = "ID :";
  edDescription.caption = "Description :";
  SetReferenceCount(false);
}

void TGACUninstallFrame::SetReferenceCount(bool checked) {
  EnableReference(checked, cbReferenceCount, edScheme, edID, edDescription);
}

void TGACUninstallFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  auto* gac = dynamic_cast<TGACUninstallAction*>(&action);
  if (!gac) return;
  // The list file wins over the file, as on the command line.
  rbAssemblyListFile.checked = gac->UseListFile;
  rbAssemblyPath.checked = !gac->UseListFile && gac->UseAssemblyPath;
  rbAssemblyName.checked = !gac->UseListFile && !gac->UseAssemblyPath;
  edAssemblyName.text = gac->AssemblyName;
  edAssemblyPath.text = gac->AssemblyPath;
  edAssemblyListFile.text = gac->AssemblyListFile;
  cbForce.checked = gac->Force;
  ReadReference(*gac, edScheme, edID, edDescription);
  SetReferenceCount(gac->ReferenceCount);
}

void TGACUninstallFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* gac = dynamic_cast<TGACUninstallAction*>(&action);
  if (!gac) return;
  gac->UseListFile = rbAssemblyListFile.checked;
  gac->UseAssemblyPath = rbAssemblyPath.checked;
  gac->AssemblyName = edAssemblyName.text;
  gac->AssemblyPath = edAssemblyPath.text;
  gac->AssemblyListFile = edAssemblyListFile.text;
  gac->Force = cbForce.checked;
  gac->ReferenceCount = cbReferenceCount.checked;
  WriteReference(*gac, edScheme, edID, edDescription);
}

void TGACUninstallFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  controls.RadioButton("rbAssemblyName", "source", rbAssemblyName);
  controls.Edit("edAssemblyName", edAssemblyName);
  controls.RadioButton("rbAssemblyPath", "source", rbAssemblyPath);
  controls.Edit("edAssemblyPath", edAssemblyPath);
  controls.Button("btnAssemblyPath", "...", [this] { BrowseAssemblyPath(); });
  controls.RadioButton("rbAssemblyListFile", "source", rbAssemblyListFile);
  controls.Edit("edAssemblyListFile", edAssemblyListFile);
  controls.Button("btnAssemblyListFile", "...", [this] { BrowseListFile(); });
  ListForceAndReference(controls, cbForce, cbReferenceCount, edScheme, edID, edDescription,
                        [this] { SetReferenceCount(cbReferenceCount.checked); });
}

bool TGACUninstallFrame::CheckPage(std::string& message) {
  if (rbAssemblyName.checked && edAssemblyName.text.empty()) {
    message = "Assembly Name is required.";
    return false;
  }
  if (rbAssemblyPath.checked && edAssemblyPath.text.empty()) {
    message = "Assembly Path is required.";
    return false;
  }
  if (rbAssemblyListFile.checked && edAssemblyListFile.text.empty()) {
    message = "Assembly Listfile is required.";
    return false;
  }
  if (cbReferenceCount.checked && !ReferenceComplete(edScheme, edID, edDescription)) {
    message = kReferenceRequired;
    return false;
  }
  return true;
}

// --- Download cache ---

TGACListFrame::TGACListFrame() {
  lblHeading.caption = "Download Cache";
  rbListCache.caption = "Lists the contents of the downloaded files cache";
  rbListCache.checked = true;
  rbDeleteCache.caption = "Deletes the contents of the download cache";
}

void TGACListFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  auto* gac = dynamic_cast<TGACListAction*>(&action);
  if (!gac) return;
  rbDeleteCache.checked = gac->DeleteDownloadCache;
  rbListCache.checked = !gac->DeleteDownloadCache;
}

void TGACListFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* gac = dynamic_cast<TGACListAction*>(&action);
  if (!gac) return;
  gac->DeleteDownloadCache = rbDeleteCache.checked;
}

void TGACListFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  controls.RadioButton("rbListCache", "cache", rbListCache);
  controls.RadioButton("rbDeleteCache", "cache", rbDeleteCache);
}

std::vector<TWrenPagePropertyInfo> TGACInstallFrame::PropertyInfo() const {
  return {{"UseListFile", rbAssemblyListFile.caption},
          {"AssemblyPath", rbAssemblyPath.caption, "", "", true},
          {"AssemblyListFile", rbAssemblyListFile.caption, "", "", true},
          {"Force", cbForce.caption},
          {"ReferenceCount", cbReferenceCount.caption},
          {"RefScheme", edScheme.caption},
          {"RefID", edID.caption},
          {"RefDescription", edDescription.caption}};
}

std::vector<TWrenPagePropertyInfo> TGACUninstallFrame::PropertyInfo() const {
  return {{"AssemblyName", rbAssemblyName.caption},
          {"UseAssemblyPath", rbAssemblyPath.caption},
          {"AssemblyPath", rbAssemblyPath.caption, "", "", true},
          {"UseListFile", rbAssemblyListFile.caption},
          {"AssemblyListFile", rbAssemblyListFile.caption, "", "", true},
          {"Force", cbForce.caption},
          {"ReferenceCount", cbReferenceCount.caption},
          {"RefScheme", edScheme.caption},
          {"RefID", edID.caption},
          {"RefDescription", edDescription.caption}};
}

std::vector<TWrenPagePropertyInfo> TGACListFrame::PropertyInfo() const {
  return {{"DeleteDownloadCache", rbDeleteCache.caption}};
}

}  // namespace wren
