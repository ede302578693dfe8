#include "compilers/WrenDotNetProjectCompilerAction.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "WrenFiles.h"
#include "dotnet/WrenDotNetUtils.h"

namespace wren {

namespace {

namespace fs = std::filesystem;

std::string JoinLines(const TStrings& items, const std::string& separator) {
  std::string text;
  for (const std::string& item : items)
    if (!item.empty()) text += (text.empty() ? "" : separator) + item;
  return text;
}

bool IsAbsolute(const std::string& path) { return fs::path(path).is_absolute(); }

/// A path of the project file (relative to its folder, backslashes and all) as an absolute
/// native path.
std::string ProjectPath(const TVSProject& project, const std::string& path) {
  const std::string native = NativePath(path);
  if (IsAbsolute(native)) return native;
  return fs::path(project.dir + native).lexically_normal().string();
}

std::string ReadText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

/// One argument of a tool's command line, quoted when it holds a blank.
std::string Argument(const std::string& text) {
  return text.find(' ') != std::string::npos ? "\"" + text + "\"" : text;
}

/// Runs an SDK or framework tool for a resource step through the action's host (which only
/// records it in a dry run). False after a log message when it cannot run or fails.
bool RunStep(TWrenManagedCompilerAction& action, const std::string& executable,
             const TStrings& args, const std::string& workingDir, const std::string& what) {
  IWrenActionHost* host = action.Host();
  if (!host) return false;
  if (executable.empty()) {
    action.SendMessage(what + " failed: the .NET SDK version you are trying to use is not installed");
    return false;
  }
  std::string commandLine;
  for (const std::string& arg : args) commandLine += (commandLine.empty() ? "" : " ") + Argument(arg);
  action.SendMessage(what + ": " + Argument(executable) + " " + commandLine);
  TWrenProcessRequest request;
  request.executable = executable;
  request.commandLine = commandLine;
  request.workingDir = workingDir;
  request.onStdOut = [&action](const std::string& line) { action.SendMessage(line); };
  request.onStdErr = [&action](const std::string& line) { action.SendMessage(line); };
  const TWrenProcessResult result = host->RunProcess(action, request);
  switch (result.status) {
    case TWrenProcessResult::TStatus::Exited:
      if (result.exitCode == 0) return true;
      action.SendMessage(what + " failed (exit code " + std::to_string(result.exitCode) + ")");
      return false;
    case TWrenProcessResult::TStatus::DryRun:
      return true;
    case TWrenProcessResult::TStatus::NotFound:
      action.SendMessage(what + " failed: " + executable + " was not found");
      return false;
    default:
      action.SendMessage(what + " failed: " + result.error);
      return false;
  }
}

/// An SDK tool in the SDK's Bin folder; "" when the SDK is not installed.
std::string SdkTool(const TWrenManagedCompilerAction& action, const std::string& tool) {
  const std::string sdk = action.GetSDKPath();
  return sdk.empty() ? "" : IncludeTrailingPathDelimiter(sdk) + tool;
}

/// The assembly behind a file or framework reference; "" (with where it looked) when none.
std::string ResolveAssembly(const TWrenManagedCompilerAction& action, const TVSProject& project,
                            const TVSReference& ref, std::string& lookedIn) {
  const std::string name = ref.assemblyName.empty() ? ref.name : ref.assemblyName;
  const std::string file = name + ".dll";
  TStrings places;
  if (!ref.hintPath.empty()) {
    const std::string hint = ProjectPath(project, ref.hintPath);
    if (FileExists(hint)) return hint;
    places.push_back(hint);
  }
  if (!ref.assemblyFolderKey.empty()) {
    const std::string folder = FindAssemblyKeyFolder(ref.assemblyFolderKey);
    if (!folder.empty()) {
      const std::string path = IncludeTrailingPathDelimiter(NativePath(folder)) + file;
      if (FileExists(path)) return path;
      places.push_back(path);
    } else {
      places.push_back("the AssemblyFolders key " + ref.assemblyFolderKey);
    }
  }
  const std::string framework = action.GetFrameWorkPath();
  if (!framework.empty()) {
    const std::string path = IncludeTrailingPathDelimiter(framework) + file;
    if (FileExists(path)) return path;
    places.push_back(path);
  }
  // Framework assemblies are named by their file and found by the compiler among its own; a
  // hint into some machine's framework folder says the same.
  const bool frameworkHint = FindText(ref.hintPath, "Microsoft.NET\\Framework") != std::string::npos;
  if (ref.hintPath.empty() || frameworkHint) return file;
  lookedIn = JoinLines(places, ", ");
  return "";
}

/// tlbimp (and aximp beside it) wrappers of a COM reference in the intermediate folder.
bool ResolveComReference(TWrenManagedCompilerAction& action, const TVSReference& ref,
                         const std::string& objDir, std::string& path) {
  const bool primary = SameText(ref.wrapperTool, "primary");
  if (primary) {
    const std::string name = (ref.assemblyName.empty() ? ref.name : ref.assemblyName) + ".dll";
    TStrings places;
    const std::string pia = FindAssemblyKeyFolder("primary interop assemblies");
    for (const std::string& folder : {pia, GetGACFolder()}) {
      if (folder.empty()) continue;
      const std::string candidate = IncludeTrailingPathDelimiter(NativePath(folder)) + name;
      if (FileExists(candidate)) {
        path = candidate;
        return true;
      }
      places.push_back(candidate);
    }
    action.SendMessage("Unable to resolve COM reference " + ref.name +
                       ": no primary interop assembly found (looked in " +
                       (places.empty() ? std::string("no folder") : JoinLines(places, ", ")) + ")");
    return false;
  }
  const std::string typeLib = FindTypLib(ref.guid, ref.versionMajor, ref.versionMinor, ref.lcid);
  if (typeLib.empty()) {
    action.SendMessage("Unable to resolve COM reference " + ref.name + ": type library " +
                       ref.guid + " " + std::to_string(ref.versionMajor) + "." +
                       std::to_string(ref.versionMinor) + " is not registered");
    return false;
  }
  const bool ax = SameText(ref.wrapperTool, "aximp");
  const std::string interop = objDir + "Interop." + ref.name + ".dll";
  if (ax) {
    const std::string name = ref.name.rfind("Ax", 0) == 0 ? ref.name.substr(2) : ref.name;
    path = objDir + "AxInterop." + name + ".dll";
    return RunStep(action, SdkTool(action, "aximp.exe"),
                   {NativePath(typeLib), "/out:" + path, "/rcw:" + objDir + "Interop." + name + ".dll"},
                   objDir, "Generating " + ExtractFileName(path));
  }
  path = interop;
  return RunStep(action, SdkTool(action, "tlbimp.exe"),
                 {NativePath(typeLib), "/out:" + interop, "/namespace:" + ref.name}, objDir,
                 "Generating " + ExtractFileName(interop));
}

/// The class a form's .resx is named after: the first class of the file it depends on.
std::string FormClassOf(const TVSProject& project, const TVSFile& resx) {
  if (resx.dependentUpon.empty()) return "";
  const std::string folder = ExtractFilePath(resx.relPath);
  for (const TVSFile& f : project.files) {
    if (!SameText(f.relPath, folder + resx.dependentUpon)) continue;
    const std::string source = ProjectPath(project, f.link.empty() ? f.relPath : f.link);
    return FirstDeclaredClass(ReadText(source), project.language);
  }
  return "";
}

TDotNetTarget TargetOf(const std::string& outputType) {
  if (SameText(outputType, "Exe")) return TDotNetTarget::Exe;
  if (SameText(outputType, "WinExe")) return TDotNetTarget::WindowsExe;
  if (SameText(outputType, "Module")) return TDotNetTarget::Module;
  return TDotNetTarget::Lib;
}

TDotNetWarningLevels WarningLevelOf(const std::string& text) {
  const std::string value = Trim(text);
  if (value.size() == 1 && value[0] >= '0' && value[0] <= '4')
    return static_cast<TDotNetWarningLevels>(value[0] - '0');
  return TDotNetWarningLevels::WarnLevel4;
}

/// NoWarn as the compilers take it: numbers only ("CS0618;" gives "0618").
std::string WarningNumbers(const std::string& noWarn) {
  TStrings numbers;
  for (const std::string& item : SplitToLines(noWarn, ";,")) {
    std::string digits;
    for (char c : item)
      if (c >= '0' && c <= '9') digits += c;
    if (!digits.empty()) numbers.push_back(digits);
  }
  return JoinLines(numbers, ",");
}

bool RunResourceSteps(TWrenManagedCompilerAction& action, const TVSProject& project,
                      const TProjectLoadSettings& settings, const std::string& objDir,
                      const TStrings& referencePaths) {
  for (const TVSFile& file : project.files) {
    const std::string source = ProjectPath(project, file.link.empty() ? file.relPath : file.link);
    if (SameText(ExtractFileName(NativePath(file.relPath)), "licenses.licx")) {
      const std::string target = project.OutputFileName();
      TStrings args = {"/target:" + target, "/complist:" + source, "/outdir:" + objDir};
      for (const std::string& ref : referencePaths) args.push_back("/i:" + ref);
      if (!RunStep(action, SdkTool(action, "lc.exe"), args, project.dir,
                   "Compiling licences " + file.relPath))
        return false;
      action.ProjectLicenses.push_back(objDir + target + ".licenses");
      continue;
    }
    if (!SameText(file.buildAction, "EmbeddedResource")) continue;
    const std::string name = VSManifestName(project, file, FormClassOf(project, file));
    if (!SameText(ExtractFileExt(file.relPath), ".resx")) {
      action.ProjectResources.push_back(source + "=" + name);
      continue;
    }
    const std::string compiled = objDir + name;
    const std::string resgen = project.smartDevice && !settings.cfResGen.empty()
                                   ? settings.cfResGen
                                   : SdkTool(action, "resgen.exe");
    if (!RunStep(action, resgen, {source, compiled}, project.dir,
                 "Compiling resources " + file.relPath))
      return false;
    action.ProjectResources.push_back(compiled + "=" + name);
  }
  return true;
}

/// One Project(...) line of a solution file.
struct TSolutionProject {
  std::string name, path, guid;
};

/// The projects a solution lists: Project("{type}") = "Name", "path", "{GUID}".
std::vector<TSolutionProject> SolutionProjects(const std::string& text) {
  std::vector<TSolutionProject> projects;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) {
    if (Trim(line).rfind("Project(", 0) != 0) continue;
    TStrings quoted;
    for (size_t open = line.find('"'); open != std::string::npos; open = line.find('"', open)) {
      const size_t close = line.find('"', open + 1);
      if (close == std::string::npos) break;
      quoted.push_back(line.substr(open + 1, close - open - 1));
      open = close + 1;
    }
    if (quoted.size() >= 4) projects.push_back({quoted[1], quoted[2], quoted[3]});
  }
  return projects;
}

bool CopyFile(TWrenManagedCompilerAction& action, const std::string& from, const std::string& to) {
  std::error_code ec;
  fs::copy_file(from, to, fs::copy_options::overwrite_existing, ec);
  if (ec) {
    action.SendMessage("Could not copy " + from + " to " + to + ": " + ec.message());
    return false;
  }
  action.SendMessage("Copied " + from + " to " + to);
  return true;
}

}  // namespace

void CopyBesideOutput(TWrenManagedCompilerAction& action, const TProjectLoadState& state,
                      bool copyConfig) {
  const std::string dir = ExtractFilePath(state.outputFile);
  for (const std::string& file : state.localCopies)
    if (ExtractFilePath(file) != dir) CopyFile(action, file, dir + ExtractFileName(file));
  if (copyConfig && !state.appConfig.empty())
    CopyFile(action, state.appConfig, state.outputFile + ".config");
}

std::string ProjectResourceLine(const std::string& entry) {
  const size_t eq = entry.rfind('=');
  if (eq == std::string::npos) return "/resource:" + DoubleQuoteString(entry);
  return "/resource:" + DoubleQuoteString(entry.substr(0, eq)) + "," +
         DoubleQuoteString(entry.substr(eq + 1));
}

bool ResolveProjectReference(const std::string& fromDir, const std::string& guid,
                             const std::string& configName, std::string& output,
                             std::string& error) {
  TStrings searched;
  for (fs::path dir = fs::path(fromDir).lexically_normal(); !dir.empty();) {
    if (dir.filename().empty()) dir = dir.parent_path();
    std::error_code ec;
    for (const fs::directory_entry& sln : fs::directory_iterator(dir, ec)) {
      if (!SameText(sln.path().extension().string(), ".sln")) continue;
      searched.push_back(sln.path().string());
      const std::string text = ReadText(sln.path().string());
      for (const TSolutionProject& listed : SolutionProjects(text)) {
        if (!SameText(listed.guid, guid)) continue;
        const std::string projectFile =
            (sln.path().parent_path() / NativePath(listed.path)).lexically_normal().string();
        TVSProject other;
        std::string cause;
        if (!ReadVSProject(projectFile, configName, other, cause)) {
          error = "project " + projectFile + " cannot be loaded: " + cause;
          return false;
        }
        output = ProjectPath(other, other.RelativeOutputFile());
        if (!FileExists(output)) {
          error = "project " + listed.name + " has not been built: " + output + " is missing";
          return false;
        }
        return true;
      }
    }
    if (dir == dir.parent_path()) break;
    dir = dir.parent_path();
  }
  error = "no solution file beside or above the project names project " + guid +
          (searched.empty() ? std::string(" (none found)") : " (searched " + JoinLines(searched, ", ") + ")");
  return false;
}

bool ApplyVSProject(TWrenManagedCompilerAction& action, const TVSProject& project,
                    const TProjectLoadSettings& settings, TProjectLoadState& state) {
  action.ProjectDir = project.dir;
  action.Target = TargetOf(project.Setting("OutputType"));
  std::string output = ProjectPath(project, project.RelativeOutputFile());
  if (!settings.outputDir.empty()) {
    const std::string dir = IsAbsolute(settings.outputDir)
                                ? settings.outputDir
                                : project.dir + settings.outputDir;
    output = IncludeTrailingPathDelimiter(dir) + project.OutputFileName();
  }
  state.outputFile = output;
  action.OutputFile = output;

  action.Defines = project.ConfigValue("DefineConstants");
  action.Debug = project.ConfigFlag("DebugSymbols") ? TDotNetDebugOptions::DebugFull
                                                    : TDotNetDebugOptions::DebugOff;
  action.Optimize = project.ConfigFlag("Optimize");
  action.WarnAsError = project.ConfigFlag("TreatWarningsAsErrors");
  action.SupressWarnings = WarningNumbers(project.ConfigValue("NoWarn"));
  const std::string base = Trim(project.ConfigValue("BaseAddress"));
  action.BaseAddress = base == "0" ? "" : base;
  action.MainClass = Trim(project.Setting("StartupObject"));
  if (!Trim(project.Setting("ApplicationIcon")).empty())
    action.Icon = NativePath(Trim(project.Setting("ApplicationIcon")));

  TStrings files;
  for (const TVSFile& file : project.files)
    if (SameText(file.buildAction, "Compile"))
      files.push_back(NativePath(file.link.empty() ? file.relPath : file.link));
  action.Files = JoinLines(files, ";");

  const std::string objDir = project.dir + "obj" + PathDelim +
                             project.configName.substr(0, project.configName.find('|')) + PathDelim;
  std::error_code ec;
  fs::create_directories(objDir, ec);
  fs::create_directories(ExtractFilePath(output), ec);

  TStrings references;
  for (const TVSReference& ref : project.references) {
    std::string path, error;
    if (ref.IsProject()) {
      if (!ResolveProjectReference(project.dir, ref.project, project.configName, path, error)) {
        action.SendMessage("Unable to resolve project reference " + ref.name + ": " + error);
        return false;
      }
    } else if (ref.IsCom()) {
      if (!ResolveComReference(action, ref, objDir, path)) return false;
    } else {
      path = ResolveAssembly(action, project, ref, error);
      if (path.empty()) {
        action.SendMessage("Unable to resolve reference " + ref.name + ": looked in " + error);
        return false;
      }
    }
    references.push_back(path);
    // Assemblies the compiler finds by name are the framework's; the rest travel with the output.
    const bool framework =
        SameText(ExtractFilePath(path), IncludeTrailingPathDelimiter(action.GetFrameWorkPath()));
    if (IsAbsolute(path) && !framework && !SameText(ref.privateCopy, "false"))
      state.localCopies.push_back(path);
  }
  action.References = JoinLines(references, ",");

  if (!RunResourceSteps(action, project, settings, objDir, references)) return false;
  for (const TVSFile& file : project.files)
    if (SameText(ExtractFileName(NativePath(file.relPath)), "App.config"))
      state.appConfig = ProjectPath(project, file.link.empty() ? file.relPath : file.link);
  return true;
}

void TWrenCSProjCompilerAction::ApplyLanguageOptions(const TVSProject& project) {
  static const char* const kAlignments[] = {"", "512", "1024", "2048", "4096", "8192"};
  const std::string align = Trim(project.ConfigValue("FileAlignment"));
  for (int i = 1; i < 6; ++i)
    if (align == kAlignments[i]) FileAlign = static_cast<TCSharpFileAlign>(i);
  DocFile = NativePath(Trim(project.ConfigValue("DocumentationFile")));
  Checked = project.ConfigFlag("CheckForOverflowUnderflow");
  Incremental = project.ConfigFlag("IncrementalBuild");
  CompileUnsafe = project.ConfigFlag("AllowUnsafeBlocks");
  NoSTDLib = project.ConfigFlag("NoStdLib");
  WarningLevel = WarningLevelOf(project.ConfigValue("WarningLevel"));
}

void TWrenVBProjCompilerAction::ApplyLanguageOptions(const TVSProject& project) {
  TStrings defines = SplitToLines(Defines, ";,");
  if (project.ConfigFlag("DefineDebug")) defines.push_back("DEBUG=True");
  if (project.ConfigFlag("DefineTrace")) defines.push_back("TRACE=True");
  Defines = JoinLines(defines, ",");
  RootNameSpace = Trim(project.Setting("RootNamespace"));
  Imports = JoinLines(project.imports, ",");
  OptionExplicit = SameText(project.Setting("OptionExplicit"), "On");
  OptionStrict = SameText(project.Setting("OptionStrict"), "On");
  OptionCompare = SameText(project.Setting("OptionCompare"), "Text")
                      ? TVBDotNetOptionCompare::OptCompareText
                      : TVBDotNetOptionCompare::OptCompareBinary;
  RemoveIntChecks = project.ConfigFlag("RemoveIntegerChecks");
  DelaySign = SameText(Trim(project.Setting("DelaySign")), "true");
  KeyContainer = Trim(project.Setting("AssemblyKeyContainerName"));
  if (!SameText(project.Setting("AssemblyOriginatorKeyMode"), "None"))
    KeyFile = NativePath(Trim(project.Setting("AssemblyOriginatorKeyFile")));
}

void TWrenJSProjCompilerAction::ApplyLanguageOptions(const TVSProject& project) {
  WarningLevel = WarningLevelOf(project.ConfigValue("WarningLevel"));
  // vjc has no icon switch; the icon stays with the project.
  Icon.clear();
}

bool TWrenBorlandCSBuilderProjCompilerAction::Validate(IWrenActionValidationError& errors) {
  if (!Trim(ProjectFile).empty()) return true;
  errors.AddError("Project File", "Project file has not been set");
  return false;
}

bool TWrenBorlandCSBuilderProjCompilerAction::LoadBorlandProject(const std::string& fileName) {
  TVSProject project;
  std::string error;
  if (!ReadBdsProject(fileName, Settings().configName, project, error)) {
    SendMessage("Unable to load project " + fileName + ": " + error);
    return false;
  }
  return ApplyProject(project);
}

}  // namespace wren
