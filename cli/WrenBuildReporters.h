// Writers of build events: the terminal, JSON lines, the --log file and the JUnit report.
#pragma once

#include <condition_variable>
#include <cstring>
#include <ctime>
#include <deque>
#include <initializer_list>
#include <map>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <ostream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "runtime/WrenBuildEngine.h"

namespace wren {

/// The version of the --json event stream, in the first ("start") event.
constexpr int kJsonSchemaVersion = 2;

/// The one way JSON leaves the host: text that is not UTF-8 (project text, tool output, file
/// names) becomes U+FFFD instead of aborting the program.
std::string JsonText(const nlohmann::json& value, int indent = -1);

/// How much the terminal shows, as MSBuild's -verbosity.
enum class TWrenVerbosity { Quiet, Minimal, Normal, Detailed };

/// Parses quiet|minimal|normal|detailed (or q|m|n|d); false for anything else.
bool ParseVerbosity(const std::string& text, TWrenVerbosity& verbosity);

/// Lines on their way to a stream, gathered so that a batch of them costs one write.
class TLineBatch {
 public:
  void Add(std::string_view text) {
    if (text.size() > capacity_ - used_) Grow(text.size());
    std::memcpy(data_.get() + used_, text.data(), text.size());
    used_ += text.size();
  }
  void Add(char c) {
    if (used_ == capacity_) Grow(1);
    data_[used_++] = c;
  }
  /// The parts one after another, then a line break, with one check for room.
  void AddLine(std::initializer_list<std::string_view> parts) {
    size_t need = 1;
    for (std::string_view part : parts) need += part.size();
    if (need > capacity_ - used_) Grow(need);
    char* at = data_.get() + used_;
    for (std::string_view part : parts) {
      std::memcpy(at, part.data(), part.size());
      at += part.size();
    }
    *at = '\n';
    used_ += need;
  }
  /// Each line of the block behind the same head (at most kMaxHead bytes) and ended by a line
  /// break, with one check for room: the per-line cost of a tool's output.
  void AddLines(std::string_view head, const TWrenLogLines& lines);
  static constexpr size_t kMaxHead = 32;
  bool Empty() const { return used_ == 0; }
  size_t Size() const { return used_; }
  const char* Data() const { return data_.get(); }
  /// Empties the batch (keeping its room unless a huge line needed it).
  void Clear();
  /// Writes the batch out and empties it.
  void WriteTo(std::ostream& out);

 private:
  void Grow(size_t more);
  std::unique_ptr<char[]> data_;
  size_t used_ = 0;
  size_t capacity_ = 0;
};

/// Terminal settings: colour and a live status line only on a terminal.
struct TTerminalStyle {
  TWrenVerbosity verbosity = TWrenVerbosity::Normal;
  bool colour = false;
  bool statusLine = false;
};

/// The style for a stream: colour and status line when fd is a terminal and NO_COLOR is unset.
TTerminalStyle TerminalStyleFor(int fd, TWrenVerbosity verbosity);

/// Human-readable progress: step headers [n/N], indented log lines, durations, one-line reasons.
/// Log lines are gathered and flushed once per read of the tool's output, every other line as
/// it is written, so a pipe sees each at once.
class TTerminalReporter : public IWrenBuildListener {
 public:
  explicit TTerminalReporter(std::ostream& out, TTerminalStyle style = {})
      : out_(out), style_(style) {}
  ~TTerminalReporter() override { Send(); }
  TTerminalReporter(const TTerminalReporter&) = delete;
  TTerminalReporter& operator=(const TTerminalReporter&) = delete;
  void OnInvalid(const TWrenValidationProblem& problem) override;
  void OnStepStart(const TWrenStepReport& step, int total) override;
  void OnLog(const TWrenStepReport& step, TWrenLogStream stream, const std::string& text) override;
  void OnLogLines(const TWrenStepReport& step, const TWrenLogLines& lines) override;
  void OnLogFlush(const TWrenStepReport& step) override;
  void OnDryRun(const TWrenStepReport& step, const TWrenDryRunRecord& record) override;
  void OnStepEnd(const TWrenStepReport& step) override;
  void Summary(const TWrenBuildResult& result, bool dryRun);

 private:
  void Line(const std::string& text);
  void LogLine(const std::string& text);
  void Send();
  std::string Paint(const std::string& text, const char* code) const;
  void ClearStatus();
  void DrawStatus();
  std::ostream& out_;
  TTerminalStyle style_;
  int total_ = 0;
  std::string status_;  // the running step, redrawn under the log lines
  bool statusShown_ = false;
  TLineBatch pending_;  // written, not yet sent
};

/// One JSON object per build event on a line.
class TJsonReporter : public IWrenBuildListener {
 public:
  explicit TJsonReporter(std::ostream& out) : out_(out) {}
  /// The first event: the schema version, the command and the project.
  void Start(const std::string& command, const std::string& project);
  /// A project that could not be read (followed by the "build" or "validation" event).
  void Error(const std::string& file, int line, const std::string& action,
             const std::string& property, const std::string& message);
  void OnInvalid(const TWrenValidationProblem& problem) override;
  void OnStepStart(const TWrenStepReport& step, int total) override;
  void OnLog(const TWrenStepReport& step, TWrenLogStream stream, const std::string& text) override;
  void OnDryRun(const TWrenStepReport& step, const TWrenDryRunRecord& record) override;
  void OnStepEnd(const TWrenStepReport& step) override;
  void Summary(const TWrenBuildResult& result);
  /// The last event of `validate`.
  void Validation(const std::vector<TWrenValidationProblem>& problems, int steps);

 private:
  void Emit(const nlohmann::json& event);
  std::ostream& out_;
};

/// The build log file: every line with a time stamp and its step. Lines are gathered into
/// blocks (a tool's output one block per read of it) that a thread of its own writes, so the
/// disk's pace does not hold up the build; at most kMaxQueuedBytes wait for it. While that
/// thread keeps up, a small block is written at once on the caller's thread instead, so a line
/// the terminal shows afterwards is already handed to the system and a killed host loses none.
class TLogFileWriter : public IWrenBuildListener {
 public:
  static constexpr size_t kMaxQueuedBytes = 4 * 1024 * 1024;
  TLogFileWriter() = default;
  ~TLogFileWriter() override;
  TLogFileWriter(const TLogFileWriter&) = delete;
  TLogFileWriter& operator=(const TLogFileWriter&) = delete;
  bool Open(const std::string& path, std::string& error);
  /// Writes what is left and closes the file; false with why when any write failed.
  bool Close(std::string& error);
  void OnInvalid(const TWrenValidationProblem& problem) override;
  void OnStepStart(const TWrenStepReport& step, int total) override;
  void OnLog(const TWrenStepReport& step, TWrenLogStream stream, const std::string& text) override;
  void OnLogLines(const TWrenStepReport& step, const TWrenLogLines& lines) override;
  void OnLogFlush(const TWrenStepReport& step) override;
  void OnStepEnd(const TWrenStepReport& step) override;

 private:
  using TBlock = std::unique_ptr<TLineBatch>;
  /// The stamp and prefix a line starts with.
  std::string_view Head(const char* prefix);
  void Line(const std::string& text);
  void Send();
  void HandOff(std::unique_lock<std::mutex>& lock);
  /// Starts the writer thread (mutex_ held); truncate: it first cuts the file to nothing.
  void StartWriter(bool truncate);
  void WriteBlocks(bool truncate);
  void Write(const TLineBatch& block);
  int fd_ = -1;
  std::string path_;
  TBlock current_;  // being filled on the build's thread
  std::thread writer_;
  std::mutex mutex_;  // guards what follows
  std::condition_variable changed_;
  std::deque<TBlock> queue_;
  std::vector<TBlock> spare_;
  size_t queuedBytes_ = 0;  // in the queue or being written
  bool writing_ = false;
  bool closing_ = false;
  std::string error_;  // the first failed write; later blocks are dropped
  // The stamp is taken once per batch of lines: a clock read per line would cost more than
  // the line.
  bool stampStale_ = true;
  std::time_t stampTime_ = -1;
  char stamp_[32] = "";
  size_t stampSize_ = 0;
  char head_[TLineBatch::kMaxHead] = "";
};

/// Keeps what each step logged for the JUnit report's system-out: all of it up to
/// kJUnitOutputBytes, else its first and last lines around a line saying how much was left out,
/// so the report stays readable and the host's memory bounded whatever a tool prints.
class TJUnitOutput : public IWrenBuildListener {
 public:
  static constexpr size_t kJUnitOutputBytes = 1024 * 1024;
  void OnStepStart(const TWrenStepReport& step, int total) override;
  void OnLog(const TWrenStepReport& step, TWrenLogStream stream, const std::string& text) override;
  void OnLogLines(const TWrenStepReport& step, const TWrenLogLines& lines) override;
  void OnStepEnd(const TWrenStepReport& step) override;
  /// A step's output, each line ended by a line break; "" for a step that logged nothing.
  std::string Of(int step) const;

 private:
  void Append(const char* data, size_t size);
  std::map<int, std::string> done_;
  std::string head_;
  std::string tail_;   // a ring once full: tailStart_ is its oldest byte
  size_t tailStart_ = 0;
  size_t dropped_ = 0;  // bytes between head and tail
};

/// Fans events out to several listeners; keeps the validation problems for the reports.
class TBuildListeners : public IWrenBuildListener {
 public:
  void Add(IWrenBuildListener* listener) { listeners_.push_back(listener); }
  void OnInvalid(const TWrenValidationProblem& p) override {
    problems.push_back(p);
    for (auto* l : listeners_) l->OnInvalid(p);
  }
  void OnStepStart(const TWrenStepReport& s, int total) override {
    for (auto* l : listeners_) l->OnStepStart(s, total);
  }
  void OnLog(const TWrenStepReport& s, TWrenLogStream stream, const std::string& t) override {
    for (auto* l : listeners_) l->OnLog(s, stream, t);
  }
  void OnLogLines(const TWrenStepReport& s, const TWrenLogLines& lines) override {
    for (auto* l : listeners_) l->OnLogLines(s, lines);
  }
  void OnLogFlush(const TWrenStepReport& s) override {
    for (auto* l : listeners_) l->OnLogFlush(s);
  }
  void OnDryRun(const TWrenStepReport& s, const TWrenDryRunRecord& r) override {
    for (auto* l : listeners_) l->OnDryRun(s, r);
  }
  void OnStepEnd(const TWrenStepReport& s) override {
    for (auto* l : listeners_) l->OnStepEnd(s);
  }
  std::vector<TWrenValidationProblem> problems;

 private:
  std::vector<IWrenBuildListener*> listeners_;
};

/// Checks before a build that the report file can be written (a later failure would lose it).
bool CheckReportWritable(const std::string& path, std::string& error);

/// Writes a build as a JUnit XML report: one test suite, a test case per step (skipped when it
/// did not run) with its output, validation problems as failed cases, and the cases of NUnit XML
/// results that steps wrote.
bool WriteJUnitReport(const std::string& path, const std::string& projectName,
                      const TWrenBuildResult& result,
                      const std::vector<TWrenValidationProblem>& problems,
                      const TJUnitOutput& output, std::string& error);

}  // namespace wren
