// The base of actions that run one external program and interpret its result.
#pragma once

#include <cstdint>
#include <string>

#include "WrenActionAPI.h"
#include "WrenCommandLine.h"

namespace wren {

/// An action that runs one external program. Execute drives the call order:
/// BeforeGetCommandLine; GetExecutable, GetCommandLine (fresh builder), AfterGetCommandLine;
/// BeforeExecute; the process in GetStartingDir (OnExeNotFound when the program is missing), its
/// output to OnStdOutData / OnStdErrData / OnProcessOutput; InterpretResult; OnSuccess or OnFailure.
class TWrenExecuteAbstractAction : public TCustomWrenAction {
 public:
  bool Execute() override;

  virtual bool BeforeGetCommandLine() { return true; }
  virtual std::string GetExecutable() = 0;
  virtual bool GetCommandLine(ICommandLineBuilder& builder) = 0;
  virtual bool AfterGetCommandLine() { return true; }
  /// The text the program is started with: the builder's text unless the program reads its raw
  /// command line by rules of its own, which the POSIX argv split (C runtime rules) would change.
  virtual std::string GetProcessCommandLine(const std::string& commandLine) {
    return commandLine;
  }
  /// The directory to start in; fileName is the default the host proposes (the executable).
  virtual std::string GetStartingDir(const std::string& fileName) {
    (void)fileName;
    return "";
  }
  virtual void BeforeExecute() {}
  virtual void OnStdOutData(const std::string& text) { SendMessage(text); }
  virtual void OnStdErrData(const std::string& text) { SendMessage(text); }
  /// Every output line, whichever stream it came from, after the stream's own handler.
  virtual void OnProcessOutput(const std::string& text) { (void)text; }
  virtual bool InterpretResult(int32_t exitCode) { return exitCode == 0; }
  virtual void OnSuccess() {}
  virtual void OnFailure() {}
  virtual void OnExeNotFound(const std::string& executable);
  bool CanTerminate() override { return true; }

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  /// Host settings. CaptureOutput: output lines go to OnStdOutData / OnStdErrData (otherwise the
  /// host logs them itself). UseStartingDir: the program starts in GetStartingDir's directory
  /// (otherwise in the host's current directory).
  bool CaptureOutput = false;
  bool UseStartingDir = false;

  /// The exit code of the last run, or -1 when no program ran.
  int32_t LastExitCode() const { return lastExitCode_; }

 private:
  int32_t lastExitCode_ = -1;
};

}  // namespace wren
