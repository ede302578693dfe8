// Pieces shared by the POSIX file writer: scratch files beside a target, the in-place rewrite that
// keeps hard links, and the clean-up after a killed run.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <string>

namespace wren::posix {

std::string OsError(const std::string& what, const std::string& path, int err);
std::string DirectoryOf(const std::string& path);
void SyncDirectoryOf(const std::string& path);

/// Writes all bytes at the file's offset; honours the test hook (a full disk, or a crash).
bool WriteAll(int fd, const std::string& bytes, int& err);

/// What a scratch file holds: new content on its way to the target, or the journal of an
/// in-place rewrite (old and new content, so a torn rewrite can be rolled back).
enum class TScratchKind { Temp, Journal };

/// Creates a new scratch file in dir (with a trailing '/', or empty for the current directory)
/// named after target's base name and this process: ".<name>.tmp<pid>-<n>-<r>". O_EXCL.
/// This process's id, asked of the kernel once per process (a forked child asks again).
pid_t CurrentPid();
int CreateScratch(const std::string& dir, const std::string& target, std::string& scratchName,
                  int& err);
/// CreateScratch relative to the open directory dirfd, the name put after prefix.
int CreateScratchAt(int dirfd, const std::string& prefix, const std::string& target,
                    std::string& scratchName, int& err, mode_t mode = 0666);
/// The name scratchName gets as the given kind (same suffix, the kind's tag).
std::string ScratchNameAs(const std::string& scratchName, TScratchKind kind);

/// True when a file of that owner and group, put in place by rename by a writer of those
/// effective ids, can be given the old file's owner and group.
bool RenameKeepsOwner(uid_t owner, gid_t group, uid_t euid, gid_t egid);

/// Rewrites an existing file through its own inode, so every hard link, the mode and the owner
/// stay; the old content is journaled first and put back if the write fails half way.
bool RewriteInPlace(const std::string& target, const std::string& bytes, std::string& error);

/// Removes the leftovers of dead writers among the entry name of directory dir (with a trailing
/// '/'), rolling back a torn in-place rewrite from its journal. A live run's files stay.
void CleanUpLeftover(const std::string& dir, const std::string& name);

/// CleanUpLeftover for every entry of dir, once per directory and process.
void CleanUpDirectoryOnce(const std::string& dir);
/// Tells CleanUpDirectoryOnce that a listing has just cleaned dir up entry by entry.
void NoteDirectoryCleanedUp(const std::string& dir);
/// Clears the recovery directory of dead writers' journals, once per process.
void CleanUpRecoveryOnce();

}  // namespace wren::posix
