#include "pages/WrenNDocFrames.h"

#include "WrenUtils.h"
#include "dotnet/WrenDotNetAction.h"
#include "tools/WrenNDocAction.h"

namespace wren {

namespace {

const std::vector<std::string> kShippedDocumenters = {"MSDN",  "VS.NET_2003", "JavaDoc",
                                                      "LaTeX", "LinearHtml",  "XML"};

}  // namespace

void TNDOCFrame::SetUseProjectFile(bool useProjectFile) {
  rbProjectFile.checked = useProjectFile;
  rbAssemblies.checked = !useProjectFile;
  edProjectFile.enabled = useProjectFile;
  mmAssemblies.enabled = !useProjectFile;
  mmReferencePaths.enabled = !useProjectFile;
  edNamespaceSummaries.enabled = !useProjectFile;
}

void TNDOCFrame::ReadActionData(TWrenAction& action) {
  const auto* ndoc = dynamic_cast<const TWrenNDocAction*>(&action);
  if (!ndoc) return;
  SetUseProjectFile(ndoc->UseProjectFile);
  edProjectFile.text = ndoc->ProjectFile;
  mmAssemblies.lines = ndoc->Assemblies;
  mmReferencePaths.lines = ndoc->ReferencePaths;
  edNamespaceSummaries.text = ndoc->NamespaceSummaries;
  cbVerbose.checked = ndoc->Verbose;
}

void TNDOCFrame::WriteActionData(TWrenAction& action) {
  auto* ndoc = dynamic_cast<TWrenNDocAction*>(&action);
  if (!ndoc) return;
  ndoc->UseProjectFile = rbProjectFile.checked;
  ndoc->ProjectFile = edProjectFile.text;
  ndoc->Assemblies = mmAssemblies.lines;
  ndoc->ReferencePaths = mmReferencePaths.lines;
  ndoc->NamespaceSummaries = edNamespaceSummaries.text;
  ndoc->Verbose = cbVerbose.checked;
}

bool TNDOCFrame::CheckPage(std::string& message) {
  if (rbProjectFile.checked) {
    if (!Trim(edProjectFile.text).empty()) return true;
    message = "Project File is required.";
    return false;
  }
  for (const std::string& line : mmAssemblies.lines)
    if (!Trim(line).empty()) return true;
  message = "At least one assembly is required.";
  return false;
}

bool TNDOCFrame::BrowseProjectFile() { return GetFile(edProjectFile, kProjectFilter); }
bool TNDOCFrame::BrowseNamespaceSummaries() {
  return GetFile(edNamespaceSummaries, kSummariesFilter);
}

void TNDOCFrame::ListControls(TWrenPageControls& controls) {
  const auto follow = [this] { SetUseProjectFile(rbProjectFile.checked); };
  controls.RadioButton("rbAssemblies", "source", rbAssemblies, follow);
  controls.RadioButton("rbProjectFile", "source", rbProjectFile, follow);
  controls.Edit("edProjectFile", edProjectFile);
  controls.Button("btnProjectFile", "...", [this] { BrowseProjectFile(); }, edProjectFile.enabled);
  controls.Memo("mmAssemblies", mmAssemblies);
  controls.Memo("mmReferencePaths", mmReferencePaths);
  controls.Edit("edNamespaceSummaries", edNamespaceSummaries);
  controls.Button("btnNamespaceSummaries", "...", [this] { BrowseNamespaceSummaries(); },
                  edNamespaceSummaries.enabled);
  controls.CheckBox("cbVerbose", cbVerbose);
}

TNDocDocumenterFrame::TNDocDocumenterFrame() {
  cbDocumenter.caption = "Documenter";
  cbDocumenter.items = kShippedDocumenters;
}

void TNDocDocumenterFrame::SetDocumenterName(const std::string& name) {
  const std::string wanted = Trim(name);
  if (wanted.empty()) return;
  // One name of the user's own at a time, so typing a name letter by letter lists only the last.
  cbDocumenter.items.resize(kShippedDocumenters.size());
  for (size_t i = 0; i < cbDocumenter.items.size(); ++i) {
    if (SameText(cbDocumenter.items[i], wanted)) {
      cbDocumenter.itemIndex = static_cast<int>(i);
      return;
    }
  }
  cbDocumenter.items.push_back(wanted);
  cbDocumenter.itemIndex = static_cast<int>(cbDocumenter.items.size()) - 1;
}

void TNDocDocumenterFrame::ListControls(TWrenPageControls& controls) {
  controls.ComboBox("cbDocumenter", cbDocumenter);
  controls.Edit("edDocumenterName", edDocumenterName,
                [this] { SetDocumenterName(edDocumenterName.text); });
  controls.Memo("mmProperties", mmProperties);
}

void TNDocDocumenterFrame::ReadActionData(TWrenAction& action) {
  const auto* ndoc = dynamic_cast<const TWrenNDocAction*>(&action);
  if (!ndoc) return;
  cbDocumenter.itemIndex = -1;
  for (size_t i = 0; i < cbDocumenter.items.size(); ++i)
    if (SameText(cbDocumenter.items[i], ndoc->Documenter))
      cbDocumenter.itemIndex = static_cast<int>(i);
  // A documenter of the user's own stays selectable.
  if (cbDocumenter.itemIndex < 0 && !Trim(ndoc->Documenter).empty()) {
    cbDocumenter.items.push_back(ndoc->Documenter);
    cbDocumenter.itemIndex = static_cast<int>(cbDocumenter.items.size()) - 1;
  }
  mmProperties.lines = ndoc->DocumenterProperties;
}

void TNDocDocumenterFrame::WriteActionData(TWrenAction& action) {
  auto* ndoc = dynamic_cast<TWrenNDocAction*>(&action);
  if (!ndoc) return;
  ndoc->Documenter = cbDocumenter.Selected();
  ndoc->DocumenterProperties = mmProperties.lines;
}

bool TNDocDocumenterFrame::CheckPage(std::string& message) {
  if (!cbDocumenter.Selected().empty()) return true;
  message = "Documenter is required.";
  return false;
}

std::vector<TWrenPagePropertyInfo> TNDOCFrame::PropertyInfo() const {
  return {{"UseProjectFile", rbProjectFile.caption},
          {"ProjectFile", edProjectFile.caption, "", "", true},
          {"Assemblies", mmAssemblies.caption},
          {"ReferencePaths", mmReferencePaths.caption},
          {"NamespaceSummaries", edNamespaceSummaries.caption, "", "", true},
          {"Verbose", cbVerbose.caption}};
}

std::vector<TWrenPagePropertyInfo> TNDocDocumenterFrame::PropertyInfo() const {
  return {{"Documenter", cbDocumenter.caption},
          {"DocumenterProperties", mmProperties.caption}};
}

}  // namespace wren
