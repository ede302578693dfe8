#include "pages/WrenFxCopFrames.h"

#include <gtest/gtest.h>

#include "pages/WrenPageTesting.h"
#include "tools/WrenFxCopAction.h"

namespace wren {
namespace {

using namespace pagetest;
using TLayout = std::vector<std::string>;

TEST(FxCopPages, ControlsInTabOrderAndTheirReactionsReachTheAction) {
  TAnsweringDialogs dialogs;
  TWrenFxCopAction action;
  TFrameFxCopTargets targets;
  TFrameFxCopRules rules;
  TFrameFxCopOptions options;
  TFrameFxCopTypesAndMembers types;
  TFrameFxCopAdditional additional;
  const std::vector<std::pair<TFrame*, TLayout>> layouts = {
      {&targets,
       {"rbTargets:radio", "rbProjectFile:radio", "edProjectFile:edit", "btnProjectFile:button",
        "mmTargets:memo", "mmDependencyDirectories:memo", "edPlatformDirectory:edit",
        "btnPlatformDirectory:button", "cbSearchGac:checkbox", "mmImports:memo"}},
      {&rules,
       {"mmRuleLibraries:memo", "mmRuleIds:memo", "edDictionary:edit", "btnDictionary:button"}},
      {&options,
       {"edOutputFile:edit", "btnOutputFile:button", "edOutputXsl:edit", "btnOutputXsl:button",
        "cbApplyOutputXsl:checkbox", "cbForceOutput:checkbox", "cbToConsole:checkbox",
        "edConsoleXsl:edit", "btnConsoleXsl:button", "cbSummary:checkbox", "cbVerbose:checkbox",
        "cbQuiet:checkbox", "cbUpdateProject:checkbox", "cbIgnoreGeneratedCode:checkbox",
        "edTimeout:edit"}},
      {&types, {"mmTypes:memo"}},
      {&additional,
       {"mmExtraSwitches:memo", "cbReferenceErrorsFail:checkbox", "cbFailOnMessages:checkbox"}},
  };
  // A fresh page shows the action's default: target assemblies, the project file out of use.
  EXPECT_TRUE(Control(targets, "rbTargets").checked);
  EXPECT_FALSE(Control(targets, "btnProjectFile").enabled);
  for (const auto& [page, layout] : layouts) {
    SCOPED_TRACE(page->PageName());
    page->ReadActionData(action);
    EXPECT_EQ(Layout(*page), layout);
  }

  // Targets: the project file and the target list exclude each other.
  SetLines(targets, "mmTargets", {"bin/app.dll"});
  dialogs.folder = "/usr/lib/mono/4.5";
  Click(targets, "btnPlatformDirectory");
  EXPECT_EQ(dialogs.title, "Select Platform Directory");
  Click(targets, "rbProjectFile");
  EXPECT_FALSE(Control(targets, "mmTargets").enabled);
  dialogs.file = "/src/app.FxCop";
  Click(targets, "btnProjectFile");
  EXPECT_EQ(dialogs.filter, TFrameFxCopTargets::kProjectFilter);
  Click(targets, "rbTargets");
  EXPECT_TRUE(Refused(targets, "btnProjectFile", TWrenPageEventKind::Click));
  targets.WriteActionData(action);
  EXPECT_FALSE(action.UseProjectFile);
  EXPECT_EQ(action.ProjectFile, "/src/app.FxCop");
  EXPECT_EQ(action.Targets, (TStrings{"bin/app.dll"}));
  EXPECT_EQ(action.PlatformDirectory, "/usr/lib/mono/4.5");

  dialogs.file = "/src/words.xml";
  Click(rules, "btnDictionary");
  rules.WriteActionData(action);
  EXPECT_EQ(action.Dictionary, "/src/words.xml");

  // Each file edit of the options page has its own browse button and filter.
  struct TBrowse {
    const char* button;
    const char* filter;
    std::string TWrenFxCopAction::*field;
  };
  for (const TBrowse& b :
       {TBrowse{"btnOutputFile", TFrameFxCopOptions::kReportFilter, &TWrenFxCopAction::OutputFile},
        TBrowse{"btnOutputXsl", TFrameFxCopOptions::kXslFilter, &TWrenFxCopAction::OutputXsl},
        TBrowse{"btnConsoleXsl", TFrameFxCopOptions::kXslFilter, &TWrenFxCopAction::ConsoleXsl}}) {
    dialogs.file = std::string("/out/") + b.button;
    Click(options, b.button);
    EXPECT_EQ(dialogs.filter, b.filter) << b.button;
    options.WriteActionData(action);
    EXPECT_EQ(action.*b.field, dialogs.file) << b.button;
  }
  Click(options, "cbToConsole", true);
  Type(options, "edTimeout", "30");
  options.WriteActionData(action);
  EXPECT_TRUE(action.ToConsole);
  EXPECT_EQ(action.Timeout, "30");

  SetLines(types, "mmTypes", {"App.Core.*"});
  types.WriteActionData(action);
  EXPECT_EQ(action.Types, (TStrings{"App.Core.*"}));
  Click(additional, "cbFailOnMessages", true);
  additional.WriteActionData(action);
  EXPECT_TRUE(action.FailOnMessages);
}

}  // namespace
}  // namespace wren
