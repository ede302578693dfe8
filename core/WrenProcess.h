// Child processes: what execute actions and the host run external programs with.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace wren {

/// How a run of a child process ended.
struct TWrenProcessResult {
  enum class TStatus {
    Exited,    // the program ran and exited; exitCode holds its code
    NotFound,  // the executable does not exist or cannot be executed
    Failed,    // the process could not be started for another reason (see error)
    Stopped,   // a stop request terminated it
    DryRun,    // the host recorded the run instead of starting the program
  };
  TStatus status = TStatus::Failed;
  int32_t exitCode = -1;
  std::string error;
};

/// A child process, configured then run to completion on the caller's thread.
///
/// The command-line text is what the program gets after its own name; on POSIX it is split with the
/// Windows C runtime rules (never through a shell). Output is delivered line by line, in arrival
/// order, with the line break (LF, or CR LF) removed; a last partial line is flushed at the end.
class IWrenProcess {
 public:
  using TLineHandler = std::function<void(const std::string& line)>;
  /// The lines of one read, line breaks removed, as views valid for the call only.
  using TLinesHandler = std::function<void(const std::string_view* lines, size_t count)>;

  virtual ~IWrenProcess() = default;
  virtual void SetExecutable(const std::string& path) = 0;
  virtual void SetCommandLine(const std::string& text) = 0;
  /// Empty: the host's current directory.
  virtual void SetWorkingDir(const std::string& dir) = 0;
  virtual void SetOnStdOut(TLineHandler handler) = 0;
  virtual void SetOnStdErr(TLineHandler handler) = 0;
  /// Instead of a line handler: a stream's lines a read at a time, for a caller that passes
  /// them on in blocks and needs no string per line. By default through the line handler.
  virtual void SetOnStdOutLines(TLinesHandler handler) { SetOnStdOut(PerLine(std::move(handler))); }
  virtual void SetOnStdErrLines(TLinesHandler handler) { SetOnStdErr(PerLine(std::move(handler))); }
  /// Called after the lines of one read of the program's output were delivered: a listener that
  /// buffers lines passes them on here, so output stays live without a write per line.
  virtual void SetOnChunkEnd(std::function<void()> handler) { (void)handler; }
  /// Polled while the program runs; true terminates its process group (then kills it).
  virtual void SetStopCheck(std::function<bool()> stopRequested) = 0;
  /// Starts the program and waits for it to end.
  virtual TWrenProcessResult Run() = 0;

 protected:
  static TLineHandler PerLine(TLinesHandler handler) {
    if (!handler) return {};
    return [handler](const std::string& line) {
      const std::string_view view(line);
      handler(&view, 1);
    };
  }
};

std::shared_ptr<IWrenProcess> CreateWrenProcess();

/// While one of these lives, runs reuse their helper processes instead of starting new ones per
/// run (a build keeps one for its whole length); when the last ends, the idle helpers end too.
/// Nothing a run starts outlives its run either way.
class TWrenProcessReuse {
 public:
  TWrenProcessReuse();
  ~TWrenProcessReuse();
  TWrenProcessReuse(const TWrenProcessReuse&) = delete;
  TWrenProcessReuse& operator=(const TWrenProcessReuse&) = delete;

 private:
  bool counted_ = false;
};

/// Splits a Windows command line into arguments with the Microsoft C runtime rules:
/// 2n backslashes before a quote give n backslashes and a quote toggle, 2n+1 give n and a literal
/// quote; "" inside a quoted part is a literal quote; an unterminated quote runs to the end.
std::vector<std::string> SplitCommandLine(const std::string& text);

/// True when the file begins with the PE signature "MZ" (a Windows program, run through mono).
bool IsManagedExecutable(const std::string& path);

}  // namespace wren
