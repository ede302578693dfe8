#include "pages/WrenJSharpCompilerFrames.h"

#include "compilers/WrenJSharpDotNetCompilerAction.h"

namespace wren {

namespace {

TWrenCustomJSharpCompilerAction& JSharp(TWrenAction& action) {
  return dynamic_cast<TWrenCustomJSharpCompilerAction&>(action);
}

}  // namespace

TJSharpCompilerMainFrame::TJSharpCompilerMainFrame()
    : TManagedCompilerMainFrame(
          "Microsoft J# Compiler",
          "(eg. *.jsl or MyFile.jsl, separate multiple files with a semicolon)") {}

void TJSharpCompilerOptionsFrame::ReadActionData(TWrenAction& action) {
  TManagedCompilerOptionsFrame::ReadActionData(action);
  const TWrenCustomJSharpCompilerAction& a = JSharp(action);
  SecureScoping.checked = a.SecureScoping;
  DisableLangExt.checked = a.DisableLangExt;
  JCPA.lines = a.JCPA;
}

void TJSharpCompilerOptionsFrame::WriteActionData(TWrenAction& action) {
  TManagedCompilerOptionsFrame::WriteActionData(action);
  TWrenCustomJSharpCompilerAction& a = JSharp(action);
  a.SecureScoping = SecureScoping.checked;
  a.DisableLangExt = DisableLangExt.checked;
  a.JCPA = JCPA.lines;
}

void TJSharpCompilerOptionsFrame::ListControls(TWrenPageControls& controls) {
  TManagedCompilerOptionsFrame::ListControls(controls);
  controls.CheckBox("SecureScoping", SecureScoping);
  controls.CheckBox("DisableLangExt", DisableLangExt);
  controls.Memo("JCPA", JCPA);
}

TJSharpCompilerDebuggingFrame::TJSharpCompilerDebuggingFrame() {
  WarningLevel.caption = "Warning level:";
}

void TJSharpCompilerDebuggingFrame::ReadActionData(TWrenAction& action) {
  TManagedCompilerDebuggingFrame::ReadActionData(action);
  FillWarningLevels(WarningLevel, JSharp(action).WarningLevel);
}

void TJSharpCompilerDebuggingFrame::WriteActionData(TWrenAction& action) {
  TManagedCompilerDebuggingFrame::WriteActionData(action);
  TWrenCustomJSharpCompilerAction& a = JSharp(action);
  a.WarningLevel = static_cast<TDotNetWarningLevels>(
      ChoiceOrdinal(WarningLevel, static_cast<int>(a.WarningLevel)));
}

void TJSharpCompilerDebuggingFrame::ListControls(TWrenPageControls& controls) {
  TManagedCompilerDebuggingFrame::ListControls(controls);
  controls.ComboBox("WarningLevel", WarningLevel);
}

std::vector<TWrenPagePropertyInfo> TJSharpCompilerOptionsFrame::PropertyInfo() const {
  std::vector<TWrenPagePropertyInfo> info = TManagedCompilerOptionsFrame::PropertyInfo();
  info.push_back({"SecureScoping", SecureScoping.caption});
  info.push_back({"DisableLangExt", DisableLangExt.caption});
  info.push_back({"JCPA", JCPA.caption});
  return info;
}

std::vector<TWrenPagePropertyInfo> TJSharpCompilerDebuggingFrame::PropertyInfo() const {
  std::vector<TWrenPagePropertyInfo> info = TManagedCompilerDebuggingFrame::PropertyInfo();
  info.push_back({"WarningLevel", WarningLevel.caption});
  return info;
}

}  // namespace wren
