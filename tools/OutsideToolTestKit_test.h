// Test ground of the documentation, analysis and obfuscation tool actions: a tool's options
// registered against a temporary store and pointing at the argv recorder, a work folder with a
// blank in its name, and a way to judge exit codes a POSIX process cannot return.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ToolsTestKit_test.h"
#include "WrenPluginAPI.h"
#include "tools/WrenToolOptions.h"

namespace wren::test {

/// Field and message pairs, in the order Validate reports them.
using TReports = std::vector<std::pair<std::string, std::string>>;

/// A run that starts the tool: the arguments it receives and the folder it starts in.
struct TCommandLineCase {
  const char* name;
  TSettings settings;
  std::vector<std::string> args;
  std::string dir;
};
/// A run that ends before the tool starts, with what it logs.
struct TNeverStartsCase {
  const char* name;
  TSettings settings;
  std::string message;
};
/// What Validate reports with the tool's location set to location.
struct TToolValidationCase {
  std::string location;
  TSettings settings;
  TReports reports;
};
/// How the step judges the tool's exit code, and what it logs (empty: nothing asked).
struct TExitCodeCase {
  int code;
  bool success;
  std::string message;
};

/// Reads the settings into each page and writes every page back into a fresh action: each
/// published property must come back as it was.
template <class A>
void ExpectPagesRoundTrip(const TSettings& settings, const std::vector<TFrame*>& pages) {
  A action, copy;
  ApplyProperties(action, settings);
  for (TFrame* page : pages) {
    page->ReadActionData(action);
    page->WriteActionData(copy);
  }
  for (const TPublishedProperty& p : A::ClassProperties())
    EXPECT_TRUE(p.get(action) == p.get(copy)) << p.name;
}

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

  /// Each case runs a fresh action A; what the tool received must be the case's, and no line
  /// may hold neverLogged (when given).
  template <class A>
  void ExpectCommandLines(const std::vector<TCommandLineCase>& cases,
                          const std::string& neverLogged = "") {
    for (const TCommandLineCase& c : cases) {
      SCOPED_TRACE(c.name);
      A action;
      const TToolRun run = Run(action, c.settings);
      EXPECT_TRUE(run.success) << testing::PrintToString(run.log);
      EXPECT_EQ(run.Args(), c.args);
      EXPECT_TRUE(RanIn(run, c.dir)) << run.call.dump();
      EXPECT_FALSE(!neverLogged.empty() && run.Logged(neverLogged)) << neverLogged;
    }
  }

  /// Each case must fail without starting the tool, and log its message.
  template <class A>
  void ExpectNeverStarts(const std::vector<TNeverStartsCase>& cases) {
    for (const TNeverStartsCase& c : cases) {
      SCOPED_TRACE(c.name);
      A action;
      const TToolRun run = Run(action, c.settings);
      EXPECT_FALSE(run.success);
      EXPECT_TRUE(run.call.is_null()) << "the tool must not start";
      EXPECT_TRUE(run.Logged(c.message)) << testing::PrintToString(run.log);
    }
  }

  /// Each case makes the recorder exit with its code (printing a line) under the settings.
  template <class A>
  void ExpectExitCodes(const TSettings& settings, const std::vector<TExitCodeCase>& cases) {
    for (const TExitCodeCase& c : cases) {
      SCOPED_TRACE(c.code);
      RecorderExits(c.code, "the tool says hello");
      A action;
      const TToolRun run = Run(action, settings);
      ASSERT_FALSE(run.call.is_null());
      EXPECT_EQ(run.success, c.success);
      if (!c.message.empty()) {
        EXPECT_TRUE(run.Logged(c.message)) << testing::PrintToString(run.log);
      }
    }
  }

  /// Validate on a fresh action under each case's location; the location stays set after.
  template <class A>
  void ExpectValidation(const std::vector<TToolValidationCase>& cases) {
    for (const TToolValidationCase& c : cases) {
      options_->SetLocation(c.location);
      A action;
      ApplyProperties(action, c.settings);
      TReportCollector errors;
      EXPECT_EQ(action.Validate(errors), c.reports.empty()) << c.location;
      EXPECT_EQ(errors.reports, c.reports) << c.location;
    }
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
