// The free-command-line actions: Run AL.EXE, Run SN.EXE and Run ASPNET_REGIIS.EXE.
#include "sdktools/WrenDotNetFreeCommandLine.h"

#include "SdkToolTestKit_test.h"
#include "sdktools/WrenDotNetALAction.h"
#include "sdktools/WrenDotNetASPdotNETIISRegAction.h"
#include "sdktools/WrenDotNetSNAction.h"

namespace wren::test {

using FreeCommandLineTest = TSdkToolTest;

TEST_F(FreeCommandLineTest, OptionsAsWrittenAndTheWorkingFolderRequired) {
  CheckCommandCases<TALGenericAL>(
      {{"AL options as written",
        R"(Options=/out:"%WORK%/My App.dll" /embed:a.resources|StartDir=%WORK%)",
        R"(/out:"{W}/My App.dll" /embed:a.resources)",
        {"/out:{W}/My App.dll", "/embed:a.resources"}, "{W}"},
       {"empty options still run", "StartDir=%WORK%", "", {}, "{W}"}},
      {{"Options=%NO_SUCH_VARIABLE%|StartDir=%WORK%", "\"Options\""}});
  CheckCommandCases<TSNGenericSN>(
      {{"SN options as written", R"(Options=-k "%WORK%/gen key.snk"|StartDir=%WORK%)",
        R"(-k "{W}/gen key.snk")", {"-k", "{W}/gen key.snk"}, "{W}"}},
      {{"Options=%NO_SUCH_VARIABLE%", "\"Options\""}});
  CheckCommandCases<TASPIISRegGeneric>(
      {{"IIS options as written", R"(Options=-s "W3SVC/1/ROOT/My App"|StartDir=%WORK%)",
        R"(-s "W3SVC/1/ROOT/My App")", {"-s", "W3SVC/1/ROOT/My App"}, "{W}"}},
      {{"Options=%NO_SUCH_VARIABLE%", "\"Options\""}});

  const std::string folder = "Working folder: Working folder has not been set";
  CheckValidation<TALGenericAL>({{"", {folder}}, {"StartDir=/tmp", {}}});
  CheckValidation<TASPIISRegGeneric>({{"", {folder}}, {"StartDir=/tmp", {}}});
  CheckValidation<TSNGenericSN>(
      {{"", {"Starting directory: Starting directory has not been set"}}, {"StartDir=/tmp", {}}});
}

// A working folder expanding to blank is a warning; the tool still runs, in the host's directory.
TEST_F(FreeCommandLineTest, BlankWorkingFolderWarnsAndRuns) {
  std::unique_ptr<TWrenDotNetAction> actions[] = {
      std::make_unique<TALGenericAL>(), std::make_unique<TSNGenericSN>(),
      std::make_unique<TASPIISRegGeneric>()};
  for (auto& action : actions) {
    SCOPED_TRACE(action->ClassName());
    InstallTool(*action);
    const TStepRun run = Run(*action, "Options=/help|StartDir=%EMPTY%");
    EXPECT_TRUE(run.Logged("Warning: working directory is blank"));
    EXPECT_TRUE(run.success);
    ASSERT_FALSE(run.call.is_null()) << "the tool did not run";
    EXPECT_TRUE(std::filesystem::equivalent(run.call["cwd"].get<std::string>(),
                                            std::filesystem::current_path()));
  }
}

// The IIS tool fails the run with any line of output, whatever it says, and with a non-zero exit
// code; the output is still logged.
TEST_F(FreeCommandLineTest, IISOutputAndExitCodeJudgeTheRun) {
  const std::string tool = InstallTool(TASPIISRegGeneric());
  using TCase = std::tuple<std::string, std::string, int, bool>;  // stdout, stderr, exit, verdict
  const TCase cases[] = {
      {"", "", 0, true}, {"Finished installing ASP.NET.\n", "", 0, false},
      {"Invalid arguments\n", "", 0, false}, {"", "warning\n", 0, false}, {"", "", 1, false}};
  for (const auto& [out, err, exitCode, success] : cases) {
    SCOPED_TRACE(out + err + " exit " + std::to_string(exitCode));
    WriteFile(tool + ".recorder.json",
              nlohmann::json{{"stdout", out}, {"stderr", err}, {"exit", exitCode}}.dump());
    TASPIISRegGeneric action;
    const TStepRun run = Run(action, "Options=-i|StartDir=%WORK%");
    ASSERT_FALSE(run.call.is_null());
    EXPECT_EQ(run.success, success);
    EXPECT_TRUE((out + err).empty() || run.Logged(Trim(out + err))) << "the output is not logged";
  }
}

}  // namespace wren::test
