#include "compilers/WrenDotNetManagedCompilerAction.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>

#include "WrenFiles.h"
#include "compilers/CompilerTestHelpers.h"

namespace wren {
namespace {

using test::TempDir;

/// The shared base on its own, so its lines are seen without a language's switches.
class TTestCompiler : public TWrenManagedCompilerAction {
 public:
  std::string ClassName() const override { return "TTestCompiler"; }
  std::string DisplayName() const override { return "Test Compiler"; }
  std::string GetDotNetTool() const override { return "csc.exe"; }

  std::string projectReader;

 protected:
  bool LoadBorlandProject(const std::string&) override {
    projectReader = "borland";
    return true;
  }
  bool LoadVisualStudioProject(const std::string&) override {
    projectReader = "visualstudio";
    return true;
  }
};

struct TGoldenCase {
  const char* golden;
  std::function<void(TTestCompiler&, const std::string& dir)> setup;
};

TEST(ManagedCompilerResponseFile, MatchesGoldenFilesByteForByte) {
  const std::vector<TGoldenCase> cases = {
      {"base_defaults.rsp", [](TTestCompiler& a, auto&) { a.Files = "a.cs;b.cs"; }},
      {"base_references.rsp",
       [](TTestCompiler& a, auto&) {
         a.References = "a.dll,/opt/My Libs/b.dll, c.dll";
         // Values that hold a quote anywhere are taken as quoted already.
         a.Defines = "DEBUG;\"A B\"";
         a.OutputFile = "\"/opt/out dir/x.dll\"";
         a.Debug = TDotNetDebugOptions::DebugOff;
         a.Files = "a.cs";
       }},
      {"base_exe_base_address.rsp",
       [](TTestCompiler& a, auto&) {
         a.Target = TDotNetTarget::Exe;
         a.BaseAddress = "0x11000000";
         a.Debug = TDotNetDebugOptions::DebugPDBOnly;
         a.Files = "a.cs";
       }},
      {"base_exe_base_address.rsp",
       [](TTestCompiler& a, auto&) {
         // Never expanded for an executable, so a bad expression does no harm.
         a.Target = TDotNetTarget::Exe;
         a.BaseAddress = "%NO_SUCH_VARIABLE%";
         a.Debug = TDotNetDebugOptions::DebugPDBOnly;
         a.Files = "a.cs";
       }},
      {"base_module_base_address.rsp",
       [](TTestCompiler& a, auto&) {
         a.Target = TDotNetTarget::Module;
         a.BaseAddress = "0x11000000";
         a.Files = "a.cs";
       }},
      {"base_recurse_delimited.rsp",
       [](TTestCompiler& a, auto&) {
         a.RecurseDir = "src/";
         a.RecurseFiles = "*.cs";
       }},
      {"base_recurse_undelimited.rsp",
       [](TTestCompiler& a, auto&) {
         a.RecurseDir = "src";
         a.RecurseFiles = "*.cs";
       }},
      {"base_recurse_blank.rsp",
       [](TTestCompiler& a, auto&) {
         a.RecurseDir = "my src/";
         a.RecurseFiles = "*.cs";
         a.Files = "extra.cs";
       }},
      {"base_recurse_mask_only.rsp", [](TTestCompiler& a, auto&) { a.RecurseFiles = "*.cs"; }},
      {"base_resources_no_root.rsp",
       [](TTestCompiler& a, const std::string& dir) {
         a.Resources = "Form1.resources,Strings.RESOURCES, logo.bmp,," + dir +
                       "Images/logo.bmp,\"my file.bmp\",data.txt=Data.Id";
         a.Files = "a.cs";
       }},
      {"base_resources_root.rsp",
       [](TTestCompiler& a, const std::string& dir) {
         a.RootNameSpace = "MyApp";
         a.Resources = "Form1.resources,Strings.RESOURCES, logo.bmp,," + dir +
                       "Images/logo.bmp,\"my file.bmp\"";
         a.Files = "a.cs";
       }},
      {"base_link_resources.rsp",
       [](TTestCompiler& a, auto&) {
         a.LinkResources = "a.txt,,b.txt,c.txt=Name";
         a.Files = "a.cs";
       }},
      {"base_project_resources.rsp",
       [](TTestCompiler& a, const std::string& dir) {
         a.RootNameSpace = "MyApp";
         a.ProjectResources = {dir + "obj/MyApp.Form1.resources", dir + "Images/logo.bmp"};
         a.ProjectLicenses = {dir + "obj/app.exe.licenses"};
         a.Files = "a.cs";
       }},
      {"base_all_switches.rsp",
       [](TTestCompiler& a, auto&) {
         a.Optimize = true;
         a.Modules = "m1.netmodule,m2.netmodule";
         a.References = "System.dll";
         a.NoLogo = true;
         a.SupressWarnings = "618,1591";
         a.WarnAsError = true;
         a.Defines = "DEBUG;TRACE";
         a.LinkResources = "readme.txt";
         a.Resources = "Form1.resources";
         a.ProjectResources = {"p.resources"};
         a.ProjectLicenses = {"l.licenses"};
         a.BaseAddress = "0x10000000";
         a.CodePage = "65001";
         a.MainClass = "App.Main";
         a.OutputFile = "%BIN%/My App.dll";
         a.RecurseDir = "src/";
         a.RecurseFiles = "*.cs";
         a.OutputInUTF8 = true;
         a.Files = "a.cs; b.cs";
       }},
  };
  for (const TGoldenCase& c : cases) {
    SCOPED_TRACE(c.golden);
    TempDir dir;
    test::TLoggingHost host;
    host.host.SetVariable("BIN", "bin");
    TTestCompiler action;
    action.SetHost(&host.host);
    action.ProjectDir = dir.path();
    c.setup(action, dir.path());
    EXPECT_EQ(test::CommandLineOf(action), "@\"" + dir.path() + "wrenresp.rsp\"") << host.Text();
    EXPECT_EQ(test::ReadFile(dir / "wrenresp.rsp"), test::GoldenFile(c.golden, dir.path()));
  }
}

TEST(ManagedCompilerResponseFile, FailuresEndTheStepBeforeAnyFileIsWritten) {
  struct TCase {
    const char* name;
    std::function<void(TTestCompiler&)> setup;
    const char* message;
  };
  const std::vector<TCase> cases = {
      {"nothing to compile", [](TTestCompiler&) {}, "No Files to Compile!"},
      {"blank files without a mask", [](TTestCompiler& a) { a.RecurseDir = "src/"; },
       "No Files to Compile!"},
      {"base address of a library",
       [](TTestCompiler& a) {
         a.BaseAddress = "%NO_SUCH_VARIABLE%";
         a.Files = "a.cs";
       },
       "Base Address"},
      {"recurse mask",
       [](TTestCompiler& a) {
         a.RecurseDir = "src/";
         a.RecurseFiles = "%NO_SUCH_VARIABLE%";
       },
       "Recurse Directory (2nd parameter)"},
      {"a reference",
       [](TTestCompiler& a) {
         a.References = "a.dll,%NO_SUCH_VARIABLE%.dll";
         a.Files = "a.cs";
       },
       "References"},
      {"output file",
       [](TTestCompiler& a) {
         a.OutputFile = "%NO_SUCH_VARIABLE%";
         a.Files = "a.cs";
       },
       "Output File"},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.name);
    TempDir dir;
    test::TLoggingHost host;
    TTestCompiler action;
    action.SetHost(&host.host);
    action.ProjectDir = dir.path();
    c.setup(action);
    EXPECT_EQ(test::CommandLineOf(action), "<failed>");
    EXPECT_TRUE(host.Logged(c.message)) << host.Text();
    EXPECT_FALSE(test::Exists(dir / "wrenresp.rsp"));
  }
}

TEST(ManagedCompilerResponseFile, ReplacesAnOldFileButNotALockedOne) {
  TempDir dir;
  test::TLoggingHost host;
  TTestCompiler action;
  action.SetHost(&host.host);
  action.ProjectDir = dir.path().substr(0, dir.path().size() - 1);  // no trailing delimiter
  action.Files = "a.cs;b.cs";
  const std::string path = dir / "wrenresp.rsp";

  test::WriteFile(path, "/target:exe\r\nold.cs\r\nmore\r\nlines\r\n");
  EXPECT_EQ(test::CommandLineOf(action), "@\"" + path + "\"");
  EXPECT_EQ(test::ReadFile(path), test::GoldenFile("base_defaults.rsp", dir.path()));

  // A read-only file cannot be deleted on Windows, so it is not replaced here either.
  test::WriteFile(path, "locked\r\n");
  ASSERT_EQ(chmod(path.c_str(), 0444), 0);
  EXPECT_EQ(test::CommandLineOf(action), "<failed>");
  EXPECT_TRUE(host.Logged("Could not create the response file: " + path)) << host.Text();
  EXPECT_EQ(test::ReadFile(path), "locked\r\n");
  ASSERT_EQ(chmod(path.c_str(), 0644), 0);

  host.log.clear();
  SetAtomicWriteFailAfter(0);
  const std::string result = test::CommandLineOf(action);
  SetAtomicWriteFailAfter(SIZE_MAX);
  EXPECT_EQ(result, "<failed>");
  EXPECT_TRUE(host.Logged("Could not create the response file: " + path)) << host.Text();
  EXPECT_EQ(test::ReadFile(path), "locked\r\n");
}

TEST(ManagedCompilerAction, StartsInTheExpandedProjectDirectory) {
  test::TLoggingHost host;
  host.host.SetVariable("SRC", "/work/src");
  TTestCompiler action;
  action.SetHost(&host.host);
  action.ProjectDir = "%SRC%/app";
  EXPECT_EQ(action.GetStartingDir("/fw/csc.exe"), "/work/src/app/");
  action.ProjectDir = "%NO_SUCH_VARIABLE%";
  EXPECT_EQ(action.GetStartingDir("/fw/csc.exe"), "");
  EXPECT_TRUE(host.Logged("ERROR! Unable to expand project directory"));
  EXPECT_EQ(test::CommandLineOf(action), "<failed>");
}

TEST(ManagedCompilerAction, ResetKeepsLogoUtf8AndLibraryLocations) {
  TTestCompiler action;
  EXPECT_EQ(action.MinimumSDKVersion, "1.0");
  EXPECT_FALSE(action.OverrideSDKDefault);
  EXPECT_EQ(action.GetDotNetToolType(), TWrenDotNetToolType::ttFramework);
  EXPECT_FALSE(action.IsCompactFramework());

  action.NoLogo = action.OutputInUTF8 = action.Optimize = action.WarnAsError = true;
  action.LibLocations = "/opt/lib";
  action.Target = TDotNetTarget::Exe;
  action.Debug = TDotNetDebugOptions::DebugOff;
  action.OutputFile = action.Files = action.ProjectDir = action.References = "x";
  action.RootNameSpace = action.RecurseDir = action.RecurseFiles = action.BaseAddress = "x";
  action.ProjectResources = {"r"};
  action.ProjectLicenses = {"l"};
  action.ResetOptions();
  EXPECT_TRUE(action.NoLogo);
  EXPECT_TRUE(action.OutputInUTF8);
  EXPECT_EQ(action.LibLocations, "/opt/lib");
  EXPECT_FALSE(action.Optimize);
  EXPECT_FALSE(action.WarnAsError);
  EXPECT_EQ(action.Target, TDotNetTarget::Lib);
  EXPECT_EQ(action.Debug, TDotNetDebugOptions::DebugFull);
  for (const std::string* field : {&action.OutputFile, &action.Files, &action.ProjectDir,
                                   &action.References, &action.RootNameSpace, &action.RecurseDir,
                                   &action.RecurseFiles, &action.BaseAddress})
    EXPECT_EQ(*field, "");
  EXPECT_TRUE(action.ProjectResources.empty());
  EXPECT_TRUE(action.ProjectLicenses.empty());
}

TEST(ManagedCompilerAction, ChoosesTheProjectReaderByExtension) {
  const std::vector<std::pair<const char*, const char*>> cases = {
      {"/src/App.bdsproj", "borland"},
      {"/src/APP.BDSPROJ", "borland"},
      {"/src/App.csproj", "visualstudio"},
      {"/src/App.bdsproj.bak", "visualstudio"},
      {"/src/bdsproj", "visualstudio"},
  };
  for (const auto& [file, reader] : cases) {
    TTestCompiler action;
    EXPECT_TRUE(action.LoadProjectFile(file));
    EXPECT_EQ(action.projectReader, reader) << file;
  }
}

TEST(ManagedCompilerHelpers, SplitQuotedListKeepsQuotedBlanksAndDelimiters) {
  const std::vector<std::pair<std::string, TStrings>> cases = {
      {"\"a.dll\",\"b c.dll\"", {"a.dll", "b c.dll"}},
      {"a b,c", {"a", "b", "c"}},
      {"\"x,y\",z", {"x,y", "z"}},
      {"\"say \"\"hi\"\"\"", {"say \"hi\""}},
      {"a,", {"a", ""}},
      {"\"\",b", {"", "b"}},
      {"", {}},
  };
  for (const auto& [text, items] : cases) EXPECT_EQ(SplitQuotedList(text), items) << text;
}

TEST(ManagedCompilerHelpers, RelativePathsForManifestNames) {
  EXPECT_EQ(RelativePathTo("/src/app/", "/src/app/Images/logo.bmp"), "Images/logo.bmp");
  EXPECT_EQ(RelativePathTo("/src/app/", "/src/lib/logo.bmp"), "../lib/logo.bmp");
  EXPECT_EQ(RelativePathTo("/src/app/", "Images/logo.bmp"), "Images/logo.bmp");
  EXPECT_EQ(RelativePathTo("/Src/", "/src/logo.bmp"), "../src/logo.bmp");
  EXPECT_EQ(RelativePathTo("C:\\Src\\", "c:\\src\\logo.bmp"), "logo.bmp");
  EXPECT_EQ(RelativePathTo("C:\\src\\", "D:\\res\\logo.bmp"), "D:\\res\\logo.bmp");
}

}  // namespace
}  // namespace wren
