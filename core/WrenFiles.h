// File-system helpers with Windows semantics, and the atomic writer for files the package rewrites.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace wren {

bool FileExists(const std::string& path);
bool DirectoryExists(const std::string& path);
/// The read-only attribute; on POSIX, no owner write bit (whoever runs the host).
bool IsReadOnly(const std::string& path);

/// One look at a path, taken once so that a read-modify-write of a file does not look it up again
/// for every check, the read and the write. Describes what a symbolic link names.
struct TWrenFileStatus {
  bool exists = false;  // a file or a directory is there
  bool isDirectory = false;
  bool readOnly = false;
  bool isLink = false;  // the path itself is a symbolic link
  uint64_t device = 0;
  uint64_t inode = 0;
  uint64_t links = 0;
  uint64_t size = 0;
  uint32_t mode = 0;  // permission bits
  uint32_t owner = 0;
  uint32_t group = 0;
};
TWrenFileStatus FileStatus(const std::string& path);

/// One entry found by FindFiles.
struct TWrenFindData {
  std::string name;
  bool isDirectory = false;
  bool readOnly = false;
  uint64_t size = 0;
};

/// Windows file-mask matching: case-insensitive, '*' any run, '?' one character, "*.*" everything,
/// a mask without a dot also matching names that have none.
bool MatchesMask(std::string_view name, std::string_view mask);

/// A temporary file of the writer below: ".<name>.tmp<pid>-<n>-<r>" holds new content on its way to
/// <name>; ".<name>.jrn<pid>-<n>-<r>" is the journal of a rewrite in place (old and new content).
struct TWrenScratchName {
  bool journal = false;
  long pid = 0;  // the writing process
};
std::optional<TWrenScratchName> ParseScratchFileName(const std::string& name);

/// Lists the entries matching pattern (a directory followed by a mask, "dir/v*.*"), sorted without
/// regard to case as NTFS returns them. Directories (with "." and "..", as Windows gives them) are
/// included only when withDirectories is set; onlyDirectories drops the files. The writer's
/// temporary files are never listed; those a dead process left behind are removed on the way (a
/// torn rewrite in place is rolled back from its journal).
std::vector<TWrenFindData> FindFiles(const std::string& pattern, bool withDirectories,
                                     bool onlyDirectories = false);
/// FindFiles without readOnly and size, which are left unset: it needs no look at each entry
/// where the directory listing tells files from directories.
std::vector<TWrenFindData> FindFileNames(const std::string& pattern, bool withDirectories,
                                         bool onlyDirectories = false);

bool ReadFileBytes(const std::string& path, std::string& bytes, std::string& error);
/// ReadFileBytes of a file whose status was just taken.
bool ReadFileBytes(const std::string& path, const TWrenFileStatus& status, std::string& bytes,
                   std::string& error);

/// Writes the bytes to a temporary file beside path, flushes it and renames it over path, so the
/// target is either untouched or complete. The file keeps the target's permissions.
/// A file a rename would change otherwise (a second hard link, an owner other than us, a
/// directory we may not write to) is rewritten in place instead, after its old content is safe in
/// a journal: beside it, or in the recovery directory (MARROWBY_RECOVERY_DIR, else
/// $XDG_STATE_HOME/marrowby/recovery, else ~/.local/state/marrowby/recovery).
/// Under an open TWrenWriteBatch, renamed rewrites are left pending for its Commit (new files as
/// well: they appear at the commit); rewrites in place happen at once.
bool WriteFileAtomic(const std::string& path, const std::string& bytes, std::string& error);
/// WriteFileAtomic of a file whose status was taken since it last changed.
bool WriteFileAtomic(const std::string& path, const TWrenFileStatus& status,
                     const std::string& bytes, std::string& error);

/// A folder kept open so that the files in it are looked at, read and rewritten by their leaf
/// names: every operation on a file deep in a tree then looks up one short name instead of the
/// whole path. Files listed in it and writes pending in a batch share it; its handle opens again
/// by path when it had to be closed because too many folders were open.
class TWrenFolder {
 public:
  /// The folder at path, a directory ending with '/' or empty for the current one, as it will
  /// stand in the names of its files. Nothing is opened yet.
  explicit TWrenFolder(std::string path);
  ~TWrenFolder();
  TWrenFolder(const TWrenFolder&) = delete;
  TWrenFolder& operator=(const TWrenFolder&) = delete;

  /// The path given (ending with '/', or empty): the path of a file in it is Path() + name.
  const std::string& Path() const { return path_; }
  /// The platform's handle of the open folder, opened by path when it is not open; -1 (errno
  /// set) when it cannot be opened.
  int Handle();
  /// Closes the handle when more folders are open than the process should keep.
  void Settle();

 private:
  friend struct TWrenFolderAccess;
  std::string path_;
  int handle_ = -1;
  bool listed_ = false;     // the handle has been read to its end by a listing
  bool cleanedUp_ = false;  // a listing has cleared the leftovers of dead writers here
  int links_ = 0;           // symbolic links followed to reach it from the first folder
};
using TWrenFolderRef = std::shared_ptr<TWrenFolder>;

/// The folder name in parent, opened relative to it; null (errno set) when it cannot be opened.
/// Symbolic links are followed as a path would follow them, up to the same limits.
TWrenFolderRef OpenSubfolder(TWrenFolder& parent, const std::string& name);
/// FindFileNames of the entries of folder that match mask.
std::vector<TWrenFindData> FindFileNames(TWrenFolder& folder, const std::string& mask,
                                         bool withDirectories, bool onlyDirectories = false);
/// FileStatus, ReadFileBytes and WriteFileAtomic of the file name in folder: the same checks,
/// messages (which name Path() + name) and safety as by path.
TWrenFileStatus FileStatus(TWrenFolder& folder, const std::string& name);
bool ReadFileBytes(TWrenFolder& folder, const std::string& name, const TWrenFileStatus& status,
                   std::string& bytes, std::string& error);
bool WriteFileAtomic(const TWrenFolderRef& folder, const std::string& name,
                     const TWrenFileStatus& status, const std::string& bytes, std::string& error);
/// Deletes the file name in folder (not a directory); false when it stays.
bool DeleteFileIn(TWrenFolder& folder, const std::string& name);

/// Groups the atomic writes made on this thread, so that thousands of them cost two syncs instead
/// of two flushes each. While a batch is open, WriteFileAtomic leaves the new content in a
/// temporary file beside the target (a dot file) and ReadFileBytes of an existing target returns
/// that content; a new file appears at the commit, and a second write of it before then (by the
/// same path) replaces the first. Commit syncs the temporary files, renames each over its target
/// in the order they were written, and syncs again so the renames last: every target ends old or
/// new, never half written, and a file written before another (a backup before its source)
/// reaches the disk no later than it. A batch opened inside another joins the outer one.
class TWrenWriteBatch {
 public:
  TWrenWriteBatch();
  /// Commits what is still pending; an error is lost here, so callers that can report should
  /// call Commit themselves.
  ~TWrenWriteBatch();
  TWrenWriteBatch(const TWrenWriteBatch&) = delete;
  TWrenWriteBatch& operator=(const TWrenWriteBatch&) = delete;

  /// Replaces the pending targets. On failure error names every file left as it was, and the
  /// others are replaced all the same.
  bool Commit(std::string& error);

 private:
  bool outermost_;
};

/// Test hook: writes of new content fail after this many bytes as on a full disk (SIZE_MAX:
/// never); with crash set the process ends there instead, as a kill -9 would end it.
void SetAtomicWriteFailAfter(size_t bytes, bool crash = false);
/// Test hook: under a batch, rewrites on a file system held in memory (tmpfs) wait for the commit
/// as on a disk, instead of landing at once; for tests of the batch wherever their folder is.
void SetWriteBatchDefersInMemory(bool defer);

}  // namespace wren
