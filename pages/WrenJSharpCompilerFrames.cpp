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

}  // namespace wren
