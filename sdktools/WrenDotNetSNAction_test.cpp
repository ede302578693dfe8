#include "sdktools/WrenDotNetSNAction.h"

#include "SdkToolTestKit_test.h"

namespace wren::test {

using SNActionTest = TSdkToolTest;

// Generate, verify and install stop at their one rule.
TEST_F(SNActionTest, GenerateVerifyInstall) {
  CheckCommandCases<TSNGenerateKeyPair>(
      {{"key file with a blank", "OutputFile=%WORK%/key pair.snk", R"(-k "{W}/key pair.snk")",
        {"-k", "{W}/key pair.snk"}}},
      {{"OutputFile=%EMPTY%", "\"Output File\""}});
  CheckCommandCases<TSNVerifyAssembly>(
      {{"verify", "Assembly=Core.dll", "-v Core.dll", {"-v", "Core.dll"}},
       {"forced", "Assembly=%WORK%/My Lib.dll|Force=true", R"(-vf "{W}/My Lib.dll")",
        {"-vf", "{W}/My Lib.dll"}}},
      {{"Assembly=%EMPTY%", "\"Assembly\""}});
  CheckCommandCases<TSNInstallKeyPair>(
      {{"key file and container", "KeyFile=%WORK%/key pair.snk|ContainerFile=Build Keys",
        R"(-i "{W}/key pair.snk" "Build Keys")", {"-i", "{W}/key pair.snk", "Build Keys"}}},
      {{"KeyFile=k.snk|ContainerFile=%EMPTY%", "\"Container File\""}});
  CheckValidation<TSNGenerateKeyPair>({{"", {"Output file: Output filename has not been set"}}});
  CheckValidation<TSNVerifyAssembly>({{"", {"Assembly: Assembly filename has not been set"}}});
  CheckValidation<TSNInstallKeyPair>(
      {{"", {"Key file: Key filename has not been set"}}, {"KeyFile=k.snk", {}}});
}

TEST_F(SNActionTest, VerifyVerdictFollowsFailIfValid) {
  const std::string tool = InstallTool(TSNVerifyAssembly());
  const std::tuple<std::string, int, bool> cases[] = {  // FailIfValid, exit code, verdict
      {"false", 0, true}, {"false", 1, false}, {"true", 1, true}, {"true", 0, false},
      {"true", 3, true}};
  for (const auto& [flag, exitCode, success] : cases) {
    SCOPED_TRACE("FailIfValid=" + flag + " exit=" + std::to_string(exitCode));
    WriteFile(tool + ".recorder.json", nlohmann::json{{"exit", exitCode}}.dump());
    TSNVerifyAssembly action;
    const TStepRun run = Run(action, "Assembly=Core.dll|FailIfValid=" + flag);
    ASSERT_FALSE(run.call.is_null());
    EXPECT_EQ(run.success, success);
  }
}

// Every gap is reported; the pairing is refused only when the command line is built.
TEST_F(SNActionTest, ExtractPairingsAndRefusals) {
  const std::string refusal = "The options for the infile and outfile are not valid";
  const std::string toCSV = "ExtractFromType=extractFromAssembly|ExtractToType=extractToCSV";
  CheckCommandCases<TSNExtractPublicKey>(
      {{"key file to key file", "FromKeyFile=%WORK%/key pair.snk|ToKeyFile=public.snk",
        R"(-p "{W}/key pair.snk" public.snk)", {"-p", "{W}/key pair.snk", "public.snk"}},
       {"assembly to key file",
        "ExtractFromType=extractFromAssembly|FromAssembly=Core.dll|ToKeyFile=public.snk",
        "-e Core.dll public.snk", {"-e", "Core.dll", "public.snk"}},
       {"container to key file",
        "ExtractFromType=extractFromContainer|FromContainer=Build Keys|ToKeyFile=public.snk",
        R"(-pc "Build Keys" public.snk)", {"-pc", "Build Keys", "public.snk"}},
       {"key file to CSV",
        "FromKeyFile=k.snk|ExtractToType=extractToCSV|ToCSV=%WORK%/public key.csv",
        R"(-o k.snk "{W}/public key.csv")", {"-o", "k.snk", "{W}/public key.csv"}},
       {"key file to a CSV that expands to blank",
        "FromKeyFile=k.snk|ExtractToType=extractToCSV|ToCSV=%EMPTY%", "-o k.snk", {"-o", "k.snk"}},
       {"key file to clipboard",
        "FromKeyFile=k.snk|ExtractToType=extractToClipboard|ToKeyFile=ignored.snk", "-o k.snk",
        {"-o", "k.snk"}}},
      {{toCSV + "|FromAssembly=Core.dll|ToCSV=k.csv", refusal},
       {"ExtractFromType=extractFromContainer|FromContainer=Keys|ExtractToType=extractToClipboard",
        refusal},
       {"FromKeyFile=%EMPTY%|ToKeyFile=p.snk", "\"Extract From\""},
       {"FromKeyFile=k.snk|ToKeyFile=%EMPTY%", "\"Extract To\""}});
  CheckValidation<TSNExtractPublicKey>(
      {{"",
        {"Key File: Key file has not been set",
         "Key File: Extract to key filename has not been set"}},
       {toCSV,
        {"Assembly: Assembly filename has not been set",
         "CSV File: Extract to CSV filename has not been set"}},
       {toCSV + "|FromAssembly=a.dll|ToCSV=k.csv", {}},
       {"ExtractFromType=extractFromContainer|ExtractToType=extractToClipboard",
        {"Container: Container has not been set"}}});
}

// Every gap is reported.
TEST_F(SNActionTest, Resign) {
  const std::string assembly = "Assembly: Assembly filename has not been set";
  CheckCommandCases<TSNResignAssembly>(
      {{"from a key file", "Assembly=%WORK%/My Lib.dll|KeyFile=k.snk",
        R"(-R "{W}/My Lib.dll" k.snk)", {"-R", "{W}/My Lib.dll", "k.snk"}},
       // The key file is neither validated nor expanded when a container is used.
       {"from a container",
        "UseKeyFile=false|Assembly=Core.dll|Container=Build Keys|KeyFile=%NO_SUCH_VARIABLE%",
        R"(-Rc Core.dll "Build Keys")", {"-Rc", "Core.dll", "Build Keys"}}},
      {{"Assembly=a.dll|KeyFile=%EMPTY%", "\"Key File\""},
       {"Assembly=%EMPTY%|KeyFile=k.snk", "\"Assembly\""}});
  CheckValidation<TSNResignAssembly>(
      {{"", {assembly, "Key File: Key file has not been set"}},
       {"UseKeyFile=false", {assembly, "Container: Container has not been set"}}});
}

}  // namespace wren::test
