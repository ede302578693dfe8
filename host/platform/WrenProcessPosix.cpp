// Child processes on POSIX: started by a supervisor process in a process group of their own,
// output read through two pipes with poll(), stop by SIGTERM then SIGKILL to the whole group; the
// supervisor kills what is left of the program's tree when the run ends or the host dies, and
// serves the next run when reuse is on.
#include "WrenProcess.h"
#include "WrenRewritePosix.h"

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif

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

/// The buffer output is read into: one per thread, kept from run to run (a buffer this size
/// allocated and freed per run made the heap grow and shrink at every step), never cleared,
/// since read() overwrites what it returns.
struct TReadBuffer {
  static constexpr size_t kSize = 64 * 1024;
  std::unique_ptr<char[]> bytes{new char[kSize]};
  static TReadBuffer& ForThisThread() {
    thread_local TReadBuffer buffer;
    return buffer;
  }
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

/// Where a program's file was found, or why it was not.
struct TProgramFile {
  std::string path;
  std::string problem;  // empty when found
  struct stat st {};    // of the file found
};

// The "MZ" signature of a Windows program, read with two bytes rather than a stream: this runs
// for every program started.
bool HasWindowsSignature(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  char head[2] = {};
  const ssize_t got = ::read(fd, head, sizeof head);
  ::close(fd);
  return got == 2 && head[0] == 'M' && head[1] == 'Z';
}

// A Windows program needs no execute bit: mono reads it.
bool IsRunnable(const std::string& path, const struct stat& st, bool acceptManaged) {
  if (!S_ISREG(st.st_mode)) return false;
  if (::access(path.c_str(), X_OK) == 0) return true;
  return acceptManaged && HasWindowsSignature(path);
}

TProgramFile FindProgram(const std::string& name, bool acceptManaged) {
  if (name.empty()) return {"", "no program given"};
  struct stat st{};
  if (name.find('/') != std::string::npos) {
    if (::stat(name.c_str(), &st) != 0) return {"", name + ": " + ErrnoText(errno)};
    if (!S_ISREG(st.st_mode)) return {"", name + ": not a file"};
    if (!IsRunnable(name, st, acceptManaged)) return {"", name + ": not executable"};
    return {name, "", st};
  }
  const char* pathVar = std::getenv("PATH");
  const std::string searchPath = pathVar ? pathVar : "/usr/local/bin:/usr/bin:/bin";
  size_t start = 0;
  for (;;) {
    const size_t end = std::min(searchPath.find(':', start), searchPath.size());
    std::string dir = searchPath.substr(start, end - start);
    if (dir.empty()) dir = ".";  // an empty PATH entry means the current directory
    std::string candidate = dir + "/" + name;
    if (::stat(candidate.c_str(), &st) == 0 && IsRunnable(candidate, st, acceptManaged))
      return {candidate, "", st};
    if (end >= searchPath.size()) break;
    start = end + 1;
  }
  return {"", name + ": not found on PATH"};
}

/// Whether a program file is a Windows one, remembered while the file stays the same: a build
/// runs the same few programs step after step, and the answer needs the file opened and read.
class TSignatureCache {
 public:
  bool IsWindowsProgram(const TProgramFile& file) {
    const struct stat& st = file.st;
    {
      std::lock_guard lock(mutex_);
      for (const TEntry& e : entries_) {
        if (e.path == file.path && SameFile(e.st, st)) return e.windows;
      }
    }
    const bool windows = HasWindowsSignature(file.path);
    if (!Settled(st)) return windows;
    std::lock_guard lock(mutex_);
    if (entries_.size() >= kMaxEntries) entries_.erase(entries_.begin());
    entries_.push_back({file.path, st, windows});
    return windows;
  }

 private:
  // Any later write to the file or change of its metadata moves its change time, as long as
  // that time is not still the clock tick it was written in (file times are coarse).
  static bool Settled(const struct stat& st) {
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return st.st_ctim.tv_sec + 2 < now.tv_sec;
  }
  static bool SameFile(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino && a.st_size == b.st_size &&
           a.st_mtim.tv_sec == b.st_mtim.tv_sec && a.st_mtim.tv_nsec == b.st_mtim.tv_nsec &&
           a.st_ctim.tv_sec == b.st_ctim.tv_sec && a.st_ctim.tv_nsec == b.st_ctim.tv_nsec;
  }
  struct TEntry {
    std::string path;
    struct stat st;
    bool windows;
  };
  static constexpr size_t kMaxEntries = 16;
  std::mutex mutex_;
  std::vector<TEntry> entries_;
};

TSignatureCache& SignatureCache() {
  static TSignatureCache cache;
  return cache;
}

int KillGraceMs() {
  const char* text = std::getenv("MARROWBY_KILL_GRACE_MS");
  if (!text || !*text) return kDefaultGraceMs;
  char* end = nullptr;
  const long value = std::strtol(text, &end, 10);
  if (*end != '\0' || value < 0) return kDefaultGraceMs;
  return static_cast<int>(std::min<long>(value, 600000));
}

// The host and a supervisor talk over a SOCK_SEQPACKET socket pair, one message per write.
// Each run: the host sends Start (with the program's stdout, stderr and starting directory as
// descriptors); the supervisor answers SpawnFailed, or, once the program exited, Ended when
// nothing of the run is left (the usual case: one round trip per run), else Exited. After
// Exited the host reads the rest of the output, then sends Finish; the supervisor kills what is
// left of the run and answers Done. A stop reaches the program's group through Signal, sent by
// the supervisor, which alone knows whether the group is still the program's. A Finish or
// Signal that crossed an Ended is read by the idle supervisor and dropped. EOF on either side
// means the other is gone: a supervisor whose host is gone kills the run and exits.

/// What the host asks of a supervisor.
struct TRequestHeader {
  enum : int32_t { Start, Finish, Signal } kind;
  uint32_t size;  // bytes that follow: path, arguments, environment, each ending in NUL
  uint32_t argc;
  uint32_t envc;
  int32_t signal;  // for Signal: what the program's group gets
  int32_t cpu;     // for Start: the processor the host sent it from, or -1
};

/// What the supervisor tells the host.
struct TSupervisorMessage {
  enum : int32_t { SpawnFailed, Ended, Exited, Done } kind;
  int32_t value;  // the errno of the failed start, or the exit code
};

// The largest message: well inside a socket's default send buffer. Bigger requests (a huge
// environment) follow in further messages.
constexpr size_t kChunk = 64 * 1024;
constexpr int kRequestFds = 3;

/// A request as the supervisor holds it, with pointers into its own buffer.
struct TLaunch {
  const char* path = nullptr;
  char** argv = nullptr;
  char** envp = nullptr;
  int outFd = -1;
  int errFd = -1;
  int dirFd = -1;
  int cpu = -1;
};

// The supervisor's memory: static or mapped, never the heap, since it is a fork of a host whose
// other threads may have held the heap's lock at that moment.
alignas(16) char gRequestBuffer[256 * 1024];
alignas(16) char gCloneStack[64 * 1024];

bool SendMessage(int fd, TSupervisorMessage message) {
  ssize_t sent;
  do {
    sent = ::send(fd, &message, sizeof message, MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return sent == static_cast<ssize_t>(sizeof message);
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

// Kills the program's group and every child left, and reaps them all; the program's wait
// status, or -1 when it was reaped before.
int KillAndReapAll(pid_t program) {
  if (program > 0) ::kill(-program, SIGKILL);
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
  return programStatus;
}

// The supervisor's /dev/null, opened once: every program's standard input.
int gNullFd = -1;
// The processors the host may use, as this process got them at its fork: its programs get them.
cpu_set_t gHostCpus;
bool gHostCpusKnown = false;
// The one processor this process keeps to, or -1.
int gKeptCpu = -1;

// The program's own process, after the supervisor's clone. It shares the supervisor's memory
// until it execs, so a failure is reported by writing *startError.
[[noreturn]] void StartProgram(const TLaunch& launch, pid_t supervisor, int* startError) {
  ::setpgid(0, 0);  // own group, so a stop reaches the tools it starts too
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != supervisor) ::_exit(127);
  // The supervisor's signals are at their default already; its blocked ones and the host's
  // are not passed on.
  sigset_t none;
  sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
  // Not the one processor the supervisor keeps to during the run (should none of the host's be
  // left to it, any the system allows).
  if (gHostCpusKnown && ::sched_setaffinity(0, sizeof gHostCpus, &gHostCpus) != 0) {
    cpu_set_t any;
    std::memset(&any, 0xff, sizeof any);
    ::sched_setaffinity(0, sizeof any, &any);
  }
  int err = 0;
  if (::fchdir(launch.dirFd) != 0) {
    err = errno;
  } else if (gNullFd < 0) {
    err = ENOENT;
  } else if (::dup2(gNullFd, STDIN_FILENO) < 0 ||
             ::dup2(launch.outFd, STDOUT_FILENO) < 0 || ::dup2(launch.errFd, STDERR_FILENO) < 0) {
    err = errno;
  } else {
    ::execve(launch.path, launch.argv, launch.envp);
    err = errno;
  }
  *startError = err;
  ::_exit(127);
}

// Takes the NUL-ended strings of a request into an array; false when they run past its end.
bool TakeStrings(char*& at, const char* end, uint32_t count, char** into) {
  for (uint32_t i = 0; i < count; ++i) {
    into[i] = at;
    while (at < end && *at) ++at;
    if (at == end) return false;
    ++at;
  }
  into[count] = nullptr;
  return true;
}

/// The memory of one request in the supervisor: the static buffer, or a mapping for a big one.
struct TRequestMemory {
  char* bytes = gRequestBuffer;
  size_t mapped = 0;
  ~TRequestMemory() {
    if (mapped) ::munmap(bytes, mapped);
  }
};

enum class TReceived { Start, Other, Malformed, HostGone };

// Receives the host's next message; for a Start, the launch it describes.
TReceived ReceiveRequest(int control, TLaunch& launch, TRequestMemory& memory) {
  TRequestHeader header{};
  iovec iov[2] = {{&header, sizeof header}, {memory.bytes, kChunk}};
  alignas(cmsghdr) char cmsgSpace[CMSG_SPACE(sizeof(int) * kRequestFds)];
  msghdr msg{};
  msg.msg_iov = iov;
  msg.msg_iovlen = 2;
  msg.msg_control = cmsgSpace;
  msg.msg_controllen = sizeof cmsgSpace;
  ssize_t got;
  do {
    got = ::recvmsg(control, &msg, MSG_CMSG_CLOEXEC);
  } while (got < 0 && errno == EINTR);
  if (got <= 0) return TReceived::HostGone;
  int fds[kRequestFds] = {-1, -1, -1};
  int fdCount = 0;
  for (cmsghdr* c = CMSG_FIRSTHDR(&msg); c; c = CMSG_NXTHDR(&msg, c)) {
    if (c->cmsg_level != SOL_SOCKET || c->cmsg_type != SCM_RIGHTS) continue;
    const size_t n = (c->cmsg_len - CMSG_LEN(0)) / sizeof(int);
    for (size_t i = 0; i < n; ++i) {
      int fd;
      std::memcpy(&fd, CMSG_DATA(c) + i * sizeof(int), sizeof fd);
      if (fdCount < kRequestFds) {
        fds[fdCount++] = fd;
      } else {
        ::close(fd);
      }
    }
  }
  launch.outFd = fds[0];
  launch.errFd = fds[1];
  launch.dirFd = fds[2];
  launch.cpu = header.cpu;
  if (got < static_cast<ssize_t>(sizeof header) || header.kind != TRequestHeader::Start) {
    for (int fd : fds)
      if (fd >= 0) ::close(fd);
    return got < static_cast<ssize_t>(sizeof header) ? TReceived::Malformed : TReceived::Other;
  }
  if (fdCount != kRequestFds || header.size == 0) return TReceived::Malformed;

  // The pointer arrays go after the strings, in the same memory.
  const size_t pointersAt = (header.size + 15) & ~size_t(15);
  const size_t need = pointersAt + (size_t(header.argc) + header.envc + 2) * sizeof(char*);
  if (need > sizeof gRequestBuffer) {
    void* map = ::mmap(nullptr, need, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (map == MAP_FAILED) return TReceived::Malformed;
    std::memcpy(map, memory.bytes, static_cast<size_t>(got) - sizeof header);
    memory.bytes = static_cast<char*>(map);
    memory.mapped = need;
  }
  size_t have = static_cast<size_t>(got) - sizeof header;
  while (have < header.size) {
    const size_t part = std::min<size_t>(kChunk, header.size - have);
    do {
      got = ::recv(control, memory.bytes + have, part, 0);
    } while (got < 0 && errno == EINTR);
    if (got <= 0) return TReceived::HostGone;
    have += static_cast<size_t>(got);
  }
  char* at = memory.bytes;
  const char* end = memory.bytes + header.size;
  char** pointers = reinterpret_cast<char**>(memory.bytes + pointersAt);
  launch.argv = pointers;
  launch.envp = pointers + header.argc + 1;
  const char* path = at;
  while (at < end && *at) ++at;
  if (at == end) return TReceived::Malformed;
  ++at;
  launch.path = path;
  if (!TakeStrings(at, end, header.argc, launch.argv) ||
      !TakeStrings(at, end, header.envc, launch.envp)) {
    return TReceived::Malformed;
  }
  return TReceived::Start;
}

void CloseLaunchFds(const TLaunch& launch) {
  for (int fd : {launch.outFd, launch.errFd, launch.dirFd})
    if (fd >= 0) ::close(fd);
}

/// The supervisor's copies of a run's output pipes, closed once, both in one call where they
/// are neighbours: the host, waiting on the pipes alone, then wakes once for both ends.
struct TOutputCopies {
  int out;
  int err;
  ~TOutputCopies() { Close(); }
  void Close() {
    const bool neighbours = out >= 0 && err >= 0 && (out == err + 1 || err == out + 1);
    if (!neighbours || ::syscall(SYS_close_range, std::min(out, err), std::max(out, err), 0) != 0) {
      if (out >= 0) ::close(out);
      if (err >= 0) ::close(err);
    }
    out = err = -1;
  }
};

// Reaps every child that has ended; true when none is left, so nothing of the run still runs:
// the supervisor adopts every orphan of the program's tree.
bool ReapedAll() {
  for (;;) {
    const pid_t reaped = ::waitpid(-1, nullptr, WNOHANG);
    if (reaped > 0) continue;
    return reaped < 0 && errno == ECHILD;
  }
}

// Runs one program to the end of its run: false when the host is gone.
bool SuperviseRun(int control, const TLaunch& launch, pid_t self) {
  // The program's process borrows this one's memory until it execs, as posix_spawn does: a
  // copy of the page tables per run would cost more than the rest of the start. This process
  // waits meanwhile (so the program's failure to start is known when clone returns), and
  // nothing here has a signal handler that could run there.
  struct TStart {
    const TLaunch* launch;
    pid_t supervisor;
    int error;
  } start{&launch, self, 0};
  // The run is a relay between the host and this process: the host's request wakes it, and the
  // program's exit wakes it to wake the host. On the host's processor each wake-up is a local
  // one; across processors it costs an interrupt, which on a virtual machine is dear.
  // Most runs come from the processor the last one came from: this process is there already.
  if (gHostCpusKnown && launch.cpu >= 0 && launch.cpu < CPU_SETSIZE && launch.cpu != gKeptCpu) {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(launch.cpu, &one);
    gKeptCpu = ::sched_setaffinity(0, sizeof one, &one) == 0 ? launch.cpu : -1;
  }
#if defined(__SANITIZE_ADDRESS__)
  // The last program's frames never returned: their stale redzones would fault this one.
  ASAN_UNPOISON_MEMORY_REGION(gCloneStack, sizeof gCloneStack);
#endif
  const pid_t program = ::clone(
      [](void* arg) -> int {
        TStart& s = *static_cast<TStart*>(arg);
        StartProgram(*s.launch, s.supervisor, &s.error);
      },
      gCloneStack + sizeof gCloneStack, CLONE_VM | CLONE_VFORK | SIGCHLD, &start);
  const int cloneError = errno;
  ::close(launch.dirFd);
  // This process keeps its copies of the output pipes until it has reported the program's exit:
  // the host, which waits on the pipes alone while they are open, is woken once by their end and
  // finds the report waiting, instead of waking for each end and for the report.
  TOutputCopies output{launch.outFd, launch.errFd};
  if (program < 0) return SendMessage(control, {TSupervisorMessage::SpawnFailed, cloneError});
  if (start.error != 0) {
    ::waitpid(program, nullptr, 0);
    return SendMessage(control, {TSupervisorMessage::SpawnFailed, start.error});
  }

  // Until the program exits: pass on the host's signals to its group (the program stays
  // unreaped till then, so the group id cannot have been reused) and reap orphans meanwhile.
  // Then, when nothing else of the run is left, the run is over; otherwise the host reads the
  // rest of the output and ends the run with Finish.
  const int exitFd = static_cast<int>(::syscall(SYS_pidfd_open, program, 0));
  bool exited = false;  // reported, and reaped
  bool hostGone = false;
  for (;;) {
    pollfd fds[2] = {{control, POLLIN, 0}, {exitFd, POLLIN, 0}};
    const nfds_t count = (exitFd >= 0 && !exited) ? 2 : 1;
    ::poll(fds, count, exited ? -1 : 100);
    if (fds[0].revents != 0) {
      TRequestHeader header{};
      const ssize_t r = ::recv(control, &header, sizeof header, MSG_DONTWAIT);
      if (r == 0 || (r < 0 && errno != EINTR && errno != EAGAIN)) {
        hostGone = true;
        break;
      }
      if (r > 0 && header.kind == TRequestHeader::Finish) break;
      if (r > 0 && header.kind == TRequestHeader::Signal && !exited) ::kill(-program, header.signal);
    }
    if (exited) continue;
    siginfo_t info{};
    if (::waitid(P_ALL, 0, &info, WEXITED | WNOHANG | WNOWAIT) != 0 || info.si_pid == 0) continue;
    if (info.si_pid != program) {
      ::waitpid(info.si_pid, nullptr, WNOHANG);
      continue;
    }
    const int code = info.si_code == CLD_EXITED ? info.si_status : 128 + info.si_status;
    ::waitpid(program, nullptr, 0);
    exited = true;
    if (ReapedAll()) {
      if (exitFd >= 0) ::close(exitFd);
      return SendMessage(control, {TSupervisorMessage::Ended, code});  // output closes on return
    }
    SendMessage(control, {TSupervisorMessage::Exited, code});
    output.Close();
  }
  if (exitFd >= 0) ::close(exitFd);
  output.Close();

  // Once reaped, the program's group is left to the walk over the children: its id could
  // belong to someone else by now.
  const int programStatus = KillAndReapAll(exited ? -1 : program);
  if (hostGone) return false;
  if (!exited) SendMessage(control, {TSupervisorMessage::Exited, ExitCodeOf(programStatus)});
  return SendMessage(control, {TSupervisorMessage::Done, 0});
}

// The supervisor: a forked copy of the host that starts the host's programs one run at a time
// and outlives the host just long enough to kill whatever a run started, however the host ends.
// It is the subreaper of the programs' trees, so even a grandchild that left the process group
// (setsid) stays its descendant.
[[noreturn]] void Supervise(int control) {
  // A closed terminal or Ctrl-C reaches the host's group, and with it this process: the host
  // decides what the program gets. Those signals are blocked here, not ignored, so that the
  // programs inherit their default actions and have only the mask to clear. SIGCHLD is at its
  // default too: a host started with it ignored would have its programs reaped unseen, and
  // this process wait for them for ever. Blocked first: at its default, one would end it.
  const int held[] = {SIGHUP, SIGINT, SIGTERM, SIGQUIT, SIGPIPE};
  sigset_t mask;
  sigemptyset(&mask);
  for (int sig : held) sigaddset(&mask, sig);
  ::sigprocmask(SIG_BLOCK, &mask, nullptr);
  struct sigaction dfl {};
  dfl.sa_handler = SIG_DFL;
  for (int sig : held) ::sigaction(sig, &dfl, nullptr);
  ::sigaction(SIGCHLD, &dfl, nullptr);
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  gNullFd = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  gHostCpusKnown = ::sched_getaffinity(0, sizeof gHostCpus, &gHostCpus) == 0;
  const pid_t self = ::getpid();
  for (;;) {
    TLaunch launch;
    TRequestMemory memory;
    switch (ReceiveRequest(control, launch, memory)) {
      case TReceived::HostGone:
        CloseLaunchFds(launch);
        ::_exit(0);
      case TReceived::Other:
        continue;
      case TReceived::Malformed:
        CloseLaunchFds(launch);
        if (!SendMessage(control, {TSupervisorMessage::SpawnFailed, EPROTO})) ::_exit(0);
        continue;
      case TReceived::Start:
        if (!SuperviseRun(control, launch, self)) ::_exit(0);
        continue;
    }
  }
}

/// A supervisor process, seen from the host through its end of the control socket.
class TSupervisor {
 public:
  /// Forks a new one; null with the errno when that failed.
  static std::unique_ptr<TSupervisor> Start(int& error) {
    int pair[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, pair) != 0) {
      error = errno;
      return nullptr;
    }
    const pid_t pid = ::fork();
    if (pid == 0) {
      CloseAllBut({pair[1]});
      Supervise(pair[1]);
    }
    error = errno;
    ::close(pair[1]);
    if (pid < 0) {
      ::close(pair[0]);
      return nullptr;
    }
    return std::unique_ptr<TSupervisor>(new TSupervisor(pid, pair[0]));
  }
  TSupervisor(const TSupervisor&) = delete;
  TSupervisor& operator=(const TSupervisor&) = delete;
  /// Lets go: the supervisor ends (killing what a run still holds) and is reaped.
  ~TSupervisor() {
    control_.Close();
    while (::waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
  }

  int Fd() const { return control_.Get(); }
  pid_t Pid() const { return pid_; }

  /// Sends a Start request; false with the errno when the supervisor is gone.
  bool SendStart(const std::string& path, const std::vector<std::string>& args, int outFd,
                 int errFd, int dirFd, int& error) {
    // Every string is measured once, the buffer sized once, and each string copied with its
    // terminating NUL; buffer and lengths keep their capacity from run to run, so a steady build
    // allocates nothing here.
    size_t size = path.size() + 1;
    for (const std::string& arg : args) size += arg.size() + 1;
    envLengths_.clear();
    for (char** e = environ; e && *e; ++e) {
      envLengths_.push_back(std::strlen(*e) + 1);
      size += envLengths_.back();
    }
    const uint32_t envc = static_cast<uint32_t>(envLengths_.size());
    request_.resize(size);
    char* at = request_.data();
    auto put = [&at](const char* text, size_t withNul) {
      std::memcpy(at, text, withNul);
      at += withNul;
    };
    put(path.c_str(), path.size() + 1);
    for (const std::string& arg : args) put(arg.c_str(), arg.size() + 1);
    for (uint32_t i = 0; i < envc; ++i) put(environ[i], envLengths_[i]);
    TRequestHeader header{TRequestHeader::Start, static_cast<uint32_t>(request_.size()),
                          static_cast<uint32_t>(args.size()), envc, 0, ::sched_getcpu()};
    const size_t first = std::min(request_.size(), kChunk);
    iovec iov[2] = {{&header, sizeof header}, {request_.data(), first}};
    alignas(cmsghdr) char cmsgSpace[CMSG_SPACE(sizeof(int) * kRequestFds)]{};
    msghdr msg{};
    msg.msg_iov = iov;
    msg.msg_iovlen = 2;
    msg.msg_control = cmsgSpace;
    msg.msg_controllen = sizeof cmsgSpace;
    cmsghdr* c = CMSG_FIRSTHDR(&msg);
    c->cmsg_level = SOL_SOCKET;
    c->cmsg_type = SCM_RIGHTS;
    c->cmsg_len = CMSG_LEN(sizeof(int) * kRequestFds);
    const int fds[kRequestFds] = {outFd, errFd, dirFd};
    std::memcpy(CMSG_DATA(c), fds, sizeof fds);
    if (!Send(msg, error)) return false;
    for (size_t at = first; at < request_.size(); at += kChunk) {
      iovec part{request_.data() + at, std::min(kChunk, request_.size() - at)};
      msghdr more{};
      more.msg_iov = &part;
      more.msg_iovlen = 1;
      if (!Send(more, error)) return false;
    }
    // A huge environment's memory is not kept between runs.
    if (request_.capacity() > 4 * kChunk) std::string().swap(request_);
    return true;
  }

  bool SendFinish() { return SendHeader({TRequestHeader::Finish, 0, 0, 0, 0, -1}); }
  bool SendSignal(int signal) { return SendHeader({TRequestHeader::Signal, 0, 0, 0, signal, -1}); }

  enum class TRead { Message, None, Gone };
  TRead Read(TSupervisorMessage& m, bool block) {
    for (;;) {
      const ssize_t got = ::recv(control_.Get(), &m, sizeof m, block ? 0 : MSG_DONTWAIT);
      if (got == static_cast<ssize_t>(sizeof m)) return TRead::Message;
      if (got < 0 && errno == EINTR) continue;
      if (got < 0 && errno == EAGAIN && !block) return TRead::None;
      return TRead::Gone;
    }
  }

 private:
  TSupervisor(pid_t pid, int fd) : pid_(pid), control_(fd) {}

  bool SendHeader(TRequestHeader header) {
    iovec iov{&header, sizeof header};
    msghdr msg{};
    msg.msg_iov = &iov;
    msg.msg_iovlen = 1;
    int error = 0;
    return Send(msg, error);
  }

  bool Send(const msghdr& msg, int& error) {
    ssize_t sent;
    do {
      sent = ::sendmsg(control_.Get(), &msg, MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    if (sent >= 0) return true;
    error = errno;
    return false;
  }

  pid_t pid_;
  TFd control_;
  std::string request_;  // kept between runs: a steady build allocates nothing for it
  std::vector<size_t> envLengths_;
};

/// Supervisors kept for reuse while a TWrenProcessReuse lives; one run at a time each, so
/// runs on several threads take one each.
struct TSupervisorPool {
  std::mutex mutex;
  std::vector<std::unique_ptr<TSupervisor>> idle;
  int scopes = 0;
  // A forked copy of the host must not share its supervisors: its runs start their own.
  const pid_t owner = posix::CurrentPid();

  static TSupervisorPool& Get() {
    static TSupervisorPool pool;
    return pool;
  }
  bool Mine() const { return owner == posix::CurrentPid(); }
};

/// A supervisor for one run: an idle one from the pool, or a new one; null with the errno when
/// none could be started.
std::unique_ptr<TSupervisor> TakeSupervisor(int& error) {
  TSupervisorPool& pool = TSupervisorPool::Get();
  if (pool.Mine()) {
    std::lock_guard lock(pool.mutex);
    if (!pool.idle.empty()) {
      std::unique_ptr<TSupervisor> supervisor = std::move(pool.idle.back());
      pool.idle.pop_back();
      return supervisor;
    }
  }
  return TSupervisor::Start(error);
}

/// After a run that ended cleanly: kept for the next run while reuse is on, otherwise let go
/// (after the lock is released, when the parameter dies).
void GiveBackSupervisor(std::unique_ptr<TSupervisor> supervisor) {
  TSupervisorPool& pool = TSupervisorPool::Get();
  if (!pool.Mine()) return;
  std::lock_guard lock(pool.mutex);
  if (pool.scopes > 0) pool.idle.push_back(std::move(supervisor));
}

/// The running program, seen from the host through its supervisor's messages. Finish (or the
/// destructor when Run leaves early) makes the supervisor kill everything the program started,
/// unless the supervisor already reported that nothing is left.
class TChild {
 public:
  explicit TChild(std::unique_ptr<TSupervisor> supervisor) : supervisor_(std::move(supervisor)) {}
  TChild(const TChild&) = delete;
  TChild& operator=(const TChild&) = delete;
  ~TChild() { Finish(); }

  /// A descriptor that turns readable when the program's state changes.
  int WakeFd() const { return supervisor_ ? supervisor_->Fd() : -1; }

  /// True once the program exited, could not start, or its supervisor was lost.
  bool HasExited() {
    TSupervisorMessage m{};
    while (!Over() && supervisor_) {
      const TSupervisor::TRead r = supervisor_->Read(m, false);
      if (r == TSupervisor::TRead::None) break;
      if (r == TSupervisor::TRead::Gone) {
        Lost();
        break;
      }
      Take(m);
    }
    return Over();
  }

  /// The errno of a failed start, 0 when the program started.
  int StartError() const { return startError_; }

  /// Signals the program's process group while the program runs.
  void SignalGroup(int signal) {
    if (supervisor_ && !HasExited()) supervisor_->SendSignal(signal);
  }

  /// Ends the run: everything the program started is killed; returns its exit code
  /// (128 + signal for a signal death, -1 when the supervisor was lost).
  int Finish() {
    if (!supervisor_) return exitCode_.value_or(-1);
    if (!idle_ && !supervisor_->SendFinish()) {
      Lost();
      return exitCode_.value_or(-1);
    }
    while (!idle_) {
      TSupervisorMessage m{};
      if (supervisor_->Read(m, true) != TSupervisor::TRead::Message) {
        Lost();
        return exitCode_.value_or(-1);
      }
      Take(m);
    }
    GiveBackSupervisor(std::move(supervisor_));
    return exitCode_.value_or(-1);
  }

 private:
  bool Over() const { return exitCode_.has_value() || startError_ != 0; }

  void Take(const TSupervisorMessage& m) {
    switch (m.kind) {
      case TSupervisorMessage::SpawnFailed:
        startError_ = m.value != 0 ? m.value : EIO;
        idle_ = true;
        break;
      case TSupervisorMessage::Ended:
        if (!exitCode_) exitCode_ = m.value;
        idle_ = true;
        break;
      case TSupervisorMessage::Exited:
        if (!exitCode_) exitCode_ = m.value;
        break;
      case TSupervisorMessage::Done:
        idle_ = true;
        break;
    }
  }

  // The supervisor died under the run (killed from outside): its programs died with it.
  void Lost() {
    exitCode_ = exitCode_.value_or(-1);
    supervisor_.reset();
  }

  std::unique_ptr<TSupervisor> supervisor_;
  std::optional<int> exitCode_;
  int startError_ = 0;
  bool idle_ = false;  // the supervisor serves no run any more: it may take the next one
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
  if (SignatureCache().IsWindowsProgram(program)) {
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

  // The program starts in this directory, opened here: the host's current one may change
  // before the supervisor gets to it (the build engine moves between steps).
  TFd dir(::open(workingDir_.empty() ? "." : workingDir_.c_str(),
                 O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!dir.IsOpen()) {
    if (workingDir_.empty())
      return Failure(TStatus::Failed, "cannot open the current directory: " + ErrnoText(errno));
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
  ::fcntl(out.fd.Get(), F_SETFL, O_NONBLOCK);
  ::fcntl(err.fd.Get(), F_SETFL, O_NONBLOCK);
  out.handler = &onStdOut_;
  err.handler = &onStdErr_;
  out.linesHandler = &onStdOutLines_;
  err.linesHandler = &onStdErrLines_;

  // A pooled supervisor may have died since its last run (killed from outside): the request
  // then finds no one, and a new supervisor takes it.
  std::unique_ptr<TSupervisor> supervisor;
  for (int attempt = 0; !supervisor; ++attempt) {
    int error = 0;
    supervisor = TakeSupervisor(error);
    if (!supervisor)
      return Failure(TStatus::Failed, "cannot start " + executable_ + ": " + ErrnoText(error));
    if (!supervisor->SendStart(spawnPath, args, outWrite.Get(), errWrite.Get(), dir.Get(),
                               error)) {
      supervisor.reset();
      if (attempt > 0)
        return Failure(TStatus::Failed, "cannot start " + executable_ + ": " + ErrnoText(error));
    }
  }
  outWrite.Close();
  errWrite.Close();
  dir.Close();
  TChild child(std::move(supervisor));

  TOutputStream* streams[2] = {&out, &err};
  TReadBuffer& buffer = TReadBuffer::ForThisThread();
  auto anyOpen = [&] { return out.fd.IsOpen() || err.fd.IsOpen(); };

  // The supervisor's reports are read after each wait: before the first there is none to read.
  // While a pipe is open the wait is on the pipes alone: the supervisor reports the exit before
  // it lets go of its copies of them, so their end finds the report waiting. A program whose
  // background child holds them on is seen to have exited within a poll slice.
  bool stopped = false;
  do {
    if (StopRequested()) {
      stopped = true;
      break;
    }
    PumpOutput(streams, buffer, onChunkEnd_, kPollSliceMs, anyOpen() ? -1 : child.WakeFd());
  } while (!child.HasExited());

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
  if (child.StartError() != 0) {
    return Failure(TStatus::Failed,
                   "cannot start " + executable_ + ": " + ErrnoText(child.StartError()));
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

TWrenProcessReuse::TWrenProcessReuse() {
  TSupervisorPool& pool = TSupervisorPool::Get();
  if (!pool.Mine()) return;
  std::lock_guard lock(pool.mutex);
  ++pool.scopes;
  counted_ = true;
}

TWrenProcessReuse::~TWrenProcessReuse() {
  if (!counted_) return;
  TSupervisorPool& pool = TSupervisorPool::Get();
  std::vector<std::unique_ptr<TSupervisor>> idle;
  {
    std::lock_guard lock(pool.mutex);
    if (--pool.scopes == 0) idle.swap(pool.idle);
  }
  // The idle supervisors end here, outside the lock: each exits on its socket's EOF.
}

}  // namespace wren
