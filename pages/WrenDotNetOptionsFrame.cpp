#include "pages/WrenDotNetOptionsFrame.h"

#include "dotnet/WrenDotNetOptionsImpl.h"
#include "pages/WrenDotNetBaseFrame.h"

namespace wren {

void TDotNetOptionsFrame::ReadOptions(TWrenOptionsObject& options) {
  const auto* dotNet = dynamic_cast<const TWrenDotNetOptions*>(&options);
  FillSDKVersions(cbSDKVersion, dotNet ? dotNet->GetDefaultSDKVersion() : "");
}

void TDotNetOptionsFrame::WriteOptions(TWrenOptionsObject& options) {
  if (auto* dotNet = dynamic_cast<TWrenDotNetOptions*>(&options))
    dotNet->SetDefaultSDKVersion(cbSDKVersion.Selected());
}

void TDotNetOptionsFrame::ListControls(TWrenPageControls& controls) {
  controls.Label("lblHeading", lblHeading);
  controls.ComboBox("cbSDKVersion", cbSDKVersion);
}

}  // namespace wren
