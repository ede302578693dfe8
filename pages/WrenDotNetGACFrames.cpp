#include "pages/WrenDotNetGACFrames.h"

#include "sdktools/WrenDotNetGACAction.h"

namespace wren {

// --- What install and uninstall share ---

TGACAssemblyFrame::TGACAssemblyFrame(const char* assemblyFilter) : assemblyFilter_(assemblyFilter) {
  rbAssemblyListFile.caption = "Assembly ListFile";
  cbReferenceCount.caption = "Add reference count";
  edScheme.caption = "Scheme :";
  edID.caption = "ID :";
  edDescription.caption = "Description :";
  SetReferenceCount(false);
}

void TGACAssemblyFrame::SetReferenceCount(bool checked) {
  cbReferenceCount.checked = checked;
  edScheme.enabled = checked;
  edID.enabled = checked;
  edDescription.enabled = checked;
}

void TGACAssemblyFrame::ReadAssembly(const TWrenGACAction& gac) {
  edAssemblyPath.text = gac.AssemblyPath;
  edAssemblyListFile.text = gac.AssemblyListFile;
  cbForce.checked = gac.Force;
  edScheme.text = gac.RefScheme;
  edID.text = gac.RefID;
  edDescription.text = gac.RefDescription;
  SetReferenceCount(gac.ReferenceCount);
}

void TGACAssemblyFrame::WriteAssembly(TWrenGACAction& gac) const {
  gac.UseListFile = rbAssemblyListFile.checked;
  gac.AssemblyPath = edAssemblyPath.text;
  gac.AssemblyListFile = edAssemblyListFile.text;
  gac.Force = cbForce.checked;
  gac.ReferenceCount = cbReferenceCount.checked;
  gac.RefScheme = edScheme.text;
  gac.RefID = edID.text;
  gac.RefDescription = edDescription.text;
}

void TGACAssemblyFrame::ListAssemblyControls(TWrenPageControls& controls) {
  controls.RadioButton("rbAssemblyPath", "source", rbAssemblyPath);
  controls.Edit("edAssemblyPath", edAssemblyPath);
  controls.Button("btnAssemblyPath", "...", [this] { BrowseAssemblyPath(); });
  controls.RadioButton("rbAssemblyListFile", "source", rbAssemblyListFile);
  controls.Edit("edAssemblyListFile", edAssemblyListFile);
  controls.Button("btnAssemblyListFile", "...", [this] { BrowseListFile(); });
  controls.CheckBox("cbForce", cbForce);
  controls.CheckBox("cbReferenceCount", cbReferenceCount,
                    [this] { SetReferenceCount(cbReferenceCount.checked); });
  controls.Edit("edScheme", edScheme);
  controls.Edit("edID", edID);
  controls.Edit("edDescription", edDescription);
}

bool TGACAssemblyFrame::CheckAssembly(std::string& message) const {
  if (rbAssemblyPath.checked && edAssemblyPath.text.empty()) {
    message = "Assembly Path is required.";
    return false;
  }
  if (rbAssemblyListFile.checked && edAssemblyListFile.text.empty()) {
    message = "Assembly Listfile is required.";
    return false;
  }
  if (cbReferenceCount.checked &&
      (edScheme.text.empty() || edID.text.empty() || edDescription.text.empty())) {
    message = "Scheme, ID, and Description are all required for reference counting.";
    return false;
  }
  return true;
}

// --- Install ---

TGACInstallFrame::TGACInstallFrame() : TGACAssemblyFrame(kAssemblyFilter) {
  lblHeading.caption = "Assembly to install";
  rbAssemblyPath.caption = "Assembly Path (name of a file which contains an assembly manifest)";
  rbAssemblyPath.checked = true;
  cbForce.caption = "Force Re-install (will overwrite an existing assembly with the same name)";
}

void TGACInstallFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  auto* gac = dynamic_cast<TWrenGACAction*>(&action);
  if (!gac) return;
  rbAssemblyListFile.checked = gac->UseListFile;
  rbAssemblyPath.checked = !gac->UseListFile;
  ReadAssembly(*gac);
}

void TGACInstallFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* gac = dynamic_cast<TWrenGACAction*>(&action);
  if (gac) WriteAssembly(*gac);
}

void TGACInstallFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  ListAssemblyControls(controls);
}

// --- Uninstall ---

TGACUninstallFrame::TGACUninstallFrame() : TGACAssemblyFrame(kAssemblyFilter) {
  lblHeading.caption = "Assembly to uninstall";
  rbAssemblyName.caption = "Assembly Name";
  rbAssemblyName.checked = true;
  rbAssemblyPath.caption = "Assembly Path";
  cbForce.caption = "Force Un-install (removes all references to the assembly)";
  cbReferenceCount.caption = "Uninstall reference to assembly";
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
  ReadAssembly(*gac);
}

void TGACUninstallFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* gac = dynamic_cast<TGACUninstallAction*>(&action);
  if (!gac) return;
  gac->UseAssemblyPath = rbAssemblyPath.checked;
  gac->AssemblyName = edAssemblyName.text;
  WriteAssembly(*gac);
}

void TGACUninstallFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  controls.RadioButton("rbAssemblyName", "source", rbAssemblyName);
  controls.Edit("edAssemblyName", edAssemblyName);
  ListAssemblyControls(controls);
}

bool TGACUninstallFrame::CheckPage(std::string& message) {
  if (rbAssemblyName.checked && edAssemblyName.text.empty()) {
    message = "Assembly Name is required.";
    return false;
  }
  return CheckAssembly(message);
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
