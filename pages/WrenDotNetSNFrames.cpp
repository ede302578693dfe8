#include "pages/WrenDotNetSNFrames.h"

#include "WrenUtils.h"
#include "sdktools/WrenDotNetSNAction.h"

namespace wren {

// --- Generate key pair ---

TSNGenerateKeyPairFrame::TSNGenerateKeyPairFrame() {
  lblHeading.caption = "Output File";
  edOutputFile.caption = "Output File";
}

void TSNGenerateKeyPairFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  if (auto* sn = dynamic_cast<TSNGenerateKeyPair*>(&action)) edOutputFile.text = sn->OutputFile;
}

void TSNGenerateKeyPairFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  if (auto* sn = dynamic_cast<TSNGenerateKeyPair*>(&action)) sn->OutputFile = edOutputFile.text;
}

bool TSNGenerateKeyPairFrame::CheckPage(std::string& message) {
  if (Trim(edOutputFile.text).empty()) {
    message = "Output file cannot be blank";
    return false;
  }
  return true;
}

bool TSNGenerateKeyPairFrame::BrowseOutputFile() {
  TEditModel proposal = edOutputFile;
  if (proposal.text.empty()) proposal.text = kDefaultKeyFile;
  if (!GetFile(proposal, kKeyFileFilter)) return false;
  edOutputFile.text = proposal.text;
  return true;
}

void TSNGenerateKeyPairFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  controls.Edit("edOutputFile", edOutputFile);
  controls.Button("btnOutputFile", "...", [this] { BrowseOutputFile(); });
}

// --- Verify ---

TSNVerifySNFrame::TSNVerifySNFrame() {
  lblHeading.caption = "Assembly";
  edAssembly.caption = "Assembly";
  cbForce.caption = "Force";
  cbFailIfValid.caption = "Fail if valid Strong Name";
}

void TSNVerifySNFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  auto* sn = dynamic_cast<TSNVerifyAssembly*>(&action);
  if (!sn) return;
  edAssembly.text = sn->Assembly;
  cbForce.checked = sn->Force;
  cbFailIfValid.checked = sn->FailIfValid;
}

void TSNVerifySNFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* sn = dynamic_cast<TSNVerifyAssembly*>(&action);
  if (!sn) return;
  sn->Assembly = edAssembly.text;
  sn->Force = cbForce.checked;
  sn->FailIfValid = cbFailIfValid.checked;
}

void TSNVerifySNFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  controls.Edit("edAssembly", edAssembly);
  controls.Button("btnAssembly", "...", [this] { BrowseAssembly(); });
  controls.CheckBox("cbForce", cbForce);
  controls.CheckBox("cbFailIfValid", cbFailIfValid);
}

// --- Install key pair ---

TSNInstallKeyPairFrame::TSNInstallKeyPairFrame() {
  lblHeading.caption = "Key Pair";
  edKeyFile.caption = "Key File:";
  edContainer.caption = "Container:";
}

void TSNInstallKeyPairFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  auto* sn = dynamic_cast<TSNInstallKeyPair*>(&action);
  if (!sn) return;
  edKeyFile.text = sn->KeyFile;
  edContainer.text = sn->ContainerFile;
}

void TSNInstallKeyPairFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* sn = dynamic_cast<TSNInstallKeyPair*>(&action);
  if (!sn) return;
  sn->KeyFile = edKeyFile.text;
  sn->ContainerFile = edContainer.text;
}

void TSNInstallKeyPairFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  controls.Edit("edKeyFile", edKeyFile);
  controls.Button("btnKeyFile", "...", [this] { BrowseKeyFile(); });
  controls.Edit("edContainer", edContainer);
}

// --- Extract public key ---

TSNExtractKeyFrame::TSNExtractKeyFrame() {
  lblHeading.caption = "Public Key";
  lblInput.caption = "Input File";
  rbFromAssembly.caption = "Extract the public key from an assembly";
  rbFromKeyFile.caption = "Extract the public key from a key file";
  rbFromKeyFile.checked = true;
  rbFromContainer.caption = "Extract the public key from a container";
  lblOutput.caption = "Output";
  rbToKeyFile.caption = "Output to Key File";
  rbToKeyFile.checked = true;
  rbToCSV.caption = "Output to CSV";
  rbToClipboard.caption = "Output to Clipboard as CSV";
  UpdateChoices();
}

void TSNExtractKeyFrame::UpdateChoices() {
  edFromAssembly.enabled = rbFromAssembly.checked;
  edFromKeyFile.enabled = rbFromKeyFile.checked;
  edFromContainer.enabled = rbFromContainer.checked;
  edToKeyFile.enabled = rbToKeyFile.checked;
  edToCSV.enabled = rbToCSV.checked;
}

void TSNExtractKeyFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  auto* sn = dynamic_cast<TSNExtractPublicKey*>(&action);
  if (!sn) return;
  edFromAssembly.text = sn->FromAssembly;
  edFromKeyFile.text = sn->FromKeyFile;
  edFromContainer.text = sn->FromContainer;
  edToKeyFile.text = sn->ToKeyFile;
  edToCSV.text = sn->ToCSV;
  rbFromAssembly.checked = sn->ExtractFromType == TSNExtractFromType::extractFromAssembly;
  rbFromKeyFile.checked = sn->ExtractFromType == TSNExtractFromType::extractFromKeyFile;
  rbFromContainer.checked = sn->ExtractFromType == TSNExtractFromType::extractFromContainer;
  rbToKeyFile.checked = sn->ExtractToType == TSNExtractToType::extractToKeyFile;
  rbToCSV.checked = sn->ExtractToType == TSNExtractToType::extractToCSV;
  rbToClipboard.checked = sn->ExtractToType == TSNExtractToType::extractToClipboard;
  UpdateChoices();
}

void TSNExtractKeyFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* sn = dynamic_cast<TSNExtractPublicKey*>(&action);
  if (!sn) return;
  sn->FromAssembly = edFromAssembly.text;
  sn->FromKeyFile = edFromKeyFile.text;
  sn->FromContainer = edFromContainer.text;
  sn->ToKeyFile = edToKeyFile.text;
  sn->ToCSV = edToCSV.text;
  if (rbFromAssembly.checked) sn->ExtractFromType = TSNExtractFromType::extractFromAssembly;
  if (rbFromKeyFile.checked) sn->ExtractFromType = TSNExtractFromType::extractFromKeyFile;
  if (rbFromContainer.checked) sn->ExtractFromType = TSNExtractFromType::extractFromContainer;
  if (rbToKeyFile.checked) sn->ExtractToType = TSNExtractToType::extractToKeyFile;
  if (rbToCSV.checked) sn->ExtractToType = TSNExtractToType::extractToCSV;
  if (rbToClipboard.checked) sn->ExtractToType = TSNExtractToType::extractToClipboard;
}

void TSNExtractKeyFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  const auto update = [this] { UpdateChoices(); };
  controls.Label("lblInput", lblInput);
  controls.RadioButton("rbFromAssembly", "from", rbFromAssembly, update);
  controls.Edit("edFromAssembly", edFromAssembly);
  controls.Button("btnFromAssembly", "...", [this] { BrowseFromAssembly(); },
                  edFromAssembly.enabled);
  controls.RadioButton("rbFromKeyFile", "from", rbFromKeyFile, update);
  controls.Edit("edFromKeyFile", edFromKeyFile);
  controls.Button("btnFromKeyFile", "...", [this] { BrowseFromKeyFile(); },
                  edFromKeyFile.enabled);
  controls.RadioButton("rbFromContainer", "from", rbFromContainer, update);
  controls.Edit("edFromContainer", edFromContainer);
  controls.Label("lblOutput", lblOutput);
  controls.RadioButton("rbToKeyFile", "to", rbToKeyFile, update);
  controls.Edit("edToKeyFile", edToKeyFile);
  controls.Button("btnToKeyFile", "...", [this] { BrowseToKeyFile(); }, edToKeyFile.enabled);
  controls.RadioButton("rbToCSV", "to", rbToCSV, update);
  controls.Edit("edToCSV", edToCSV);
  controls.Button("btnToCSV", "...", [this] { BrowseCSV(); }, edToCSV.enabled);
  controls.RadioButton("rbToClipboard", "to", rbToClipboard, update);
}

// --- Re-sign ---

TSNResignFrame::TSNResignFrame() {
  lblHeading.caption = "Assembly";
  edAssembly.caption = "Assembly";
  lblKey.caption = "Key";
  rbKeyFile.caption = "Key File";
  rbKeyFile.checked = true;
  rbContainer.caption = "Container";
  UpdateChoices();
}

void TSNResignFrame::UpdateChoices() {
  edKeyFile.enabled = rbKeyFile.checked;
  edContainer.enabled = rbContainer.checked;
}

void TSNResignFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  auto* sn = dynamic_cast<TSNResignAssembly*>(&action);
  if (!sn) return;
  edAssembly.text = sn->Assembly;
  edKeyFile.text = sn->KeyFile;
  edContainer.text = sn->Container;
  rbKeyFile.checked = sn->UseKeyFile;
  rbContainer.checked = !sn->UseKeyFile;
  UpdateChoices();
}

void TSNResignFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  auto* sn = dynamic_cast<TSNResignAssembly*>(&action);
  if (!sn) return;
  sn->Assembly = edAssembly.text;
  sn->KeyFile = edKeyFile.text;
  sn->Container = edContainer.text;
  sn->UseKeyFile = rbKeyFile.checked;
}

void TSNResignFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  const auto update = [this] { UpdateChoices(); };
  controls.Edit("edAssembly", edAssembly);
  controls.Button("btnAssembly", "...", [this] { BrowseAssembly(); });
  controls.Label("lblKey", lblKey);
  controls.RadioButton("rbKeyFile", "key", rbKeyFile, update);
  controls.Edit("edKeyFile", edKeyFile);
  controls.Button("btnKeyFile", "...", [this] { BrowseKeyFile(); }, edKeyFile.enabled);
  controls.RadioButton("rbContainer", "key", rbContainer, update);
  controls.Edit("edContainer", edContainer);
}

// --- Run SN.EXE ---

TSNGenericFrame::TSNGenericFrame() {
  edOptions.caption = "SN.EXE Command Line Options";
  edWorkingFolder.caption = "Working Folder";
}

std::vector<TWrenPagePropertyInfo> TSNGenerateKeyPairFrame::PropertyInfo() const {
  return {{"OutputFile", edOutputFile.caption, "", "", true}};
}

std::vector<TWrenPagePropertyInfo> TSNVerifySNFrame::PropertyInfo() const {
  return {{"Assembly", edAssembly.caption, "", "", true},
          {"Force", cbForce.caption},
          {"FailIfValid", cbFailIfValid.caption}};
}

std::vector<TWrenPagePropertyInfo> TSNInstallKeyPairFrame::PropertyInfo() const {
  return {{"KeyFile", edKeyFile.caption, "", "", true},
          {"ContainerFile", edContainer.caption}};
}

// The edits of the extract page have no labels of their own: their radio buttons name them.
std::vector<TWrenPagePropertyInfo> TSNExtractKeyFrame::PropertyInfo() const {
  return {{"ExtractFromType", lblInput.caption},
          {"FromAssembly", rbFromAssembly.caption},
          {"FromKeyFile", rbFromKeyFile.caption},
          {"FromContainer", rbFromContainer.caption},
          {"ExtractToType", lblOutput.caption},
          {"ToKeyFile", rbToKeyFile.caption},
          {"ToCSV", rbToCSV.caption, "", "", true}};
}

std::vector<TWrenPagePropertyInfo> TSNResignFrame::PropertyInfo() const {
  return {{"Assembly", edAssembly.caption},
          {"UseKeyFile", rbKeyFile.caption},
          {"KeyFile", rbKeyFile.caption},
          {"Container", rbContainer.caption}};
}

}  // namespace wren
