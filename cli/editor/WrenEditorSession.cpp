#include "cli/editor/WrenEditorSession.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <sstream>

#include "WrenUtils.h"
#include "cli/editor/WrenStepEdits.h"
#include "runtime/WrenActionRegistry.h"
#include "runtime/WrenBuildEngine.h"
#include "runtime/WrenExpression.h"
#include "runtime/WrenOptionsStore.h"

namespace wren {

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

bool ReadBytes(const std::string& path, std::string& bytes) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  return true;
}

std::string NormalPath(const fs::path& path) {
  std::error_code ec;
  std::string text = fs::absolute(path, ec).lexically_normal().string();
  while (text.size() > 1 && text.back() == '/') text.pop_back();
  return text;
}

int IndexIn(const json& body, const char* key) {
  if (!body.contains(key) || !body[key].is_number_integer())
    throw TWrenEditorError(400, std::string("\"") + key + "\" must be a whole number");
  return body[key].get<int>();
}

std::string TextIn(const json& body, const char* key) {
  if (!body.contains(key) || !body[key].is_string())
    throw TWrenEditorError(400, std::string("\"") + key + "\" must be a text");
  return body[key].get<std::string>();
}

std::optional<TWrenDialogAnswer> AnswerFromJson(const json& body) {
  if (!body.contains("answer") || body["answer"].is_null()) return std::nullopt;
  const json& a = body["answer"];
  if (!a.is_object()) throw TWrenEditorError(400, "\"answer\" must be an object");
  TWrenDialogAnswer answer;
  answer.accepted = a.value("accepted", false);
  answer.value = a.value("value", std::string());
  answer.index = a.value("index", -1);
  return answer;
}

json DialogJson(const TWrenDialogRequest& r) {
  return {{"type", r.type},       {"title", r.title},     {"filter", r.filter},
          {"initial", r.initial}, {"caption", r.caption}, {"items", r.items}};
}

template <class Page>
json ControlsJson(Page& page) {
  json list = json::array();
  for (const TWrenPageControl& c : PageControls(page)) list.push_back(ControlJson(c));
  return list;
}

}  // namespace

json ControlJson(const TWrenPageControl& c) {
  return {{"name", c.name},         {"kind", ControlKindName(c.kind)},
          {"caption", c.caption},   {"parent", c.parent},
          {"group", c.group},       {"enabled", c.enabled},
          {"visible", c.visible},   {"text", c.text},
          {"checked", c.checked},   {"items", c.items},
          {"itemIndex", c.itemIndex}, {"lines", c.lines},
          {"rows", c.rows}};
}

TWrenPageEvent EventFromJson(const json& body) {
  if (!body.is_object()) throw TWrenEditorError(400, "the event must be a JSON object");
  TWrenPageEvent event;
  event.control = TextIn(body, "control");
  const std::string kind = body.value("kind", std::string("change"));
  if (kind != "click" && kind != "change")
    throw TWrenEditorError(400, "\"kind\" is click or change, not '" + kind + "'");
  event.kind = kind == "click" ? TWrenPageEventKind::Click : TWrenPageEventKind::Change;
  event.text = body.value("text", std::string());
  event.checked = body.value("checked", false);
  event.itemIndex = body.value("itemIndex", -1);
  event.lines = body.value("lines", std::vector<std::string>());
  event.rows = body.value("rows", std::vector<std::vector<std::string>>());
  return event;
}

TWrenEditorSession::TWrenEditorSession(const std::string& projectFile)
    : file_(NormalPath(projectFile)),
      dialogs_([this](const std::string& text) { return Expand(text); }) {
  exists_ = ReadBytes(file_, diskBytes_);
  if (!exists_) {
    project_.fileName = file_;
    return;
  }
  TWrenProjectError error;
  if (!project_.Load(file_, CreateRegisteredAction, error))
    throw TWrenEditorError(400, error.ToString());
}

TWrenEditorSession::~TWrenEditorSession() {
  // Pages may point into actions: they go before the project.
  pages_.clear();
  options_.clear();
}

std::string TWrenEditorSession::Expand(const std::string& text) {
  const std::map<std::string, std::string> vars = BuildVariables(project_, {});
  auto lookup = [&](const std::string& name, std::string& value) {
    for (const auto& [n, v] : vars)
      if (SameText(n, name)) {
        value = v;
        return true;
      }
    if (const char* env = std::getenv(name.c_str())) {
      value = env;
      return true;
    }
    return false;
  };
  std::string result, error;
  // A dialog opens on the text as written when it cannot be expanded.
  return ExpandVariables(text, lookup, result, error) ? result : text;
}

void TWrenEditorSession::Changed() { dirty_ = true; }

TWrenProjectStep& TWrenEditorSession::Step(int index) {
  if (index < 0 || static_cast<size_t>(index) >= project_.steps.size())
    throw TWrenEditorError(404, "no step " + std::to_string(index) + "; the project has " +
                                    std::to_string(project_.steps.size()) + " step(s)");
  return project_.steps[static_cast<size_t>(index)];
}

std::vector<std::vector<json>> TWrenEditorSession::Problems() {
  std::vector<std::vector<json>> byStep(project_.steps.size());
  for (const TWrenValidationProblem& p : ValidateAll(project_, {}))
    if (p.step >= 1 && static_cast<size_t>(p.step) <= byStep.size())
      byStep[static_cast<size_t>(p.step - 1)].push_back(
          {{"field", p.field}, {"message", p.message}, {"warning", p.warning}});
  return byStep;
}

json TWrenEditorSession::StepJson(int index, const std::vector<json>& problems) {
  const TWrenProjectStep& step = Step(index);
  const TWrenRegisteredAction* registered = FindRegisteredAction(step.className);
  return {{"index", index},
          {"className", step.className},
          {"displayName", registered ? registered->displayName : step.action->DisplayName()},
          {"description", step.action->GetDescription()},
          {"enabled", step.enabled},
          {"problems", problems}};
}

std::string TWrenEditorSession::ProjectText() { return project_.SaveToText(); }

json TWrenEditorSession::Project() {
  std::lock_guard lock(mutex_);
  const std::vector<std::vector<json>> problems = Problems();
  json steps = json::array();
  for (size_t i = 0; i < project_.steps.size(); ++i)
    steps.push_back(StepJson(static_cast<int>(i), problems[i]));
  json variables = json::array();
  for (const TWrenProjectVariable& v : project_.variables)
    variables.push_back({{"name", v.name}, {"value", v.value}});
  return {{"file", file_}, {"exists", exists_},  {"dirty", dirty_},
          {"steps", steps}, {"variables", variables}};
}

json TWrenEditorSession::Actions() {
  std::lock_guard lock(mutex_);
  json categories = json::array();
  for (const TWrenRegisteredAction& a : WrenRegistrations().actions) {
    auto it = std::find_if(categories.begin(), categories.end(),
                           [&](const json& c) { return c["name"] == a.category; });
    if (it == categories.end()) {
      categories.push_back({{"name", a.category}, {"actions", json::array()}});
      it = categories.end() - 1;
    }
    (*it)["actions"].push_back({{"className", a.actionClass.name}, {"displayName", a.displayName}});
  }
  return {{"categories", categories}};
}

json TWrenEditorSession::AddStep(const json& body) {
  std::lock_guard lock(mutex_);
  const std::string className = TextIn(body, "className");
  const TWrenRegisteredAction* registered = FindRegisteredAction(className);
  if (!registered) throw TWrenEditorError(400, "no action class named '" + className + "'");
  int position = static_cast<int>(project_.steps.size());
  if (body.contains("position") && !body["position"].is_null()) {
    position = IndexIn(body, "position");
    if (position < 0 || static_cast<size_t>(position) > project_.steps.size())
      throw TWrenEditorError(400, "the position is from 0 to " +
                                      std::to_string(project_.steps.size()));
  }
  TWrenProjectStep step;
  step.className = registered->actionClass.name;
  step.action = registered->actionClass.create();
  project_.steps.insert(project_.steps.begin() + position, std::move(step));
  Changed();
  return {{"index", position}};
}

json TWrenEditorSession::RemoveStep(int index) {
  std::lock_guard lock(mutex_);
  TWrenProjectStep& step = Step(index);
  if (step.action.get() == pagesOf_) {
    pages_.clear();
    pagesOf_ = nullptr;
  }
  project_.steps.erase(project_.steps.begin() + index);
  Changed();
  return {{"ok", true}};
}

json TWrenEditorSession::DuplicateStep(int index) {
  std::lock_guard lock(mutex_);
  Step(index);
  // The project's own text makes the copy: properties, description and scripts alike.
  TWrenProject copy;
  TWrenProjectError error;
  if (!copy.LoadFromText(ProjectText(), file_, CreateRegisteredAction, error))
    throw TWrenEditorError(500, error.ToString());
  project_.steps.insert(project_.steps.begin() + index + 1,
                        std::move(copy.steps[static_cast<size_t>(index)]));
  Changed();
  return {{"index", index + 1}};
}

json TWrenEditorSession::MoveStep(int index, const json& body) {
  std::lock_guard lock(mutex_);
  Step(index);
  const int to = IndexIn(body, "to");
  if (to < 0 || static_cast<size_t>(to) >= project_.steps.size())
    throw TWrenEditorError(400, "\"to\" is from 0 to " + std::to_string(project_.steps.size() - 1));
  TWrenProjectStep step = std::move(project_.steps[static_cast<size_t>(index)]);
  project_.steps.erase(project_.steps.begin() + index);
  project_.steps.insert(project_.steps.begin() + to, std::move(step));
  Changed();
  return {{"ok", true}};
}

json TWrenEditorSession::SetEnabled(int index, const json& body) {
  std::lock_guard lock(mutex_);
  TWrenProjectStep& step = Step(index);
  if (!body.contains("enabled") || !body["enabled"].is_boolean())
    throw TWrenEditorError(400, "\"enabled\" must be true or false");
  step.enabled = body["enabled"].get<bool>();
  Changed();
  return {{"ok", true}};
}

json TWrenEditorSession::SetDescription(int index, const json& body) {
  std::lock_guard lock(mutex_);
  Step(index).action->SetDescription(TextIn(body, "description"));
  Changed();
  return {{"ok", true}};
}

json TWrenEditorSession::SetVariables(const json& body) {
  std::lock_guard lock(mutex_);
  if (!body.contains("variables") || !body["variables"].is_array())
    throw TWrenEditorError(400, "\"variables\" must be a list");
  std::vector<TWrenProjectVariable> variables;
  for (const json& v : body["variables"]) {
    if (!v.is_object()) throw TWrenEditorError(400, "a variable is {\"name\", \"value\"}");
    TWrenProjectVariable variable{TextIn(v, "name"), TextIn(v, "value")};
    if (Trim(variable.name).empty()) throw TWrenEditorError(400, "a variable needs a name");
    variables.push_back(std::move(variable));
  }
  project_.variables = std::move(variables);
  Changed();
  return {{"ok", true}};
}

json TWrenEditorSession::SetProperty(int index, const std::string& name, const json& body) {
  std::lock_guard lock(mutex_);
  TWrenProjectStep& step = Step(index);
  if (!body.contains("value")) throw TWrenEditorError(400, "\"value\" is missing");
  const json& value = body["value"];
  std::string text;
  if (value.is_string()) {
    text = value.get<std::string>();
  } else if (value.is_boolean()) {
    text = value.get<bool>() ? "true" : "false";
  } else if (value.is_number_integer()) {
    text = std::to_string(value.get<long long>());
  } else if (value.is_array()) {
    for (const json& line : value) {
      if (!line.is_string()) throw TWrenEditorError(400, "list items must be texts");
      text += (&line == &value.front() ? "" : "\n") + line.get<std::string>();
    }
  } else {
    throw TWrenEditorError(400, "\"value\" must be a text, a boolean, a number or a list");
  }
  std::string error;
  if (!SetStepValue(step, name, text, false, error)) throw TWrenEditorError(400, error);
  // Open pages show the new value; otherwise applying them would write the old one back.
  if (step.action.get() == pagesOf_)
    for (auto& page : pages_) page->ReadActionData(*step.action);
  Changed();
  return {{"step", StepJson(index, Problems()[static_cast<size_t>(index)])}};
}

json TWrenEditorSession::OpenPages(int index) {
  std::lock_guard lock(mutex_);
  TWrenProjectStep& step = Step(index);
  pages_.clear();
  pagesOf_ = nullptr;
  const TWrenRegisteredAction* registered = FindRegisteredAction(step.className);
  json pages = json::array();
  if (registered)
    for (const TWrenFrameClass& frame : registered->pages) {
      if (!frame.createPage) continue;
      std::unique_ptr<TFrame> page = frame.createPage();
      page->InitFrame();
      page->InitPage(*step.action);
      page->ReadActionData(*step.action);
      pages.push_back({{"index", pages_.size()},
                       {"name", page->PageName()},
                       {"frameClass", frame.name},
                       {"controls", ControlsJson(*page)}});
      pages_.push_back(std::move(page));
    }
  pagesOf_ = step.action.get();
  json editors = json::array();
  for (const TWrenRegisteredEditor& e : WrenRegistrations().editors) {
    if (!SameText(e.actionClass, step.className)) continue;
    std::string value;
    if (const TPublishedProperty* p =
            FindProperty(step.action->GetPublishedProperties(), e.propertyName))
      value = PropertyValueToString(*p, p->get(*step.action));
    editors.push_back({{"property", e.propertyName},
                       {"title", e.editor.dialogTitle},
                       {"defaultExtension", e.editor.defaultExtension},
                       {"filter", e.editor.filter},
                       {"value", value}});
  }
  return {{"pages", pages},
          {"problems", Problems()[static_cast<size_t>(index)]},
          {"editors", editors}};
}

TFrame& TWrenEditorSession::OpenPage(int index, int page) {
  const TWrenProjectStep& step = Step(index);
  if (step.action.get() != pagesOf_)
    throw TWrenEditorError(409, "the pages of step " + std::to_string(index) +
                                    " are not open; open them first");
  if (page < 0 || static_cast<size_t>(page) >= pages_.size())
    throw TWrenEditorError(404, "the step has no page " + std::to_string(page));
  return *pages_[static_cast<size_t>(page)];
}

template <class Page>
json TWrenEditorSession::Dispatch(Page& page, const json& body) {
  const TWrenPageEvent event = EventFromJson(body);
  const std::optional<TWrenDialogAnswer> answer = AnswerFromJson(body);
  dialogs_.Arm(answer);
  std::string error;
  const bool ok = DispatchPageEvent(page, event, error);
  const std::optional<TWrenDialogRequest> request = dialogs_.Request();
  dialogs_.Arm(std::nullopt);
  // Refused, the dialog left the page as it was: the browser asks and sends the event again.
  if (request && !answer) return {{"dialog", DialogJson(*request)}};
  if (!ok) throw TWrenEditorError(409, error);
  return {{"controls", ControlsJson(page)}};
}

json TWrenEditorSession::PageEvent(int index, int page, const json& body) {
  std::lock_guard lock(mutex_);
  return Dispatch(OpenPage(index, page), body);
}

json TWrenEditorSession::CheckPage(int index, int page) {
  std::lock_guard lock(mutex_);
  std::string message;
  const bool ok = OpenPage(index, page).CheckPage(message);
  return {{"ok", ok}, {"message", ok ? "" : message}};
}

json TWrenEditorSession::Apply(int index) {
  std::lock_guard lock(mutex_);
  TWrenProjectStep& step = Step(index);
  if (step.action.get() != pagesOf_)
    throw TWrenEditorError(409, "the pages of step " + std::to_string(index) + " are not open");
  for (size_t p = 0; p < pages_.size(); ++p) {
    std::string message;
    if (!pages_[p]->CheckPage(message)) return {{"ok", false}, {"page", p}, {"message", message}};
  }
  for (auto& page : pages_) page->WriteActionData(*step.action);
  Changed();
  return {{"ok", true}, {"step", StepJson(index, Problems()[static_cast<size_t>(index)])}};
}

json TWrenEditorSession::Options() {
  std::lock_guard lock(mutex_);
  options_.clear();
  json list = json::array();
  std::vector<TWrenRegisteredOptions>& registered = RegisteredOptions();
  for (size_t k = 0; k < registered.size(); ++k) {
    TWrenRegisteredOptions& record = registered[k];
    if (!record.instance) continue;
    TOpenOptions open;
    open.registered = k;
    json pages = json::array();
    for (const TWrenFrameClass& frame : record.pages) {
      if (!frame.createOptionsPage) continue;
      std::unique_ptr<TWrenOptionsFrame> page = frame.createOptionsPage();
      page->InitPage(nullptr);
      page->ReadOptions(*record.instance);
      // An untitled page is the object's only page: it takes the object's name.
      const std::string name =
          page->GetPageName().empty() ? record.instance->GetOptionsName() : page->GetPageName();
      pages.push_back(
          {{"index", open.pages.size()}, {"name", name}, {"controls", ControlsJson(*page)}});
      open.pages.push_back(std::move(page));
    }
    if (open.pages.empty()) continue;
    list.push_back({{"index", k},
                    {"name", record.instance->GetOptionsName()},
                    {"category", record.instance->GetOptionsCategory()},
                    {"pages", pages}});
    options_.push_back(std::move(open));
  }
  return {{"options", list}};
}

json TWrenEditorSession::OptionsEvent(int options, int page, const json& body) {
  std::lock_guard lock(mutex_);
  for (TOpenOptions& open : options_) {
    if (static_cast<int>(open.registered) != options) continue;
    if (page < 0 || static_cast<size_t>(page) >= open.pages.size())
      throw TWrenEditorError(404, "the options have no page " + std::to_string(page));
    return Dispatch(*open.pages[static_cast<size_t>(page)], body);
  }
  throw TWrenEditorError(409, "options " + std::to_string(options) + " are not open");
}

json TWrenEditorSession::ApplyOptions(int options) {
  std::lock_guard lock(mutex_);
  // A running build reads the options objects from its own thread: they change only between runs.
  if (run_.Running())
    throw TWrenEditorError(409, "the options cannot change while a build runs; stop it or wait");
  for (TOpenOptions& open : options_) {
    if (static_cast<int>(open.registered) != options) continue;
    TWrenOptionsObject& object = *RegisteredOptions()[open.registered].instance;
    for (auto& page : open.pages) page->WriteOptions(object);
    object.SaveOptions(*WrenOptionsStore().Writer(object.GetOptionKey()));
    std::string error;
    if (!WrenOptionsStore().Save(error)) throw TWrenEditorError(500, error);
    object.SetModified(false);
    return {{"ok", true}};
  }
  throw TWrenEditorError(409, "options " + std::to_string(options) + " are not open");
}

json TWrenEditorSession::Folder(const std::string& path) {
  std::lock_guard lock(mutex_);
  const fs::path projectDir = fs::path(file_).parent_path();
  fs::path wanted = path.empty() ? projectDir : fs::path(path);
  if (wanted.is_relative()) wanted = projectDir / wanted;
  const std::string dir = NormalPath(wanted);
  std::error_code ec;
  if (!fs::is_directory(dir, ec)) throw TWrenEditorError(404, dir + " is not a folder");
  struct TEntry {
    std::string name;
    bool dir;
  };
  std::vector<TEntry> entries;
  for (auto it = fs::directory_iterator(dir, ec); !ec && it != fs::directory_iterator();
       it.increment(ec)) {
    std::error_code typeError;
    entries.push_back({it->path().filename().string(), it->is_directory(typeError)});
  }
  std::sort(entries.begin(), entries.end(), [](const TEntry& a, const TEntry& b) {
    if (a.dir != b.dir) return a.dir;
    const std::string x = LowerCase(a.name), y = LowerCase(b.name);
    return x != y ? x < y : a.name < b.name;
  });
  json list = json::array();
  for (const TEntry& e : entries) list.push_back({{"name", e.name}, {"dir", e.dir}});
  const std::string parent = dir == "/" ? "" : NormalPath(fs::path(dir).parent_path());
  return {{"path", dir}, {"parent", parent}, {"entries", list}};
}

json TWrenEditorSession::Save(const json& body) {
  std::lock_guard lock(mutex_);
  const bool force = body.is_object() && body.value("force", false);
  std::string onDisk;
  const bool existsNow = ReadBytes(file_, onDisk);
  if (!force && (existsNow != exists_ || onDisk != diskBytes_))
    throw TWrenEditorError(409,
                           "The file was changed on disk since it was loaded or last saved; "
                           "save with force to overwrite it",
                           {{"conflict", true}});
  std::error_code ec;
  fs::create_directories(fs::path(file_).parent_path(), ec);
  std::string error;
  if (!project_.Save(file_, error)) throw TWrenEditorError(500, error);
  exists_ = ReadBytes(file_, diskBytes_);
  dirty_ = false;
  return {{"ok", true}};
}

json TWrenEditorSession::Run(const json& body) {
  std::lock_guard lock(mutex_);
  const bool dryRun = body.is_object() && body.value("dryRun", false);
  int id = 0;
  if (run_.Running() || !run_.Start(ProjectText(), file_, dryRun, id))
    throw TWrenEditorError(409, "a build is running; stop it or wait for its end");
  return {{"run", id}};
}

json TWrenEditorSession::StopRun() {
  run_.Stop();
  return {{"ok", true}};
}

}  // namespace wren
