#include "pages/WrenDotNetRegasmFrames.h"

#include "sdktools/WrenDotNetRegasmAction.h"

namespace wren {

TWrenRegasmActionFrame::TWrenRegasmActionFrame() {
  lblHeading.caption = "Assembly";
  edAssemblyPath.caption = "Assembly";
  rgMode.caption = "RegAsm Mode";
  rgMode.items = {"Assembly Registration", "Unregister Assembly", "Generate Reg File",
                  "Generate and Register TypeLibrary"};
  rgMode.itemIndex = 0;
  edRegFile.caption = "Reg File";
  edTlbFile.caption = "Type Library File";
  cbCodebase.caption = "Create a Codebase entry in the Registry";
  cbNoLogo.caption = "Suppres the Microsoft startup banner";
  cbSilent.caption = "Suppress success messages";
  cbVerbose.caption = "Verbose output";
  cbRegistered.caption = "Only refer to already registered type libraries";
  UpdateMode();
}

void TWrenRegasmActionFrame::UpdateMode() {
  edRegFile.enabled = rgMode.itemIndex == static_cast<int>(TRegAsmMode::asmGenerateRegFile);
  edTlbFile.enabled = rgMode.itemIndex == static_cast<int>(TRegAsmMode::asmGenAndRegTLB);
}

void TWrenRegasmActionFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  auto* regasm = dynamic_cast<TWrenRegasmAction*>(&action);
  if (!regasm) return;
  edAssemblyPath.text = regasm->AssemblyPath;
  rgMode.itemIndex = static_cast<int>(regasm->RegAsmMode);
  edRegFile.text = regasm->GenRegFile;
  edTlbFile.text = regasm->ExportToTLB;
  cbCodebase.checked = regasm->Codebase;
  cbNoLogo.checked = regasm->NoLogo;
  cbSilent.checked = regasm->Silent;
  cbVerbose.checked = regasm->Verbose;
  cbRegistered.checked = regasm->Registered;
  UpdateMode();
}

void TWrenRegasmActionFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* regasm = dynamic_cast<TWrenRegasmAction*>(&action);
  if (!regasm) return;
  regasm->AssemblyPath = edAssemblyPath.text;
  if (rgMode.itemIndex >= 0 && rgMode.itemIndex < static_cast<int>(rgMode.items.size()))
    regasm->RegAsmMode = static_cast<TRegAsmMode>(rgMode.itemIndex);
  regasm->GenRegFile = edRegFile.text;
  regasm->ExportToTLB = edTlbFile.text;
  regasm->Codebase = cbCodebase.checked;
  regasm->NoLogo = cbNoLogo.checked;
  regasm->Silent = cbSilent.checked;
  regasm->Verbose = cbVerbose.checked;
  regasm->Registered = cbRegistered.checked;
}

void TWrenRegasmActionFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  controls.Edit("edAssemblyPath", edAssemblyPath);
  controls.Button("btnAssemblyPath", "...", [this] { BrowseAssembly(); });
  controls.ComboBox("rgMode", rgMode, [this] { UpdateMode(); });
  controls.Edit("edRegFile", edRegFile);
  controls.Button("btnRegFile", "...", [this] { BrowseRegFile(); }, edRegFile.enabled);
  controls.Edit("edTlbFile", edTlbFile);
  controls.Button("btnTlbFile", "...", [this] { BrowseTlbFile(); }, edTlbFile.enabled);
  controls.CheckBox("cbCodebase", cbCodebase);
  controls.CheckBox("cbNoLogo", cbNoLogo);
  controls.CheckBox("cbSilent", cbSilent);
  controls.CheckBox("cbVerbose", cbVerbose);
  controls.CheckBox("cbRegistered", cbRegistered);
}

std::vector<TWrenPagePropertyInfo> TWrenRegasmActionFrame::PropertyInfo() const {
  return {{"AssemblyPath", edAssemblyPath.caption, "", "", true},
          {"RegAsmMode", rgMode.caption},
          {"GenRegFile", edRegFile.caption, "", "", true},
          {"ExportToTLB", edTlbFile.caption, "", "", true},
          {"Codebase", cbCodebase.caption},
          {"NoLogo", cbNoLogo.caption},
          {"Silent", cbSilent.caption},
          {"Verbose", cbVerbose.caption},
          {"Registered", cbRegistered.caption}};
}

}  // namespace wren
