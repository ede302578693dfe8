#include "compilers/WrenDotNetManagedCompilerAction.h"

#include <cctype>
#include <stdexcept>

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

namespace {

bool IsBlankChar(char c) {
  const auto u = static_cast<unsigned char>(c);
  return u >= 1 && u <= ' ';
}

bool IsDelimiterChar(char c) { return c == '/' || c == '\\'; }

bool HasLineBreak(const std::string& text) {
  return text.find_first_of("\r\n") != std::string::npos;
}

bool HasDrive(const std::string& path) {
  return path.size() >= 2 && std::isalpha(static_cast<unsigned char>(path[0])) && path[1] == ':';
}

bool IsAbsolutePath(const std::string& path) {
  return (!path.empty() && IsDelimiterChar(path[0])) || HasDrive(path);
}

TStrings PathComponents(const std::string& path) {
  TStrings parts;
  std::string part;
  for (char c : path) {
    if (IsDelimiterChar(c)) {
      if (!part.empty()) parts.push_back(part);
      part.clear();
    } else {
      part += c;
    }
  }
  if (!part.empty()) parts.push_back(part);
  return parts;
}

std::string ReplaceAll(std::string text, const std::string& what, const std::string& with) {
  size_t pos = 0;
  while ((pos = text.find(what, pos)) != std::string::npos) {
    text.replace(pos, what.size(), with);
    pos += with.size();
  }
  return text;
}

/// A name=value entry of a resource list as the compiler wants it: "name" or "name,value".
std::string NameValueEntry(const std::string& line, size_t eq) {
  const std::string name = line.substr(0, eq);
  const std::string value = line.substr(eq + 1);
  return value.empty() ? name : name + "," + value;
}

}  // namespace

const std::vector<std::string>& DotNetTargetNames() {
  static const std::vector<std::string> names = {"Exe", "Lib", "Module", "WindowsExe"};
  return names;
}

const std::vector<std::string>& DotNetDebugOptionNames() {
  static const std::vector<std::string> names = {"DebugOff", "DebugFull", "DebugPDBOnly"};
  return names;
}

const std::vector<std::string>& DotNetWarningLevelNames() {
  static const std::vector<std::string> names = {"WarnOff", "WarnLevel1", "WarnLevel2",
                                                 "WarnLevel3", "WarnLevel4"};
  return names;
}

std::string WarningLevelSwitch(TDotNetWarningLevels level) {
  return "/warn:" + std::to_string(static_cast<int>(level));
}

TStrings SplitQuotedList(const std::string& text, char delimiter, char quote) {
  TStrings items;
  const size_t n = text.size();
  size_t p = 0;
  while (p < n && IsBlankChar(text[p])) ++p;
  while (p < n) {
    std::string item;
    if (text[p] == quote) {
      ++p;
      while (p < n) {
        if (text[p] != quote) {
          item += text[p++];
        } else if (p + 1 < n && text[p + 1] == quote) {
          item += quote;
          p += 2;
        } else {
          ++p;
          break;
        }
      }
    } else {
      const size_t start = p;
      while (p < n && !IsBlankChar(text[p]) && text[p] != delimiter) ++p;
      item = text.substr(start, p - start);
    }
    items.push_back(item);
    while (p < n && IsBlankChar(text[p])) ++p;
    if (p < n && text[p] == delimiter) {
      if (p + 1 == n) items.push_back("");
      do {
        ++p;
      } while (p < n && IsBlankChar(text[p]));
    }
  }
  return items;
}

TStrings SplitToLines(const std::string& text, const std::string& separators) {
  TStrings lines;
  std::string line;
  for (char c : text) {
    if (separators.find(c) != std::string::npos) {
      lines.push_back(line);
      line.clear();
    } else {
      line += c;
    }
  }
  if (!line.empty()) lines.push_back(line);
  return lines;
}

std::string RelativePathTo(const std::string& baseDir, const std::string& path) {
  if (!IsAbsolutePath(path) || !IsAbsolutePath(baseDir)) return path;
  const TStrings base = PathComponents(baseDir);
  const TStrings target = PathComponents(path);
  // Drive paths are Windows paths, whose names compare without regard to case.
  const bool windowsNames = HasDrive(baseDir) || HasDrive(path);
  auto same = [windowsNames](const std::string& a, const std::string& b) {
    return windowsNames ? SameText(a, b) : a == b;
  };
  size_t common = 0;
  while (common < base.size() && common + 1 < target.size() && same(base[common], target[common]))
    ++common;
  // Different drives have no relative path between them.
  if (common == 0 && windowsNames) return path;
  std::string relative;
  for (size_t i = common; i < base.size(); ++i) relative += std::string("..") + PathDelim;
  for (size_t i = common; i < target.size(); ++i) {
    relative += target[i];
    if (i + 1 < target.size()) relative += PathDelim;
  }
  return relative;
}

TWrenManagedCompilerAction::TWrenManagedCompilerAction() {
  // Written while OverrideSDKDefault is false, so the options' default is what is kept.
  SetDefaultSDKVersion("1.0");
  MinimumSDKVersion = "1.0";
  OverrideSDKDefault = false;
  LibLocations.clear();
  ResetOptions();
  AddScripts();
}

void TWrenManagedCompilerAction::ResetOptions() {
  Optimize = false;
  OutputFile.clear();
  Target = TDotNetTarget::Lib;
  Modules.clear();
  References.clear();
  Debug = TDotNetDebugOptions::DebugFull;
  SupressWarnings.clear();
  WarnAsError = false;
  Defines.clear();
  LinkResources.clear();
  Resources.clear();
  Icon.clear();
  Win32Resources.clear();
  BaseAddress.clear();
  CodePage.clear();
  MainClass.clear();
  RecurseDir.clear();
  RecurseFiles.clear();
  Files.clear();
  ProjectDir.clear();
  RootNameSpace.clear();
  ProjectResources.clear();
  ProjectLicenses.clear();
}

TPropertyTable TWrenManagedCompilerAction::CompilerProperties(
    const std::vector<std::string>& optionFields, TPropertyTable own) {
  return ChainProperties(TWrenDotNetAction::ClassProperties(),
                         ChainProperties(PublishedOptionFields(optionFields), std::move(own)));
}

TPropertyTable TWrenManagedCompilerAction::PublishedOptionFields(
    const std::vector<std::string>& names) {
  using M = TWrenManagedCompilerAction;
  static const TPropertyTable all = {
      BoolProperty("NoLogo", &M::NoLogo),
      BoolProperty("OutputInUTF8", &M::OutputInUTF8),
      StringProperty("ConfigName", &M::ConfigName),
      StringProperty("ProjectFile", &M::ProjectFile),
      StringProperty("CFResGen", &M::CFResGen),
      BoolProperty("CopyConfigFiles", &M::CopyConfigFiles),
      BoolProperty("Optimize", &M::Optimize),
      StringProperty("OutputFile", &M::OutputFile),
      EnumProperty("Target", &M::Target, DotNetTargetNames()),
      StringProperty("Modules", &M::Modules),
      StringProperty("LibLocations", &M::LibLocations),
      StringProperty("References", &M::References),
      EnumProperty("Debug", &M::Debug, DotNetDebugOptionNames()),
      StringProperty("SupressWarnings", &M::SupressWarnings),
      BoolProperty("WarnAsError", &M::WarnAsError),
      StringProperty("Defines", &M::Defines),
      StringProperty("LinkResources", &M::LinkResources),
      StringProperty("Resources", &M::Resources),
      StringProperty("Icon", &M::Icon),
      StringProperty("Win32Resources", &M::Win32Resources),
      StringProperty("BaseAddress", &M::BaseAddress),
      StringProperty("CodePage", &M::CodePage),
      StringProperty("MainClass", &M::MainClass),
      StringProperty("RecurseDir", &M::RecurseDir),
      StringProperty("RecurseFiles", &M::RecurseFiles),
      StringProperty("Files", &M::Files),
      StringProperty("ProjectDir", &M::ProjectDir),
      StringProperty("RootNameSpace", &M::RootNameSpace),
  };
  TPropertyTable picked;
  for (const std::string& name : names) {
    const TPublishedProperty* prop = FindProperty(all, name);
    // A misspelt name is a programming error in a class table, found by the first test that
    // touches the class.
    if (!prop) throw std::logic_error("no compiler option field named " + name);
    picked.push_back(*prop);
  }
  return picked;
}

bool TWrenManagedCompilerAction::AddOptionToResponseFile(
    const std::string& switchText, const std::string& caption, const std::string& separator,
    const std::string& secondValue, TStrings& lines, bool addIfEmpty, const std::string& value) {
  std::string expanded;
  if (!ExpandResponseValue(caption, Trim(value), expanded)) return false;
  std::string second;
  if (!ExpandResponseValue(caption + " (2nd parameter)", Trim(secondValue), second)) return false;
  if (!expanded.empty()) {
    if (expanded.find(' ') != std::string::npos && expanded.find('"') == std::string::npos)
      expanded = "\"" + expanded + "\"";
    if (!second.empty()) expanded += separator + second;
    lines.push_back(switchText + ":" + expanded);
  } else if (addIfEmpty) {
    lines.push_back(switchText);
  }
  return true;
}

void TWrenManagedCompilerAction::AddResourceLines(const std::string& expanded,
                                                  const std::string& projectDir,
                                                  const std::string& rootNameSpace,
                                                  TManifestRule rule, TStrings& lines) const {
  for (const std::string& line : SplitToLines(expanded, ",")) {
    const size_t eq = line.find('=');
    const std::string entry =
        eq != std::string::npos ? NameValueEntry(line, eq) : StripQuotes(Trim(line));
    if (entry.empty()) continue;
    bool manifest = false;
    switch (rule) {
      case TManifestRule::UnlessResources:
        manifest =
            !rootNameSpace.empty() && LowerCase(ExtractFileExt(StripQuotes(entry))) != ".resources";
        break;
      case TManifestRule::WithRootNameSpace:
        manifest = !rootNameSpace.empty();
        break;
      case TManifestRule::Never:
        break;
    }
    std::string text = "/resource:" + DoubleQuoteString(entry);
    if (manifest) {
      // The name is the same whichever delimiter the entry was written with.
      const std::string relative = RelativePathTo(projectDir, entry);
      const std::string manifestName =
          rootNameSpace + "." + ReplaceAll(ReplaceAll(relative, "\\", "."), "/", ".");
      text += "," + DoubleQuoteString(manifestName);
    }
    lines.push_back(text);
  }
}

void TWrenManagedCompilerAction::AddProjectResourceLines(const std::string& expanded,
                                                         const std::string& projectDir,
                                                         const std::string& rootNameSpace,
                                                         TStrings& lines) const {
  AddResourceLines(expanded, projectDir, rootNameSpace, TManifestRule::WithRootNameSpace, lines);
}

bool TWrenManagedCompilerAction::GenerateResponseFile(const std::string& projectDir,
                                                      TStrings& lines) {
  switch (Target) {
    case TDotNetTarget::Exe:
      lines.push_back("/target:exe");
      break;
    case TDotNetTarget::Lib:
      lines.push_back("/target:library");
      break;
    case TDotNetTarget::Module:
      lines.push_back("/target:module");
      break;
    case TDotNetTarget::WindowsExe:
      lines.push_back("/target:winexe");
      break;
  }
  if (Optimize) lines.push_back("/optimize");
  if (!AddOptionToResponseFile("/addmodule", "Modules", ",", "", lines, false, Modules))
    return false;

  if (!References.empty()) {
    // Each comma-separated piece becomes one quoted item, so blanks inside a path survive.
    const std::string quoted = "\"" + ReplaceAll(References, ",", "\",\"") + "\"";
    for (const std::string& reference : SplitQuotedList(quoted))
      if (!AddOptionToResponseFile("/reference", "References", "", "", lines, false, reference))
        return false;
  }

  if (NoLogo &&
      !AddOptionToResponseFile("/nologo", "Suppress Compiler Info", "", "", lines, true, ""))
    return false;

  switch (Debug) {
    case TDotNetDebugOptions::DebugFull:
      lines.push_back("/debug:full");
      break;
    case TDotNetDebugOptions::DebugPDBOnly:
      lines.push_back("/debug:pdbonly");
      break;
    case TDotNetDebugOptions::DebugOff:
      break;
  }

  if (!AddOptionToResponseFile("/nowarn", "No warnings", "", "", lines, false, SupressWarnings))
    return false;
  if (WarnAsError) lines.push_back("/warnaserror+");
  if (!AddOptionToResponseFile("/define", "Define Preprocessor Symbols", "", "", lines, false,
                               Defines))
    return false;

  if (!LinkResources.empty()) {
    std::string expanded;
    if (!ExpandResponseValue("Link Resource", LinkResources, expanded)) return false;
    // Unlike embedded resources, an empty entry is written too.
    for (const std::string& line : SplitToLines(expanded, ",")) {
      const size_t eq = line.find('=');
      const std::string entry = eq != std::string::npos ? NameValueEntry(line, eq) : line;
      lines.push_back("/linkresource:" + DoubleQuoteString(entry));
    }
  }

  // Manifest names carry the root namespace as the compiled code asks for it: expanded.
  std::string rootNameSpace;
  if ((!Resources.empty() || !ProjectResources.empty()) &&
      !ExpandResponseValue("Root NameSpace", Trim(RootNameSpace), rootNameSpace))
    return false;
  if (!Resources.empty()) {
    std::string expanded;
    if (!ExpandResponseValue("Resource", Resources, expanded)) return false;
    AddResourceLines(expanded, projectDir, rootNameSpace, TManifestRule::UnlessResources, lines);
  }
  if (!ProjectResources.empty()) {
    std::string joined, expanded;
    for (const std::string& line : ProjectResources) joined += (joined.empty() ? "" : ",") + line;
    if (!ExpandResponseValue("Resource", joined, expanded)) return false;
    AddProjectResourceLines(expanded, projectDir, rootNameSpace, lines);
  }
  if (!ProjectLicenses.empty()) {
    std::string joined, expanded;
    for (const std::string& line : ProjectLicenses) joined += (joined.empty() ? "" : ",") + line;
    if (!ExpandResponseValue("Licenses", joined, expanded)) return false;
    AddResourceLines(expanded, projectDir, "", TManifestRule::Never, lines);
  }

  // Executables are loaded at their fixed address; only libraries and modules take one.
  if ((Target == TDotNetTarget::Lib || Target == TDotNetTarget::Module) &&
      !AddOptionToResponseFile("/baseaddress", "Base Address", "", "", lines, false, BaseAddress))
    return false;
  if (!AddOptionToResponseFile("/codepage", "Code Page", "", "", lines, false, CodePage))
    return false;
  if (!AddOptionToResponseFile("/main", "Main Class", "", "", lines, false, MainClass))
    return false;
  if (!AddOptionToResponseFile("/out", "Output File", "", "", lines, false, OutputFile))
    return false;

  // The directory is joined to the mask as it stands: a missing delimiter is the user's to add.
  if (!RecurseDir.empty()) {
    if (!AddOptionToResponseFile("/recurse", "Recurse Directory", "", RecurseFiles, lines, false,
                                 RecurseDir))
      return false;
  } else if (!RecurseFiles.empty()) {
    if (!AddOptionToResponseFile("/recurse", "Recurse Directory", "", "", lines, false,
                                 RecurseFiles))
      return false;
  }

  if (OutputInUTF8) lines.push_back("/utf8output");

  std::string files;
  if (!ExpandResponseValue("Files", Files, files)) return false;
  if (files.empty() && RecurseFiles.empty()) {
    SendMessage("No Files to Compile!");
    return false;
  }
  for (const std::string& piece : SplitToLines(files, ";")) {
    const std::string file = Trim(piece);
    if (!file.empty()) lines.push_back(DoubleQuoteString(file, true));
  }
  return true;
}

bool TWrenManagedCompilerAction::ExpandResponseValue(const std::string& caption,
                                                     const std::string& value,
                                                     std::string& result) {
  return TryExpandExpression(caption, value, false, result) && CheckSingleLine(caption, result);
}

bool TWrenManagedCompilerAction::CheckSingleLine(const std::string& caption,
                                                 const std::string& text) {
  if (!HasLineBreak(text)) return true;
  SendMessage(caption +
              ": the value holds a line break, which would add lines to the response "
              "file; nothing was compiled");
  return false;
}

bool TWrenManagedCompilerAction::SaveLinesToFile(const std::string& path, const TStrings& lines,
                                                 std::string& reason) {
  // A read-only file cannot be deleted on Windows; it is not replaced here either.
  if (FileExists(path) && IsReadOnly(path)) {
    reason = path + " is read only";
    return false;
  }
  std::string bytes;
  for (const std::string& line : lines) {
    // Each entry is one line; the last guard for lines that no caption check has seen.
    if (HasLineBreak(line)) {
      reason = "a line holds a line break: " + line.substr(0, line.find_first_of("\r\n"));
      return false;
    }
    bytes += line + "\r\n";
  }
  return WriteFileAtomic(path, bytes, reason);
}

bool TWrenManagedCompilerAction::SaveLinesToFile(const std::string& path, const TStrings& lines) {
  std::string reason;
  return SaveLinesToFile(path, lines, reason);
}

bool TWrenManagedCompilerAction::GetCommandLine(ICommandLineBuilder& builder) {
  std::string dir;
  if (!TryExpandExpression("Project Directory", ProjectDir, false, dir)) return false;
  dir = IncludeTrailingPathDelimiter(dir);
  TStrings lines;
  if (!GenerateResponseFile(dir, lines)) return false;
  const std::string path = dir + kResponseFileName;
  std::string reason;
  if (!SaveLinesToFile(path, lines, reason)) {
    SendMessage("Could not create the response file: " + path);
    SendMessage(reason);
    return false;
  }
  builder.AddArgument("", "@\"" + path + "\"", 2);
  return true;
}

std::string TWrenManagedCompilerAction::GetStartingDir(const std::string& fileName) {
  (void)fileName;
  std::string dir;
  if (!TryExpandExpression("Project Directory", ProjectDir, false, dir)) {
    SendMessage("ERROR! Unable to expand project directory");
    return "";
  }
  return IncludeTrailingPathDelimiter(dir);
}

void TWrenManagedCompilerAction::OnSuccess() {
  TWrenDotNetAction::OnSuccess();
  SendMessage(".");
  SendMessage("Project Compiled OK.");
}

bool TWrenManagedCompilerAction::LoadProjectFile(const std::string& fileName) {
  if (UpperCase(ExtractFileExt(fileName)) == ".BDSPROJ") return LoadBorlandProject(fileName);
  return LoadVisualStudioProject(fileName);
}

bool TWrenManagedCompilerAction::LoadBorlandProject(const std::string& fileName) {
  SendMessage(DisplayName() + " does not read C#Builder projects: " + fileName);
  return false;
}

bool TWrenManagedCompilerAction::LoadVisualStudioProject(const std::string& fileName) {
  SendMessage(DisplayName() + " does not read Visual Studio projects: " + fileName);
  return false;
}

bool TWrenManagedCompilerAction::Validate(IWrenActionValidationError& errors) {
  bool valid = true;
  if (ProjectDir.empty()) {
    errors.AddError("Project Directory", "Project directory has not been set");
    valid = false;
  }
  if (Files.empty()) {
    errors.AddError("Files", "Files to compile has not been set");
    valid = false;
  }
  return valid;
}

bool TWrenManagedCompilerAction::AddFileListLines(const std::string& switchText,
                                                  const std::string& caption,
                                                  const std::string& value, TStrings& lines) {
  std::string expanded;
  if (!ExpandResponseValue(caption, value, expanded)) return false;
  for (const std::string& piece : SplitToLines(expanded, ";,")) {
    const std::string file = Trim(piece);
    if (!file.empty()) lines.push_back(switchText + DoubleQuoteString(file));
  }
  return true;
}

}  // namespace wren
