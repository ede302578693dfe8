#include "WrenExecuteAction.h"

namespace wren {

const TPropertyTable& TWrenExecuteAbstractAction::ClassProperties() {
  static const TPropertyTable table = ChainProperties(
      TCustomWrenAction::ClassProperties(),
      {BoolProperty("CaptureOutput", &TWrenExecuteAbstractAction::CaptureOutput),
       BoolProperty("UseStartingDir", &TWrenExecuteAbstractAction::UseStartingDir)});
  return table;
}

void TWrenExecuteAbstractAction::OnExeNotFound(const std::string& executable) {
  SendMessage("Executable not found : " + executable);
}

bool TWrenExecuteAbstractAction::Execute() {
  lastExitCode_ = -1;
  if (!BeforeGetCommandLine()) return false;

  const std::string executable = GetExecutable();
  std::shared_ptr<ICommandLineBuilder> builder = CreateCommandLineBuilder();
  if (!GetCommandLine(*builder)) return false;
  if (!AfterGetCommandLine()) return false;
  if (StopSignalled()) return false;

  BeforeExecute();
  TWrenProcessRequest request;
  request.executable = executable;
  request.commandLine = GetProcessCommandLine(builder->GetCommandLineText());
  if (UseStartingDir) {
    // Tools start beside the build project unless the action's own rule names another folder.
    const std::string startingFile = Host() ? Host()->StartingFileName() : "";
    request.workingDir = GetStartingDir(startingFile.empty() ? executable : startingFile);
  }
  if (CaptureOutput) {
    request.onStdOut = [this](const std::string& line) {
      OnStdOutData(line);
      OnProcessOutput(line);
    };
    request.onStdErr = [this](const std::string& line) {
      OnStdErrData(line);
      OnProcessOutput(line);
    };
  }

  if (!Host()) {
    SendMessage("No host to run " + executable);
    return false;
  }
  const TWrenProcessResult result = Host()->RunProcess(*this, request);
  switch (result.status) {
    case TWrenProcessResult::TStatus::NotFound:
      OnExeNotFound(executable);
      OnFailure();
      return false;
    case TWrenProcessResult::TStatus::Failed:
      SendMessage("Could not start " + executable + " : " + result.error);
      OnFailure();
      return false;
    case TWrenProcessResult::TStatus::Stopped:
      SendMessage("Stopped by user request");
      OnFailure();
      return false;
    case TWrenProcessResult::TStatus::DryRun:
      return true;
    case TWrenProcessResult::TStatus::Exited:
      break;
  }
  lastExitCode_ = result.exitCode;
  const bool success = InterpretResult(result.exitCode);
  if (success)
    OnSuccess();
  else
    OnFailure();
  return success;
}

}  // namespace wren
