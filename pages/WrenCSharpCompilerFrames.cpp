#include "pages/WrenCSharpCompilerFrames.h"

#include "compilers/WrenCSharpCompilerAction.h"

namespace wren {

namespace {

TWrenCustomCSharpCompilerAction& CSharp(TWrenAction& action) {
  return dynamic_cast<TWrenCustomCSharpCompilerAction&>(action);
}

const char kDocFileFilter[] = "XML Files (*.xml)|*.xml|All Files (*.*)|*.*";

}  // namespace

TCSharpCompilerMainFrame::TCSharpCompilerMainFrame()
    : TManagedCompilerMainFrame(
          "Microsoft C# Compiler",
          "(eg. *.cs or MyFile.cs, separate multiple files with a semicolon)") {}

void TCSharpCompilerMainFrame::ReadActionData(TWrenAction& action) {
  TManagedCompilerMainFrame::ReadActionData(action);
  DocFile.text = CSharp(action).DocFile;
}

void TCSharpCompilerMainFrame::WriteActionData(TWrenAction& action) {
  TManagedCompilerMainFrame::WriteActionData(action);
  CSharp(action).DocFile = DocFile.text;
}

bool TCSharpCompilerMainFrame::BrowseDocFile() { return GetFile(DocFile, kDocFileFilter); }

void TCSharpCompilerMainFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  ListSourceControls(controls);
  controls.Edit("DocFile", DocFile);
  controls.Button("btnDocFile", "...", [this] { BrowseDocFile(); });
  ListOutputControls(controls);
}

TCSharpCompilerOptionsFrame::TCSharpCompilerOptionsFrame() {
  FileAlign.caption = "File alignment:";
}

void TCSharpCompilerOptionsFrame::ReadActionData(TWrenAction& action) {
  TManagedCompilerOptionsFrame::ReadActionData(action);
  const TWrenCustomCSharpCompilerAction& a = CSharp(action);
  Checked.checked = a.Checked;
  CompileUnsafe.checked = a.CompileUnsafe;
  Incremental.checked = a.Incremental;
  NoConfig.checked = a.NoConfig;
  NoSTDLib.checked = a.NoSTDLib;
  FullPaths.checked = a.FullPaths;
  SetChoice(FileAlign, {"Default", "512", "1024", "2048", "4096", "8192"},
            static_cast<int>(a.FileAlign));
}

void TCSharpCompilerOptionsFrame::WriteActionData(TWrenAction& action) {
  TManagedCompilerOptionsFrame::WriteActionData(action);
  TWrenCustomCSharpCompilerAction& a = CSharp(action);
  a.Checked = Checked.checked;
  a.CompileUnsafe = CompileUnsafe.checked;
  a.Incremental = Incremental.checked;
  a.NoConfig = NoConfig.checked;
  a.NoSTDLib = NoSTDLib.checked;
  a.FullPaths = FullPaths.checked;
  a.FileAlign =
      static_cast<TCSharpFileAlign>(ChoiceOrdinal(FileAlign, static_cast<int>(a.FileAlign)));
}

void TCSharpCompilerOptionsFrame::ListControls(TWrenPageControls& controls) {
  TManagedCompilerOptionsFrame::ListControls(controls);
  controls.CheckBox("Checked", Checked);
  controls.CheckBox("CompileUnsafe", CompileUnsafe);
  controls.CheckBox("Incremental", Incremental);
  controls.CheckBox("NoConfig", NoConfig);
  controls.CheckBox("NoSTDLib", NoSTDLib);
  controls.CheckBox("FullPaths", FullPaths);
  controls.ComboBox("FileAlign", FileAlign);
}

TCSharpCompilerDebuggingFrame::TCSharpCompilerDebuggingFrame() {
  WarningLevel.caption = "Warning level:";
}

void TCSharpCompilerDebuggingFrame::ReadActionData(TWrenAction& action) {
  TManagedCompilerDebuggingFrame::ReadActionData(action);
  FillWarningLevels(WarningLevel, CSharp(action).WarningLevel);
}

void TCSharpCompilerDebuggingFrame::WriteActionData(TWrenAction& action) {
  TManagedCompilerDebuggingFrame::WriteActionData(action);
  TWrenCustomCSharpCompilerAction& a = CSharp(action);
  a.WarningLevel = static_cast<TDotNetWarningLevels>(
      ChoiceOrdinal(WarningLevel, static_cast<int>(a.WarningLevel)));
}

void TCSharpCompilerDebuggingFrame::ListControls(TWrenPageControls& controls) {
  TManagedCompilerDebuggingFrame::ListControls(controls);
  controls.ComboBox("WarningLevel", WarningLevel);
}

std::vector<TWrenPagePropertyInfo> TCSharpCompilerMainFrame::PropertyInfo() const {
  std::vector<TWrenPagePropertyInfo> info = TManagedCompilerMainFrame::PropertyInfo();
  // The documentation file sits between the files and the output file, as on the page.
  info.insert(info.begin() + 2, {"DocFile", DocFile.caption});
  return info;
}

std::vector<TWrenPagePropertyInfo> TCSharpCompilerOptionsFrame::PropertyInfo() const {
  std::vector<TWrenPagePropertyInfo> info = TManagedCompilerOptionsFrame::PropertyInfo();
  info.push_back({"Checked", Checked.caption});
  info.push_back({"CompileUnsafe", CompileUnsafe.caption});
  info.push_back({"Incremental", Incremental.caption});
  info.push_back({"NoConfig", NoConfig.caption});
  info.push_back({"NoSTDLib", NoSTDLib.caption});
  info.push_back({"FullPaths", FullPaths.caption});
  info.push_back({"FileAlign", FileAlign.caption});
  return info;
}

std::vector<TWrenPagePropertyInfo> TCSharpCompilerDebuggingFrame::PropertyInfo() const {
  std::vector<TWrenPagePropertyInfo> info = TManagedCompilerDebuggingFrame::PropertyInfo();
  info.push_back({"WarningLevel", WarningLevel.caption});
  return info;
}

}  // namespace wren
