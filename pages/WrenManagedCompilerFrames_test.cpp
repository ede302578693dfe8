#include "pages/WrenManagedCompilerFrames.h"

#include <gtest/gtest.h>

#include "WrenRegister.h"
#include "compilers/WrenCSharpCompilerAction.h"
#include "compilers/WrenJSharpDotNetCompilerAction.h"
#include "compilers/WrenMSBuildAction.h"
#include "compilers/WrenVBDotNetCompilerAction.h"
#include "runtime/WrenActionRegistry.h"
#include "pages/WrenCSharpCompilerFrames.h"
#include "pages/WrenMSBuildFrame.h"
#include "pages/WrenVBDotNetCompilerFrames.h"

namespace wren {
namespace {

/// The properties a class adds to the .NET tool base.
TPropertyTable OwnProperties(const TCustomWrenAction& action) {
  const TPropertyTable& table = action.GetPublishedProperties();
  return TPropertyTable(table.begin() + TWrenDotNetAction::ClassProperties().size(), table.end());
}

/// Gives every own property a value other than its default.
void SetEveryProperty(TCustomWrenAction& action) {
  for (const TPublishedProperty& prop : OwnProperties(action)) {
    switch (prop.kind) {
      case TPropertyKind::pkString:
        prop.set(action, "v_" + prop.name);
        break;
      case TPropertyKind::pkBoolean:
        prop.set(action, true);
        break;
      case TPropertyKind::pkEnumeration:
        prop.set(action, static_cast<int32_t>(prop.enumNames.size() - 1));
        break;
      case TPropertyKind::pkStringList:
        prop.set(action, TStrings{"a=1", "b=two words"});
        break;
      case TPropertyKind::pkInteger:
        prop.set(action, int32_t{7});
        break;
    }
  }
}

TEST(CompilerPages, EveryPublishedSettingTravelsThroughThePages) {
  ClearRegistrations();
  WrenRegister(true);
  const std::vector<std::string> classes = {"TWrenCSharpCompilerAction",
                                            "TWrenVBDotNetCompilerAction",
                                            "TWrenJSharpCompilerAction", "TMSBuildAction"};
  for (const std::string& className : classes) {
    SCOPED_TRACE(className);
    const TWrenRegisteredAction* registered = FindRegisteredAction(className);
    ASSERT_NE(registered, nullptr);
    std::unique_ptr<TCustomWrenAction> source = registered->actionClass.create();
    std::unique_ptr<TCustomWrenAction> target = registered->actionClass.create();
    SetEveryProperty(*source);
    for (const TWrenFrameClass& frameClass : registered->pages) {
      std::unique_ptr<TFrame> page = frameClass.createPage();
      page->InitPage(*source);
      page->ReadActionData(*source);
      page->WriteActionData(*target);
    }
    for (const TPublishedProperty& prop : OwnProperties(*source)) {
      if (prop.name == "OutputToLog") continue;  // kept with the action, shown on no page
      EXPECT_EQ(PropertyValueToString(prop, prop.get(*target)),
                PropertyValueToString(prop, prop.get(*source)))
          << prop.name;
    }
  }
  ClearRegistrations();
}

TEST(CompilerPages, RegisteredRowsAndPagesInTabOrder) {
  ClearRegistrations();
  WrenRegister(true);
  struct TRow {
    const char* className;
    const char* displayName;
    const char* category;
    const char* icon;
    std::vector<std::string> pages;
  };
  const std::vector<TRow> rows = {
      {"TWrenCSharpCompilerAction", "Microsoft C# Compiler", "Compilers", "CSHARP",
       {"TCSharpCompilerMainFrame", "TCSharpCompilerOptionsFrame", "TCSharpCompilerDebuggingFrame",
        "TCSharpCompilerAssembliesFrame", "TCSharpCompilerResourcesFrame"}},
      {"TWrenVBDotNetCompilerAction", "Microsoft VB.NET Compiler", "Compilers", "VBDOTNET",
       {"TVBDOTNETCompilerMainFrame", "TVBDotNetCompilerOptionsFrame", "TVBDotNetDebuggingFrame",
        "TVBDotNetCompilerAssembliesFrame", "TVBDotNetCompilerResourcesFrame"}},
      {"TWrenJSharpCompilerAction", "Microsoft J# Compiler", "Compilers", "JSHARP",
       {"TJSharpCompilerMainFrame", "TJSharpCompilerOptionsFrame", "TJSharpCompilerDebuggingFrame",
        "TJSharpCompilerAssembliesFrame", "TJSharpCompilerResourcesFrame"}},
      {"TMSBuildAction", "MSBuild Project", "Build Tools", "MSBUILDICON", {"TMSBuildFrame"}},
  };
  const auto& actions = WrenRegistrations().actions;
  const TWrenRegisteredAction* previous = nullptr;
  for (const TRow& row : rows) {
    SCOPED_TRACE(row.className);
    const TWrenRegisteredAction* registered = FindRegisteredAction(row.className);
    ASSERT_NE(registered, nullptr);
    EXPECT_EQ(registered->displayName, row.displayName);
    EXPECT_EQ(registered->category, row.category);
    EXPECT_EQ(registered->iconResourceName, row.icon);
    std::vector<std::string> pages;
    for (const TWrenFrameClass& page : registered->pages) pages.push_back(page.name);
    EXPECT_EQ(pages, row.pages);
    if (previous) {
      EXPECT_LT(previous - actions.data(), registered - actions.data());
    }
    previous = registered;
  }

  ClearRegistrations();
  WrenRegister(false);
  for (const TRow& row : rows) {
    const TWrenRegisteredAction* registered = FindRegisteredAction(row.className);
    ASSERT_NE(registered, nullptr);
    EXPECT_TRUE(registered->pages.empty()) << row.className;
  }
  ClearRegistrations();
}

TEST(CompilerPages, CSharpMainPageCaptionsAndChecks) {
  TWrenCSharpCompilerAction action;
  TCSharpCompilerMainFrame page;
  page.InitPage(action);
  page.ReadActionData(action);
  EXPECT_EQ(page.ProjectDirectory.caption, "Project Directory:");
  EXPECT_EQ(page.FilesToCompile.caption, "File(s) to compile:");
  EXPECT_EQ(page.FilesHint.caption,
            "(eg. *.cs or MyFile.cs, separate multiple files with a semicolon)");
  EXPECT_EQ(page.DocFile.caption, "Documentation Comments to XML file:");
  EXPECT_EQ(page.OutputFile.caption, "Output file:");
  EXPECT_EQ(page.TargetType.caption, "Target type:");
  EXPECT_EQ(page.TargetType.Selected(), "Class Library (dll)");
  // The compilers live in the framework folder.
  EXPECT_EQ(page.lblVersion.caption, "Framework Version");

  std::string message;
  EXPECT_FALSE(page.CheckPage(message));
  EXPECT_EQ(message, "Project Directory is required.");
  page.ProjectDirectory.text = "/src";
  EXPECT_FALSE(page.CheckPage(message));
  EXPECT_EQ(message, "File(s) to compile is required.");
  page.FilesToCompile.text = "*.cs";
  EXPECT_TRUE(page.CheckPage(message));
}

TEST(CompilerPages, CodePagePickerFillsTheOptionsPage) {
  TCSharpCompilerOptionsFrame page;
  TCodePageForm form([](std::vector<int>& pages, std::string&) {
    pages = {1252, 65001};
    return true;
  });
  ASSERT_EQ(form.lbCodePages.items.size(), 2u);
  page.CodePage.text = "437";
  form.CancelClick();
  page.ApplyCodePage(form);
  EXPECT_EQ(page.CodePage.text, "437");
  form.lbCodePages.itemIndex = 1;
  std::string message;
  ASSERT_TRUE(form.OKClick(message));
  page.ApplyCodePage(form);
  EXPECT_EQ(page.CodePage.text, "65001");

  // VB.NET has no code-page switch: its page neither offers nor writes one.
  TVBDotNetCompilerOptionsFrame vbPage;
  TWrenVBDotNetCompilerAction vb;
  vb.CodePage = "850";
  vbPage.ReadActionData(vb);
  vbPage.CodePage.text = "1252";
  vbPage.WriteActionData(vb);
  EXPECT_FALSE(vbPage.CodePage.enabled);
  EXPECT_EQ(vb.CodePage, "850");
}

TEST(CompilerPages, MSBuildPageGridAndCaptions) {
  TMSBuildAction action;
  action.Properties = {"Configuration=Release", "Platform=Any CPU"};
  TMSBuildFrame page;
  page.InitPage(action);
  page.ReadActionData(action);
  EXPECT_EQ(page.Properties.titles, (std::vector<std::string>{"Property", "Value"}));
  EXPECT_EQ(page.Properties.rows[1], (std::pair<std::string, std::string>{"Platform", "Any CPU"}));
  EXPECT_EQ(page.TargetsHint.caption, "separate multiple targets with semi-colons");
  EXPECT_EQ(page.LogLevel.caption, "Logging Level :");
  EXPECT_EQ(page.LogLevel.Selected(), "Normal");
  EXPECT_EQ(page.NoLogo.caption, "Surpress display of logo banner");
  EXPECT_EQ(page.lblVersion.caption, "SDK Version");
  EXPECT_EQ(page.rbDefaultVersion.caption, "Use Default SDK Version");

  page.Properties.rows.emplace_back("", "orphan");  // a new row never named
  page.LogLevel.itemIndex = 3;
  page.WriteActionData(action);
  EXPECT_EQ(action.Properties, (TStrings{"Configuration=Release", "Platform=Any CPU"}));
  EXPECT_EQ(action.LogLevel, TMSLogLevel::llDetailed);

  std::string message;
  EXPECT_FALSE(page.CheckPage(message));
  EXPECT_EQ(message, "Project File is required.");
}

}  // namespace
}  // namespace wren
