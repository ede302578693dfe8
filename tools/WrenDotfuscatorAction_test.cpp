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
  struct Case {
    const char* name;
    test::TSettings settings;
    std::vector<std::string> args;
    std::string dir;
  };
  const std::vector<Case> cases = {
      {"a configuration with build folders as properties",
       {{"ConfigFile", "%WORK%/obfuscate/Dotfuscator.xml"},
        {"Quiet", "true"},
        {"Verbose", "true"},
        {"Properties", "projectdir=%WORK%\nconfiguration=%CONFIG%\n=x\nnovalue"}},
       {"/q", "/p=projectdir=" + w + ",configuration=Release", w + "/obfuscate/Dotfuscator.xml"},
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
        "/out:" + w + "/protected", "/makeconfig:" + w + "/effective.xml", "/disable", "/rename:on",
        "/keep:hierarchy", "/mapout:" + w + "/maps/map.xml", "/clobbermap:on", "/enhancedOI:on",
        "/controlflow:high", "template.xml"},
       temp_ / "tool dir"},
      {"inputs alone, started in the first input's folder",
       {{"InputAssemblies", "%WORK%/bin/Calc.dll"}, {"Rename", "dsOff"}, {"Keep", "dkNone"}},
       {"/in:" + w + "/bin/Calc.dll", "/rename:off", "/keep:none"},
       w + "/bin"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TWrenDotfuscatorAction action;
    const test::TToolRun run = Run(action, c.settings);
    EXPECT_TRUE(run.success) << testing::PrintToString(run.log);
    EXPECT_EQ(run.Args(), c.args);
    EXPECT_TRUE(RanIn(run, c.dir)) << run.call.dump();
    EXPECT_FALSE(run.Logged("user interface"));
  }
}

TEST_F(DotfuscatorActionTest, ResultsWarningsAndStepsThatNeverStart) {
  RecorderExits(3);
  TWrenDotfuscatorAction failing;
  test::TToolRun run = Run(failing, {{"ConfigFile", "d.xml"}});
  EXPECT_FALSE(run.success);
  EXPECT_TRUE(run.Logged("Dotfuscator failed with exit code 3"));

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
    run = test::RunAction(action, tool);
    EXPECT_EQ(run.Logged("is Dotfuscator's user interface"), warned) << tool;
  }
  options_->SetLocation(tool_);

  const std::vector<std::tuple<const char*, test::TSettings, std::string>> never = {
      {"a property value with a comma",
       {{"ConfigFile", "d.xml"}, {"Properties", "dirs=a,b"}},
       "Dotfuscator cannot take a property value containing a comma: dirs"},
      {"a configuration that does not expand",
       {{"ConfigFile", "%NO_SUCH_WREN_VAR%.xml"}},
       "\"Config File\""},
      {"an input that does not expand",
       {{"InputAssemblies", "%NO_SUCH_WREN_VAR%.dll"}},
       "\"Input Assembly\""},
  };
  for (const auto& [name, settings, message] : never) {
    SCOPED_TRACE(name);
    TWrenDotfuscatorAction action;
    run = Run(action, settings);
    EXPECT_FALSE(run.success);
    EXPECT_TRUE(run.call.is_null()) << "Dotfuscator must not start";
    EXPECT_TRUE(run.Logged(message)) << testing::PrintToString(run.log);
  }
}

TEST_F(DotfuscatorActionTest, ValidationAndPage) {
  using TReports = std::vector<std::pair<std::string, std::string>>;
  const std::vector<std::tuple<std::string, test::TSettings, TReports>> cases = {
      {tool_, {{"ConfigFile", "d.xml"}}, {}},
      {tool_, {{"InputAssemblies", "a.dll"}}, {}},
      {"",
       {{"InputAssemblies", " "}},
       {{"Dotfuscator Options", "Path to Dotfuscator not defined, please check Tools->Options"},
        {"Config File", "Configuration file has not been set"}}},
  };
  for (const auto& [location, settings, reports] : cases) {
    options_->SetLocation(location);
    TWrenDotfuscatorAction action;
    test::ApplyProperties(action, settings);
    test::TReportCollector errors;
    EXPECT_EQ(action.Validate(errors), reports.empty());
    EXPECT_EQ(errors.reports, reports);
  }

  TWrenDotfuscatorAction action, copy;
  test::ApplyProperties(action, {{"ConfigFile", "d.xml"},
                                 {"Quiet", "true"},
                                 {"Verbose", "true"},
                                 {"Investigate", "true"},
                                 {"Properties", "a=b"},
                                 {"InputAssemblies", "a.dll"},
                                 {"OutputDirectory", "out"},
                                 {"MakeConfig", "m.xml"},
                                 {"DisableAll", "true"},
                                 {"Rename", "dsOff"},
                                 {"Keep", "dkNamespace"},
                                 {"MapFile", "map.xml"},
                                 {"OverwriteMap", "true"},
                                 {"ExtraSwitches", "/x"}});
  TDotfuscatorFrame page;
  page.ReadActionData(action);
  EXPECT_EQ(page.cbRename.Selected() + "|" + page.cbKeep.Selected(), "Off|Namespaces");
  EXPECT_FALSE(page.cbVerbose.enabled);  // quiet wins
  page.WriteActionData(copy);
  for (const TPublishedProperty& p : TWrenDotfuscatorAction::ClassProperties())
    EXPECT_TRUE(p.get(action) == p.get(copy)) << p.name;
  page.edConfigFile.text = "";
  page.mmInputAssemblies.lines = {""};
  std::string message;
  EXPECT_FALSE(page.CheckPage(message));
  EXPECT_EQ(message, "Configuration File is required.");
}

}  // namespace
}  // namespace wren
