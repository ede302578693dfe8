#include "compilers/WrenBdsProjectReader.h"

#include <pugixml.hpp>

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

namespace {

const char kPersonality[] = "CSharp.Personality";

/// Where each project setting is read from: the option's name in the groups, and the setting
/// (Visual Studio name) it fills; settings first, then the configuration's.
struct TOptionMap {
  const char* option;
  const char* setting;
  bool perConfig;
};

const TOptionMap kOptions[] = {
    {"OutputType", "OutputType", false},
    {"AssemblyName", "AssemblyName", false},
    {"DefaultNamespace", "RootNamespace", false},
    {"RootNamespace", "RootNamespace", false},
    {"MainClass", "StartupObject", false},
    {"StartupObject", "StartupObject", false},
    {"ApplicationIcon", "ApplicationIcon", false},
    {"OutputDir", "OutputPath", true},
    {"Conditionals", "DefineConstants", true},
    {"DefineConstants", "DefineConstants", true},
    {"DebugInfo", "DebugSymbols", true},
    {"DebugSymbols", "DebugSymbols", true},
    {"Optimize", "Optimize", true},
    {"WarningLevel", "WarningLevel", true},
    {"TreatWarningsAsErrors", "TreatWarningsAsErrors", true},
    {"AllowUnsafeBlocks", "AllowUnsafeBlocks", true},
    {"CheckForOverflowUnderflow", "CheckForOverflowUnderflow", true},
    {"NoWarn", "NoWarn", true},
    {"DocumentationFile", "DocumentationFile", true},
    {"BaseAddress", "BaseAddress", true},
};

std::string Attr(const pugi::xml_node& node, const char* name) {
  for (const pugi::xml_attribute& a : node.attributes())
    if (SameText(a.name(), name)) return a.value();
  return "";
}

pugi::xml_node Child(const pugi::xml_node& node, const char* name) {
  for (const pugi::xml_node& c : node.children())
    if (SameText(c.name(), name)) return c;
  return {};
}

/// Every <Group><Group Name="n">value</Group></Group> option of the personality as n=value.
TStrings OptionsOf(const pugi::xml_node& personality) {
  TStrings options;
  for (const pugi::xml_node& group : personality.children()) {
    if (SameText(group.name(), "FileList")) continue;
    for (const pugi::xml_node& option : group.children())
      if (SameText(option.name(), group.name()) && !Attr(option, "Name").empty())
        options.push_back(Attr(option, "Name") + "=" + option.child_value());
  }
  return options;
}

/// A folder option in the project's own (backslash) form, ending in its delimiter.
std::string SetFolderDelimiter(const std::string& value) {
  if (value.empty() || value.back() == '\\' || value.back() == '/') return value;
  return value + "\\";
}

}  // namespace

bool ReadBdsProject(const std::string& fileName, const std::string& configName,
                    TVSProject& project, std::string& error) {
  project = TVSProject();
  project.fileName = fileName;
  project.dir = ExtractFilePath(fileName);
  project.language = TVSLanguage::CSharp;
  pugi::xml_document doc;
  if (!LoadProjectXml(fileName, doc, error)) return false;
  const pugi::xml_node root = doc.document_element();
  if (!SameText(root.name(), "BorlandProject")) {
    error = "it is not a Borland project (root element <" + std::string(root.name()) + ">)";
    return false;
  }
  std::string personality;
  for (const pugi::xml_node& o : Child(Child(root, "PersonalityInfo"), "Option").children())
    if (SameText(Attr(o, "Name"), "Personality")) personality = Trim(o.child_value());
  const pugi::xml_node options = Child(root, kPersonality);
  if (!SameText(personality, kPersonality) || !options) {
    error = "it is not a C#Builder project (personality \"" + personality + "\")";
    return false;
  }
  project.guid = "";
  for (const pugi::xml_node& o : Child(Child(root, "PersonalityInfo"), "Option").children())
    if (SameText(Attr(o, "Name"), "GUID")) project.guid = Trim(o.child_value());

  const TStrings values = OptionsOf(options);
  for (const TOptionMap& m : kOptions) {
    TStrings& target = m.perConfig ? project.config : project.settings;
    const std::string value = ValueOfName(values, m.option);
    if (IndexOfName(values, m.option) < 0 || IndexOfName(target, m.setting) >= 0) continue;
    target.push_back(std::string(m.setting) + "=" +
                     (SameText(m.setting, "OutputPath") ? SetFolderDelimiter(value) : value));
  }
  // The container keeps the active configuration only.
  project.configName = configName.empty() ? "Active" : configName;
  project.configNames = {project.configName};

  TStrings sources;
  for (const pugi::xml_node& f : Child(options, "FileList").children()) {
    if (!SameText(f.name(), "File")) continue;
    const std::string file = Attr(f, "FileName");
    const std::string container = Attr(f, "ContainerId");
    const std::string ext = LowerCase(ExtractFileExt(file));
    if (!Attr(f, "AssemblyName").empty() || FindText(container, "Assembly") != std::string::npos) {
      TVSReference ref;
      ref.name = Attr(f, "ModuleName");
      ref.assemblyName = Attr(f, "AssemblyName").empty() ? ref.name : Attr(f, "AssemblyName");
      // "$(SystemRoot)\microsoft.net\framework\..." names a framework assembly by its folder.
      ref.hintPath = file;
      project.references.push_back(ref);
    } else if (ext == ".cs") {
      project.files.push_back({file, "Compile", "", "", ""});
    } else if (ext == ".resx" || FindText(container, "Resource") != std::string::npos) {
      project.files.push_back({file, "EmbeddedResource", "", "", ""});
    } else if (!file.empty()) {
      project.files.push_back({file, "None", "", "", ""});
    }
  }
  // A form's .resx sits beside its source under the same name.
  for (TVSFile& resx : project.files) {
    if (!SameText(ExtractFileExt(resx.relPath), ".resx")) continue;
    const std::string source = ChangeFileExt(resx.relPath, ".cs");
    for (const TVSFile& f : project.files)
      if (SameText(f.relPath, source)) resx.dependentUpon = ExtractFileName(NativePath(source));
  }
  return true;
}

}  // namespace wren
