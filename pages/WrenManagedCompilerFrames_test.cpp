#include "pages/WrenManagedCompilerFrames.h"

#include <gtest/gtest.h>

#include "WrenRegister.h"
#include "compilers/WrenCSharpCompilerAction.h"
#include "compilers/WrenJSharpDotNetCompilerAction.h"
#include "compilers/WrenMSBuildAction.h"
#include "compilers/WrenVBDotNetCompilerAction.h"
#include "runtime/WrenActionRegistry.h"
#include "pages/WrenCSharpCompilerFrames.h"
#include "pages/WrenJSharpCompilerFrames.h"
#include "pages/WrenMSBuildFrame.h"
#include "pages/WrenPageTesting.h"
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

using namespace pagetest;
using TLayout = std::vector<std::string>;

TLayout operator+(TLayout a, const TLayout& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

TEST(CompilerPages, EveryLanguagePageListsItsControlsInTabOrder) {
  const TLayout version = {"lblHeading:label",       "pnlVersion:panel",   "lblVersion:label",
                           "rbDefaultVersion:radio", "rbUseVersion:radio", "cbVersion:combo"};
  const TLayout source = {"ProjectDirectory:edit", "btnProjectDirectory:button",
                          "FilesToCompile:edit", "FilesHint:label"};
  const TLayout output = {"OutputFile:edit", "btnOutputFile:button", "TargetType:combo"};
  const TLayout options = {"Optimize:checkbox",  "NoLogo:checkbox", "OutputInUTF8:checkbox",
                           "BaseAddress:edit",   "MainClass:edit",  "CodePage:edit",
                           "btnCodePage:button", "RecurseDir:edit", "RecurseFiles:edit"};
  const TLayout debugging = {"DebugInfo:combo", "Defines:edit", "WarnAsError:checkbox",
                             "SupressWarnings:edit"};
  const TLayout assemblies = {"References:memo", "LibLocations:memo", "Modules:memo"};
  const TLayout resources = {
      "Resources:memo",        "ResourceFile:edit",  "btnResourceFile:button", "ResourceName:edit",
      "btnAddResource:button", "LinkResources:memo", "Win32Resources:memo",    "Icons:memo"};

  TCSharpCompilerMainFrame csMain;
  TCSharpCompilerOptionsFrame csOptions;
  TCSharpCompilerDebuggingFrame csDebugging;
  TCSharpCompilerAssembliesFrame csAssemblies;
  TCSharpCompilerResourcesFrame csResources;
  TVBDOTNETCompilerMainFrame vbMain;
  TVBDotNetCompilerOptionsFrame vbOptions;
  TVBDotNetDebuggingFrame vbDebugging;
  TVBDotNetCompilerAssembliesFrame vbAssemblies;
  TVBDotNetCompilerResourcesFrame vbResources;
  TJSharpCompilerMainFrame jsMain;
  TJSharpCompilerOptionsFrame jsOptions;
  TJSharpCompilerDebuggingFrame jsDebugging;
  TJSharpCompilerAssembliesFrame jsAssemblies;
  TJSharpCompilerResourcesFrame jsResources;
  struct TCase {
    const char* name;
    TFrame& page;
    TLayout layout;
  };
  const std::vector<TCase> cases = {
      {"C# main", csMain, version + source + TLayout{"DocFile:edit", "btnDocFile:button"} + output},
      {"C# options", csOptions,
       options + TLayout{"Checked:checkbox", "CompileUnsafe:checkbox", "Incremental:checkbox",
                         "NoConfig:checkbox", "NoSTDLib:checkbox", "FullPaths:checkbox",
                         "FileAlign:combo"}},
      {"C# debugging", csDebugging, debugging + TLayout{"WarningLevel:combo"}},
      {"C# assemblies", csAssemblies, assemblies},
      {"C# resources", csResources, resources},
      {"VB main", vbMain, version + source + output + TLayout{"RootNameSpace:edit"}},
      {"VB options", vbOptions,
       options + TLayout{"OptionExplicit:checkbox", "OptionStrict:checkbox",
                         "OptionCompare:combo", "RemoveIntChecks:checkbox", "TargetCF:checkbox",
                         "Verbose:checkbox", "Quiet:checkbox", "Imports:edit", "SDKPath:edit"}},
      {"VB debugging", vbDebugging, debugging},
      {"VB assemblies", vbAssemblies,
       assemblies + TLayout{"DelaySign:checkbox", "KeyFile:edit", "btnKeyFile:button",
                            "KeyContainer:edit"}},
      {"VB resources", vbResources, resources},
      {"J# main", jsMain, version + source + output},
      {"J# options", jsOptions,
       options + TLayout{"SecureScoping:checkbox", "DisableLangExt:checkbox", "JCPA:memo"}},
      {"J# debugging", jsDebugging, debugging + TLayout{"WarningLevel:combo"}},
      {"J# assemblies", jsAssemblies, assemblies},
      {"J# resources", jsResources, resources},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(Layout(c.page), c.layout);
    // The properties a page names come in the order of the controls that edit them.
    const std::vector<TWrenPageControl> controls = PageControls(c.page);
    size_t previous = 0;
    for (const TWrenPagePropertyInfo& info : c.page.PropertyInfo()) {
      size_t at = 0;
      while (at < controls.size() && controls[at].caption != info.caption) ++at;
      ASSERT_LT(at, controls.size()) << info.property;
      EXPECT_GE(at, previous) << info.property;
      previous = at;
    }
    // A renderer shows the caption beside each field; none of the page's own may be blank (the
    // version drop-down is captioned by the radio button before it).
    for (const TWrenPageControl& control : controls) {
      if (control.kind != TWrenControlKind::Panel && control.parent != "pnlVersion") {
        EXPECT_FALSE(control.caption.empty()) << control.name;
      }
    }
  }
  EXPECT_EQ(Control(csMain, "FilesHint").caption,
            "(eg. *.cs or MyFile.cs, separate multiple files with a semicolon)");
  EXPECT_EQ(Control(csMain, "DocFile").caption, "Documentation Comments to XML file:");
  EXPECT_EQ(Control(csOptions, "btnCodePage").caption, "...");
  // The switches a language lacks stay visible but cannot be used.
  EXPECT_FALSE(Control(vbOptions, "CodePage").enabled);
  EXPECT_TRUE(Refused(vbOptions, "btnCodePage", TWrenPageEventKind::Click));
  EXPECT_FALSE(Control(jsResources, "Icons").enabled);
  EXPECT_TRUE(Control(csResources, "Icons").enabled);
}

TEST(CompilerPages, ControlEventsReachTheActionThroughThePages) {
  TAnsweringDialogs dialogs;
  TWrenCSharpCompilerAction action;

  TCSharpCompilerMainFrame main;
  main.InitPage(action);
  main.ReadActionData(action);
  dialogs.folder = "/src/app";
  Click(main, "btnProjectDirectory");
  EXPECT_EQ(dialogs.title, "Select Project Directory");
  dialogs.file = "/out/app.exe";
  Click(main, "btnOutputFile");
  EXPECT_NE(dialogs.filter.find("*.netmodule"), std::string::npos);
  dialogs.file = "/out/app.xml";
  Click(main, "btnDocFile");
  EXPECT_NE(dialogs.filter.find("*.xml"), std::string::npos);
  dialogs.file.clear();  // a cancelled dialog leaves the edit as it is
  Click(main, "btnOutputFile");
  Type(main, "FilesToCompile", "*.cs");
  Pick(main, "TargetType", 3);
  main.WriteActionData(action);
  EXPECT_EQ(action.ProjectDir, "/src/app");
  EXPECT_EQ(action.OutputFile, "/out/app.exe");
  EXPECT_EQ(action.DocFile, "/out/app.xml");
  EXPECT_EQ(action.Files, "*.cs");
  EXPECT_EQ(action.Target, TDotNetTarget::WindowsExe);

  // The code-page button opens the picker; the page takes the accepted choice only.
  TCSharpCompilerOptionsFrame options;
  options.ReadActionData(action);
  const std::vector<std::string> offered = TCodePageForm().lbCodePages.items;
  for (size_t i = 0; i < offered.size(); ++i)
    if (offered[i].rfind("65001 - ", 0) == 0) dialogs.choice = static_cast<int>(i);
  ASSERT_GE(dialogs.choice, 0);
  Click(options, "btnCodePage");
  EXPECT_EQ(dialogs.title, "Choose a Code page");
  EXPECT_EQ(dialogs.items, offered);
  EXPECT_EQ(Control(options, "CodePage").text, "65001");
  dialogs.choice = -1;
  Click(options, "btnCodePage");
  EXPECT_EQ(Control(options, "CodePage").text, "65001");
  Click(options, "Optimize", true);
  Pick(options, "FileAlign", 2);
  options.WriteActionData(action);
  EXPECT_EQ(action.CodePage, "65001");
  EXPECT_TRUE(action.Optimize);
  EXPECT_EQ(action.FileAlign, TCSharpFileAlign::fa1024);

  // The resource editor adds a file, with or without a name, once a file is entered.
  TCSharpCompilerResourcesFrame resources;
  resources.ReadActionData(action);
  EXPECT_FALSE(Control(resources, "btnAddResource").enabled);
  dialogs.file = "/src/app/Strings.resources";
  Click(resources, "btnResourceFile");
  Type(resources, "ResourceName", "App.Strings.resources");
  Click(resources, "btnAddResource");
  EXPECT_EQ(Control(resources, "ResourceFile").text, "");
  EXPECT_EQ(Control(resources, "ResourceName").text, "");
  EXPECT_TRUE(Refused(resources, "btnAddResource", TWrenPageEventKind::Click));
  Type(resources, "ResourceFile", "logo.bmp");
  Click(resources, "btnAddResource");
  resources.WriteActionData(action);
  EXPECT_EQ(action.Resources, "/src/app/Strings.resources=App.Strings.resources,logo.bmp");

  TVBDotNetCompilerAssembliesFrame vbAssemblies;
  TWrenVBDotNetCompilerAction vb;
  vbAssemblies.ReadActionData(vb);
  dialogs.file = "/keys/app.snk";
  Click(vbAssemblies, "btnKeyFile");
  EXPECT_NE(dialogs.filter.find("*.snk"), std::string::npos);
  Click(vbAssemblies, "DelaySign", true);
  vbAssemblies.WriteActionData(vb);
  EXPECT_EQ(vb.KeyFile, "/keys/app.snk");
  EXPECT_TRUE(vb.DelaySign);
}

}  // namespace
}  // namespace wren
