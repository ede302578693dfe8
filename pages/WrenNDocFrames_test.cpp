#include "pages/WrenNDocFrames.h"

#include <gtest/gtest.h>

#include "pages/WrenPageTesting.h"
#include "tools/WrenNDocAction.h"

namespace wren {
namespace {

using namespace pagetest;

TEST(NDocPages, ControlsFollowTheSourceChoiceAndTakeATypedDocumenter) {
  TAnsweringDialogs dialogs;
  TWrenNDocAction action;

  TNDOCFrame main;
  EXPECT_EQ(Layout(main), (std::vector<std::string>{
                              "rbAssemblies:radio", "rbProjectFile:radio", "edProjectFile:edit",
                              "btnProjectFile:button", "mmAssemblies:memo", "mmReferencePaths:memo",
                              "edNamespaceSummaries:edit", "btnNamespaceSummaries:button",
                              "cbVerbose:checkbox"}));
  // A fresh page shows the action's default: assemblies, with the project file out of use.
  EXPECT_TRUE(Control(main, "rbAssemblies").checked);
  EXPECT_FALSE(Control(main, "edProjectFile").enabled);
  EXPECT_TRUE(Refused(main, "btnProjectFile", TWrenPageEventKind::Click));

  main.ReadActionData(action);
  SetLines(main, "mmAssemblies", {"a.dll,a.xml"});
  dialogs.file = "/doc/ns.xml";
  Click(main, "btnNamespaceSummaries");
  EXPECT_EQ(dialogs.filter, TNDOCFrame::kSummariesFilter);

  Click(main, "rbProjectFile");
  EXPECT_FALSE(Control(main, "rbAssemblies").checked);
  EXPECT_TRUE(Control(main, "edProjectFile").enabled);
  for (const char* name :
       {"mmAssemblies", "mmReferencePaths", "edNamespaceSummaries", "btnNamespaceSummaries"})
    EXPECT_FALSE(Control(main, name).enabled) << name;
  dialogs.file = "/doc/api.ndoc";
  Click(main, "btnProjectFile");
  EXPECT_EQ(dialogs.filter, TNDOCFrame::kProjectFilter);
  Click(main, "cbVerbose", true);
  main.WriteActionData(action);
  EXPECT_TRUE(action.UseProjectFile);
  EXPECT_EQ(action.ProjectFile, "/doc/api.ndoc");
  EXPECT_EQ(action.Assemblies, (TStrings{"a.dll,a.xml"}));
  EXPECT_EQ(action.NamespaceSummaries, "/doc/ns.xml");
  EXPECT_TRUE(action.Verbose);

  TNDocDocumenterFrame documenter;
  documenter.ReadActionData(action);
  EXPECT_EQ(Layout(documenter),
            (std::vector<std::string>{"cbDocumenter:combo", "edDocumenterName:edit",
                                      "mmProperties:memo"}));
  EXPECT_EQ(Control(documenter, "cbDocumenter").itemIndex, 0);
  // Typing a name letter by letter leaves one entry of the user's own, the last one typed.
  Type(documenter, "edDocumenterName", "My");
  Type(documenter, "edDocumenterName", "MyDoc");
  TWrenPageControl combo = Control(documenter, "cbDocumenter");
  ASSERT_EQ(combo.items.size(), 7u);
  EXPECT_EQ(combo.items[6], "MyDoc");
  EXPECT_EQ(combo.itemIndex, 6);
  // A shipped documenter typed in another case is that one, and the own entry goes.
  Type(documenter, "edDocumenterName", " latex ");
  combo = Control(documenter, "cbDocumenter");
  EXPECT_EQ(combo.items.size(), 6u);
  EXPECT_EQ(combo.items[combo.itemIndex], "LaTeX");
  Type(documenter, "edDocumenterName", "");
  EXPECT_EQ(Control(documenter, "cbDocumenter").items[combo.itemIndex], "LaTeX");
  Pick(documenter, "cbDocumenter", 1);
  documenter.WriteActionData(action);
  EXPECT_EQ(action.Documenter, "VS.NET_2003");
}

}  // namespace
}  // namespace wren
