// The project compiler actions end to end through `marrowby run`: a two-project C# solution built
// by Mono's tools and then run, and VB.NET and J# projects whose compilers Linux lacks checked
// through the response file the argv recorder saw.
#include <gtest/gtest.h>

#include <filesystem>

#include "TestSupport.h"

namespace wren {
namespace {

namespace fs = std::filesystem;

std::string Fixture(const std::string& name) {
  return std::string(SOURCE_DIR) + "/tests/fixtures/projcomp/" + name;
}

std::string Action(const std::string& cls,
                   const std::vector<std::pair<std::string, std::string>>& props) {
  std::string xml = "    <Action class=\"" + cls + "\">\n";
  for (const auto& [name, value] : props)
    xml += "      <Property name=\"" + name + "\">" + value + "</Property>\n";
  return xml + "    </Action>\n";
}

std::string Project(const std::string& actions) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MarrowbyProject version=\"1\">\n"
         "  <Actions>\n" + actions + "  </Actions>\n</MarrowbyProject>\n";
}

class ProjectCompilersOnMono : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string out;
    ASSERT_EQ(test::RunProgram({MARROWBY_EXE, "setup-mono", "--dir", dir_ / "mono"}, &out), 0)
        << "setup-mono needs Mono installed: " << out;
    ASSERT_EQ(Marrowby({"options", "set", "Microsoft.NET", "DefaultSDKVersion", "v4.0"}, &out), 0)
        << out;
    fs::copy(Fixture("solution"), dir_ / "solution", fs::copy_options::recursive);
    // The third-party assembly the library references through its HintPath.
    ASSERT_EQ(test::RunProgram({"mcs", "-nologo", "-target:library", "-r:System.dll",
                                "-out:" + dir_ / "solution/Vendor/Vendor.dll",
                                dir_ / "solution/Vendor/Vendor.cs"},
                               &out),
              0)
        << out;
  }

  int Marrowby(std::vector<std::string> args, std::string* out) {
    args.insert(args.begin(), {MARROWBY_EXE, "--registry", dir_ / "mono/registry.reg", "--options",
                               dir_ / "options.xml"});
    return test::RunProgram(args, out);
  }

  test::TempDir dir_;
};

TEST_F(ProjectCompilersOnMono, TwoProjectSolutionBuildsAndRunsInBothConfigurations) {
  std::string actions;
  for (const char* config : {"Debug", "Release"}) {
    actions += Action("TWrenCSProjCompilerAction", {{"ProjectFile", "%ProjectDir%/solution/Lib/Lib.csproj"},
                                                    {"ConfigName", config},
                                                    {"NoLogo", "true"}});
    actions += Action("TWrenCSProjCompilerAction", {{"ProjectFile", "%ProjectDir%/solution/App/App.csproj"},
                                                    {"ConfigName", config},
                                                    {"CopyConfigFiles", "true"},
                                                    {"NoLogo", "true"}});
  }
  test::WriteFile(dir_ / "build.mbproj", Project(actions));

  // A dry run of the library lists its resource steps and the response file, and runs nothing.
  test::WriteFile(dir_ / "lib.mbproj",
                  Project(Action("TWrenCSProjCompilerAction",
                                 {{"ProjectFile", "%ProjectDir%/solution/Lib/Lib.csproj"},
                                  {"ConfigName", "Debug"}})));
  std::string out;
  ASSERT_EQ(Marrowby({"run", dir_ / "lib.mbproj", "--dry-run"}, &out), 0) << out;
  for (const std::string& fragment : std::vector<std::string>{
           "resgen.exe\n", "lc.exe\n", "/resource:\"" + dir_ / "solution/Lib/obj/Debug/Demo.Lib.dll.licenses\""})
    EXPECT_NE(out.find(fragment), std::string::npos) << fragment << "\n" << out;
  EXPECT_FALSE(test::Exists(dir_ / "solution/Lib/obj/Debug/Demo.Widgets.Widget.resources"));
  EXPECT_FALSE(test::Exists(dir_ / "solution/Lib/obj/Debug/Demo.Lib.dll.licenses"));

  ASSERT_EQ(Marrowby({"run", dir_ / "build.mbproj"}, &out), 0) << out;
  for (const std::string config : {"Debug", "Release"}) {
    SCOPED_TRACE(config);
    const std::string bin = dir_ / ("solution/App/bin/" + config + "/");
    ASSERT_TRUE(test::Exists(bin + "DemoApp.exe")) << out;
    EXPECT_TRUE(test::Exists(bin + "Demo.Lib.dll"));  // copied beside the application
    EXPECT_EQ(test::ReadFile(bin + "DemoApp.exe.config"),
              test::ReadFile(dir_ / "solution/App/App.config"));
    EXPECT_TRUE(test::Exists(dir_ / ("solution/Lib/obj/" + config + "/Demo.Lib.dll.licenses")));
    std::string output;
    EXPECT_EQ(test::RunProgram({"mono", bin + "DemoApp.exe"}, &output), 0) << output;
    EXPECT_EQ(output, config + ": Hello from the widget\nimage bytes: 43\n");
  }
  // Nothing was written among the sources but the response file.
  EXPECT_FALSE(test::Exists(dir_ / "solution/Lib/Demo.Widgets.Widget.resources"));
}

/// A machine whose vbc, vjc and resgen are the argv recorder.
class ProjectCompilersRecorded : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::string fw = dir_ / "fw/v4.0.30319/";
    for (const char* tool : {"vbc.exe", "vjc.exe"}) test::InstallRecorder(fw + tool);
    test::InstallRecorder(dir_ / "sdk/Bin/resgen.exe");
    test::WriteFile(dir_ / "registry.reg",
                    "Windows Registry Editor Version 5.00\r\n\r\n"
                    "[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\.NETFramework]\r\n"
                    "\"InstallRoot\"=\"" + dir_ / "fw/" + "\"\r\n"
                    "\"sdkInstallRootv4.0\"=\"" + dir_ / "sdk/" + "\"\r\n");
    std::string out;
    ASSERT_EQ(Marrowby({"options", "set", "Microsoft.NET", "DefaultSDKVersion", "v4.0"}, &out), 0)
        << out;
  }

  int Marrowby(std::vector<std::string> args, std::string* out) {
    args.insert(args.begin(), {MARROWBY_EXE, "--registry", dir_ / "registry.reg", "--options",
                               dir_ / "options.xml"});
    return test::RunProgram(args, out);
  }

  /// The response file the recorded compiler was given.
  std::string ResponseFile(const std::string& tool) {
    const nlohmann::json call = test::RecordedCall(dir_ / ("fw/v4.0.30319/" + tool));
    if (call.is_null() || !call.contains("responseFiles") || call["responseFiles"].empty())
      return "<not called>";
    return call["responseFiles"].begin().value().get<std::string>();
  }

  test::TempDir dir_;
};

TEST_F(ProjectCompilersRecorded, VBAndJSharpProjectsResponseFiles) {
  fs::copy(Fixture("vb"), dir_ / "vb", fs::copy_options::recursive);
  fs::copy(Fixture("jsharp"), dir_ / "jsharp", fs::copy_options::recursive);
  test::WriteFile(dir_ / "build.mbproj",
                  Project(Action("TWrenVBProjCompilerAction",
                                 {{"ProjectFile", "%ProjectDir%/vb/HelloVB.vbproj"},
                                  {"ConfigName", "Debug"}}) +
                          Action("TWrenJSProjCompilerAction",
                                 {{"ProjectFile", "%ProjectDir%/jsharp/HelloJ.vjsproj"},
                                  {"ConfigName", "Debug"},
                                  {"NoLogo", "true"}})));
  std::string out;
  ASSERT_EQ(Marrowby({"run", dir_ / "build.mbproj"}, &out), 0) << out;

  // VB: options and imports from the project, DEBUG and TRACE as VB defines them, the form's
  // resources named after the root namespace and the declared class, others after the file alone.
  const std::string vb = dir_ / "vb/";
  EXPECT_EQ(ResponseFile("vbc.exe"),
            "/imports:Microsoft.VisualBasic,System,System.Windows.Forms\r\n"
            "/keyfile:Hello.snk\r\n"
            "/removeintchecks\r\n"
            "/optionexplicit\r\n"
            "/optioncompare:text\r\n"
            "/rootnamespace:HelloVB\r\n"
            "/win32icon:\"Resources/App.ico\"\r\n"
            "/target:winexe\r\n"
            "/reference:System.dll\r\n"
            "/reference:System.Windows.Forms.dll\r\n"
            "/debug:full\r\n"
            "/warnaserror+\r\n"
            "/define:TRACING=1,DEBUG=True,TRACE=True\r\n"
            "/resource:\"" + vb + "obj/Debug/HelloVB.Screens.MainForm.resources\","
            "\"HelloVB.Screens.MainForm.resources\"\r\n"
            "/resource:\"" + vb + "Resources/logo.bmp\",\"HelloVB.logo.bmp\"\r\n"
            "/resource:\"" + vb + "obj/Debug/HelloVB.Strings.resources\",\"HelloVB.Strings.resources\"\r\n"
            "/main:HelloVB.MainForm\r\n"
            "/out:" + vb + "bin/HelloVB.exe\r\n"
            "\"MainForm.vb\"\r\n");

  // J#: the package and class of the source name the form's resources, the folder the others.
  const std::string js = dir_ / "jsharp/";
  EXPECT_EQ(ResponseFile("vjc.exe"),
            "/warn:2\r\n"
            "/target:exe\r\n"
            "/reference:vjslib.dll\r\n"
            "/nologo\r\n"
            "/debug:full\r\n"
            "/define:DEBUG;TRACE\r\n"
            "/resource:\"" + js + "obj/Debug/hello.Program.resources\",\"hello.Program.resources\"\r\n"
            "/resource:\"" + js + "Data/table.xml\",\"HelloJ.Data.table.xml\"\r\n"
            "/main:hello.Program\r\n"
            "/out:" + js + "bin/Debug/HelloJ.exe\r\n"
            "\"Program.jsl\"\r\n");
}

TEST_F(ProjectCompilersOnMono, CSharpBuilderProjectBuildsAndRuns) {
  fs::copy(Fixture("bdsproj"), dir_ / "bds", fs::copy_options::recursive);
  test::WriteFile(dir_ / "bds.mbproj",
                  Project(Action("TWrenBorlandCSBuilderProjCompilerAction",
                                 {{"ProjectFile", "%ProjectDir%/bds/BdsHello.bdsproj"}})));
  std::string out;
  ASSERT_EQ(Marrowby({"run", dir_ / "bds.mbproj"}, &out), 0) << out;
  std::string output;
  EXPECT_EQ(test::RunProgram({"mono", dir_ / "bds/bin/Debug/BdsHello.exe"}, &output), 0) << output;
  EXPECT_EQ(output, "Hello from C#Builder\nnote bytes: 6\n");
}

}  // namespace
}  // namespace wren
