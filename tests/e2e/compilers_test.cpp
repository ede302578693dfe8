// End-to-end runs of the compiler actions on Mono: mcs standing in as csc.exe and xbuild as
// msbuild.exe in a framework folder built by SetupMono, started through the real process runner.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "TestSupport.h"
#include "WrenRegistry.h"
#include "compilers/CompilerTestHelpers.h"
#include "compilers/WrenCSharpCompilerAction.h"
#include "compilers/WrenMSBuildAction.h"
#include "dotnet/WrenDotNetFrameWorkAPI.h"
#include "runtime/WrenMonoSetup.h"
#include "runtime/WrenRegistryHive.h"

namespace wren {
namespace {

using test::TempDir;

/// A Mono framework folder registered as the machine's .NET Framework v4.0 for one test.
class CompilersOnMono : public ::testing::Test {
 protected:
  void SetUp() override {
    TMonoSetupResult result;
    std::string error;
    ASSERT_TRUE(SetupMono(mono_ / "setup", "", result, error))
        << "Mono is required for these tests: " << error;
    std::shared_ptr<IWrenRegistry> registry = LoadRegistryHive({result.hiveFile}, error);
    ASSERT_TRUE(registry) << error;
    SetWrenRegistry(registry);
    ReleaseWrenDotNetInfo();
    ASSERT_TRUE(WrenDotNetInfo()->GetFrameWorkBySDKVersion("v4.0"))
        << "setup-mono registered no v4.0 framework";
  }
  void TearDown() override {
    SetWrenRegistry(nullptr);
    ReleaseWrenDotNetInfo();
  }

  /// A C# action of the test framework, logging into host.
  void Prepare(TWrenDotNetAction& action, test::TLoggingHost& host) {
    action.SetHost(&host.host);
    action.OverrideSDKDefault = true;
    action.SetDefaultSDKVersion("v4.0");
  }

  TempDir mono_;
  TempDir work_;
};

TEST_F(CompilersOnMono, CSharpBuildsALibraryAndAnExeThatUsesIt) {
  const std::string libDir = work_ / "lib src/";
  const std::string appDir = work_ / "app/";
  const std::string libs = work_ / "My Libs/";
  std::filesystem::create_directories(libDir);
  std::filesystem::create_directories(appDir);
  std::filesystem::create_directories(libs);
  test::WriteFile(libDir + "Greeter.cs",
                  "namespace Demo { public static class Greeter {\n"
                  "  public static string Greet(string who) {\n"
                  "    return Words.Hello + \", \" + who;\n"
                  "  }\n"
                  "} }\n");
  test::WriteFile(
      libDir + "Words.cs",
      "namespace Demo { static class Words { public const string Hello = \"Hello\"; } }\n");
  test::WriteFile(appDir + "Program.cs",
                  "class Program { static void Main() {\n"
                  "  System.Console.WriteLine(Demo.Greeter.Greet(\"Marrowby\"));\n"
                  "} }\n");

  test::TLoggingHost libHost;
  TWrenCSharpCompilerAction library;
  Prepare(library, libHost);
  library.ProjectDir = libDir;
  library.Files = "Greeter.cs;Words.cs";
  library.Target = TDotNetTarget::Lib;
  library.OutputFile = libs + "Greeter.dll";
  library.NoLogo = true;
  ASSERT_TRUE(library.Execute()) << libHost.Text();
  EXPECT_EQ(libHost.log.back(), "Project Compiled OK.");
  ASSERT_TRUE(test::Exists(libs + "Greeter.dll"));

  // The reference's path holds a blank; the response file quotes it and mcs reads it back.
  test::TLoggingHost appHost;
  TWrenCSharpCompilerAction app;
  Prepare(app, appHost);
  app.ProjectDir = appDir;
  app.Files = "Program.cs";
  app.Target = TDotNetTarget::Exe;
  app.References = "System.dll," + libs + "Greeter.dll";
  app.OutputFile = "Hello.exe";
  ASSERT_TRUE(app.Execute()) << appHost.Text();
  const std::string quotedReference = "/reference:\"" + libs + "Greeter.dll\"\r\n";
  EXPECT_NE(test::ReadFile(appDir + "wrenresp.rsp").find(quotedReference), std::string::npos);
  ASSERT_TRUE(test::Exists(appDir + "Hello.exe")) << appHost.Text();

  std::filesystem::copy_file(libs + "Greeter.dll", appDir + "Greeter.dll");
  std::string output;
  EXPECT_EQ(test::RunProgram({"mono", appDir + "Hello.exe"}, &output), 0);
  EXPECT_EQ(output, "Hello, Marrowby\n");

  // The same reference found through the library directories: C#'s whole-switch quoted /lib line.
  test::TLoggingHost libPathHost;
  TWrenCSharpCompilerAction viaLib;
  Prepare(viaLib, libPathHost);
  viaLib.ProjectDir = appDir;
  viaLib.Files = "Program.cs";
  viaLib.Target = TDotNetTarget::Exe;
  viaLib.LibLocations = libs;
  viaLib.References = "Greeter.dll";
  viaLib.OutputFile = "HelloLib.exe";
  ASSERT_TRUE(viaLib.Execute()) << libPathHost.Text();
  EXPECT_NE(test::ReadFile(appDir + "wrenresp.rsp").find("\"/lib:" + libs + "\"\r\n"),
            std::string::npos);
  output.clear();
  EXPECT_EQ(test::RunProgram({"mono", appDir + "HelloLib.exe"}, &output), 0);
  EXPECT_EQ(output, "Hello, Marrowby\n");
}

// The code asks for its resource by the root namespace it was built with and the folder the
// resource lies in; the response file must name it so.
TEST_F(CompilersOnMono, EmbeddedResourceLoadsUnderTheExpandedRootNameSpace) {
  const std::string dir = work_.path();
  std::filesystem::create_directories(dir + "Images");
  test::WriteFile(dir + "Images/greeting.txt", "Hello from a resource");
  test::WriteFile(dir + "Program.cs",
                  "class Program { static int Main() {\n"
                  "  var stream = typeof(Program).Assembly\n"
                  "      .GetManifestResourceStream(\"Corp.App.Images.greeting.txt\");\n"
                  "  if (stream == null) return 3;\n"
                  "  System.Console.Write(new System.IO.StreamReader(stream).ReadToEnd());\n"
                  "  return 0;\n"
                  "} }\n");
  test::TLoggingHost host;
  host.host.SetVariable("NS", "Corp.App");
  TWrenCSharpCompilerAction action;
  Prepare(action, host);
  action.ProjectDir = dir;
  action.Files = "Program.cs";
  action.Target = TDotNetTarget::Exe;
  action.RootNameSpace = "%NS%";
  action.Resources = "Images/greeting.txt";
  action.OutputFile = "Resource.exe";
  ASSERT_TRUE(action.Execute()) << host.Text();
  std::string output;
  EXPECT_EQ(test::RunProgram({"mono", dir + "Resource.exe"}, &output), 0) << output;
  EXPECT_EQ(output, "Hello from a resource");
}

// A line break in a value would be a line, so a switch, of the response file: here one that
// makes mcs write another assembly. Neither from the action nor from the environment.
TEST_F(CompilersOnMono, ALineBreakInAValueNeverReachesTheCompiler) {
  const std::string dir = work_.path();
  const std::string injected = "hello.exe\n/define:INJECTED\n/out:evil.exe";
  test::WriteFile(dir + "Program.cs", "class Program { static void Main() {} }\n");
  ASSERT_EQ(setenv("MARROWBY_TEST_INJECTED", injected.c_str(), 1), 0);
  for (const std::string& outputFile : {injected, std::string("%MARROWBY_TEST_INJECTED%")}) {
    SCOPED_TRACE(outputFile);
    test::TLoggingHost host;
    TWrenCSharpCompilerAction action;
    Prepare(action, host);
    action.ProjectDir = dir;
    action.Files = "Program.cs";
    action.Target = TDotNetTarget::Exe;
    action.OutputFile = outputFile;
    EXPECT_FALSE(action.Execute());
    EXPECT_FALSE(host.host.ProcessStarted());
    EXPECT_TRUE(host.Logged("Output File: the value holds a line break")) << host.Text();
  }
  unsetenv("MARROWBY_TEST_INJECTED");
  EXPECT_FALSE(test::Exists(dir + "evil.exe"));
  EXPECT_FALSE(test::Exists(dir + "wrenresp.rsp"));
}

TEST_F(CompilersOnMono, CSharpCompileErrorFailsTheStepWithTheCompilersMessage) {
  const std::string dir = work_.path();
  test::WriteFile(dir + "Broken.cs", "class Broken { void F() { int x = } }\n");
  test::TLoggingHost host;
  TWrenCSharpCompilerAction action;
  Prepare(action, host);
  action.ProjectDir = dir;
  action.Files = "Broken.cs";
  EXPECT_FALSE(action.Execute());
  EXPECT_NE(action.LastExitCode(), 0);
  EXPECT_TRUE(host.Logged("Broken.cs(1,")) << host.Text();
  EXPECT_TRUE(host.Logged("error CS")) << host.Text();
  EXPECT_FALSE(host.Logged("Project Compiled OK."));
}

// A value holding a semicolon (DEBUG;TRACE) stays one property: msbuild reads the quotes on
// Windows, and xbuild, which only gets an argv, would take TRACE for a property of its own.
TEST_F(CompilersOnMono, MSBuildPassesEachPropertyWholeToTheBuild) {
  const std::string dir = work_ / "ms build/";
  std::filesystem::create_directories(dir);
  test::WriteFile(dir + "build.proj",
                  R"xml(<Project xmlns="http://schemas.microsoft.com/developer/msbuild/2003">
  <Target Name="Report">
    <WriteLinesToFile File="$(MSBuildProjectDirectory)/report.txt"
                      Lines="$(Configuration)|$(Platform)" Overwrite="true" />
    <Message Text="DefineConstants=[$(DefineConstants)]" Importance="high" />
  </Target>
  <Target Name="Other">
    <WriteLinesToFile File="$(MSBuildProjectDirectory)/other.txt" Lines="other" Overwrite="true" />
  </Target>
</Project>
)xml");
  test::TLoggingHost host;
  TMSBuildAction action;
  Prepare(action, host);
  action.BuildFile = "%BUILD_DIR%build.proj";
  host.host.SetVariable("BUILD_DIR", dir);
  action.Properties = {"Configuration=Release", "DefineConstants=DEBUG;TRACE", "Platform=Any CPU"};
  action.Targets = "Report";
  action.NoLogo = true;
  ASSERT_TRUE(action.Execute()) << host.Text();
  EXPECT_EQ(test::ReadFile(dir + "report.txt"), "Release|Any CPU\n");
  EXPECT_TRUE(host.Logged("DefineConstants=[DEBUG;TRACE]")) << host.Text();
  EXPECT_FALSE(test::Exists(dir + "other.txt"));
}

TEST_F(CompilersOnMono, MSBuildWithoutItsProjectFileStartsNothing) {
  test::TLoggingHost host;
  TMSBuildAction action;
  Prepare(action, host);
  action.BuildFile = work_ / "missing.proj";
  EXPECT_FALSE(action.Execute());
  EXPECT_TRUE(host.Logged("Project file does not exist : " + work_ / "missing.proj"))
      << host.Text();
  EXPECT_FALSE(host.host.ProcessStarted());
  EXPECT_EQ(action.LastExitCode(), -1);
}

}  // namespace
}  // namespace wren
