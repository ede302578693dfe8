#include "pages/WrenDotNetGACFrames.h"

#include <gtest/gtest.h>

#include "pages/WrenPageTesting.h"
#include "sdktools/WrenDotNetGACAction.h"

namespace wren {
namespace {

const char kReferenceRequired[] =
    "Scheme, ID, and Description are all required for reference counting.";

void FillReference(TEditModel& scheme, TEditModel& id, TEditModel& description) {
  scheme.text = "UNINSTALL_KEY";
  id.text = "MyApp";
  description.text = "My App";
}

TEST(GACFrames, InstallPageCheckStopsAtTheFirstGap) {
  using F = TGACInstallFrame;
  pagetest::ExpectChecks<F>({
      {"new page", [](F&) {}, "Assembly Path is required."},
      {"path given", [](F& p) { p.edAssemblyPath.text = "a.dll"; }, ""},
      {"list file chosen, none given",
       [](F& p) {
         p.edAssemblyPath.text = "a.dll";
         p.rbAssemblyPath.checked = false;
         p.rbAssemblyListFile.checked = true;
       },
       "Assembly Listfile is required."},
      {"reference without description",
       [](F& p) {
         p.edAssemblyPath.text = "a.dll";
         p.SetReferenceCount(true);
         FillReference(p.edScheme, p.edID, p.edDescription);
         p.edDescription.text = "";
       },
       kReferenceRequired},
      {"path and reference missing: the path is named first",
       [](F& p) { p.SetReferenceCount(true); }, "Assembly Path is required."},
      {"complete reference",
       [](F& p) {
         p.edAssemblyPath.text = "a.dll";
         p.SetReferenceCount(true);
         FillReference(p.edScheme, p.edID, p.edDescription);
       },
       ""},
      {"empty reference fields while unchecked", [](F& p) { p.edAssemblyPath.text = "a.dll"; }, ""},
  });
}

TEST(GACFrames, UninstallPageCheckStopsAtTheFirstGap) {
  using F = TGACUninstallFrame;
  pagetest::ExpectChecks<F>({
      {"new page", [](F&) {}, "Assembly Name is required."},
      {"by file, none given",
       [](F& p) {
         p.rbAssemblyName.checked = false;
         p.rbAssemblyPath.checked = true;
         p.edAssemblyName.text = "ignored";
       },
       "Assembly Path is required."},
      {"by list file, none given",
       [](F& p) {
         p.rbAssemblyName.checked = false;
         p.rbAssemblyListFile.checked = true;
       },
       "Assembly Listfile is required."},
      {"reference with an empty id",
       [](F& p) {
         p.edAssemblyName.text = "Core";
         p.SetReferenceCount(true);
         FillReference(p.edScheme, p.edID, p.edDescription);
         p.edID.text = "";
       },
       kReferenceRequired},
      {"name given", [](F& p) { p.edAssemblyName.text = "Core"; }, ""},
  });
}

TEST(GACFrames, ReferenceFieldsFollowTheCheckBox) {
  TGACInstallAction action;
  action.AssemblyPath = "a.dll";
  action.RefScheme = "S";
  TGACInstallFrame page;
  page.ReadActionData(action);
  EXPECT_FALSE(page.edScheme.enabled || page.edID.enabled || page.edDescription.enabled);
  EXPECT_EQ(page.edScheme.text, "S");
  page.SetReferenceCount(true);
  EXPECT_TRUE(page.edScheme.enabled && page.edID.enabled && page.edDescription.enabled);

  action.ReferenceCount = true;
  TGACInstallFrame checkedPage;
  checkedPage.ReadActionData(action);
  EXPECT_TRUE(checkedPage.cbReferenceCount.checked);
  EXPECT_TRUE(checkedPage.edScheme.enabled);
}

// The list file wins over the file, on the page as on the command line; writing keeps that.
TEST(GACFrames, UninstallPageRoundTrip) {
  TGACUninstallAction stored;
  stored.UseListFile = true;
  stored.UseAssemblyPath = true;
  stored.AssemblyListFile = "list.txt";
  stored.AssemblyPath = "a.dll";
  stored.Force = true;
  TGACUninstallFrame page;
  page.ReadActionData(stored);
  EXPECT_TRUE(page.rbAssemblyListFile.checked);
  EXPECT_FALSE(page.rbAssemblyPath.checked);
  EXPECT_FALSE(page.rbAssemblyName.checked);

  TGACUninstallAction written;
  page.WriteActionData(written);
  EXPECT_TRUE(written.UseListFile);
  EXPECT_FALSE(written.UseAssemblyPath);
  EXPECT_EQ(written.AssemblyListFile, "list.txt");
  EXPECT_EQ(written.AssemblyPath, "a.dll");
  EXPECT_TRUE(written.Force);

  TGACListAction cache;
  cache.DeleteDownloadCache = true;
  TGACListFrame cachePage;
  cachePage.ReadActionData(cache);
  EXPECT_TRUE(cachePage.rbDeleteCache.checked);
  EXPECT_FALSE(cachePage.rbListCache.checked);
}

TEST(GACFrames, BrowsingUsesTheExpandedNameAndThePageFilter) {
  pagetest::TAnsweringDialogs dialogs;
  dialogs.expandPrefix = "expanded:";
  TGACInstallFrame install;
  install.edAssemblyPath.text = "%BIN%/a.dll";
  dialogs.file = "/bin/Core.dll";
  EXPECT_TRUE(install.BrowseAssemblyPath());
  EXPECT_EQ(install.edAssemblyPath.text, "/bin/Core.dll");
  EXPECT_EQ(dialogs.proposed, "expanded:%BIN%/a.dll");
  EXPECT_EQ(dialogs.title, "Select File");
  EXPECT_EQ(dialogs.filter, "Assemblies (*.dll, *.exe)|*.dll;*.exe|All Files (*.*)|*.*");

  TGACUninstallFrame uninstall;
  uninstall.edAssemblyListFile.text = "old.txt";
  dialogs.file = "";  // cancel
  EXPECT_FALSE(uninstall.BrowseListFile());
  EXPECT_EQ(uninstall.edAssemblyListFile.text, "old.txt");
  EXPECT_EQ(dialogs.filter, "Text Files (*.txt)|*.txt|All Files (*.*)|*.*");
}

TEST(GACFrames, InstallPageControlsFollowTheReferenceBoxAndTheBrowseButtons) {
  using namespace pagetest;
  TGACInstallFrame page;
  EXPECT_EQ(Layout(page), WithVersionPanel({"rbAssemblyPath:radio", "edAssemblyPath:edit",
                                            "btnAssemblyPath:button", "rbAssemblyListFile:radio",
                                            "edAssemblyListFile:edit", "btnAssemblyListFile:button",
                                            "cbForce:checkbox", "cbReferenceCount:checkbox",
                                            "edScheme:edit", "edID:edit", "edDescription:edit"}));
  EXPECT_EQ(Control(page, "cbReferenceCount").caption, "Add reference count");
  EXPECT_FALSE(Control(page, "edScheme").enabled);

  Click(page, "cbReferenceCount", true);
  EXPECT_TRUE(Control(page, "edScheme").enabled);
  EXPECT_TRUE(Control(page, "edID").enabled);
  EXPECT_TRUE(Control(page, "edDescription").enabled);

  TAnsweringDialogs dialogs;
  dialogs.file = "/tmp/chosen.dll";
  Click(page, "btnAssemblyPath");
  EXPECT_EQ(Control(page, "edAssemblyPath").text, "/tmp/chosen.dll");
  EXPECT_EQ(dialogs.filter, TGACInstallFrame::kAssemblyFilter);

  Click(page, "rbAssemblyListFile");
  EXPECT_FALSE(Control(page, "rbAssemblyPath").checked);
  EXPECT_TRUE(Control(page, "rbAssemblyListFile").checked);
}

TEST(GACFrames, UninstallAndCachePagesAreDrivenThroughTheirControls) {
  using namespace pagetest;
  TGACUninstallFrame page;
  EXPECT_EQ(Layout(page),
            WithVersionPanel(
                {"rbAssemblyName:radio", "edAssemblyName:edit", "rbAssemblyPath:radio",
                 "edAssemblyPath:edit", "btnAssemblyPath:button", "rbAssemblyListFile:radio",
                 "edAssemblyListFile:edit", "btnAssemblyListFile:button", "cbForce:checkbox",
                 "cbReferenceCount:checkbox", "edScheme:edit", "edID:edit", "edDescription:edit"}));
  EXPECT_EQ(Control(page, "lblHeading").caption, "Assembly to uninstall");
  ExpectCaptions(page, {{"rbAssemblyName", "Assembly Name"},
                        {"rbAssemblyPath", "Assembly Path"},
                        {"rbAssemblyListFile", "Assembly ListFile"},
                        {"cbForce", "Force Un-install (removes all references to the assembly)"},
                        {"cbReferenceCount", "Uninstall reference to assembly"},
                        {"edScheme", "Scheme :"},
                        {"edID", "ID :"},
                        {"edDescription", "Description :"}});
  EXPECT_TRUE(Control(page, "rbAssemblyName").checked);

  // The reference fields take nothing until the box is checked, and stop again when cleared.
  EXPECT_TRUE(Refused(page, "edScheme", TWrenPageEventKind::Change));
  Click(page, "cbReferenceCount", true);
  Type(page, "edScheme", "UNINSTALL_KEY");
  Type(page, "edID", "MyApp");
  Type(page, "edDescription", "My App");
  Click(page, "cbReferenceCount", false);
  EXPECT_FALSE(Control(page, "edID").enabled);
  Click(page, "cbReferenceCount", true);

  TAnsweringDialogs dialogs;
  dialogs.file = "/tmp/Core.dll";
  Click(page, "btnAssemblyPath");
  EXPECT_EQ(dialogs.filter, "Assembly Files (*.dll)|*.dll|All Files (*.*)|*.*");
  dialogs.file = "/tmp/list.txt";
  Click(page, "btnAssemblyListFile");
  EXPECT_EQ(dialogs.filter, "Text Files (*.txt)|*.txt|All Files (*.*)|*.*");
  Click(page, "rbAssemblyPath");
  EXPECT_FALSE(Control(page, "rbAssemblyName").checked);
  Click(page, "cbForce", true);

  TGACUninstallAction written;
  page.WriteActionData(written);
  EXPECT_TRUE(written.UseAssemblyPath);
  EXPECT_FALSE(written.UseListFile);
  EXPECT_EQ(written.AssemblyPath, "/tmp/Core.dll");
  EXPECT_EQ(written.AssemblyListFile, "/tmp/list.txt");
  EXPECT_TRUE(written.Force);
  EXPECT_TRUE(written.ReferenceCount);
  EXPECT_EQ(written.RefScheme, "UNINSTALL_KEY");
  EXPECT_EQ(written.RefID, "MyApp");
  EXPECT_EQ(written.RefDescription, "My App");

  TGACListFrame cache;
  EXPECT_EQ(Layout(cache), WithVersionPanel({"rbListCache:radio", "rbDeleteCache:radio"}));
  EXPECT_EQ(Control(cache, "rbListCache").caption,
            "Lists the contents of the downloaded files cache");
  EXPECT_EQ(Control(cache, "rbDeleteCache").caption, "Deletes the contents of the download cache");
  Click(cache, "rbDeleteCache");
  EXPECT_FALSE(Control(cache, "rbListCache").checked);
  TGACListAction cacheAction;
  cache.WriteActionData(cacheAction);
  EXPECT_TRUE(cacheAction.DeleteDownloadCache);
}

}  // namespace
}  // namespace wren
