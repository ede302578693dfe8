#include "tools/WrenNAnt.h"

#include <gtest/gtest.h>

#include "ToolsTestKit_test.h"
#include "pages/WrenNAntFrames.h"
#include "tools/WrenNAntOptions.h"

namespace wren {
namespace {

/// nant.exe (the recorder) and a build file, in folders with blanks in their names; the NAnt
/// options registered against a temporary options file name the tool.
class NAntActionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    test::InstallRecorder(nant_);
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

  test::TempDir temp_;
  test::TOptionsScope options_{temp_ / "options.xml"};
  const std::string nant_ = temp_ / "nant 0.92/bin/nant.exe", work_ = temp_ / "my project";
  const std::pair<std::string, std::string> buildFile_ = {"BuildFile", "%WORK%/default.build"};
};

TEST_F(NAntActionTest, CommandLines) {
  const std::string build = "-buildfile:" + work_ + "/default.build";
  const std::vector<std::tuple<const char*, test::TSettings, std::vector<std::string>>> cases = {
      {"normal level and default indent add neither switch",
       {buildFile_, {"LogLevel", "llNormal"}, {"IndentLevel", "iDefault"}}, {build}},
      {"every switch in its order",
       {buildFile_, {"LogLevel", "llVerbose"}, {"Framework", "mono-4.5"},
        {"Properties", "config=%CONFIG%\nout dir=%WORK%/bin dir\nconfig=Debug"},
        {"OutputToLog", "true"}, {"LogFile", "%WORK%/nant log.txt"}, {"NoLogo", "true"},
        {"IndentLevel", "i3"}, {"Targets", "clean  build test"},
        {"PropFile", "%WORK%/local.properties"}},
       {"-verbose", build, "-defaultframework:mono-4.5", "-D:config=Release",
        "-D:out dir=" + work_ + "/bin dir",
        "-D:config=Release",  // a repeated name gets the value of its first line
        "-logfile:" + work_ + "/nant log.txt", "-nologo", "-indent:3", "clean", "build", "test"}},
      {"property lines without a name are skipped; a build file needing no expansion",
       {{"BuildFile", work_ + "/default.build"}, {"LogLevel", "llQuiet"}, {"IndentLevel", "i0"},
        {"Properties", "\n =blank name\nnovalue\n=x\nkept=1"}},
       {"-quiet", build, "-D:kept=1", "-indent:0"}},
      {"debug level, deepest indent, log file only with OutputToLog",
       {buildFile_, {"LogLevel", "llDebug"}, {"IndentLevel", "i6"}, {"LogFile", "unused.log"}},
       {"-debug", build, "-indent:6"}},
  };
  for (const auto& [name, settings, args] : cases) {
    SCOPED_TRACE(name);
    const test::TToolRun run = Run(settings);
    EXPECT_TRUE(run.success);
    ASSERT_FALSE(run.call.is_null());
    EXPECT_EQ(run.Args(), args);
  }
}

TEST_F(NAntActionTest, StepEndsBeforeTheProcessStarts) {
  const std::string notFound = "NAnt.exe not found, check location in Options";
  const std::vector<std::tuple<const char*, std::string, test::TSettings, std::string>> cases = {
      {"missing build file", nant_, {{"BuildFile", "%WORK%/missing.build"}},
       "Build file does not exist : " + work_ + "/missing.build"},
      {"nant.exe not where the options say", temp_ / "nowhere/nant.exe", {buildFile_}, notFound},
      {"no location at all", "", {buildFile_}, notFound},
      {"a target that does not expand", nant_, {buildFile_, {"Targets", "%NO_SUCH_WREN_VAR%"}},
       "\"Targets\""},
      {"a property value that does not expand", nant_,
       {buildFile_, {"Properties", "a=%NO_SUCH_WREN_VAR%"}}, "\"Value\""},
  };
  for (const auto& [name, location, settings, message] : cases) {
    SCOPED_TRACE(name);
    NAntOptions()->SetNAntLocation(location);
    const test::TToolRun run = Run(settings);
    EXPECT_FALSE(run.success);
    EXPECT_TRUE(run.call.is_null()) << "nant.exe must not start";
    EXPECT_TRUE(run.Logged(message)) << testing::PrintToString(run.log);
  }
}

TEST_F(NAntActionTest, ValidationAndTheOptionsPage) {
  using TReports = std::vector<std::pair<std::string, std::string>>;
  const std::vector<std::tuple<std::string, std::string, TReports>> cases = {
      {nant_, "default.build", {}},
      {"", "", {{"NAnt Options", "Path to nant.exe not defined, please check Tools->Options"},
                {"Build File", "Build file has not been set"}}},
      {temp_ / "nowhere/nant.exe", "x.build",
       {{"Options", "Path to nant.exe not correct, please check Tools->Options"}}},
  };
  for (const auto& [location, buildFile, reports] : cases) {
    NAntOptions()->SetNAntLocation(location);
    TNAntAction action;
    action.BuildFile = buildFile;
    test::TReportCollector errors;
    EXPECT_EQ(action.Validate(errors), reports.empty());
    EXPECT_EQ(errors.reports, reports) << location;
  }
  // The options page writes the location, which is stored under the options' key.
  auto options = WrenOptionsServices().FindOptions("NAnt", "Build Tools");
  ASSERT_NE(options, nullptr);
  TNAntOptionsFrame page, again;
  page.edNAntLocation.text = "/opt/nant/bin/NAnt.exe";
  page.WriteOptions(*options);
  again.ReadOptions(*options);
  EXPECT_EQ(again.edNAntLocation.text, "/opt/nant/bin/NAnt.exe");
  EXPECT_EQ(test::SavedOption(temp_ / "options.xml", "NAnt", "NAntLocation"),
            "/opt/nant/bin/NAnt.exe");
}

TEST(NAntFrame, RoundTripsGridEnumerationsAndLogFileState) {
  TNAntAction action;
  action.Properties = {"config=Release", "flag"};
  action.LogLevel = TNAntLogLevel::llDebug;
  action.IndentLevel = TNAntIndent::i2;
  TNAntFrame page;
  page.ReadActionData(action);
  EXPECT_EQ(page.cbLogLevel.Selected() + "|" + page.cbIndentLevel.Selected(), "Debug|2");
  EXPECT_FALSE(page.edLogFile.enabled);
  page.SetOutputToLog(true);
  EXPECT_TRUE(page.edLogFile.enabled);
  page.Properties.rows.push_back({" ", "dropped"});  // rows without a name are not stored
  page.cbIndentLevel.itemIndex = 0;
  TNAntAction written;
  page.WriteActionData(written);
  EXPECT_EQ(written.Properties, (TStrings{"config=Release", "flag="}));
  EXPECT_TRUE(written.IndentLevel == TNAntIndent::iDefault && written.OutputToLog);
  EXPECT_EQ(written.LogLevel, TNAntLogLevel::llDebug);
  std::string message;
  EXPECT_FALSE(page.CheckPage(message));
  EXPECT_EQ(message, "Build File is required.");
}

}  // namespace
}  // namespace wren
