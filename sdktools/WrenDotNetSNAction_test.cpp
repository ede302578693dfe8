#include "sdktools/WrenDotNetSNAction.h"

#include "SdkToolTestKit_test.h"

namespace wren::test {
namespace {

using SNActionTest = TSdkToolTest;

template <class A>
std::function<std::unique_ptr<TWrenDotNetAction>()> Maker() {
  return [] { return std::make_unique<A>(); };
}

TEST_F(SNActionTest, GenerateVerifyInstallCommandLines) {
  CheckCommandCases(Maker<TSNGenerateKeyPair>(),
                    {
                        {"key file with a blank",
                         {{"OutputFile", "%WORK%/key pair.snk"}},
                         true,
                         R"(-k "{W}/key pair.snk")",
                         {"-k", "{W}/key pair.snk"}},
                        {"output expands to blank", {{"OutputFile", "%EMPTY%"}}, false, "", {},
                         "\"Output File\""},
                    });
  CheckCommandCases(Maker<TSNVerifyAssembly>(),
                    {
                        {"verify", {{"Assembly", "Core.dll"}}, true, "-v Core.dll",
                         {"-v", "Core.dll"}},
                        {"forced",
                         {{"Assembly", "%WORK%/My Lib.dll"}, {"Force", "true"}},
                         true,
                         R"(-vf "{W}/My Lib.dll")",
                         {"-vf", "{W}/My Lib.dll"}},
                        {"assembly expands to blank", {{"Assembly", "%EMPTY%"}}, false, "", {},
                         "\"Assembly\""},
                    });
  CheckCommandCases(Maker<TSNInstallKeyPair>(),
                    {
                        {"key file and container",
                         {{"KeyFile", "%WORK%/key pair.snk"}, {"ContainerFile", "Build Keys"}},
                         true,
                         R"(-i "{W}/key pair.snk" "Build Keys")",
                         {"-i", "{W}/key pair.snk", "Build Keys"}},
                        {"container expands to blank",
                         {{"KeyFile", "k.snk"}, {"ContainerFile", "%EMPTY%"}},
                         false, "", {}, "\"Container File\""},
                    });
}

TEST_F(SNActionTest, ExtractPairingsAndRefusals) {
  CheckCommandCases(
      Maker<TSNExtractPublicKey>(),
      {
          {"key file to key file",
           {{"FromKeyFile", "%WORK%/key pair.snk"}, {"ToKeyFile", "public.snk"}},
           true,
           R"(-p "{W}/key pair.snk" public.snk)",
           {"-p", "{W}/key pair.snk", "public.snk"}},
          {"assembly to key file",
           {{"ExtractFromType", "extractFromAssembly"},
            {"FromAssembly", "Core.dll"},
            {"ToKeyFile", "public.snk"}},
           true,
           "-e Core.dll public.snk",
           {"-e", "Core.dll", "public.snk"}},
          {"container to key file",
           {{"ExtractFromType", "extractFromContainer"},
            {"FromContainer", "Build Keys"},
            {"ToKeyFile", "public.snk"}},
           true,
           R"(-pc "Build Keys" public.snk)",
           {"-pc", "Build Keys", "public.snk"}},
          {"key file to CSV",
           {{"FromKeyFile", "k.snk"},
            {"ExtractToType", "extractToCSV"},
            {"ToCSV", "%WORK%/public key.csv"}},
           true,
           R"(-o k.snk "{W}/public key.csv")",
           {"-o", "k.snk", "{W}/public key.csv"}},
          {"key file to a CSV that expands to blank",
           {{"FromKeyFile", "k.snk"}, {"ExtractToType", "extractToCSV"}, {"ToCSV", "%EMPTY%"}},
           true,
           "-o k.snk",
           {"-o", "k.snk"}},
          {"key file to clipboard",
           {{"FromKeyFile", "k.snk"},
            {"ExtractToType", "extractToClipboard"},
            {"ToKeyFile", "ignored.snk"}},
           true,
           "-o k.snk",
           {"-o", "k.snk"}},
          {"assembly to CSV is refused",
           {{"ExtractFromType", "extractFromAssembly"},
            {"FromAssembly", "Core.dll"},
            {"ExtractToType", "extractToCSV"},
            {"ToCSV", "k.csv"}},
           false, "", {}, "The options for the infile and outfile are not valid"},
          {"container to clipboard is refused",
           {{"ExtractFromType", "extractFromContainer"},
            {"FromContainer", "Keys"},
            {"ExtractToType", "extractToClipboard"}},
           false, "", {}, "The options for the infile and outfile are not valid"},
          {"source expands to blank", {{"FromKeyFile", "%EMPTY%"}, {"ToKeyFile", "p.snk"}},
           false, "", {}, "\"Extract From\""},
          {"destination key file expands to blank",
           {{"FromKeyFile", "k.snk"}, {"ToKeyFile", "%EMPTY%"}},
           false, "", {}, "\"Extract To\""},
      });
}

TEST_F(SNActionTest, ResignAndFreeCommandLines) {
  CheckCommandCases(
      Maker<TSNResignAssembly>(),
      {
          {"from a key file",
           {{"Assembly", "%WORK%/My Lib.dll"}, {"KeyFile", "k.snk"}},
           true,
           R"(-R "{W}/My Lib.dll" k.snk)",
           {"-R", "{W}/My Lib.dll", "k.snk"}},
          // The key file is neither validated nor expanded when a container is used.
          {"from a container",
           {{"UseKeyFile", "false"},
            {"Assembly", "Core.dll"},
            {"Container", "Build Keys"},
            {"KeyFile", "%NO_SUCH_VARIABLE%"}},
           true,
           R"(-Rc Core.dll "Build Keys")",
           {"-Rc", "Core.dll", "Build Keys"}},
          {"key file expands to blank", {{"Assembly", "a.dll"}, {"KeyFile", "%EMPTY%"}}, false,
           "", {}, "\"Key File\""},
          {"assembly expands to blank", {{"Assembly", "%EMPTY%"}, {"KeyFile", "k.snk"}}, false,
           "", {}, "\"Assembly\""},
      });
  CheckCommandCases(
      Maker<TSNGenericSN>(),
      {
          {"options as written",
           {{"Options", R"(-k "%WORK%/gen key.snk")"}, {"StartDir", "%WORK%"}},
           true,
           R"(-k "{W}/gen key.snk")",
           {"-k", "{W}/gen key.snk"},
           "",
           "{W}"},
          {"empty options still run", {{"StartDir", "%WORK%"}}, true, "", {}, "", "{W}"},
          {"options fail to expand", {{"Options", "%NO_SUCH_VARIABLE%"}}, false, "", {},
           "\"Options\""},
      });
}

TEST_F(SNActionTest, VerifyVerdictFollowsFailIfValid) {
  struct TCase {
    bool failIfValid;
    int exitCode;
    bool success;
  };
  const std::string tool = InstallTool(TSNVerifyAssembly());
  for (const TCase& c : {TCase{false, 0, true}, TCase{false, 1, false}, TCase{true, 1, true},
                         TCase{true, 0, false}, TCase{true, 3, true}}) {
    SCOPED_TRACE("FailIfValid=" + std::to_string(c.failIfValid) +
                 " exit=" + std::to_string(c.exitCode));
    ConfigureTool(tool, {{"exit", c.exitCode}});
    TSNVerifyAssembly action;
    UseFixtureSDK(action);
    action.Assembly = "Core.dll";
    action.FailIfValid = c.failIfValid;
    const TStepRun run = Run(action);
    ASSERT_FALSE(run.call.is_null());
    EXPECT_EQ(run.success, c.success);
  }
}

// Generate, verify, install and the free line stop at their one rule; extract and re-sign report
// every gap.
TEST_F(SNActionTest, Validation) {
  CheckValidation([] { return std::make_unique<TSNGenerateKeyPair>(); },
                  {{"nothing set", {}, {{"Output file", "Output filename has not been set"}}}});
  CheckValidation([] { return std::make_unique<TSNVerifyAssembly>(); },
                  {{"nothing set", {}, {{"Assembly", "Assembly filename has not been set"}}}});
  CheckValidation([] { return std::make_unique<TSNInstallKeyPair>(); },
                  {{"nothing set", {}, {{"Key file", "Key filename has not been set"}}},
                   {"container is not required", {{"KeyFile", "k.snk"}}, {}}});
  CheckValidation(
      [] { return std::make_unique<TSNGenericSN>(); },
      {{"nothing set", {}, {{"Starting directory", "Starting directory has not been set"}}},
       {"options may be empty", {{"StartDir", "/tmp"}}, {}}});
  CheckValidation(
      [] { return std::make_unique<TSNExtractPublicKey>(); },
      {
          {"nothing set",
           {},
           {{"Key File", "Key file has not been set"},
            {"Key File", "Extract to key filename has not been set"}}},
          {"assembly to CSV, both empty",
           {{"ExtractFromType", "extractFromAssembly"}, {"ExtractToType", "extractToCSV"}},
           {{"Assembly", "Assembly filename has not been set"},
            {"CSV File", "Extract to CSV filename has not been set"}}},
          // The pairing is refused only when the command line is built.
          {"assembly to CSV, both set",
           {{"ExtractFromType", "extractFromAssembly"},
            {"FromAssembly", "a.dll"},
            {"ExtractToType", "extractToCSV"},
            {"ToCSV", "k.csv"}},
           {}},
          {"container to clipboard, container empty",
           {{"ExtractFromType", "extractFromContainer"}, {"ExtractToType", "extractToClipboard"}},
           {{"Container", "Container has not been set"}}},
      });
  CheckValidation(
      [] { return std::make_unique<TSNResignAssembly>(); },
      {
          {"nothing set",
           {},
           {{"Assembly", "Assembly filename has not been set"},
            {"Key File", "Key file has not been set"}}},
          {"container chosen, none set",
           {{"UseKeyFile", "false"}},
           {{"Assembly", "Assembly filename has not been set"},
            {"Container", "Container has not been set"}}},
      });
}

}  // namespace
}  // namespace wren::test
