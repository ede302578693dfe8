// The editing state behind `marrowby edit`: the project, the open pages of the selected step, the
// options pages and the build. Every operation takes and gives the JSON the HTTP routes carry, so
// it is tested without a server; a refused request throws TWrenEditorError.
#pragma once

#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "WrenPluginAPI.h"
#include "cli/editor/WrenEditorDialogs.h"
#include "cli/editor/WrenEditorRun.h"
#include "runtime/WrenProject.h"

namespace wren {

/// A refused request: the HTTP status and the body's message (and extra body fields).
class TWrenEditorError : public std::runtime_error {
 public:
  TWrenEditorError(int status_, const std::string& message, nlohmann::json extra_ = {})
      : std::runtime_error(message), status(status_), extra(std::move(extra_)) {}
  int status;
  nlohmann::json extra;
};

/// One editing session over one project file. Thread-safe: one mutex guards it all.
class TWrenEditorSession {
 public:
  /// Loads the file, or starts an empty project when it does not exist yet. Throws
  /// TWrenEditorError (status 400) when the file cannot be read as a project.
  explicit TWrenEditorSession(const std::string& projectFile);
  ~TWrenEditorSession();
  TWrenEditorSession(const TWrenEditorSession&) = delete;
  TWrenEditorSession& operator=(const TWrenEditorSession&) = delete;

  const std::string& File() const { return file_; }

  nlohmann::json Project();
  nlohmann::json Actions();

  nlohmann::json AddStep(const nlohmann::json& body);
  nlohmann::json RemoveStep(int index);
  nlohmann::json DuplicateStep(int index);
  nlohmann::json MoveStep(int index, const nlohmann::json& body);
  nlohmann::json SetEnabled(int index, const nlohmann::json& body);
  nlohmann::json SetDescription(int index, const nlohmann::json& body);
  nlohmann::json SetVariables(const nlohmann::json& body);
  nlohmann::json SetProperty(int index, const std::string& name, const nlohmann::json& body);

  nlohmann::json OpenPages(int index);
  nlohmann::json PageEvent(int index, int page, const nlohmann::json& body);
  nlohmann::json CheckPage(int index, int page);
  nlohmann::json Apply(int index);

  nlohmann::json Options();
  nlohmann::json OptionsEvent(int options, int page, const nlohmann::json& body);
  nlohmann::json ApplyOptions(int options);

  nlohmann::json Folder(const std::string& path);
  nlohmann::json Save(const nlohmann::json& body);

  nlohmann::json Run(const nlohmann::json& body);
  nlohmann::json StopRun();
  TWrenEditorRun& Build() { return run_; }

 private:
  struct TOpenOptions {
    size_t registered = 0;  // index in RegisteredOptions()
    std::vector<std::unique_ptr<TWrenOptionsFrame>> pages;
  };

  TWrenProjectStep& Step(int index);
  nlohmann::json StepJson(int index, const std::vector<nlohmann::json>& problems);
  std::vector<std::vector<nlohmann::json>> Problems();
  TFrame& OpenPage(int index, int page);
  std::string Expand(const std::string& text);
  /// Runs one event through the page with the dialogs armed; the page's answer as JSON.
  template <class Page>
  nlohmann::json Dispatch(Page& page, const nlohmann::json& body);
  std::string ProjectText();
  void Changed();

  std::mutex mutex_;
  std::string file_;  // absolute
  TWrenProject project_;
  bool exists_ = false;     // the file was on disk when loaded or last saved
  std::string diskBytes_;   // what was on disk then
  bool dirty_ = false;
  TWrenEditorDialogs dialogs_;
  TWrenDialogsScope dialogsScope_{dialogs_};
  const TCustomWrenAction* pagesOf_ = nullptr;  // the step whose pages are open
  std::vector<std::unique_ptr<TFrame>> pages_;
  std::vector<TOpenOptions> options_;
  TWrenEditorRun run_;
};

/// The JSON of one page control.
nlohmann::json ControlJson(const TWrenPageControl& control);
/// An event from its JSON; throws TWrenEditorError (400) for a malformed one.
TWrenPageEvent EventFromJson(const nlohmann::json& body);

}  // namespace wren
