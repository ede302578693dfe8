// The three language compiler actions: the response files their compilers receive through the
// process runner, and what the three share.
#include "compilers/WrenCSharpCompilerAction.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "compilers/CompilerTestHelpers.h"
#include "compilers/WrenJSharpDotNetCompilerAction.h"
#include "compilers/WrenVBDotNetCompilerAction.h"
#include "tools/ToolsTestKit_test.h"

namespace wren {
namespace {

/// The three compilers (the recorder) in the framework folder, and a project folder with a blank
/// in its name that %PROJECT% names.
class LanguageCompilerRun : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* compiler : {"csc.exe", "vbc.exe", "vjc.exe"})
      test::InstallRecorder(frameWork_.Folder() + compiler);
    std::filesystem::create_directories(project_);
  }
  test::TToolRun Run(TWrenManagedCompilerAction& action) {
    action.OverrideSDKDefault = true;
    action.SetDefaultSDKVersion(test::TTestFrameWork::kSDKVersion);
    action.ProjectDir = "%PROJECT%";
    return test::RunAction(action, frameWork_.Folder() + action.GetDotNetTool(),
                           {{"PROJECT", project_}});
  }
  /// The compiler must get just the golden response file, started in the project folder.
  void ExpectGoldenRun(TWrenManagedCompilerAction& action, const char* golden) {
    SCOPED_TRACE(golden);
    const test::TToolRun run = Run(action);
    ASSERT_TRUE(run.success) << testing::PrintToString(run.log);
    ASSERT_FALSE(run.call.is_null()) << action.GetDotNetTool() << " did not run";
    EXPECT_EQ(run.Args(), std::vector<std::string>{"@" + rsp_});
    EXPECT_EQ(run.call["cwd"], project_.substr(0, project_.size() - 1));
    EXPECT_EQ(run.call["responseFiles"][rsp_], test::GoldenFile(golden, project_));
    ASSERT_GE(run.log.size(), 2u);
    EXPECT_EQ(run.log.end()[-2] + run.log.back(), ".Project Compiled OK.");
  }

  test::TempDir dir_;
  test::TTestFrameWork frameWork_{dir_};
  const std::string project_ = dir_ / "My Project/", rsp_ = project_ + "wrenresp.rsp";
};

TEST_F(LanguageCompilerRun, CscGetsTheGoldenResponseFiles) {
  TWrenCSharpCompilerAction action;
  action.Files = "a.cs";
  ExpectGoldenRun(action, "csharp_defaults.rsp");
  action.Incremental = true;
  action.DocFile = "My Doc.xml";
  ExpectGoldenRun(action, "csharp_incremental_doc.rsp");  // incremental builds never ask for it
  action.Incremental = false;
  action.Checked = action.FullPaths = action.NoConfig = action.CompileUnsafe = true;
  action.NoSTDLib = true; action.FileAlign = TCSharpFileAlign::fa4096;
  action.WarningLevel = TDotNetWarningLevels::WarnOff;
  action.LibLocations = "/opt/A;/opt/B"; action.Icon = "a.ico;b.ico";
  action.Win32Resources = "r.res, s.res"; action.Target = TDotNetTarget::WindowsExe;
  ExpectGoldenRun(action, "csharp_all.rsp");
}

TEST_F(LanguageCompilerRun, VbcGetsTheGoldenResponseFiles) {
  TWrenVBDotNetCompilerAction action;
  action.Files = "a.vb";
  ExpectGoldenRun(action, "vb_defaults.rsp");  // the off states are never written
  action.TargetCF = action.Verbose = action.DelaySign = action.Quiet = true;
  action.RemoveIntChecks = action.OptionExplicit = action.OptionStrict = true;
  action.OptionCompare = TVBDotNetOptionCompare::OptCompareText;
  action.Imports = "System,System.IO"; action.KeyContainer = "My Keys"; action.KeyFile = "key.snk";
  action.SDKPath = "/opt/fw"; action.RootNameSpace = "MyApp"; action.LibLocations = "/opt/A;/opt/B";
  action.Icon = "a.ico,b.ico"; action.Win32Resources = "r.res";
  action.Resources = "logo.bmp,Form1.resources";
  ExpectGoldenRun(action, "vb_all.rsp");
}

// Secure scoping and the disabled language extensions are kept with the action but never reach
// the compiler.
TEST_F(LanguageCompilerRun, VjcGetsTheGoldenResponseFileAndPackageMap) {
  const std::string map = project_ + "jcpa.rsp";
  TWrenJSharpCompilerAction switches;
  switches.Files = "a.jsl";
  switches.SecureScoping = switches.DisableLangExt = true;
  switches.WarningLevel = TDotNetWarningLevels::WarnLevel2;
  switches.LibLocations = "/opt/My Libs"; switches.Win32Resources = "r.res";
  ExpectGoldenRun(switches, "jsharp_switches.rsp");
  EXPECT_FALSE(test::Exists(map));  // an empty map writes no map file
  TWrenJSharpCompilerAction mapped;
  mapped.Files = "a.jsl";
  mapped.JCPA = {"com.example=Example.dll", "org.demo=Demo.dll"};
  test::WriteFile(map, "stale\r\n");
  ExpectGoldenRun(mapped, "jsharp_jcpa.rsp");
  EXPECT_EQ(test::ReadFile(map), test::GoldenFile("jsharp_jcpa_map.rsp", project_));
  // A map file that cannot be replaced stops the step before the response file is written.
  ASSERT_EQ(chmod(map.c_str(), 0444), 0);
  std::remove(rsp_.c_str());
  const test::TToolRun run = Run(mapped);
  EXPECT_FALSE(run.success);
  EXPECT_TRUE(run.call.is_null()) << "vjc.exe must not start";
  EXPECT_TRUE(run.Logged("Could not create the jcpa file: " + map));
  EXPECT_TRUE(run.Logged(map + " is read only")) << testing::PrintToString(run.log);
  EXPECT_FALSE(test::Exists(rsp_));
}

// The language switches are guarded like the shared ones: a line break never reaches a
// response file, and the compiler does not start.
TEST_F(LanguageCompilerRun, ALineBreakInALanguageValueStopsTheStepBeforeTheCompiler) {
  const std::string injected = "x\n/out:evil.exe";
  TWrenCSharpCompilerAction docFile, libs, icons;
  docFile.DocFile = injected;
  libs.LibLocations = injected;
  icons.Icon = "a.ico;" + injected;
  TWrenVBDotNetCompilerAction imports, rootNameSpace;
  imports.Imports = injected;
  rootNameSpace.RootNameSpace = injected;
  TWrenJSharpCompilerAction win32, packages;
  win32.Win32Resources = injected;
  packages.JCPA = {"com.example=Example.dll", injected};
  const std::vector<std::pair<TWrenManagedCompilerAction*, const char*>> cases = {
      {&docFile, "Doc to XML File"}, {&libs, "Library Locations"}, {&icons, "Icons"},
      {&imports, "Import namespace"}, {&rootNameSpace, "Root NameSpace"},
      {&win32, "Win32 Resources"}, {&packages, "JCPA"},
  };
  for (const auto& [action, caption] : cases) {
    SCOPED_TRACE(caption);
    action->Files = "a.src";
    const test::TToolRun run = Run(*action);
    EXPECT_FALSE(run.success);
    EXPECT_TRUE(run.call.is_null()) << action->GetDotNetTool() << " must not start";
    EXPECT_TRUE(run.Logged(std::string(caption) + ": the value holds a line break"))
        << testing::PrintToString(run.log);
    EXPECT_FALSE(test::Exists(rsp_));
    EXPECT_FALSE(test::Exists(project_ + "jcpa.rsp"));
  }
}

TEST(LanguageCompilerActions, ValidateReportsBothMissingSettingsAndResetKeepsLanguageState) {
  TWrenCSharpCompilerAction cs;
  TWrenVBDotNetCompilerAction vb;
  TWrenJSharpCompilerAction js;
  using TAction = TWrenManagedCompilerAction;
  for (TAction* action : std::vector<TAction*>{&cs, &vb, &js}) {
    SCOPED_TRACE(action->ClassName());
    test::TReportCollector errors, none;
    action->RecurseFiles = "*.cs";  // accepted by the response file, but not here
    EXPECT_FALSE(action->Validate(errors));
    EXPECT_EQ(errors.reports, (decltype(errors.reports){
                                  {"Project Directory", "Project directory has not been set"},
                                  {"Files", "Files to compile has not been set"}}));
    action->ProjectDir = "/src";
    action->Files = "a.cs";
    EXPECT_TRUE(action->Validate(none));
    EXPECT_TRUE(none.reports.empty());
  }
  // VB keeps its SDK path like the library locations; J#'s package map goes with the rest.
  vb.SDKPath = "/opt/fw"; vb.RootNameSpace = "MyApp";
  vb.ResetOptions();
  EXPECT_EQ(vb.SDKPath + "|" + vb.RootNameSpace, "/opt/fw|");
  js.JCPA = {"a=b"}; js.WarningLevel = TDotNetWarningLevels::WarnOff;
  js.ResetOptions();
  EXPECT_TRUE(js.JCPA.empty() && js.WarningLevel == TDotNetWarningLevels::WarnLevel4);
}

}  // namespace
}  // namespace wren
