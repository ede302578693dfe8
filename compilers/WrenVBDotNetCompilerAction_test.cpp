#include "compilers/WrenVBDotNetCompilerAction.h"

#include <gtest/gtest.h>

#include "compilers/CompilerTestHelpers.h"

namespace wren {
namespace {

using test::TempDir;

TEST(VBDotNetCompilerAction, ResponseFilesMatchGoldenFiles) {
  {
    // The off states of the language options are never written.
    TempDir dir;
    TWrenVBDotNetCompilerAction action;
    action.ProjectDir = dir.path();
    action.Files = "a.vb";
    EXPECT_EQ(test::CommandLineOf(action), "@\"" + dir.path() + "wrenresp.rsp\"");
    EXPECT_EQ(test::ReadFile(dir / "wrenresp.rsp"),
              test::GoldenFile("vb_defaults.rsp", dir.path()));
  }
  TempDir dir;
  TWrenVBDotNetCompilerAction action;
  action.ProjectDir = dir.path();
  action.Files = "a.vb";
  action.TargetCF = action.Verbose = action.DelaySign = action.Quiet = true;
  action.RemoveIntChecks = action.OptionExplicit = action.OptionStrict = true;
  action.OptionCompare = TVBDotNetOptionCompare::OptCompareText;
  action.Imports = "System,System.IO";
  action.KeyContainer = "My Keys";
  action.KeyFile = "key.snk";
  action.SDKPath = "/opt/fw";
  action.RootNameSpace = "MyApp";
  action.LibLocations = "/opt/A;/opt/B";
  action.Icon = "a.ico,b.ico";
  action.Win32Resources = "r.res";
  action.Resources = "logo.bmp,Form1.resources";
  EXPECT_EQ(test::CommandLineOf(action), "@\"" + dir.path() + "wrenresp.rsp\"");
  EXPECT_EQ(test::ReadFile(dir / "wrenresp.rsp"), test::GoldenFile("vb_all.rsp", dir.path()));
}

TEST(VBDotNetCompilerAction, RunsTheFrameworksVbcWithTheResponseFile) {
  TempDir dir;
  test::TTestFrameWork frameWork(dir);
  const std::string vbc = frameWork.Folder() + "vbc.exe";
  test::InstallRecorder(vbc);
  const std::string project = dir / "My Project/";
  std::filesystem::create_directories(project);

  test::TLoggingHost host;
  TWrenVBDotNetCompilerAction action;
  action.SetHost(&host.host);
  action.OverrideSDKDefault = true;
  action.SetDefaultSDKVersion(test::TTestFrameWork::kSDKVersion);
  action.ProjectDir = project;
  action.Files = "a.vb";
  ASSERT_TRUE(action.Execute()) << host.Text();

  const nlohmann::json call = test::RecordedCall(vbc);
  ASSERT_FALSE(call.is_null()) << "vbc.exe did not run";
  const std::string rsp = project + "wrenresp.rsp";
  EXPECT_EQ(call["argv"], nlohmann::json({vbc, "@" + rsp}));
  EXPECT_EQ(call["cwd"], project.substr(0, project.size() - 1));
  EXPECT_EQ(call["responseFiles"][rsp], test::GoldenFile("vb_defaults.rsp", project));
  ASSERT_GE(host.log.size(), 2u);
  EXPECT_EQ(host.log[host.log.size() - 2], ".");
  EXPECT_EQ(host.log.back(), "Project Compiled OK.");

  // A compiler error: its message is logged and the step fails without the closing messages.
  test::WriteFile(
      vbc + ".recorder.json",
      R"({"stdout": "a.vb(3) : error BC30451: Name 'x' is not declared.\n", "exit": 1})");
  host.log.clear();
  EXPECT_FALSE(action.Execute());
  EXPECT_TRUE(host.Logged("error BC30451: Name 'x' is not declared.")) << host.Text();
  EXPECT_FALSE(host.Logged("Project Compiled OK."));
}

}  // namespace
}  // namespace wren
