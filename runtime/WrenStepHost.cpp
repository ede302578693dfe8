#include "WrenStepHost.h"

#include <algorithm>
#include <cstdlib>

#include "WrenExecuteAction.h"
#include "WrenExpression.h"
#include "WrenFiles.h"
#include "WrenQuietThread.h"
#include "WrenScriptEngine.h"
#include "WrenUtils.h"

namespace wren {

std::atomic<bool>& WrenStopFlag() {
  static std::atomic<bool> flag{false};
  return flag;
}

TWrenStepHost::TWrenStepHost() : stop_(&WrenStopFlag()) {}

TWrenStepHost::~TWrenStepHost() { FinishMessages(); }

void TWrenStepHost::SetVariables(std::map<std::string, std::string> variables) {
  variables_.clear();
  for (auto& [name, value] : variables) variables_[UpperCase(name)] = value;
}

void TWrenStepHost::SetVariable(const std::string& name, const std::string& value) {
  variables_[UpperCase(name)] = value;
}

void TWrenLogLines::Reset(TWrenLogStream stream) {
  stream_ = stream;
  size_ = 0;
  count_ = 0;
  // The room a huge line needed is not kept.
  if (capacity_ > 1024 * 1024) {
    data_.reset();
    capacity_ = 0;
  }
}

// Each step's host starts empty and most steps log a few lines: starting small keeps such a
// step from taking (and giving back to the system) a whole block's worth of memory.
void TWrenLogLines::Grow(size_t more) {
  if (more > capacity_ - size_) {
    const size_t capacity = std::max<size_t>(2 * (size_ + more), 4 * 1024);
    std::unique_ptr<char[]> data(new char[capacity]);
    if (size_ > 0) std::memcpy(data.get(), data_.get(), size_);
    data_ = std::move(data);
    capacity_ = capacity;
  }
  if (count_ == endsCapacity_) {
    const size_t capacity = std::max<size_t>(2 * endsCapacity_, 128);
    std::unique_ptr<size_t[]> ends(new size_t[capacity]);
    if (count_ > 0) std::memcpy(ends.get(), ends_.get(), count_ * sizeof(size_t));
    ends_ = std::move(ends);
    endsCapacity_ = capacity;
  }
}

void TWrenStepHost::DeliverLines() {
  if (lines_.Empty()) return;
  linesSink_(lines_);
  lines_.Reset(lines_.Stream());
}

void TWrenStepHost::LogSlowly(TWrenLogStream stream, const std::string& text) {
  if (!linesSink_) {
    if (sink_) sink_(stream, text);
    return;
  }
  SettleHeld();
  if (stream != lines_.Stream()) {
    DeliverLines();
    lines_.Reset(stream);
  }
  lines_.Add(text);
  if (!inOutput_ || lines_.Bytes() >= kLinesBlockBytes) DeliverLines();
}

void TWrenStepHost::LogView(TWrenLogStream stream, std::string_view text) {
  // Only a program's output comes here: RunProcess settled the held messages before it started.
  if (stream != lines_.Stream()) {
    DeliverLines();
    lines_.Reset(stream);
  }
  lines_.AddView(text);
  if (lines_.Bytes() >= kLinesBlockBytes) DeliverLines();
}

void TWrenStepHost::SendMessage(const std::string& text) {
  if (linesSink_ && !inOutput_) {
    HoldMessage(currentStream_, text);
    return;
  }
  Log(currentStream_, text);
  if (flush_ && !inOutput_) flush_();
}

void TWrenStepHost::HoldMessage(TWrenLogStream stream, const std::string& text) {
  std::lock_guard<std::mutex> lock(heldMutex_);
  if (stream != lines_.Stream()) {
    DeliverLines();
    lines_.Reset(stream);
  }
  lines_.Add(text);
  const bool full = lines_.Bytes() >= kLinesBlockBytes;
  // Behind a message already held the ticker is due to pass this one on too: the clock is read
  // only now and then, in case the ticker is kept waiting.
  if (held_.load() && !full && ++heldSinceClock_ % 64 != 0) return;
  // An action that logs now and then shows each message at once; one that logs many in a row
  // costs a write per kMessageHold, not one per message.
  const auto now = std::chrono::steady_clock::now();
  if (now - lastPassed_ >= kMessageHold || full) {
    PassOn(now);
    return;
  }
  if (held_.load()) return;
  held_.store(true);
  if (ticker_.joinable())
    tickerWake_.notify_one();
  else
    ticker_ = StartQuietThread([this] { Tick(); });
}

void TWrenStepHost::PassOn(std::chrono::steady_clock::time_point now) {
  DeliverLines();
  if (flush_) flush_();
  lastPassed_ = now;
  held_.store(false);
}

void TWrenStepHost::PassHeldOn() {
  std::lock_guard<std::mutex> lock(heldMutex_);
  if (held_.load()) PassOn(std::chrono::steady_clock::now());
}

void TWrenStepHost::Tick() {
  std::unique_lock<std::mutex> lock(heldMutex_);
  while (!tickerStop_) {
    if (!held_.load()) {
      tickerWake_.wait(lock);
      continue;
    }
    const auto due = lastPassed_ + kMessageHold;
    if (std::chrono::steady_clock::now() < due) {
      tickerWake_.wait_until(lock, due);
      continue;
    }
    PassOn(std::chrono::steady_clock::now());
  }
}

void TWrenStepHost::FinishMessages() {
  SettleHeld();
  if (!ticker_.joinable()) return;
  {
    std::lock_guard<std::mutex> lock(heldMutex_);
    tickerStop_ = true;
  }
  tickerWake_.notify_one();
  ticker_.join();
  tickerStop_ = false;
}

bool TWrenStepHost::TryExpandExpression(const std::string& caption, const std::string& value,
                                        bool blankFails, std::string& result) {
  const TVariableLookup lookup = [this](const std::string& name, std::string& out) {
    auto it = variables_.find(UpperCase(name));
    if (it != variables_.end()) {
      out = it->second;
      return true;
    }
    if (const char* env = std::getenv(name.c_str())) {
      out = env;
      return true;
    }
    return false;
  };
  std::string error;
  std::string expanded;
  const std::string label = caption.empty() ? std::string("value") : "\"" + caption + "\"";
  if (!ExpandVariables(value, lookup, expanded, error)) {
    SendMessage("Could not expand " + label + ": " + error);
    return false;
  }
  if (blankFails && Trim(expanded).empty()) {
    SendMessage("Could not expand " + label + ": the result is blank");
    return false;
  }
  result = std::move(expanded);
  return true;
}

bool TWrenStepHost::StopSignalled() { return stop_ && stop_->load(); }

bool TWrenStepHost::ExecuteScript(TCustomWrenAction& action, TWrenActionScript& script,
                                  WrenVariant& result) {
  (void)action;
  std::string error;
  TWrenScriptLimits limits;
  limits.stop = stop_;
  limits.print = [this](const std::string& line) { SendMessage(line); };
  if (RunScript(script, result, error, limits)) return true;
  SendMessage(error);
  return false;
}

namespace {

/// The @file an argument names, without enclosing quotes; "" when it names none.
std::string ResponseFileOf(const std::string& arg) {
  if (arg.size() < 2 || arg[0] != '@') return "";
  return StripQuotes(arg.substr(1));
}

}  // namespace

TWrenProcessResult TWrenStepHost::RunProcess(TWrenExecuteAbstractAction& action,
                                             const TWrenProcessRequest& request) {
  (void)action;
  processStarted_ = false;
  if (dryRun_) {
    TWrenDryRunRecord record;
    record.executable = request.executable;
    record.commandLine = request.commandLine;
    record.argv = SplitCommandLine(request.commandLine);
    record.workingDir = request.workingDir;
    for (const std::string& arg : record.argv) {
      const std::string path = ResponseFileOf(arg);
      if (path.empty()) continue;
      std::string error;
      record.responseFilePath = path;
      if (!ReadFileBytes(path, record.responseFileText, error)) record.responseFileText.clear();
      break;
    }
    dryRuns_.push_back(std::move(record));
    lastResult_ = {TWrenProcessResult::TStatus::DryRun, 0, ""};
    return lastResult_;
  }

  Log(TWrenLogStream::Command,
      "starting " + request.executable + " " + request.commandLine + "  (in " +
          (request.workingDir.empty() ? std::string(".") : request.workingDir) + ")");
  if (flush_) flush_();
  std::shared_ptr<IWrenProcess> process = CreateWrenProcess();
  process->SetExecutable(request.executable);
  process->SetCommandLine(request.commandLine);
  process->SetWorkingDir(request.workingDir);
  // Lines an action logs while handling output belong to that output stream. The state is set
  // per line (the streams take turns) and put back once the program has ended.
  auto deliver = [this](TWrenLogStream stream,
                        const IWrenProcess::TLineHandler& handler) -> IWrenProcess::TLineHandler {
    if (handler)
      return [this, stream, handler](const std::string& line) {
        currentStream_ = stream;
        handler(line);
      };
    return [this, stream](const std::string& line) { Log(stream, line); };
  };
  // Output no action handles goes to the log a read at a time, without a string per line.
  auto deliverLines = [this](TWrenLogStream stream) -> IWrenProcess::TLinesHandler {
    return [this, stream](const std::string_view* lines, size_t count) {
      for (size_t i = 0; i < count; ++i) LogView(stream, lines[i]);
    };
  };
  if (request.onStdOut || !linesSink_)
    process->SetOnStdOut(deliver(TWrenLogStream::StdOut, request.onStdOut));
  else
    process->SetOnStdOutLines(deliverLines(TWrenLogStream::StdOut));
  if (request.onStdErr || !linesSink_)
    process->SetOnStdErr(deliver(TWrenLogStream::StdErr, request.onStdErr));
  else
    process->SetOnStdErrLines(deliverLines(TWrenLogStream::StdErr));
  if (flush_ || linesSink_)
    process->SetOnChunkEnd([this] {
      if (linesSink_) DeliverLines();
      if (flush_) flush_();
    });
  process->SetStopCheck([this] { return StopSignalled(); });
  processStarted_ = true;
  struct TOutputScope {
    TWrenStepHost& host;
    TWrenLogStream stream;
    bool inOutput;
    ~TOutputScope() {
      host.currentStream_ = stream;
      host.inOutput_ = inOutput;
    }
  } scope{*this, currentStream_, inOutput_};
  inOutput_ = true;
  lastResult_ = process->Run();
  if (linesSink_) DeliverLines();
  if (lastResult_.status == TWrenProcessResult::TStatus::NotFound) processStarted_ = false;
  return lastResult_;
}

}  // namespace wren
