// marrowby: the command-line host. Loads the package, reads build projects and runs them.
#include <CLI/CLI.hpp>
#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "Commands.h"
#include "WrenBuildReporters.h"
#include "WrenFixHints.h"
#include "WrenFiles.h"
#include "WrenRegistry.h"
#include "WrenUtils.h"
#include "runtime/WrenActionRegistry.h"
#include "runtime/WrenBuildEngine.h"
#include "runtime/WrenModule.h"
#include "runtime/WrenMonoSetup.h"
#include "runtime/WrenOptionsStore.h"
#include "runtime/WrenProject.h"
#include "runtime/WrenRegistryHive.h"
#include "runtime/WrenSuggest.h"

using namespace wren;

namespace {

volatile std::sig_atomic_t g_stopSignal = 0;

void OnStopSignal(int sig) {
  g_stopSignal = sig;
  WrenStopFlag().store(true);
}

std::string ExecutableDir() {
  char buf[4096];
  const ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
  if (n <= 0) return "";
  buf[n] = '\0';
  return ExtractFilePath(buf);
}

std::string EnvOr(const char* name, const std::string& fallback) {
  const char* value = std::getenv(name);
  return value && *value ? value : fallback;
}

std::string ConfigDir() {
  const std::string xdg = EnvOr("XDG_CONFIG_HOME", "");
  if (!xdg.empty()) return IncludeTrailingPathDelimiter(xdg) + "marrowby/";
  return IncludeTrailingPathDelimiter(EnvOr("HOME", "/tmp")) + ".config/marrowby/";
}

/// Finds the registry hive: --registry, $MARROWBY_REGISTRY, the user's config directory; on POSIX
/// without any, the hive built from the local Mono install (made on first use).
bool ConfigureRegistry(TCliContext& ctx, std::string& error) {
  std::string file = ctx.registryFile;
  if (file.empty()) file = EnvOr("MARROWBY_REGISTRY", "");
  if (file.empty() && FileExists(ConfigDir() + "registry.reg")) file = ConfigDir() + "registry.reg";
  if (file.empty()) {
    const std::string dir = DefaultMonoSetupDir();
    const std::string hive = IncludeTrailingPathDelimiter(dir) + "registry.reg";
    if (!FileExists(hive)) {
      TMonoSetupResult setup;
      std::string why;
      if (!SetupMono(dir, "", setup, why)) {
        *ctx.err << "marrowby: no registry configured and no Mono install found (" << why
                 << "); .NET tools will not be found\n";
        return true;
      }
      // A user who never chose an NUnit runner gets the one that came with Mono.
      if (!setup.nunitConsole.empty() &&
          WrenOptionsStore().Get("NUnit", "NUnitLocation", "").empty()) {
        WrenOptionsStore().Set("NUnit", "NUnitLocation", setup.nunitConsole);
        if (!WrenOptionsStore().Save(why)) *ctx.err << "marrowby: " << why << "\n";
      }
      // Said once, when the hive is made; later runs use it quietly.
      *ctx.err << "marrowby: no registry configured; using Mono's tools from " << dir
               << " (marrowby setup-mono)\n";
    }
    file = hive;
  }
  std::shared_ptr<IWrenRegistry> registry = LoadRegistryHive({file}, error);
  if (!registry) return false;
  SetWrenRegistry(registry);
  return true;
}

/// Loads the options file and the package, and registers what the package supplies.
/// designTime also registers the property pages, which only describe reads.
/// The package module to load: --module, else $MARROWBY_PACKAGE, else the one beside the
/// executable, else the build's.
std::string PackagePath(const std::string& modulePath) {
  std::string path = modulePath;
  if (path.empty()) path = EnvOr("MARROWBY_PACKAGE", "");
  const std::string file = ModuleFileName("Wren30DotNetFrameWork");
  if (path.empty() && FileExists(ExecutableDir() + file)) path = ExecutableDir() + file;
  if (path.empty()) path = IncludeTrailingPathDelimiter(MARROWBY_DEFAULT_MODULE_DIR) + file;
  return path;
}

bool PrepareHost(TCliContext& ctx, TWrenModule& module, const std::string& path,
                 bool designTime) {
  std::string error;
  const std::string optionsPath = ctx.optionsFile.empty() ? DefaultOptionsPath() : ctx.optionsFile;
  if (!WrenOptionsStore().Load(optionsPath, error)) {
    *ctx.err << "marrowby: " << error << "\n";
    return false;
  }
  if (!ConfigureRegistry(ctx, error)) {
    *ctx.err << "marrowby: " << error << "\n";
    return false;
  }
  if (!module.Load(path, error)) {
    *ctx.err << "marrowby: " << error << "\n";
    return false;
  }
  module.Register(designTime);
  return true;
}

bool LoadProjectFile(TCliContext& ctx, const std::string& path, TWrenProject& project) {
  TWrenProjectError error;
  if (project.Load(path, CreateRegisteredAction, error)) return true;
  if (ctx.json)
    TJsonReporter(*ctx.out).Error(error.file, error.line, error.action, error.property,
                                  error.message);
  *ctx.err << "marrowby: " << error.ToString() << "\n";
  return false;
}

int CmdRun(TCliContext& ctx, const std::string& projectPath, const std::vector<std::string>& vars,
           TWrenBuildOptions options, TWrenVerbosity verbosity, const std::string& logFile,
           const std::string& junitFile) {
  const bool dryRun = options.dryRun;
  for (const std::string& var : vars) {
    const size_t eq = var.find('=');
    if (eq == std::string::npos || eq == 0) {
      *ctx.err << "marrowby: --var wants NAME=VALUE, got '" << var << "'\n";
      return kExitUsage;
    }
    options.variables[var.substr(0, eq)] = var.substr(eq + 1);
  }
  TJsonReporter json(*ctx.out);
  if (ctx.json) json.Start("run", projectPath);
  TWrenProject project;
  if (!LoadProjectFile(ctx, projectPath, project)) {
    TWrenBuildResult none;
    none.invalid = true;
    if (ctx.json) json.Summary(none);
    return kExitUsage;
  }
  std::string error;
  std::vector<bool> selected;
  if ((!junitFile.empty() && !CheckReportWritable(junitFile, error)) ||
      !SelectSteps(project, options, selected, error)) {
    *ctx.err << "marrowby: " << error << "\n";
    return kExitUsage;
  }

  TBuildListeners listeners;
  TTerminalReporter terminal(*ctx.out, TerminalStyleFor(1, verbosity));
  TLogFileWriter log;
  if (!logFile.empty()) {
    if (!log.Open(logFile, error)) {
      *ctx.err << "marrowby: " << error << "\n";
      return kExitUsage;
    }
    listeners.Add(&log);  // first: a line on stdout is already on disk
  }
  listeners.Add(ctx.json ? static_cast<IWrenBuildListener*>(&json) : &terminal);
  TFixHintReporter hints(*ctx.out);
  if (!ctx.json) listeners.Add(&hints);
  TJUnitOutput junitOutput;
  if (!junitFile.empty()) listeners.Add(&junitOutput);

  // A closed terminal stops the build like Ctrl-C.
  for (int sig : {SIGINT, SIGTERM, SIGHUP}) std::signal(sig, OnStopSignal);
  const TWrenBuildResult result = RunBuild(project, options, listeners);
  for (int sig : {SIGINT, SIGTERM, SIGHUP}) std::signal(sig, SIG_DFL);

  if (ctx.json)
    json.Summary(result);
  else
    terminal.Summary(result, dryRun);
  // The whole log is on disk before marrowby ends, however the build went.
  bool logWritten = true;
  if (!logFile.empty() && !log.Close(error)) {
    *ctx.err << "marrowby: " << error << "\n";
    logWritten = false;
  }
  bool reportWritten = true;
  if (!junitFile.empty() &&
      !WriteJUnitReport(junitFile, ChangeFileExt(ExtractFileName(projectPath), ""), result,
                        listeners.problems, junitOutput, error)) {
    *ctx.err << "marrowby: " << error << "\n";
    reportWritten = false;
  }
  if (!SaveModifiedOptions(error)) *ctx.err << "marrowby: " << error << "\n";
  // A build stopped by a signal exits as shells expect: 130 for SIGINT, 143 for SIGTERM.
  if (g_stopSignal != 0) return 128 + g_stopSignal;
  if (result.invalid) return kExitUsage;
  if (!reportWritten || !logWritten) return kExitFailed;
  return result.success ? kExitOk : kExitFailed;
}

int CmdValidate(TCliContext& ctx, const std::string& projectPath,
                const std::vector<std::string>& vars) {
  TJsonReporter json(*ctx.out);
  if (ctx.json) json.Start("validate", projectPath);
  TWrenProject project;
  if (!LoadProjectFile(ctx, projectPath, project)) {
    if (ctx.json) json.Validation({{0, "", "", "the project could not be read"}}, 0);
    return kExitUsage;
  }
  std::map<std::string, std::string> overrides;
  for (const std::string& var : vars)
    if (const size_t eq = var.find('='); eq != std::string::npos && eq > 0)
      overrides[var.substr(0, eq)] = var.substr(eq + 1);
  const std::vector<TWrenValidationProblem> problems = ValidateAll(project, overrides);
  TTerminalReporter terminal(*ctx.out);
  TFixHintReporter hints(*ctx.out);
  int errors = 0;
  for (const TWrenValidationProblem& p : problems) {
    if (!p.warning) ++errors;
    if (ctx.json) {
      json.OnInvalid(p);
      continue;
    }
    terminal.OnInvalid(p);
    hints.OnInvalid(p);
  }
  const int warnings = static_cast<int>(problems.size()) - errors;
  if (ctx.json)
    json.Validation(problems, static_cast<int>(project.steps.size()));
  else
    *ctx.out << projectPath << ": " << project.steps.size() << " step(s), "
             << (errors == 0 ? "valid" : std::to_string(errors) + " error(s)")
             << (warnings ? ", " + std::to_string(warnings) + " warning(s)" : "") << "\n";
  // Problems are bad input, as for run: nothing would run.
  return errors == 0 ? kExitOk : kExitUsage;
}

int CmdActions(TCliContext& ctx) {
  const auto& actions = WrenRegistrations().actions;
  std::vector<std::string> categories;
  for (const TWrenRegisteredAction& a : actions)
    if (std::find(categories.begin(), categories.end(), a.category) == categories.end())
      categories.push_back(a.category);
  if (ctx.json) {
    nlohmann::json list = nlohmann::json::array();
    for (const TWrenRegisteredAction& a : actions)
      list.push_back({{"displayName", a.displayName}, {"category", a.category},
                      {"class", a.actionClass.name}, {"icon", a.iconResourceName}});
    *ctx.out << JsonText(list, 2) << "\n";
    return kExitOk;
  }
  for (const std::string& category : categories) {
    *ctx.out << category << "\n";
    for (const TWrenRegisteredAction& a : actions)
      if (a.category == category)
        *ctx.out << "  " << a.displayName << "  (" << a.actionClass.name << ", icon "
                 << a.iconResourceName << ")\n";
  }
  if (actions.empty()) *ctx.out << "no actions are registered\n";
  return kExitOk;
}

const char* KindName(TPropertyKind kind) {
  switch (kind) {
    case TPropertyKind::pkString: return "string";
    case TPropertyKind::pkBoolean: return "boolean";
    case TPropertyKind::pkInteger: return "integer";
    case TPropertyKind::pkEnumeration: return "enumeration";
    case TPropertyKind::pkStringList: return "string list";
  }
  return "?";
}

/// What the class's property pages tell about each property; the first page naming one wins.
std::vector<TWrenPagePropertyInfo> PagePropertyInfo(const TWrenRegisteredAction& registered) {
  std::vector<TWrenPagePropertyInfo> merged;
  for (const TWrenFrameClass& page : registered.pages) {
    if (!page.createPage) continue;
    for (TWrenPagePropertyInfo& info : page.createPage()->PropertyInfo())
      if (std::none_of(merged.begin(), merged.end(), [&](const TWrenPagePropertyInfo& m) {
            return SameText(m.property, info.property);
          }))
        merged.push_back(std::move(info));
  }
  return merged;
}

int CmdDescribe(TCliContext& ctx, const std::string& className) {
  const TWrenRegisteredAction* registered = FindRegisteredAction(className);
  if (!registered) {
    *ctx.err << "marrowby: " << UnknownClassMessage(className) << "\n";
    return kExitUsage;
  }
  std::unique_ptr<TCustomWrenAction> action = registered->actionClass.create();
  TStrings hidden;
  action->GetHiddenProperties(hidden);
  auto isHidden = [&](const std::string& name) {
    for (const std::string& h : hidden)
      if (SameText(h, name)) return true;
    return false;
  };
  const std::vector<TWrenPagePropertyInfo> pageInfo = PagePropertyInfo(*registered);
  nlohmann::json props = nlohmann::json::array();
  for (const TPublishedProperty& p : action->GetPublishedProperties()) {
    nlohmann::json prop{{"name", p.name}, {"kind", KindName(p.kind)}, {"hidden", isHidden(p.name)}};
    const TPropertyValue value = p.get(*action);
    if (p.kind == TPropertyKind::pkStringList)
      prop["value"] = std::get<TStrings>(value);
    else
      prop["value"] = PropertyValueToString(p, value);
    if (!p.enumNames.empty()) prop["values"] = p.enumNames;
    // Properties no page edits keep the fields, empty, so that readers need not test for them.
    prop["caption"] = prop["hint"] = prop["separator"] = "";
    prop["path"] = false;
    for (const TWrenPagePropertyInfo& info : pageInfo)
      if (SameText(info.property, p.name)) {
        prop["caption"] = info.caption;
        prop["hint"] = info.hint;
        prop["separator"] = info.separator;
        prop["path"] = info.isPath;
      }
    props.push_back(prop);
  }
  nlohmann::json scripts = nlohmann::json::array();
  for (const TWrenActionScript& s : action->Scripts()) {
    nlohmann::json params = nlohmann::json::array();
    for (const IWrenActionScriptParameter& p : s.params.items)
      params.push_back({{"name", p.name}, {"type", p.typeName}});
    scripts.push_back({{"name", s.name}, {"parameters", params}});
  }
  if (ctx.json) {
    *ctx.out << JsonText(nlohmann::json{{"class", registered->actionClass.name},
                               {"displayName", registered->displayName},
                               {"category", registered->category},
                               {"icon", registered->iconResourceName},
                               {"description", action->GetDescription()},
                               {"notes", action->GetNotes()},
                               {"helpTopic", action->GetHelpTopicID()},
                               {"quickHelp", action->GetQuickHelpFilename()},
                               {"properties", props},
                               {"scripts", scripts}},
                    2)
             << "\n";
    return kExitOk;
  }
  *ctx.out << registered->actionClass.name << ": " << registered->displayName << " ("
           << registered->category << ")\n";
  if (!action->GetDescription().empty())
    *ctx.out << "  description: " << action->GetDescription() << "\n";
  if (!action->GetNotes().empty()) *ctx.out << "  notes: " << action->GetNotes() << "\n";
  *ctx.out << "  properties (value at creation):\n";
  for (const auto& p : props) {
    *ctx.out << "    " << p["name"].get<std::string>() << " : " << p["kind"].get<std::string>();
    if (p.contains("values")) {
      std::string names;
      for (const auto& n : p["values"]) names += (names.empty() ? "" : ", ") + n.get<std::string>();
      *ctx.out << " (" << names << ")";
    }
    *ctx.out << " = " << (p["value"].is_string() ? p["value"].get<std::string>() : JsonText(p["value"]));
    if (p["hidden"].get<bool>()) *ctx.out << "  [hidden]";
    if (p["kind"] == "string list") *ctx.out << "  (one line per item; add: repeat PROP=VALUE)";
    *ctx.out << "\n";
    auto text = [&](const char* key) { return p.value(key, std::string()); };
    if (!text("caption").empty()) *ctx.out << "      caption: " << text("caption") << "\n";
    if (!text("hint").empty()) *ctx.out << "      hint: " << text("hint") << "\n";
    const std::string separator = text("separator");
    if (!separator.empty())
      *ctx.out << "      list separator: " << (separator == " " ? "space" : separator) << "\n";
    if (p.value("path", false)) *ctx.out << "      path\n";
  }
  for (const auto& s : scripts) *ctx.out << "  script: " << s["name"].get<std::string>() << "\n";
  return kExitOk;
}

/// A writer that collects the named strings an options object saves.
class TCollectingWriter : public IWrenOptionsWriter {
 public:
  void WriteString(const std::string& name, const std::string& value) override {
    values.emplace_back(name, value);
  }
  std::vector<std::pair<std::string, std::string>> values;
};

/// The names an options object stores, in the order it saves them.
std::vector<std::string> OptionNames(TWrenOptionsObject& options) {
  TCollectingWriter writer;
  options.SaveOptions(writer);
  std::vector<std::string> names;
  for (const auto& [name, value] : writer.values) names.push_back(name);
  return names;
}

/// `options set KEY NAME VALUE`: only keys and names the registered options objects know, so that
/// a typo is refused instead of stored where nothing reads it.
int SetOption(TCliContext& ctx, const std::string& key, const std::string& name,
              const std::string& value) {
  std::vector<std::string> keys;
  for (TWrenRegisteredOptions& o : RegisteredOptions()) {
    keys.push_back(o.instance->GetOptionKey());
    if (!SameText(o.instance->GetOptionKey(), key)) continue;
    const std::vector<std::string> names = OptionNames(*o.instance);
    const auto known = std::find_if(names.begin(), names.end(),
                                    [&](const std::string& n) { return SameText(n, name); });
    if (known == names.end()) {
      *ctx.err << "marrowby: options '" << o.instance->GetOptionKey() << "' have no option '"
               << name << "'" << WithSuggestion(DidYouMean(name, names)) << "\n"
               << "  options of " << o.instance->GetOptionKey() << ": " << JoinNames(names) << "\n";
      return kExitUsage;
    }
    WrenOptionsStore().Set(o.instance->GetOptionKey(), *known, value);
    o.instance->LoadOptions(*WrenOptionsStore().Reader(o.instance->GetOptionKey()));
    std::string error;
    if (!WrenOptionsStore().Save(error)) {
      *ctx.err << "marrowby: " << error << "\n";
      return kExitFailed;
    }
    *ctx.out << o.instance->GetOptionKey() << "." << *known << " = " << value << "\n";
    return kExitOk;
  }
  *ctx.err << "marrowby: no options object with key '" << key << "'"
           << WithSuggestion(DidYouMean(key, keys)) << "\n"
           << "  keys: " << JoinNames(keys) << "\n";
  return kExitUsage;
}

int CmdOptions(TCliContext& ctx, const std::vector<std::string>& setArgs) {
  if (!setArgs.empty()) {
    if (setArgs.size() != 3) {
      *ctx.err << "marrowby: options set wants KEY NAME VALUE\n";
      return kExitUsage;
    }
    return SetOption(ctx, setArgs[0], setArgs[1], setArgs[2]);
  }
  nlohmann::json list = nlohmann::json::array();
  for (TWrenRegisteredOptions& o : RegisteredOptions()) {
    TCollectingWriter writer;
    o.instance->SaveOptions(writer);
    nlohmann::json values = nlohmann::json::object();
    for (auto& [name, value] : writer.values) values[name] = value;
    list.push_back({{"key", o.instance->GetOptionKey()}, {"name", o.instance->GetOptionsName()},
                    {"category", o.instance->GetOptionsCategory()}, {"values", values}});
  }
  if (ctx.json) {
    *ctx.out << JsonText(list, 2) << "\n";
    return kExitOk;
  }
  *ctx.out << "options file: " << WrenOptionsStore().Path() << "\n";
  for (const auto& o : list) {
    *ctx.out << o["key"].get<std::string>() << " (" << o["name"].get<std::string>() << ", "
             << o["category"].get<std::string>() << ")\n";
    for (auto& [name, value] : o["values"].items())
      *ctx.out << "  " << name << " = " << value.get<std::string>() << "\n";
  }
  return kExitOk;
}

constexpr const char* kHelpFooter = R"(Exit codes:
  0    success: every step ran and succeeded (or nothing was wrong)
  1    a step failed
  2    bad input or usage: an unreadable or invalid project, unknown names or options
  130  the build was interrupted (SIGINT, Ctrl-C)
  143  the build was terminated (SIGTERM)

Environment:
  MARROWBY_REGISTRY  registry hive (.reg) when --registry is not given
  MARROWBY_PACKAGE   package module to load when --module is not given
  MARROWBY_MONO      the mono used to start .NET programs on POSIX
  XDG_CONFIG_HOME    where marrowby/options.xml and marrowby/registry.reg are looked for
  HOME               the same under ~/.config when XDG_CONFIG_HOME is unset
  NO_COLOR           no colour in the output

Run 'marrowby help COMMAND' for a command's options.)";

/// Global options that take a value; the command-line pre-scan skips their values.
bool IsGlobalOptionWithValue(const std::string& arg) {
  return arg == "--registry" || arg == "--options" || arg == "--module";
}

/// The first word that is not an option or an option's value: the subcommand the user meant.
std::string FirstCommandWord(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    if (IsGlobalOptionWithValue(arg)) {
      ++i;
      continue;
    }
    if (!arg.empty() && arg[0] == '-') continue;
    return arg;
  }
  return "";
}

/// Every command, in the order the help lists them.
constexpr std::array<const char*, 15> kCommands = {
    "run", "validate", "actions", "describe", "frameworks", "options", "setup-mono", "new",
    "add", "set", "remove", "move", "edit", "completion", "help"};

std::vector<std::string> CommandNames() { return {kCommands.begin(), kCommands.end()}; }

/// Whether CLI11 gets the command NAME with its options. Setting all of them up costs more than
/// listing the actions, so a command line gets those it names (any word equal to a command's
/// name, so that CLI11 reads every word as it would with all of them), and all of them when it
/// names none or asks for help, whose texts list them.
bool DefinesCommand(const char* name, const std::string& command, int argc, char** argv) {
  if (command.empty() || command == "help") return true;
  for (int i = 1; i < argc; ++i)
    if (std::strcmp(argv[i], name) == 0) return true;
  return false;
}

bool Parsed(const CLI::App* sub) { return sub && sub->parsed(); }

/// The long options a subcommand (and the app) accepts, as typed: "--json".
std::vector<std::string> LongOptionNames(const CLI::App& app, const CLI::App* sub) {
  std::vector<std::string> names;
  for (const CLI::App* a : {&app, sub}) {
    if (!a) continue;
    for (const CLI::Option* opt : a->get_options())
      for (const std::string& n : opt->get_lnames()) names.push_back("--" + n);
  }
  return names;
}

/// Words CLI11 did not expect: for an unknown option, the nearest ones the command has.
void ReportUnexpected(const CLI::App& app, const std::vector<std::string>& extras) {
  const CLI::App* sub = nullptr;
  for (const CLI::App* s : app.get_subcommands()) sub = s;
  const std::vector<std::string> known = LongOptionNames(app, sub);
  for (const std::string& word : extras) {
    if (word.size() > 1 && word[0] == '-') {
      const std::string name = word.substr(0, word.find('='));
      std::cerr << "marrowby: unknown option '" << name << "'"
                << WithSuggestion(DidYouMean(name, known)) << "\n";
    } else {
      std::cerr << "marrowby: unexpected argument '" << word << "'\n";
    }
  }
  std::cerr << "Run 'marrowby help" << (sub ? " " + sub->get_name() : std::string())
            << "' for the options.\n";
}

/// `set FILE STEP PROP VALUE` takes its value as written, also when it starts with '-' as tool
/// switches do: a "--" goes in front of it so that it is not read as an option.
std::vector<std::string> ArgumentsOf(int argc, char** argv, const std::string& command) {
  std::vector<std::string> args(argv, argv + argc);
  if (command != "set" || std::find(args.begin(), args.end(), "--") != args.end()) return args;
  size_t i = 1;
  while (i < args.size() && args[i] != command) i += IsGlobalOptionWithValue(args[i]) ? 2 : 1;
  int positionals = 0;
  for (++i; i < args.size(); ++i) {
    if (IsGlobalOptionWithValue(args[i])) {
      ++i;
      continue;
    }
    if (!args[i].empty() && args[i][0] == '-') continue;
    if (++positionals == 3) {
      if (i + 1 < args.size() && !args[i + 1].empty() && args[i + 1][0] == '-')
        args.insert(args.begin() + static_cast<std::ptrdiff_t>(i) + 1, "--");
      break;
    }
  }
  return args;
}

/// `marrowby help [COMMAND]`.
int CmdHelp(CLI::App& app, const std::string& command) {
  if (command.empty()) {
    std::cout << app.get_formatter()->make_help(&app, "marrowby", CLI::AppFormatMode::Normal);
    return kExitOk;
  }
  for (CLI::App* sub : app.get_subcommands({}))
    if (sub->get_name() == command) {
      std::cout << sub->help("marrowby");
      return kExitOk;
    }
  std::cerr << "marrowby: unknown command '" << command << "'"
            << WithSuggestion(DidYouMean(command, CommandNames())) << "\n";
  return kExitUsage;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"marrowby: runs build projects of .NET tool steps", "marrowby"};
  app.require_subcommand(1);
  app.set_version_flag("--version", std::string("marrowby ") + kMarrowbyVersion);
  app.footer(kHelpFooter);
  TCliContext ctx;
  ctx.out = &std::cout;
  ctx.err = &std::cerr;
  std::string modulePath;
  app.add_option("--registry", ctx.registryFile, "registry hive (.reg) to read");
  app.add_option("--options", ctx.optionsFile, "user options file");
  app.add_option("--module", modulePath, "package module to load");

  const std::string command = FirstCommandWord(argc, argv);
  // A command is set up only when the command line may name it; null otherwise.
  auto Command = [&](const char* name, const char* description) -> CLI::App* {
    return DefinesCommand(name, command, argc, argv) ? app.add_subcommand(name, description)
                                                     : nullptr;
  };

  std::string projectPath, logFile, junitFile, className, setupDir;
  std::vector<std::string> vars, optionArgs;
  TWrenBuildOptions buildOptions;
  std::string verbosityText = "normal";

  CLI::App* run = Command("run", "run a build project");
  if (run) {
    run->add_option("project", projectPath, "the .mbproj file")->required();
    run->add_option("--var", vars, "NAME=VALUE, over the project's variables");
    run->add_flag("--dry-run", buildOptions.dryRun, "show what would run, run nothing");
    run->add_option("--only", buildOptions.only, "run only steps N[,M...] (number or description)")
        ->delimiter(',');
    run->add_option("--from", buildOptions.from, "start at step N (number or description)");
    run->add_option("--skip", buildOptions.skip, "leave out step N (number or description)");
    run->add_option("-v,--verbosity", verbosityText, "quiet|minimal|normal|detailed");
    run->add_option("--log", logFile, "write the build log to FILE");
    run->add_flag("--json", ctx.json, "one JSON object per build event");
    run->add_option("--junit", junitFile, "write a JUnit report of the steps to FILE");
  }

  CLI::App* validate = Command("validate", "check a build project without running it");
  if (validate) {
    validate->add_option("project", projectPath, "the .mbproj file")->required();
    validate->add_flag("--json", ctx.json, "JSON output");
    validate->add_option("--var", vars, "NAME=VALUE, over the project's variables");
  }

  CLI::App* actions = Command("actions", "list the registered actions by category");
  if (actions) actions->add_flag("--json", ctx.json, "JSON output");

  CLI::App* describe = Command("describe", "show an action class's properties");
  if (describe) {
    describe->add_option("class", className, "the action's class name")->required();
    describe->add_flag("--json", ctx.json, "JSON output");
  }

  CLI::App* frameworks = Command("frameworks", "list the detected .NET frameworks");
  if (frameworks) frameworks->add_flag("--json", ctx.json, "JSON output");

  CLI::App* options = Command("options", "show options, or: options set KEY NAME VALUE");
  if (options) {
    options->add_option("args", optionArgs, "set KEY NAME VALUE");
    options->add_flag("--json", ctx.json, "JSON output");
  }

  CLI::App* setupMono = Command("setup-mono", "build a registry hive from the local Mono");
  if (setupMono) setupMono->add_option("--dir", setupDir, "where to build it");

  // Editing a project without an editor.
  std::string editFile, stepRef, propName, propValue, position, description;
  std::vector<std::string> assignments;
  CLI::Option* addDescription = nullptr;
  CLI::App* newCmd = Command("new", "write an empty build project");
  if (newCmd) newCmd->add_option("file", editFile, "the .mbproj file to create")->required();
  CLI::App* add = Command("add", "append a step: add FILE CLASS [PROP=VALUE ...]");
  if (add) {
    add->add_option("file", editFile, "the .mbproj file")->required();
    add->add_option("class", className, "the action's class name")->required();
    add->add_option("assignments", assignments, "PROP=VALUE, one per property");
    addDescription = add->add_option("--description", description, "the step's description");
  }
  CLI::App* set = Command("set", "set a step's property: set FILE STEP PROP VALUE");
  if (set) {
    set->add_option("file", editFile, "the .mbproj file")->required();
    set->add_option("step", stepRef, "step number (from 1) or description")->required();
    set->add_option("property", propName, "property name, or description / enabled")->required();
    set->add_option("value", propValue, "the new value")->required();
  }
  CLI::App* remove = Command("remove", "remove a step: remove FILE STEP");
  if (remove) {
    remove->add_option("file", editFile, "the .mbproj file")->required();
    remove->add_option("step", stepRef, "step number (from 1) or description")->required();
  }
  CLI::App* move = Command("move", "move a step: move FILE STEP POSITION");
  if (move) {
    move->add_option("file", editFile, "the .mbproj file")->required();
    move->add_option("step", stepRef, "step number (from 1) or description")->required();
    move->add_option("position", position, "its new number (from 1)")->required();
  }

  int editPort = 0;
  bool noBrowser = false;
  CLI::App* edit = Command("edit", "edit a build project in the browser");
  if (edit) {
    edit->add_option("project", editFile, "the .mbproj file (made on first save)")->required();
    edit->add_option("--port", editPort, "port on 127.0.0.1 (default: any free one)")
        ->check(CLI::Range(0, 65535));
    edit->add_flag("--no-browser", noBrowser, "print the address, do not open a browser");
  }

  std::string shell, helpTopic;
  CLI::App* completion = Command("completion", "print the bash or zsh completion script");
  if (completion) completion->add_option("shell", shell, "bash or zsh")->required();
  CLI::App* help = Command("help", "show the help of marrowby or of a command");
  if (help) help->add_option("command", helpTopic, "the command");

  for (CLI::App* sub : app.get_subcommands({})) sub->fallthrough();

  const std::vector<std::string> commands = CommandNames();
  if (!command.empty() &&
      std::find(commands.begin(), commands.end(), command) == commands.end()) {
    std::cerr << "marrowby: unknown command '" << command << "'"
              << WithSuggestion(DidYouMean(command, commands)) << "\n"
              << "Run 'marrowby help' for the commands.\n";
    return kExitUsage;
  }

  if (command.empty()) {
    bool asksForItself = false;
    for (int i = 1; i < argc; ++i)
      for (const char* flag : {"-h", "--help", "--version"})
        if (std::string(argv[i]) == flag) asksForItself = true;
    if (!asksForItself) {
      std::cerr << "marrowby: a command is required\n"
                << app.get_formatter()->make_help(&app, "marrowby", CLI::AppFormatMode::Normal);
      return kExitUsage;
    }
  }

  try {
    std::vector<std::string> args = ArgumentsOf(argc, argv, command);
    std::reverse(args.begin(), args.end());
    args.pop_back();  // the program name; CLI11 wants the rest in reverse
    app.parse(args);
  } catch (const CLI::ExtrasError&) {
    std::vector<std::string> extras = app.remaining();
    for (const CLI::App* sub : app.get_subcommands())
      for (const std::string& word : sub->remaining()) extras.push_back(word);
    ReportUnexpected(app, extras);
    return kExitUsage;
  } catch (const CLI::ParseError& e) {
    const int code = app.exit(e);
    return code == 0 ? kExitOk : kExitUsage;
  }

  if (Parsed(help)) return CmdHelp(app, helpTopic);
  if (Parsed(completion)) return CmdCompletion(ctx, shell);
  if (Parsed(setupMono)) return CmdSetupMono(ctx, setupDir);
  if (Parsed(newCmd)) return CmdNew(ctx, editFile);
  TWrenVerbosity verbosity = TWrenVerbosity::Normal;
  if (!ParseVerbosity(verbosityText, verbosity)) {
    std::cerr << "marrowby: --verbosity wants quiet, minimal, normal or detailed\n";
    return kExitUsage;
  }

  if (Parsed(options) && !optionArgs.empty() && optionArgs[0] != "set") {
    std::cerr << "marrowby: options takes no arguments, or: set KEY NAME VALUE\n";
    return kExitUsage;
  }
  const std::string packagePath = PackagePath(modulePath);
  const int handedOver =
      HandOverToSharedCxx(ctx, ExecutableDir(), argv, Parsed(edit), packagePath);
  if (handedOver >= 0) return handedOver;
  TWrenModule module;
  // The editor and describe need the pages, which only design time registers.
  if (!PrepareHost(ctx, module, packagePath, Parsed(describe) || Parsed(edit)))
    return kExitUsage;

  int code = kExitUsage;
  if (Parsed(run))
    code = CmdRun(ctx, projectPath, vars, buildOptions, verbosity, logFile, junitFile);
  if (Parsed(validate)) code = CmdValidate(ctx, projectPath, vars);
  if (Parsed(actions)) code = CmdActions(ctx);
  if (Parsed(describe)) code = CmdDescribe(ctx, className);
  if (Parsed(frameworks)) code = CmdFrameworks(ctx);
  if (Parsed(options))
    code = CmdOptions(ctx, optionArgs.empty()
                               ? std::vector<std::string>{}
                               : std::vector<std::string>(optionArgs.begin() + 1, optionArgs.end()));
  if (Parsed(add))
    code = CmdAdd(ctx, editFile, className, addDescription->count() ? &description : nullptr,
                  assignments);
  if (Parsed(set)) code = CmdSet(ctx, editFile, stepRef, propName, propValue);
  if (Parsed(remove)) code = CmdRemove(ctx, editFile, stepRef);
  if (Parsed(move)) code = CmdMove(ctx, editFile, stepRef, position);
  if (Parsed(edit)) code = RunEditorModule(ctx, ExecutableDir(), editFile, editPort, noBrowser);
  return code;
}
