// Test helpers of the compiler actions: a step host that keeps the log, golden response files,
// and a framework folder registered in a registry hive of its own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "WrenCommandLine.h"
#include "WrenRegistry.h"
#include "dotnet/WrenDotNetFrameWorkAPI.h"
#include "runtime/WrenRegistryHive.h"
#include "runtime/WrenStepHost.h"

namespace wren::test {

/// A step host whose log lines are kept for the test to read.
struct TLoggingHost {
  TWrenStepHost host;
  std::vector<std::string> log;

  TLoggingHost() {
    host.SetLogSink([this](TWrenLogStream, const std::string& text) { log.push_back(text); });
  }
  bool Logged(const std::string& fragment) const {
    for (const std::string& line : log)
      if (line.find(fragment) != std::string::npos) return true;
    return false;
  }
  std::string Text() const {
    std::string text;
    for (const std::string& line : log) text += line + "\n";
    return text;
  }
};

/// Replaces every occurrence of what in text.
inline std::string ReplaceText(std::string text, const std::string& what, const std::string& with) {
  for (size_t pos = 0; (pos = text.find(what, pos)) != std::string::npos; pos += with.size())
    text.replace(pos, what.size(), with);
  return text;
}

/// A golden response file of tests/fixtures/compilers, with {DIR} standing for the project
/// directory of the run.
inline std::string GoldenFile(const std::string& name, const std::string& dir) {
  const std::string path = std::string(SOURCE_DIR) + "/tests/fixtures/compilers/" + name;
  return ReplaceText(ReadFile(path), "{DIR}", dir);
}

/// Runs GetCommandLine of an action on a fresh builder; the builder's text, or "<failed>".
template <class A>
std::string CommandLineOf(A& action) {
  std::shared_ptr<ICommandLineBuilder> builder = CreateCommandLineBuilder();
  if (!action.GetCommandLine(*builder)) return "<failed>";
  return builder->GetCommandLineText();
}

/// A framework folder (framework/v4.0.30319, SDK version v4.0) made the machine's only installed
/// framework for the life of the object.
class TTestFrameWork {
 public:
  explicit TTestFrameWork(const TempDir& dir)
      : root_(dir / "framework/"), folder_(root_ + "v4.0.30319/") {
    std::filesystem::create_directories(folder_);
    const std::string reg = "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\.NETFramework]\n"
                            "\"InstallRoot\"=\"" + root_ + "\"\n";
    std::string error;
    std::shared_ptr<IWrenRegistry> registry = ParseRegistryText(reg, "framework.reg", error);
    EXPECT_TRUE(registry) << error;
    SetWrenRegistry(registry);
    ReleaseWrenDotNetInfo();
  }
  ~TTestFrameWork() {
    SetWrenRegistry(nullptr);
    ReleaseWrenDotNetInfo();
  }
  TTestFrameWork(const TTestFrameWork&) = delete;
  TTestFrameWork& operator=(const TTestFrameWork&) = delete;

  /// The framework folder with a trailing delimiter.
  const std::string& Folder() const { return folder_; }
  static constexpr const char* kSDKVersion = "v4.0";

 private:
  std::string root_;
  std::string folder_;
};

}  // namespace wren::test
