#include "tools/WrenXenoCodeAction.h"

#include <gtest/gtest.h>

#include "OutsideToolTestKit_test.h"
#include "pages/WrenXenoCodeFrames.h"
#include "tools/WrenXenoCodeOptions.h"

namespace wren {
namespace {

using XenoCodeActionTest = test::TOutsideToolTest<TWrenXenoCodeOptions>;

TEST_F(XenoCodeActionTest, SwitchesAsWrittenThenTheProject) {
  MakeWorkDirs({"pack"});
  const std::string w = work_;
  TWrenXenoCodeAction action;
  test::TToolRun run = Run(action, {{"ProjectFile", "%WORK%/pack/Calc %CONFIG%.xcproj"},
                                    {"ExtraSwitches", "/quiet\n\n/out:\"%WORK%/dist\" /v2"}});
  EXPECT_TRUE(run.success) << testing::PrintToString(run.log);
  EXPECT_EQ(run.Args(), (std::vector<std::string>{"/quiet", "/out:" + w + "/dist", "/v2",
                                                  w + "/pack/Calc Release.xcproj"}));
  EXPECT_TRUE(RanIn(run, w + "/pack")) << run.call.dump();

  RecorderExits(4);
  TWrenXenoCodeAction failing;
  run = Run(failing, {{"ProjectFile", "a.xcproj"}});
  EXPECT_FALSE(run.success);
  EXPECT_TRUE(run.Logged("XenoCode failed with exit code 4"));

  TWrenXenoCodeAction unexpanded;
  run = Run(unexpanded, {{"ProjectFile", "%NO_SUCH_WREN_VAR%"}});
  EXPECT_FALSE(run.success);
  EXPECT_TRUE(run.call.is_null());
  EXPECT_TRUE(run.Logged("\"Project File\"")) << testing::PrintToString(run.log);
}

TEST_F(XenoCodeActionTest, ValidationAndPage) {
  options_->SetLocation(temp_ / "nowhere.exe");
  TWrenXenoCodeAction action;
  test::TReportCollector errors;
  EXPECT_FALSE(action.Validate(errors));
  EXPECT_EQ(errors.reports,
            (std::vector<std::pair<std::string, std::string>>{
                {"Options", "Path to Xenocode's program not correct, please check Tools->Options"},
                {"Project File", "Project file has not been set"}}));
  EXPECT_NE(action.GetNotes().find("not publicly documented"), std::string::npos);

  test::ApplyProperties(action, {{"ProjectFile", "a.xcproj"}, {"ExtraSwitches", "/x"}});
  TWrenXenoCodeAction copy;
  TXenoCodeFrame page;
  page.ReadActionData(action);
  page.WriteActionData(copy);
  for (const TPublishedProperty& p : TWrenXenoCodeAction::ClassProperties())
    EXPECT_TRUE(p.get(action) == p.get(copy)) << p.name;
}

}  // namespace
}  // namespace wren
