#include "pages/WrenDotNetTLBImpFrames.h"

#include "sdktools/WrenDotNetTLBImpAction.h"

namespace wren {

TTLBImportFrame::TTLBImportFrame() {
  lblHeading.caption = "Assembly Output File";
  edAssemblyOutFile.caption = "Assembly Output File";
  edTypeLibraryName.caption = "Type Library Name";
  edResourceID.caption = "Resource ID";
  edNamespace.caption = "Namespace";
  edAsmVersion.caption = "Version Number of Assembly";
  cbTransform.caption = "Transform [out, retval] parameters of dispinterfaces (/transform:DispRet)";
  cbAllowUnsafe.caption = "Produce interfaces without runtime security checks (/unsafe)";
  cbPrimary.caption = "Produce a primary interop assembly (/primary)";
  cbSysArray.caption = "Import SAFEARRAY as System.Array (/sysarray)";
}

void TTLBImportFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  auto* tlb = dynamic_cast<TTLBImportAction*>(&action);
  if (!tlb) return;
  edAssemblyOutFile.text = tlb->AssemblyOutFile;
  edTypeLibraryName.text = tlb->TypeLibraryName;
  edResourceID.text = tlb->ResourceID;
  edNamespace.text = tlb->Namespace;
  edAsmVersion.text = tlb->AsmVersion;
  cbTransform.checked = tlb->Transform;
  cbAllowUnsafe.checked = tlb->AllowUnsafe;
  cbPrimary.checked = tlb->Primary;
  cbSysArray.checked = tlb->SysArray;
}

void TTLBImportFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* tlb = dynamic_cast<TTLBImportAction*>(&action);
  if (!tlb) return;
  tlb->AssemblyOutFile = edAssemblyOutFile.text;
  tlb->TypeLibraryName = edTypeLibraryName.text;
  tlb->ResourceID = edResourceID.text;
  tlb->Namespace = edNamespace.text;
  tlb->AsmVersion = edAsmVersion.text;
  tlb->Transform = cbTransform.checked;
  tlb->AllowUnsafe = cbAllowUnsafe.checked;
  tlb->Primary = cbPrimary.checked;
  tlb->SysArray = cbSysArray.checked;
}

TTLBImportReferencesFrame::TTLBImportReferencesFrame() {
  mmReferences.caption = "References";
  cbStrictRef.caption = "Only use assemblies specified here";
}

void TTLBImportReferencesFrame::ReadActionData(TWrenAction& action) {
  auto* tlb = dynamic_cast<TTLBImportAction*>(&action);
  if (!tlb) return;
  mmReferences.lines = tlb->References;
  cbStrictRef.checked = tlb->StrictRef;
}

void TTLBImportReferencesFrame::WriteActionData(TWrenAction& action) {
  auto* tlb = dynamic_cast<TTLBImportAction*>(&action);
  if (!tlb) return;
  tlb->References = mmReferences.lines;
  tlb->StrictRef = cbStrictRef.checked;
}

TTLBImportSNFrame::TTLBImportSNFrame() {
  edPublicKeyFile.caption = "Public Key File";
  edKeyFile.caption = "Key File";
  edKeyContainer.caption = "Key Container";
  cbDelaySign.caption = "Delay Sign";
}

void TTLBImportSNFrame::ReadActionData(TWrenAction& action) {
  auto* tlb = dynamic_cast<TTLBImportAction*>(&action);
  if (!tlb) return;
  edPublicKeyFile.text = tlb->PublicKeyFile;
  edKeyFile.text = tlb->KeyFile;
  edKeyContainer.text = tlb->KeyContainer;
  cbDelaySign.checked = tlb->DelaySign;
}

void TTLBImportSNFrame::WriteActionData(TWrenAction& action) {
  auto* tlb = dynamic_cast<TTLBImportAction*>(&action);
  if (!tlb) return;
  tlb->PublicKeyFile = edPublicKeyFile.text;
  tlb->KeyFile = edKeyFile.text;
  tlb->KeyContainer = edKeyContainer.text;
  tlb->DelaySign = cbDelaySign.checked;
}

TTLBImpLoggingFrame::TTLBImpLoggingFrame() {
  cbNoLogo.caption = "Supress logo (/nologo)";
  cbSilent.caption = "Suppress all output except errors (/silent)";
  cbVerbose.caption = "Display extra information (/verbose)";
}

void TTLBImpLoggingFrame::ReadActionData(TWrenAction& action) {
  auto* tlb = dynamic_cast<TTLBImportAction*>(&action);
  if (!tlb) return;
  cbNoLogo.checked = tlb->NoLogo;
  cbSilent.checked = tlb->Silent;
  cbVerbose.checked = tlb->Verbose;
}

void TTLBImpLoggingFrame::WriteActionData(TWrenAction& action) {
  auto* tlb = dynamic_cast<TTLBImportAction*>(&action);
  if (!tlb) return;
  tlb->NoLogo = cbNoLogo.checked;
  tlb->Silent = cbSilent.checked;
  tlb->Verbose = cbVerbose.checked;
}

void TTLBImportFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  controls.Edit("edAssemblyOutFile", edAssemblyOutFile);
  controls.Button("btnAssemblyOutFile", "...", [this] { BrowseAssemblyOutFile(); });
  controls.Edit("edTypeLibraryName", edTypeLibraryName);
  controls.Button("btnTypeLibraryName", "...", [this] { BrowseTypeLibrary(); });
  controls.Edit("edResourceID", edResourceID);
  controls.Edit("edNamespace", edNamespace);
  controls.Edit("edAsmVersion", edAsmVersion);
  controls.CheckBox("cbTransform", cbTransform);
  controls.CheckBox("cbAllowUnsafe", cbAllowUnsafe);
  controls.CheckBox("cbPrimary", cbPrimary);
  controls.CheckBox("cbSysArray", cbSysArray);
}

void TTLBImportReferencesFrame::ListControls(TWrenPageControls& controls) {
  controls.Memo("mmReferences", mmReferences);
  controls.CheckBox("cbStrictRef", cbStrictRef);
}

void TTLBImportSNFrame::ListControls(TWrenPageControls& controls) {
  controls.Edit("edPublicKeyFile", edPublicKeyFile);
  controls.Button("btnPublicKeyFile", "...", [this] { BrowsePublicKeyFile(); });
  controls.Edit("edKeyFile", edKeyFile);
  controls.Button("btnKeyFile", "...", [this] { BrowseKeyFile(); });
  controls.Edit("edKeyContainer", edKeyContainer);
  controls.CheckBox("cbDelaySign", cbDelaySign);
}

void TTLBImpLoggingFrame::ListControls(TWrenPageControls& controls) {
  controls.CheckBox("cbNoLogo", cbNoLogo);
  controls.CheckBox("cbSilent", cbSilent);
  controls.CheckBox("cbVerbose", cbVerbose);
}

std::vector<TWrenPagePropertyInfo> TTLBImportFrame::PropertyInfo() const {
  return {{"AssemblyOutFile", edAssemblyOutFile.caption, "", "", true},
          {"TypeLibraryName", edTypeLibraryName.caption, "", "", true},
          {"ResourceID", edResourceID.caption},
          {"Namespace", edNamespace.caption},
          {"AsmVersion", edAsmVersion.caption},
          {"Transform", cbTransform.caption},
          {"AllowUnsafe", cbAllowUnsafe.caption},
          {"Primary", cbPrimary.caption},
          {"SysArray", cbSysArray.caption}};
}

std::vector<TWrenPagePropertyInfo> TTLBImportReferencesFrame::PropertyInfo() const {
  return {{"References", mmReferences.caption},
          {"StrictRef", cbStrictRef.caption}};
}

std::vector<TWrenPagePropertyInfo> TTLBImportSNFrame::PropertyInfo() const {
  return {{"PublicKeyFile", edPublicKeyFile.caption, "", "", true},
          {"KeyFile", edKeyFile.caption, "", "", true},
          {"KeyContainer", edKeyContainer.caption},
          {"DelaySign", cbDelaySign.caption}};
}

std::vector<TWrenPagePropertyInfo> TTLBImpLoggingFrame::PropertyInfo() const {
  return {{"NoLogo", cbNoLogo.caption},
          {"Silent", cbSilent.caption},
          {"Verbose", cbVerbose.caption}};
}

}  // namespace wren
