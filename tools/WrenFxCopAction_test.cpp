#include "tools/WrenFxCopAction.h"

#include <gtest/gtest.h>

#include "OutsideToolTestKit_test.h"
#include "pages/WrenFxCopFrames.h"
#include "tools/WrenFxCopOptions.h"

namespace wren {
namespace {

using FxCopActionTest = test::TOutsideToolTest<TWrenFxCopOptions>;

TEST_F(FxCopActionTest, CommandLinesAndStartingDirectory) {
  MakeWorkDirs({"bin/Release"});
  const std::string w = work_;
  ExpectCommandLines<TWrenFxCopAction>({
      {"a project with a report, as most builds run it",
       {{"UseProjectFile", "true"},
        {"ProjectFile", "%WORK%/Calc.FxCop"},
        {"OutputFile", "%WORK%/reports/fxcop report.xml"},
        {"Summary", "true"},
        {"Targets", "ignored.dll"}},
       {"/project:" + w + "/Calc.FxCop", "/out:" + w + "/reports/fxcop report.xml", "/summary"},
       w},
      {"every switch in its order",
       {{"Targets", "%WORK%/bin/%CONFIG%/Calc.dll\n\n%WORK%/bin/Calc Parser.dll"},
        {"RuleLibraries", "+%WORK%/Rules/DesignRules.dll\n-NamingRules.dll"},
        {"RuleIds", "-Microsoft.Design#CA1004"},
        {"Imports", "%WORK%/old report.xml"},
        {"DependencyDirectories", "%WORK%/lib\n/usr/lib/mono/4.5"},
        {"PlatformDirectory", "/usr/lib/mono/2.0"},
        {"Types", "Calc.*\n Calc.Parser "},
        {"OutputFile", "report.xml"},
        {"OutputXsl", "none"},
        {"ApplyOutputXsl", "true"},
        {"ToConsole", "true"},
        {"ConsoleXsl", "%WORK%/console.xsl"},
        {"Summary", "true"},
        {"Verbose", "true"},
        {"Quiet", "true"},
        {"ForceOutput", "true"},
        {"SearchGac", "true"},
        {"IgnoreGeneratedCode", "true"},
        {"Dictionary", "%WORK%/words.xml"},
        {"Timeout", "120"},
        {"ExtraSwitches", "/aspnet\n\n /successfile /iit"}},
       {"/file:" + w + "/bin/Release/Calc.dll",
        "/file:" + w + "/bin/Calc Parser.dll",
        "/rule:+" + w + "/Rules/DesignRules.dll",
        "/rule:-NamingRules.dll",
        "/ruleid:-Microsoft.Design#CA1004",
        "/import:" + w + "/old report.xml",
        "/directory:" + w + "/lib",
        "/directory:/usr/lib/mono/4.5",
        "/platform:/usr/lib/mono/2.0",
        "/types:Calc.*,Calc.Parser",
        "/out:report.xml",
        "/outxsl:none",
        "/applyoutxsl",
        "/console",
        "/consolexsl:" + w + "/console.xsl",
        "/summary",
        "/verbose",
        "/quiet",
        "/forceoutput",
        "/searchgac",
        "/ignoregeneratedcode",
        "/dictionary:" + w + "/words.xml",
        "/timeout:120",
        "/aspnet",
        "/successfile",
        "/iit"},
       w + "/bin/Release"},
      {"updating the project needs no other output",
       {{"UseProjectFile", "true"},
        {"ProjectFile", "%WORK%/Calc.FxCop"},
        {"UpdateProject", "true"}},
       {"/project:" + w + "/Calc.FxCop", "/update"},
       w},
      {"console output alone",
       {{"Targets", "Calc.dll"}, {"ToConsole", "true"}},
       {"/file:Calc.dll", "/console"},
       temp_ / "tool dir"},
  });
}

TEST_F(FxCopActionTest, StepEndsBeforeTheProcessStarts) {
  ExpectNeverStarts<TWrenFxCopAction>({
      {"a target that does not expand",
       {{"Targets", "%NO_SUCH_WREN_VAR%/a.dll"}, {"ToConsole", "true"}},
       "\"Target\""},
      {"a report that does not expand",
       {{"Targets", "a.dll"}, {"OutputFile", "%NO_SUCH_WREN_VAR%"}},
       "\"Output File\""},
      {"an extra switch that does not expand",
       {{"Targets", "a.dll"}, {"ToConsole", "true"}, {"ExtraSwitches", "/x:%NO_SUCH_WREN_VAR%"}},
       "\"Extra Switch\""},
      {"nowhere to report", {{"Targets", "Calc.dll"}}, "FxCop needs somewhere to report"},
      {"update without a project",
       {{"Targets", "a.dll"}, {"ToConsole", "true"}, {"UpdateProject", "true"}},
       "Updating the project needs an FxCop project file"},
      {"failing on messages without a report",
       {{"Targets", "a.dll"}, {"ToConsole", "true"}, {"FailOnMessages", "true"}},
       "Failing on messages needs an output file"},
  });
}

TEST_F(FxCopActionTest, ExitFlagsAreLoggedByNameAndJudged) {
  // Through the process: only the low eight bits survive a POSIX exit status.
  const std::vector<std::tuple<int, bool, std::vector<std::string>>> processCases = {
      {0, true, {}},
      {0x9, false, {"FxCop: analysis error (0x1)", "FxCop: assembly load error (0x8)"}},
      {0x80, false, {"FxCop: command line switch error (0x80)", "exit code 0x80"}},
  };
  for (const auto& [code, success, messages] : processCases) {
    SCOPED_TRACE(code);
    RecorderExits(code);
    TWrenFxCopAction action;
    const test::TToolRun run = Run(action, {{"Targets", "a.dll"}, {"ToConsole", "true"}});
    ASSERT_FALSE(run.call.is_null());
    EXPECT_EQ(run.success, success);
    for (const std::string& m : messages)
      EXPECT_TRUE(run.Logged(m)) << testing::PrintToString(run.log);
  }
  // The wider flags, judged directly.
  const std::vector<std::tuple<int32_t, bool, bool, std::vector<std::string>>> cases = {
      {0x200, false, true, {"assembly references error (0x200)", "Warning: "}},
      {0x200, true, false, {"assembly references error (0x200)", "exit code 0x200"}},
      {0x204, false, false, {"project load error (0x4)", "assembly references error (0x200)"}},
      {0x400, false, false, {"build-breaking message (0x400)"}},
      {0x1000000, false, false, {"unknown error (0x1000000)"}},
      {0x801, false, false, {"analysis error (0x1)", "unknown flags (0x800)"}},
  };
  for (const auto& [code, referenceErrorsFail, success, messages] : cases) {
    SCOPED_TRACE(code);
    TWrenFxCopAction action;
    action.ReferenceErrorsFail = referenceErrorsFail;
    const test::TToolRun run = Judge(action, code);
    EXPECT_EQ(run.success, success);
    for (const std::string& m : messages)
      EXPECT_TRUE(run.Logged(m)) << testing::PrintToString(run.log);
  }
}

TEST_F(FxCopActionTest, FailOnMessagesReadsThisRunsReport) {
  const std::string report = work_ + "/bin/fxcop.xml";
  const std::string withMessages =
      "<FxCopReport Version=\"1.36\"><Targets><Target Name=\"Calc.dll\"><Modules><Module>"
      "<Messages><Message CheckId=\"CA1004\"><Issue Level=\"Warning\">x</Issue></Message>"
      "<Message CheckId=\"CA1709\"><Issue Level=\"Error\">y</Issue></Message></Messages>"
      "</Module></Modules></Target></Targets></FxCopReport>";
  test::WriteFile(report, withMessages);  // left by an earlier run
  TWrenFxCopAction action;
  test::TToolRun run = Run(action, {{"Targets", "%WORK%/bin/Calc.dll"},
                                    {"OutputFile", "fxcop.xml"},
                                    {"FailOnMessages", "true"}});
  EXPECT_TRUE(run.success) << testing::PrintToString(run.log);
  EXPECT_FALSE(test::Exists(report)) << "the stale report is removed before FxCop runs";

  // The report is found relative to the folder FxCop ran in.
  const std::vector<std::tuple<std::string, bool, std::string>> reports = {
      {withMessages, false, "FxCop reported 2 message(s)"},
      {"<FxCopReport Version=\"1.36\"><Targets/></FxCopReport>", true, ""},
      {"<FxCopReport", false, "Could not read the FxCop report"},
  };
  for (const auto& [text, success, message] : reports) {
    test::WriteFile(report, text);
    run = Judge(action, 0);
    EXPECT_EQ(run.success, success) << text;
    if (!message.empty()) {
      EXPECT_TRUE(run.Logged(message)) << testing::PrintToString(run.log);
    }
  }
  action.FailOnMessages = false;
  test::WriteFile(report, withMessages);
  EXPECT_TRUE(Judge(action, 0).success) << "messages alone do not fail a step that does not ask";
}

TEST_F(FxCopActionTest, Validation) {
  ExpectValidation<TWrenFxCopAction>({
      {tool_, {{"Targets", "a.dll"}, {"OutputFile", "r.xml"}}, {}},
      {"",
       {},
       {{"FxCop Options", "Path to FxCopCmd.exe not defined, please check Tools->Options"},
        {"Targets", "Target assemblies have not been set"},
        {"Output File", "Output file has not been set"}}},
      {temp_ / "nowhere/FxCopCmd.exe",
       {{"UseProjectFile", "true"}, {"Targets", "a.dll"}, {"UpdateProject", "true"}},
       {{"Options", "Path to FxCopCmd.exe not correct, please check Tools->Options"},
        {"Project File", "Project file has not been set"}}},
      {tool_,
       {{"Targets", "a.dll"}, {"ToConsole", "true"}, {"FailOnMessages", "true"}},
       {{"Output File", "Output file has not been set"}}},
  });
}

TEST(FxCopFrames, EveryPageRoundTripsItsProperties) {
  TFrameFxCopTargets targets;
  TFrameFxCopRules rules;
  TFrameFxCopOptions options;
  TFrameFxCopTypesAndMembers types;
  TFrameFxCopAdditional additional;
  test::ExpectPagesRoundTrip<TWrenFxCopAction>({{"UseProjectFile", "true"},
                                                {"ProjectFile", "a.FxCop"},
                                                {"Targets", "a.dll"},
                                                {"DependencyDirectories", "lib"},
                                                {"PlatformDirectory", "p"},
                                                {"SearchGac", "true"},
                                                {"Imports", "old.xml"},
                                                {"RuleLibraries", "+r.dll"},
                                                {"RuleIds", "-X#CA1"},
                                                {"Dictionary", "d.xml"},
                                                {"OutputFile", "o.xml"},
                                                {"OutputXsl", "s.xsl"},
                                                {"ApplyOutputXsl", "true"},
                                                {"ForceOutput", "true"},
                                                {"ToConsole", "true"},
                                                {"ConsoleXsl", "c.xsl"},
                                                {"Summary", "true"},
                                                {"Verbose", "true"},
                                                {"Quiet", "true"},
                                                {"UpdateProject", "true"},
                                                {"IgnoreGeneratedCode", "true"},
                                                {"Timeout", "30"},
                                                {"Types", "A.*"},
                                                {"ExtraSwitches", "/aspnet"},
                                                {"ReferenceErrorsFail", "true"},
                                                {"FailOnMessages", "true"}},
                                               {&targets, &rules, &options, &types, &additional});
  EXPECT_FALSE(targets.mmTargets.enabled);  // the project is chosen

  std::string message;
  targets.SetUseProjectFile(false);
  targets.mmTargets.lines = {" "};
  EXPECT_FALSE(targets.CheckPage(message));
  EXPECT_EQ(message, "At least one target assembly is required.");
  options.edOutputFile.text = options.edConsoleXsl.text = "";
  options.cbToConsole.checked = options.cbUpdateProject.checked = false;
  EXPECT_FALSE(options.CheckPage(message));
  EXPECT_EQ(message, "A report file or console output is required.");
}

}  // namespace
}  // namespace wren
