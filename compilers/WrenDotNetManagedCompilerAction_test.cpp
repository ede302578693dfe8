#include "compilers/WrenDotNetManagedCompilerAction.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <functional>

#include "WrenFiles.h"
#include "compilers/CompilerTestHelpers.h"

namespace wren {
namespace {

/// The shared base on its own, so its lines are seen without a language's switches.
class TTestCompiler : public TWrenManagedCompilerAction {
 public:
  std::string ClassName() const override { return "TTestCompiler"; }
  std::string DisplayName() const override { return "Test Compiler"; }
  std::string GetDotNetTool() const override { return "csc.exe"; }
  bool GenerateResponseFile(const std::string& projectDir, TStrings& lines) override {
    if (!rawLine.empty()) lines.push_back(rawLine);
    return TWrenManagedCompilerAction::GenerateResponseFile(projectDir, lines);
  }
  std::string projectReader;
  /// A line added as it stands, as a subclass that checks nothing might.
  std::string rawLine;

 protected:
  bool LoadBorlandProject(const std::string&) override { projectReader = "borland"; return true; }
  bool LoadVisualStudioProject(const std::string&) override {
    projectReader = "visualstudio";
    return true;
  }
};

using TSetup = std::function<void(TTestCompiler&, const std::string& dir)>;

/// The test compiler on a project folder of its own, compiling a.cs, with a host that holds the
/// variables and keeps the log.
struct TCompilerInFolder {
  explicit TCompilerInFolder(const std::vector<std::pair<std::string, std::string>>& variables) {
    for (const auto& [name, value] : variables) host.host.SetVariable(name, value);
    action.SetHost(&host.host);
    action.ProjectDir = dir.path();
    action.Files = "a.cs";
  }
  test::TempDir dir;
  test::TLoggingHost host;
  TTestCompiler action;
};

/// Resources of both kinds: compiled and plain, blank, upper case, absolute, quoted, empty.
std::string MixedResources(const std::string& dir) {
  return "Form1.resources,Strings.RESOURCES, logo.bmp,," + dir + "Images/logo.bmp,\"my file.bmp\"";
}

// Each case expects a golden file (*.rsp) or the message of a failure that writes no file.
TEST(ManagedCompilerResponseFile, MatchesGoldenFilesByteForByteOrFailsWritingNothing) {
  const std::vector<std::pair<TSetup, const char*>> cases = {
      {[](auto& a, auto&) { a.Files = "a.cs;b.cs"; }, "base_defaults.rsp"},
      {[](auto& a, auto&) {
         a.References = "a.dll,/opt/My Libs/b.dll, c.dll";
         a.Defines = "DEBUG;\"A B\"";  // a quote anywhere: taken as quoted already
         a.OutputFile = "\"/opt/out dir/x.dll\"";
         a.Debug = TDotNetDebugOptions::DebugOff;
       }, "base_references.rsp"},
      {[](auto& a, auto&) {
         // Neither written nor expanded for an executable, so a bad expression does no harm.
         a.Target = TDotNetTarget::Exe;
         a.BaseAddress = "%NO_SUCH_VARIABLE%";
         a.Debug = TDotNetDebugOptions::DebugPDBOnly;
       }, "base_exe_base_address.rsp"},
      {[](auto& a, auto&) { a.Target = TDotNetTarget::Module; a.BaseAddress = "0x11000000"; },
       "base_module_base_address.rsp"},
      {[](auto& a, auto&) { a.Files = ""; a.RecurseDir = "src/"; a.RecurseFiles = "*.cs"; },
       "base_recurse_delimited.rsp"},
      {[](auto& a, auto&) { a.Files = ""; a.RecurseDir = "src"; a.RecurseFiles = "*.cs"; },
       "base_recurse_undelimited.rsp"},
      {[](auto& a, auto&) {
         a.Files = "extra.cs"; a.RecurseDir = "my src/"; a.RecurseFiles = "*.cs";
       }, "base_recurse_blank.rsp"},
      {[](auto& a, auto&) { a.Files = ""; a.RecurseFiles = "*.cs"; }, "base_recurse_mask_only.rsp"},
      {[](auto& a, auto& dir) { a.Resources = MixedResources(dir) + ",data.txt=Data.Id"; },
       "base_resources_no_root.rsp"},
      {[](auto& a, auto& dir) { a.RootNameSpace = "MyApp"; a.Resources = MixedResources(dir); },
       "base_resources_root.rsp"},
      {[](auto& a, auto&) {
         // Manifest names use the root namespace the code sees, and either delimiter.
         a.RootNameSpace = "%NS%";
         a.Resources = "i.bmp,Images\\logo.bmp,Form1.resources";
         a.ProjectResources = {"Sub/Form2.resources"};
       }, "base_resources_expanded_root.rsp"},
      {[](auto& a, auto& dir) {
         a.RootNameSpace = " %EMPTY% ";
         a.Resources = MixedResources(dir) + ",data.txt=Data.Id";
       }, "base_resources_no_root.rsp"},
      {[](auto& a, auto&) { a.LinkResources = "a.txt,,b.txt,c.txt=Name"; },
       "base_link_resources.rsp"},
      {[](auto& a, auto& dir) {
         a.RootNameSpace = "MyApp";
         a.ProjectResources = {dir + "obj/MyApp.Form1.resources", dir + "Images/logo.bmp"};
         a.ProjectLicenses = {dir + "obj/app.exe.licenses"};
       }, "base_project_resources.rsp"},
      {[](auto& a, auto&) {
         a.Optimize = a.NoLogo = a.WarnAsError = a.OutputInUTF8 = true;
         a.Modules = "m1.netmodule,m2.netmodule"; a.References = "System.dll";
         a.SupressWarnings = "618,1591"; a.Defines = "DEBUG;TRACE";
         a.LinkResources = "readme.txt"; a.Resources = "Form1.resources";
         a.ProjectResources = {"p.resources"}; a.ProjectLicenses = {"l.licenses"};
         a.BaseAddress = "0x10000000"; a.CodePage = "65001"; a.MainClass = "App.Main";
         a.OutputFile = "%BIN%/My App.dll"; a.RecurseDir = "src/"; a.RecurseFiles = "*.cs";
         a.Files = "a.cs; b.cs";
       }, "base_all_switches.rsp"},
      {[](auto& a, auto&) { a.Files = ""; }, "No Files to Compile!"},
      {[](auto& a, auto&) { a.Files = ""; a.RecurseDir = "src/"; }, "No Files to Compile!"},
      {[](auto& a, auto&) { a.BaseAddress = "%NO_SUCH_VARIABLE%"; }, "Base Address"},
      {[](auto& a, auto&) { a.RecurseDir = "src/"; a.RecurseFiles = "%NO_SUCH_VARIABLE%"; },
       "Recurse Directory (2nd parameter)"},
      {[](auto& a, auto&) { a.References = "a.dll,%NO_SUCH_VARIABLE%.dll"; }, "References"},
      {[](auto& a, auto&) { a.OutputFile = "%NO_SUCH_VARIABLE%"; }, "Output File"},
      {[](auto& a, auto&) { a.RootNameSpace = "%NO_SUCH_VARIABLE%"; a.Resources = "i.bmp"; },
       "Root NameSpace"},
  };
  for (const auto& [setup, expected] : cases) {
    SCOPED_TRACE(expected);
    TCompilerInFolder run({{"BIN", "bin"}, {"NS", "Corp.App"}, {"EMPTY", ""}});
    auto& [dir, host, action] = run;
    setup(action, dir.path());
    const std::string commandLine = test::CommandLineOf(action), rsp = dir / "wrenresp.rsp";
    if (std::string(expected).ends_with(".rsp")) {
      EXPECT_EQ(commandLine, "@\"" + rsp + "\"") << host.Text();
      EXPECT_EQ(test::ReadFile(rsp), test::GoldenFile(expected, dir.path()));
    } else {
      EXPECT_EQ(commandLine, "<failed>");
      EXPECT_TRUE(host.Logged(expected)) << host.Text();
      EXPECT_FALSE(test::Exists(rsp));
    }
  }
}

// A line break in any value would give the compiler a switch of its own (here /out:evil.exe).
TEST(ManagedCompilerResponseFile, AValueWithALineBreakFailsNamingItsCaptionAndWritesNothing) {
  const std::string injected = "hello.exe\n/define:INJECTED\n/out:evil.exe";
  const std::vector<std::pair<TSetup, const char*>> cases = {
      {[&](auto& a, auto&) { a.OutputFile = injected; }, "Output File"},
      {[](auto& a, auto&) { a.Defines = "%INJECTED%"; }, "Define Preprocessor Symbols"},
      {[](auto& a, auto&) { a.MainClass = "App\r/out:evil.exe"; }, "Main Class"},
      {[](auto& a, auto&) { a.References = "a.dll,b.dll\n/out:evil.exe"; }, "References"},
      {[](auto& a, auto&) { a.Modules = "m.netmodule\r\n/out:evil.exe"; }, "Modules"},
      {[](auto& a, auto&) { a.RecurseDir = "src/"; a.RecurseFiles = "*.cs\n/out:evil.exe"; },
       "Recurse Directory (2nd parameter)"},
      {[](auto& a, auto&) { a.LinkResources = "a.txt,%INJECTED%"; }, "Link Resource"},
      {[](auto& a, auto&) { a.Resources = "i.bmp\n/out:evil.exe"; }, "Resource"},
      {[](auto& a, auto&) { a.ProjectResources = {"i.bmp\n/out:evil.exe"}; }, "Resource"},
      {[](auto& a, auto&) { a.ProjectLicenses = {"l.licenses\n/out:evil.exe"}; }, "Licenses"},
      {[](auto& a, auto&) { a.RootNameSpace = "%INJECTED%"; a.Resources = "i.bmp"; },
       "Root NameSpace"},
      {[](auto& a, auto&) { a.Files = "a.cs;b.cs\n/out:evil.exe"; }, "Files"},
  };
  for (const auto& [setup, caption] : cases) {
    SCOPED_TRACE(caption);
    TCompilerInFolder run({{"INJECTED", injected}});
    auto& [dir, host, action] = run;
    setup(action, dir.path());
    EXPECT_EQ(test::CommandLineOf(action), "<failed>");
    EXPECT_TRUE(host.Logged(std::string(caption) + ": the value holds a line break"))
        << host.Text();
    EXPECT_FALSE(test::Exists(dir / "wrenresp.rsp"));
  }
}

TEST(ManagedCompilerResponseFile, ReplacesAnOldFileButNotALockedOne) {
  test::TempDir dir;
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
  EXPECT_EQ(host.log.back(), path + " is read only");
  EXPECT_EQ(test::ReadFile(path), "locked\r\n");
  ASSERT_EQ(chmod(path.c_str(), 0644), 0);
  host.log.clear();
  SetAtomicWriteFailAfter(0);
  const std::string result = test::CommandLineOf(action);
  SetAtomicWriteFailAfter(SIZE_MAX);
  EXPECT_EQ(result, "<failed>");
  EXPECT_TRUE(host.Logged("Could not create the response file: " + path)) << host.Text();
  EXPECT_EQ(test::ReadFile(path), "locked\r\n");
  // A line no value check has seen is still never split.
  host.log.clear();
  action.rawLine = "/define:A\r\n/out:evil.exe";
  EXPECT_EQ(test::CommandLineOf(action), "<failed>");
  EXPECT_EQ(host.Text(), "Could not create the response file: " + path +
                             "\na line holds a line break: /define:A\n");
  EXPECT_EQ(test::ReadFile(path), "locked\r\n");
  action.rawLine.clear();
  // The system's reason follows the message on a line of its own.
  host.log.clear();
  action.ProjectDir = dir / "no such dir";
  EXPECT_EQ(test::CommandLineOf(action), "<failed>");
  ASSERT_EQ(host.log.size(), 2u) << host.Text();
  EXPECT_EQ(host.log[0], "Could not create the response file: " + dir / "no such dir/wrenresp.rsp");
  EXPECT_NE(host.log[1].find("No such file or directory"), std::string::npos) << host.log[1];
}

TEST(ManagedCompilerAction, StartingDirResetAndProjectReader) {
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
  // Reset keeps the logo, UTF-8 output and library locations; everything else goes back.
  action.NoLogo = action.OutputInUTF8 = action.Optimize = action.WarnAsError = true;
  action.Target = TDotNetTarget::Exe;
  action.Debug = TDotNetDebugOptions::DebugOff;
  action.LibLocations = action.OutputFile = action.Files = action.ProjectDir = "x";
  action.References = action.RootNameSpace = action.RecurseDir = action.RecurseFiles = "x";
  action.BaseAddress = "x";
  action.ProjectResources = action.ProjectLicenses = {"r"};
  action.ResetOptions();
  EXPECT_TRUE(action.NoLogo && action.OutputInUTF8 && !action.Optimize && !action.WarnAsError);
  EXPECT_EQ(action.Target, TDotNetTarget::Lib);
  EXPECT_EQ(action.Debug, TDotNetDebugOptions::DebugFull);
  EXPECT_EQ(action.LibLocations + "|" + action.OutputFile + action.Files + action.ProjectDir +
                action.References + action.RootNameSpace + action.RecurseDir + action.RecurseFiles +
                action.BaseAddress,
            "x|");
  EXPECT_TRUE(action.ProjectResources.empty() && action.ProjectLicenses.empty());
  for (const auto& [file, reader] : std::vector<std::pair<const char*, const char*>>{
           {"/src/App.bdsproj", "borland"}, {"/src/APP.BDSPROJ", "borland"},
           {"/src/App.csproj", "visualstudio"}, {"/src/App.bdsproj.bak", "visualstudio"},
           {"/src/bdsproj", "visualstudio"}}) {
    TTestCompiler reading;
    EXPECT_TRUE(reading.LoadProjectFile(file));
    EXPECT_EQ(reading.projectReader, reader) << file;
  }
}

TEST(ManagedCompilerHelpers, SplitQuotedListAndManifestRelativePaths) {
  const std::vector<std::pair<std::string, TStrings>> lists = {
      {"\"a.dll\",\"b c.dll\"", {"a.dll", "b c.dll"}}, {"a b,c", {"a", "b", "c"}},
      {"\"x,y\",z", {"x,y", "z"}}, {"\"say \"\"hi\"\"\"", {"say \"hi\""}},
      {"a,", {"a", ""}}, {"\"\",b", {"", "b"}}, {"", {}},
  };
  for (const auto& [text, items] : lists) EXPECT_EQ(SplitQuotedList(text), items) << text;
  EXPECT_EQ(RelativePathTo("/src/app/", "/src/app/Images/logo.bmp"), "Images/logo.bmp");
  EXPECT_EQ(RelativePathTo("/src/app/", "/src/lib/logo.bmp"), "../lib/logo.bmp");
  EXPECT_EQ(RelativePathTo("/src/app/", "Images/logo.bmp"), "Images/logo.bmp");
  EXPECT_EQ(RelativePathTo("/Src/", "/src/logo.bmp"), "../src/logo.bmp");
  EXPECT_EQ(RelativePathTo("C:\\Src\\", "c:\\src\\logo.bmp"), "logo.bmp");
  EXPECT_EQ(RelativePathTo("C:\\src\\", "D:\\res\\logo.bmp"), "D:\\res\\logo.bmp");
}

}  // namespace
}  // namespace wren
