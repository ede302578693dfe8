#include "pages/WrenNUnitFrames.h"

#include <gtest/gtest.h>

#include "pages/WrenPageTesting.h"
#include "tools/WrenNUnitAction.h"

namespace wren {
namespace {

namespace pt = pagetest;

TEST(NUnitActionFrame, TheChoiceDecidesWhichControlsTakeInput) {
  TNUnitActionFrame page;
  EXPECT_EQ(pt::Layout(page),
            (std::vector<std::string>{
                "rbProjectFile:radio", "edProjectFile:edit", "btnProjectFile:button",
                "edProjectConfig:edit", "rbAssemblies:radio", "mmAssemblies:memo",
                "btnAddAssembly:button", "edFixture:edit", "edXMLOutputFile:edit",
                "btnXMLOutputFile:button", "edTransformFile:edit", "btnTransformFile:button",
                "cbNoLogo:checkbox", "cbXMLToConsole:checkbox"}));
  // A new page runs assemblies, as a new action does: the project fields take nothing yet.
  EXPECT_TRUE(pt::Control(page, "rbAssemblies").checked);
  for (const char* name : {"edProjectFile", "btnProjectFile", "edProjectConfig"})
    EXPECT_FALSE(pt::Control(page, name).enabled) << name;

  pt::TAnsweringDialogs dialogs;
  dialogs.file = "/bin/Core.Tests.dll";
  pt::Click(page, "btnAddAssembly");
  dialogs.file = "/bin/Io.Tests.dll";
  pt::Click(page, "btnAddAssembly");
  EXPECT_EQ(dialogs.filter, TNUnitActionFrame::kAssemblyFilter);
  EXPECT_EQ(pt::Control(page, "mmAssemblies").lines,
            (std::vector<std::string>{"/bin/Core.Tests.dll", "/bin/Io.Tests.dll"}));

  pt::Click(page, "rbProjectFile");
  EXPECT_FALSE(pt::Control(page, "rbAssemblies").checked);
  EXPECT_TRUE(pt::Refused(page, "btnAddAssembly", TWrenPageEventKind::Click));
  EXPECT_TRUE(pt::Refused(page, "mmAssemblies", TWrenPageEventKind::Change));
  dialogs.file = "/src/all.nunit";
  pt::Click(page, "btnProjectFile");
  EXPECT_EQ(dialogs.filter, TNUnitActionFrame::kProjectFilter);
  pt::Type(page, "edProjectConfig", "Release");
  dialogs.file = "/out/result.xml";
  pt::Click(page, "btnXMLOutputFile");
  EXPECT_EQ(dialogs.filter, TNUnitActionFrame::kXMLFilter);
  pt::Click(page, "cbXMLToConsole", true);

  TWrenNUnitAction action;
  page.WriteActionData(action);
  EXPECT_TRUE(action.UseProjectFile);
  EXPECT_EQ(action.ProjectFile + "|" + action.ProjectConfig, "/src/all.nunit|Release");
  EXPECT_EQ(action.XMLOutputFile, "/out/result.xml");
  EXPECT_EQ(action.Assemblies.size(), 2u);
  EXPECT_TRUE(action.XMLToConsole);
  EXPECT_FALSE(action.NoLogo);
}

}  // namespace
}  // namespace wren
