#include "tools/WrenNUnitAction.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "ToolsTestKit_test.h"
#include "pages/WrenNUnitFrames.h"
#include "tools/WrenNUnitOptions.h"

namespace wren {
namespace {

using test::TempDir;

/// A runner (the recorder) in a folder with a blank in its name, named by the NUnit options that
/// are registered against a temporary options file.
class NUnitActionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    runner_ = temp_ / "nunit bin/nunit-console.exe";
    test::InstallRecorder(runner_);
    tests_ = temp_ / "test output";  // the assemblies' folder (no trailing delimiter)
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

  TempDir temp_;
  test::TOptionsScope options_{temp_ / "options.xml"};
  std::string runner_;
  std::string tests_;
};

TEST_F(NUnitActionTest, CommandLinesAndStartingFolder) {
  const std::string t = tests_ + "/";
  struct Case {
    const char* name;
    test::TSettings settings;
    std::vector<std::string> args;
    std::string cwd;
  } cases[] = {
      {"three assemblies: three bare arguments before any switch",
       {{"Assemblies", "%OUT%/Core.Tests.dll\n%OUT%/Data Tests.dll\n/elsewhere/Ui.Tests.dll"},
        {"Fixture", "Core.Tests.ParserFixture"},
        {"XMLOutputFile", "%OUT%/Test Result.xml"},
        {"TransformFile", "%OUT%/summary.xslt"},
        {"NoLogo", "true"},
        {"XMLToConsole", "true"}},
       {t + "Core.Tests.dll", t + "Data Tests.dll", "/elsewhere/Ui.Tests.dll",
        "/fixture=Core.Tests.ParserFixture", "/xml=" + t + "Test Result.xml",
        "/transform=" + t + "summary.xslt", "/nologo", "/xmlConsole"},
       tests_},
      {"project file with its configuration; assemblies ignored",
       {{"UseProjectFile", "true"},
        {"ProjectFile", "%OUT%/All Tests.nunit"},
        {"Assemblies", "/ignored/a.dll"},
        {"ProjectConfig", "Release"}},
       {t + "All Tests.nunit", "/config=Release"},
       tests_},
      {"relative assembly: the runner's folder", {{"Assemblies", "Core.Tests.dll"}},
       {"Core.Tests.dll"}, temp_ / "nunit bin"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const test::TToolRun run = Run(c.settings);
    EXPECT_TRUE(run.success);
    ASSERT_FALSE(run.call.is_null());
    EXPECT_EQ(run.Args(), c.args);
    EXPECT_EQ(run.call["cwd"], c.cwd);
  }

  // The log names the command line as the builder has it, quoting and all.
  const test::TToolRun run = Run({{"Assemblies", "%OUT%/a b.dll"}, {"NoLogo", "true"}});
  EXPECT_TRUE(run.Logged("Command Line: \"" + t + "a b.dll\" /nologo")) << run.log[0];
}

TEST_F(NUnitActionTest, ExitCodeAndExpansionFailures) {
  test::WriteFile(runner_ + ".recorder.json", R"({"exit": 1, "stdout": "Tests run: 2, Failures: 1"})");
  test::TToolRun run = Run({{"Assemblies", "%OUT%/a.dll"}});
  EXPECT_FALSE(run.success);
  EXPECT_TRUE(run.Logged("Tests run: 2, Failures: 1"));  // the host logs the runner's output

  test::WriteFile(runner_ + ".recorder.json", R"({"exit": 0})");
  for (const test::TSettings& settings :
       {test::TSettings{{"Assemblies", "a.dll\n%NO_SUCH_WREN_VAR%/b.dll"}},
        test::TSettings{{"Assemblies", "a.dll"}, {"TransformFile", "%NO_SUCH_WREN_VAR%"}},
        test::TSettings{{"UseProjectFile", "true"}, {"ProjectFile", "%NO_SUCH_WREN_VAR%.nunit"}}}) {
    run = Run(settings);
    EXPECT_FALSE(run.success);
    EXPECT_TRUE(run.call.is_null()) << "the runner must not start";
    EXPECT_FALSE(run.Logged("Command Line:"));
  }
}

TEST_F(NUnitActionTest, Validation) {
  const std::string notDefined = "Path to nunit-console.exe not defined, please check Tools->Options";
  const std::string notCorrect = "Path to nunit-console.exe not correct, please check Tools->Options";
  using TReports = std::vector<std::pair<std::string, std::string>>;
  struct Case {
    std::string location;
    test::TSettings settings;
    TReports reports;
  } cases[] = {
      {runner_, {{"Assemblies", "a.dll"}}, {}},
      {runner_, {{"UseProjectFile", "true"}, {"ProjectFile", "a.nunit"}}, {}},
      {"", {}, {{"NUnit Options", notDefined}, {"Assemblies", "No assemblies have been specified"}}},
      {temp_ / "gone/nunit-console.exe",
       {{"UseProjectFile", "true"}},
       {{"Options", notCorrect}, {"Project File", "Project file has not been set"}}},
  };
  for (const Case& c : cases) {
    NUnitOptions()->SetNUnitLocation(c.location);
    TWrenNUnitAction action;
    test::ApplyProperties(action, c.settings);
    test::TReportCollector errors;
    EXPECT_EQ(action.Validate(errors), c.reports.empty());
    EXPECT_EQ(errors.reports, c.reports) << c.location;
  }
}

TEST(WrenNUnitOptions, StoredUnderItsKeyAndFoundByNameAndCategory) {
  TempDir temp;
  test::WriteFile(temp / "options.xml",
                  "<MarrowbyOptions version=\"1\"><Options key=\"NUnit\"><Value name=\"NUnitLocation\">"
                  "/opt/nunit-console.exe</Value></Options></MarrowbyOptions>");
  test::TOptionsScope scope(temp / "options.xml");
  EXPECT_EQ(NUnitOptions(), nullptr);
  WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenNUnitOptions>(), "NUNIT");
  const std::shared_ptr<IWrenNUnitOptions> options = NUnitOptions();
  ASSERT_NE(options, nullptr);
  EXPECT_EQ(options->GetNUnitLocation(), "/opt/nunit-console.exe");
  EXPECT_EQ(WrenOptionsServices().FindOptions("nunit", "OTHER").get(),
            dynamic_cast<TWrenOptionsObject*>(options.get()));

  options->SetNUnitLocation("/usr/lib/nunit/nunit-console.exe");
  std::string error;
  ASSERT_TRUE(SaveModifiedOptions(error)) << error;
  TWrenOptionsStore reread;
  ASSERT_TRUE(reread.Load(temp / "options.xml", error)) << error;
  EXPECT_EQ(reread.Get("NUnit", "NUnitLocation", "?"), "/usr/lib/nunit/nunit-console.exe");
}

TEST(NUnitActionFrame, ChoiceEnablesItsControlsAndRoundTrips) {
  TWrenNUnitAction action;
  action.Assemblies = {"a.dll", "b.dll"};
  action.Fixture = "Ns.Fixture";
  TNUnitActionFrame page;
  page.ReadActionData(action);
  EXPECT_TRUE(page.rbAssemblies.checked && page.mmAssemblies.enabled);
  EXPECT_FALSE(page.edProjectFile.enabled);
  std::string message;
  EXPECT_TRUE(page.CheckPage(message));

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
  EXPECT_EQ(written.ProjectFile, "all.nunit");
  EXPECT_EQ(written.Assemblies, action.Assemblies);
  EXPECT_EQ(written.Fixture, "Ns.Fixture");
}

}  // namespace
}  // namespace wren
