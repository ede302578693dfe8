#include "pages/WrenDemeanorFrames.h"

#include <gtest/gtest.h>

#include "pages/WrenPageTesting.h"
#include "tools/WrenDemeanorAction.h"

namespace wren {
namespace {

using namespace pagetest;

TEST(DemeanorPages, ControlsInTabOrderAndTheirBrowseButtons) {
  TAnsweringDialogs dialogs;
  TWrenDemeanorAction action;
  TDemeanorPEFrame pe;
  TDemeanorExcludeFrame exclude;
  pe.ReadActionData(action);
  exclude.ReadActionData(action);
  EXPECT_EQ(Layout(pe),
            (std::vector<std::string>{"edInputAssembly:edit", "btnInputAssembly:button",
                                      "edOutputDirectory:edit", "btnOutputDirectory:button"}));
  EXPECT_EQ(Layout(exclude), (std::vector<std::string>{"mmExtraSwitches:memo", "lblHint:label"}));
  EXPECT_EQ(Control(exclude, "lblHint").caption,
            "Demeanor's switches are not publicly documented; they are passed as written");

  dialogs.file = "/bin/app.exe";
  Click(pe, "btnInputAssembly");
  EXPECT_EQ(dialogs.filter, TDemeanorPEFrame::kAssemblyFilter);
  dialogs.folder = "/bin/obfuscated";
  Click(pe, "btnOutputDirectory");
  EXPECT_EQ(dialogs.title, "Select Output Directory");
  SetLines(exclude, "mmExtraSwitches", {"/names:alpha"});
  pe.WriteActionData(action);
  exclude.WriteActionData(action);
  EXPECT_EQ(action.InputAssembly, "/bin/app.exe");
  EXPECT_EQ(action.OutputDirectory, "/bin/obfuscated");
  EXPECT_EQ(action.ExtraSwitches, (TStrings{"/names:alpha"}));
}

}  // namespace
}  // namespace wren
