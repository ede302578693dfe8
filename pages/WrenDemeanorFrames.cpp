#include "pages/WrenDemeanorFrames.h"

#include "WrenUtils.h"
#include "dotnet/WrenDotNetAction.h"
#include "pages/WrenToolOptionsFrame.h"
#include "tools/WrenDemeanorAction.h"

namespace wren {

void TDemeanorPEFrame::ReadActionData(TWrenAction& action) {
  const auto* d = dynamic_cast<const TWrenDemeanorAction*>(&action);
  if (!d) return;
  edInputAssembly.text = d->InputAssembly;
  edOutputDirectory.text = d->OutputDirectory;
}

void TDemeanorPEFrame::WriteActionData(TWrenAction& action) {
  auto* d = dynamic_cast<TWrenDemeanorAction*>(&action);
  if (!d) return;
  d->InputAssembly = edInputAssembly.text;
  d->OutputDirectory = edOutputDirectory.text;
}

bool TDemeanorPEFrame::CheckPage(std::string& message) {
  if (!Trim(edInputAssembly.text).empty()) return true;
  message = "Input Assembly is required.";
  return false;
}

bool TDemeanorPEFrame::BrowseInputAssembly() { return GetFile(edInputAssembly, kAssemblyFilter); }
bool TDemeanorPEFrame::BrowseOutputDirectory() {
  return GetFolder(edOutputDirectory, "Select Output Directory");
}

void TDemeanorPEFrame::ListControls(TWrenPageControls& controls) {
  controls.Edit("edInputAssembly", edInputAssembly);
  controls.Button("btnInputAssembly", "...", [this] { BrowseInputAssembly(); });
  controls.Edit("edOutputDirectory", edOutputDirectory);
  controls.Button("btnOutputDirectory", "...", [this] { BrowseOutputDirectory(); });
}

void TDemeanorExcludeFrame::ReadActionData(TWrenAction& action) {
  if (const auto* d = dynamic_cast<const TWrenDemeanorAction*>(&action))
    mmExtraSwitches.lines = d->ExtraSwitches;
}

void TDemeanorExcludeFrame::WriteActionData(TWrenAction& action) {
  if (auto* d = dynamic_cast<TWrenDemeanorAction*>(&action))
    d->ExtraSwitches = mmExtraSwitches.lines;
}

void TDemeanorExcludeFrame::ListControls(TWrenPageControls& controls) {
  controls.Memo("mmExtraSwitches", mmExtraSwitches);
  controls.Label("lblHint", lblHint);
}

std::vector<TWrenPagePropertyInfo> TDemeanorPEFrame::PropertyInfo() const {
  return {{"InputAssembly", edInputAssembly.caption, "", "", true},
          {"OutputDirectory", edOutputDirectory.caption}};
}

std::vector<TWrenPagePropertyInfo> TDemeanorExcludeFrame::PropertyInfo() const {
  return {{"ExtraSwitches", mmExtraSwitches.caption, lblHint.caption}};
}

}  // namespace wren
