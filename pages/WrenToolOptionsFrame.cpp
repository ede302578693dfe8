#include "pages/WrenToolOptionsFrame.h"

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

bool TToolOptionsFrame::BrowseLocation() { return GetFile(edLocation, filter_); }

}  // namespace wren
