#include "cli/editor/WrenEditorDialogs.h"

#include <gtest/gtest.h>

namespace wren {
namespace {

TEST(EditorDialogs, UnansweredDialogsAreRecordedAndRefusedAnsweredOnesTakeTheAnswerOnce) {
  TWrenEditorDialogs dialogs([](const std::string& text) { return "[" + text + "]"; });
  EXPECT_EQ(dialogs.ExpandText("%X%"), "[%X%]");
  const std::vector<std::string> pages = {"1252 (ANSI - Latin I)", "65001 (UTF-8)"};

  // Unanswered: nothing changes, and the first dialog of the event is the one reported.
  dialogs.Arm(std::nullopt);
  int index = 0;
  std::string folder = "/start";
  EXPECT_FALSE(dialogs.ChooseFromList("Code Page", "Pick one", pages, index));
  EXPECT_FALSE(dialogs.BrowseForDirectory("Folder", folder));
  EXPECT_EQ(index, 0);
  EXPECT_EQ(folder, "/start");
  ASSERT_TRUE(dialogs.Request());
  EXPECT_EQ(dialogs.Request()->type, "list");
  EXPECT_EQ(dialogs.Request()->caption, "Pick one");
  EXPECT_EQ(dialogs.Request()->initial, "1252 (ANSI - Latin I)");
  EXPECT_EQ(dialogs.Request()->items, pages);

  // Answered: the first call gets the answer, a second one in the same event is refused.
  dialogs.Arm(TWrenDialogAnswer{true, "", 1});
  EXPECT_TRUE(dialogs.ChooseFromList("Code Page", "Pick one", pages, index));
  EXPECT_EQ(index, 1);
  EXPECT_FALSE(dialogs.ChooseFromList("Code Page", "Pick one", pages, index));
  EXPECT_FALSE(dialogs.Request()->items.empty());

  // An index the list does not have is a cancel, as is accepted:false.
  for (const TWrenDialogAnswer& answer :
       {TWrenDialogAnswer{true, "", 7}, TWrenDialogAnswer{false, "/x", 0}}) {
    dialogs.Arm(answer);
    index = 1;
    EXPECT_FALSE(dialogs.ChooseFromList("t", "c", pages, index));
    EXPECT_EQ(index, 1);
  }
  dialogs.Arm(TWrenDialogAnswer{true, "/chosen", -1});
  EXPECT_TRUE(dialogs.BrowseForDirectory("Folder", folder));
  EXPECT_EQ(folder, "/chosen");
  EXPECT_FALSE(dialogs.Request());
}

}  // namespace
}  // namespace wren
