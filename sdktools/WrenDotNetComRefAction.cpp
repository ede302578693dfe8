#include "sdktools/WrenDotNetComRefAction.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <sstream>
#include <utility>
#include <vector>

#include "WrenFiles.h"
#include "WrenRegistry.h"
#include "WrenUtils.h"

namespace wren {

namespace {

/// The attributes the action writes, in the order it sets them.
const char* const kWrittenAttributes[] = {"Guid", "VersionMajor", "VersionMinor"};

/// A hexadecimal registry version part ("a") as decimal text ("10"), read the way a 32-bit
/// integer conversion reads "$a": an empty or non-hexadecimal part is an error.
std::string HexPartToDecimal(const std::string& part) {
  const std::string shown = "'$" + part + "' is not a valid integer value";
  if (part.empty()) throw EConvertError(shown);
  uint64_t value = 0;
  for (char c : part) {
    int digit;
    if (c >= '0' && c <= '9')
      digit = c - '0';
    else if (c >= 'a' && c <= 'f')
      digit = c - 'a' + 10;
    else if (c >= 'A' && c <= 'F')
      digit = c - 'A' + 10;
    else
      throw EConvertError(shown);
    value = value * 16 + static_cast<uint64_t>(digit);
    if (value > UINT32_MAX) throw EConvertError(shown);
  }
  // Eight hex digits fill the whole integer, so $FFFFFFFF reads as -1.
  return std::to_string(static_cast<int32_t>(static_cast<uint32_t>(value)));
}

/// One attribute of a start tag as it stands in the source text.
struct TSourceAttribute {
  std::string name;
  size_t leadBegin = 0;   // the blanks and line breaks before the name
  size_t nameBegin = 0;
  std::string equals;     // from the end of the name to the opening quote (" = " in VS files)
  char quote = '"';
  size_t valueBegin = 0;  // just after the opening quote
  size_t valueEnd = 0;    // at the closing quote
};

bool IsXmlSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

/// Reads the attributes of the start tag whose '<' is at `lt`. False when the text is not the
/// plain start tag it should be (the caller then lets the DOM write the whole file).
bool ScanStartTag(const std::string& src, size_t lt, std::vector<TSourceAttribute>& attributes) {
  if (lt >= src.size() || src[lt] != '<') return false;
  size_t pos = lt + 1;
  while (pos < src.size() && !IsXmlSpace(src[pos]) && src[pos] != '/' && src[pos] != '>') ++pos;
  for (;;) {
    TSourceAttribute a;
    a.leadBegin = pos;
    while (pos < src.size() && IsXmlSpace(src[pos])) ++pos;
    if (pos >= src.size()) return false;
    if (src[pos] == '>' || src.compare(pos, 2, "/>") == 0) return true;
    if (pos == a.leadBegin) return false;  // attributes are separated by white space
    a.nameBegin = pos;
    while (pos < src.size() && !IsXmlSpace(src[pos]) && src[pos] != '=') ++pos;
    a.name = src.substr(a.nameBegin, pos - a.nameBegin);
    const size_t equalsBegin = pos;
    while (pos < src.size() && IsXmlSpace(src[pos])) ++pos;
    if (pos >= src.size() || src[pos] != '=') return false;
    ++pos;
    while (pos < src.size() && IsXmlSpace(src[pos])) ++pos;
    if (pos >= src.size() || (src[pos] != '"' && src[pos] != '\'')) return false;
    a.equals = src.substr(equalsBegin, pos - equalsBegin);
    a.quote = src[pos];
    a.valueBegin = ++pos;
    pos = src.find(a.quote, pos);
    if (pos == std::string::npos) return false;
    a.valueEnd = pos++;
    attributes.push_back(std::move(a));
  }
}


/// The source text with the written attributes of `node` brought to their DOM values: existing
/// ones changed in place, new ones added after the last attribute in the layout of that attribute
/// (Visual Studio 2002/2003 puts each on a line of its own). Every other byte stays as it was.
/// False when the source cannot be matched to the DOM.
bool SpliceAttributes(const std::string& src, pugi::xml_node node, std::string& out) {
  const ptrdiff_t nameOffset = node.offset_debug();
  if (nameOffset <= 0) return false;
  std::vector<TSourceAttribute> source;
  if (!ScanStartTag(src, static_cast<size_t>(nameOffset) - 1, source)) return false;

  // The scan must see the attributes the parser saw, the written ones appended at the end.
  std::vector<std::string> domNames;
  for (pugi::xml_attribute a : node.attributes()) domNames.push_back(a.name());
  if (domNames.size() < source.size() || source.empty()) return false;
  for (size_t i = 0; i < source.size(); ++i)
    if (source[i].name != domNames[i]) return false;

  struct TEdit {
    size_t pos, length;
    std::string text;
  };
  std::vector<TEdit> edits;  // in source order, none overlapping
  const TSourceAttribute& last = source.back();
  TEdit added{last.valueEnd + 1, 0, ""};
  for (const char* name : kWrittenAttributes) {
    const std::string value = node.attribute(name).value();
    bool found = false;
    for (const TSourceAttribute& a : source) {
      if (a.name != name) continue;
      edits.push_back({a.valueBegin, a.valueEnd - a.valueBegin, EscapeXml(value, a.quote)});
      found = true;
      break;
    }
    if (!found)
      added.text += src.substr(last.leadBegin, last.nameBegin - last.leadBegin) + name +
                    last.equals + last.quote + EscapeXml(value, last.quote) + last.quote;
  }
  if (!added.text.empty()) edits.push_back(added);

  out.clear();
  size_t copied = 0;
  std::sort(edits.begin(), edits.end(), [](const TEdit& a, const TEdit& b) { return a.pos < b.pos; });
  for (const TEdit& e : edits) {
    out.append(src, copied, e.pos - copied);
    out += e.text;
    copied = e.pos + e.length;
  }
  out.append(src, copied, std::string::npos);
  return true;
}

// The DOM keeps the declaration, comments, processing instructions, the document type and the
// white space between elements, and leaves line ends alone, so that a file it writes whole
// differs from its source only where the XML printer must differ.
constexpr unsigned kParseFlags = (pugi::parse_full | pugi::parse_ws_pcdata) & ~pugi::parse_eol;

/// Loads the project file into the DOM; false with the parser's reason.
bool LoadProject(const std::string& path, pugi::xml_document& doc, std::string& source,
                 pugi::xml_parse_result& result, std::string& reason) {
  std::string error;
  if (!ReadFileBytes(path, source, error)) {
    reason = error;
    return false;
  }
  result = doc.load_buffer(source.data(), source.size(), kParseFlags);
  if (!result) {
    reason = result.description();
    return false;
  }
  return true;
}

/// The project text after the change. UTF-8 files (the Visual Studio format) keep every byte
/// outside the changed attributes; other encodings are written whole by the DOM in their own
/// encoding, with the byte-order mark they had.
std::string SavedProjectText(const std::string& source, const pugi::xml_document& doc,
                             const pugi::xml_parse_result& parsed, pugi::xml_node node) {
  std::string spliced;
  if (parsed.encoding == pugi::encoding_utf8 && SpliceAttributes(source, node, spliced))
    return spliced;
  const bool bom = source.compare(0, 3, "\xEF\xBB\xBF") == 0 ||
                   source.compare(0, 2, "\xFF\xFE") == 0 || source.compare(0, 2, "\xFE\xFF") == 0;
  std::ostringstream out;
  doc.save(out, "", pugi::format_raw | (bom ? pugi::format_write_bom : 0), parsed.encoding);
  return out.str();
}

/// The one node the XPath selects; none for no match or an expression the XPath engine rejects.
pugi::xml_node SelectSingleNode(const pugi::xml_document& doc, const std::string& xpath) {
  try {
    return doc.select_node(xpath.c_str()).node();
  } catch (const pugi::xpath_exception&) {
    return pugi::xml_node();
  }
}

}  // namespace

const TPropertyTable& TWrenDotNetComReferenceFixAction::ClassProperties() {
  using A = TWrenDotNetComReferenceFixAction;
  static const TPropertyTable table = ChainProperties(
      TCustomWrenAction::ClassProperties(),
      {StringProperty("ProgID", &A::ProgID), StringProperty("ReferenceName", &A::ReferenceName),
       StringProperty("ProjectFile", &A::ProjectFile)});
  return table;
}

std::string TWrenDotNetComReferenceFixAction::ProjectTypeFromFileExt(const std::string& fileName) {
  const std::string ext = LowerCase(ExtractFileExt(fileName));
  if (ext == ".csproj")
    return "/VisualStudioProject/CSHARP/Build/References/"
           "Reference[@Name='%s' and @WrapperTool='tlbimp']";
  if (ext == ".vbproj")
    return "/VisualStudioProject/VisualBasic/Build/References/"
           "Reference[@Name='%s' and @WrapperTool='tlbimp']";
  // Without the element name before the predicate, as it has always been: the expression is
  // rejected, so a J# reference is never found.
  if (ext == ".vjsproj")
    return "/VisualStudioProject/VISUALJSHARP/Build/References/"
           "[@Name='%s' and @WrapperTool='tlbimp']";
  return "";
}

bool TWrenDotNetComReferenceFixAction::Execute() {
  std::string progID, referenceName, projectFile;
  if (!TryExpandExpression("ProgID", ProgID, true, progID)) return false;
  if (!TryExpandExpression("ReferenceName", ReferenceName, true, referenceName)) return false;
  if (!TryExpandExpression("ProjectFile", ProjectFile, true, projectFile)) return false;

  const std::string xpathFormat = ProjectTypeFromFileExt(projectFile);
  if (xpathFormat.empty()) {
    SendMessage("Project type is not supported by this action!");
    return false;
  }
  // Asked before existence: a path whose attributes cannot be read at all counts as read-only.
  const bool attributesUnreadable = !FileExists(projectFile) && !DirectoryExists(projectFile);
  if (attributesUnreadable || IsReadOnly(projectFile)) {
    SendMessage("Cannot update project file, file is read only");
    return false;
  }
  if (!FileExists(projectFile)) {
    SendMessage("Project file not found : " + projectFile);
    return false;
  }

  const IWrenRegistry& registry = WrenRegistry();
  constexpr TRegistryRoot HKCR = TRegistryRoot::HKEY_CLASSES_ROOT;
  SendMessage("Checking registry for CLSID...");
  std::unique_ptr<IWrenRegistryKey> key = registry.OpenKey(HKCR, progID + "\\Clsid", KEY_READ);
  if (!key) {
    SendMessage("Unable to find ProID : " + progID + " in Registry.");
    return false;
  }
  const std::string clsid = key->ReadString("");
  key.reset();
  SendMessage("Found CLSID : " + clsid);

  SendMessage("Checking for TypeLib Guid...");
  key = registry.OpenKey(HKCR, "CLSID\\" + clsid + "\\TypeLib", KEY_READ);
  if (!key) {
    SendMessage("Unable to find TypeLib Entry for : " + progID + " in Registry.");
    return false;
  }
  const std::string typeLibGuid = key->ReadString("");
  SendMessage("Found typelib guid : " + typeLibGuid);
  key.reset();

  // Versions the library's key does not give stay empty and are written so.
  std::string versionMajor, versionMinor;
  key = registry.OpenKey(HKCR, "TypeLib\\" + typeLibGuid, KEY_READ);
  if (key) {
    SendMessage("Checking for current version of TypeLib...");
    const TStrings versions = key->GetKeyNames();
    if (versions.empty()) {
      SendMessage("Unable to determine current version of TypeLib");
    } else {
      // The first version the registry lists is taken as the current one, without sorting.
      const std::string& version = versions.front();
      const size_t dot = version.find('.');
      if (dot != std::string::npos) {
        SendMessage("Found current version : " + version);
        versionMajor = HexPartToDecimal(version.substr(0, dot));
        versionMinor = HexPartToDecimal(version.substr(dot + 1));
      }
    }
    key.reset();
  }
  if (typeLibGuid.empty()) return false;

  SendMessage("Found TypeLib information, updating project reference..");
  pugi::xml_document doc;
  std::string source, reason;
  pugi::xml_parse_result parsed;
  // Loaded twice in succession as the action always has; the second load is the one that counts.
  LoadProject(projectFile, doc, source, parsed, reason);
  if (!LoadProject(projectFile, doc, source, parsed, reason)) {
    SendMessage("Error Loading project file");
    SendMessage(reason);
    return false;
  }

  std::string xpath = xpathFormat;
  xpath.replace(xpath.find("%s"), 2, referenceName);
  pugi::xml_node reference = SelectSingleNode(doc, xpath);
  if (!reference) {
    SendMessage("Unable to locate reference in project file!");
    return false;
  }
  for (const auto& [name, value] : {std::pair<const char*, const std::string&>{"Guid", typeLibGuid},
                                    {"VersionMajor", versionMajor},
                                    {"VersionMinor", versionMinor}}) {
    pugi::xml_attribute attribute = reference.attribute(name);
    if (!attribute) attribute = reference.append_attribute(name);
    attribute.set_value(value.c_str());
  }

  std::string error;
  if (!WriteFileAtomic(projectFile, SavedProjectText(source, doc, parsed, reference), error)) {
    SendMessage(error);
    return false;
  }
  SendMessage("Project Reference for " + referenceName + " Updated OK.");
  return true;
}

}  // namespace wren
