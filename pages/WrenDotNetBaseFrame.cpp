#include "pages/WrenDotNetBaseFrame.h"

#include "WrenUtils.h"
#include "dotnet/WrenDotNetAction.h"
#include "dotnet/WrenDotNetFrameWorkAPI.h"

namespace wren {

void FillSDKVersions(TComboBoxModel& combo, const std::string& selected) {
  combo.items.clear();
  const std::shared_ptr<IWrenDotNetInfo> info = WrenDotNetInfo();
  for (int32_t i = 0; i < info->GetInstalledFrameWorkCount(); ++i)
    combo.items.push_back(info->GetFrameWork(i)->GetSDKVersion());
  combo.itemIndex = combo.items.empty() ? -1 : 0;
  for (size_t i = 0; i < combo.items.size(); ++i) {
    if (SameText(combo.items[i], selected)) {
      combo.itemIndex = static_cast<int>(i);
      break;
    }
  }
}

void TDotNetToolBaseFrame::InitPage(TWrenAction& action) {
  const auto* dotNet = dynamic_cast<const TWrenDotNetAction*>(&action);
  if (!dotNet) return;
  switch (dotNet->GetDotNetToolType()) {
    case TWrenDotNetToolType::ttNone:
      pnlVersion.visible = false;
      break;
    case TWrenDotNetToolType::ttFramework:
      lblVersion.caption = "Framework Version";
      rbDefaultVersion.caption = "Use default Framework version";
      break;
    case TWrenDotNetToolType::ttSDK:
      break;
  }
}

void TDotNetToolBaseFrame::ReadActionData(TWrenAction& action) {
  const auto* dotNet = dynamic_cast<const TWrenDotNetAction*>(&action);
  versionInUse_ = dotNet && dotNet->GetDotNetToolType() != TWrenDotNetToolType::ttNone;
  if (!versionInUse_) return;
  rbUseVersion.checked = dotNet->OverrideSDKDefault;
  rbDefaultVersion.checked = !dotNet->OverrideSDKDefault;
  FillSDKVersions(cbVersion, dotNet->GetDefaultSDKVersion());
}

void TDotNetToolBaseFrame::WriteActionData(TWrenAction& action) {
  auto* dotNet = dynamic_cast<TWrenDotNetAction*>(&action);
  if (!versionInUse_ || !dotNet) return;
  dotNet->OverrideSDKDefault = rbUseVersion.checked;
  dotNet->SetDefaultSDKVersion(cbVersion.Selected());
}

void TDotNetToolBaseFrame::ListControls(TWrenPageControls& controls) {
  controls.Label("lblHeading", lblHeading);
  ListVersionPanel(controls);
}

void TDotNetToolBaseFrame::ListVersionPanel(TWrenPageControls& controls) {
  controls.BeginPanel("pnlVersion", pnlVersion);
  controls.Label("lblVersion", lblVersion);
  controls.RadioButton("rbDefaultVersion", "version", rbDefaultVersion);
  controls.RadioButton("rbUseVersion", "version", rbUseVersion);
  controls.ComboBox("cbVersion", cbVersion);
  controls.EndPanel();
}

}  // namespace wren
