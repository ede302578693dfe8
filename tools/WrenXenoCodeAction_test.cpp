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
  ExpectCommandLines<TWrenXenoCodeAction>(
      {{"switches as written, then the project",
        {{"ProjectFile", "%WORK%/pack/Calc %CONFIG%.xcproj"},
         {"ExtraSwitches", "/quiet\n\n/out:\"%WORK%/dist\" /v2"}},
        {"/quiet", "/out:" + w + "/dist", "/v2", w + "/pack/Calc Release.xcproj"},
        w + "/pack"}});
  ExpectExitCodes<TWrenXenoCodeAction>({{"ProjectFile", "a.xcproj"}},
                                       {{4, false, "XenoCode failed with exit code 4"}});
  ExpectNeverStarts<TWrenXenoCodeAction>({{"a project that does not expand",
                                           {{"ProjectFile", "%NO_SUCH_WREN_VAR%"}},
                                           "\"Project File\""}});
}

TEST_F(XenoCodeActionTest, ValidationAndPage) {
  ExpectValidation<TWrenXenoCodeAction>(
      {{temp_ / "nowhere.exe",
        {},
        {{"Options", "Path to Xenocode's program not correct, please check Tools->Options"},
         {"Project File", "Project file has not been set"}}}});
  EXPECT_NE(TWrenXenoCodeAction().GetNotes().find("not publicly documented"), std::string::npos);

  TXenoCodeFrame page;
  test::ExpectPagesRoundTrip<TWrenXenoCodeAction>(
      {{"ProjectFile", "a.xcproj"}, {"ExtraSwitches", "/x"}}, {&page});
}

}  // namespace
}  // namespace wren
