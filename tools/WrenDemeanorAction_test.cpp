#include "tools/WrenDemeanorAction.h"

#include <gtest/gtest.h>

#include "OutsideToolTestKit_test.h"
#include "pages/WrenDemeanorFrames.h"
#include "tools/WrenDemeanorOptions.h"

namespace wren {
namespace {

using DemeanorActionTest = test::TOutsideToolTest<TWrenDemeanorOptions>;

TEST_F(DemeanorActionTest, SwitchesAsWrittenBetweenOutputAndInput) {
  MakeWorkDirs({"bin/Release"});
  const std::string w = work_;
  const std::vector<std::tuple<test::TSettings, std::vector<std::string>>> cases = {
      {{{"InputAssembly", "%WORK%/bin/%CONFIG%/Calc App.exe"},
        {"OutputDirectory", "%WORK%/obfuscated"},
        // Written as the tool reads them: a path with blanks is quoted by the user.
        {"ExtraSwitches", "/es\n/r:\"%WORK%/Demeanor.xml\" /sa\n\n/app"}},
       {"/out:" + w + "/obfuscated", "/es", "/r:" + w + "/Demeanor.xml", "/sa", "/app",
        w + "/bin/Release/Calc App.exe"}},
      {{{"InputAssembly", "%WORK%/bin/Release/Calc App.exe"}}, {w + "/bin/Release/Calc App.exe"}},
  };
  for (const auto& [settings, args] : cases) {
    TWrenDemeanorAction action;
    const test::TToolRun run = Run(action, settings);
    EXPECT_TRUE(run.success) << testing::PrintToString(run.log);
    EXPECT_EQ(run.Args(), args);
    EXPECT_TRUE(RanIn(run, w + "/bin/Release")) << run.call.dump();
  }

  RecorderExits(1);
  TWrenDemeanorAction failing;
  test::TToolRun run = Run(failing, {{"InputAssembly", "a.exe"}});
  EXPECT_FALSE(run.success);
  EXPECT_TRUE(run.Logged("Demeanor failed with exit code 1"));

  TWrenDemeanorAction unexpanded;
  run = Run(unexpanded, {{"InputAssembly", "a.exe"}, {"ExtraSwitches", "/c:%NO_SUCH_WREN_VAR%"}});
  EXPECT_FALSE(run.success);
  EXPECT_TRUE(run.call.is_null());
  EXPECT_TRUE(run.Logged("\"Extra Switch\"")) << testing::PrintToString(run.log);
}

TEST_F(DemeanorActionTest, ValidationPagesAndNotes) {
  options_->SetLocation("");
  TWrenDemeanorAction action;
  test::TReportCollector errors;
  EXPECT_FALSE(action.Validate(errors));
  EXPECT_EQ(
      errors.reports,
      (std::vector<std::pair<std::string, std::string>>{
          {"Demeanor Options", "Path to Demeanor.exe not defined, please check Tools->Options"},
          {"Input Assembly", "Input assembly has not been set"}}));
  EXPECT_NE(action.GetNotes().find("not publicly documented"), std::string::npos);

  test::ApplyProperties(
      action,
      {{"InputAssembly", "a.exe"}, {"OutputDirectory", "out"}, {"ExtraSwitches", "/es\n/sa"}});
  TWrenDemeanorAction copy;
  TDemeanorPEFrame pe;
  TDemeanorExcludeFrame exclude;
  for (TFrame* page : std::vector<TFrame*>{&pe, &exclude}) {
    page->ReadActionData(action);
    page->WriteActionData(copy);
  }
  for (const TPublishedProperty& p : TWrenDemeanorAction::ClassProperties())
    EXPECT_TRUE(p.get(action) == p.get(copy)) << p.name;
  pe.edInputAssembly.text = " ";
  std::string message;
  EXPECT_FALSE(pe.CheckPage(message));
  EXPECT_EQ(message, "Input Assembly is required.");
}

}  // namespace
}  // namespace wren
