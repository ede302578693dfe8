#include "sdktools/WrenDotNetALAction.h"

#include <filesystem>

#include "SdkToolTestKit_test.h"
#include "sdktools/WrenDotNetASPdotNETIISRegAction.h"
#include "sdktools/WrenDotNetSNAction.h"

namespace wren::test {
namespace {

using ALActionTest = TSdkToolTest;

TEST_F(ALActionTest, CommandLines) {
  CheckCommandCases(
      [] { return std::make_unique<TALGenericAL>(); },
      {
          {"options passed as written",
           {{"Options", R"(/out:"%WORK%/My App.dll" /embed:a.resources)"}, {"StartDir", "%WORK%"}},
           true,
           R"(/out:"{W}/My App.dll" /embed:a.resources)",
           {"/out:{W}/My App.dll", "/embed:a.resources"},
           "",
           "{W}"},
          {"empty options", {{"StartDir", "%WORK%"}}, true, "", {}, "", "{W}"},
          {"options fail to expand", {{"Options", "%NO_SUCH_VARIABLE%"}, {"StartDir", "%WORK%"}},
           false, "", {}, "\"Options\""},
      });
}

// The three free-command-line actions: a working folder that expands to blank is a warning, and
// the tool still runs, in the host's own directory.
TEST_F(ALActionTest, BlankWorkingFolderWarnsAndRuns) {
  std::vector<std::unique_ptr<TWrenDotNetAction>> actions;
  actions.push_back(std::make_unique<TALGenericAL>());
  actions.push_back(std::make_unique<TSNGenericSN>());
  actions.push_back(std::make_unique<TASPIISRegGeneric>());
  for (auto& action : actions) {
    SCOPED_TRACE(action->ClassName());
    const std::string tool = InstallTool(*action);
    UseFixtureSDK(*action);
    ApplySettings(*action, {{"Options", "/help"}, {"StartDir", "%EMPTY%"}});
    const TStepRun run = Run(*action);
    EXPECT_TRUE(run.Logged("Warning: working directory is blank"));
    EXPECT_TRUE(run.success);
    ASSERT_FALSE(run.call.is_null()) << "the tool did not run";
    std::error_code ec;
    EXPECT_TRUE(std::filesystem::equivalent(run.call["cwd"].get<std::string>(),
                                            std::filesystem::current_path(), ec));
  }
}

TEST_F(ALActionTest, ValidationWantsTheWorkingFolderOnly) {
  CheckValidation([] { return std::make_unique<TALGenericAL>(); },
                  {{"nothing set", {}, {{"Working folder", "Working folder has not been set"}}},
                   {"options may be empty", {{"StartDir", "/tmp"}}, {}}});
}

}  // namespace
}  // namespace wren::test
