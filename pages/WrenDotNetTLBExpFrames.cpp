#include "pages/WrenDotNetTLBExpFrames.h"

#include "sdktools/WrenDotNetTLBExpAction.h"

namespace wren {

TTLBExportFrame::TTLBExportFrame() {
  lblHeading.caption = "TypeLibrary Output File";
  edOutputFile.caption = "TypeLibrary Output File";
  edNamesCaseFile.caption = "Capitalization File";
  edAssembly.caption = "Assembly";
  cbNoLogo.caption = "Don't display Logo";
  cbSilent.caption = "Don't display success messages";
}

void TTLBExportFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  auto* tlb = dynamic_cast<TTLBExportAction*>(&action);
  if (!tlb) return;
  edOutputFile.text = tlb->OutputFile;
  edNamesCaseFile.text = tlb->NamesCaseFile;
  edAssembly.text = tlb->AssemblyName;
  cbNoLogo.checked = tlb->NoLogo;
  cbSilent.checked = tlb->Silent;
}

void TTLBExportFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* tlb = dynamic_cast<TTLBExportAction*>(&action);
  if (!tlb) return;
  tlb->OutputFile = edOutputFile.text;
  tlb->NamesCaseFile = edNamesCaseFile.text;
  tlb->AssemblyName = edAssembly.text;
  tlb->NoLogo = cbNoLogo.checked;
  tlb->Silent = cbSilent.checked;
}

void TTLBExportFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  controls.Edit("edOutputFile", edOutputFile);
  controls.Button("btnOutputFile", "...", [this] { BrowseOutputFile(); });
  controls.Edit("edNamesCaseFile", edNamesCaseFile);
  controls.Button("btnNamesCaseFile", "...", [this] { BrowseNamesCaseFile(); });
  controls.Edit("edAssembly", edAssembly);
  controls.Button("btnAssembly", "...", [this] { BrowseAssembly(); });
  controls.CheckBox("cbNoLogo", cbNoLogo);
  controls.CheckBox("cbSilent", cbSilent);
}

std::vector<TWrenPagePropertyInfo> TTLBExportFrame::PropertyInfo() const {
  return {{"OutputFile", edOutputFile.caption, "", "", true},
          {"NamesCaseFile", edNamesCaseFile.caption, "", "", true},
          {"AssemblyName", edAssembly.caption, "", "", true},
          {"NoLogo", cbNoLogo.caption},
          {"Silent", cbSilent.caption}};
}

}  // namespace wren
