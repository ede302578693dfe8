// Test ground for the SDK tool actions: a framework and SDK tree in a temporary folder named by a
// registry hive, the argv recorder standing in for each tool, and golden command-line tables
// checked both as builder text and as the argv the tool receives through the real process runner.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "TestProperties.h"
#include "TestSupport.h"
#include "WrenCommandLine.h"
#include "WrenRegistry.h"
#include "WrenUtils.h"
#include "dotnet/WrenDotNetAction.h"
#include "dotnet/WrenDotNetFrameWorkAPI.h"
#include "runtime/WrenRegistryHive.h"
#include "runtime/WrenStepHost.h"

namespace wren::test {

/// Sets published properties from "Name=value|Name=value" (see SetPublishedProperty).
inline void ApplySettings(TCustomWrenAction& action, const std::string& settings) {
  std::istringstream in(settings);
  for (std::string setting; std::getline(in, setting, '|');) {
    const size_t eq = setting.find('=');
    ASSERT_NE(eq, std::string::npos) << setting;
    SetPublishedProperty(action, setting.substr(0, eq), setting.substr(eq + 1));
  }
}

/// Settings and the reports of Validate as "field: message", in order; none means it answers true.
struct TValidationCase {
  std::string settings;
  TStrings reports;
};

/// Runs Validate for every case on a fresh A and compares the reports and the answer.
template <class A>
void CheckValidation(const std::vector<TValidationCase>& cases) {
  struct TCollector : IWrenActionValidationError {
    void AddError(const std::string& field, const std::string& message) override {
      reports.push_back(field + ": " + message);
    }
    TStrings reports;
  };
  for (const TValidationCase& c : cases) {
    SCOPED_TRACE("validated: " + c.settings);
    A action;
    ApplySettings(action, c.settings);
    TCollector collector;
    EXPECT_EQ(action.Validate(collector), c.reports.empty());
    EXPECT_EQ(collector.reports, c.reports);
  }
}

/// A built command line: its text and the argv[1..] the tool receives, {W} standing for the work
/// folder (whose name has a blank); cwd is the tool's working folder ("": the tool's own folder).
struct TCommandCase {
  std::string name, settings, text;
  std::vector<std::string> argv;
  std::string cwd = "";
};
/// Settings whose command line is refused: no process starts and the log names failLabel.
struct TRefusedCase {
  std::string settings, failLabel;
};

/// What one real run of an action left behind, and the command line it built beforehand.
struct TStepRun {
  bool built = false;
  std::string text;
  bool success = false;
  std::vector<std::string> log;  // every line, whatever the stream
  nlohmann::json call;           // the recorder's record; null when no process started
  bool Logged(const std::string& fragment) const {
    return std::any_of(log.begin(), log.end(), [&fragment](const std::string& line) {
      return line.find(fragment) != std::string::npos;
    });
  }
};

/// A .NET install in a temporary folder: framework v4.0.30319 and SDK v4.0, whose paths hold
/// blanks, named by a registry hive; the detection object is rebuilt for it and dropped after.
class TSdkToolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const std::string& dir : {root_ + "Framework/v4.0.30319", root_ + "SDK/v4.0/Bin", work_})
      std::filesystem::create_directories(dir);
    // Posix temporary paths hold neither backslashes nor quotes: no .reg escaping needed.
    const std::string hive = "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\.NETFramework]"
                             "\n\"InstallRoot\"=\"" + root_ + "Framework/\"\n"
                             "\"sdkInstallRootv4.0\"=\"" + root_ + "SDK/v4.0/\"\n";
    std::string error;
    std::shared_ptr<IWrenRegistry> registry = ParseRegistryText(hive, "sdk-fixture.reg", error);
    ASSERT_NE(registry, nullptr) << error;
    SetWrenRegistry(registry);
    ReleaseWrenDotNetInfo();
    ASSERT_NE(WrenDotNetInfo()->GetFrameWorkBySDKVersion("v4.0"), nullptr)
        << "the fixture's framework was not detected";
  }
  void TearDown() override {
    SetWrenRegistry(nullptr);
    ReleaseWrenDotNetInfo();
  }

  /// Copies the recorder in as the action's tool; returns the tool's path.
  std::string InstallTool(const TWrenDotNetAction& action) {
    const bool framework = action.GetDotNetToolType() == TWrenDotNetToolType::ttFramework;
    const std::string path =
        root_ + (framework ? "Framework/v4.0.30319/" : "SDK/v4.0/Bin/") + action.GetDotNetTool();
    InstallRecorder(path);
    return path;
  }

  /// Points the action at the fixture's SDK, applies the settings, builds its command line, then
  /// runs it through the real runner; variables: WORK (the work folder) and EMPTY ("").
  TStepRun Run(TWrenDotNetAction& action, const std::string& settings) {
    action.OverrideSDKDefault = true;
    action.SetDefaultSDKVersion("v4.0");
    ApplySettings(action, settings);
    TStepRun run;
    TWrenStepHost host;
    host.SetVariables({{"WORK", work_}, {"EMPTY", ""}});
    host.SetLogSink([&run](TWrenLogStream, const std::string& text) { run.log.push_back(text); });
    action.SetHost(&host);
    std::shared_ptr<ICommandLineBuilder> builder = CreateCommandLineBuilder();
    run.built = action.GetCommandLine(*builder);
    run.text = builder->GetCommandLineText();
    run.log.clear();  // what follows is the run's own log
    const std::string tool = action.GetExecutable();
    std::filesystem::remove(tool + ".argv.json");
    run.success = action.Execute();
    action.SetHost(nullptr);
    run.call = RecordedCall(tool);
    return run;
  }

  std::string Expand(std::string text) const {  // {W} replaced by the work folder
    for (size_t at = text.find("{W}"); at != std::string::npos; at = text.find("{W}", at))
      text.replace(at, 3, work_);
    return text;
  }

  /// Checks every case twice: the builder's answer and text, then what a real run of the tool
  /// received (argv and working folder) or, for refused cases, that no process started.
  template <class A>
  void CheckCommandCases(const std::vector<TCommandCase>& cases,
                         const std::vector<TRefusedCase>& refused) {
    const std::string tool = InstallTool(A());
    for (const TCommandCase& c : cases) {
      SCOPED_TRACE(c.name);
      A action;
      const TStepRun run = Run(action, c.settings);
      EXPECT_TRUE(run.built);
      EXPECT_EQ(run.text, Expand(c.text));
      EXPECT_TRUE(run.success);
      ASSERT_FALSE(run.call.is_null()) << "the tool did not run";
      std::vector<std::string> argv = run.call["argv"].get<std::vector<std::string>>(), expected;
      for (const std::string& arg : c.argv) expected.push_back(Expand(arg));
      EXPECT_EQ(std::vector<std::string>(argv.begin() + 1, argv.end()), expected);
      const std::string cwd = c.cwd.empty() ? ExtractFilePath(tool) : Expand(c.cwd);
      EXPECT_TRUE(std::filesystem::equivalent(run.call["cwd"].get<std::string>(), cwd))
          << run.call["cwd"] << " is not " << cwd;
    }
    for (const TRefusedCase& c : refused) {
      SCOPED_TRACE("refused: " + c.settings);
      A action;
      const TStepRun run = Run(action, c.settings);
      EXPECT_FALSE(run.built);
      EXPECT_FALSE(run.success);
      EXPECT_TRUE(run.call.is_null()) << "a refused command line started the tool";
      EXPECT_TRUE(run.Logged(c.failLabel)) << "the log does not name " << c.failLabel;
    }
  }

  TempDir temp_;
  const std::string root_ = temp_ / "net sdk/";
  const std::string work_ = temp_ / "work dir";  // no trailing delimiter
};

}  // namespace wren::test
