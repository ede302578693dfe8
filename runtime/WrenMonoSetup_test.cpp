// The e2e tests drive a setup's framework further (detection, compilers, SDK tools, NUnit).
#include "WrenMonoSetup.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "TestSupport.h"
#include "WrenProcess.h"
#include "dotnet/WrenDotNetTestFixtures.h"

namespace wren {
namespace {

TEST(MonoSetup, MakesAWorkingFrameworkReplacesItOnRerunAndNeedsMono) {
  test::TempDir tmp;
  const std::string dir = tmp / "m";
  TMonoSetupResult first, second;
  std::string error;
  ASSERT_TRUE(SetupMono(dir, "", first, error)) << "setup-mono failed: " << error;
  EXPECT_EQ(first.hiveFile, dir + "/registry.reg");
  EXPECT_FALSE(first.nunitConsole.empty()) << "the nunit-console package is required";

  // A tool under its Windows name does real work through the host's process runner (and mono).
  std::string output;
  std::shared_ptr<IWrenProcess> sn = CreateWrenProcess();
  sn->SetExecutable(first.sdkRoot + "Bin/sn.exe");
  sn->SetCommandLine("-k key.snk");
  sn->SetWorkingDir(tmp.path());
  const auto collect = [&](const std::string& line) { output += line + "\n"; };
  sn->SetOnStdOut(collect);
  sn->SetOnStdErr(collect);
  const TWrenProcessResult run = sn->Run();
  EXPECT_EQ(run.status, TWrenProcessResult::TStatus::Exited) << run.error;
  EXPECT_EQ(run.exitCode, 0) << output;
  EXPECT_NE(output.find("keypair has been generated"), std::string::npos) << output;
  EXPECT_GT(std::filesystem::file_size(tmp / "key.snk"), 500u);

  const std::string hive = test::ReadFile(first.hiveFile);
  test::WriteFile(dir + "/framework/v4.0.30319/stale.exe", "left from an old setup");
  std::filesystem::remove(dir + "/sdk/v4.0/Bin/sn.exe");
  ASSERT_TRUE(SetupMono(dir, "", second, error)) << error;
  EXPECT_FALSE(test::Exists(dir + "/framework/v4.0.30319/stale.exe"));
  EXPECT_TRUE(test::Exists(dir + "/sdk/v4.0/Bin/sn.exe"));
  EXPECT_EQ(test::ReadFile(second.hiveFile), hive);
  EXPECT_EQ(second.notes, first.notes);
  for (const auto& entry : std::filesystem::directory_iterator(dir))
    EXPECT_EQ(entry.path().filename().string().rfind(".setup-", 0), std::string::npos)
        << "staging left behind: " << entry.path();

  // Without Mono: an error naming where it looked, and nothing written.
  EXPECT_FALSE(SetupMono(tmp / "n", tmp / "no-mono", first, error));
  EXPECT_NE(error.find("no-mono"), std::string::npos) << error;
  EXPECT_FALSE(test::Exists(tmp / "n/registry.reg"));
  test::TScopedEnv path("PATH", tmp.path());
  EXPECT_FALSE(SetupMono(tmp / "n", "", first, error));
  EXPECT_NE(error.find("Mono is not installed"), std::string::npos) << error;
}

}  // namespace
}  // namespace wren
