// Child processes on POSIX: started by a supervisor process in a process group of their own,
// output read through two pipes with poll(), stop by SIGTERM then SIGKILL to the whole group; the
// supervisor kills what is left of the program's tree when the run ends or the host dies.
#include "WrenProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string_view>

extern char** environ;

namespace wren {

namespace {

using TClock = std::chrono::steady_clock;

constexpr int kDefaultGraceMs = 2000;
// How long output may stay silent after the program exited before a background grandchild that
// still holds the pipes is no longer waited for.
constexpr int kDrainIdleMs = 500;
// The longest poll() wait while the program runs: bounds how late a stop request is noticed.
constexpr int kPollSliceMs = 50;

int64_t MsSince(TClock::time_point start) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(TClock::now() - start).count();
}

std::string ErrnoText(int err) { return std::strerror(err); }

/// Owns one file descriptor.
class TFd {
 public:
  TFd() = default;
  explicit TFd(int fd) : fd_(fd) {}
  TFd(const TFd&) = delete;
  TFd& operator=(const TFd&) = delete;
  ~TFd() { Close(); }
  int Get() const { return fd_; }
  bool IsOpen() const { return fd_ >= 0; }
  void Reset(int fd) {
    Close();
    fd_ = fd;
  }
  int Release() {
    const int fd = fd_;
    fd_ = -1;
    return fd;
  }
  void Close() {
    if (fd_ >= 0) ::close(fd_);  // not retried on EINTR: on Linux the fd is gone either way
    fd_ = -1;
  }

 private:
  int fd_ = -1;
};

/// Cuts a byte stream into lines: LF ends a line, a CR before it is dropped. Lines are handed
/// out from one reused string, so a steady stream of lines allocates nothing.
class TLineSplitter {
 public:
  void Feed(std::string_view data, const IWrenProcess::TLineHandler& handler) {
    size_t start = 0;
    for (;;) {
      const size_t end = data.find('\n', start);
      if (end == std::string_view::npos) break;
      if (pending_.empty()) {
        // clear + append keeps the capacity and skips assign's overlap checks: this runs per line.
        line_.clear();
        line_.append(data.data() + start, end - start);
      } else {
        pending_.append(data.substr(start, end - start));
        line_.swap(pending_);
        pending_.clear();
      }
      Emit(handler);
      start = end + 1;
    }
    pending_.append(data.substr(start));
  }
  /// The same, all complete lines of the data in one call, as views into it (or, for a line
  /// begun by an earlier read, into the part kept from then).
  void Feed(std::string_view data, const IWrenProcess::TLinesHandler& handler) {
    views_.clear();
    const char* bytes = data.data();
    size_t start = 0;
    bool joined = false;
    while (const void* found = std::memchr(bytes + start, '\n', data.size() - start)) {
      const size_t end = static_cast<size_t>(static_cast<const char*>(found) - bytes);
      std::string_view line(bytes + start, end - start);
      if (!pending_.empty() && !joined) {
        pending_.append(line);
        line = pending_;
        joined = true;
      }
      if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
      views_.push_back(line);
      start = end + 1;
    }
    if (!views_.empty()) handler(views_.data(), views_.size());
    if (joined) pending_.clear();
    pending_.append(bytes + start, data.size() - start);
    if (pending_.capacity() > kKeepCapacity && pending_.size() <= kKeepCapacity)
      std::string(pending_).swap(pending_);
  }
  /// The last line when the stream did not end with a line break.
  void Flush(const IWrenProcess::TLineHandler& handler) {
    if (pending_.empty()) return;
    line_.swap(pending_);
    pending_.clear();
    Emit(handler);
  }
  void Flush(const IWrenProcess::TLinesHandler& handler) {
    if (pending_.empty()) return;
    std::string_view line(pending_);
    if (line.back() == '\r') line.remove_suffix(1);
    handler(&line, 1);
    pending_.clear();
  }

 private:
  void Emit(const IWrenProcess::TLineHandler& handler) {
    if (!line_.empty() && line_.back() == '\r') line_.pop_back();
    if (handler) handler(line_);
    // A huge line's memory is not kept for the rest of the run.
    if (line_.capacity() > kKeepCapacity) std::string().swap(line_);
    if (pending_.capacity() > kKeepCapacity) std::string().swap(pending_);
  }
  static constexpr size_t kKeepCapacity = 64 * 1024;
  std::string line_;
  std::string pending_;
  std::vector<std::string_view> views_;
};

/// One output pipe of the child and what becomes of its bytes.
struct TOutputStream {
  TFd fd;
  TLineSplitter lines;
  const IWrenProcess::TLineHandler* handler = nullptr;
  const IWrenProcess::TLinesHandler* linesHandler = nullptr;  // taken instead when set

  void Feed(std::string_view data) {
    if (*linesHandler)
      lines.Feed(data, *linesHandler);
    else
      lines.Feed(data, *handler);
  }
  void Finish() {
    fd.Close();
    if (*linesHandler)
      lines.Flush(*linesHandler);
    else
      lines.Flush(*handler);
  }
};

/// The buffer output is read into: allocated once per run and never cleared, since read()
/// overwrites what it returns.
struct TReadBuffer {
  static constexpr size_t kSize = 64 * 1024;
  std::unique_ptr<char[]> bytes{new char[kSize]};
};

/// Pumps both output pipes; returns true when any bytes arrived within timeoutMs. exitFd (a
/// pidfd, or -1) wakes the wait as soon as the program exits, so short tools cost no idle time.
bool PumpOutput(TOutputStream* streams[2], TReadBuffer& buffer,
                const std::function<void()>& onChunkEnd, int timeoutMs, int exitFd = -1) {
  pollfd fds[3];
  TOutputStream* owners[2];
  nfds_t count = 0;
  for (int i = 0; i < 2; ++i) {
    if (!streams[i]->fd.IsOpen()) continue;
    fds[count] = pollfd{streams[i]->fd.Get(), POLLIN, 0};
    owners[count] = streams[i];
    ++count;
  }
  const nfds_t pipes = count;
  if (exitFd >= 0) fds[count++] = pollfd{exitFd, POLLIN, 0};
  const int ready = ::poll(count ? fds : nullptr, count, timeoutMs);
  if (ready <= 0) return false;  // timeout, or EINTR: the caller simply polls again

  bool gotData = false;
  bool ended = false;  // a stream's end may have delivered its last, unfinished line
  for (nfds_t i = 0; i < pipes; ++i) {
    if (fds[i].revents == 0) continue;
    TOutputStream& stream = *owners[i];
    // One read per stream per round keeps the two streams in the order their bytes arrived.
    ssize_t n;
    do {
      n = ::read(stream.fd.Get(), buffer.bytes.get(), TReadBuffer::kSize);
    } while (n < 0 && errno == EINTR);
    if (n > 0) {
      gotData = true;
      stream.Feed(std::string_view(buffer.bytes.get(), static_cast<size_t>(n)));
    } else if (n == 0 || errno != EAGAIN) {
      stream.Finish();
      ended = true;
    }
  }
  if ((gotData || ended) && onChunkEnd) onChunkEnd();
  return gotData;
}

bool IsRegularFile(const std::string& path) {
  struct stat st{};
  return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool IsDirectory(const std::string& path) {
  struct stat st{};
  return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

/// Where a program's file was found, or why it was not.
struct TProgramFile {
  std::string path;
  std::string problem;  // empty when found
};

// A Windows program needs no execute bit: mono reads it.
bool IsRunnable(const std::string& path, bool acceptManaged) {
  if (!IsRegularFile(path)) return false;
  if (::access(path.c_str(), X_OK) == 0) return true;
  return acceptManaged && IsManagedExecutable(path);
}

TProgramFile FindProgram(const std::string& name, bool acceptManaged) {
  if (name.empty()) return {"", "no program given"};
  if (name.find('/') != std::string::npos) {
    struct stat st{};
    if (::stat(name.c_str(), &st) != 0) return {"", name + ": " + ErrnoText(errno)};
    if (!S_ISREG(st.st_mode)) return {"", name + ": not a file"};
    if (!IsRunnable(name, acceptManaged)) return {"", name + ": not executable"};
    return {name, ""};
  }
  const char* pathVar = std::getenv("PATH");
  const std::string searchPath = pathVar ? pathVar : "/usr/local/bin:/usr/bin:/bin";
  size_t start = 0;
  for (;;) {
    const size_t end = std::min(searchPath.find(':', start), searchPath.size());
    std::string dir = searchPath.substr(start, end - start);
    if (dir.empty()) dir = ".";  // an empty PATH entry means the current directory
    std::string candidate = dir + "/" + name;
    if (IsRunnable(candidate, acceptManaged)) return {candidate, ""};
    if (end >= searchPath.size()) break;
    start = end + 1;
  }
  return {"", name + ": not found on PATH"};
}

int KillGraceMs() {
  const char* text = std::getenv("MARROWBY_KILL_GRACE_MS");
  if (!text || !*text) return kDefaultGraceMs;
  char* end = nullptr;
  const long value = std::strtol(text, &end, 10);
  if (*end != '\0' || value < 0) return kDefaultGraceMs;
  return static_cast<int>(std::min<long>(value, 600000));
}

/// What the supervisor tells the host about the program.
struct TSupervisorMessage {
  enum : int32_t { Started, SpawnFailed, Exited } kind;
  int32_t value;  // the program's pid, the errno of the failed start, or the exit code
};

/// Everything the program is started with, prepared before the fork: after it only
/// async-signal-safe calls are allowed (another thread of the host may hold the heap's lock).
struct TLaunch {
  const char* path;
  char* const* argv;
  const char* workingDir;  // null: the host's
  int outFd;
  int errFd;
  int lifelineFd;  // the supervisor's end: EOF when the host has finished with the run, or died
  int statusFd;    // the supervisor's end of its messages to the host
};

void WriteMessage(int fd, TSupervisorMessage message) {
  while (::write(fd, &message, sizeof message) < 0 && errno == EINTR) {
  }
}

int ExitCodeOf(int status) {
  if (WIFEXITED(status)) return WEXITSTATUS(status);
  if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
  return -1;
}

// Closes every descriptor from 3 up but the ones listed.
void CloseAllBut(std::initializer_list<int> keepList) {
  int keep[8];
  size_t n = 0;
  for (int fd : keepList) {  // insertion sort: a handful of numbers
    if (n == 8) break;
    size_t at = n++;
    for (; at > 0 && keep[at - 1] > fd; --at) keep[at] = keep[at - 1];
    keep[at] = fd;
  }
  unsigned from = 3;
  for (size_t i = 0; i < n; ++i) {
    if (keep[i] < 0 || static_cast<unsigned>(keep[i]) < from) continue;
    if (static_cast<unsigned>(keep[i]) > from) ::syscall(SYS_close_range, from, keep[i] - 1, 0);
    from = static_cast<unsigned>(keep[i]) + 1;
  }
  ::syscall(SYS_close_range, from, ~0U, 0);
}

// The parent pid in /proc/<pid>/stat, read without the heap; -1 when gone.
pid_t ParentOf(const char* pidText) {
  char path[64] = "/proc/";
  size_t n = 6;
  for (const char* c = pidText; *c && n < 50; ++c) path[n++] = *c;
  const char tail[] = "/stat";
  for (char c : tail) path[n++] = c;
  const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
  if (fd < 0) return -1;
  char text[512];
  const ssize_t got = ::read(fd, text, sizeof text - 1);
  ::close(fd);
  if (got <= 0) return -1;
  // "pid (name) state ppid ...": the name may hold anything, so look after its last ')'.
  ssize_t close = got - 1;
  while (close >= 0 && text[close] != ')') --close;
  if (close < 0 || close + 4 >= got) return -1;
  pid_t ppid = 0;
  for (ssize_t i = close + 4; i < got && text[i] >= '0' && text[i] <= '9'; ++i)
    ppid = ppid * 10 + (text[i] - '0');
  return ppid;
}

// Kills every child of this process (the subreaper inherits every orphan of the program's tree).
void KillChildren() {
  const pid_t self = ::getpid();
  const int dir = ::open("/proc", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dir < 0) return;
  alignas(8) char buffer[8192];
  for (;;) {
    const long got = ::syscall(SYS_getdents64, dir, buffer, sizeof buffer);
    if (got <= 0) break;
    for (long at = 0; at < got;) {
      struct Entry {
        uint64_t ino;
        int64_t off;
        unsigned short reclen;
        unsigned char type;
        char name[1];
      };
      const auto* e = reinterpret_cast<const Entry*>(buffer + at);
      at += e->reclen;
      if (e->name[0] < '1' || e->name[0] > '9') continue;
      if (ParentOf(e->name) != self) continue;
      pid_t pid = 0;
      for (const char* c = e->name; *c; ++c) pid = pid * 10 + (*c - '0');
      ::kill(pid, SIGKILL);
    }
  }
  ::close(dir);
}

// The program's own process, after the supervisor's fork.
[[noreturn]] void StartProgram(const TLaunch& launch, pid_t supervisor, int execErrorFd) {
  ::setpgid(0, 0);  // own group, so a stop reaches the tools it starts too
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != supervisor) ::_exit(127);
  // The supervisor's ignored signals and the host's blocked ones are not passed on.
  struct sigaction dfl {};
  dfl.sa_handler = SIG_DFL;
  for (int sig : {SIGPIPE, SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGCHLD}) ::sigaction(sig, &dfl, nullptr);
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  int err = 0;
  const int null = ::open("/dev/null", O_RDONLY);
  if (launch.workingDir && ::chdir(launch.workingDir) != 0) {
    err = errno;
  } else if (null < 0 || ::dup2(null, STDIN_FILENO) < 0 ||
             ::dup2(launch.outFd, STDOUT_FILENO) < 0 || ::dup2(launch.errFd, STDERR_FILENO) < 0) {
    err = errno;
  } else {
    ::execve(launch.path, launch.argv, environ);
    err = errno;
  }
  while (::write(execErrorFd, &err, sizeof err) < 0 && errno == EINTR) {
  }
  ::_exit(127);
}

// The supervisor: a forked copy of the host that starts the program and outlives the host just
// long enough to kill whatever the program started, however the host ends. It is the subreaper
// of the program's tree, so even a grandchild that left the process group (setsid) stays its
// descendant.
[[noreturn]] void Supervise(const TLaunch& launch) {
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  // A closed terminal or Ctrl-C reaches the host's group, and with it this process: the host
  // decides what the program gets.
  for (int sig : {SIGHUP, SIGINT, SIGTERM, SIGQUIT, SIGPIPE}) ::sigaction(sig, &ignore, nullptr);
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  int execError[2];
  if (::pipe2(execError, O_CLOEXEC) != 0) {
    WriteMessage(launch.statusFd, {TSupervisorMessage::SpawnFailed, errno});
    ::_exit(0);
  }
  const pid_t self = ::getpid();
  // The program's process borrows this one's memory until it execs, as posix_spawn does: a
  // second copy of the host's page tables per step would cost more than the rest of the start.
  // This process waits meanwhile, and nothing here has a signal handler that could run there.
  struct TStart {
    const TLaunch* launch;
    pid_t supervisor;
    int execErrorFd;
  } start{&launch, self, execError[1]};
  alignas(16) static char stack[64 * 1024];
  const pid_t program = ::clone(
      [](void* arg) -> int {
        const TStart& s = *static_cast<const TStart*>(arg);
        StartProgram(*s.launch, s.supervisor, s.execErrorFd);
      },
      stack + sizeof stack, CLONE_VM | CLONE_VFORK | SIGCHLD, &start);
  ::close(execError[1]);
  ::close(launch.outFd);
  ::close(launch.errFd);
  if (program < 0) {
    WriteMessage(launch.statusFd, {TSupervisorMessage::SpawnFailed, errno});
    ::_exit(0);
  }
  ::setpgid(program, program);  // before the host may signal the group
  int startError = 0;
  ssize_t got;
  do {
    got = ::read(execError[0], &startError, sizeof startError);
  } while (got < 0 && errno == EINTR);
  ::close(execError[0]);
  if (got == static_cast<ssize_t>(sizeof startError)) {
    ::waitpid(program, nullptr, 0);
    WriteMessage(launch.statusFd, {TSupervisorMessage::SpawnFailed, startError});
    ::_exit(0);
  }
  WriteMessage(launch.statusFd, {TSupervisorMessage::Started, program});

  // Until the host lets go: report the program's exit (it stays an unreaped zombie, so its
  // group id cannot be reused while the host may signal it) and reap orphans meanwhile.
  const int exitFd = static_cast<int>(::syscall(SYS_pidfd_open, program, 0));
  bool reported = false;
  for (;;) {
    pollfd fds[2] = {{launch.lifelineFd, POLLIN, 0}, {exitFd, POLLIN, 0}};
    const nfds_t count = (exitFd >= 0 && !reported) ? 2 : 1;
    ::poll(fds, count, reported ? -1 : 100);
    if (fds[0].revents != 0) {
      char byte;
      const ssize_t r = ::read(launch.lifelineFd, &byte, 1);
      if (r == 0 || (r < 0 && errno != EINTR)) break;
    }
    if (reported) continue;
    siginfo_t info{};
    if (::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid == 0) continue;
    if (info.si_pid != program) {
      ::waitpid(info.si_pid, nullptr, WNOHANG);
      continue;
    }
    const int code = info.si_code == CLD_EXITED ? info.si_status : 128 + info.si_status;
    WriteMessage(launch.statusFd, {TSupervisorMessage::Exited, code});
    reported = true;
  }

  ::kill(-program, SIGKILL);
  int programStatus = -1;
  for (;;) {
    int status = 0;
    const pid_t reaped = ::waitpid(-1, &status, WNOHANG);
    if (reaped == program) programStatus = status;
    if (reaped > 0) continue;
    if (reaped < 0 && errno == ECHILD) break;
    // Some child still runs: the walk through /proc is paid only then, not on every run.
    KillChildren();
    const timespec pause{0, 2000000};
    ::nanosleep(&pause, nullptr);
  }
  if (!reported) WriteMessage(launch.statusFd, {TSupervisorMessage::Exited, ExitCodeOf(programStatus)});
  ::_exit(0);
}

/// The running program, seen from the host: through its supervisor's messages, and its process
/// group for stop signals. Letting go (Finish, or the destructor when Run leaves early) makes
/// the supervisor kill everything the program started.
class TChild {
 public:
  TChild(pid_t supervisor, int lifelineFd, int statusFd)
      : supervisor_(supervisor), lifeline_(lifelineFd), status_(statusFd) {}
  TChild(const TChild&) = delete;
  TChild& operator=(const TChild&) = delete;
  ~TChild() { Finish(); }

  /// Waits for the start; false with the errno when the program could not be started.
  bool WaitStarted(int& error) {
    TSupervisorMessage m{};
    if (!ReadMessage(m, true)) {
      error = EIO;
      return false;
    }
    if (m.kind == TSupervisorMessage::SpawnFailed) {
      error = m.value;
      return false;
    }
    program_ = m.value;
    ::fcntl(status_.Get(), F_SETFL, ::fcntl(status_.Get(), F_GETFL) | O_NONBLOCK);
    return true;
  }

  /// A descriptor that turns readable when the program's state changes.
  int WakeFd() const { return status_.Get(); }

  bool HasExited() {
    TSupervisorMessage m{};
    while (!exitCode_ && ReadMessage(m, false))
      if (m.kind == TSupervisorMessage::Exited) exitCode_ = m.value;
    return exitCode_.has_value();
  }

  void SignalGroup(int signal) {
    if (program_ > 0) ::kill(-program_, signal);
  }

  /// Ends the run: everything the program started is killed; returns its exit code
  /// (128 + signal for a signal death).
  int Finish() {
    if (supervisor_ > 0) {
      lifeline_.Close();
      ::fcntl(status_.Get(), F_SETFL, ::fcntl(status_.Get(), F_GETFL) & ~O_NONBLOCK);
      TSupervisorMessage m{};
      while (!exitCode_ && ReadMessage(m, true))
        if (m.kind == TSupervisorMessage::Exited) exitCode_ = m.value;
      while (::waitpid(supervisor_, nullptr, 0) < 0 && errno == EINTR) {
      }
      supervisor_ = -1;
      status_.Close();
    }
    return exitCode_.value_or(-1);
  }

 private:
  // False at the end of the messages (or, not blocking, when none is waiting).
  bool ReadMessage(TSupervisorMessage& m, bool block) {
    if (!status_.IsOpen()) return false;
    for (;;) {
      const ssize_t got = ::read(status_.Get(), &m, sizeof m);
      if (got == static_cast<ssize_t>(sizeof m)) return true;
      if (got < 0 && errno == EINTR) continue;
      if (got == 0 && !block) exitCode_ = exitCode_.value_or(-1);  // the supervisor is gone
      return false;
    }
  }

  pid_t supervisor_;
  pid_t program_ = -1;
  TFd lifeline_;
  TFd status_;
  std::optional<int> exitCode_;
};

/// The POSIX implementation of IWrenProcess.
class TWrenProcessPosix final : public IWrenProcess {
 public:
  void SetExecutable(const std::string& path) override { executable_ = path; }
  void SetCommandLine(const std::string& text) override { commandLine_ = text; }
  void SetWorkingDir(const std::string& dir) override { workingDir_ = dir; }
  void SetOnStdOut(TLineHandler handler) override { onStdOut_ = std::move(handler); }
  void SetOnStdErr(TLineHandler handler) override { onStdErr_ = std::move(handler); }
  void SetOnStdOutLines(TLinesHandler handler) override { onStdOutLines_ = std::move(handler); }
  void SetOnStdErrLines(TLinesHandler handler) override { onStdErrLines_ = std::move(handler); }
  void SetOnChunkEnd(std::function<void()> handler) override { onChunkEnd_ = std::move(handler); }
  void SetStopCheck(std::function<bool()> stopRequested) override {
    stopCheck_ = std::move(stopRequested);
  }
  TWrenProcessResult Run() override;

 private:
  bool StopRequested() const { return stopCheck_ && stopCheck_(); }

  std::string executable_;
  std::string commandLine_;
  std::string workingDir_;
  TLineHandler onStdOut_;
  TLineHandler onStdErr_;
  TLinesHandler onStdOutLines_;
  TLinesHandler onStdErrLines_;
  std::function<void()> onChunkEnd_;
  std::function<bool()> stopCheck_;
};

TWrenProcessResult Failure(TWrenProcessResult::TStatus status, std::string error) {
  TWrenProcessResult result;
  result.status = status;
  result.error = std::move(error);
  return result;
}

TWrenProcessResult TWrenProcessPosix::Run() {
  using TStatus = TWrenProcessResult::TStatus;

  const TProgramFile program = FindProgram(executable_, true);
  if (!program.problem.empty()) return Failure(TStatus::NotFound, program.problem);

  std::vector<std::string> args;
  std::string spawnPath;
  if (IsManagedExecutable(program.path)) {
    const char* monoVar = std::getenv("MARROWBY_MONO");
    const std::string mono = monoVar && *monoVar ? monoVar : "mono";
    const TProgramFile runtime = FindProgram(mono, false);
    if (!runtime.problem.empty()) {
      return Failure(TStatus::NotFound, executable_ + " needs the managed runtime: " +
                                            runtime.problem + " (set MARROWBY_MONO)");
    }
    spawnPath = runtime.path;
    args = {mono, program.path};
  } else {
    spawnPath = program.path;
    args = {executable_};
  }
  for (std::string& arg : SplitCommandLine(commandLine_)) args.push_back(std::move(arg));

  if (!workingDir_.empty() && !IsDirectory(workingDir_)) {
    return Failure(TStatus::Failed, "working directory " + workingDir_ + " does not exist");
  }

  int outPipe[2];
  int errPipe[2];
  if (::pipe2(outPipe, O_CLOEXEC) != 0) {
    return Failure(TStatus::Failed, "cannot create a pipe: " + ErrnoText(errno));
  }
  TOutputStream out;
  out.fd.Reset(outPipe[0]);
  TFd outWrite(outPipe[1]);
  if (::pipe2(errPipe, O_CLOEXEC) != 0) {
    return Failure(TStatus::Failed, "cannot create a pipe: " + ErrnoText(errno));
  }
  TOutputStream err;
  err.fd.Reset(errPipe[0]);
  TFd errWrite(errPipe[1]);
  // Only our ends are non-blocking; the child's ends stay as programs expect them.
  ::fcntl(out.fd.Get(), F_SETFL, ::fcntl(out.fd.Get(), F_GETFL) | O_NONBLOCK);
  ::fcntl(err.fd.Get(), F_SETFL, ::fcntl(err.fd.Get(), F_GETFL) | O_NONBLOCK);
  out.handler = &onStdOut_;
  err.handler = &onStdErr_;
  out.linesHandler = &onStdOutLines_;
  err.linesHandler = &onStdErrLines_;

  std::vector<char*> argv;
  argv.reserve(args.size() + 1);
  for (std::string& arg : args) argv.push_back(arg.data());
  argv.push_back(nullptr);

  int lifeline[2];
  int status[2];
  if (::pipe2(lifeline, O_CLOEXEC) != 0) {
    return Failure(TStatus::Failed, "cannot create a pipe: " + ErrnoText(errno));
  }
  TFd lifelineRead(lifeline[0]);
  TFd lifelineWrite(lifeline[1]);
  if (::pipe2(status, O_CLOEXEC) != 0) {
    return Failure(TStatus::Failed, "cannot create a pipe: " + ErrnoText(errno));
  }
  TFd statusRead(status[0]);
  TFd statusWrite(status[1]);

  const TLaunch launch{spawnPath.c_str(), argv.data(),
                       workingDir_.empty() ? nullptr : workingDir_.c_str(),
                       outWrite.Get(), errWrite.Get(), lifelineRead.Get(), statusWrite.Get()};
  const pid_t supervisor = ::fork();
  if (supervisor == 0) {
    CloseAllBut({launch.outFd, launch.errFd, launch.lifelineFd, launch.statusFd});
    Supervise(launch);
  }
  const int forkError = errno;
  outWrite.Close();
  errWrite.Close();
  lifelineRead.Close();
  statusWrite.Close();
  if (supervisor < 0) {
    return Failure(TStatus::Failed, "cannot start " + executable_ + ": " + ErrnoText(forkError));
  }
  TChild child(supervisor, lifelineWrite.Release(), statusRead.Release());
  int startError = 0;
  if (!child.WaitStarted(startError)) {
    return Failure(TStatus::Failed, "cannot start " + executable_ + ": " + ErrnoText(startError));
  }

  TOutputStream* streams[2] = {&out, &err};
  TReadBuffer buffer;
  auto anyOpen = [&] { return out.fd.IsOpen() || err.fd.IsOpen(); };

  bool stopped = false;
  while (!child.HasExited()) {
    if (StopRequested()) {
      stopped = true;
      break;
    }
    PumpOutput(streams, buffer, onChunkEnd_, kPollSliceMs, child.WakeFd());
  }

  if (stopped) {
    child.SignalGroup(SIGTERM);
    const auto termSent = TClock::now();
    const int graceMs = KillGraceMs();
    // Keep reading meanwhile: a program blocked on a full pipe could not act on the signal.
    while (!child.HasExited()) {
      const int64_t left = graceMs - MsSince(termSent);
      if (left <= 0) break;
      PumpOutput(streams, buffer, onChunkEnd_,
                 static_cast<int>(std::min<int64_t>(left, kPollSliceMs)), child.WakeFd());
    }
    child.SignalGroup(SIGKILL);
  }

  // The rest of the output. A grandchild left running in the background may hold the pipes open
  // for good, so silence ends the wait.
  auto lastData = TClock::now();
  while (anyOpen()) {
    const int64_t left = kDrainIdleMs - MsSince(lastData);
    if (left <= 0 || (!stopped && StopRequested())) break;
    if (PumpOutput(streams, buffer, onChunkEnd_,
                   static_cast<int>(std::min<int64_t>(left, kPollSliceMs)))) {
      lastData = TClock::now();
    }
  }
  // Nothing the program started outlives the run.
  const int exitCode = child.Finish();
  out.Finish();
  err.Finish();
  if (onChunkEnd_) onChunkEnd_();

  TWrenProcessResult result;
  result.exitCode = exitCode;
  result.status = stopped ? TStatus::Stopped : TStatus::Exited;
  return result;
}

}  // namespace

std::shared_ptr<IWrenProcess> CreateWrenProcess() { return std::make_shared<TWrenProcessPosix>(); }

}  // namespace wren
