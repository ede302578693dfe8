#include "WrenBuildReporters.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <pugixml.hpp>

#include "WrenFiles.h"
#include "WrenUtils.h"
#include "runtime/WrenQuietThread.h"

namespace wren {
namespace {

// Lines are passed on at least this often, however large a read of output was.
constexpr size_t kBatchBytes = 64 * 1024;

std::string Seconds(double s) {
  char buf[32];
  // to_chars rounds exactly as printf's %.2f does, at a fraction of the cost (once per step).
  const std::to_chars_result end =
      std::to_chars(buf, buf + sizeof buf - 3, s, std::chars_format::fixed, 2);
  if (end.ec != std::errc()) {
    std::snprintf(buf, sizeof buf, "%.2f s", s);
    return buf;
  }
  return std::string(buf, end.ptr) + " s";
}

std::string StepTitle(const TWrenStepReport& step) {
  std::string title = step.displayName;
  if (!step.description.empty()) title += " - " + step.description;
  return title;
}

const char* StreamName(TWrenLogStream stream) {
  switch (stream) {
    case TWrenLogStream::StdOut:
      return "stdout";
    case TWrenLogStream::StdErr:
      return "stderr";
    case TWrenLogStream::Command:
      return "command";
    default:
      return "message";
  }
}

// Tool output may carry control characters that XML 1.0 cannot hold at all, not even escaped,
// and bytes that are not UTF-8, which a strict reader refuses.
std::string XmlEscape(const std::string& text, char quote = '\0') {
  const std::string utf8 = nlohmann::json(text).dump(-1, ' ', false,
                                                     nlohmann::json::error_handler_t::replace);
  // Back from a JSON string to raw UTF-8: the dump only escaped what the parser reverses.
  std::string clean = nlohmann::json::parse(utf8).get<std::string>();
  for (char& c : clean)
    if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r') c = '?';
  return EscapeXml(clean, quote);
}

std::string ProblemText(const TWrenValidationProblem& p) {
  std::string text = p.warning ? "warning: " : "invalid: ";
  if (p.step > 0) text += "step " + std::to_string(p.step) + " (" + p.className + ")";
  if (!p.field.empty()) text += ", " + p.field;
  return text + (p.step > 0 || !p.field.empty() ? ": " : "") + p.message;
}

}  // namespace

std::string JsonText(const nlohmann::json& value, int indent) {
  return value.dump(indent, ' ', false, nlohmann::json::error_handler_t::replace);
}

bool ParseVerbosity(const std::string& text, TWrenVerbosity& verbosity) {
  static const std::pair<const char*, TWrenVerbosity> names[] = {
      {"quiet", TWrenVerbosity::Quiet}, {"minimal", TWrenVerbosity::Minimal},
      {"normal", TWrenVerbosity::Normal}, {"detailed", TWrenVerbosity::Detailed},
      {"q", TWrenVerbosity::Quiet},     {"m", TWrenVerbosity::Minimal},
      {"n", TWrenVerbosity::Normal},     {"d", TWrenVerbosity::Detailed}};
  for (const auto& [name, value] : names)
    if (SameText(text, name)) {
      verbosity = value;
      return true;
    }
  return false;
}

TTerminalStyle TerminalStyleFor(int fd, TWrenVerbosity verbosity) {
  TTerminalStyle style;
  style.verbosity = verbosity;
  const bool tty = isatty(fd) == 1;
  const char* noColour = std::getenv("NO_COLOR");
  const char* term = std::getenv("TERM");
  const bool dumb = term && std::string(term) == "dumb";
  style.colour = tty && !dumb && !(noColour && *noColour);
  style.statusLine = tty && !dumb && verbosity != TWrenVerbosity::Quiet;
  return style;
}

void TLineBatch::Grow(size_t more) {
  const size_t capacity = std::max<size_t>(2 * (used_ + more), kBatchBytes * 2);
  std::unique_ptr<char[]> data(new char[capacity]);
  if (used_ > 0) std::memcpy(data.get(), data_.get(), used_);
  data_ = std::move(data);
  capacity_ = capacity;
}

void TLineBatch::AddLines(std::string_view head, const TWrenLogLines& lines) {
  // Room for the lines with their heads, and for what the fixed-size copies below run over.
  constexpr size_t kShort = TWrenLogLines::kSlack;
  const size_t need = lines.Bytes() + lines.Count() * head.size() + kMaxHead + kShort;
  if (need > capacity_ - used_) Grow(need);
  char fixedHead[kMaxHead] = {};
  std::memcpy(fixedHead, head.data(), std::min(head.size(), kMaxHead));
  char* at = data_.get() + used_;
  // Copies of a constant size compile to a few moves; what they write past the line is
  // overwritten by the next one. Most tool output lines are short.
  lines.ForEach([&](std::string_view line) {
    std::memcpy(at, fixedHead, kMaxHead);
    at += head.size();
    if (line.size() <= kShort)
      std::memcpy(at, line.data(), kShort);
    else
      std::memcpy(at, line.data(), line.size());
    at += line.size();
    *at++ = '\n';
  });
  used_ = static_cast<size_t>(at - data_.get());
}

void TLineBatch::Clear() {
  used_ = 0;
  // The room a huge line needed is not kept.
  if (capacity_ > 16 * kBatchBytes) {
    data_.reset();
    capacity_ = 0;
  }
}

void TLineBatch::WriteTo(std::ostream& out) {
  out.write(data_.get(), static_cast<std::streamsize>(used_));
  Clear();
}

std::string TTerminalReporter::Paint(const std::string& text, const char* code) const {
  return style_.colour ? std::string("\033[") + code + "m" + text + "\033[0m" : text;
}

void TTerminalReporter::ClearStatus() {
  if (statusShown_) pending_.Add("\r\033[K");
  statusShown_ = false;
}

void TTerminalReporter::DrawStatus() {
  if (!style_.statusLine || status_.empty()) return;
  pending_.Add(Paint(status_, "2"));
  statusShown_ = true;
}

void TTerminalReporter::Send() {
  if (pending_.Empty()) return;
  pending_.WriteTo(out_);
  out_.flush();
}

void TTerminalReporter::Line(const std::string& text) {
  // The status line is taken away for each line and drawn again below it, so it never hides one.
  ClearStatus();
  pending_.Add(text);
  pending_.Add('\n');
  DrawStatus();
  Send();
}

void TTerminalReporter::LogLine(const std::string& text) {
  if (statusShown_) ClearStatus();  // drawn again when the batch is sent
  pending_.AddLine({"    ", text});
  // A batch of lines is bounded: one huge read of output is passed on in pieces.
  if (pending_.Size() >= kBatchBytes) pending_.WriteTo(out_);
}

void TTerminalReporter::OnLogFlush(const TWrenStepReport&) {
  if (!statusShown_) DrawStatus();
  Send();
}

void TTerminalReporter::OnInvalid(const TWrenValidationProblem& p) {
  Line(Paint(ProblemText(p), p.warning ? "33" : "31"));
}

void TTerminalReporter::OnStepStart(const TWrenStepReport& step, int total) {
  total_ = total;
  const std::string header = "[" + std::to_string(step.step) + "/" + std::to_string(total) + "] " +
                             StepTitle(step);
  if (!step.skipped.empty()) {
    if (style_.verbosity >= TWrenVerbosity::Minimal) Line(header + "  (" + step.skipped + ", skipped)");
    return;
  }
  if (style_.verbosity >= TWrenVerbosity::Minimal) Line(Paint(header, "1"));
  status_ = header + " ...";
  ClearStatus();
  DrawStatus();
  Send();
}

void TTerminalReporter::OnLog(const TWrenStepReport&, TWrenLogStream stream,
                              const std::string& text) {
  if (stream == TWrenLogStream::Command) {
    if (style_.verbosity >= TWrenVerbosity::Detailed) LogLine(Paint(text, "36"));
    return;
  }
  if (style_.verbosity >= TWrenVerbosity::Normal) LogLine(text);
}

void TTerminalReporter::OnLogLines(const TWrenStepReport& step, const TWrenLogLines& lines) {
  if (lines.Stream() == TWrenLogStream::Command) {
    IWrenBuildListener::OnLogLines(step, lines);  // painted line by line; one per program
    return;
  }
  if (style_.verbosity < TWrenVerbosity::Normal) return;
  if (statusShown_) ClearStatus();  // drawn again when the batch is sent
  pending_.AddLines("    ", lines);
  if (pending_.Size() >= kBatchBytes) pending_.WriteTo(out_);
}

void TTerminalReporter::OnDryRun(const TWrenStepReport&, const TWrenDryRunRecord& r) {
  if (r.executable.empty()) {
    if (r.diffs.empty()) Line("    (would change no file)");
    for (const TWrenFileDiff& d : r.diffs) {
      Line("    would change " + d.file + ":");
      std::string line;
      for (char c : d.diff) {
        if (c == '\n') {
          Line(Paint(line, line.rfind('+', 0) == 0 ? "32" : line.rfind('-', 0) == 0 ? "31" : "0"));
          line.clear();
        } else {
          line += c;
        }
      }
    }
    return;
  }
  nlohmann::json argv = r.argv;
  Line("    executable:   " + r.executable);
  Line("    argv:         " + JsonText(argv));
  Line("    command line: " + r.commandLine);
  Line("    working dir:  " + (r.workingDir.empty() ? std::string("(current)") : r.workingDir));
  if (!r.responseFilePath.empty()) {
    Line("    response file " + r.responseFilePath + ":");
    std::string line;
    for (char c : r.responseFileText) {
      if (c == '\n') {
        Line("      " + line);
        line.clear();
      } else if (c != '\r') {
        line += c;
      }
    }
    if (!line.empty()) Line("      " + line);
  }
}

void TTerminalReporter::OnStepEnd(const TWrenStepReport& step) {
  Send();
  if (!step.skipped.empty()) return;
  status_.clear();
  if (step.listedOnly) {
    if (style_.verbosity >= TWrenVerbosity::Minimal)
      Line("    (runs in process; not run in a dry run)");
    return;
  }
  const std::string head = "[" + std::to_string(step.step) + "/" + std::to_string(total_) + "] ";
  if (step.success) {
    if (style_.verbosity >= TWrenVerbosity::Minimal)
      Line(head + Paint("ok", "32") + " in " + Seconds(step.seconds));
    return;
  }
  if (style_.verbosity <= TWrenVerbosity::Minimal) {
    // Quiet shows only failures: the failed step with what it logged (its end, when long).
    if (style_.verbosity < TWrenVerbosity::Minimal) Line(head + StepTitle(step));
    if (step.logLines > step.log.size())
      LogLine("(" + std::to_string(step.logLines - step.log.size()) + " earlier lines not shown)");
    for (const auto& [stream, text] : step.log)
      if (stream != TWrenLogStream::Command) LogLine(text);
  }
  Line(head + Paint("FAILED", "31;1") + " in " + Seconds(step.seconds) + ": " +
       step.failureReason);
}

void TTerminalReporter::Summary(const TWrenBuildResult& result, bool dryRun) {
  ClearStatus();
  if (result.invalid) {
    Line("Build not started: the project has validation problems.");
    return;
  }
  const char* what = dryRun ? "Dry run" : "Build";
  int ran = 0, skipped = 0;
  const TWrenStepReport* failed = nullptr;
  for (const TWrenStepReport& s : result.steps) {
    if (!s.skipped.empty()) ++skipped;
    else ++ran;
    if (s.skipped.empty() && !s.success && !failed) failed = &s;
  }
  std::string timing = " in " + Seconds(result.seconds);
  if (result.stopped) {
    Line(Paint(std::string(what) + " stopped by user request", "31;1") + " after " +
         Seconds(result.seconds));
  } else if (result.success) {
    Line(Paint(std::string(what) + " succeeded", "32;1") + ": " +
         std::to_string(result.steps.size()) + " step(s)" +
         (skipped ? " (" + std::to_string(ran) + " run, " + std::to_string(skipped) + " skipped)"
                  : "") +
         timing);
  } else if (failed) {
    Line(Paint(std::string(what) + " FAILED", "31;1") + " at step " +
         std::to_string(failed->step) + " (" + failed->displayName +
         "): " + failed->failureReason);
  } else {
    Line(Paint(std::string(what) + " FAILED", "31;1"));
  }
}

void TJsonReporter::Emit(const nlohmann::json& event) {
  out_ << JsonText(event) << "\n" << std::flush;
}

void TJsonReporter::Start(const std::string& command, const std::string& project) {
  Emit({{"event", "start"}, {"schemaVersion", kJsonSchemaVersion}, {"command", command},
        {"project", project}});
}

void TJsonReporter::Error(const std::string& file, int line, const std::string& action,
                          const std::string& property, const std::string& message) {
  Emit({{"event", "error"}, {"file", file}, {"line", line}, {"action", action},
        {"property", property}, {"message", message}});
}

void TJsonReporter::OnInvalid(const TWrenValidationProblem& p) {
  Emit({{"event", "invalid"}, {"step", p.step}, {"class", p.className}, {"field", p.field},
        {"message", p.message}, {"severity", p.warning ? "warning" : "error"}});
}

void TJsonReporter::OnStepStart(const TWrenStepReport& s, int total) {
  Emit({{"event", "step"}, {"step", s.step}, {"total", total}, {"class", s.className},
        {"name", s.displayName}, {"description", s.description}, {"enabled", s.enabled}});
}

void TJsonReporter::OnLog(const TWrenStepReport& s, TWrenLogStream stream, const std::string& t) {
  Emit({{"event", "log"}, {"step", s.step}, {"stream", StreamName(stream)}, {"text", t}});
}

void TJsonReporter::OnDryRun(const TWrenStepReport& s, const TWrenDryRunRecord& r) {
  nlohmann::json event{{"event", "dry-run"},     {"step", s.step},
                       {"class", s.className},   {"executable", r.executable},
                       {"commandLine", r.commandLine}, {"argv", r.argv},
                       {"workingDir", r.workingDir}, {"responseFile", nullptr}};
  if (!r.responseFilePath.empty())
    event["responseFile"] = {{"path", r.responseFilePath}, {"text", r.responseFileText}};
  if (r.executable.empty()) {
    // An in-process step: the files it would change instead of a program.
    event = {{"event", "dry-run"}, {"step", s.step}, {"class", s.className},
             {"diffs", nlohmann::json::array()}};
    for (const TWrenFileDiff& d : r.diffs)
      event["diffs"].push_back({{"file", d.file}, {"diff", d.diff}});
  }
  Emit(event);
}

void TJsonReporter::OnStepEnd(const TWrenStepReport& s) {
  nlohmann::json event{{"event", "result"}, {"step", s.step}, {"success", s.success},
                       {"exitCode", nullptr}, {"seconds", s.seconds}};
  if (s.exitCode) event["exitCode"] = *s.exitCode;
  if (!s.skipped.empty()) {
    event["skipped"] = true;
    event["skipReason"] = s.skipped;
  }
  if (!s.success) event["reason"] = s.failureReason;
  Emit(event);
}

void TJsonReporter::Summary(const TWrenBuildResult& result) {
  nlohmann::json notRun = nlohmann::json::array();
  for (const TWrenStepReport& s : result.steps)
    if (!s.skipped.empty()) notRun.push_back({{"step", s.step}, {"reason", s.skipped}});
  Emit({{"event", "build"}, {"success", result.success}, {"invalid", result.invalid},
        {"stopped", result.stopped}, {"seconds", result.seconds}, {"skipped", notRun}});
}

void TJsonReporter::Validation(const std::vector<TWrenValidationProblem>& problems, int steps) {
  int errors = 0, warnings = 0;
  for (const TWrenValidationProblem& p : problems) (p.warning ? warnings : errors)++;
  Emit({{"event", "validation"}, {"valid", errors == 0}, {"steps", steps}, {"errors", errors},
        {"warnings", warnings}});
}

namespace {

const char* LogPrefix(TWrenLogStream stream) {
  return stream == TWrenLogStream::StdErr ? "  ! " : "    ";
}

}  // namespace

// A block bigger than this is handed to the writer without waiting for the read to end.
constexpr size_t kLogBlockBytes = 1024 * 1024;
// A block up to this size is written on the build's thread when the writer has caught up.
constexpr size_t kLogDirectBytes = 16 * 1024;
constexpr size_t kLogMaxQueuedBlocks = 16;
constexpr size_t kLogSpareBlocks = 4;

TLogFileWriter::~TLogFileWriter() {
  std::string ignored;
  Close(ignored);
}

bool TLogFileWriter::Open(const std::string& path, std::string& error) {
  fd_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
  if (fd_ < 0) {
    error = "cannot write the log file " + path;
    return false;
  }
  path_ = path;
  current_ = std::make_unique<TLineBatch>();
  // The last build's log is cut off by the writer, before its first block: freeing a big file
  // takes a while, and the build need not wait for it.
  struct stat st {};
  if (::fstat(fd_, &st) == 0 && S_ISREG(st.st_mode) && st.st_size > 0) {
    std::unique_lock<std::mutex> lock(mutex_);
    StartWriter(true);
  }
  return true;
}

bool TLogFileWriter::Close(std::string& error) {
  if (fd_ < 0) return true;
  Send();
  if (writer_.joinable()) {
    {
      std::lock_guard<std::mutex> lock(mutex_);
      closing_ = true;
    }
    changed_.notify_all();
    writer_.join();
  }
  if (::close(fd_) != 0 && error_.empty())
    error_ = "cannot write the log file " + path_ + ": " + std::strerror(errno);
  fd_ = -1;
  error = error_;
  return error_.empty();
}

void TLogFileWriter::Write(const TLineBatch& block) {
  if (!error_.empty()) return;
  const char* at = block.Data();
  size_t left = block.Size();
  while (left > 0) {
    const ssize_t n = ::write(fd_, at, left);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      error_ = "cannot write the log file " + path_ + ": " +
               std::strerror(n < 0 ? errno : ENOSPC);
      return;
    }
    at += n;
    left -= static_cast<size_t>(n);
  }
}

void TLogFileWriter::StartWriter(bool truncate) {
  // Blocks wait while the file is cut: writing_ keeps the build's thread from writing too.
  writing_ = truncate;
  writer_ = StartQuietThread([this, truncate] { WriteBlocks(truncate); });
}

// The writer thread: cuts the file when asked, then writes the queued blocks in order until the
// file is closed.
void TLogFileWriter::WriteBlocks(bool truncate) {
  if (truncate) {
    const bool cut = ::ftruncate(fd_, 0) == 0;
    const int err = errno;
    std::lock_guard<std::mutex> lock(mutex_);
    if (!cut) error_ = "cannot write the log file " + path_ + ": " + std::strerror(err);
    writing_ = false;
  }
  std::unique_lock<std::mutex> lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return !queue_.empty() || closing_; });
    if (queue_.empty()) return;
    TBlock block = std::move(queue_.front());
    queue_.pop_front();
    writing_ = true;
    lock.unlock();
    // error_ is only touched by the thread that writes, and the build's thread writes only
    // while this one waits with nothing queued.
    Write(*block);
    const size_t size = block->Size();
    block->Clear();
    lock.lock();
    writing_ = false;
    queuedBytes_ -= size;
    if (spare_.size() < kLogSpareBlocks) spare_.push_back(std::move(block));
    changed_.notify_all();
  }
}

void TLogFileWriter::HandOff(std::unique_lock<std::mutex>& lock) {
  if (!writer_.joinable()) StartWriter(false);
  // The queue is bounded: a disk slower than the tool holds the build back, not the memory.
  changed_.wait(lock, [this] {
    return queuedBytes_ < kMaxQueuedBytes && queue_.size() < kLogMaxQueuedBlocks;
  });
  queuedBytes_ += current_->Size();
  queue_.push_back(std::move(current_));
  if (spare_.empty()) {
    current_ = std::make_unique<TLineBatch>();
  } else {
    current_ = std::move(spare_.back());
    spare_.pop_back();
  }
  changed_.notify_all();
}

std::string_view TLogFileWriter::Head(const char* prefix) {
  if (stampStale_) {
    const std::time_t now = std::time(nullptr);
    if (now != stampTime_) {
      std::tm local{};
      localtime_r(&now, &local);
      stampSize_ = std::strftime(stamp_, sizeof stamp_, "%Y-%m-%d %H:%M:%S", &local);
      stampTime_ = now;
    }
    stampStale_ = false;
  }
  const size_t prefixSize = std::strlen(prefix);
  const size_t size = std::min(stampSize_ + 2 + prefixSize, sizeof head_);
  std::snprintf(head_, sizeof head_, "%.*s  %s", static_cast<int>(stampSize_), stamp_, prefix);
  return {head_, size};
}

void TLogFileWriter::Send() {
  stampStale_ = true;
  if (fd_ < 0 || current_->Empty()) return;
  std::unique_lock<std::mutex> lock(mutex_);
  if (queue_.empty() && !writing_ && current_->Size() <= kLogDirectBytes) {
    Write(*current_);
    current_->Clear();
    return;
  }
  HandOff(lock);
}

void TLogFileWriter::Line(const std::string& text) {
  if (fd_ < 0) return;
  current_->AddLine({Head(""), text});
  Send();
}

void TLogFileWriter::OnInvalid(const TWrenValidationProblem& p) { Line(ProblemText(p)); }

void TLogFileWriter::OnStepStart(const TWrenStepReport& s, int total) {
  Line("[" + std::to_string(s.step) + "/" + std::to_string(total) + "] " + StepTitle(s) +
       (s.skipped.empty() ? "" : " (" + s.skipped + ", skipped)"));
}

void TLogFileWriter::OnLog(const TWrenStepReport&, TWrenLogStream stream, const std::string& t) {
  if (fd_ < 0) return;
  current_->AddLine({Head(LogPrefix(stream)), t});
  if (current_->Size() >= kLogBlockBytes) {
    std::unique_lock<std::mutex> lock(mutex_);
    HandOff(lock);
  }
}

void TLogFileWriter::OnLogLines(const TWrenStepReport&, const TWrenLogLines& lines) {
  if (fd_ < 0) return;
  current_->AddLines(Head(LogPrefix(lines.Stream())), lines);
  if (current_->Size() >= kLogBlockBytes) {
    std::unique_lock<std::mutex> lock(mutex_);
    HandOff(lock);
  }
}

void TLogFileWriter::OnLogFlush(const TWrenStepReport&) { Send(); }

void TLogFileWriter::OnStepEnd(const TWrenStepReport& s) {
  Send();
  if (!s.skipped.empty() || s.listedOnly) return;
  Line(s.success ? "  ok in " + Seconds(s.seconds)
                 : "  FAILED in " + Seconds(s.seconds) + ": " + s.failureReason);
}

void TJUnitOutput::OnStepStart(const TWrenStepReport&, int) {
  head_.clear();
  tail_.clear();
  tailStart_ = 0;
  dropped_ = 0;
}

void TJUnitOutput::OnLog(const TWrenStepReport&, TWrenLogStream, const std::string& text) {
  Append(text.data(), text.size());
  Append("\n", 1);
}

void TJUnitOutput::OnLogLines(const TWrenStepReport&, const TWrenLogLines& lines) {
  Append(lines.Text().data(), lines.Bytes());
}

void TJUnitOutput::Append(const char* data, size_t size) {
  constexpr size_t kHalf = kJUnitOutputBytes / 2;
  if (head_.size() < kHalf) {
    const size_t take = std::min(size, kHalf - head_.size());
    head_.append(data, take);
    data += take;
    size -= take;
  }
  if (size == 0) return;
  // Only the newest kHalf bytes stay in the tail.
  if (size >= kHalf) {
    dropped_ += tail_.size() + size - kHalf;
    tail_.assign(data + size - kHalf, kHalf);
    tailStart_ = 0;
    return;
  }
  if (tail_.size() < kHalf) {
    const size_t take = std::min(size, kHalf - tail_.size());
    tail_.append(data, take);
    data += take;
    size -= take;
  }
  for (size_t i = 0; i < size; ++i) {
    tail_[tailStart_] = data[i];
    tailStart_ = (tailStart_ + 1) % kHalf;
  }
  dropped_ += size;
}

void TJUnitOutput::OnStepEnd(const TWrenStepReport& step) {
  std::string text = std::move(head_);
  std::string tail = tail_.substr(tailStart_) + tail_.substr(0, tailStart_);
  if (dropped_ > 0) {
    // Cut at line ends, so no line is shown in part.
    const size_t headEnd = text.rfind('\n');
    const size_t tailStart = tail.find('\n');
    const size_t left = dropped_ + (text.size() - (headEnd == std::string::npos ? 0 : headEnd + 1)) +
                        (tailStart == std::string::npos ? tail.size() : tailStart + 1);
    text.resize(headEnd == std::string::npos ? 0 : headEnd + 1);
    text += "[... " + std::to_string(left) + " bytes of output left out ...]\n";
    if (tailStart != std::string::npos) text.append(tail, tailStart + 1, std::string::npos);
  } else {
    text += tail;
  }
  if (!text.empty()) done_[step.step] = std::move(text);
  OnStepStart(step, 0);
}

std::string TJUnitOutput::Of(int step) const {
  const auto it = done_.find(step);
  return it == done_.end() ? std::string() : it->second;
}

bool CheckReportWritable(const std::string& path, std::string& error) {
  const std::string dir = ExtractFilePath(path);
  const std::string probe = (dir.empty() ? std::string("./") : dir) + ".marrowby-report-check";
  std::ofstream file(probe, std::ios::out | std::ios::trunc);
  const bool ok = static_cast<bool>(file);
  file.close();
  std::remove(probe.c_str());
  if (ok && DirectoryExists(path)) {
    error = "cannot write the JUnit report " + path + ": it is a folder";
    return false;
  }
  if (!ok) error = "cannot write the JUnit report " + path + ": its folder is missing or read-only";
  return ok;
}

namespace {

/// One JUnit test case.
struct TJUnitCase {
  std::string className;
  std::string name;
  double seconds = 0;
  std::string failure;  // message; set with failed
  std::string failureText;
  bool failed = false;
  bool error = false;  // could not run properly (rather than a failed assertion)
  std::string skipped;  // message; set when skipped
  bool isSkipped = false;
  std::string out;
};

// Three decimals: the time format JUnit readers accept.
std::string JUnitTime(double seconds) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.3f", seconds < 0 ? 0.0 : seconds);
  return buf;
}

double Number(const char* text) { return text && *text ? std::strtod(text, nullptr) : 0; }

/// The test cases of an NUnit XML result (the 2.x and 3.x formats).
std::vector<TJUnitCase> NUnitCases(const std::string& path) {
  std::vector<TJUnitCase> cases;
  pugi::xml_document doc;
  if (!doc.load_file(path.c_str())) return cases;
  for (const pugi::xpath_node& node : doc.select_nodes("//test-case")) {
    const pugi::xml_node tc = node.node();
    TJUnitCase c;
    std::string full = tc.attribute("fullname") ? tc.attribute("fullname").value()
                                                : tc.attribute("name").value();
    c.className = tc.attribute("classname").value();
    if (c.className.empty()) {
      const size_t dot = full.rfind('.');
      c.className = dot == std::string::npos ? "NUnit" : full.substr(0, dot);
    }
    c.name = full.size() > c.className.size() && full.compare(0, c.className.size(), c.className) == 0
                 ? full.substr(c.className.size() + 1)
                 : full;
    c.seconds = Number(tc.attribute("duration") ? tc.attribute("duration").value()
                                                : tc.attribute("time").value());
    const std::string result = tc.attribute("result").value();
    const std::string executed = tc.attribute("executed").value();
    const pugi::xml_node failure = tc.child("failure");
    if (SameText(result, "Failed") || SameText(result, "Failure") || SameText(result, "Error")) {
      c.failed = true;
      c.error = SameText(result, "Error");
      c.failure = failure.child_value("message");
      c.failureText = failure.child_value("stack-trace");
      if (c.failure.empty()) c.failure = result;
    } else if (SameText(result, "Skipped") || SameText(result, "Ignored") ||
               SameText(result, "NotRunnable") || SameText(executed, "False")) {
      c.isSkipped = true;
      c.skipped = tc.child("reason").child_value("message");
      if (c.skipped.empty()) c.skipped = result.empty() ? "not executed" : result;
    }
    cases.push_back(std::move(c));
  }
  return cases;
}

}  // namespace

bool WriteJUnitReport(const std::string& path, const std::string& projectName,
                      const TWrenBuildResult& result,
                      const std::vector<TWrenValidationProblem>& problems,
                      const TJUnitOutput& output, std::string& error) {
  std::vector<TJUnitCase> cases;
  for (const TWrenValidationProblem& p : problems) {
    if (p.warning) continue;
    TJUnitCase c;
    c.className = p.className.empty() ? "validation" : "validation." + p.className;
    c.name = (p.step > 0 ? "step " + std::to_string(p.step) : std::string("project")) +
             (p.field.empty() ? "" : ", " + p.field);
    c.failed = true;
    c.failure = p.message;
    cases.push_back(std::move(c));
  }
  for (const TWrenStepReport& s : result.steps) {
    TJUnitCase c;
    c.className = s.className;
    c.name = std::to_string(s.step) + ". " + StepTitle(s);
    c.seconds = s.seconds;
    if (!s.skipped.empty()) {
      c.isSkipped = true;
      c.skipped = s.skipped;
    } else if (!s.success) {
      c.failed = true;
      c.error = !s.exitCode.has_value();
      c.failure = s.failureReason;
    }
    c.out = output.Of(s.step);
    cases.push_back(std::move(c));
    if (!s.testResultFile.empty() && s.skipped.empty())
      for (TJUnitCase& t : NUnitCases(s.testResultFile)) cases.push_back(std::move(t));
  }
  int failures = 0, errors = 0, skipped = 0;
  for (const TJUnitCase& c : cases) {
    if (c.isSkipped) ++skipped;
    else if (c.failed && c.error) ++errors;
    else if (c.failed) ++failures;
  }
  const std::string counts = " tests=\"" + std::to_string(cases.size()) + "\" failures=\"" +
                             std::to_string(failures) + "\" errors=\"" + std::to_string(errors) +
                             "\" skipped=\"" + std::to_string(skipped) + "\" time=\"" +
                             JUnitTime(result.seconds) + "\"";
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  xml += "<testsuites name=\"" + XmlEscape(projectName, '"') + "\"" + counts + ">\n";
  xml += "  <testsuite name=\"" + XmlEscape(projectName, '"') + "\"" + counts + ">\n";
  for (const TJUnitCase& c : cases) {
    xml += "    <testcase classname=\"" + XmlEscape(c.className, '"') + "\" name=\"" +
           XmlEscape(c.name, '"') + "\" time=\"" + JUnitTime(c.seconds) + "\">\n";
    if (c.isSkipped) xml += "      <skipped message=\"" + XmlEscape(c.skipped, '"') + "\"/>\n";
    if (c.failed)
      xml += std::string("      <") + (c.error ? "error" : "failure") + " message=\"" +
             XmlEscape(c.failure, '"') + "\">" + XmlEscape(c.failureText) + "</" +
             (c.error ? "error" : "failure") + ">\n";
    if (!c.out.empty()) xml += "      <system-out>" + XmlEscape(c.out) + "</system-out>\n";
    xml += "    </testcase>\n";
  }
  xml += "  </testsuite>\n</testsuites>\n";
  return WriteFileAtomic(path, xml, error);
}

}  // namespace wren
