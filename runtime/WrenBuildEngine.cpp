#include "WrenBuildEngine.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <stdlib.h>

#include "WrenExecuteAction.h"
#include "WrenExpression.h"
#include "WrenFiles.h"
#include "WrenActionRegistry.h"
#include "WrenSuggest.h"
#include "WrenUnifiedDiff.h"
#include "WrenUtils.h"

namespace wren {
namespace {

/// Collects validation reports of one step.
class TValidationSink : public IWrenActionValidationError {
 public:
  TValidationSink(int step, std::string className, std::vector<TWrenValidationProblem>& out)
      : step_(step), className_(std::move(className)), out_(out) {}
  void AddError(const std::string& field, const std::string& message) override {
    out_.push_back({step_, className_, field, message});
    ++count_;
  }
  int Count() const { return count_; }

 private:
  int step_;
  std::string className_;
  std::vector<TWrenValidationProblem>& out_;
  int count_ = 0;
};

/// The last lines of a step's log, in a ring of reused strings: a step may log millions of
/// lines, and keeping them costs no allocation per line.
class TLogTail {
 public:
  void Add(TWrenLogStream stream, std::string_view text) {
    ++count_;
    if (stream == TWrenLogStream::Message) NoteMessage(text);
    Keep(stream, text);
  }
  /// A block of lines: only those that stay in the ring are copied.
  void Add(const TWrenLogLines& lines) {
    const size_t n = lines.Count();
    count_ += n;
    // Only the last line with text counts: looked for from the end.
    if (lines.Stream() == TWrenLogStream::Message)
      for (size_t i = n; i > 0; --i)
        if (NoteMessage(lines.Line(i - 1))) break;
    lines.ForEach([&](std::string_view text) { Keep(lines.Stream(), text); },
                  n > kWrenLogTailLines ? n - kWrenLogTailLines : 0);
  }
  /// The last non-blank line the action itself logged (the reason a failing action gives).
  const std::string& LastMessage() const { return lastMessage_; }
  /// Fills the report's log, oldest line first.
  void MoveTo(TWrenStepReport& report) {
    std::rotate(slots_.begin(), slots_.begin() + static_cast<std::ptrdiff_t>(next_), slots_.end());
    report.log = std::move(slots_);
    report.logLines = count_;
    slots_.clear();
    next_ = 0;
    count_ = 0;
  }

 private:
  /// True when text has more than blanks: it is then the last message.
  bool NoteMessage(std::string_view text) {
    const std::string_view trimmed = TrimView(text);
    if (trimmed.empty()) return false;
    lastMessage_.assign(trimmed);
    return true;
  }
  void Keep(TWrenLogStream stream, std::string_view text) {
    std::pair<TWrenLogStream, std::string>* slot;
    if (slots_.size() < kWrenLogTailLines) {
      slot = &slots_.emplace_back();
    } else {
      slot = &slots_[next_];
      if (++next_ == kWrenLogTailLines) next_ = 0;
    }
    slot->first = stream;
    if (text.size() <= kWrenLogTailLineBytes) {
      slot->second.assign(text);
    } else {
      slot->second.assign(text.substr(0, kWrenLogTailLineBytes));
      slot->second += " ... (" + std::to_string(text.size() - kWrenLogTailLineBytes) +
                      " more bytes)";
    }
  }

  std::vector<std::pair<TWrenLogStream, std::string>> slots_;
  size_t next_ = 0;  // once the ring is full: the oldest slot
  size_t count_ = 0;
  std::string lastMessage_;
};

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The one-line reason a failed step gives.
std::string FailureReason(const TLogTail& log, const TWrenStepHost& host) {
  if (host.StopSignalledNow()) return "stopped by user request";
  const TWrenProcessResult& process = host.LastProcessResult();
  if (host.ProcessStarted() && process.status == TWrenProcessResult::TStatus::Exited)
    return "the program exited with code " + std::to_string(process.exitCode);
  if (process.status == TWrenProcessResult::TStatus::NotFound)
    return "program not found";
  if (!log.LastMessage().empty()) return log.LastMessage();
  return "the action reported failure";
}

std::string ProjectFolder(const TWrenProject& project) {
  std::error_code ec;
  const std::string absolute = std::filesystem::absolute(project.fileName, ec).string();
  return ExcludeTrailingPathDelimiter(ExtractFilePath(absolute));
}

/// Makes a folder the current directory for its lifetime, so that relative paths in a build mean
/// what they mean beside the project file, wherever the host was started.
class TCurrentDirScope {
 public:
  explicit TCurrentDirScope(const std::string& dir) {
    std::error_code ec;
    previous_ = std::filesystem::current_path(ec);
    if (!ec && !dir.empty()) std::filesystem::current_path(dir, ec);
  }
  ~TCurrentDirScope() {
    std::error_code ec;
    if (!previous_.empty()) std::filesystem::current_path(previous_, ec);
  }
  TCurrentDirScope(const TCurrentDirScope&) = delete;
  TCurrentDirScope& operator=(const TCurrentDirScope&) = delete;

 private:
  std::filesystem::path previous_;
};

/// The text values of one property (one per line for a list).
std::vector<std::string> PropertyTexts(const TCustomWrenAction& action,
                                       const TPublishedProperty& prop) {
  if (prop.kind != TPropertyKind::pkStringList && prop.kind != TPropertyKind::pkString) return {};
  TPropertyValue value = prop.get(action);
  if (prop.kind == TPropertyKind::pkStringList) return std::move(std::get<TStrings>(value));
  return {PropertyValueToString(prop, value)};
}

bool IsNameChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.' || c == '-' ||
         c == '%' || c == '$';
}

/// A drive letter ("C:\\", "c:/") or a backslash between two names ("bin\\Debug").
bool LooksLikeWindowsPath(const std::string& text) {
  for (size_t i = 0; i + 2 < text.size(); ++i) {
    const bool start = i == 0 || !IsNameChar(text[i - 1]);
    if (start && std::isalpha(static_cast<unsigned char>(text[i])) && text[i + 1] == ':' &&
        (text[i + 2] == '\\' || text[i + 2] == '/'))
      return true;
  }
  for (size_t i = 1; i + 1 < text.size(); ++i)
    if (text[i] == '\\' && IsNameChar(text[i - 1]) && IsNameChar(text[i + 1])) return true;
  return false;
}

/// Whether a wildcard path ("src/*/AssemblyInfo.*") names at least one file, as the updater's
/// own walk would find them.
bool WildcardMatchesAFile(const std::string& dir, const std::string& mask, bool recurse) {
  for (const TWrenFindData& found : FindFiles(dir + "*.*", recurse)) {
    if (!found.isDirectory) {
      if (MatchesMask(found.name, mask)) return true;
    } else if (recurse && found.name != "." && found.name != ".." &&
               WildcardMatchesAFile(IncludeTrailingPathDelimiter(dir + found.name), mask, true)) {
      return true;
    }
  }
  return false;
}

const TPublishedProperty* FindProperty(const TCustomWrenAction& action, const std::string& name) {
  for (const TPublishedProperty& p : action.GetPublishedProperties())
    if (SameText(p.name, name)) return &p;
  return nullptr;
}

/// Properties that name one file a step reads. A value that names a missing file is a mistake
/// unless an earlier step may make the file.
bool IsInputFileProperty(const TCustomWrenAction& action, const std::string& name) {
  static const char* const names[] = {"Assembly", "AssemblyPath", "KeyFile", "FromKeyFile",
                                      "FromAssembly", "BuildFile"};
  for (const char* n : names)
    if (SameText(name, n)) {
      // A key file the action is told not to use is not read.
      const TPublishedProperty* use = nullptr;
      for (const TPublishedProperty& p : action.GetPublishedProperties())
        if (SameText(p.name, "UseKeyFile")) use = &p;
      return !(SameText(name, "KeyFile") && use && use->kind == TPropertyKind::pkBoolean &&
               !std::get<bool>(use->get(action)));
    }
  return false;
}

bool Wanted(const std::vector<bool>* selected, size_t index) {
  return selected == nullptr || index >= selected->size() || (*selected)[index];
}

std::vector<TWrenValidationProblem> ValidateSteps(TWrenProject& project,
                                                  const std::vector<bool>* selected) {
  std::vector<TWrenValidationProblem> problems;
  for (size_t i = 0; i < project.steps.size(); ++i) {
    TWrenProjectStep& step = project.steps[i];
    if (!step.enabled || !Wanted(selected, i)) continue;
    TValidationSink sink(static_cast<int>(i + 1), step.className, problems);
    const bool ok = step.action->Validate(sink);
    if (!ok && sink.Count() == 0)
      problems.push_back({static_cast<int>(i + 1), step.className, "", "the action is not valid"});
  }
  return problems;
}

std::vector<TWrenValidationProblem> CheckSteps(const TWrenProject& project,
                                               const std::map<std::string, std::string>& variables,
                                               const std::vector<bool>* selected) {
  std::vector<TWrenValidationProblem> problems;
  const std::string folder = IncludeTrailingPathDelimiter(ProjectFolder(project));
  const TVariableLookup lookup = [&variables](const std::string& name, std::string& out) {
    for (const auto& [key, value] : variables)
      if (SameText(key, name)) {
        out = value;
        return true;
      }
    if (const char* env = std::getenv(name.c_str())) {
      out = env;
      return true;
    }
    return false;
  };
  // Once a program has run, any file may exist: only the inputs of steps before the first
  // program are known to be missing.
  bool programRanBefore = false;
  for (size_t i = 0; i < project.steps.size(); ++i) {
    const TWrenProjectStep& step = project.steps[i];
    if (!step.enabled || !Wanted(selected, i)) continue;
    const int number = static_cast<int>(i + 1);
    const bool runsProgram =
        dynamic_cast<const TWrenExecuteAbstractAction*>(step.action.get()) != nullptr;
    for (const TPublishedProperty& prop : step.action->GetPublishedProperties()) {
      if (programRanBefore || prop.kind != TPropertyKind::pkString ||
          !IsInputFileProperty(*step.action, prop.name))
        continue;
      std::string path, error;
      const std::string text = PropertyValueToString(prop, prop.get(*step.action));
      if (!ExpandVariables(text, lookup, path, error)) continue;
      path = StripQuotes(Trim(path));
      if (path.empty() || path.find_first_of("*?") != std::string::npos) continue;
      if (path[0] != '/' && path[0] != '\\' && !(path.size() > 1 && path[1] == ':'))
        path = folder + path;
      if (!FileExists(path) && !DirectoryExists(path))
        problems.push_back({number, step.className, prop.name,
                            "the file " + path + " does not exist, and no earlier step makes it"});
    }
    programRanBefore = programRanBefore || runsProgram;
    for (const TPublishedProperty& prop : step.action->GetPublishedProperties()) {
      std::set<std::string> undefined;
      bool windowsPath = false;
      for (const std::string& text : PropertyTexts(*step.action, prop)) {
        if (PathDelim != '\\' && LooksLikeWindowsPath(text)) windowsPath = true;
        if (text.find('%') == std::string::npos) continue;  // names no variable
        // Undefined names are collected rather than stopping at the first.
        const TVariableLookup collecting = [&](const std::string& name, std::string& out) {
          if (lookup(name, out)) return true;
          undefined.insert(name);
          out.clear();
          return true;
        };
        std::string expanded, error;
        ExpandVariables(text, collecting, expanded, error);
      }
      for (const std::string& name : undefined) {
        std::vector<std::string> known;
        for (const auto& [key, value] : variables) known.push_back(key);
        const std::string hint = DidYouMean(name, known);
        problems.push_back({number, step.className, prop.name,
                            "%" + name +
                                "% is not defined by the project, a --var or the environment" +
                                (hint.empty() ? "" : "; " + hint)});
      }
      if (windowsPath)
        problems.push_back({number, step.className, prop.name,
                            "looks like a Windows path; on this system write '/' between names "
                            "(for example %ProjectDir%/bin)",
                            true});
    }
    // A wildcard selection that matches nothing makes a step that silently does nothing.
    const TPublishedProperty* selection = FindProperty(*step.action, "Selection");
    if (!selection || selection->kind != TPropertyKind::pkStringList) continue;
    const TPublishedProperty* recurseProp = FindProperty(*step.action, "Recurse");
    const bool recurse = recurseProp && recurseProp->kind == TPropertyKind::pkBoolean &&
                         std::get<bool>(recurseProp->get(*step.action));
    for (const std::string& line : PropertyTexts(*step.action, *selection)) {
      std::string expanded, error;
      if (line.find_first_of("*?") == std::string::npos) continue;
      if (!ExpandVariables(line, lookup, expanded, error)) continue;
      std::string path = expanded;
      if (!path.empty() && path[0] != '/' && path[0] != '\\' &&
          !(path.size() > 1 && path[1] == ':'))
        path = folder + path;
      if (!WildcardMatchesAFile(ExtractFilePath(path), ExtractFileName(path), recurse))
        problems.push_back({number, step.className, selection->name,
                            "'" + line + "' matches no file" +
                                (recurse ? "" : " (Recurse is off: subfolders are not searched)"),
                            true});
    }
  }
  return problems;
}

std::vector<TWrenValidationProblem> ValidateSelected(
    TWrenProject& project, const std::map<std::string, std::string>& variables,
    const std::vector<bool>* selected) {
  std::vector<TWrenValidationProblem> problems = ValidateSteps(project, selected);
  std::vector<TWrenValidationProblem> checks = CheckSteps(project, variables, selected);
  problems.insert(problems.end(), checks.begin(), checks.end());
  std::stable_sort(problems.begin(), problems.end(),
                   [](const TWrenValidationProblem& a, const TWrenValidationProblem& b) {
                     return a.step < b.step;
                   });
  return problems;
}

/// The 0-based index of the step a selector names (a number, or a description), or -1.
int FindStep(const TWrenProject& project, const std::string& selector) {
  const std::string text = Trim(selector);
  if (!text.empty() && text.find_first_not_of("0123456789") == std::string::npos) {
    const long n = std::strtol(text.c_str(), nullptr, 10);
    return n >= 1 && n <= static_cast<long>(project.steps.size()) ? static_cast<int>(n - 1) : -1;
  }
  for (size_t i = 0; i < project.steps.size(); ++i)
    if (!text.empty() && SameText(project.steps[i].action->GetDescription(), text))
      return static_cast<int>(i);
  return -1;
}

/// The XML result file a test runner step names (NUnit's XMLOutputFile), made absolute.
std::string TestResultFile(const TCustomWrenAction& action,
                           const std::map<std::string, std::string>& variables) {
  const TPublishedProperty* prop = FindProperty(action, "XMLOutputFile");
  if (!prop || prop->kind != TPropertyKind::pkString) return "";
  const std::string text = PropertyValueToString(*prop, prop->get(action));
  const TVariableLookup lookup = [&variables](const std::string& name, std::string& out) {
    for (const auto& [key, value] : variables)
      if (SameText(key, name)) {
        out = value;
        return true;
      }
    const char* env = std::getenv(name.c_str());
    if (env) out = env;
    return env != nullptr;
  };
  std::string expanded, error;
  if (Trim(text).empty() || !ExpandVariables(text, lookup, expanded, error)) return "";
  std::error_code ec;
  return std::filesystem::absolute(StripQuotes(Trim(expanded)), ec).string();
}

/// The files under a folder, relative, regular files only (links are not followed).
std::vector<std::string> FilesUnder(const std::filesystem::path& root, size_t limit) {
  std::vector<std::string> files;
  std::error_code ec;
  for (auto it = std::filesystem::recursive_directory_iterator(root, ec);
       !ec && it != std::filesystem::recursive_directory_iterator(); it.increment(ec)) {
    if (it->is_regular_file(ec) && !it->is_symlink(ec))
      files.push_back(std::filesystem::relative(it->path(), root, ec).string());
    if (files.size() > limit) break;
  }
  return files;
}

std::string ReadOrEmpty(const std::string& path) {
  std::string bytes, error;
  if (!ReadFileBytes(path, bytes, error)) bytes.clear();
  return bytes;
}

/// A dry run of an in-process step: the step runs against a scratch copy of the project folder
/// (with %ProjectDir% and the current directory pointing there) and the record holds the diff
/// of every file it changed. Nothing outside the scratch copy is touched: a step whose values
/// name absolute paths elsewhere is not run. False with why when the step was not run.
bool DryRunInScratch(TWrenProjectStep& step, TWrenStepReport& report,
                     std::map<std::string, std::string> variables, const std::string& folder,
                     const std::atomic<bool>* stop, IWrenBuildListener& listener,
                     std::string& why) {
  constexpr size_t kMaxFiles = 20000;
  const std::vector<std::string> originals = FilesUnder(folder, kMaxFiles);
  if (originals.size() > kMaxFiles) {
    why = "the project folder is too large to copy for a dry run";
    return false;
  }
  std::string scratchTemplate =
      (std::filesystem::temp_directory_path() / "marrowby-dry-run-XXXXXX").string();
  if (!mkdtemp(scratchTemplate.data())) {
    why = "no scratch folder for a dry run";
    return false;
  }
  const std::string scratch = scratchTemplate;
  struct TRemove {
    std::string dir;
    ~TRemove() {
      std::error_code ec;
      std::filesystem::remove_all(dir, ec);
    }
  } removeScratch{scratch};
  std::error_code ec;
  std::filesystem::copy(folder, scratch,
                        std::filesystem::copy_options::recursive |
                            std::filesystem::copy_options::copy_symlinks,
                        ec);
  if (ec) {
    why = "the project folder could not be copied for a dry run (" + ec.message() + ")";
    return false;
  }
  for (auto& [name, value] : variables)
    if (SameText(name, "ProjectDir")) value = scratch;
  const TVariableLookup lookup = [&variables](const std::string& name, std::string& out) {
    for (const auto& [key, value] : variables)
      if (SameText(key, name)) {
        out = value;
        return true;
      }
    const char* env = std::getenv(name.c_str());
    if (env) out = env;
    return env != nullptr;
  };
  for (const TPublishedProperty& prop : step.action->GetPublishedProperties())
    for (const std::string& text : PropertyTexts(*step.action, prop)) {
      std::string expanded, error;
      ExpandVariables(text, lookup, expanded, error);
      expanded = StripQuotes(Trim(expanded));
      const bool absolute = !expanded.empty() && (expanded[0] == '/' || expanded[0] == '\\' ||
                                                  (expanded.size() > 1 && expanded[1] == ':'));
      if (absolute && expanded.rfind(scratch + "/", 0) != 0) {
        why = prop.name + " names " + expanded + ", outside the project folder";
        return false;
      }
    }

  TWrenStepHost host;
  host.SetVariables(variables);
  host.SetStopFlag(stop);
  TLogTail tail;
  host.SetLogSink([&](TWrenLogStream stream, const std::string& text) {
    std::string line = text;
    for (size_t at; (at = line.find(scratch)) != std::string::npos;)
      line.replace(at, scratch.size(), folder);
    tail.Add(stream, line);
    listener.OnLog(report, stream, line);
  });
  host.SetFlushSink([&] { listener.OnLogFlush(report); });
  bool ok = false;
  {
    TCurrentDirScope inScratch(scratch);
    step.action->SetHost(&host);
    try {
      ok = step.action->Execute();
    } catch (const std::exception& e) {
      host.SendMessage(std::string("Internal error: ") + e.what());
    }
    step.action->SetHost(nullptr);
  }
  TWrenDryRunRecord record;
  const std::string base = IncludeTrailingPathDelimiter(folder);
  for (const std::string& rel : FilesUnder(scratch, kMaxFiles * 2)) {
    const std::string before = base + rel;
    const bool existed = FileExists(before);
    const std::string diff = UnifiedDiff(rel, existed ? ReadOrEmpty(before) : "",
                                         ReadOrEmpty(scratch + "/" + rel), existed, true);
    if (!diff.empty()) record.diffs.push_back({before, diff});
  }
  for (const std::string& rel : originals)
    if (!FileExists(scratch + "/" + rel))
      record.diffs.push_back({base + rel, UnifiedDiff(rel, ReadOrEmpty(base + rel), "", true,
                                                      false)});
  tail.MoveTo(report);
  report.success = ok;
  report.dryRuns.push_back(record);
  listener.OnDryRun(report, record);
  return true;
}

}  // namespace

std::vector<TWrenValidationProblem> ValidateProject(TWrenProject& project) {
  return ValidateSteps(project, nullptr);
}

std::vector<TWrenValidationProblem> CheckProject(
    const TWrenProject& project, const std::map<std::string, std::string>& variables) {
  return CheckSteps(project, variables, nullptr);
}

std::vector<TWrenValidationProblem> ValidateAll(
    TWrenProject& project, const std::map<std::string, std::string>& overrides) {
  return ValidateSelected(project, BuildVariables(project, overrides), nullptr);
}

bool SelectSteps(const TWrenProject& project, const TWrenBuildOptions& options,
                 std::vector<bool>& selected, std::string& error) {
  const size_t total = project.steps.size();
  selected.assign(total, options.only.empty());
  auto find = [&](const std::string& selector, const char* option) {
    const int index = FindStep(project, selector);
    if (index < 0)
      error = std::string(option) + " '" + selector + "' names no step (steps are 1 to " +
              std::to_string(total) + ", or a step's description)";
    return index;
  };
  for (const std::string& s : options.only) {
    const int index = find(s, "--only");
    if (index < 0) return false;
    selected[index] = true;
  }
  if (!options.from.empty()) {
    const int index = find(options.from, "--from");
    if (index < 0) return false;
    for (int i = 0; i < index; ++i) selected[i] = false;
  }
  for (const std::string& s : options.skip) {
    const int index = find(s, "--skip");
    if (index < 0) return false;
    selected[index] = false;
  }
  return true;
}

std::map<std::string, std::string> BuildVariables(
    const TWrenProject& project, const std::map<std::string, std::string>& overrides) {
  std::map<std::string, std::string> vars;
  // Names compare without case: a later definition replaces an earlier one of any spelling.
  auto define = [&vars](const std::string& name, const std::string& value) {
    for (auto it = vars.begin(); it != vars.end();)
      it = SameText(it->first, name) ? vars.erase(it) : std::next(it);
    vars[name] = value;
  };
  define("ProjectDir", ProjectFolder(project));
  define("ProjectName", ChangeFileExt(ExtractFileName(project.fileName), ""));
  for (const TWrenProjectVariable& v : project.variables) define(v.name, v.value);
  for (const auto& [name, value] : overrides) define(name, value);
  return vars;
}

TWrenBuildResult RunBuild(TWrenProject& project, const TWrenBuildOptions& options,
                          IWrenBuildListener& listener) {
  TWrenBuildResult result;
  const auto buildStart = std::chrono::steady_clock::now();
  const std::atomic<bool>* stop = options.stopFlag ? options.stopFlag : &WrenStopFlag();

  std::vector<bool> selected;
  std::string selectError;
  if (!SelectSteps(project, options, selected, selectError)) {
    listener.OnInvalid({0, "", "", selectError});
    result.invalid = true;
    return result;
  }
  const std::map<std::string, std::string> variables = BuildVariables(project, options.variables);
  const std::vector<TWrenValidationProblem> problems =
      ValidateSelected(project, variables, &selected);
  for (const TWrenValidationProblem& p : problems) listener.OnInvalid(p);
  for (const TWrenValidationProblem& p : problems)
    if (!p.warning) result.invalid = true;
  if (result.invalid) return result;

  std::error_code ec;
  const std::string projectFile = std::filesystem::absolute(project.fileName, ec).string();
  TCurrentDirScope inProjectFolder(ProjectFolder(project));
  // The steps' programs share one helper process instead of forking one from the host each.
  const TWrenProcessReuse reuseProcesses;
  const int total = static_cast<int>(project.steps.size());
  result.success = true;
  bool ended = false;  // a step failed or a stop was requested: the rest do not run
  for (int i = 0; i < total; ++i) {
    TWrenProjectStep& step = project.steps[i];
    TWrenStepReport report;
    report.step = i + 1;
    report.className = step.className;
    // The name the action was registered under, as `marrowby actions` lists it.
    const TWrenRegisteredAction* registered = FindRegisteredAction(step.className);
    report.displayName = registered ? registered->displayName : step.action->DisplayName();
    report.description = step.action->GetDescription();
    report.enabled = step.enabled;
    auto* executeAction = dynamic_cast<TWrenExecuteAbstractAction*>(step.action.get());
    report.inProcess = executeAction == nullptr;

    if (!ended && stop->load()) {
      result.stopped = true;
      result.success = false;
      ended = true;
    }
    if (ended) {
      // Listed for the reports, never announced: the build is over.
      report.skipped = result.stopped ? "not run: the build was stopped"
                                      : "not run: an earlier step failed";
      result.steps.push_back(std::move(report));
      continue;
    }
    if (!step.enabled || !selected[i]) {
      report.skipped = step.enabled ? "not selected" : "disabled";
      report.success = true;
      listener.OnStepStart(report, total);
      listener.OnStepEnd(report);
      result.steps.push_back(std::move(report));
      continue;
    }
    listener.OnStepStart(report, total);
    if (options.dryRun && report.inProcess) {
      // In-process steps show what they would change, from a scratch copy.
      const auto stepStart = std::chrono::steady_clock::now();
      std::string why;
      if (!DryRunInScratch(step, report, variables, ProjectFolder(project), stop, listener,
                           why)) {
        report.success = true;
        report.listedOnly = true;
        listener.OnLog(report, TWrenLogStream::Message, "not run in a dry run: " + why);
        listener.OnLogFlush(report);
      }
      report.seconds = SecondsSince(stepStart);
      if (!report.success) report.failureReason = "the action reported failure";
      listener.OnStepEnd(report);
      result.steps.push_back(std::move(report));
      if (!result.steps.back().success) {
        result.success = false;
        ended = true;
      }
      continue;
    }

    TLogTail tail;  // outlives the host, whose last messages it may still be given
    TWrenStepHost host;
    host.SetVariables(variables);
    host.SetStopFlag(stop);
    host.SetDryRun(options.dryRun);
    host.SetProjectFileName(projectFile);
    host.SetLogLinesSink([&](const TWrenLogLines& lines) {
      tail.Add(lines);
      listener.OnLogLines(report, lines);
    });
    host.SetFlushSink([&] { listener.OnLogFlush(report); });
    step.action->SetHost(&host);
    const auto stepStart = std::chrono::steady_clock::now();
    bool ok = false;
    try {
      ok = step.action->Execute();
    } catch (const std::exception& e) {
      host.SendMessage(std::string("Internal error: ") + e.what());
      ok = false;
    }
    host.FinishMessages();  // the rest of the step's events follow its last messages
    step.action->SetHost(nullptr);
    // An action that saw the stop request may still answer true for the part it did; the step
    // did not finish, whatever it answered.
    if (stop->load()) ok = false;
    report.seconds = SecondsSince(stepStart);
    report.success = ok;
    if (host.ProcessStarted() &&
        host.LastProcessResult().status == TWrenProcessResult::TStatus::Exited)
      report.exitCode = host.LastProcessResult().exitCode;
    report.dryRuns = host.DryRunRecords();
    if (!options.dryRun) report.testResultFile = TestResultFile(*step.action, variables);
    for (const TWrenDryRunRecord& record : report.dryRuns) listener.OnDryRun(report, record);
    if (!ok) report.failureReason = FailureReason(tail, host);
    tail.MoveTo(report);
    listener.OnStepEnd(report);
    result.steps.push_back(std::move(report));
    if (!ok) {
      result.success = false;
      result.stopped = stop->load();
      ended = true;
    }
  }
  result.seconds = SecondsSince(buildStart);
  return result;
}

}  // namespace wren
