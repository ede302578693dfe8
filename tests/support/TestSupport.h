// Helpers shared by the tests: temporary directories, file access and the argv recorder.
#pragma once

#include <nlohmann/json.hpp>
#include <functional>
#include <string>
#include <vector>

namespace wren::test {

/// A fresh directory under the system temp folder, removed with everything in it at the end.
class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  /// The directory, with a trailing '/'.
  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + name; }

 private:
  std::string path_;
};

void WriteFile(const std::string& path, const std::string& bytes);
std::string ReadFile(const std::string& path);
bool Exists(const std::string& path);

/// Runs body in a forked process and returns its exit code (128 + the signal when killed); the
/// process ends without unwinding, as a killed run would.
int InChild(const std::function<int()>& body);

/// Whether the process runs: a zombie waiting for its reaper does not.
bool ProcessRunning(int pid);
/// The process ids a test program wrote to a file, one per line; none when there is no file.
std::vector<int> ReadPids(const std::string& path);

/// Copies the argv-recorder program to path (a tool's name in a test folder), executable.
void InstallRecorder(const std::string& path);
/// The JSON the recorder wrote beside the program at path; null when it did not run.
nlohmann::json RecordedCall(const std::string& programPath);

/// Runs a program to its end, no shell; returns its exit code and collects stdout (and stderr
/// when errors is given; otherwise stderr goes with stdout).
int RunProgram(const std::vector<std::string>& argv, std::string* output = nullptr,
               const std::string& workingDir = "", std::string* errors = nullptr);

}  // namespace wren::test
