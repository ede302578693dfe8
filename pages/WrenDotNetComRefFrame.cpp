#include "pages/WrenDotNetComRefFrame.h"

#include "WrenUtils.h"
#include "dotnet/WrenDotNetAction.h"
#include "sdktools/WrenDotNetComRefAction.h"

namespace wren {

void TDotNetComRefFrame::ReadActionData(TWrenAction& action) {
  const auto* fix = dynamic_cast<const TWrenDotNetComReferenceFixAction*>(&action);
  if (!fix) return;
  edProjectFile.text = fix->ProjectFile;
  edReferenceName.text = fix->ReferenceName;
  edProgID.text = fix->ProgID;
}

void TDotNetComRefFrame::WriteActionData(TWrenAction& action) {
  auto* fix = dynamic_cast<TWrenDotNetComReferenceFixAction*>(&action);
  if (!fix) return;
  fix->ProjectFile = edProjectFile.text;
  fix->ReferenceName = edReferenceName.text;
  fix->ProgID = edProgID.text;
}

bool TDotNetComRefFrame::CheckPage(std::string& message) {
  for (const TEditModel* edit : {&edProjectFile, &edReferenceName, &edProgID}) {
    if (!Trim(edit->text).empty()) continue;
    message = edit->caption + " is required.";
    return false;
  }
  return true;
}

bool TDotNetComRefFrame::BrowseProjectFile() { return GetFile(edProjectFile, kProjectFilter); }

void TDotNetComRefFrame::ListControls(TWrenPageControls& controls) {
  controls.Edit("edProjectFile", edProjectFile);
  controls.Button("btnProjectFile", "...", [this] { BrowseProjectFile(); });
  controls.Edit("edReferenceName", edReferenceName);
  controls.Label("lblReferenceNameHint", lblReferenceNameHint);
  controls.Edit("edProgID", edProgID);
  controls.Label("lblProgIDHint", lblProgIDHint);
}

std::vector<TWrenPagePropertyInfo> TDotNetComRefFrame::PropertyInfo() const {
  return {{"ProjectFile", edProjectFile.caption, "", "", true},
          {"ReferenceName", edReferenceName.caption, lblReferenceNameHint.caption},
          {"ProgID", edProgID.caption, lblProgIDHint.caption}};
}

}  // namespace wren
