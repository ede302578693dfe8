#include "pages/WrenProjectCompilerFrames.h"

#include <gtest/gtest.h>

#include <memory>

#include "compilers/WrenDotNetProjectCompilerAction.h"
#include "pages/WrenPageTesting.h"

namespace wren {
namespace {

TEST(ProjectCompilerPages, EditThePublishedPropertiesOfEveryProjectAction) {
  TWrenVBProjCompilerAction vb;
  vb.ProjectFile = "%ProjectDir%/Hello.vbproj";
  vb.ConfigName = "Release";
  vb.OutputDir = "out";
  vb.CopyConfigFiles = true;
  TVBProjPropertyPage page;
  page.ReadActionData(vb);
  EXPECT_EQ(page.edProjectFile.text, "%ProjectDir%/Hello.vbproj");
  EXPECT_EQ(page.edConfigName.text, "Release");
  EXPECT_EQ(page.edOutputDir.text, "out");
  EXPECT_TRUE(page.cbCopyConfigFiles.checked);
  EXPECT_FALSE(page.cbNoLogo.checked);

  pagetest::TAnsweringDialogs dialog;
  dialog.file = "/src/App.vbproj";
  ASSERT_TRUE(page.BrowseProjectFile());
  EXPECT_EQ(dialog.filter, "VB.NET Projects (*.vbproj;*.vbdproj)|*.vbproj;*.vbdproj");
  page.cbNoLogo.checked = true;
  page.edCFResGen.text = "/opt/cf/resgen.exe";
  page.WriteActionData(vb);
  EXPECT_EQ(vb.ProjectFile, "/src/App.vbproj");
  EXPECT_TRUE(vb.NoLogo);
  EXPECT_EQ(vb.CFResGen, "/opt/cf/resgen.exe");

  // A Visual Studio page asks for the configuration; the C#Builder page, whose projects hold
  // only the active one, does not.
  std::string message;
  page.edConfigName.text = " ";
  EXPECT_FALSE(page.CheckPage(message));
  EXPECT_EQ(message, "Configuration is required.");
  TWrenBorlandCSBuilderProjCompilerAction bds;
  TCSharpBuilderPropertyPage bdsPage;
  bdsPage.ReadActionData(bds);
  EXPECT_FALSE(bdsPage.CheckPage(message));
  EXPECT_EQ(message, "Project File is required.");
  bdsPage.edProjectFile.text = "a.bdsproj";
  EXPECT_TRUE(bdsPage.CheckPage(message));
}

TEST(ProjectCompilerPages, EveryProjectPageIsDrivenThroughItsControls) {
  struct TCase {
    std::unique_ptr<TProjectFilePageBase> page;
    std::unique_ptr<TWrenAction> action;
    const char* projectFilter;
  };
  TCase cases[] = {
      {std::make_unique<TProjectCompilerFrame>(), std::make_unique<TWrenCSProjCompilerAction>(),
       "C# Projects (*.csproj;*.csdproj)|*.csproj;*.csdproj"},
      {std::make_unique<TVBProjPropertyPage>(), std::make_unique<TWrenVBProjCompilerAction>(),
       "VB.NET Projects (*.vbproj;*.vbdproj)|*.vbproj;*.vbdproj"},
      {std::make_unique<TJSharpPropertyPage>(), std::make_unique<TWrenJSProjCompilerAction>(),
       "J# Projects (*.vjsproj)|*.vjsproj"},
      {std::make_unique<TCSharpBuilderPropertyPage>(),
       std::make_unique<TWrenBorlandCSBuilderProjCompilerAction>(),
       "C# Builder Projects (*.bdsproj)|*.bdsproj"},
  };
  for (TCase& c : cases) {
    SCOPED_TRACE(c.projectFilter);
    TProjectFilePageBase& page = *c.page;
    page.InitPage(*c.action);
    page.ReadActionData(*c.action);
    EXPECT_EQ(pagetest::Layout(page),
              (std::vector<std::string>{
                  "lblHeading:label", "pnlVersion:panel", "lblVersion:label",
                  "rbDefaultVersion:radio", "rbUseVersion:radio", "cbVersion:combo",
                  "edProjectFile:edit", "btnProjectFile:button", "edConfigName:edit",
                  "edOutputDir:edit", "btnOutputDir:button", "edCFResGen:edit",
                  "btnCFResGen:button", "cbCopyConfigFiles:checkbox", "cbNoLogo:checkbox",
                  "cbOutputInUTF8:checkbox"}));
    EXPECT_EQ(pagetest::Control(page, "edConfigName").caption, "Configuration:");

    pagetest::TAnsweringDialogs dialogs;
    dialogs.file = "/src/App.proj";
    pagetest::Click(page, "btnProjectFile");
    EXPECT_EQ(dialogs.filter, c.projectFilter);
    dialogs.file = "/opt/cf/resgen.exe";
    pagetest::Click(page, "btnCFResGen");
    EXPECT_EQ(dialogs.filter, TProjectFilePageBase::kProgramFilter);
    dialogs.folder = "/out";
    pagetest::Click(page, "btnOutputDir");
    EXPECT_EQ(dialogs.title, "Select Output Folder");
    pagetest::Type(page, "edConfigName", "Debug");
    pagetest::Click(page, "cbOutputInUTF8", true);
    page.WriteActionData(*c.action);
    const TPropertyTable& props = c.action->GetPublishedProperties();
    auto value = [&](const char* name) {
      const TPublishedProperty* p = FindProperty(props, name);
      return p ? PropertyValueToString(*p, p->get(*c.action)) : std::string("(none)");
    };
    EXPECT_EQ(value("ProjectFile"), "/src/App.proj");
    EXPECT_EQ(value("CFResGen"), "/opt/cf/resgen.exe");
    EXPECT_EQ(value("OutputDir"), "/out");
    EXPECT_EQ(value("ConfigName"), "Debug");
    EXPECT_EQ(value("OutputInUTF8"), "true");
  }
}

}  // namespace
}  // namespace wren
