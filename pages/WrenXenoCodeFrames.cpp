#include "pages/WrenXenoCodeFrames.h"

#include "WrenUtils.h"
#include "dotnet/WrenDotNetAction.h"
#include "tools/WrenXenoCodeAction.h"

namespace wren {

void TXenoCodeFrame::ReadActionData(TWrenAction& action) {
  const auto* x = dynamic_cast<const TWrenXenoCodeAction*>(&action);
  if (!x) return;
  edProjectFile.text = x->ProjectFile;
  mmExtraSwitches.lines = x->ExtraSwitches;
}

void TXenoCodeFrame::WriteActionData(TWrenAction& action) {
  auto* x = dynamic_cast<TWrenXenoCodeAction*>(&action);
  if (!x) return;
  x->ProjectFile = edProjectFile.text;
  x->ExtraSwitches = mmExtraSwitches.lines;
}

bool TXenoCodeFrame::CheckPage(std::string& message) {
  if (!Trim(edProjectFile.text).empty()) return true;
  message = "Project File is required.";
  return false;
}

bool TXenoCodeFrame::BrowseProjectFile() { return GetFile(edProjectFile, kProjectFilter); }

void TXenoCodeFrame::ListControls(TWrenPageControls& controls) {
  controls.Edit("edProjectFile", edProjectFile);
  controls.Button("btnProjectFile", "...", [this] { BrowseProjectFile(); });
  controls.Memo("mmExtraSwitches", mmExtraSwitches);
  controls.Label("lblHint", lblHint);
}

std::vector<TWrenPagePropertyInfo> TXenoCodeFrame::PropertyInfo() const {
  return {{"ProjectFile", edProjectFile.caption, "", "", true},
          {"ExtraSwitches", mmExtraSwitches.caption, lblHint.caption}};
}

}  // namespace wren
