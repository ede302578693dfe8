// Child processes on POSIX: posix_spawn in a process group of their own, output read through two
// pipes with poll(), stop by SIGTERM then SIGKILL to the whole group.
#include "WrenProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
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
  void Close() {
    if (fd_ >= 0) ::close(fd_);  // not retried on EINTR: on Linux the fd is gone either way
    fd_ = -1;
  }

 private:
  int fd_ = -1;
};

/// Cuts a byte stream into lines: LF ends a line, a CR before it is dropped.
class TLineSplitter {
 public:
  void Feed(std::string_view data, const IWrenProcess::TLineHandler& handler) {
    size_t start = 0;
    for (;;) {
      const size_t end = data.find('\n', start);
      if (end == std::string_view::npos) break;
      pending_.append(data.substr(start, end - start));
      Emit(handler);
      start = end + 1;
    }
    pending_.append(data.substr(start));
  }
  /// The last line when the stream did not end with a line break.
  void Flush(const IWrenProcess::TLineHandler& handler) {
    if (!pending_.empty()) Emit(handler);
  }

 private:
  void Emit(const IWrenProcess::TLineHandler& handler) {
    std::string line = std::move(pending_);
    pending_.clear();
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (handler) handler(line);
  }
  std::string pending_;
};

/// One output pipe of the child and what becomes of its bytes.
struct TOutputStream {
  TFd fd;
  TLineSplitter lines;
  const IWrenProcess::TLineHandler* handler = nullptr;

  void Finish() {
    fd.Close();
    lines.Flush(*handler);
  }
};

/// Pumps both output pipes; returns true when any bytes arrived within timeoutMs. exitFd (a
/// pidfd, or -1) wakes the wait as soon as the program exits, so short tools cost no idle time.
bool PumpOutput(TOutputStream* streams[2], std::vector<char>& buffer, int timeoutMs,
                int exitFd = -1) {
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
  for (nfds_t i = 0; i < pipes; ++i) {
    if (fds[i].revents == 0) continue;
    TOutputStream& stream = *owners[i];
    // One read per stream per round keeps the two streams in the order their bytes arrived.
    ssize_t n;
    do {
      n = ::read(stream.fd.Get(), buffer.data(), buffer.size());
    } while (n < 0 && errno == EINTR);
    if (n > 0) {
      gotData = true;
      stream.lines.Feed(std::string_view(buffer.data(), static_cast<size_t>(n)), *stream.handler);
    } else if (n == 0 || errno != EAGAIN) {
      stream.Finish();
    }
  }
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

/// The spawned child until it is reaped; kills its group when Run leaves early (a throwing
/// handler), so no child outlives the run whatever happens.
class TChild {
 public:
  explicit TChild(pid_t pid) : pid_(pid) {}
  TChild(const TChild&) = delete;
  TChild& operator=(const TChild&) = delete;
  ~TChild() {
    if (!reaped_) {
      ::kill(-pid_, SIGKILL);
      Reap();
    }
  }

  /// True once the child has exited; it stays a zombie (so its pid, and with it the group id,
  /// cannot be reused) until Reap().
  bool HasExited() {
    if (exited_) return true;
    siginfo_t info{};
    int rc;
    do {
      rc = ::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED | WNOHANG | WNOWAIT);
    } while (rc < 0 && errno == EINTR);
    exited_ = rc == 0 && info.si_pid == pid_;
    return exited_;
  }

  void SignalGroup(int signal) { ::kill(-pid_, signal); }

  /// Waits for the child and returns its exit code (128 + signal for a signal death).
  int Reap() {
    int status = 0;
    pid_t rc;
    do {
      rc = ::waitpid(pid_, &status, 0);
    } while (rc < 0 && errno == EINTR);
    reaped_ = true;
    if (rc != pid_) return -1;
    if (WIFEXITED(status)) return WEXITSTATUS(status);
    if (WIFSIGNALED(status)) return 128 + WTERMSIG(status);
    return -1;
  }

 private:
  pid_t pid_;
  bool exited_ = false;
  bool reaped_ = false;
};

/// posix_spawn attributes and file actions, released on every path.
struct TSpawnSetup {
  posix_spawn_file_actions_t actions;
  posix_spawnattr_t attr;
  TSpawnSetup() {
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attr);
  }
  ~TSpawnSetup() {
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attr);
  }
  TSpawnSetup(const TSpawnSetup&) = delete;
  TSpawnSetup& operator=(const TSpawnSetup&) = delete;
};

/// The POSIX implementation of IWrenProcess.
class TWrenProcessPosix final : public IWrenProcess {
 public:
  void SetExecutable(const std::string& path) override { executable_ = path; }
  void SetCommandLine(const std::string& text) override { commandLine_ = text; }
  void SetWorkingDir(const std::string& dir) override { workingDir_ = dir; }
  void SetOnStdOut(TLineHandler handler) override { onStdOut_ = std::move(handler); }
  void SetOnStdErr(TLineHandler handler) override { onStdErr_ = std::move(handler); }
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

  pid_t pid = -1;
  int spawnError;
  {
    TSpawnSetup setup;
    if (!workingDir_.empty()) {
      posix_spawn_file_actions_addchdir_np(&setup.actions, workingDir_.c_str());
    }
    posix_spawn_file_actions_addopen(&setup.actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&setup.actions, outWrite.Get(), STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&setup.actions, errWrite.Get(), STDERR_FILENO);

    // Own process group, so a stop reaches the tools it starts too; signals the host ignores or
    // blocks are not passed on.
    sigset_t none;
    sigemptyset(&none);
    sigset_t defaults;
    sigemptyset(&defaults);
    for (int sig : {SIGPIPE, SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGCHLD}) sigaddset(&defaults, sig);
    posix_spawnattr_setflags(&setup.attr, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK |
                                              POSIX_SPAWN_SETSIGDEF);
    posix_spawnattr_setpgroup(&setup.attr, 0);
    posix_spawnattr_setsigmask(&setup.attr, &none);
    posix_spawnattr_setsigdefault(&setup.attr, &defaults);

    std::vector<char*> argv;
    argv.reserve(args.size() + 1);
    for (std::string& arg : args) argv.push_back(arg.data());
    argv.push_back(nullptr);
    spawnError = ::posix_spawn(&pid, spawnPath.c_str(), &setup.actions, &setup.attr, argv.data(),
                               environ);
  }
  outWrite.Close();
  errWrite.Close();
  if (spawnError != 0) {
    return Failure(TStatus::Failed, "cannot start " + executable_ + ": " + ErrnoText(spawnError));
  }

  TChild child(pid);
  TOutputStream* streams[2] = {&out, &err};
  std::vector<char> buffer(64 * 1024);
  auto anyOpen = [&] { return out.fd.IsOpen() || err.fd.IsOpen(); };

  // A pidfd turns the child's exit into something poll() can wait on; without one (old kernels)
  // the exit is checked every few milliseconds once the pipes are closed.
  TFd exitFd(static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)));
  bool stopped = false;
  while (!child.HasExited()) {
    if (StopRequested()) {
      stopped = true;
      break;
    }
    PumpOutput(streams, buffer, exitFd.IsOpen() || anyOpen() ? kPollSliceMs : 5,
               exitFd.IsOpen() ? exitFd.Get() : -1);
  }

  if (stopped) {
    child.SignalGroup(SIGTERM);
    const auto termSent = TClock::now();
    const int graceMs = KillGraceMs();
    // Keep reading meanwhile: a program blocked on a full pipe could not act on the signal.
    while (!child.HasExited()) {
      const int64_t left = graceMs - MsSince(termSent);
      if (left <= 0) break;
      PumpOutput(streams, buffer, static_cast<int>(std::min<int64_t>(left, kPollSliceMs)));
    }
    child.SignalGroup(SIGKILL);
  }

  // The rest of the output. A grandchild left running in the background may hold the pipes open
  // for good, so silence ends the wait.
  auto lastData = TClock::now();
  while (anyOpen()) {
    const int64_t left = kDrainIdleMs - MsSince(lastData);
    if (left <= 0 || (!stopped && StopRequested())) break;
    if (PumpOutput(streams, buffer, static_cast<int>(std::min<int64_t>(left, kPollSliceMs)))) {
      lastData = TClock::now();
    }
  }
  // Nothing the program started outlives the run. The child is still an unreaped zombie here, so
  // its group id cannot have been handed to an unrelated process.
  child.SignalGroup(SIGKILL);
  out.Finish();
  err.Finish();

  TWrenProcessResult result;
  result.exitCode = child.Reap();
  result.status = stopped ? TStatus::Stopped : TStatus::Exited;
  return result;
}

}  // namespace

std::shared_ptr<IWrenProcess> CreateWrenProcess() { return std::make_shared<TWrenProcessPosix>(); }

}  // namespace wren
