// Test ground for the SDK tool actions: a framework and SDK tree in a temporary folder named by a
// registry hive, the argv recorder standing in for each tool, and golden command-line tables
// checked both as builder text and as the argv the tool receives through the real process runner.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "TestSupport.h"
#include "host/WrenStepHost.h"
#include "dotnet/WrenDotNetAction.h"

namespace wren::test {

/// Property name and value text, applied through the class's published properties.
using TSettings = std::vector<std::pair<std::string, std::string>>;

/// Sets published properties from text: booleans "true"/"false", enumerations by value name,
/// string lists as lines separated by '\n'. An unknown name or value fails the test.
void ApplySettings(TCustomWrenAction& action, const TSettings& settings);

/// One golden case: settings, whether the command line is built, its text and the argv[1..] the
/// tool receives. Texts may hold {W}, replaced by the work folder (whose name has a blank).
/// failLabel: for refused cases, the caption or message the log must hold ("" for none).
/// cwd: the working folder the tool must run in; "" means the tool's own folder.
struct TCommandCase {
  TCommandCase(std::string name_, TSettings settings_, bool ok_, std::string text_,
               std::vector<std::string> argv_, std::string failLabel_ = "", std::string cwd_ = "")
      : name(std::move(name_)),
        settings(std::move(settings_)),
        ok(ok_),
        text(std::move(text_)),
        argv(std::move(argv_)),
        failLabel(std::move(failLabel_)),
        cwd(std::move(cwd_)) {}

  std::string name;
  TSettings settings;
  bool ok = true;
  std::string text;
  std::vector<std::string> argv;
  std::string failLabel;
  std::string cwd;
};

/// Field and message pairs, in the order Validate reports them.
using TReports = std::vector<std::pair<std::string, std::string>>;

/// One validation case: settings and every report expected (none: Validate answers true).
struct TValidationCase {
  TValidationCase(std::string name_, TSettings settings_, TReports reports_)
      : name(std::move(name_)), settings(std::move(settings_)), reports(std::move(reports_)) {}
  std::string name;
  TSettings settings;
  TReports reports;
};

/// Runs Validate for every case on a fresh action and compares the reports and the answer.
void CheckValidation(const std::function<std::unique_ptr<TCustomWrenAction>()>& make,
                     const std::vector<TValidationCase>& cases);

/// What one real run of an action left behind.
struct TStepRun {
  bool success = false;
  std::vector<std::string> log;      // every line, whatever the stream
  nlohmann::json call;               // the recorder's record; null when no process started
  bool Logged(const std::string& fragment) const;
};

/// A .NET install in a temporary folder: framework v4.0.30319 and SDK v4.0, whose paths hold
/// blanks, named by a registry hive; the detection object is rebuilt for it and dropped after.
class TSdkToolTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// Points the action at the fixture's SDK (overriding the options' default).
  static void UseFixtureSDK(TWrenDotNetAction& action);
  /// Copies the recorder in as the action's tool; returns the tool's path.
  std::string InstallTool(const TWrenDotNetAction& action);
  /// Writes the recorder's settings beside the tool (exit code, output).
  void ConfigureTool(const std::string& toolPath, const nlohmann::json& config);

  /// A step host with the variables WORK (the work folder, no trailing delimiter) and EMPTY ("").
  std::unique_ptr<TWrenStepHost> MakeHost(std::vector<std::string>& log);
  /// Runs the action in process through the real runner and collects what happened.
  TStepRun Run(TWrenDotNetAction& action);

  /// Checks every case twice: the builder's text, then the argv and working folder of a real run.
  void CheckCommandCases(const std::function<std::unique_ptr<TWrenDotNetAction>()>& make,
                         const std::vector<TCommandCase>& cases);

  /// {W} replaced by the work folder.
  std::string Expand(const std::string& text) const;

  std::unique_ptr<TempDir> temp_;
  std::string root_;  // ".../net sdk/"
  std::string work_;  // ".../work dir" (no trailing delimiter)
};

}  // namespace wren::test
