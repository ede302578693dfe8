// `marrowby new/add/set/remove/move`: changing a build project without an editor. Every edit goes
// through the project model, so the rest of the file keeps its bytes.
#include <algorithm>
#include <charconv>
#include <filesystem>
#include <system_error>

#include "Commands.h"
#include "WrenFiles.h"
#include "WrenUtils.h"
#include "cli/editor/WrenStepEdits.h"
#include "runtime/WrenActionRegistry.h"
#include "runtime/WrenProject.h"
#include "runtime/WrenSuggest.h"

namespace wren {

namespace {

bool LoadForEdit(TCliContext& ctx, const std::string& file, TWrenProject& project) {
  TWrenProjectError error;
  if (project.Load(file, CreateRegisteredAction, error)) return true;
  *ctx.err << "marrowby: " << error.ToString() << "\n";
  return false;
}

bool SaveEdited(TCliContext& ctx, const std::string& file, TWrenProject& project) {
  std::string error;
  if (project.Save(file, error)) return true;
  *ctx.err << "marrowby: " << error << "\n";
  return false;
}

bool ParseNumber(const std::string& text, int& number) {
  const char* end = text.data() + text.size();
  auto [ptr, ec] = std::from_chars(text.data(), end, number);
  return !text.empty() && ec == std::errc() && ptr == end;
}

/// A step by number (from 1) or by description; -1 with the reason printed when neither fits.
int FindStep(TCliContext& ctx, const TWrenProject& project, const std::string& ref) {
  int number = 0;
  if (ParseNumber(ref, number)) {
    if (number >= 1 && static_cast<size_t>(number) <= project.steps.size()) return number - 1;
    *ctx.err << "marrowby: no step " << ref << "; the project has " << project.steps.size()
             << " step(s)\n";
    return -1;
  }
  std::vector<int> matches;
  std::vector<std::string> descriptions;
  for (size_t i = 0; i < project.steps.size(); ++i) {
    const std::string description = project.steps[i].action->GetDescription();
    if (description.empty()) continue;
    descriptions.push_back(description);
    if (SameText(description, ref)) matches.push_back(static_cast<int>(i));
  }
  if (matches.size() == 1) return matches[0];
  if (matches.empty())
    *ctx.err << "marrowby: no step is described as '" << ref << "'"
             << WithSuggestion(DidYouMean(ref, descriptions)) << "\n";
  else
    *ctx.err << "marrowby: " << matches.size() << " steps are described as '" << ref
             << "'; name the step by its number\n";
  return -1;
}

/// Sets PROP of the step's action, or the step's description or enabled flag.
bool SetStepValue(TCliContext& ctx, TWrenProjectStep& step, const std::string& name,
                  const std::string& text, bool appendToList) {
  std::string error;
  if (wren::SetStepValue(step, name, text, appendToList, error)) return true;
  *ctx.err << "marrowby: " << error << "\n";
  return false;
}

}  // namespace

int CmdNew(TCliContext& ctx, const std::string& file) {
  if (FileExists(file)) {
    *ctx.err << "marrowby: " << file << " already exists\n";
    return kExitUsage;
  }
  // Like `dotnet new -o`, the project's folder is made when it is not there yet.
  const std::filesystem::path parent = std::filesystem::path(file).parent_path();
  std::error_code ec;
  if (!parent.empty()) std::filesystem::create_directories(parent, ec);
  TWrenProject project;
  if (!SaveEdited(ctx, file, project)) return kExitFailed;
  *ctx.out << "created " << file << "\n";
  return kExitOk;
}

int CmdAdd(TCliContext& ctx, const std::string& file, const std::string& className,
           const std::string* description, const std::vector<std::string>& assignments) {
  TWrenProject project;
  if (!LoadForEdit(ctx, file, project)) return kExitUsage;
  const TWrenRegisteredAction* registered = FindRegisteredAction(className);
  if (!registered) {
    *ctx.err << "marrowby: " << UnknownClassMessage(className) << "\n";
    return kExitUsage;
  }
  TWrenProjectStep step;
  step.className = registered->actionClass.name;
  step.action = registered->actionClass.create();
  if (description) step.action->SetDescription(*description);
  // A list property named twice gets both lines: Assemblies=a.dll Assemblies=b.dll.
  std::vector<std::string> listsSeen;
  for (const std::string& assignment : assignments) {
    const size_t eq = assignment.find('=');
    if (eq == std::string::npos || eq == 0) {
      *ctx.err << "marrowby: add wants PROP=VALUE, got '" << assignment << "'\n";
      return kExitUsage;
    }
    const std::string name = assignment.substr(0, eq);
    const bool again = std::find_if(listsSeen.begin(), listsSeen.end(), [&](const std::string& n) {
                         return SameText(n, name);
                       }) != listsSeen.end();
    if (!SetStepValue(ctx, step, name, assignment.substr(eq + 1), again)) return kExitUsage;
    listsSeen.push_back(name);
  }
  project.steps.push_back(std::move(step));
  if (!SaveEdited(ctx, file, project)) return kExitFailed;
  *ctx.out << "added step " << project.steps.size() << ": " << registered->actionClass.name
           << (description && !description->empty() ? " - " + *description : std::string())
           << "\n";
  return kExitOk;
}

int CmdSet(TCliContext& ctx, const std::string& file, const std::string& stepRef,
           const std::string& property, const std::string& value) {
  TWrenProject project;
  if (!LoadForEdit(ctx, file, project)) return kExitUsage;
  const int index = FindStep(ctx, project, stepRef);
  if (index < 0) return kExitUsage;
  if (!SetStepValue(ctx, project.steps[static_cast<size_t>(index)], property, value, false))
    return kExitUsage;
  return SaveEdited(ctx, file, project) ? kExitOk : kExitFailed;
}

int CmdRemove(TCliContext& ctx, const std::string& file, const std::string& stepRef) {
  TWrenProject project;
  if (!LoadForEdit(ctx, file, project)) return kExitUsage;
  const int index = FindStep(ctx, project, stepRef);
  if (index < 0) return kExitUsage;
  project.steps.erase(project.steps.begin() + index);
  return SaveEdited(ctx, file, project) ? kExitOk : kExitFailed;
}

int CmdMove(TCliContext& ctx, const std::string& file, const std::string& stepRef,
            const std::string& position) {
  TWrenProject project;
  if (!LoadForEdit(ctx, file, project)) return kExitUsage;
  const int from = FindStep(ctx, project, stepRef);
  if (from < 0) return kExitUsage;
  int to = 0;
  if (!ParseNumber(position, to) || to < 1 || static_cast<size_t>(to) > project.steps.size()) {
    *ctx.err << "marrowby: the position is a step number from 1 to " << project.steps.size()
             << ", not '" << position << "'\n";
    return kExitUsage;
  }
  TWrenProjectStep step = std::move(project.steps[static_cast<size_t>(from)]);
  project.steps.erase(project.steps.begin() + from);
  project.steps.insert(project.steps.begin() + (to - 1), std::move(step));
  return SaveEdited(ctx, file, project) ? kExitOk : kExitFailed;
}

}  // namespace wren
