#include "tools/WrenNDocAction.h"

#include <gtest/gtest.h>

#include "OutsideToolTestKit_test.h"
#include "pages/WrenNDocFrames.h"
#include "tools/WrenNDocOptions.h"

namespace wren {
namespace {

using NDocActionTest = test::TOutsideToolTest<TWrenNDocOptions>;

TEST_F(NDocActionTest, CommandLinesInNDocsOrder) {
  MakeWorkDirs({"doc", "bin"});
  const std::string w = work_;
  struct Case {
    const char* name;
    test::TSettings settings;
    std::vector<std::string> args;
    std::string dir;
  };
  const std::vector<Case> cases = {
      {"a project, started in its folder so a relative output lands beside it",
       {{"UseProjectFile", "true"},
        {"ProjectFile", "%WORK%/doc/Calc.ndoc"},
        {"Assemblies", "ignored.dll"},
        {"ReferencePaths", "ignored"},
        {"Verbose", "true"},
        {"DocumenterProperties", "OutputTarget=Web\nOutputDirectory=api docs"}},
       {"-documenter=MSDN", "-project=" + w + "/doc/Calc.ndoc", "-OutputTarget=Web",
        "-OutputDirectory=api docs", "-verbose"},
       w + "/doc"},
      {"assemblies with their XML, references and summaries; blanks in the documenter name",
       {{"Documenter", "VS.NET 2003"},
        {"Assemblies", "%WORK%/bin/Calc.dll,%WORK%/bin/Calc.xml\n\n%WORK%/bin/Calc Parser.dll"},
        {"ReferencePaths", "%WORK%/lib\n/usr/lib/mono/4.5"},
        {"NamespaceSummaries", "%WORK%/summaries.xml"},
        {"DocumenterProperties", "Title=Calc %CONFIG%\n=nameless\nnovalue\nPreliminary="}},
       {"-documenter=VS.NET_2003", w + "/bin/Calc.dll," + w + "/bin/Calc.xml",
        w + "/bin/Calc Parser.dll", "-referencepath=" + w + "/lib",
        "-referencepath=/usr/lib/mono/4.5", "-namespacesummaries=" + w + "/summaries.xml",
        "-Title=Calc Release", "-Preliminary="},
       w + "/bin"},
      {"no documenter leaves NDoc's own choice",
       {{"Documenter", ""}, {"Assemblies", "Calc.dll"}},
       {"Calc.dll"},
       temp_ / "tool dir"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    TWrenNDocAction action;
    const test::TToolRun run = Run(action, c.settings);
    EXPECT_TRUE(run.success) << testing::PrintToString(run.log);
    EXPECT_EQ(run.Args(), c.args);
    EXPECT_TRUE(RanIn(run, c.dir)) << run.call.dump();
  }
}

TEST_F(NDocActionTest, ExitCodesAndStepsThatNeverStart) {
  const std::vector<std::tuple<int, bool, std::string>> codes = {
      {0, true, ""},
      {1, false, "NDoc found nothing to document (exit code 1)"},
      {2, false, "NDoc failed (exit code 2)"},
      {3, false, "NDoc ended with exit code 3"},
  };
  for (const auto& [code, success, message] : codes) {
    SCOPED_TRACE(code);
    RecorderExits(code, "NDoc says hello");
    TWrenNDocAction action;
    const test::TToolRun run = Run(action, {{"Assemblies", "Calc.dll"}});
    ASSERT_FALSE(run.call.is_null());
    EXPECT_EQ(run.success, success);
    if (!message.empty()) {
      EXPECT_TRUE(run.Logged(message)) << testing::PrintToString(run.log);
    }
  }
  const std::vector<std::tuple<const char*, test::TSettings, std::string>> never = {
      {"a project that does not expand",
       {{"UseProjectFile", "true"}, {"ProjectFile", "%NO_SUCH_WREN_VAR%.ndoc"}},
       "\"Project File\""},
      {"a documenter property that does not expand",
       {{"Assemblies", "a.dll"}, {"DocumenterProperties", "Title=%NO_SUCH_WREN_VAR%"}},
       "\"Value\""},
      {"a value NDoc would drop",
       {{"Assemblies", "a.dll"}, {"DocumenterProperties", "Title=a=b"}},
       "NDoc cannot take a property value containing '=': Title"},
      {"an assembly line NDoc would skip",
       {{"Assemblies", "a.dll,a.xml,b.xml"}},
       "An assembly line takes one assembly and at most one XML file: a.dll,a.xml,b.xml"},
  };
  for (const auto& [name, settings, message] : never) {
    SCOPED_TRACE(name);
    TWrenNDocAction action;
    const test::TToolRun run = Run(action, settings);
    EXPECT_FALSE(run.success);
    EXPECT_TRUE(run.call.is_null()) << "NDocConsole must not start";
    EXPECT_TRUE(run.Logged(message)) << testing::PrintToString(run.log);
  }
}

TEST_F(NDocActionTest, ValidationAndPages) {
  using TReports = std::vector<std::pair<std::string, std::string>>;
  const std::vector<std::tuple<std::string, test::TSettings, TReports>> cases = {
      {tool_, {{"Assemblies", "a.dll"}}, {}},
      {"",
       {{"Assemblies", " "}, {"Documenter", ""}},
       {{"NDoc Options", "Path to NDocConsole.exe not defined, please check Tools->Options"},
        {"Assemblies", "Assemblies have not been set"},
        {"Documenter", "Documenter has not been set"}}},
      {temp_ / "nowhere.exe",
       {{"UseProjectFile", "true"}},
       {{"Options", "Path to NDocConsole.exe not correct, please check Tools->Options"},
        {"Project File", "Project file has not been set"}}},
  };
  for (const auto& [location, settings, reports] : cases) {
    options_->SetLocation(location);
    TWrenNDocAction action;
    test::ApplyProperties(action, settings);
    test::TReportCollector errors;
    EXPECT_EQ(action.Validate(errors), reports.empty());
    EXPECT_EQ(errors.reports, reports) << location;
  }

  TWrenNDocAction action, copy;
  test::ApplyProperties(action, {{"UseProjectFile", "true"},
                                 {"ProjectFile", "a.ndoc"},
                                 {"Assemblies", "a.dll"},
                                 {"ReferencePaths", "lib"},
                                 {"NamespaceSummaries", "n.xml"},
                                 {"Verbose", "true"},
                                 {"Documenter", "MyDocumenter"},
                                 {"DocumenterProperties", "Title=x"}});
  TNDOCFrame main;
  TNDocDocumenterFrame documenter;
  for (TFrame* page : std::vector<TFrame*>{&main, &documenter}) {
    page->ReadActionData(action);
    page->WriteActionData(copy);
  }
  for (const TPublishedProperty& p : TWrenNDocAction::ClassProperties())
    EXPECT_TRUE(p.get(action) == p.get(copy)) << p.name;
  EXPECT_EQ(documenter.cbDocumenter.items.size(), 7u);  // the user's own documenter is kept
  std::string message;
  EXPECT_TRUE(main.CheckPage(message));
  main.SetUseProjectFile(false);
  main.mmAssemblies.lines.clear();
  EXPECT_FALSE(main.CheckPage(message));
  EXPECT_EQ(message, "At least one assembly is required.");
  documenter.cbDocumenter.itemIndex = -1;
  EXPECT_FALSE(documenter.CheckPage(message));
  EXPECT_EQ(message, "Documenter is required.");
}

}  // namespace
}  // namespace wren
