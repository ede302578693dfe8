#include "sdktools/WrenDotNetASPdotNETIISRegAction.h"

#include "SdkToolTestKit_test.h"

namespace wren::test {
namespace {

using IISRegActionTest = TSdkToolTest;

TEST_F(IISRegActionTest, CommandLines) {
  CheckCommandCases(
      [] { return std::make_unique<TASPIISRegGeneric>(); },
      {
          {"options passed as written",
           {{"Options", R"(-s "W3SVC/1/ROOT/My App")"}, {"StartDir", "%WORK%"}},
           true,
           R"(-s "W3SVC/1/ROOT/My App")",
           {"-s", "W3SVC/1/ROOT/My App"},
           "",
           "{W}"},
          {"options fail to expand", {{"Options", "%NO_SUCH_VARIABLE%"}}, false, "", {},
           "\"Options\""},
      });
}

// Any line of output fails the run, whatever it says, and so does a non-zero exit code.
TEST_F(IISRegActionTest, OutputAndExitCodeJudgeTheRun) {
  struct TCase {
    const char* name;
    const char* stdoutText;
    const char* stderrText;
    int exitCode;
    bool success;
  };
  const std::string tool = InstallTool(TASPIISRegGeneric());
  for (const TCase& c : {
           TCase{"silent, exit 0", "", "", 0, true},
           TCase{"one ordinary line on stdout, exit 0", "Finished installing ASP.NET.\n", "", 0,
                 false},
           TCase{"Invalid arguments on stdout, exit 0", "Invalid arguments\n", "", 0, false},
           TCase{"a line on stderr, exit 0", "", "warning\n", 0, false},
           TCase{"silent, exit 1", "", "", 1, false},
       }) {
    SCOPED_TRACE(c.name);
    ConfigureTool(tool, {{"stdout", c.stdoutText}, {"stderr", c.stderrText}, {"exit", c.exitCode}});
    TASPIISRegGeneric action;
    UseFixtureSDK(action);
    action.Options = "-i";
    action.StartDir = "%WORK%";
    const TStepRun run = Run(action);
    ASSERT_FALSE(run.call.is_null());
    EXPECT_EQ(run.success, c.success);
    if (*c.stdoutText) {
      EXPECT_TRUE(run.Logged(c.stdoutText[0] == 'I' ? "Invalid arguments" : "Finished"))
          << "output is still logged";
    }
  }
}

TEST_F(IISRegActionTest, ValidationWantsTheWorkingFolderOnly) {
  CheckValidation([] { return std::make_unique<TASPIISRegGeneric>(); },
                  {{"nothing set", {}, {{"Working folder", "Working folder has not been set"}}},
                   {"options may be empty", {{"StartDir", "/tmp"}}, {}}});
}

}  // namespace
}  // namespace wren::test
