#include "compilers/WrenVSProjectReader.h"

#include <pugixml.hpp>

#include <cctype>
#include <cstdlib>

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

namespace {

struct TLanguageElement {
  const char* name;
  TVSLanguage language;
  bool smartDevice;
};

const TLanguageElement kLanguageElements[] = {
    {"CSHARP", TVSLanguage::CSharp, false},
    {"VisualBasic", TVSLanguage::VisualBasic, false},
    {"VISUALJSHARP", TVSLanguage::JSharp, false},
    {"ECSHARP", TVSLanguage::CSharp, true},
    {"EVisualBasic", TVSLanguage::VisualBasic, true},
};

std::string Attr(const pugi::xml_node& node, const char* name) {
  // Attribute names are matched without case: hand-edited files vary.
  for (const pugi::xml_attribute& a : node.attributes())
    if (SameText(a.name(), name)) return a.value();
  return "";
}

int IntAttr(const pugi::xml_node& node, const char* name) {
  return std::atoi(Attr(node, name).c_str());
}

void AppendAttributes(const pugi::xml_node& node, TStrings& lines) {
  for (const pugi::xml_attribute& a : node.attributes())
    lines.push_back(std::string(a.name()) + "=" + a.value());
}

pugi::xml_node Child(const pugi::xml_node& node, const char* name) {
  for (const pugi::xml_node& c : node.children())
    if (SameText(c.name(), name)) return c;
  return {};
}

std::string PlatformlessName(const std::string& name) {
  const size_t bar = name.find('|');
  return bar == std::string::npos ? name : name.substr(0, bar);
}

std::string ReplaceChar(std::string text, char what, char with) {
  for (char& c : text)
    if (c == what) c = with;
  return text;
}

}  // namespace

std::string TVSProject::Setting(const std::string& name) const {
  return ValueOfName(settings, name);
}

std::string TVSProject::ConfigValue(const std::string& name) const {
  return ValueOfName(config, name);
}

bool TVSProject::ConfigFlag(const std::string& name, bool def) const {
  const std::string value = Trim(ConfigValue(name));
  if (value.empty()) return def;
  return SameText(value, "true");
}

std::string TVSProject::OutputExtension() const {
  return SameText(Setting("OutputType"), "Library") ? ".dll" : ".exe";
}

std::string TVSProject::OutputFileName() const { return Setting("AssemblyName") + OutputExtension(); }

std::string TVSProject::RelativeOutputFile() const {
  const std::string outputPath = ConfigValue("OutputPath");
  const std::string dir = outputPath.empty() ? "" : IncludeTrailingPathDelimiter(NativePath(outputPath));
  return dir + OutputFileName();
}

bool VSLanguageOfExtension(const std::string& fileName, TVSLanguage& language) {
  const std::string ext = LowerCase(ExtractFileExt(fileName));
  if (ext == ".csproj" || ext == ".csdproj")
    language = TVSLanguage::CSharp;
  else if (ext == ".vbproj" || ext == ".vbdproj")
    language = TVSLanguage::VisualBasic;
  else if (ext == ".vjsproj")
    language = TVSLanguage::JSharp;
  else
    return false;
  return true;
}

std::string NativePath(const std::string& path) {
  return PathDelim == '/' ? ReplaceChar(path, '\\', '/') : ReplaceChar(path, '/', '\\');
}

bool LoadProjectXml(const std::string& fileName, pugi::xml_document& doc, std::string& error) {
  if (!FileExists(fileName)) {
    error = "the file does not exist";
    return false;
  }
  const pugi::xml_parse_result parsed = doc.load_file(fileName.c_str());
  if (!parsed) {
    error = std::string("it is not well-formed XML (") + parsed.description() + " at offset " +
            std::to_string(parsed.offset) + ")";
    return false;
  }
  return true;
}

bool ReadVSProject(const std::string& fileName, const std::string& configName, TVSProject& project,
                   std::string& error) {
  project = TVSProject();
  project.fileName = fileName;
  project.dir = ExtractFilePath(fileName);
  pugi::xml_document doc;
  if (!LoadProjectXml(fileName, doc, error)) return false;
  const pugi::xml_node root = doc.document_element();
  if (!SameText(root.name(), "VisualStudioProject")) {
    error = "it is not a Visual Studio 2002/2003 project (root element <" +
            std::string(root.name()) + ">)";
    return false;
  }
  pugi::xml_node lang;
  for (const pugi::xml_node& c : root.children()) {
    if (c.type() != pugi::node_element) continue;
    for (const TLanguageElement& e : kLanguageElements)
      if (SameText(c.name(), e.name)) {
        lang = c;
        project.language = e.language;
        project.smartDevice = e.smartDevice;
      }
    if (lang) break;
    error = "unsupported element <" + std::string(c.name()) + "> under <VisualStudioProject>";
    return false;
  }
  if (!lang) {
    error = "it holds no project language element";
    return false;
  }
  project.guid = Attr(lang, "ProjectGuid");

  const pugi::xml_node build = Child(lang, "Build");
  const pugi::xml_node settings = Child(build, "Settings");
  if (!settings) {
    error = "it has no <Build><Settings> element";
    return false;
  }
  AppendAttributes(settings, project.settings);

  pugi::xml_node chosen;
  for (const pugi::xml_node& c : settings.children()) {
    if (!SameText(c.name(), "Config")) continue;
    const std::string name = Attr(c, "Name");
    project.configNames.push_back(name);
    if (SameText(name, configName)) chosen = c;
  }
  if (!chosen && configName.find('|') == std::string::npos) {
    // "Debug" picks "Debug|Pocket PC" when the project has one platform.
    int matches = 0;
    for (const pugi::xml_node& c : settings.children())
      if (SameText(c.name(), "Config") && SameText(PlatformlessName(Attr(c, "Name")), configName)) {
        chosen = c;
        ++matches;
      }
    if (matches != 1) chosen = {};
  }
  if (!chosen) {
    std::string names;
    for (const std::string& n : project.configNames) names += (names.empty() ? "" : ", ") + n;
    error = "it has no configuration named \"" + configName + "\" (configurations: " +
            (names.empty() ? "none" : names) + ")";
    return false;
  }
  project.configName = Attr(chosen, "Name");
  AppendAttributes(chosen, project.config);

  for (const pugi::xml_node& r : Child(build, "References").children()) {
    if (!SameText(r.name(), "Reference")) continue;
    TVSReference ref;
    ref.name = Attr(r, "Name");
    ref.assemblyName = Attr(r, "AssemblyName");
    ref.hintPath = Attr(r, "HintPath");
    ref.assemblyFolderKey = Attr(r, "AssemblyFolderKey");
    ref.project = Attr(r, "Project");
    ref.guid = Attr(r, "Guid");
    ref.wrapperTool = Attr(r, "WrapperTool");
    ref.platform = Attr(r, "Platform");
    ref.privateCopy = Attr(r, "Private");
    ref.versionMajor = IntAttr(r, "VersionMajor");
    ref.versionMinor = IntAttr(r, "VersionMinor");
    ref.lcid = IntAttr(r, "Lcid");
    // Designer-only references of smart-device projects never reach the compiler.
    if (FindText(ref.platform, "-Designer") != std::string::npos) continue;
    project.references.push_back(ref);
  }
  for (const pugi::xml_node& i : Child(build, "Imports").children())
    if (SameText(i.name(), "Import")) project.imports.push_back(Attr(i, "Namespace"));

  for (const pugi::xml_node& f : Child(Child(lang, "Files"), "Include").children()) {
    if (!SameText(f.name(), "File")) continue;
    TVSFile file;
    file.relPath = Attr(f, "RelPath");
    file.buildAction = Attr(f, "BuildAction");
    file.subType = Attr(f, "SubType");
    file.dependentUpon = Attr(f, "DependentUpon");
    file.link = Attr(f, "Link");
    project.files.push_back(file);
  }
  return true;
}

namespace {

/// The source with comments and string and character literals blanked out, so that what they
/// say cannot be taken for a declaration. Scanned by hand: long comments would take a regular
/// expression engine too deep.
std::string WithoutCommentsAndStrings(const std::string& source, bool vb) {
  std::string text = source;
  const size_t n = text.size();
  size_t i = 0;
  auto blank = [&](size_t from, size_t to) {
    for (size_t k = from; k < to && k < n; ++k)
      if (text[k] != '\n') text[k] = ' ';
  };
  while (i < n) {
    const char c = text[i];
    if (vb) {
      if (c == '\'') {
        const size_t end = text.find('\n', i);
        blank(i, end == std::string::npos ? n : end);
        i = end == std::string::npos ? n : end;
      } else if (c == '"') {
        size_t k = i + 1;
        while (k < n && (text[k] != '"' || (k + 1 < n && text[k + 1] == '"'))) k += text[k] == '"' ? 2 : 1;
        blank(i, k + 1);
        i = k + 1;
      } else {
        ++i;
      }
      continue;
    }
    if (c == '/' && i + 1 < n && text[i + 1] == '/') {
      const size_t end = text.find('\n', i);
      blank(i, end == std::string::npos ? n : end);
      i = end == std::string::npos ? n : end;
    } else if (c == '/' && i + 1 < n && text[i + 1] == '*') {
      const size_t end = text.find("*/", i + 2);
      const size_t stop = end == std::string::npos ? n : end + 2;
      blank(i, stop);
      i = stop;
    } else if (c == '"' || c == '\'') {
      const bool verbatim = c == '"' && i > 0 && text[i - 1] == '@';
      size_t k = i + 1;
      while (k < n) {
        if (verbatim && text[k] == '"') {
          if (k + 1 < n && text[k + 1] == '"') {  // a doubled quote inside @"..."
            k += 2;
            continue;
          }
          break;
        }
        if (!verbatim && text[k] == '\\') {
          k += 2;
          continue;
        }
        if (!verbatim && (text[k] == c || text[k] == '\n')) break;
        ++k;
      }
      blank(i, k + 1);
      i = k + 1;
    } else {
      ++i;
    }
  }
  return text;
}

}  // namespace

std::string FirstDeclaredClass(const std::string& source, TVSLanguage language) {
  const bool vb = language == TVSLanguage::VisualBasic;
  const std::string text = WithoutCommentsAndStrings(source, vb);
  // Words (dotted names kept whole) and single punctuation characters, in order.
  TStrings tokens;
  for (size_t i = 0; i < text.size();) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (std::isalnum(c) || c == '_') {
      size_t k = i;
      while (k < text.size() &&
             (std::isalnum(static_cast<unsigned char>(text[k])) || text[k] == '_' || text[k] == '.'))
        ++k;
      tokens.push_back(text.substr(i, k - i));
      i = k;
    } else {
      if (!std::isspace(c)) tokens.push_back(std::string(1, text[i]));
      ++i;
    }
  }
  auto isName = [](const std::string& t) {
    return !t.empty() && (std::isalpha(static_cast<unsigned char>(t[0])) || t[0] == '_');
  };
  const char* const scope = language == TVSLanguage::JSharp ? "package" : "namespace";
  std::string ns;
  for (size_t i = 0; i + 1 < tokens.size(); ++i) {
    const bool afterEnd = vb && i > 0 && SameText(tokens[i - 1], "End");
    const bool same = vb ? SameText(tokens[i], scope) : tokens[i] == scope;
    if (same && !afterEnd && isName(tokens[i + 1])) {
      ns += (ns.empty() ? "" : ".") + tokens[i + 1];
    } else if ((vb ? SameText(tokens[i], "Class") : tokens[i] == "class") && !afterEnd &&
               isName(tokens[i + 1])) {
      return (ns.empty() ? "" : ns + ".") + tokens[i + 1];
    }
  }
  return "";
}

std::string VSManifestName(const TVSProject& project, const TVSFile& file,
                           const std::string& formClass) {
  const bool resx = SameText(ExtractFileExt(file.relPath), ".resx");
  const std::string rootNamespace = Trim(project.Setting("RootNamespace"));
  const std::string prefix = rootNamespace.empty() ? "" : rootNamespace + ".";
  if (resx && !formClass.empty()) {
    // VB puts the root namespace in front of what the source declares; C# and J# sources
    // declare their full namespace.
    return (project.language == TVSLanguage::VisualBasic ? prefix : "") + formClass + ".resources";
  }
  std::string name = ReplaceChar(ReplaceChar(file.relPath, '/', '\\'), '\\', '.');
  if (project.language == TVSLanguage::VisualBasic) name = ExtractFileName(NativePath(file.relPath));
  if (resx) name = ChangeFileExt(name, ".resources");
  return prefix + name;
}

}  // namespace wren
