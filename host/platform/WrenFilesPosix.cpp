// POSIX backend of the file-system helpers and the atomic writer.
#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __linux__
#include <linux/magic.h>
#include <sys/vfs.h>
#endif

#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <system_error>
#include <unordered_map>
#include <utility>
#include <vector>

#include "WrenFiles.h"
#include "WrenRewritePosix.h"

namespace wren {

namespace posix {

namespace {

std::atomic<size_t> gAtomicWriteFailAfter{SIZE_MAX};
std::atomic<bool> gAtomicWriteCrash{false};
std::atomic<bool> gBatchDefersInMemory{false};

}  // namespace

std::string OsError(const std::string& what, const std::string& path, int err) {
  return what + " " + path + ": " + std::generic_category().message(err);
}

bool WriteAll(int fd, const std::string& bytes, int& err) {
  const size_t limit = gAtomicWriteFailAfter.load();
  size_t written = 0;
  while (written < bytes.size()) {
    size_t chunk = bytes.size() - written;
    if (limit != SIZE_MAX) {
      if (written >= limit) {
        if (gAtomicWriteCrash.load()) ::_exit(137);  // the test hook stands for a kill -9
        err = ENOSPC;  // the test hook stands for a full disk
        return false;
      }
      chunk = std::min(chunk, limit - written);
    }
    const ssize_t r = ::write(fd, bytes.data() + written, chunk);
    if (r < 0) {
      if (errno == EINTR) continue;
      err = errno;
      return false;
    }
    written += static_cast<size_t>(r);
  }
  return true;
}

namespace {
std::atomic<pid_t> gPid{0};
}  // namespace

pid_t CurrentPid() {
  pid_t pid = gPid.load(std::memory_order_relaxed);
  if (pid != 0) return pid;
  // A forked child is another writer: it must not name its scratch files after its parent.
  static std::once_flag atFork;
  std::call_once(atFork, [] { ::pthread_atfork(nullptr, nullptr, [] { gPid.store(0); }); });
  pid = ::getpid();
  gPid.store(pid, std::memory_order_relaxed);
  return pid;
}

int CreateScratchAt(int dirfd, const std::string& prefix, const std::string& target,
                    std::string& scratchName, int& err, mode_t mode) {
  const size_t slash = target.rfind('/');
  const size_t start = slash == std::string::npos ? 0 : slash + 1;
  // Keep the name well under NAME_MAX however long the target's name is.
  const size_t baseLength = std::min<size_t>(target.size() - start, 200);
  static std::atomic<unsigned> counter{0};
  // Seeded once: a random device read per file costs more than the rest of the name.
  thread_local std::minstd_rand random(std::random_device{}());
  for (int attempt = 0; attempt < 100; ++attempt) {
    // "<prefix>.<base>.tmp<pid>-<n>-<r>", built in place: this runs for every file written.
    const auto number = [&](unsigned long long value) {
      char digits[24];
      scratchName.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    };
    scratchName.assign(prefix).append(1, '.').append(target, start, baseLength).append(".tmp");
    number(static_cast<unsigned long long>(CurrentPid()));
    scratchName += '-';
    number(counter++);
    scratchName += '-';
    number(random() % 1000000);
    const int fd =
        ::openat(dirfd, scratchName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    if (fd >= 0) return fd;
    if (errno != EEXIST) {
      err = errno;
      return -1;
    }
  }
  err = EEXIST;
  return -1;
}

int CreateScratch(const std::string& dir, const std::string& target, std::string& scratchName,
                  int& err) {
  return CreateScratchAt(AT_FDCWD, dir, target, scratchName, err);
}

std::string ScratchNameAs(const std::string& scratchName, TScratchKind kind) {
  const size_t tag = scratchName.rfind(".tmp");
  if (tag == std::string::npos) return scratchName;
  return scratchName.substr(0, tag) + (kind == TScratchKind::Journal ? ".jrn" : ".tmp") +
         scratchName.substr(tag + 4);
}

std::string DirectoryOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
}

void SyncDirectoryOf(const std::string& path) {
  const int fd = ::open(DirectoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);  // best effort: the rename is done, this only hastens its durability
  ::close(fd);
}

}  // namespace posix

namespace {

using namespace posix;

bool ReadOnlyMode(mode_t mode) { return (mode & S_IWUSR) == 0; }

char Upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c; }

// NTFS order: names compared upper-cased (so "_x" follows "Z"); names equal but for case keep
// byte order so that the result does not depend on the order readdir gave them in.
bool NameLess(const TWrenFindData& a, const TWrenFindData& b) {
  const size_t n = std::min(a.name.size(), b.name.size());
  for (size_t i = 0; i < n; ++i) {
    if (a.name[i] == b.name[i]) continue;  // names in one folder mostly share a long head
    const auto ca = static_cast<unsigned char>(Upper(a.name[i]));
    const auto cb = static_cast<unsigned char>(Upper(b.name[i]));
    if (ca != cb) return ca < cb;
  }
  if (a.name.size() != b.name.size()) return a.name.size() < b.name.size();
  return a.name < b.name;
}

std::string DirWithSlash(const std::string& target) {
  const size_t slash = target.rfind('/');
  return slash == std::string::npos ? "" : target.substr(0, slash + 1);
}

/// A write waiting for its batch's commit. With a folder, temp and target are names in it;
/// without, paths.
struct TPendingWrite {
  std::string temp;
  std::string target;
  dev_t device;  // of the target's file system
  TWrenFolderRef folder;
};

// The directory the names of w are relative to. A folder that cannot be opened again (no
// descriptor to spare) leaves w to its paths.
int DirOf(TPendingWrite& w) {
  if (!w.folder) return AT_FDCWD;
  const int fd = w.folder->Handle();
  if (fd >= 0) return fd;
  w.temp.insert(0, w.folder->Path());
  w.target.insert(0, w.folder->Path());
  w.folder.reset();
  return AT_FDCWD;
}

std::string TargetPath(const TPendingWrite& w) {
  return w.folder ? w.folder->Path() + w.target : w.target;
}

/// The open batch of a thread. Existing targets are known by device and inode, so that any
/// spelling of their path finds them; new files by the path they were written to.
struct TBatchState {
  std::vector<TPendingWrite> pending;  // in the order written: the order of the renames
  std::map<std::pair<dev_t, ino_t>, size_t> existing;
  std::unordered_map<std::string, size_t> created;
  // A directory per file system, opened before the first write to it, so that its syncfs reports
  // the write-back errors of everything written since.
  std::vector<std::pair<dev_t, int>> syncHandles;
  // Whether each file system seen holds its files in memory only: nothing there outlives the
  // machine, so a sync has nothing to do and its renames need not wait for one.
  std::vector<std::pair<dev_t, bool>> inMemory;
  uid_t euid = ::geteuid();
  gid_t egid = ::getegid();
  std::string errors;  // of commits made when the batch grew large
};

thread_local std::unique_ptr<TBatchState> tBatch;

// Past this many pending files a batch commits on its own, so that a host killed in the middle of
// a long step loses little work and leaves few temporary files behind.
constexpr size_t kMaxPending = 1000;
// Up to this many files a commit flushes each file and its directory: cheaper than a sync of the
// whole file system, which also writes out whatever else is dirty there. Past it, one syncfs per
// file system costs less than a journal commit per file.
constexpr size_t kFlushEachUpTo = 16;

// Whether the file system of device, on which fd is open, keeps its files in memory only; asked
// of the kernel once per file system and batch.
bool InMemory(TBatchState& batch, dev_t device, int fd) {
  for (const auto& [known, memory] : batch.inMemory)
    if (known == device) return memory;
  bool memory = false;
#ifdef __linux__
  struct statfs fs;
  memory = !posix::gBatchDefersInMemory.load() && ::fstatfs(fd, &fs) == 0 &&
           (static_cast<unsigned long>(fs.f_type) == TMPFS_MAGIC ||
            static_cast<unsigned long>(fs.f_type) == RAMFS_MAGIC);
#else
  (void)fd;
#endif
  batch.inMemory.emplace_back(device, memory);
  return memory;
}

TPendingWrite* PendingFor(dev_t device, ino_t inode) {
  if (!tBatch) return nullptr;
  const auto found = tBatch->existing.find({device, inode});
  return found == tBatch->existing.end() ? nullptr : &tBatch->pending[found->second];
}

void AddError(std::string& errors, const std::string& error) {
  if (!errors.empty()) errors += "\n";
  errors += error;
}

void KeepSyncHandle(TBatchState& batch, dev_t device, const std::string& target,
                    TWrenFolder* folder = nullptr) {
  for (const auto& handle : batch.syncHandles)
    if (handle.first == device) return;
  const int fd = folder ? ::fcntl(folder->Handle(), F_DUPFD_CLOEXEC, 0)
                        : ::open(DirectoryOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  batch.syncHandles.emplace_back(device, fd);
}

void CloseSyncHandles(TBatchState& batch) {
  for (const auto& handle : batch.syncHandles)
    if (handle.second >= 0) ::close(handle.second);
  batch.syncHandles.clear();
}

// One syncfs per file system of the pending files: it flushes the temporary files' data (before
// the renames) or the renames themselves (after). Returns the devices whose sync failed.
std::vector<dev_t> SyncFileSystems(const TBatchState& batch) {
  std::vector<dev_t> failed;
  for (const auto& [device, fd] : batch.syncHandles)
    if (fd < 0 || ::syncfs(fd) != 0) failed.push_back(device);
  return failed;
}

bool FlushFile(int dirfd, const std::string& path, int& err) {
  const int fd = ::openat(dirfd, path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0 || ::fdatasync(fd) != 0) {
    err = errno;
    if (fd >= 0) ::close(fd);
    return false;
  }
  ::close(fd);
  return true;
}

void CommitPending(TBatchState& batch, std::string& errors) {
  std::vector<TPendingWrite>& writes = batch.pending;
  if (writes.empty()) {
    CloseSyncHandles(batch);
    return;
  }
  // Data first: a rename that reached the disk before its file's data would leave an empty file
  // after a crash.
  const bool flushEach = writes.size() <= kFlushEachUpTo;
  const std::vector<dev_t> unsynced = flushEach ? std::vector<dev_t>() : SyncFileSystems(batch);
  std::vector<std::string> renamedIn;
  std::vector<TWrenFolder*> renamedInFolders;
  for (TPendingWrite& w : writes) {
    int err = 0;
    const int dirfd = DirOf(w);
    // Where a whole file system would not sync, each file is flushed alone to learn which failed.
    const bool needsOwnFlush =
        flushEach || std::find(unsynced.begin(), unsynced.end(), w.device) != unsynced.end();
    if (needsOwnFlush && !FlushFile(dirfd, w.temp, err)) {
      ::unlinkat(dirfd, w.temp.c_str(), 0);
      AddError(errors, OsError("Cannot flush", TargetPath(w), err));
    } else if (::renameat(dirfd, w.temp.c_str(), dirfd, w.target.c_str()) != 0) {
      err = errno;
      ::unlinkat(dirfd, w.temp.c_str(), 0);
      AddError(errors, OsError("Cannot replace", TargetPath(w), err));
    } else if (flushEach && w.folder) {
      if (std::find(renamedInFolders.begin(), renamedInFolders.end(), w.folder.get()) ==
          renamedInFolders.end())
        renamedInFolders.push_back(w.folder.get());
    } else if (flushEach) {
      const std::string dir = DirectoryOf(w.target);
      if (std::find(renamedIn.begin(), renamedIn.end(), dir) == renamedIn.end())
        renamedIn.push_back(dir);
    }
    if (w.folder) w.folder->Settle();
  }
  // Best effort: the renames are done, this only makes them last.
  if (flushEach) {
    for (const std::string& dir : renamedIn) SyncDirectoryOf(dir + "/");
    for (TWrenFolder* folder : renamedInFolders)
      if (const int fd = folder->Handle(); fd >= 0) ::fsync(fd);
  } else {
    SyncFileSystems(batch);
  }
  writes.clear();
  batch.existing.clear();
  batch.created.clear();
  CloseSyncHandles(batch);
}

void FillStatus(const struct stat& st, TWrenFileStatus& status) {
  status.exists = true;
  status.isDirectory = S_ISDIR(st.st_mode);
  status.readOnly = ReadOnlyMode(st.st_mode);
  status.device = st.st_dev;
  status.inode = st.st_ino;
  status.links = st.st_nlink;
  status.size = static_cast<uint64_t>(st.st_size);
  status.mode = st.st_mode & 07777;
  status.owner = st.st_uid;
  status.group = st.st_gid;
}

// Reads the open file to its end. A regular file of known size is read in one call: a read that
// returns fewer bytes than asked, and exactly the size, has reached the end.
bool ReadOpenFile(int fd, uint64_t knownSize, std::string& bytes, int& err) {
  size_t length = 0;
  bytes.resize(knownSize > 0 ? knownSize + 1 : 4096);
  for (;;) {
    if (length == bytes.size()) bytes.resize(bytes.size() * 2);
    const ssize_t r = ::read(fd, bytes.data() + length, bytes.size() - length);
    if (r == 0) break;
    if (r < 0) {
      if (errno == EINTR) continue;
      err = errno;
      bytes.clear();
      return false;
    }
    length += static_cast<size_t>(r);
    if (knownSize > 0 && length == knownSize && length < bytes.size()) break;
  }
  bytes.resize(length);
  return true;
}

}  // namespace

TWrenFileStatus FileStatus(const std::string& path) {
  TWrenFileStatus status;
  struct stat st;
  if (path.empty() || ::lstat(path.c_str(), &st) != 0) return status;
  if (S_ISLNK(st.st_mode)) {
    status.isLink = true;
    if (::stat(path.c_str(), &st) != 0) return status;
  }
  FillStatus(st, status);
  return status;
}

bool FileExists(const std::string& path) {
  struct stat st;
  return !path.empty() && ::stat(path.c_str(), &st) == 0 && !S_ISDIR(st.st_mode);
}

bool DirectoryExists(const std::string& path) {
  struct stat st;
  return !path.empty() && ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

bool IsReadOnly(const std::string& path) {
  struct stat st;
  return !path.empty() && ::stat(path.c_str(), &st) == 0 && ReadOnlyMode(st.st_mode);
}

namespace {

// Lists the open directory dfd (at its start), known to the messages as dir ("./" for the
// current one); dead writers' leftovers in it are cleared on the way.
std::vector<TWrenFindData> FindIn(int dfd, const std::string& dir, const std::string& mask,
                                  bool withDirectories, bool onlyDirectories, bool withDetails) {
  std::vector<TWrenFindData> found;
  // type is the listing's d_type; an entry is looked at only when that is not enough.
  auto entryOf = [&](const char* name, unsigned char type, TWrenFindData& data) {
    data.name = name;
    if (!withDetails && (type == DT_REG || type == DT_DIR)) {
      data.isDirectory = type == DT_DIR;
      return true;
    }
    struct stat st;
    if (::fstatat(dfd, name, &st, 0) != 0 && ::fstatat(dfd, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
      return false;  // gone since readdir listed it
    data.isDirectory = S_ISDIR(st.st_mode);
    data.readOnly = ReadOnlyMode(st.st_mode);
    data.size = data.isDirectory ? 0 : static_cast<uint64_t>(st.st_size);
    return true;
  };
  auto wanted = [&](const TWrenFindData& data) {
    return data.isDirectory ? withDirectories : !onlyDirectories;
  };

  // Windows lists "." and ".." first when directories are asked for; readdir's order is arbitrary.
  found.reserve(8);
  for (const char* dot : {".", ".."}) {
    TWrenFindData data;
    if (withDirectories && MatchesMask(dot, mask) && entryOf(dot, DT_DIR, data))
      found.push_back(std::move(data));
  }
  const auto dots = static_cast<std::ptrdiff_t>(found.size());

  // The directory read in large gulps without opendir, which would also stat it.
  alignas(dirent64) char buffer[32768];
  for (;;) {
    const ssize_t got = ::getdents64(dfd, buffer, sizeof buffer);
    if (got <= 0) break;
    for (ssize_t at = 0; at < got;) {
      const auto* e = reinterpret_cast<const dirent64*>(buffer + at);
      at += e->d_reclen;
      const char* name = e->d_name;
      if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0))) continue;
      // The writer's temporary files are no one's sources; a dead run's are cleared on the way.
      if (name[0] == '.' && ParseScratchFileName(name)) {
        CleanUpLeftover(dir, name);
        continue;
      }
      if (!MatchesMask(name, mask)) continue;
      TWrenFindData data;
      if (entryOf(name, e->d_type, data) && wanted(data)) found.push_back(std::move(data));
    }
  }

  std::sort(found.begin() + dots, found.end(), NameLess);
  return found;
}

std::vector<TWrenFindData> Find(const std::string& pattern, bool withDirectories,
                                bool onlyDirectories, bool withDetails) {
  const size_t split = pattern.find_last_of("/\\");
  std::string dir = split == std::string::npos ? "./" : pattern.substr(0, split + 1);
  const std::string mask = split == std::string::npos ? pattern : pattern.substr(split + 1);
  std::replace(dir.begin(), dir.end(), '\\', '/');
  if (mask.empty()) return {};

  const int dfd = ::open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (dfd < 0) return {};
  std::vector<TWrenFindData> found =
      FindIn(dfd, dir, mask, withDirectories, onlyDirectories, withDetails);
  ::close(dfd);
  // Every leftover here has just been seen to: the writer need not list the directory again.
  NoteDirectoryCleanedUp(dir);
  return found;
}

}  // namespace

std::vector<TWrenFindData> FindFiles(const std::string& pattern, bool withDirectories,
                                     bool onlyDirectories) {
  return Find(pattern, withDirectories, onlyDirectories, true);
}

std::vector<TWrenFindData> FindFileNames(const std::string& pattern, bool withDirectories,
                                         bool onlyDirectories) {
  return Find(pattern, withDirectories, onlyDirectories, false);
}

bool ReadFileBytes(const std::string& path, const TWrenFileStatus& status, std::string& bytes,
                   std::string& error) {
  bytes.clear();
  // A file rewritten under the open batch reads as its new content.
  TPendingWrite* pending =
      status.exists && tBatch ? PendingFor(status.device, status.inode) : nullptr;
  const int fd = pending ? ::openat(DirOf(*pending), pending->temp.c_str(), O_RDONLY | O_CLOEXEC)
                         : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    error = OsError("Cannot open", path, errno);
    return false;
  }
  // The size is the pending file's when it stands in: unknown here, so read to the end.
  const bool regular = status.exists && !status.isDirectory && !pending;
  int err = 0;
  const bool ok = ReadOpenFile(fd, regular ? status.size : 0, bytes, err);
  ::close(fd);
  if (!ok) error = OsError("Cannot read", path, err);
  return ok;
}

bool ReadFileBytes(const std::string& path, std::string& bytes, std::string& error) {
  // Only a batch with pending files needs to know which file the path names.
  if (tBatch && !tBatch->existing.empty())
    return ReadFileBytes(path, FileStatus(path), bytes, error);
  return ReadFileBytes(path, TWrenFileStatus(), bytes, error);
}

bool WriteFileAtomic(const std::string& path, const std::string& bytes, std::string& error) {
  return WriteFileAtomic(path, FileStatus(path), bytes, error);
}

namespace {

/// Where a write goes: the name renamed over, relative to dirfd (a path with AT_FDCWD), and the
/// prefix that puts a scratch name beside it.
struct TWritePlace {
  int dirfd = AT_FDCWD;
  std::string prefix;
  std::string target;
  TWrenFolderRef folder;
  const std::string* shown = nullptr;  // the path messages name, else the folder's and target

  // Put together only when needed: most writes never name their file.
  std::string Full() const { return folder ? folder->Path() + target : target; }
  std::string Shown() const { return shown ? *shown : Full(); }
};

// The checks of a rewrite that refuse it: a directory, or a file the user marked read-only.
bool MayWrite(const TWritePlace& place, const TWrenFileStatus& status, std::string& error) {
  if (!status.exists) return true;
  if (status.isDirectory) {
    error = OsError("Cannot write", place.Shown(), EISDIR);
    return false;
  }
  // The user marked it read-only: a rename would silently override that, so refuse.
  if (status.readOnly) {
    error = place.Shown() + " is read only";
    return false;
  }
  return true;
}

// Writes bytes to a scratch file beside the target and renames it over the target (at the
// batch's commit when one is open).
bool WriteReplacing(const TWritePlace& place, const TWrenFileStatus& status,
                    const std::string& bytes, std::string& error) {
  const bool exists = status.exists;
  const uid_t euid = tBatch ? tBatch->euid : ::geteuid();
  const gid_t egid = tBatch ? tBatch->egid : ::getegid();
  // A rename would cut the other names off or hand the file to us.
  if (exists && (status.links > 1 || !RenameKeepsOwner(status.owner, status.group, euid, egid)))
    return RewriteInPlace(place.Full(), bytes, error);

  int err = 0;
  std::string temp;
  // With the target's permission bits from the start: they then need setting only where a umask,
  // a default ACL or special bits change them.
  const int fd = CreateScratchAt(place.dirfd, place.prefix, place.target, temp, err,
                                 exists ? (status.mode & 0777) : 0666);
  if (fd < 0) {
    // A directory we may not write to: the file itself may still be writable.
    if (exists && (err == EACCES || err == EPERM || err == EROFS))
      return RewriteInPlace(place.Full(), bytes, error);
    error = OsError("Cannot create a temporary file to write", place.Shown(), err);
    return false;
  }

  auto fail = [&](const char* what, int e) {
    ::close(fd);
    ::unlinkat(place.dirfd, temp.c_str(), 0);
    error = OsError(what, place.Shown(), e);
    return false;
  };

  if (!WriteAll(fd, bytes, err)) return fail("Cannot write", err);
  if (exists) {
    struct stat made;
    if ((::fstat(fd, &made) != 0 || (made.st_mode & 07777) != status.mode) &&
        ::fchmod(fd, status.mode) != 0)
      return fail("Cannot set the permissions of", errno);
    // Keep the owner where we may (root rewriting a user's file); others cannot and need not.
    if (status.owner != euid || status.group != egid)
      (void)!::fchown(fd, status.owner, status.group);
  }
  // Under a batch, a file system that keeps its files in memory has nothing to sync: its renames
  // are made at once, while the folder is still at hand, as they would be at the commit.
  bool inMemory = false;
  dev_t device = status.device;
  if (tBatch) {
    struct stat st;
    if (!exists) {
      if (::fstat(fd, &st) != 0) return fail("Cannot write", errno);
      device = st.st_dev;
    }
    inMemory = InMemory(*tBatch, device, fd);
  }
  if (tBatch && !inMemory) {
    if (::close(fd) != 0) {
      err = errno;
      ::unlinkat(place.dirfd, temp.c_str(), 0);
      error = OsError("Cannot write", place.Shown(), err);
      return false;
    }
    TBatchState& batch = *tBatch;
    TPendingWrite* pending = nullptr;
    if (exists) {
      pending = PendingFor(status.device, status.inode);
    } else if (const auto found = batch.created.find(place.Full()); found != batch.created.end()) {
      pending = &batch.pending[found->second];
    }
    if (pending) {
      // Written again before its commit: the newer bytes win.
      ::unlinkat(DirOf(*pending), pending->temp.c_str(), 0);
      pending->temp = temp;
      pending->target = place.target;
      pending->folder = place.folder;
      return true;
    }
    if (batch.pending.size() >= kMaxPending) CommitPending(batch, batch.errors);
    KeepSyncHandle(batch, device, place.target, place.folder.get());
    if (exists)
      batch.existing.emplace(std::make_pair(status.device, status.inode), batch.pending.size());
    else
      batch.created.emplace(place.Full(), batch.pending.size());
    batch.pending.push_back({temp, place.target, device, place.folder});
    if (place.folder) place.folder->Settle();
    return true;
  }
  if (!inMemory && ::fsync(fd) != 0) return fail("Cannot flush", errno);
  if (::close(fd) != 0) {
    err = errno;
    ::unlinkat(place.dirfd, temp.c_str(), 0);
    error = OsError("Cannot write", place.Shown(), err);
    return false;
  }
  if (::renameat(place.dirfd, temp.c_str(), place.dirfd, place.target.c_str()) != 0) {
    err = errno;
    ::unlinkat(place.dirfd, temp.c_str(), 0);
    error = OsError("Cannot replace", place.Shown(), err);
    return false;
  }
  if (inMemory) {
    if (place.folder) place.folder->Settle();
  } else if (place.folder)
    ::fsync(place.dirfd);  // best effort, as SyncDirectoryOf
  else
    SyncDirectoryOf(place.target);
  return true;
}

}  // namespace

bool WriteFileAtomic(const std::string& path, const TWrenFileStatus& status,
                     const std::string& bytes, std::string& error) {
  // Write through a symbolic link to the file it names, so the link itself stays.
  std::string target = path;
  if (status.isLink) {
    if (char* real = ::realpath(path.c_str(), nullptr)) {
      target = real;
      std::free(real);
    }
  }
  TWritePlace place;
  place.shown = &path;
  if (!MayWrite(place, status, error)) return false;
  place.prefix = DirWithSlash(target);
  CleanUpDirectoryOnce(place.prefix);
  place.target = std::move(target);
  return WriteReplacing(place, status, bytes, error);
}

namespace {

std::atomic<int> gOpenFolders{0};

// How many folder handles may stay open at once: a quarter of the process's descriptors, so
// that the tools a build starts and the files it opens never run short.
int FolderBudget() {
  static const int budget = [] {
    struct rlimit limit;
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return 256;
    return static_cast<int>(std::clamp<rlim_t>(limit.rlim_cur / 4, 16, 1 << 20));
  }();
  return budget;
}

// The most symbolic links a path lookup follows before it gives up with ELOOP.
constexpr int kMaxLinks = 40;

}  // namespace

/// What the POSIX functions below need of a folder beyond its public face.
struct TWrenFolderAccess {
  static int Adopt(TWrenFolder& folder, int fd) {
    if (fd >= 0) ++gOpenFolders;
    folder.handle_ = fd;
    return fd;
  }
  static bool& Listed(TWrenFolder& folder) { return folder.listed_; }
  static bool& CleanedUp(TWrenFolder& folder) { return folder.cleanedUp_; }
  static int& Links(TWrenFolder& folder) { return folder.links_; }
};

TWrenFolder::TWrenFolder(std::string path) : path_(std::move(path)) {}

TWrenFolder::~TWrenFolder() {
  if (handle_ >= 0) {
    ::close(handle_);
    --gOpenFolders;
  }
}

int TWrenFolder::Handle() {
  if (handle_ >= 0) return handle_;
  listed_ = false;
  return TWrenFolderAccess::Adopt(
      *this, ::open(path_.empty() ? "." : path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
}

void TWrenFolder::Settle() {
  if (handle_ < 0 || gOpenFolders.load(std::memory_order_relaxed) <= FolderBudget()) return;
  ::close(handle_);
  handle_ = -1;
  --gOpenFolders;
}

TWrenFolderRef OpenSubfolder(TWrenFolder& parent, const std::string& name) {
  const int dfd = parent.Handle();
  if (dfd < 0) return nullptr;
  // A path longer than the system takes, or one through too many links, would not open: nor
  // does the folder, so that a link looping back up ends the walk where a path would.
  if (parent.Path().size() + name.size() + 1 >= PATH_MAX) {
    errno = ENAMETOOLONG;
    return nullptr;
  }
  int links = TWrenFolderAccess::Links(parent);
  int fd = ::openat(dfd, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0 && (errno == ELOOP || errno == ENOTDIR)) {
    // A link (or no directory at all): followed, it counts against the limit.
    fd = ::openat(dfd, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0 && ++links > kMaxLinks) {
      ::close(fd);
      errno = ELOOP;
      return nullptr;
    }
  }
  if (fd < 0) return nullptr;
  std::string path;
  path.reserve(parent.Path().size() + name.size() + 1);
  path.append(parent.Path()).append(name).append(1, '/');
  auto folder = std::make_shared<TWrenFolder>(std::move(path));
  TWrenFolderAccess::Adopt(*folder, fd);
  TWrenFolderAccess::Links(*folder) = links;
  return folder;
}

std::vector<TWrenFindData> FindFileNames(TWrenFolder& folder, const std::string& mask,
                                         bool withDirectories, bool onlyDirectories) {
  if (mask.empty()) return {};
  const int dfd = folder.Handle();
  if (dfd < 0) return {};
  bool& listed = TWrenFolderAccess::Listed(folder);
  // A second listing reads the folder again from its start.
  if (listed && ::lseek(dfd, 0, SEEK_SET) != 0) return {};
  listed = true;
  static const std::string kCurrent = "./";
  std::vector<TWrenFindData> found = FindIn(dfd, folder.Path().empty() ? kCurrent : folder.Path(),
                                            mask, withDirectories, onlyDirectories, false);
  // Every leftover here has just been seen to: the writer need not list the folder again.
  TWrenFolderAccess::CleanedUp(folder) = true;
  CleanUpRecoveryOnce();
  return found;
}

TWrenFileStatus FileStatus(TWrenFolder& folder, const std::string& name) {
  TWrenFileStatus status;
  const int dfd = folder.Handle();
  struct stat st;
  if (dfd < 0 || name.empty() || ::fstatat(dfd, name.c_str(), &st, AT_SYMLINK_NOFOLLOW) != 0)
    return status;
  if (S_ISLNK(st.st_mode)) {
    status.isLink = true;
    if (::fstatat(dfd, name.c_str(), &st, 0) != 0) return status;
  }
  FillStatus(st, status);
  return status;
}

bool ReadFileBytes(TWrenFolder& folder, const std::string& name, const TWrenFileStatus& status,
                   std::string& bytes, std::string& error) {
  bytes.clear();
  TPendingWrite* pending =
      status.exists && tBatch ? PendingFor(status.device, status.inode) : nullptr;
  const int fd = pending ? ::openat(DirOf(*pending), pending->temp.c_str(), O_RDONLY | O_CLOEXEC)
                         : ::openat(folder.Handle(), name.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    error = OsError("Cannot open", folder.Path() + name, errno);
    return false;
  }
  const bool regular = status.exists && !status.isDirectory && !pending;
  int err = 0;
  const bool ok = ReadOpenFile(fd, regular ? status.size : 0, bytes, err);
  ::close(fd);
  if (!ok) error = OsError("Cannot read", folder.Path() + name, err);
  return ok;
}

bool WriteFileAtomic(const TWrenFolderRef& folder, const std::string& name,
                     const TWrenFileStatus& status, const std::string& bytes, std::string& error) {
  // Through a symbolic link the file may live anywhere: the path writer finds it.
  if (status.isLink) return WriteFileAtomic(folder->Path() + name, status, bytes, error);
  TWritePlace place;
  place.target = name;
  place.folder = folder;
  if (!MayWrite(place, status, error)) return false;
  if (!TWrenFolderAccess::CleanedUp(*folder)) CleanUpDirectoryOnce(folder->Path());
  place.dirfd = folder->Handle();
  if (place.dirfd < 0) {
    error = OsError("Cannot create a temporary file to write", place.Shown(), errno);
    return false;
  }
  return WriteReplacing(place, status, bytes, error);
}

bool DeleteFileIn(TWrenFolder& folder, const std::string& name) {
  const int dfd = folder.Handle();
  return dfd >= 0 && ::unlinkat(dfd, name.c_str(), 0) == 0;
}

void SetWriteBatchDefersInMemory(bool defer) { posix::gBatchDefersInMemory.store(defer); }

void SetAtomicWriteFailAfter(size_t bytes, bool crash) {
  posix::gAtomicWriteFailAfter.store(bytes);
  posix::gAtomicWriteCrash.store(crash);
}

TWrenWriteBatch::TWrenWriteBatch() : outermost_(tBatch == nullptr) {
  if (outermost_) tBatch = std::make_unique<TBatchState>();
}

TWrenWriteBatch::~TWrenWriteBatch() {
  if (!outermost_) return;
  std::string ignored;
  Commit(ignored);
  tBatch.reset();
}

bool TWrenWriteBatch::Commit(std::string& error) {
  if (!outermost_) return true;  // the outer batch commits
  CommitPending(*tBatch, tBatch->errors);
  error = std::move(tBatch->errors);
  tBatch->errors.clear();
  return error.empty();
}

}  // namespace wren
