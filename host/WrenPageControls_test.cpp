#include "WrenPageControls.h"

#include <gtest/gtest.h>

#include "WrenPluginAPI.h"

namespace wren {
namespace {

/// A page with one of each kind, a panel that hides with a box, and a radio group.
struct TSamplePage {
  TLabelModel heading{"Heading"};
  TCheckBoxModel showMore{"Show more"};
  TPanelModel more{false};
  TEditModel name{"Name:", "old"};
  TRadioButtonModel first{"First", true};
  TRadioButtonModel second{"Second"};
  TComboBoxModel kind{"Kind:", {"a", "b"}, 0};
  TMemoModel notes{"Notes:", {}};
  int clicks = 0;

  void ListControls(TWrenPageControls& c) {
    c.Label("lblHeading", heading);
    c.CheckBox("cbShowMore", showMore, [this] { more.visible = showMore.checked; });
    c.BeginPanel("pnlMore", more, "More");
    c.Edit("edName", name);
    c.Button("btnGo", "Go", [this] { ++clicks; });
    c.EndPanel();
    c.RadioButton("rbFirst", "order", first);
    c.RadioButton("rbSecond", "order", second);
    c.ComboBox("cbKind", kind);
    c.Memo("mmNotes", notes);
  }
  std::vector<TWrenPageControl> Snapshot() {
    TWrenPageControls c;
    ListControls(c);
    return c.Snapshot();
  }
  bool Send(const TWrenPageEvent& e, std::string& error) {
    TWrenPageControls c;
    ListControls(c);
    return c.Dispatch(e, error);
  }
};

TWrenPageEvent Click(const std::string& name, bool checked = false) {
  TWrenPageEvent e;
  e.control = name;
  e.kind = TWrenPageEventKind::Click;
  e.checked = checked;
  return e;
}

TEST(PageControls, ListsInTabOrderAndHidesWhatAHiddenPanelHolds) {
  TSamplePage page;
  std::vector<TWrenPageControl> list = page.Snapshot();
  std::vector<std::string> names;
  for (const auto& c : list) names.push_back(c.name + ":" + ControlKindName(c.kind) + ":" + c.parent);
  EXPECT_EQ(names, (std::vector<std::string>{
                       "lblHeading:label:", "cbShowMore:checkbox:", "pnlMore:panel:",
                       "edName:edit:pnlMore", "btnGo:button:pnlMore", "rbFirst:radio:",
                       "rbSecond:radio:", "cbKind:combo:", "mmNotes:memo:"}));
  EXPECT_FALSE(list[3].visible);
  EXPECT_EQ(list[3].caption, "Name:");
  EXPECT_EQ(list[3].text, "old");
  EXPECT_EQ(list[5].group, "order");

  std::string error;
  TWrenPageEvent change;
  change.control = "edName";
  change.text = "new";
  EXPECT_FALSE(page.Send(change, error));
  EXPECT_EQ(error, "The control \"edName\" is hidden.");
  EXPECT_EQ(page.name.text, "old");

  ASSERT_TRUE(page.Send(Click("cbShowMore", true), error)) << error;
  EXPECT_TRUE(page.Snapshot()[3].visible);
  ASSERT_TRUE(page.Send(change, error)) << error;
  EXPECT_EQ(page.name.text, "new");
  ASSERT_TRUE(page.Send(Click("btnGo"), error)) << error;
  EXPECT_EQ(page.clicks, 1);
}

TEST(PageControls, EventsSetModelsAndRefuseWhatAControlCannotTake) {
  TSamplePage page;
  std::string error;
  ASSERT_TRUE(page.Send(Click("rbSecond"), error)) << error;
  EXPECT_FALSE(page.first.checked);
  EXPECT_TRUE(page.second.checked);

  TWrenPageEvent combo;
  combo.control = "cbKind";
  combo.itemIndex = 1;
  ASSERT_TRUE(page.Send(combo, error)) << error;
  EXPECT_EQ(page.kind.Selected(), "b");

  TWrenPageEvent memo;
  memo.control = "mmNotes";
  memo.lines = {"one", "two"};
  ASSERT_TRUE(page.Send(memo, error)) << error;
  EXPECT_EQ(page.notes.lines, memo.lines);

  EXPECT_FALSE(page.Send(Click("cbKind"), error));
  EXPECT_EQ(error, "The control \"cbKind\" (combo) does not take a click.");
  EXPECT_FALSE(page.Send(Click("lblHeading"), error));
  EXPECT_FALSE(page.Send(Click("nothing"), error));
  EXPECT_EQ(error, "The page has no control \"nothing\".");

  page.second.enabled = false;
  EXPECT_FALSE(page.Send(Click("rbSecond"), error));
  EXPECT_EQ(error, "The control \"rbSecond\" is disabled.");
}

}  // namespace
}  // namespace wren
