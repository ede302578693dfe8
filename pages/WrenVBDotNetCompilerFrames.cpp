#include "pages/WrenVBDotNetCompilerFrames.h"

#include "compilers/WrenVBDotNetCompilerAction.h"

namespace wren {

namespace {

TWrenCustomVBDotNetCompilerAction& VB(TWrenAction& action) {
  return dynamic_cast<TWrenCustomVBDotNetCompilerAction&>(action);
}

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

}  // namespace wren
