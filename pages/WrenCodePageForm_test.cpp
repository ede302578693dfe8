#include "pages/WrenCodePageForm.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "WrenUtils.h"
#include "pages/WrenPageTesting.h"

namespace wren {
namespace {

TEST(WrenCodePageForm, ListsTheCodePagesTheSystemConverts) {
  std::vector<int> pages;
  std::string error;
  ASSERT_TRUE(EnumSystemCodePageNumbers(pages, error)) << error;
  auto has = [&](int page) { return std::find(pages.begin(), pages.end(), page) != pages.end(); };
  // glibc converts all of these; none of the unconvertible ISCII pages may slip in.
  for (int page : {437, 850, 932, 1200, 1252, 20127, 28591, 65001}) EXPECT_TRUE(has(page)) << page;
  EXPECT_FALSE(has(57002));
  EXPECT_TRUE(std::is_sorted(pages.begin(), pages.end()));

  TCodePageForm form;
  EXPECT_EQ(form.caption, "Choose a Code page");
  EXPECT_EQ(form.lblCodePages.caption, "Available Code Pages");
  EXPECT_EQ(form.errorMessage, "");
  ASSERT_EQ(form.lbCodePages.items.size(), pages.size());
  const auto item = std::find(form.lbCodePages.items.begin(), form.lbCodePages.items.end(),
                              "1252 - " + CodePageToString(1252));
  EXPECT_NE(item, form.lbCodePages.items.end());
}

TEST(WrenCodePageForm, OKNeedsASelection) {
  TCodePageForm form([](std::vector<int>& pages, std::string&) {
    pages = {437, 65001};
    return true;
  });
  std::string message;
  EXPECT_FALSE(form.OKClick(message));
  EXPECT_EQ(message, "Please select a code page.");
  EXPECT_EQ(form.modalResult, TCodePageForm::TModalResult::mrNone);
  EXPECT_EQ(form.GetCodePage(), 0);

  form.lbCodePages.itemIndex = 1;
  message.clear();
  EXPECT_TRUE(form.OKClick(message));
  EXPECT_EQ(message, "");
  EXPECT_EQ(form.modalResult, TCodePageForm::TModalResult::mrOk);
  EXPECT_EQ(form.GetCodePage(), 65001);

  form.CancelClick();
  EXPECT_EQ(form.modalResult, TCodePageForm::TModalResult::mrCancel);
}

TEST(WrenCodePageForm, EnumerationFailureIsShown) {
  TCodePageForm form([](std::vector<int>& pages, std::string& error) {
    pages = {437};
    error = "Access is denied.";
    return false;
  });
  EXPECT_EQ(form.errorMessage, "Unable to retrieve code pages : Access is denied.");
  EXPECT_TRUE(form.lbCodePages.items.empty());
}

TEST(WrenCodePageForm, ShowModalAsksTheChooserAndAcceptsOnlyAnItemOfTheList) {
  const TCodePageEnumerator two = [](std::vector<int>& pages, std::string&) {
    pages = {437, 65001};
    return true;
  };
  struct TCase {
    const char* name;
    int answer;  // -1: the user cancelled
    bool accepted;
    int codePage;
  };
  for (const TCase& c : std::vector<TCase>{{"second item", 1, true, 65001},
                                           {"cancelled", -1, false, 0},
                                           {"answer beyond the list", 2, false, 0}}) {
    SCOPED_TRACE(c.name);
    pagetest::TAnsweringDialogs dialogs;
    dialogs.choice = c.answer;
    TCodePageForm form(two);
    EXPECT_EQ(form.ShowModal(), c.accepted);
    EXPECT_EQ(dialogs.title, "Choose a Code page");
    EXPECT_EQ(dialogs.caption, "Available Code Pages");
    EXPECT_EQ(dialogs.items, form.lbCodePages.items);
    EXPECT_EQ(dialogs.offered, -1);
    EXPECT_EQ(form.modalResult, c.accepted ? TCodePageForm::TModalResult::mrOk
                                           : TCodePageForm::TModalResult::mrCancel);
    EXPECT_EQ(form.GetCodePage(), c.codePage);
  }

  // The chooser starts at the item already selected.
  pagetest::TAnsweringDialogs dialogs;
  TCodePageForm form(two);
  form.lbCodePages.itemIndex = 1;
  EXPECT_FALSE(form.ShowModal());
  EXPECT_EQ(dialogs.offered, 1);
}

}  // namespace
}  // namespace wren
