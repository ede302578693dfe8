// Helpers for page tests that drive a page as a renderer does: through its control list only.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "WrenPluginAPI.h"

namespace wren::pagetest {

/// Stands in for the host's dialogs while alive: records what a page asked and gives the
/// prepared answer ("" or -1 cancels).
class TAnsweringDialogs : public IWrenDesignApplicationServices {
 public:
  TAnsweringDialogs() { SetWrenDesignApplicationServices(this); }
  ~TAnsweringDialogs() override { SetWrenDesignApplicationServices(nullptr); }
  TAnsweringDialogs(const TAnsweringDialogs&) = delete;
  TAnsweringDialogs& operator=(const TAnsweringDialogs&) = delete;

  std::string ExpandText(const std::string& text) override { return expandPrefix + text; }
  bool BrowseForFile(const std::string& title_, const std::string& filter_,
                     std::string& fileName) override {
    title = title_;
    filter = filter_;
    proposed = fileName;
    if (file.empty()) return false;
    fileName = file;
    return true;
  }
  bool BrowseForDirectory(const std::string& title_, std::string& directory) override {
    title = title_;
    proposed = directory;
    if (folder.empty()) return false;
    directory = folder;
    return true;
  }
  bool ChooseFromList(const std::string& title_, const std::string& caption_,
                      const std::vector<std::string>& items_, int& itemIndex) override {
    title = title_;
    caption = caption_;
    items = items_;
    offered = itemIndex;
    if (choice < 0) return false;
    itemIndex = choice;
    return true;
  }

  std::string expandPrefix;  // marks expanded texts, so a test sees a page expanded one
  std::string file, folder;  // answers
  int choice = -1;
  std::string title, filter, proposed, caption;  // what was asked
  std::vector<std::string> items;
  int offered = -2;
};

/// A page brought into some state by fill, and what its check says ("" when it is complete).
template <class Page>
struct TCheckCase {
  const char* name;
  std::function<void(Page&)> fill;
  std::string message;
};

/// Each case on a new page: CheckPage answers and explains as the case says.
template <class Page>
void ExpectChecks(const std::vector<TCheckCase<Page>>& cases) {
  for (const TCheckCase<Page>& c : cases) {
    SCOPED_TRACE(c.name);
    Page page;
    c.fill(page);
    std::string message;
    EXPECT_EQ(page.CheckPage(message), c.message.empty());
    EXPECT_EQ(message, c.message);
  }
}

/// "name:kind" of every control in tab order: one list shows order and kinds at a glance.
template <class Page>
std::vector<std::string> Layout(Page& page) {
  std::vector<std::string> out;
  for (const TWrenPageControl& c : PageControls(page))
    out.push_back(c.name + ":" + ControlKindName(c.kind));
  return out;
}

/// The layout of the .NET tool pages: their heading and version panel, then their own controls.
inline std::vector<std::string> WithVersionPanel(std::vector<std::string> own) {
  const std::vector<std::string> version = {"lblHeading:label",   "pnlVersion:panel",
                                            "lblVersion:label",   "rbDefaultVersion:radio",
                                            "rbUseVersion:radio", "cbVersion:combo"};
  own.insert(own.begin(), version.begin(), version.end());
  return own;
}

template <class Page>
TWrenPageControl Control(Page& page, const std::string& name) {
  for (const TWrenPageControl& c : PageControls(page))
    if (c.name == name) return c;
  ADD_FAILURE() << "no control " << name;
  return TWrenPageControl{};
}

/// Each named control shows the caption given.
template <class Page>
void ExpectCaptions(Page& page, const std::vector<std::pair<std::string, std::string>>& captions) {
  for (const auto& [name, caption] : captions)
    EXPECT_EQ(Control(page, name).caption, caption) << name;
}

template <class Page>
void Send(Page& page, const TWrenPageEvent& event) {
  std::string error;
  EXPECT_TRUE(DispatchPageEvent(page, event, error)) << event.control << ": " << error;
}

template <class Page>
void Click(Page& page, const std::string& control, bool checked = true) {
  TWrenPageEvent e;
  e.control = control;
  e.kind = TWrenPageEventKind::Click;
  e.checked = checked;
  Send(page, e);
}

template <class Page>
void Type(Page& page, const std::string& control, const std::string& text) {
  TWrenPageEvent e;
  e.control = control;
  e.text = text;
  Send(page, e);
}

template <class Page>
void Pick(Page& page, const std::string& control, int itemIndex) {
  TWrenPageEvent e;
  e.control = control;
  e.itemIndex = itemIndex;
  Send(page, e);
}

/// Replaces a memo's lines, as one edit of the whole text does.
template <class Page>
void SetLines(Page& page, const std::string& control, const std::vector<std::string>& lines) {
  TWrenPageEvent e;
  e.control = control;
  e.lines = lines;
  Send(page, e);
}

/// Replaces a grid's rows, as one edit of the whole grid does.
template <class Page>
void SetRows(Page& page, const std::string& control,
             const std::vector<std::vector<std::string>>& rows) {
  TWrenPageEvent e;
  e.control = control;
  e.rows = rows;
  Send(page, e);
}

/// True when the page refuses the event (a disabled or hidden control).
template <class Page>
bool Refused(Page& page, const std::string& control, TWrenPageEventKind kind) {
  TWrenPageEvent e;
  e.control = control;
  e.kind = kind;
  e.checked = true;
  std::string error;
  return !DispatchPageEvent(page, e, error) && !error.empty();
}

}  // namespace wren::pagetest
