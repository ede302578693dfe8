#include "cli/editor/WrenEditorDialogs.h"

namespace wren {

void TWrenEditorDialogs::Arm(std::optional<TWrenDialogAnswer> answer) {
  answer_ = std::move(answer);
  request_.reset();
}

std::optional<TWrenDialogAnswer> TWrenEditorDialogs::Answer(TWrenDialogRequest request) {
  if (answer_) {
    std::optional<TWrenDialogAnswer> given = std::move(answer_);
    answer_.reset();
    return given;
  }
  // A second dialog in one event keeps the first request: that is the one the user sees first.
  if (!request_) request_ = std::move(request);
  return std::nullopt;
}

std::string TWrenEditorDialogs::ExpandText(const std::string& text) {
  return expand_ ? expand_(text) : text;
}

bool TWrenEditorDialogs::BrowseForFile(const std::string& title, const std::string& filter,
                                       std::string& fileName) {
  const std::optional<TWrenDialogAnswer> answer = Answer({"file", title, filter, fileName, "", {}});
  if (!answer || !answer->accepted) return false;
  fileName = answer->value;
  return true;
}

bool TWrenEditorDialogs::BrowseForDirectory(const std::string& title, std::string& directory) {
  const std::optional<TWrenDialogAnswer> answer = Answer({"folder", title, "", directory, "", {}});
  if (!answer || !answer->accepted) return false;
  directory = answer->value;
  return true;
}

bool TWrenEditorDialogs::ChooseFromList(const std::string& title, const std::string& caption,
                                        const std::vector<std::string>& items, int& itemIndex) {
  const std::optional<TWrenDialogAnswer> answer =
      Answer({"list", title, "", itemIndex >= 0 && itemIndex < static_cast<int>(items.size())
                                     ? items[static_cast<size_t>(itemIndex)]
                                     : "",
              caption, items});
  if (!answer || !answer->accepted || answer->index < 0 ||
      answer->index >= static_cast<int>(items.size()))
    return false;
  itemIndex = answer->index;
  return true;
}

}  // namespace wren
