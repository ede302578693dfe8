#include "pages/WrenResgenFrames.h"

#include "sdktools/WrenResgenAction.h"

namespace wren {

TResGenFrame::TResGenFrame() {
  lblHeading.caption = "Resources";
  edInputFiles.caption = "Input File(s)";
  edOutputFile.caption = "Output File (optional)";
}

void TResGenFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  auto* resgen = dynamic_cast<TWrenResGenAction*>(&action);
  if (!resgen) return;
  edInputFiles.text = resgen->InputFiles;
  edOutputFile.text = resgen->OutputFile;
}

void TResGenFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* resgen = dynamic_cast<TWrenResGenAction*>(&action);
  if (!resgen) return;
  resgen->InputFiles = edInputFiles.text;
  resgen->OutputFile = edOutputFile.text;
}

void TResGenFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  controls.Edit("edInputFiles", edInputFiles);
  controls.Button("btnInputFiles", "...", [this] { BrowseInputFiles(); });
  controls.Edit("edOutputFile", edOutputFile);
  controls.Button("btnOutputFile", "...", [this] { BrowseOutputFile(); });
}

std::vector<TWrenPagePropertyInfo> TResGenFrame::PropertyInfo() const {
  return {{"InputFiles", edInputFiles.caption, "", "", true},
          {"OutputFile", edOutputFile.caption, "", "", true}};
}

}  // namespace wren
