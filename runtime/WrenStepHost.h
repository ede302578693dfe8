// The host side of one running step: the real IWrenActionHost the build engine gives each action.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "WrenActionAPI.h"

namespace wren {

/// A change a dry run found an in-process step would make to one file.
struct TWrenFileDiff {
  std::string file;  // the real file's path
  std::string diff;  // unified diff
};

/// What a dry run records instead of starting a program (or, for an in-process step, the diffs
/// of the files it would change, with executable empty).
struct TWrenDryRunRecord {
  std::vector<TWrenFileDiff> diffs;
  std::string executable;
  std::string commandLine;
  std::vector<std::string> argv;  // argv[1..] as the program would receive them
  std::string workingDir;
  std::string responseFilePath;  // set when an argument names an @file
  std::string responseFileText;
};

/// Log streams of a step. Command: the host's own line naming the program it starts.
enum class TWrenLogStream { Message, StdOut, StdErr, Command };

/// Serves one action while it runs: logs through a sink, expands %NAME% from the project's
/// variables then the environment, runs scripts, and starts programs with the real process runner
/// (or records them in a dry run).
class TWrenStepHost : public IWrenActionHost {
 public:
  using TLogSink = std::function<void(TWrenLogStream stream, const std::string& text)>;

  TWrenStepHost();

  /// Variables of the build project (looked up before the environment, names without case).
  void SetVariables(std::map<std::string, std::string> variables);
  void SetVariable(const std::string& name, const std::string& value);
  void SetLogSink(TLogSink sink) { sink_ = std::move(sink); }
  /// Called when the lines logged so far are all there is for now: after each message outside a
  /// program's output, and after each read of that output.
  void SetFlushSink(std::function<void()> flush) { flush_ = std::move(flush); }
  /// A flag that stops the build when set (Ctrl-C); defaults to the process-wide stop flag.
  void SetStopFlag(const std::atomic<bool>* flag) { stop_ = flag; }
  void SetDryRun(bool dryRun) { dryRun_ = dryRun; }
  /// The build project's file: execute actions start in its folder unless they name another.
  void SetProjectFileName(const std::string& fileName) { projectFile_ = fileName; }
  std::string StartingFileName() override { return projectFile_; }
  bool DryRun() const { return dryRun_; }
  const std::vector<TWrenDryRunRecord>& DryRunRecords() const { return dryRuns_; }
  /// The result of the last RunProcess (for the build report).
  const TWrenProcessResult& LastProcessResult() const { return lastResult_; }
  bool ProcessStarted() const { return processStarted_; }

  void SendMessage(const std::string& text) override;
  bool TryExpandExpression(const std::string& caption, const std::string& value, bool blankFails,
                           std::string& result) override;
  bool StopSignalled() override;
  bool StopSignalledNow() const { return stop_ && stop_->load(); }
  bool ExecuteScript(TCustomWrenAction& action, TWrenActionScript& script,
                     WrenVariant& result) override;
  TWrenProcessResult RunProcess(TWrenExecuteAbstractAction& action,
                                const TWrenProcessRequest& request) override;

 private:
  std::map<std::string, std::string> variables_;  // keys upper-cased
  TLogSink sink_;
  std::function<void()> flush_;
  bool inOutput_ = false;  // lines come from a program's output: flushed per read, not per line
  const std::atomic<bool>* stop_;
  bool dryRun_ = false;
  std::string projectFile_;
  std::vector<TWrenDryRunRecord> dryRuns_;
  TWrenProcessResult lastResult_;
  bool processStarted_ = false;
  TWrenLogStream currentStream_ = TWrenLogStream::Message;
};

/// The process-wide stop flag set by Ctrl-C / SIGTERM.
std::atomic<bool>& WrenStopFlag();

}  // namespace wren
