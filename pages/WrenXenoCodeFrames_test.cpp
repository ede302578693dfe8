#include "pages/WrenXenoCodeFrames.h"

#include <gtest/gtest.h>

#include "pages/WrenPageTesting.h"
#include "tools/WrenXenoCodeAction.h"

namespace wren {
namespace {

using namespace pagetest;

TEST(XenoCodePage, ControlsInTabOrderAndTheProjectBrowseButton) {
  TAnsweringDialogs dialogs;
  TWrenXenoCodeAction action;
  TXenoCodeFrame page;
  page.ReadActionData(action);
  EXPECT_EQ(Layout(page), (std::vector<std::string>{"edProjectFile:edit", "btnProjectFile:button",
                                                    "mmExtraSwitches:memo", "lblHint:label"}));
  dialogs.file = "/src/app.postbuild";
  Click(page, "btnProjectFile");
  EXPECT_EQ(dialogs.filter, TXenoCodeFrame::kProjectFilter);
  SetLines(page, "mmExtraSwitches", {"-q", "-x"});
  page.WriteActionData(action);
  EXPECT_EQ(action.ProjectFile, "/src/app.postbuild");
  EXPECT_EQ(action.ExtraSwitches, (TStrings{"-q", "-x"}));
}

}  // namespace
}  // namespace wren
