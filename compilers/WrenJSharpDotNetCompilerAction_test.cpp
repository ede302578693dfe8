#include "compilers/WrenJSharpDotNetCompilerAction.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "compilers/CompilerTestHelpers.h"

namespace wren {
namespace {

using test::TempDir;

TEST(JSharpCompilerAction, SecureScopingAndLanguageExtensionsNeverReachTheCompiler) {
  TempDir dir;
  TWrenJSharpCompilerAction action;
  action.ProjectDir = dir.path();
  action.Files = "a.jsl";
  action.SecureScoping = true;
  action.DisableLangExt = true;
  action.WarningLevel = TDotNetWarningLevels::WarnLevel2;
  action.LibLocations = "/opt/My Libs";
  action.Win32Resources = "r.res";
  EXPECT_EQ(test::CommandLineOf(action), "@\"" + dir.path() + "wrenresp.rsp\"");
  EXPECT_EQ(test::ReadFile(dir / "wrenresp.rsp"),
            test::GoldenFile("jsharp_switches.rsp", dir.path()));
  // An empty map writes no map file.
  EXPECT_FALSE(test::Exists(dir / "jcpa.rsp"));
}

TEST(JSharpCompilerAction, WritesThePackageMapBesideTheResponseFile) {
  TempDir dir;
  test::TLoggingHost host;
  TWrenJSharpCompilerAction action;
  action.SetHost(&host.host);
  action.ProjectDir = dir.path();
  action.Files = "a.jsl";
  action.JCPA = {"com.example=Example.dll", "org.demo=Demo.dll"};
  test::WriteFile(dir / "jcpa.rsp", "stale\r\n");
  EXPECT_EQ(test::CommandLineOf(action), "@\"" + dir.path() + "wrenresp.rsp\"");
  EXPECT_EQ(test::ReadFile(dir / "wrenresp.rsp"), test::GoldenFile("jsharp_jcpa.rsp", dir.path()));
  EXPECT_EQ(test::ReadFile(dir / "jcpa.rsp"), test::GoldenFile("jsharp_jcpa_map.rsp", dir.path()));

  // A map file that cannot be replaced stops the step before the response file is written.
  const std::string map = dir / "jcpa.rsp";
  ASSERT_EQ(chmod(map.c_str(), 0444), 0);
  std::remove((dir / "wrenresp.rsp").c_str());
  EXPECT_EQ(test::CommandLineOf(action), "<failed>");
  EXPECT_TRUE(host.Logged("Could not create the jcpa file: " + map)) << host.Text();
  EXPECT_FALSE(test::Exists(dir / "wrenresp.rsp"));
}

TEST(JSharpCompilerAction, RunsTheFrameworksVjcWithBothFiles) {
  TempDir dir;
  test::TTestFrameWork frameWork(dir);
  const std::string vjc = frameWork.Folder() + "vjc.exe";
  test::InstallRecorder(vjc);

  test::TLoggingHost host;
  TWrenJSharpCompilerAction action;
  action.SetHost(&host.host);
  action.OverrideSDKDefault = true;
  action.SetDefaultSDKVersion(test::TTestFrameWork::kSDKVersion);
  action.ProjectDir = "%PROJECT%";
  host.host.SetVariable("PROJECT", dir.path());
  action.Files = "a.jsl";
  action.JCPA = {"com.example=Example.dll", "org.demo=Demo.dll"};
  action.SecureScoping = true;
  ASSERT_TRUE(action.Execute()) << host.Text();

  const nlohmann::json call = test::RecordedCall(vjc);
  ASSERT_FALSE(call.is_null()) << "vjc.exe did not run";
  const std::string rsp = dir / "wrenresp.rsp";
  EXPECT_EQ(call["argv"], nlohmann::json({vjc, "@" + rsp}));
  EXPECT_EQ(call["cwd"], dir.path().substr(0, dir.path().size() - 1));
  const std::string text = call["responseFiles"][rsp];
  EXPECT_EQ(text, test::GoldenFile("jsharp_jcpa.rsp", dir.path()));
  EXPECT_EQ(text.find("/securescoping"), std::string::npos);
  EXPECT_EQ(host.log.back(), "Project Compiled OK.");
}

}  // namespace
}  // namespace wren
