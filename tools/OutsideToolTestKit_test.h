// Test ground of the documentation, analysis and obfuscation tool actions: a tool's options
// registered against a temporary store and pointing at the argv recorder, a work folder with a
// blank in its name, and a way to judge exit codes a POSIX process cannot return.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ToolsTestKit_test.h"
#include "tools/WrenToolOptions.h"

namespace wren::test {

/// The recorder installed at toolPath (under the temporary folder) as the tool of options O.
template <class O>
class TOutsideToolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    InstallRecorder(tool_);
    std::filesystem::create_directories(work_);
    WrenOptionsServices().RegisterOptions(OptionsClassOf<O>(), "ICON");
    options_ = FindToolOptions(O::kOptionsName, O::kOptionsCategory);
    ASSERT_NE(options_, nullptr);
    options_->SetLocation(tool_);
  }

  /// Creates folders under the work folder, where steps are to start.
  void MakeWorkDirs(const std::vector<std::string>& dirs) {
    for (const std::string& dir : dirs) std::filesystem::create_directories(work_ + "/" + dir);
  }

  /// Makes the recorder exit with code (and print stdoutText) on its next runs.
  void RecorderExits(int code, const std::string& stdoutText = "") {
    WriteFile(tool_ + ".recorder.json",
              nlohmann::json{{"exit", code}, {"stdout", stdoutText}}.dump());
  }

  template <class A>
  TToolRun Run(A& action, const TSettings& settings) {
    ApplyProperties(action, settings);
    return RunAction(action, tool_, {{"WORK", work_}, {"CONFIG", "Release"}});
  }

  /// The judgement of an exit code, with what the action logged meanwhile.
  static TToolRun Judge(TWrenExecuteAbstractAction& action, int32_t exitCode) {
    TToolRun run;
    TWrenStepHost host;
    host.SetLogSink([&](TWrenLogStream, const std::string& text) { run.log.push_back(text); });
    action.SetHost(&host);
    run.success = action.InterpretResult(exitCode);
    action.SetHost(nullptr);
    return run;
  }

  /// True when the recorded working directory is dir.
  static bool RanIn(const TToolRun& run, const std::string& dir) {
    std::error_code ec;
    return !run.call.is_null() &&
           std::filesystem::equivalent(run.call["cwd"].get<std::string>(), dir, ec);
  }

  TempDir temp_;
  TOptionsScope scope_{temp_ / "options.xml"};
  const std::string work_ = temp_ / "my project", tool_ = toolPath();
  std::shared_ptr<IWrenToolOptions> options_;

 private:
  std::string toolPath() const {
    return temp_ / ("tool dir/" + std::string(O::kOptionKey) + ".exe");
  }
};

}  // namespace wren::test
