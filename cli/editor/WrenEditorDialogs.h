// The editor's design-time services: a page's file, folder and list dialogs are answered by the
// browser, which shows them inside the page. A dialog without an answer is recorded and refused,
// the browser asks the user and sends the same event again with the answer.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "WrenPluginAPI.h"

namespace wren {

/// A dialog a page asked for: "file", "folder" or "list".
struct TWrenDialogRequest {
  std::string type;
  std::string title;
  std::string filter;
  std::string initial;  // the proposed file or folder, already expanded
  std::string caption;
  std::vector<std::string> items;
};

/// The user's answer to a dialog: a path, or for a list the chosen index.
struct TWrenDialogAnswer {
  bool accepted = false;
  std::string value;
  int index = -1;
};

/// Answers the page's dialog calls for one event at a time.
class TWrenEditorDialogs : public IWrenDesignApplicationServices {
 public:
  using TExpander = std::function<std::string(const std::string&)>;

  explicit TWrenEditorDialogs(TExpander expand) : expand_(std::move(expand)) {}

  /// Before an event: the answer the page's first dialog gets; without one, the dialog is
  /// recorded and refused. Clears any earlier request.
  void Arm(std::optional<TWrenDialogAnswer> answer);
  /// The dialog the last event asked for and could not be answered, if any.
  const std::optional<TWrenDialogRequest>& Request() const { return request_; }

  std::string ExpandText(const std::string& text) override;
  bool BrowseForFile(const std::string& title, const std::string& filter,
                     std::string& fileName) override;
  bool BrowseForDirectory(const std::string& title, std::string& directory) override;
  bool ChooseFromList(const std::string& title, const std::string& caption,
                      const std::vector<std::string>& items, int& itemIndex) override;

 private:
  /// The armed answer, used once; nullopt records the request instead.
  std::optional<TWrenDialogAnswer> Answer(TWrenDialogRequest request);

  TExpander expand_;
  std::optional<TWrenDialogAnswer> answer_;
  std::optional<TWrenDialogRequest> request_;
};

/// Installs the dialogs as the process's design-time services for its lifetime.
class TWrenDialogsScope {
 public:
  explicit TWrenDialogsScope(IWrenDesignApplicationServices& services) {
    SetWrenDesignApplicationServices(&services);
  }
  ~TWrenDialogsScope() { SetWrenDesignApplicationServices(nullptr); }
  TWrenDialogsScope(const TWrenDialogsScope&) = delete;
  TWrenDialogsScope& operator=(const TWrenDialogsScope&) = delete;
};

}  // namespace wren
