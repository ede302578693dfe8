// POSIX backend of the file-system helpers and the atomic writer.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <random>
#include <system_error>
#include <utility>
#include <vector>

#include "WrenFiles.h"
#include "WrenRewritePosix.h"

namespace wren {

namespace posix {

namespace {

std::atomic<size_t> gAtomicWriteFailAfter{SIZE_MAX};
std::atomic<bool> gAtomicWriteCrash{false};

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

int CreateScratch(const std::string& dir, const std::string& target, std::string& scratchName,
                  int& err) {
  const size_t slash = target.rfind('/');
  // Keep the name well under NAME_MAX however long the target's name is.
  const std::string base = target.substr(slash == std::string::npos ? 0 : slash + 1).substr(0, 200);
  static std::atomic<unsigned> counter{0};
  // Seeded once: a random device read per file costs more than the rest of the name.
  thread_local std::minstd_rand random(std::random_device{}());
  for (int attempt = 0; attempt < 100; ++attempt) {
    scratchName = dir + "." + base + ".tmp" + std::to_string(::getpid()) + "-" +
                  std::to_string(counter++) + "-" + std::to_string(random() % 1000000);
    const int fd = ::open(scratchName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd >= 0) return fd;
    if (errno != EEXIST) {
      err = errno;
      return -1;
    }
  }
  err = EEXIST;
  return -1;
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

/// A rewrite waiting for its batch's commit; the target is known by device and inode so that any
/// spelling of its path finds it.
struct TPendingWrite {
  std::string temp;
  std::string target;
  dev_t device;
  ino_t inode;
};

/// The open batch of a thread.
struct TBatchState {
  std::vector<TPendingWrite> pending;
  std::string errors;  // of commits made when the batch grew large
};

thread_local std::unique_ptr<TBatchState> tBatch;

// Past this many pending files a batch commits on its own, so that a host killed in the middle of
// a long step loses little work and leaves few temporary files behind.
constexpr size_t kMaxPending = 1000;

TPendingWrite* PendingFor(dev_t device, ino_t inode) {
  if (!tBatch) return nullptr;
  for (TPendingWrite& p : tBatch->pending)
    if (p.device == device && p.inode == inode) return &p;
  return nullptr;
}

void AddError(std::string& errors, const std::string& error) {
  if (!errors.empty()) errors += "\n";
  errors += error;
}

// One sync per file system of the targets: syncfs flushes the temporary files' data (before the
// renames) or the renames themselves (after). Returns the devices whose sync failed.
std::vector<dev_t> SyncFileSystems(const std::vector<TPendingWrite>& writes) {
  std::vector<dev_t> done, failed;
  for (const TPendingWrite& w : writes) {
    if (std::find(done.begin(), done.end(), w.device) != done.end()) continue;
    done.push_back(w.device);
    const int fd = ::open(DirectoryOf(w.target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0 || ::syncfs(fd) != 0) failed.push_back(w.device);
    if (fd >= 0) ::close(fd);
  }
  return failed;
}

bool FlushFile(const std::string& path, int& err) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0 || ::fsync(fd) != 0) {
    err = errno;
    if (fd >= 0) ::close(fd);
    return false;
  }
  ::close(fd);
  return true;
}

void CommitPending(std::vector<TPendingWrite>& writes, std::string& errors) {
  if (writes.empty()) return;
  // Data first: a rename that reached the disk before its file's data would leave an empty file
  // after a crash.
  const std::vector<dev_t> unsynced = SyncFileSystems(writes);
  for (TPendingWrite& w : writes) {
    int err = 0;
    // Where a whole file system would not sync, each file is flushed alone to learn which failed.
    const bool needsOwnFlush =
        std::find(unsynced.begin(), unsynced.end(), w.device) != unsynced.end();
    if (needsOwnFlush && !FlushFile(w.temp, err)) {
      ::unlink(w.temp.c_str());
      AddError(errors, OsError("Cannot flush", w.target, err));
    } else if (::rename(w.temp.c_str(), w.target.c_str()) != 0) {
      err = errno;
      ::unlink(w.temp.c_str());
      AddError(errors, OsError("Cannot replace", w.target, err));
    }
  }
  SyncFileSystems(writes);  // best effort: the renames are done, this only makes them last
  writes.clear();
}

}  // namespace

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

std::vector<TWrenFindData> FindFiles(const std::string& pattern, bool withDirectories,
                                     bool onlyDirectories) {
  std::vector<TWrenFindData> found;
  const size_t split = pattern.find_last_of("/\\");
  std::string dir = split == std::string::npos ? "./" : pattern.substr(0, split + 1);
  const std::string mask = split == std::string::npos ? pattern : pattern.substr(split + 1);
  std::replace(dir.begin(), dir.end(), '\\', '/');
  if (mask.empty()) return found;

  DIR* d = ::opendir(dir.c_str());
  if (!d) return found;
  const int dfd = ::dirfd(d);

  auto entryOf = [&](const char* name, TWrenFindData& data) {
    struct stat st;
    if (::fstatat(dfd, name, &st, 0) != 0 && ::fstatat(dfd, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
      return false;  // gone since readdir listed it
    data.name = name;
    data.isDirectory = S_ISDIR(st.st_mode);
    data.readOnly = ReadOnlyMode(st.st_mode);
    data.size = data.isDirectory ? 0 : static_cast<uint64_t>(st.st_size);
    return true;
  };
  auto wanted = [&](const TWrenFindData& data) {
    return data.isDirectory ? withDirectories : !onlyDirectories;
  };

  // Windows lists "." and ".." first when directories are asked for; readdir's order is arbitrary.
  std::vector<TWrenFindData> dots;
  for (const char* dot : {".", ".."}) {
    TWrenFindData data;
    if (withDirectories && MatchesMask(dot, mask) && entryOf(dot, data)) dots.push_back(data);
  }

  while (const dirent* e = ::readdir(d)) {
    const std::string name = e->d_name;
    if (name == "." || name == "..") continue;
    // The writer's temporary files are no one's sources; a dead run's are cleared on the way.
    if (name[0] == '.' && ParseScratchFileName(name)) {
      CleanUpLeftover(dir, name);
      continue;
    }
    if (!MatchesMask(name, mask)) continue;
    TWrenFindData data;
    if (entryOf(e->d_name, data) && wanted(data)) found.push_back(std::move(data));
  }
  ::closedir(d);

  std::sort(found.begin(), found.end(), NameLess);
  found.insert(found.begin(), dots.begin(), dots.end());
  return found;
}

bool ReadFileBytes(const std::string& path, std::string& bytes, std::string& error) {
  bytes.clear();
  // A file rewritten under the open batch reads as its new content.
  std::string source = path;
  struct stat st;
  if (tBatch && !tBatch->pending.empty() && ::stat(path.c_str(), &st) == 0)
    if (const TPendingWrite* pending = PendingFor(st.st_dev, st.st_ino)) source = pending->temp;
  const int fd = ::open(source.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    error = OsError("Cannot open", path, errno);
    return false;
  }
  char buffer[65536];
  for (;;) {
    const ssize_t r = ::read(fd, buffer, sizeof buffer);
    if (r == 0) break;
    if (r < 0) {
      if (errno == EINTR) continue;
      error = OsError("Cannot read", path, errno);
      ::close(fd);
      bytes.clear();
      return false;
    }
    bytes.append(buffer, static_cast<size_t>(r));
  }
  ::close(fd);
  return true;
}

bool WriteFileAtomic(const std::string& path, const std::string& bytes, std::string& error) {
  // Write through a symbolic link to the file it names, so the link itself stays.
  std::string target = path;
  struct stat st;
  if (::lstat(path.c_str(), &st) == 0 && S_ISLNK(st.st_mode)) {
    if (char* real = ::realpath(path.c_str(), nullptr)) {
      target = real;
      std::free(real);
    }
  }

  const bool exists = ::stat(target.c_str(), &st) == 0;
  if (exists) {
    if (S_ISDIR(st.st_mode)) {
      error = OsError("Cannot write", path, EISDIR);
      return false;
    }
    // The user marked it read-only: a rename would silently override that, so refuse.
    if (ReadOnlyMode(st.st_mode)) {
      error = path + " is read only";
      return false;
    }
  }

  CleanUpDirectoryOnce(DirWithSlash(target));
  // A rename would cut the other names off, hand the file to us, or is not allowed here.
  if (exists && (st.st_nlink > 1 || !RenameKeepsOwner(st) ||
                 ::access(DirectoryOf(target).c_str(), W_OK) != 0))
    return RewriteInPlace(target, bytes, error);

  int err = 0;
  std::string temp;
  const int fd = CreateScratch(DirWithSlash(target), target, temp, err);
  if (fd < 0) {
    error = OsError("Cannot create a temporary file to write", path, err);
    return false;
  }

  auto fail = [&](const char* what, int e) {
    ::close(fd);
    ::unlink(temp.c_str());
    error = OsError(what, path, e);
    return false;
  };

  if (!WriteAll(fd, bytes, err)) return fail("Cannot write", err);
  if (exists) {
    if (::fchmod(fd, st.st_mode & 07777) != 0) return fail("Cannot set the permissions of", errno);
    // Keep the owner where we may (root rewriting a user's file); others cannot and need not.
    if (st.st_uid != ::geteuid() || st.st_gid != ::getegid()) (void)!::fchown(fd, st.st_uid, st.st_gid);
  }
  if (exists && tBatch) {
    if (::close(fd) != 0) {
      err = errno;
      ::unlink(temp.c_str());
      error = OsError("Cannot write", path, err);
      return false;
    }
    if (TPendingWrite* pending = PendingFor(st.st_dev, st.st_ino)) {
      ::unlink(pending->temp.c_str());  // written again before its commit: the newer bytes win
      pending->temp = temp;
      return true;
    }
    if (tBatch->pending.size() >= kMaxPending) CommitPending(tBatch->pending, tBatch->errors);
    tBatch->pending.push_back({temp, target, st.st_dev, st.st_ino});
    return true;
  }
  if (::fsync(fd) != 0) return fail("Cannot flush", errno);
  if (::close(fd) != 0) {
    err = errno;
    ::unlink(temp.c_str());
    error = OsError("Cannot write", path, err);
    return false;
  }
  if (::rename(temp.c_str(), target.c_str()) != 0) {
    err = errno;
    ::unlink(temp.c_str());
    error = OsError("Cannot replace", path, err);
    return false;
  }
  SyncDirectoryOf(target);
  return true;
}

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
  CommitPending(tBatch->pending, tBatch->errors);
  error = std::move(tBatch->errors);
  tBatch->errors.clear();
  return error.empty();
}

}  // namespace wren
