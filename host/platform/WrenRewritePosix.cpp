// POSIX: rewrites in place with a journal, and the clean-up after a killed run.
#include "WrenRewritePosix.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <mutex>
#include <sstream>
#include <unordered_set>
#include <utility>
#include <vector>

#include "WrenFiles.h"

namespace wren::posix {

namespace {

constexpr const char* kJournalMagic = "MARROWBY-JOURNAL";

/// What a journal holds: the target (an absolute path) with its content before and after.
struct TJournal {
  std::string target;
  std::string oldBytes;
  std::string newBytes;
};

std::string JournalText(const TJournal& j) {
  std::ostringstream head;
  head << kJournalMagic << ' ' << j.target.size() << ' ' << j.oldBytes.size() << ' '
       << j.newBytes.size() << '\n';
  return head.str() + j.target + j.oldBytes + j.newBytes;
}

bool ParseJournal(const std::string& text, TJournal& j) {
  const size_t eol = text.find('\n');
  if (eol == std::string::npos) return false;
  std::istringstream head(text.substr(0, eol));
  std::string magic;
  size_t pathSize = 0, oldSize = 0, newSize = 0;
  if (!(head >> magic >> pathSize >> oldSize >> newSize) || magic != kJournalMagic) return false;
  const size_t body = eol + 1;
  if (text.size() - body != pathSize + oldSize + newSize) return false;  // not written to its end
  j.target = text.substr(body, pathSize);
  j.oldBytes = text.substr(body + pathSize, oldSize);
  j.newBytes = text.substr(body + pathSize + oldSize, newSize);
  return true;
}

bool ReadAll(int fd, std::string& bytes) {
  bytes.clear();
  char buffer[65536];
  off_t offset = 0;
  for (;;) {
    const ssize_t r = ::pread(fd, buffer, sizeof buffer, offset);
    if (r == 0) return true;
    if (r < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    bytes.append(buffer, static_cast<size_t>(r));
    offset += r;
  }
}

bool ReadPath(const std::string& path, std::string& bytes) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  const bool ok = ReadAll(fd, bytes);
  ::close(fd);
  return ok;
}

// Puts bytes into the open file from its start and cuts it to their length.
bool Overwrite(int fd, const std::string& bytes, bool hooked, int& err) {
  if (::lseek(fd, 0, SEEK_SET) != 0) {
    err = errno;
    return false;
  }
  const bool written = hooked ? WriteAll(fd, bytes, err) : [&] {
    // Restoring old content is not new content: the test hook does not apply.
    size_t done = 0;
    while (done < bytes.size()) {
      const ssize_t r = ::write(fd, bytes.data() + done, bytes.size() - done);
      if (r < 0) {
        if (errno == EINTR) continue;
        err = errno;
        return false;
      }
      done += static_cast<size_t>(r);
    }
    return true;
  }();
  if (!written) return false;
  if (::ftruncate(fd, static_cast<off_t>(bytes.size())) != 0 || ::fsync(fd) != 0) {
    err = errno;
    return false;
  }
  return true;
}

// What an interrupted rewrite leaves: the first k bytes of the new content over the old one
// (cut to the new length only at the end).
bool IsTorn(const std::string& now, const std::string& oldBytes, const std::string& newBytes) {
  size_t same = 0;
  while (same < now.size() && same < newBytes.size() && now[same] == newBytes[same]) ++same;
  const std::string rest = same < oldBytes.size() ? oldBytes.substr(same) : std::string();
  return now.compare(same, std::string::npos, rest) == 0;
}

std::string RecoveryDir() {
  if (const char* dir = std::getenv("MARROWBY_RECOVERY_DIR"); dir && *dir) return dir;
  if (const char* state = std::getenv("XDG_STATE_HOME"); state && *state)
    return std::string(state) + "/marrowby/recovery";
  if (const char* home = std::getenv("HOME"); home && *home)
    return std::string(home) + "/.local/state/marrowby/recovery";
  return "";
}

bool MakeDirectories(const std::string& dir) {
  for (size_t slash = dir.find('/', 1);; slash = dir.find('/', slash + 1)) {
    const std::string part = dir.substr(0, slash);
    if (::mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) return false;
    if (slash == std::string::npos) return true;
  }
}

// Where the journal of a rewrite of target goes: beside it when we may write there.
bool JournalDirFor(const std::string& target, std::string& dir, std::string& error) {
  const std::string parent = DirectoryOf(target);
  if (::access(parent.c_str(), W_OK) == 0) {
    dir = parent + "/";
    return true;
  }
  const std::string recovery = RecoveryDir();
  if (recovery.empty() || !MakeDirectories(recovery)) {
    error = "Cannot keep the old content of " + target + " safe: no recovery directory " +
            (recovery.empty() ? "(set MARROWBY_RECOVERY_DIR)" : recovery);
    return false;
  }
  dir = recovery + "/";
  CleanUpDirectoryOnce(dir);
  return true;
}

// Writes the journal complete under a temporary name, then gives it its journal name: a journal
// under that name is always whole.
bool WriteJournal(const std::string& dir, const TJournal& journal, std::string& journalName,
                  std::string& error) {
  int err = 0;
  std::string temp;
  const int fd = CreateScratch(dir, journal.target, temp, err);
  if (fd < 0) {
    error = OsError("Cannot create a journal to rewrite", journal.target, err);
    return false;
  }
  const std::string text = JournalText(journal);
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t r = ::write(fd, text.data() + done, text.size() - done);
    if (r < 0 && errno == EINTR) continue;
    if (r < 0) break;
    done += static_cast<size_t>(r);
  }
  const bool ok = done == text.size() && ::fsync(fd) == 0;
  if (!ok) err = errno;
  ::close(fd);
  journalName = ScratchNameAs(temp, TScratchKind::Journal);
  if (!ok || ::rename(temp.c_str(), journalName.c_str()) != 0) {
    if (ok) err = errno;
    ::unlink(temp.c_str());
    error = OsError("Cannot write the journal to rewrite", journal.target, err);
    return false;
  }
  SyncDirectoryOf(journalName);
  return true;
}

bool WriterAlive(long pid) {
  if (pid <= 0) return true;  // not ours to judge
  if (pid == ::getpid()) return true;
  return ::kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM;
}

// A dead writer's journal: roll a torn target back to its old content. A target that holds the
// old or the new content needs nothing; one changed since by someone else keeps the journal.
void RecoverJournal(const std::string& journalPath) {
  std::string text;
  TJournal journal;
  if (!ReadPath(journalPath, text) || !ParseJournal(text, journal)) return;
  const int fd = ::open(journal.target.c_str(), O_RDWR | O_CLOEXEC);
  if (fd < 0) {
    if (errno == ENOENT) ::unlink(journalPath.c_str());  // the target is gone: nothing to mend
    return;
  }
  std::string now;
  bool done = false;
  if (ReadAll(fd, now)) {
    int err = 0;
    if (now == journal.oldBytes || now == journal.newBytes)
      done = true;
    else if (IsTorn(now, journal.oldBytes, journal.newBytes))
      done = Overwrite(fd, journal.oldBytes, false, err);
  }
  ::close(fd);
  if (done) ::unlink(journalPath.c_str());
}

bool InGroup(gid_t gid, gid_t egid) {
  if (gid == egid) return true;
  gid_t groups[256];
  const int n = ::getgroups(256, groups);
  for (int i = 0; i < n; ++i)
    if (groups[i] == gid) return true;
  return false;
}

}  // namespace

bool RenameKeepsOwner(uid_t owner, gid_t group, uid_t euid, gid_t egid) {
  if (euid == 0) return true;  // root hands the file back with fchown
  return owner == euid && InGroup(group, egid);
}

bool RewriteInPlace(const std::string& target, const std::string& bytes, std::string& error) {
  const int fd = ::open(target.c_str(), O_RDWR | O_CLOEXEC);
  if (fd < 0) {
    error = OsError("Cannot open for writing", target, errno);
    return false;
  }
  TJournal journal;
  if (char* real = ::realpath(target.c_str(), nullptr)) {
    journal.target = real;
    std::free(real);
  }
  std::string dir, journalName;
  if (journal.target.empty() || !ReadAll(fd, journal.oldBytes)) {
    error = OsError("Cannot read", target, errno);
    ::close(fd);
    return false;
  }
  journal.newBytes = bytes;
  if (!JournalDirFor(journal.target, dir, error) ||
      !WriteJournal(dir, journal, journalName, error)) {
    ::close(fd);
    return false;
  }
  int err = 0;
  if (!Overwrite(fd, bytes, true, err)) {
    int restoreErr = 0;
    const bool restored = Overwrite(fd, journal.oldBytes, false, restoreErr);
    ::close(fd);
    error = OsError("Cannot write", target, err);
    if (restored)
      ::unlink(journalName.c_str());
    else
      error += " (the old content is kept in " + journalName + ")";
    return false;
  }
  ::close(fd);
  ::unlink(journalName.c_str());
  return true;
}

void CleanUpLeftover(const std::string& dir, const std::string& name) {
  const std::optional<TWrenScratchName> scratch = ParseScratchFileName(name);
  if (!scratch || WriterAlive(scratch->pid)) return;
  const std::string path = dir + name;
  if (scratch->journal)
    RecoverJournal(path);
  else
    ::unlink(path.c_str());
}

namespace {

// True on the first visit of dir by this process; the first visit of any directory also clears
// the recovery directory, where the journals of rewrites in locked directories wait.
bool FirstVisit(const std::string& dir) {
  static std::mutex mutex;
  // By name: an inode number may come back for another directory in a long-lived process.
  static std::unordered_set<std::string> done;
  {
    const std::lock_guard<std::mutex> lock(mutex);
    if (!done.insert(dir).second) return false;
  }
  CleanUpRecoveryOnce();
  return true;
}

}  // namespace

void CleanUpDirectoryOnce(const std::string& dir) {
  if (!FirstVisit(dir)) return;
  DIR* d = ::opendir(dir.empty() ? "." : dir.c_str());
  if (!d) return;
  std::vector<std::string> names;
  while (const dirent* e = ::readdir(d))
    if (e->d_name[0] == '.' && ParseScratchFileName(e->d_name)) names.push_back(e->d_name);
  ::closedir(d);
  for (const std::string& name : names) CleanUpLeftover(dir, name);
}

void NoteDirectoryCleanedUp(const std::string& dir) { FirstVisit(dir); }

void CleanUpRecoveryOnce() {
  // Marked done before the clean-up, which visits the recovery directory and comes back here.
  static std::atomic<bool> done{false};
  if (done.exchange(true)) return;
  const std::string recovery = RecoveryDir();
  if (!recovery.empty()) CleanUpDirectoryOnce(recovery + "/");
}

}  // namespace wren::posix
