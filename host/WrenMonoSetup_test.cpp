#include "WrenMonoSetup.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "TestSupport.h"
#include "WrenProcess.h"
#include "dotnet/WrenDotNetFrameWorkImpl.h"
#include "dotnet/WrenDotNetTestFixtures.h"
#include "host/WrenRegistryHive.h"

namespace wren {
namespace {

using test::TempDir;

/// Runs a program through the host's process runner (Windows programs go through mono).
struct TToolRun {
  TWrenProcessResult result;
  std::string output;
};

TToolRun RunTool(const std::string& executable, const std::string& commandLine,
                 const std::string& workingDir = "") {
  TToolRun run;
  std::shared_ptr<IWrenProcess> process = CreateWrenProcess();
  process->SetExecutable(executable);
  process->SetCommandLine(commandLine);
  process->SetWorkingDir(workingDir);
  process->SetOnStdOut([&run](const std::string& line) { run.output += line + "\n"; });
  process->SetOnStdErr([&run](const std::string& line) { run.output += line + "\n"; });
  run.result = process->Run();
  return run;
}

void ExpectRuns(const TToolRun& run, int exitCode, const std::string& expectedText) {
  EXPECT_EQ(run.result.status, TWrenProcessResult::TStatus::Exited) << run.result.error;
  EXPECT_EQ(run.result.exitCode, exitCode) << run.output;
  EXPECT_NE(run.output.find(expectedText), std::string::npos) << run.output;
}

/// Sets up Mono once for all tests here: it links a few hundred files.
class MonoSetupTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    tmp_ = new TempDir();
    std::string error;
    ok_ = SetupMono(tmp_->path() + "mono", "", result_, error);
    error_ = error;
  }
  static void TearDownTestSuite() {
    delete tmp_;
    tmp_ = nullptr;
  }
  void SetUp() override { ASSERT_TRUE(ok_) << "setup-mono failed: " << error_; }

  static std::string Framework() { return result_.frameworkRoot + "v4.0.30319/"; }
  static std::string SDKBin() { return result_.sdkRoot + "Bin/"; }

  static TempDir* tmp_;
  static bool ok_;
  static std::string error_;
  static TMonoSetupResult result_;
};

TempDir* MonoSetupTest::tmp_ = nullptr;
bool MonoSetupTest::ok_ = false;
std::string MonoSetupTest::error_;
TMonoSetupResult MonoSetupTest::result_;

TEST_F(MonoSetupTest, HiveIsDetectedAsFramework4WithSDK4) {
  EXPECT_EQ(result_.hiveFile, tmp_->path() + "mono/registry.reg");
  EXPECT_EQ(result_.frameworkRoot, tmp_->path() + "mono/framework/");
  EXPECT_EQ(result_.sdkRoot, tmp_->path() + "mono/sdk/v4.0/");

  test::TDotNetEnvironment env;
  std::string error;
  std::shared_ptr<IWrenRegistry> hive = LoadRegistryHive({result_.hiveFile}, error);
  ASSERT_NE(hive, nullptr) << error;
  SetWrenRegistry(hive);
  TWrenDotNetInfo info;
  ASSERT_EQ(info.GetInstalledFrameWorkCount(), 1);
  const auto framework = info.GetFrameWorkBySDKVersion("v4.0");
  ASSERT_NE(framework, nullptr);
  EXPECT_EQ(framework->GetFrameWorkVersion(), "v4.0.30319");
  EXPECT_EQ(framework->GetFrameWorkLocation(), tmp_->path() + "mono/framework/v4.0.30319");
  EXPECT_EQ(framework->GetSDKLocation(), SDKBin());
}

TEST_F(MonoSetupTest, NUnitConsoleIsFoundAndRuns) {
  ASSERT_FALSE(result_.nunitConsole.empty()) << "the nunit-console package is required";
  const TToolRun run = RunTool(result_.nunitConsole, "/nologo -help");
  EXPECT_EQ(run.result.status, TWrenProcessResult::TStatus::Exited) << run.result.error;
  EXPECT_NE(run.output.find("Runs a set of NUnit tests"), std::string::npos) << run.output;
}

TEST_F(MonoSetupTest, SDKToolsRunThroughTheProcessRunner) {
  TempDir work;
  ExpectRuns(RunTool(SDKBin() + "sn.exe", "-?"), 0, "StrongName");
  ExpectRuns(RunTool(SDKBin() + "al.exe", "-?"), 0, "Assembly Linker");
  ExpectRuns(RunTool(SDKBin() + "gacutil.exe", "-l"), 0, "installed into the GAC");

  // A key pair and a resource file: the tools do real work, not only print their usage.
  ExpectRuns(RunTool(SDKBin() + "sn.exe", "-k key.snk", work.path()), 0,
             "keypair has been generated");
  EXPECT_GT(std::filesystem::file_size(work / "key.snk"), 500u);
  test::WriteFile(work / "strings.txt", "Greeting=Hello\n");
  ExpectRuns(RunTool(SDKBin() + "resgen.exe", "strings.txt strings.resources", work.path()), 0,
             "Writing resource file");
  EXPECT_TRUE(test::Exists(work / "strings.resources"));
}

TEST_F(MonoSetupTest, CompilerAndBuildEngineWorkUnderTheirWindowsNames) {
  TempDir work;
  test::WriteFile(work / "a.cs", "public class A { public static int F() { return 1; } }\n");
  ExpectRuns(
      RunTool(Framework() + "csc.exe", "/nologo /target:library /out:a.dll a.cs", work.path()), 0,
      "");
  EXPECT_TRUE(test::Exists(work / "a.dll"));

  test::WriteFile(work / "p.csproj", R"(<?xml version="1.0" encoding="utf-8"?>
<Project ToolsVersion="4.0" DefaultTargets="Build" xmlns="http://schemas.microsoft.com/developer/msbuild/2003">
  <PropertyGroup>
    <OutputType>Library</OutputType>
    <AssemblyName>p</AssemblyName>
    <TargetFrameworkVersion>v4.5</TargetFrameworkVersion>
    <OutputPath>out</OutputPath>
  </PropertyGroup>
  <ItemGroup><Compile Include="a.cs" /></ItemGroup>
  <Import Project="$(MSBuildToolsPath)\Microsoft.CSharp.targets" />
</Project>
)");
  ExpectRuns(RunTool(Framework() + "msbuild.exe", "/nologo p.csproj", work.path()), 0,
             "Build succeeded");
  EXPECT_TRUE(test::Exists(work / "out/p.dll"));
}

TEST_F(MonoSetupTest, RerunReplacesEverything) {
  TempDir other;
  const std::string dir = other.path() + "m";
  TMonoSetupResult first, second;
  std::string error;
  ASSERT_TRUE(SetupMono(dir, "", first, error)) << error;
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
}

TEST(MonoSetup, MissingMonoIsAnError) {
  TempDir tmp;
  TMonoSetupResult result;
  std::string error;
  EXPECT_FALSE(SetupMono(tmp.path() + "m", tmp.path() + "no-mono", result, error));
  EXPECT_NE(error.find("no-mono"), std::string::npos) << error;
  EXPECT_FALSE(test::Exists(tmp.path() + "m/registry.reg"));

  test::TScopedEnv path("PATH", tmp.path());
  error.clear();
  EXPECT_FALSE(SetupMono(tmp.path() + "m", "", result, error));
  EXPECT_NE(error.find("Mono is not installed"), std::string::npos) << error;
}

}  // namespace
}  // namespace wren
