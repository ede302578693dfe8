#include "compilers/WrenDotNetProjectCompilerAction.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "compilers/CompilerTestHelpers.h"

namespace wren {
namespace {

namespace fs = std::filesystem;

/// A copy of the two-project solution fixture, and a machine whose framework folder and SDK
/// (empty folders: the steps run dry) are registered for the test.
class ProjectActions : public ::testing::Test {
 protected:
  void SetUp() override {
    fs::copy(std::string(SOURCE_DIR) + "/tests/fixtures/projcomp/solution", dir_ / "solution",
             fs::copy_options::recursive);
    fs::create_directories(dir_ / "fw/v4.0.30319");
    fs::create_directories(dir_ / "sdk/Bin");
    test::WriteFile(dir_ / "solution/Vendor/Vendor.dll", "");
    UseRegistry("");
    host_.host.SetDryRun(true);
  }
  /// The machine's registry: the framework and SDK, then the extra text.
  void UseRegistry(const std::string& extra) {
    const std::string reg =
        "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\.NETFramework]\n"
        "\"InstallRoot\"=\"" + dir_ / "fw/" + "\"\n"
        "\"sdkInstallRootv4.0\"=\"" + dir_ / "sdk/" + "\"\n\n" + extra;
    std::string error;
    std::shared_ptr<IWrenRegistry> registry = ParseRegistryText(reg, "machine.reg", error);
    ASSERT_TRUE(registry) << error;
    SetWrenRegistry(registry);
    ReleaseWrenDotNetInfo();
  }
  void TearDown() override {
    SetWrenRegistry(nullptr);
    ReleaseWrenDotNetInfo();
  }

  void Prepare(TWrenCSProjCompilerAction& action, const std::string& project,
               const std::string& config) {
    action.SetHost(&host_.host);
    action.OverrideSDKDefault = true;
    action.SetDefaultSDKVersion("v4.0");
    action.ProjectFile = dir_ / ("solution/" + project);
    action.ConfigName = config;
    action.NoLogo = true;
  }

  std::string Lib() const { return dir_ / "solution/Lib/"; }

  test::TempDir dir_;
  test::TLoggingHost host_;
};

TEST_F(ProjectActions, LibraryResponseFilesForBothConfigurations) {
  TWrenCSProjCompilerAction action;
  Prepare(action, "Lib/Lib.csproj", "Debug");
  ASSERT_EQ(test::CommandLineOf(action), "@\"" + Lib() + "wrenresp.rsp\"") << host_.Text();
  const std::string lib = Lib();
  const std::string vendor = dir_ / "solution/Vendor/Vendor.dll";
  EXPECT_EQ(test::ReadFile(lib + "wrenresp.rsp"),
            "/filealign:4096\r\n"
            "/checked-\r\n"
            "/warn:4\r\n"
            "/target:library\r\n"
            "/reference:System.dll\r\n"
            "/reference:" + vendor + "\r\n"
            "/nologo\r\n"
            "/debug:full\r\n"
            "/define:DEBUG;TRACE\r\n"
            "/resource:\"" + lib + "Images/dot.gif\",\"Demo.Lib.Images.dot.gif\"\r\n"
            "/resource:\"" + lib + "obj/Debug/Demo.Widgets.Widget.resources\","
            "\"Demo.Widgets.Widget.resources\"\r\n"
            "/resource:\"" + lib + "obj/Debug/Demo.Lib.dll.licenses\"\r\n"
            "/baseaddress:285212672\r\n"
            "/out:" + lib + "bin/Debug/Demo.Lib.dll\r\n"
            "\"AssemblyInfo.cs\"\r\n"
            "\"Widget.cs\"\r\n");
  // The resource steps, recorded instead of run: lc with the references, resgen per .resx.
  const auto& runs = host_.host.DryRunRecords();
  ASSERT_EQ(runs.size(), 2u);
  EXPECT_EQ(runs[0].executable, dir_ / "sdk/Bin/lc.exe");
  EXPECT_EQ(runs[0].argv, (std::vector<std::string>{
                              "/target:Demo.Lib.dll", "/complist:" + lib + "licenses.licx",
                              "/outdir:" + lib + "obj/Debug/", "/i:System.dll", "/i:" + vendor}));
  EXPECT_EQ(runs[1].executable, dir_ / "sdk/Bin/resgen.exe");
  EXPECT_EQ(runs[1].argv,
            (std::vector<std::string>{lib + "Widget.resx",
                                      lib + "obj/Debug/Demo.Widgets.Widget.resources"}));
  EXPECT_EQ(runs[1].workingDir, lib);

  // Release: optimised, no debug switch, the empty warning level as the default, its own folders.
  TWrenCSProjCompilerAction release;
  Prepare(release, "Lib/Lib.csproj", "RELEASE");
  ASSERT_NE(test::CommandLineOf(release), "<failed>") << host_.Text();
  const std::string text = test::ReadFile(lib + "wrenresp.rsp");
  for (const char* line : {"/optimize\r\n", "/warn:4\r\n", "/define:TRACE\r\n"})
    EXPECT_NE(text.find(line), std::string::npos) << line;
  EXPECT_EQ(text.find("/debug"), std::string::npos);
  EXPECT_NE(text.find("/out:" + lib + "bin/Release/Demo.Lib.dll\r\n"), std::string::npos);
  EXPECT_NE(text.find(lib + "obj/Release/Demo.Widgets.Widget.resources"), std::string::npos);

  // The output folder set on the action wins over the project's.
  TWrenCSProjCompilerAction moved;
  Prepare(moved, "Lib/Lib.csproj", "Debug");
  moved.OutputDir = dir_ / "out";
  ASSERT_NE(test::CommandLineOf(moved), "<failed>") << host_.Text();
  EXPECT_NE(test::ReadFile(lib + "wrenresp.rsp").find("/out:" + dir_ / "out/Demo.Lib.dll\r\n"),
            std::string::npos);
}

TEST_F(ProjectActions, AppResolvesTheLibraryThroughTheSolution) {
  TWrenCSProjCompilerAction app;
  Prepare(app, "App/App.csproj", "Debug");
  // Not built yet: the step fails naming the project and the missing output.
  EXPECT_EQ(test::CommandLineOf(app), "<failed>");
  EXPECT_TRUE(host_.Logged("Unable to resolve project reference Lib: project Lib has not been built: " +
                           Lib() + "bin/Debug/Demo.Lib.dll is missing"))
      << host_.Text();

  test::WriteFile(Lib() + "bin/Debug/Demo.Lib.dll", "");
  ASSERT_NE(test::CommandLineOf(app), "<failed>") << host_.Text();
  const std::string text = test::ReadFile(dir_ / "solution/App/wrenresp.rsp");
  for (const std::string& line : std::vector<std::string>{"/target:exe", "/reference:System.dll", "/reference:" + Lib() + "bin/Debug/Demo.Lib.dll",
        "/nowarn:0618", "/main:Demo.App.Program", "\"Program.cs\""})
    EXPECT_NE(text.find(line + "\r\n"), std::string::npos) << line << "\n" << text;
  EXPECT_EQ(text.find("/baseaddress"), std::string::npos);
}

TEST_F(ProjectActions, ProjectsThatCannotBeLoadedFailWithOneMessageAndNoResponseFile) {
  struct Case {
    const char* project;
    const char* config;
    std::function<void(const std::string& lib)> prepare;
    std::string message;
  };
  const std::string lib = Lib();
  const Case cases[] = {
      {"Lib/Lib.csproj", "Staging", nullptr,
       "Unable to load project " + lib + "Lib.csproj: it has no configuration named \"Staging\" "
       "(configurations: Debug, Release)"},
      {"Lib/Missing.csproj", "Debug", nullptr,
       "Unable to load project " + lib + "Missing.csproj: the file does not exist"},
      {"Lib/Lib.csproj", "Debug", [](const std::string& l) { fs::remove(l + "../Vendor/Vendor.dll"); },
       "Unable to resolve reference Vendor: looked in " + dir_ / "solution/Vendor/Vendor.dll" +
           ", " + dir_ / "fw/v4.0.30319/Vendor.dll"},
      {"Lib/HelloVB.vbproj", "Debug",
       [](const std::string& l) {
         fs::copy_file(std::string(SOURCE_DIR) + "/tests/fixtures/projcomp/vb/HelloVB.vbproj",
                       l + "HelloVB.vbproj");
       },
       "Unable to load project " + lib +
           "HelloVB.vbproj: it is not a project of Microsoft C# Project Compiler"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    host_.log.clear();
    fs::remove(lib + "wrenresp.rsp");
    if (c.prepare) c.prepare(lib);
    TWrenCSProjCompilerAction action;
    Prepare(action, c.project, c.config);
    EXPECT_EQ(test::CommandLineOf(action), "<failed>");
    ASSERT_EQ(host_.log.size(), 1u) << host_.Text();
    EXPECT_EQ(host_.log[0], c.message);
    EXPECT_FALSE(test::Exists(lib + "wrenresp.rsp"));
  }
}

TEST_F(ProjectActions, ComReferencesGetWrappersFromTheRegisteredTypeLibrary) {
  const std::string guid = "{EAB22AC0-30C1-11CF-A7EB-0000C05BAE0B}";
  UseRegistry("[HKEY_CLASSES_ROOT\\TypeLib\\" + guid + "\\1.1\\0\\win32]\n@=\"" +
              dir_ / "system/shdocvw.dll" + "\"\n");
  const std::string com = dir_ / "solution/Com/";
  auto write = [&](const std::string& extraReference) {
    test::WriteFile(com + "Com.csproj",
                    "<VisualStudioProject><CSHARP><Build>"
                    "<Settings AssemblyName = \"Com\" OutputType = \"WinExe\" RootNamespace = \"Com\">"
                    "<Config Name = \"Debug\" OutputPath = \"bin\\\" DebugSymbols = \"false\"/>"
                    "</Settings><References>"
                    "<Reference Name = \"SHDocVw\" Guid = \"" + guid + "\" VersionMajor = \"1\" "
                    "VersionMinor = \"1\" Lcid = \"0\" WrapperTool = \"tlbimp\"/>"
                    "<Reference Name = \"AxSHDocVw\" Guid = \"" + guid + "\" VersionMajor = \"1\" "
                    "VersionMinor = \"1\" Lcid = \"0\" WrapperTool = \"aximp\"/>" +
                    extraReference +
                    "</References></Build><Files><Include>"
                    "<File RelPath = \"Main.cs\" BuildAction = \"Compile\"/>"
                    "</Include></Files></CSHARP></VisualStudioProject>");
  };
  write("");
  TWrenCSProjCompilerAction action;
  Prepare(action, "Com/Com.csproj", "Debug");
  ASSERT_NE(test::CommandLineOf(action), "<failed>") << host_.Text();
  const std::string obj = com + "obj/Debug/";
  const auto& runs = host_.host.DryRunRecords();
  ASSERT_EQ(runs.size(), 2u);
  EXPECT_EQ(runs[0].executable, dir_ / "sdk/Bin/tlbimp.exe");
  EXPECT_EQ(runs[0].argv, (std::vector<std::string>{dir_ / "system/shdocvw.dll",
                                                    "/out:" + obj + "Interop.SHDocVw.dll",
                                                    "/namespace:SHDocVw"}));
  EXPECT_EQ(runs[1].executable, dir_ / "sdk/Bin/aximp.exe");
  EXPECT_EQ(runs[1].argv, (std::vector<std::string>{dir_ / "system/shdocvw.dll",
                                                    "/out:" + obj + "AxInterop.SHDocVw.dll",
                                                    "/rcw:" + obj + "Interop.SHDocVw.dll"}));
  const std::string text = test::ReadFile(com + "wrenresp.rsp");
  EXPECT_NE(text.find("/reference:" + obj + "Interop.SHDocVw.dll\r\n/reference:" + obj +
                      "AxInterop.SHDocVw.dll\r\n"),
            std::string::npos)
      << text;

  // Unregistered libraries and missing primary interop assemblies fail the step naming them.
  struct Case {
    std::string reference;
    std::string message;
  };
  const Case cases[] = {
      {"<Reference Name = \"Shell32\" Guid = \"{50A7E9B0-70EF-11D1-B75A-00A0C90564FE}\" "
       "VersionMajor = \"1\" VersionMinor = \"10\" Lcid = \"0\" WrapperTool = \"tlbimp\"/>",
       "Unable to resolve COM reference Shell32: type library "
       "{50A7E9B0-70EF-11D1-B75A-00A0C90564FE} 1.10 is not registered"},
      {"<Reference Name = \"stdole\" Guid = \"{00020430-0000-0000-C000-000000000046}\" "
       "VersionMajor = \"2\" VersionMinor = \"0\" Lcid = \"0\" WrapperTool = \"primary\"/>",
       "Unable to resolve COM reference stdole: no primary interop assembly found (looked in "},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    write(c.reference);
    host_.log.clear();
    TWrenCSProjCompilerAction failing;
    Prepare(failing, "Com/Com.csproj", "Debug");
    EXPECT_EQ(test::CommandLineOf(failing), "<failed>");
    EXPECT_TRUE(host_.Logged(c.message)) << host_.Text();
  }
}

}  // namespace
}  // namespace wren
