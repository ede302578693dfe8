#include "tools/WrenNAnt.h"

#include <gtest/gtest.h>

#include "ToolsTestKit_test.h"
#include "pages/WrenNAntFrames.h"
#include "tools/WrenNAntOptions.h"

namespace wren {
namespace {

using test::TempDir;

/// nant.exe (the recorder) and a build file, in folders with blanks in their names; the NAnt
/// options registered against a temporary options file name the tool.
class NAntActionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    nant_ = temp_ / "nant 0.92/bin/nant.exe";
    test::InstallRecorder(nant_);
    work_ = temp_ / "my project";
    test::WriteFile(work_ + "/default.build", "<project name=\"demo\" default=\"build\"/>\n");
    WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenNAntOptions>(), "NANTICON");
    ASSERT_NE(NAntOptions(), nullptr);
    NAntOptions()->SetNAntLocation(nant_);
  }

  test::TToolRun Run(const test::TSettings& settings) {
    TNAntAction action;
    test::ApplyProperties(action, settings);
    return test::RunAction(action, nant_, {{"WORK", work_}, {"CONFIG", "Release"}});
  }

  TempDir temp_;
  test::TOptionsScope options_{temp_ / "options.xml"};
  std::string nant_;
  std::string work_;
};

TEST_F(NAntActionTest, CommandLines) {
  const std::string buildFile = work_ + "/default.build";
  const std::string buildSwitch = "-buildfile:" + buildFile;
  struct Case {
    const char* name;
    test::TSettings settings;
    std::vector<std::string> args;
  } cases[] = {
      {"normal level and default indent add neither switch",
       {{"BuildFile", "%WORK%/default.build"}, {"LogLevel", "llNormal"}, {"IndentLevel", "iDefault"}},
       {buildSwitch}},
      {"every switch in its order",
       {{"BuildFile", "%WORK%/default.build"},
        {"LogLevel", "llVerbose"},
        {"Framework", "mono-4.5"},
        {"Properties", "config=%CONFIG%\nout dir=%WORK%/bin dir\nconfig=Debug"},
        {"OutputToLog", "true"},
        {"LogFile", "%WORK%/nant log.txt"},
        {"NoLogo", "true"},
        {"IndentLevel", "i3"},
        {"Targets", "clean  build test"},
        {"PropFile", "%WORK%/local.properties"}},
       {"-verbose", buildSwitch, "-defaultframework:mono-4.5", "-D:config=Release",
        "-D:out dir=" + work_ + "/bin dir",
        "-D:config=Release",  // a repeated name gets the value of its first line
        "-logfile:" + work_ + "/nant log.txt", "-nologo", "-indent:3", "clean", "build", "test"}},
      {"property lines without a name are skipped",
       {{"BuildFile", buildFile},
        {"Properties", "\n =blank name\nnovalue\n=x\nkept=1"},
        {"LogLevel", "llQuiet"},
        {"IndentLevel", "i0"}},
       {"-quiet", buildSwitch, "-D:kept=1", "-indent:0"}},
      {"debug level, deepest indent, log file only with OutputToLog",
       {{"BuildFile", buildFile},
        {"LogLevel", "llDebug"},
        {"IndentLevel", "i6"},
        {"LogFile", "unused.log"}},
       {"-debug", buildSwitch, "-indent:6"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const test::TToolRun run = Run(c.settings);
    EXPECT_TRUE(run.success);
    ASSERT_FALSE(run.call.is_null());
    EXPECT_EQ(run.Args(), c.args);
  }
}

TEST_F(NAntActionTest, StepEndsBeforeTheProcessStarts) {
  struct Case {
    const char* name;
    std::string location;
    test::TSettings settings;
    std::string message;  // "" : the host's expansion message
  } cases[] = {
      {"missing build file", nant_, {{"BuildFile", "%WORK%/missing.build"}},
       "Build file does not exist : " + work_ + "/missing.build"},
      {"nant.exe not where the options say", temp_ / "nowhere/nant.exe",
       {{"BuildFile", "%WORK%/default.build"}}, "NAnt.exe not found, check location in Options"},
      {"no location at all", "", {{"BuildFile", "%WORK%/default.build"}},
       "NAnt.exe not found, check location in Options"},
      {"a target that does not expand", nant_,
       {{"BuildFile", "%WORK%/default.build"}, {"Targets", "%NO_SUCH_WREN_VAR%"}},
       "\"Targets\""},
      {"a property value that does not expand", nant_,
       {{"BuildFile", "%WORK%/default.build"}, {"Properties", "a=%NO_SUCH_WREN_VAR%"}},
       "\"Value\""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    NAntOptions()->SetNAntLocation(c.location);
    const test::TToolRun run = Run(c.settings);
    EXPECT_FALSE(run.success);
    EXPECT_TRUE(run.call.is_null()) << "nant.exe must not start";
    EXPECT_TRUE(run.Logged(c.message)) << testing::PrintToString(run.log);
  }
}

TEST_F(NAntActionTest, Validation) {
  const std::string notDefined = "Path to nant.exe not defined, please check Tools->Options";
  const std::string notCorrect = "Path to nant.exe not correct, please check Tools->Options";
  using TReports = std::vector<std::pair<std::string, std::string>>;
  const struct {
    std::string location, buildFile;
    TReports reports;
  } cases[] = {
      {nant_, "default.build", {}},
      {"", "", {{"NAnt Options", notDefined}, {"Build File", "Build file has not been set"}}},
      {temp_ / "nowhere/nant.exe", "x.build", {{"Options", notCorrect}}},
  };
  for (const auto& c : cases) {
    NAntOptions()->SetNAntLocation(c.location);
    TNAntAction action;
    action.BuildFile = c.buildFile;
    test::TReportCollector errors;
    EXPECT_EQ(action.Validate(errors), c.reports.empty());
    EXPECT_EQ(errors.reports, c.reports) << c.location;
  }
}

TEST(WrenNAntOptions, StoredUnderItsKeyAndEditedOnItsPage) {
  TempDir temp;
  test::TOptionsScope scope(temp / "options.xml");
  WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenNAntOptions>(), "NANTICON");
  auto options = WrenOptionsServices().FindOptions("NAnt", "Build Tools");
  ASSERT_NE(options, nullptr);
  TNAntOptionsFrame page;
  page.edNAntLocation.text = "/opt/nant/bin/NAnt.exe";
  page.WriteOptions(*options);
  std::string error;
  ASSERT_TRUE(SaveModifiedOptions(error)) << error;
  TWrenOptionsStore reread;
  ASSERT_TRUE(reread.Load(temp / "options.xml", error)) << error;
  EXPECT_EQ(reread.Get("NAnt", "NAntLocation", "?"), "/opt/nant/bin/NAnt.exe");
  TNAntOptionsFrame again;
  again.ReadOptions(*options);
  EXPECT_EQ(again.edNAntLocation.text, "/opt/nant/bin/NAnt.exe");
}

TEST(NAntFrame, RoundTripsGridEnumerationsAndLogFileState) {
  TNAntAction action;
  action.BuildFile = "default.build";
  action.Properties = {"config=Release", "flag"};
  action.LogLevel = TNAntLogLevel::llDebug;
  action.IndentLevel = TNAntIndent::i2;
  TNAntFrame page;
  page.ReadActionData(action);
  EXPECT_EQ(page.cbLogLevel.Selected(), "Debug");
  EXPECT_EQ(page.cbIndentLevel.Selected(), "2");
  EXPECT_FALSE(page.edLogFile.enabled);
  page.SetOutputToLog(true);
  EXPECT_TRUE(page.edLogFile.enabled);
  page.Properties.rows.push_back({" ", "dropped"});
  page.cbIndentLevel.itemIndex = 0;
  TNAntAction written;
  page.WriteActionData(written);
  EXPECT_EQ(written.Properties, (TStrings{"config=Release", "flag="}));
  EXPECT_EQ(written.IndentLevel, TNAntIndent::iDefault);
  EXPECT_EQ(written.LogLevel, TNAntLogLevel::llDebug);
  EXPECT_TRUE(written.OutputToLog);
  std::string message;
  page.edBuildFile.text = "";
  EXPECT_FALSE(page.CheckPage(message));
  EXPECT_EQ(message, "Build File is required.");
}

}  // namespace
}  // namespace wren
