#include "pages/WrenToolOptionsFrame.h"

#include "WrenUtils.h"
#include "dotnet/WrenDotNetAction.h"
#include "tools/WrenToolOptions.h"

namespace wren {

void TToolOptionsFrame::ReadOptions(TWrenOptionsObject& options) {
  if (const auto* tool = dynamic_cast<const IWrenToolOptions*>(&options))
    edLocation.text = tool->GetLocation();
}

void TToolOptionsFrame::WriteOptions(TWrenOptionsObject& options) {
  if (auto* tool = dynamic_cast<IWrenToolOptions*>(&options)) tool->SetLocation(edLocation.text);
}

bool GetFolder(TEditModel& edit, const std::string& title) {
  std::string dir = WrenDesignApplicationServices().ExpandText(edit.text);
  if (!WrenBrowseForDirectory(title, dir)) return false;
  edit.text = dir;
  return true;
}

bool TToolOptionsFrame::BrowseLocation() { return GetFile(edLocation, filter_); }

void TToolOptionsFrame::ListControls(TWrenPageControls& controls) {
  controls.Edit("edLocation", edLocation);
  controls.Button("btnLocation", "...", [this] { BrowseLocation(); });
}

}  // namespace wren
