// File-system helpers with Windows semantics, and the atomic writer for files the package rewrites.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace wren {

bool FileExists(const std::string& path);
bool DirectoryExists(const std::string& path);
/// The read-only attribute; on POSIX, no owner write bit (whoever runs the host).
bool IsReadOnly(const std::string& path);

/// One entry found by FindFiles.
struct TWrenFindData {
  std::string name;
  bool isDirectory = false;
  bool readOnly = false;
  uint64_t size = 0;
};

/// Windows file-mask matching: case-insensitive, '*' any run, '?' one character, "*.*" everything,
/// a mask without a dot also matching names that have none.
bool MatchesMask(const std::string& name, const std::string& mask);

/// Lists the entries matching pattern (a directory followed by a mask, "dir/v*.*"), sorted without
/// regard to case as NTFS returns them. Directories (with "." and "..", as Windows gives them) are
/// included only when withDirectories is set; onlyDirectories drops the files.
std::vector<TWrenFindData> FindFiles(const std::string& pattern, bool withDirectories,
                                     bool onlyDirectories = false);

bool ReadFileBytes(const std::string& path, std::string& bytes, std::string& error);

/// Writes the bytes to a temporary file beside path, flushes it and renames it over path, so the
/// target is either untouched or complete. The file keeps the target's permissions.
bool WriteFileAtomic(const std::string& path, const std::string& bytes, std::string& error);

/// Test hook: the next atomic writes fail after this many bytes (SIZE_MAX: never).
void SetAtomicWriteFailAfter(size_t bytes);

}  // namespace wren
