#include "tools/WrenDotfuscatorAction.h"

#include <gtest/gtest.h>

#include "OutsideToolTestKit_test.h"
#include "pages/WrenDotfuscatorFrames.h"
#include "tools/WrenDotfuscatorOptions.h"

namespace wren {
namespace {

using DotfuscatorActionTest = test::TOutsideToolTest<TWrenDotfuscatorOptions>;

TEST_F(DotfuscatorActionTest, CommandLinesWithTheConfigurationLast) {
  MakeWorkDirs({"obfuscate", "bin"});
  const std::string w = work_;
  ExpectCommandLines<TWrenDotfuscatorAction>(
      {
          {"a configuration with build folders as properties",
           {{"ConfigFile", "%WORK%/obfuscate/Dotfuscator.xml"},
            {"Quiet", "true"},
            {"Verbose", "true"},
            {"Properties", "projectdir=%WORK%\nconfiguration=%CONFIG%\n=x\nnovalue"}},
           {"/q", "/p=projectdir=" + w + ",configuration=Release",
            w + "/obfuscate/Dotfuscator.xml"},
           w + "/obfuscate"},
          {"every override in its order",
           {{"ConfigFile", "template.xml"},
            {"Verbose", "true"},
            {"Investigate", "true"},
            {"InputAssemblies", "%WORK%/bin/Calc.exe\n\n%WORK%/bin/Calc Parser.dll"},
            {"OutputDirectory", "%WORK%/protected"},
            {"MakeConfig", "%WORK%/effective.xml"},
            {"DisableAll", "true"},
            {"Rename", "dsOn"},
            {"Keep", "dkHierarchy"},
            {"MapFile", "%WORK%/maps/map.xml"},
            {"OverwriteMap", "true"},
            {"ExtraSwitches", "/enhancedOI:on /controlflow:high"}},
           {"/v", "/i", "/in:" + w + "/bin/Calc.exe," + w + "/bin/Calc Parser.dll",
            "/out:" + w + "/protected", "/makeconfig:" + w + "/effective.xml", "/disable",
            "/rename:on", "/keep:hierarchy", "/mapout:" + w + "/maps/map.xml", "/clobbermap:on",
            "/enhancedOI:on", "/controlflow:high", "template.xml"},
           temp_ / "tool dir"},
          {"inputs alone, started in the first input's folder",
           {{"InputAssemblies", "%WORK%/bin/Calc.dll"}, {"Rename", "dsOff"}, {"Keep", "dkNone"}},
           {"/in:" + w + "/bin/Calc.dll", "/rename:off", "/keep:none"},
           w + "/bin"},
      },
      "user interface");
}

TEST_F(DotfuscatorActionTest, ResultsWarningsAndStepsThatNeverStart) {
  ExpectExitCodes<TWrenDotfuscatorAction>({{"ConfigFile", "d.xml"}},
                                          {{3, false, "Dotfuscator failed with exit code 3"}});

  // Version 5 puts its user interface at dotfuscator.exe beside dotfuscatorCLI.exe; version 6
  // names the interface dotfuscatorUI.exe and the console program dotfuscator.exe.
  const std::string v5 = temp_ / "v5/dotfuscator.exe", v6 = temp_ / "v6/dotfuscator.exe";
  for (const std::string& tool : {v5, v6, temp_ / "v6/dotfuscatorUI.exe"})
    test::InstallRecorder(tool);
  test::InstallRecorder(temp_ / "v5/dotfuscatorCLI.exe");
  for (const auto& [tool, warned] :
       {std::pair{v5, true}, {v6, false}, {temp_ / "v6/dotfuscatorUI.exe", true}}) {
    EXPECT_EQ(IsDotfuscatorUserInterface(tool), warned) << tool;
    options_->SetLocation(tool);
    TWrenDotfuscatorAction action;
    test::ApplyProperties(action, {{"ConfigFile", "d.xml"}});
    const test::TToolRun run = test::RunAction(action, tool);
    EXPECT_EQ(run.Logged("is Dotfuscator's user interface"), warned) << tool;
  }
  options_->SetLocation(tool_);

  ExpectNeverStarts<TWrenDotfuscatorAction>({
      {"a property value with a comma",
       {{"ConfigFile", "d.xml"}, {"Properties", "dirs=a,b"}},
       "Dotfuscator cannot take a property value containing a comma: dirs"},
      {"a configuration that does not expand",
       {{"ConfigFile", "%NO_SUCH_WREN_VAR%.xml"}},
       "\"Config File\""},
      {"an input that does not expand",
       {{"InputAssemblies", "%NO_SUCH_WREN_VAR%.dll"}},
       "\"Input Assembly\""},
  });
}

TEST_F(DotfuscatorActionTest, ValidationAndPage) {
  ExpectValidation<TWrenDotfuscatorAction>({
      {tool_, {{"ConfigFile", "d.xml"}}, {}},
      {tool_, {{"InputAssemblies", "a.dll"}}, {}},
      {"",
       {{"InputAssemblies", " "}},
       {{"Dotfuscator Options", "Path to Dotfuscator not defined, please check Tools->Options"},
        {"Config File", "Configuration file has not been set"}}},
  });

  const test::TSettings all = {
      {"ConfigFile", "d.xml"},    {"Quiet", "true"},       {"Verbose", "true"},
      {"Investigate", "true"},    {"Properties", "a=b"},   {"InputAssemblies", "a.dll"},
      {"OutputDirectory", "out"}, {"MakeConfig", "m.xml"}, {"DisableAll", "true"},
      {"Rename", "dsOff"},        {"Keep", "dkNamespace"}, {"MapFile", "map.xml"},
      {"OverwriteMap", "true"},   {"ExtraSwitches", "/x"}};
  TDotfuscatorFrame page;
  test::ExpectPagesRoundTrip<TWrenDotfuscatorAction>(all, {&page});
  EXPECT_EQ(page.cbRename.Selected() + "|" + page.cbKeep.Selected(), "Off|Namespaces");
  EXPECT_FALSE(page.cbVerbose.enabled);  // quiet wins
  page.edConfigFile.text = "";
  page.mmInputAssemblies.lines = {""};
  std::string message;
  EXPECT_FALSE(page.CheckPage(message));
  EXPECT_EQ(message, "Configuration File is required.");
}

}  // namespace
}  // namespace wren
