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
  ExpectCommandLines<TWrenNDocAction>({
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
  });
}

TEST_F(NDocActionTest, ExitCodesAndStepsThatNeverStart) {
  ExpectExitCodes<TWrenNDocAction>({{"Assemblies", "Calc.dll"}},
                                   {
                                       {0, true, ""},
                                       {1, false, "NDoc found nothing to document (exit code 1)"},
                                       {2, false, "NDoc failed (exit code 2)"},
                                       {3, false, "NDoc ended with exit code 3"},
                                   });
  ExpectNeverStarts<TWrenNDocAction>({
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
  });
}

TEST_F(NDocActionTest, ValidationAndPages) {
  ExpectValidation<TWrenNDocAction>({
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
  });

  TNDOCFrame main;
  TNDocDocumenterFrame documenter;
  test::ExpectPagesRoundTrip<TWrenNDocAction>({{"UseProjectFile", "true"},
                                               {"ProjectFile", "a.ndoc"},
                                               {"Assemblies", "a.dll"},
                                               {"ReferencePaths", "lib"},
                                               {"NamespaceSummaries", "n.xml"},
                                               {"Verbose", "true"},
                                               {"Documenter", "MyDocumenter"},
                                               {"DocumenterProperties", "Title=x"}},
                                              {&main, &documenter});
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
