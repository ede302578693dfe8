// marrowby: the command-line host. Loads the package, reads build projects and runs them.
#include <CLI/CLI.hpp>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <map>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include "Commands.h"
#include "WrenBuildReporters.h"
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

using namespace wren;

namespace {

void OnStopSignal(int) { WrenStopFlag().store(true); }

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
    }
    *ctx.err << "marrowby: no registry configured; using Mono's tools from " << dir
             << " (marrowby setup-mono)\n";
    file = hive;
  }
  std::shared_ptr<IWrenRegistry> registry = LoadRegistryHive({file}, error);
  if (!registry) return false;
  SetWrenRegistry(registry);
  return true;
}

/// Loads the options file and the package, and registers what the package supplies.
bool PrepareHost(TCliContext& ctx, TWrenModule& module, const std::string& modulePath) {
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
  std::string path = modulePath;
  if (path.empty()) path = EnvOr("MARROWBY_PACKAGE", "");
  const std::string file = ModuleFileName("Wren30DotNetFrameWork");
  if (path.empty() && FileExists(ExecutableDir() + file)) path = ExecutableDir() + file;
  if (path.empty()) path = IncludeTrailingPathDelimiter(MARROWBY_DEFAULT_MODULE_DIR) + file;
  if (!module.Load(path, error)) {
    *ctx.err << "marrowby: " << error << "\n";
    return false;
  }
  module.Register(false);
  return true;
}

bool LoadProjectFile(TCliContext& ctx, const std::string& path, TWrenProject& project) {
  TWrenProjectError error;
  if (project.Load(path, CreateRegisteredAction, error)) return true;
  if (ctx.json)
    *ctx.out << nlohmann::json{{"event", "error"}, {"file", error.file}, {"line", error.line},
                               {"action", error.action}, {"property", error.property},
                               {"message", error.message}}
                    .dump()
             << "\n";
  *ctx.err << "marrowby: " << error.ToString() << "\n";
  return false;
}

int CmdRun(TCliContext& ctx, const std::string& projectPath, const std::vector<std::string>& vars,
           bool dryRun, const std::string& logFile, const std::string& junitFile) {
  TWrenBuildOptions options;
  options.dryRun = dryRun;
  for (const std::string& var : vars) {
    const size_t eq = var.find('=');
    if (eq == std::string::npos || eq == 0) {
      *ctx.err << "marrowby: --var wants NAME=VALUE, got '" << var << "'\n";
      return kExitUsage;
    }
    options.variables[var.substr(0, eq)] = var.substr(eq + 1);
  }
  TWrenProject project;
  if (!LoadProjectFile(ctx, projectPath, project)) return kExitUsage;

  TBuildListeners listeners;
  TTerminalReporter terminal(*ctx.out);
  TJsonReporter json(*ctx.out);
  TLogFileWriter log;
  listeners.Add(ctx.json ? static_cast<IWrenBuildListener*>(&json) : &terminal);
  if (!logFile.empty()) {
    std::string error;
    if (!log.Open(logFile, error)) {
      *ctx.err << "marrowby: " << error << "\n";
      return kExitUsage;
    }
    listeners.Add(&log);
  }

  std::signal(SIGINT, OnStopSignal);
  std::signal(SIGTERM, OnStopSignal);
  const TWrenBuildResult result = RunBuild(project, options, listeners);
  std::signal(SIGINT, SIG_DFL);
  std::signal(SIGTERM, SIG_DFL);

  if (ctx.json)
    json.Summary(result);
  else
    terminal.Summary(result, dryRun);
  if (!junitFile.empty()) {
    std::string error;
    if (!WriteJUnitReport(junitFile, ChangeFileExt(ExtractFileName(projectPath), ""), result,
                          error))
      *ctx.err << "marrowby: " << error << "\n";
  }
  std::string error;
  if (!SaveModifiedOptions(error)) *ctx.err << "marrowby: " << error << "\n";
  if (result.invalid) return kExitUsage;
  return result.success ? kExitOk : kExitFailed;
}

int CmdValidate(TCliContext& ctx, const std::string& projectPath) {
  TWrenProject project;
  if (!LoadProjectFile(ctx, projectPath, project)) return kExitUsage;
  const std::vector<TWrenValidationProblem> problems = ValidateProject(project);
  TTerminalReporter terminal(*ctx.out);
  TJsonReporter json(*ctx.out);
  for (const TWrenValidationProblem& p : problems)
    ctx.json ? json.OnInvalid(p) : terminal.OnInvalid(p);
  if (!ctx.json)
    *ctx.out << projectPath << ": " << project.steps.size() << " step(s), "
             << (problems.empty() ? "valid" : std::to_string(problems.size()) + " problem(s)")
             << "\n";
  return problems.empty() ? kExitOk : kExitFailed;
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
    *ctx.out << list.dump(2) << "\n";
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

int CmdDescribe(TCliContext& ctx, const std::string& className) {
  const TWrenRegisteredAction* registered = FindRegisteredAction(className);
  if (!registered) {
    *ctx.err << "marrowby: no action class named '" << className
             << "' is registered (see marrowby actions)\n";
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
  nlohmann::json props = nlohmann::json::array();
  for (const TPublishedProperty& p : action->GetPublishedProperties()) {
    nlohmann::json prop{{"name", p.name}, {"kind", KindName(p.kind)}, {"hidden", isHidden(p.name)}};
    const TPropertyValue value = p.get(*action);
    if (p.kind == TPropertyKind::pkStringList)
      prop["value"] = std::get<TStrings>(value);
    else
      prop["value"] = PropertyValueToString(p, value);
    if (!p.enumNames.empty()) prop["values"] = p.enumNames;
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
    *ctx.out << nlohmann::json{{"class", registered->actionClass.name},
                               {"displayName", registered->displayName},
                               {"category", registered->category},
                               {"icon", registered->iconResourceName},
                               {"description", action->GetDescription()},
                               {"notes", action->GetNotes()},
                               {"helpTopic", action->GetHelpTopicID()},
                               {"quickHelp", action->GetQuickHelpFilename()},
                               {"properties", props},
                               {"scripts", scripts}}
                    .dump(2)
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
    *ctx.out << " = " << (p["value"].is_string() ? p["value"].get<std::string>() : p["value"].dump());
    if (p["hidden"].get<bool>()) *ctx.out << "  [hidden]";
    *ctx.out << "\n";
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

int CmdOptions(TCliContext& ctx, const std::vector<std::string>& setArgs) {
  if (!setArgs.empty()) {
    if (setArgs.size() != 3) {
      *ctx.err << "marrowby: options set wants KEY NAME VALUE\n";
      return kExitUsage;
    }
    for (TWrenRegisteredOptions& o : RegisteredOptions()) {
      if (!SameText(o.instance->GetOptionKey(), setArgs[0])) continue;
      WrenOptionsStore().Set(o.instance->GetOptionKey(), setArgs[1], setArgs[2]);
      o.instance->LoadOptions(*WrenOptionsStore().Reader(o.instance->GetOptionKey()));
      std::string error;
      if (!WrenOptionsStore().Save(error)) {
        *ctx.err << "marrowby: " << error << "\n";
        return kExitFailed;
      }
      *ctx.out << o.instance->GetOptionKey() << "." << setArgs[1] << " = " << setArgs[2] << "\n";
      return kExitOk;
    }
    *ctx.err << "marrowby: no options object with key '" << setArgs[0] << "'\n";
    return kExitUsage;
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
    *ctx.out << list.dump(2) << "\n";
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

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"marrowby: runs build projects of .NET tool steps"};
  app.require_subcommand(1);
  TCliContext ctx;
  ctx.out = &std::cout;
  ctx.err = &std::cerr;
  std::string modulePath;
  app.add_option("--registry", ctx.registryFile, "registry hive (.reg) to read");
  app.add_option("--options", ctx.optionsFile, "user options file");
  app.add_option("--module", modulePath, "package module to load");

  std::string projectPath, logFile, junitFile, className, setupDir;
  std::vector<std::string> vars, optionArgs;
  bool dryRun = false;

  auto* run = app.add_subcommand("run", "run a build project");
  run->add_option("project", projectPath, "the .mbproj file")->required();
  run->add_option("--var", vars, "NAME=VALUE, over the project's variables");
  run->add_flag("--dry-run", dryRun, "show what would run, run nothing");
  run->add_option("--log", logFile, "write the build log to FILE");
  run->add_flag("--json", ctx.json, "one JSON object per build event");
  run->add_option("--junit", junitFile, "write a JUnit report of the steps to FILE");

  auto* validate = app.add_subcommand("validate", "check a build project without running it");
  validate->add_option("project", projectPath, "the .mbproj file")->required();
  validate->add_flag("--json", ctx.json, "JSON output");

  auto* actions = app.add_subcommand("actions", "list the registered actions by category");
  actions->add_flag("--json", ctx.json, "JSON output");

  auto* describe = app.add_subcommand("describe", "show an action class's properties");
  describe->add_option("class", className, "the action's class name")->required();
  describe->add_flag("--json", ctx.json, "JSON output");

  auto* frameworks = app.add_subcommand("frameworks", "list the detected .NET frameworks");
  frameworks->add_flag("--json", ctx.json, "JSON output");

  auto* options = app.add_subcommand("options", "show options, or: options set KEY NAME VALUE");
  options->add_option("args", optionArgs, "set KEY NAME VALUE");
  options->add_flag("--json", ctx.json, "JSON output");

  auto* setupMono = app.add_subcommand("setup-mono", "build a registry hive from the local Mono");
  setupMono->add_option("--dir", setupDir, "where to build it");

  for (CLI::App* sub : app.get_subcommands({})) sub->fallthrough();

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    const int code = app.exit(e);
    return code == 0 ? kExitOk : kExitUsage;
  }

  if (setupMono->parsed()) return CmdSetupMono(ctx, setupDir);

  if (options->parsed() && !optionArgs.empty() && optionArgs[0] != "set") {
    std::cerr << "marrowby: options takes no arguments, or: set KEY NAME VALUE\n";
    return kExitUsage;
  }
  TWrenModule module;
  if (!PrepareHost(ctx, module, modulePath)) return kExitUsage;

  int code = kExitUsage;
  if (run->parsed()) code = CmdRun(ctx, projectPath, vars, dryRun, logFile, junitFile);
  if (validate->parsed()) code = CmdValidate(ctx, projectPath);
  if (actions->parsed()) code = CmdActions(ctx);
  if (describe->parsed()) code = CmdDescribe(ctx, className);
  if (frameworks->parsed()) code = CmdFrameworks(ctx);
  if (options->parsed())
    code = CmdOptions(ctx, optionArgs.empty()
                               ? std::vector<std::string>{}
                               : std::vector<std::string>(optionArgs.begin() + 1, optionArgs.end()));
  return code;
}
