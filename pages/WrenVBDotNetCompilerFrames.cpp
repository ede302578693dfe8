#include "pages/WrenVBDotNetCompilerFrames.h"

#include "compilers/WrenVBDotNetCompilerAction.h"

namespace wren {

namespace {

TWrenCustomVBDotNetCompilerAction& VB(TWrenAction& action) {
  return dynamic_cast<TWrenCustomVBDotNetCompilerAction&>(action);
}

const char kKeyFileFilter[] = "Key Files (*.snk)|*.snk|All Files (*.*)|*.*";

}  // namespace

TVBDOTNETCompilerMainFrame::TVBDOTNETCompilerMainFrame()
    : TManagedCompilerMainFrame(
          "Microsoft VB.NET Compiler",
          "(eg. *.vb or MyFile.vb, separate multiple files with a semicolon)") {}

void TVBDOTNETCompilerMainFrame::ReadActionData(TWrenAction& action) {
  TManagedCompilerMainFrame::ReadActionData(action);
  RootNameSpace.text = VB(action).RootNameSpace;
}

void TVBDOTNETCompilerMainFrame::WriteActionData(TWrenAction& action) {
  TManagedCompilerMainFrame::WriteActionData(action);
  VB(action).RootNameSpace = RootNameSpace.text;
}

void TVBDOTNETCompilerMainFrame::ListControls(TWrenPageControls& controls) {
  TManagedCompilerMainFrame::ListControls(controls);
  controls.Edit("RootNameSpace", RootNameSpace);
}

TVBDotNetCompilerOptionsFrame::TVBDotNetCompilerOptionsFrame() {
  CodePage.enabled = false;
  OptionCompare.caption = "Option Compare:";
}

void TVBDotNetCompilerOptionsFrame::ReadActionData(TWrenAction& action) {
  TManagedCompilerOptionsFrame::ReadActionData(action);
  const TWrenCustomVBDotNetCompilerAction& a = VB(action);
  OptionExplicit.checked = a.OptionExplicit;
  OptionStrict.checked = a.OptionStrict;
  SetChoice(OptionCompare, {"Binary", "Text"}, static_cast<int>(a.OptionCompare));
  RemoveIntChecks.checked = a.RemoveIntChecks;
  TargetCF.checked = a.TargetCF;
  Verbose.checked = a.Verbose;
  Quiet.checked = a.Quiet;
  Imports.text = a.Imports;
  SDKPath.text = a.SDKPath;
}

void TVBDotNetCompilerOptionsFrame::WriteActionData(TWrenAction& action) {
  TManagedCompilerOptionsFrame::WriteActionData(action);
  TWrenCustomVBDotNetCompilerAction& a = VB(action);
  a.OptionExplicit = OptionExplicit.checked;
  a.OptionStrict = OptionStrict.checked;
  a.OptionCompare = static_cast<TVBDotNetOptionCompare>(
      ChoiceOrdinal(OptionCompare, static_cast<int>(a.OptionCompare)));
  a.RemoveIntChecks = RemoveIntChecks.checked;
  a.TargetCF = TargetCF.checked;
  a.Verbose = Verbose.checked;
  a.Quiet = Quiet.checked;
  a.Imports = Imports.text;
  a.SDKPath = SDKPath.text;
}

void TVBDotNetCompilerOptionsFrame::ListControls(TWrenPageControls& controls) {
  TManagedCompilerOptionsFrame::ListControls(controls);
  controls.CheckBox("OptionExplicit", OptionExplicit);
  controls.CheckBox("OptionStrict", OptionStrict);
  controls.ComboBox("OptionCompare", OptionCompare);
  controls.CheckBox("RemoveIntChecks", RemoveIntChecks);
  controls.CheckBox("TargetCF", TargetCF);
  controls.CheckBox("Verbose", Verbose);
  controls.CheckBox("Quiet", Quiet);
  controls.Edit("Imports", Imports);
  controls.Edit("SDKPath", SDKPath);
}

void TVBDotNetCompilerAssembliesFrame::ReadActionData(TWrenAction& action) {
  TManagedCompilerAssembliesFrame::ReadActionData(action);
  const TWrenCustomVBDotNetCompilerAction& a = VB(action);
  DelaySign.checked = a.DelaySign;
  KeyFile.text = a.KeyFile;
  KeyContainer.text = a.KeyContainer;
}

void TVBDotNetCompilerAssembliesFrame::WriteActionData(TWrenAction& action) {
  TManagedCompilerAssembliesFrame::WriteActionData(action);
  TWrenCustomVBDotNetCompilerAction& a = VB(action);
  a.DelaySign = DelaySign.checked;
  a.KeyFile = KeyFile.text;
  a.KeyContainer = KeyContainer.text;
}

bool TVBDotNetCompilerAssembliesFrame::BrowseKeyFile() { return GetFile(KeyFile, kKeyFileFilter); }

void TVBDotNetCompilerAssembliesFrame::ListControls(TWrenPageControls& controls) {
  TManagedCompilerAssembliesFrame::ListControls(controls);
  controls.CheckBox("DelaySign", DelaySign);
  controls.Edit("KeyFile", KeyFile);
  controls.Button("btnKeyFile", "...", [this] { BrowseKeyFile(); });
  controls.Edit("KeyContainer", KeyContainer);
}

std::vector<TWrenPagePropertyInfo> TVBDOTNETCompilerMainFrame::PropertyInfo() const {
  std::vector<TWrenPagePropertyInfo> info = TManagedCompilerMainFrame::PropertyInfo();
  info.push_back({"RootNameSpace", RootNameSpace.caption});
  return info;
}

std::vector<TWrenPagePropertyInfo> TVBDotNetCompilerOptionsFrame::PropertyInfo() const {
  std::vector<TWrenPagePropertyInfo> info = TManagedCompilerOptionsFrame::PropertyInfo();
  info.push_back({"OptionExplicit", OptionExplicit.caption});
  info.push_back({"OptionStrict", OptionStrict.caption});
  info.push_back({"OptionCompare", OptionCompare.caption});
  info.push_back({"RemoveIntChecks", RemoveIntChecks.caption});
  info.push_back({"TargetCF", TargetCF.caption});
  info.push_back({"Verbose", Verbose.caption});
  info.push_back({"Quiet", Quiet.caption});
  info.push_back({"Imports", Imports.caption});
  info.push_back({"SDKPath", SDKPath.caption});
  return info;
}

std::vector<TWrenPagePropertyInfo> TVBDotNetCompilerAssembliesFrame::PropertyInfo() const {
  std::vector<TWrenPagePropertyInfo> info = TManagedCompilerAssembliesFrame::PropertyInfo();
  info.push_back({"DelaySign", DelaySign.caption});
  info.push_back({"KeyFile", KeyFile.caption});
  info.push_back({"KeyContainer", KeyContainer.caption});
  return info;
}

}  // namespace wren
