#include "tools/WrenNUnitAction.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "ToolsTestKit_test.h"
#include "pages/WrenNUnitFrames.h"
#include "tools/WrenNUnitOptions.h"

namespace wren {
namespace {

/// A runner (the recorder) in a folder with a blank in its name, named by the NUnit options that
/// are registered against a temporary options file.
class NUnitActionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    test::InstallRecorder(runner_);
    std::filesystem::create_directories(tests_);
    WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenNUnitOptions>(), "NUNIT");
    ASSERT_NE(NUnitOptions(), nullptr);
    NUnitOptions()->SetNUnitLocation(runner_);
  }
  test::TToolRun Run(const test::TSettings& settings) {
    TWrenNUnitAction action;
    test::ApplyProperties(action, settings);
    return test::RunAction(action, runner_, {{"OUT", tests_}});
  }

  test::TempDir temp_;
  test::TOptionsScope options_{temp_ / "options.xml"};
  const std::string runner_ = temp_ / "nunit bin/nunit-console.exe";
  const std::string tests_ = temp_ / "test output";  // the assemblies (no trailing delimiter)
};

TEST_F(NUnitActionTest, CommandLinesAndStartingFolder) {
  const std::string t = tests_ + "/";
  using TArgs = std::vector<std::string>;
  const std::vector<std::tuple<const char*, test::TSettings, TArgs, std::string>> cases = {
      {"three assemblies: three bare arguments before any switch",
       {{"Assemblies", "%OUT%/Core.Tests.dll\n%OUT%/Data Tests.dll\n/elsewhere/Ui.Tests.dll"},
        {"Fixture", "Core.Tests.ParserFixture"}, {"XMLOutputFile", "%OUT%/Test Result.xml"},
        {"TransformFile", "%OUT%/summary.xslt"}, {"NoLogo", "true"}, {"XMLToConsole", "true"}},
       {t + "Core.Tests.dll", t + "Data Tests.dll", "/elsewhere/Ui.Tests.dll",
        "/fixture=Core.Tests.ParserFixture", "/xml=" + t + "Test Result.xml",
        "/transform=" + t + "summary.xslt", "/nologo", "/xmlConsole"},
       tests_},
      {"project file with its configuration; assemblies ignored",
       {{"UseProjectFile", "true"}, {"ProjectFile", "%OUT%/All Tests.nunit"},
        {"Assemblies", "/ignored/a.dll"}, {"ProjectConfig", "Release"}},
       {t + "All Tests.nunit", "/config=Release"}, tests_},
      {"relative assembly: the runner's folder", {{"Assemblies", "Core.Tests.dll"}},
       {"Core.Tests.dll"}, temp_ / "nunit bin"},
  };
  for (const auto& [name, settings, args, cwd] : cases) {
    SCOPED_TRACE(name);
    const test::TToolRun run = Run(settings);
    EXPECT_TRUE(run.success);
    ASSERT_FALSE(run.call.is_null());
    EXPECT_EQ(run.Args(), args);
    EXPECT_EQ(run.call["cwd"], cwd);
  }
  // The log names the command line as the builder has it, quoting and all.
  const test::TToolRun run = Run({{"Assemblies", "%OUT%/a b.dll"}, {"NoLogo", "true"}});
  EXPECT_TRUE(run.Logged("Command Line: \"" + t + "a b.dll\" /nologo")) << run.log[0];
}

TEST_F(NUnitActionTest, ExpansionFailuresEndTheStepBeforeTheRunnerStarts) {
  for (const test::TSettings& settings :
       {test::TSettings{{"Assemblies", "a.dll\n%NO_SUCH_WREN_VAR%/b.dll"}},
        test::TSettings{{"Assemblies", "a.dll"}, {"TransformFile", "%NO_SUCH_WREN_VAR%"}},
        test::TSettings{{"UseProjectFile", "true"}, {"ProjectFile", "%NO_SUCH_WREN_VAR%.nunit"}}}) {
    const test::TToolRun run = Run(settings);
    EXPECT_FALSE(run.success);
    EXPECT_TRUE(run.call.is_null()) << "the runner must not start";
    EXPECT_FALSE(run.Logged("Command Line:"));
  }
}

TEST_F(NUnitActionTest, ValidationAndStoredOptions) {
  const std::string path = "Path to nunit-console.exe ";
  using TReports = std::vector<std::pair<std::string, std::string>>;
  const std::vector<std::tuple<std::string, test::TSettings, TReports>> cases = {
      {runner_, {{"Assemblies", "a.dll"}}, {}},
      {runner_, {{"UseProjectFile", "true"}, {"ProjectFile", "a.nunit"}}, {}},
      {"", {}, {{"NUnit Options", path + "not defined, please check Tools->Options"},
                {"Assemblies", "No assemblies have been specified"}}},
      {temp_ / "gone/nunit-console.exe", {{"UseProjectFile", "true"}},
       {{"Options", path + "not correct, please check Tools->Options"},
        {"Project File", "Project file has not been set"}}},
  };
  for (const auto& [location, settings, reports] : cases) {
    NUnitOptions()->SetNUnitLocation(location);
    TWrenNUnitAction action;
    test::ApplyProperties(action, settings);
    test::TReportCollector errors;
    EXPECT_EQ(action.Validate(errors), reports.empty());
    EXPECT_EQ(errors.reports, reports) << location;
  }
  // The location is stored under the options' key, and the options are found by name alone.
  EXPECT_EQ(test::SavedOption(temp_ / "options.xml", "NUnit", "NUnitLocation"),
            temp_ / "gone/nunit-console.exe");
  EXPECT_EQ(WrenOptionsServices().FindOptions("nunit", "OTHER").get(),
            dynamic_cast<TWrenOptionsObject*>(NUnitOptions().get()));
}

TEST(NUnitActionFrame, ChoiceEnablesItsControlsAndRoundTrips) {
  TWrenNUnitAction action;
  action.Assemblies = {"a.dll", "b.dll"};
  action.Fixture = "Ns.Fixture";
  TNUnitActionFrame page;
  page.ReadActionData(action);
  std::string message;
  EXPECT_TRUE(page.rbAssemblies.checked && page.mmAssemblies.enabled && page.CheckPage(message));
  EXPECT_FALSE(page.edProjectFile.enabled);
  page.SetUseProjectFile(true);
  EXPECT_FALSE(page.mmAssemblies.enabled);
  EXPECT_TRUE(page.edProjectFile.enabled && page.edProjectConfig.enabled);
  EXPECT_FALSE(page.CheckPage(message));
  EXPECT_EQ(message, "Project File is required.");
  page.edProjectFile.text = "all.nunit";
  page.cbNoLogo.checked = true;
  TWrenNUnitAction written;
  page.WriteActionData(written);
  EXPECT_TRUE(written.UseProjectFile && written.NoLogo);
  EXPECT_EQ(written.ProjectFile + "|" + written.Fixture, "all.nunit|Ns.Fixture");
  EXPECT_EQ(written.Assemblies, action.Assemblies);
}

}  // namespace
}  // namespace wren
