// The host side of one running step: the real IWrenActionHost the build engine gives each action.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
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

/// Lines of one log stream in arrival order, kept in one buffer: a tool's output is passed on a
/// read at a time, so each layer pays a call per block rather than per line. The buffer is
/// reused from block to block.
class TWrenLogLines {
 public:
  TWrenLogStream Stream() const { return stream_; }
  size_t Count() const { return count_; }
  bool Empty() const { return count_ == 0; }
  /// The bytes of Text().
  size_t Bytes() const { return size_; }
  /// Every line followed by a line break, as one block.
  std::string_view Text() const { return {data_.get(), size_}; }
  /// Calls f(std::string_view line) for each line, oldest first; from `first` on.
  template <class F>
  void ForEach(F&& f, size_t first = 0) const {
    size_t begin = first == 0 ? 0 : ends_[first - 1] + 1;
    for (size_t i = first; i < count_; ++i) {
      f(std::string_view(data_.get() + begin, ends_[i] - begin));
      begin = ends_[i] + 1;
    }
  }
  /// Line i (from 0, oldest first).
  std::string_view Line(size_t i) const {
    const size_t begin = i == 0 ? 0 : ends_[i - 1] + 1;
    return {data_.get() + begin, ends_[i] - begin};
  }
  /// Bytes past the last line that are always allocated: a line up to this long is copied
  /// with a fixed-size copy that may run over its end, here and by readers.
  static constexpr size_t kSlack = 16;
  /// Whether a line of this size fits without growing.
  bool HasRoom(size_t size) const {
    return count_ < endsCapacity_ && size + 1 + kSlack <= capacity_ - size_;
  }
  void Add(const std::string& line) {
    if (!HasRoom(line.size())) Grow(line.size() + 1 + kSlack);
    char* at = data_.get() + size_;
    // A std::string's buffer holds at least kSlack bytes, so a short one is copied whole.
    if (line.size() < kSlack)
      std::memcpy(at, line.data(), kSlack);
    else
      std::memcpy(at, line.data(), line.size());
    size_ += line.size();
    ends_[count_++] = size_;
    data_[size_++] = '\n';
  }
  /// The same for a line in any memory.
  void AddView(std::string_view line) {
    if (!HasRoom(line.size())) Grow(line.size() + 1 + kSlack);
    if (!line.empty()) std::memcpy(data_.get() + size_, line.data(), line.size());
    size_ += line.size();
    ends_[count_++] = size_;
    data_[size_++] = '\n';
  }
  /// Empties the block for lines of another stream.
  void Reset(TWrenLogStream stream);

 private:
  void Grow(size_t more);
  TWrenLogStream stream_ = TWrenLogStream::Message;
  std::unique_ptr<char[]> data_;
  size_t size_ = 0;
  size_t capacity_ = 0;
  std::unique_ptr<size_t[]> ends_;  // where each line ends (its line break)
  size_t count_ = 0;
  size_t endsCapacity_ = 0;
};

/// Serves one action while it runs: logs through a sink, expands %NAME% from the project's
/// variables then the environment, runs scripts, and starts programs with the real process runner
/// (or records them in a dry run).
class TWrenStepHost : public IWrenActionHost {
 public:
  using TLogSink = std::function<void(TWrenLogStream stream, const std::string& text)>;
  using TLogLinesSink = std::function<void(const TWrenLogLines& lines)>;

  TWrenStepHost();
  ~TWrenStepHost();
  TWrenStepHost(const TWrenStepHost&) = delete;
  TWrenStepHost& operator=(const TWrenStepHost&) = delete;

  /// Variables of the build project (looked up before the environment, names without case).
  void SetVariables(std::map<std::string, std::string> variables);
  void SetVariable(const std::string& name, const std::string& value);
  void SetLogSink(TLogSink sink) { sink_ = std::move(sink); }
  /// Instead of a line sink: lines come in blocks, a program's output one block per read of it
  /// (messages outside that output as SetFlushSink tells).
  void SetLogLinesSink(TLogLinesSink sink) { linesSink_ = std::move(sink); }
  /// Called when the lines logged so far are all there is for now: after each read of a
  /// program's output, and after a message outside it. With a lines sink, messages that follow
  /// one another closely are passed on together: at once when kMessageHold has gone by since
  /// the last were, else within kMessageHold (by a thread of the host's), and always before any
  /// other line or the end of the step (FinishMessages).
  void SetFlushSink(std::function<void()> flush) { flush_ = std::move(flush); }
  /// Passes on the messages still held and stops the thread that would have; the sinks are not
  /// called from another thread afterwards. Call it once the action has returned.
  void FinishMessages();
  static constexpr std::chrono::milliseconds kMessageHold{20};
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
  // Per line of a program's output: the common case stays small enough to inline.
  void Log(TWrenLogStream stream, const std::string& text) {
    if (inOutput_ && stream == lines_.Stream() && lines_.HasRoom(text.size()) &&
        lines_.Bytes() < kLinesBlockBytes && linesSink_) {
      lines_.Add(text);
      return;
    }
    LogSlowly(stream, text);
  }
  void LogSlowly(TWrenLogStream stream, const std::string& text);
  /// A message outside a program's output, with a lines sink: passed on now or held.
  void HoldMessage(TWrenLogStream stream, const std::string& text);
  /// Passes held messages on before anything else reaches the sinks.
  void SettleHeld() {
    if (held_.load()) PassHeldOn();
  }
  void PassHeldOn();
  /// Passes lines_ on and flushes; with heldMutex_ held.
  void PassOn(std::chrono::steady_clock::time_point now);
  /// The thread that passes held messages on when no other line comes to take them along.
  void Tick();
  /// A line of output no action handles (only with a lines sink, while a program runs).
  void LogView(TWrenLogStream stream, std::string_view text);
  // A block of a program's output is passed on at a read's end, or sooner when it grew this
  // big (an action may log several lines per line it reads).
  static constexpr size_t kLinesBlockBytes = 256 * 1024;
  void DeliverLines();

  std::map<std::string, std::string> variables_;  // keys upper-cased
  TLogSink sink_;
  TLogLinesSink linesSink_;
  TWrenLogLines lines_;  // logged, not yet passed to linesSink_
  std::function<void()> flush_;
  bool inOutput_ = false;  // lines come from a program's output: flushed per read, not per line
  const std::atomic<bool>* stop_;
  bool dryRun_ = false;
  std::string projectFile_;
  std::vector<TWrenDryRunRecord> dryRuns_;
  TWrenProcessResult lastResult_;
  bool processStarted_ = false;
  TWrenLogStream currentStream_ = TWrenLogStream::Message;
  // Held messages: lines_ and the sinks belong to whichever thread holds heldMutex_ while held_
  // is set; otherwise to the action's thread alone.
  std::mutex heldMutex_;
  std::condition_variable tickerWake_;
  std::atomic<bool> held_{false};
  bool tickerStop_ = false;
  std::chrono::steady_clock::time_point lastPassed_;  // when messages were last passed on
  unsigned heldSinceClock_ = 0;  // messages held without a look at the clock
  std::thread ticker_;
};

/// The process-wide stop flag set by Ctrl-C / SIGTERM.
std::atomic<bool>& WrenStopFlag();

}  // namespace wren
