#include "WrenProject.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>
#include <pugixml.hpp>
#include <unordered_map>
#include <unordered_set>

#include "WrenActionRegistry.h"
#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

namespace {

// Everything the file holds becomes a node, so each byte of it can be traced back to one node.
// Line ends are kept as written (no parse_eol) and attribute whitespace is left alone.
constexpr unsigned kParseOptions = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_pi |
                                   pugi::parse_comments | pugi::parse_declaration |
                                   pugi::parse_doctype | pugi::parse_ws_pcdata;

constexpr char kUtf8Bom[] = "\xEF\xBB\xBF";

const char kNewProjectText[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MarrowbyProject version=\"1\">\n"
    "</MarrowbyProject>\n";

bool IsXmlSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

bool IsBlank(const char* text) {
  for (; *text; ++text)
    if (!IsXmlSpace(*text)) return false;
  return true;
}

bool IsBlankText(pugi::xml_node node) {
  return node.type() == pugi::node_pcdata && IsBlank(node.value());
}

bool HasNewline(const std::string& text) { return text.find('\n') != std::string::npos; }

/// The last line break of a run of whitespace and the indentation after it ("\r\n    ");
/// the run itself when it holds no line break.
std::string LastLineOf(const std::string& ws) {
  size_t pos = ws.rfind('\n');
  if (pos == std::string::npos) return ws;
  if (pos > 0 && ws[pos - 1] == '\r') --pos;
  return ws.substr(pos);
}

/// The text of an element: its text and CDATA children joined.
std::string ElementText(pugi::xml_node element) {
  std::string text;
  for (pugi::xml_node child : element.children())
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
      text += child.value();
  return text;
}


/// An attribute as written in a start tag, so that a changed value replaces only its own bytes.
struct TRawAttribute {
  std::string name;
  std::string value;      // decoded, as loaded
  size_t begin = 0;       // the whitespace before the name, relative to the tag
  size_t valueBegin = 0;  // first byte inside the quotes
  size_t valueEnd = 0;    // the closing quote
  char quote = '"';
};

/// The bytes one node was read from and what it held then. A node whose content still equals
/// what it held is written back as those bytes.
struct TSpan {
  std::string gapBefore;  // bytes between the previous node and this one (document level)
  std::string raw;        // elements: the start tag; other nodes: the whole node
  std::string rawEnd;     // elements: the end tag, "" when self-closing
  std::string name;
  std::string value;
  std::vector<TRawAttribute> attributes;
  bool selfClosing = false;
};

/// Line numbers from byte offsets.
class TLineIndex {
 public:
  explicit TLineIndex(const std::string& text) {
    starts_.push_back(0);
    for (size_t i = 0; i < text.size(); ++i)
      if (text[i] == '\n') starts_.push_back(i + 1);
  }
  int LineOf(ptrdiff_t offset) const {
    if (offset < 0) return 0;
    auto it = std::upper_bound(starts_.begin(), starts_.end(), static_cast<size_t>(offset));
    return static_cast<int>(it - starts_.begin());
  }

 private:
  std::vector<size_t> starts_;
};

bool ParseScalar(const TPublishedProperty& prop, const std::string& text, TPropertyValue& value,
                 std::string& message) {
  switch (prop.kind) {
    case TPropertyKind::pkString:
      value = text;
      return true;
    case TPropertyKind::pkBoolean:
      if (text == "true" || text == "false") {
        value = text == "true";
        return true;
      }
      message = "'" + text + "' is not a boolean (true or false)";
      return false;
    case TPropertyKind::pkInteger: {
      int32_t number = 0;
      const char* end = text.data() + text.size();
      auto [ptr, ec] = std::from_chars(text.data(), end, number);
      if (!text.empty() && ec == std::errc() && ptr == end) {
        value = number;
        return true;
      }
      message = "'" + text + "' is not a decimal integer";
      return false;
    }
    case TPropertyKind::pkEnumeration: {
      for (size_t i = 0; i < prop.enumNames.size(); ++i) {
        if (SameText(prop.enumNames[i], text)) {
          value = static_cast<int32_t>(i);
          return true;
        }
      }
      std::string allowed;
      for (const std::string& name : prop.enumNames)
        allowed += (allowed.empty() ? "" : ", ") + name;
      message = "'" + text + "' is not one of " + allowed;
      return false;
    }
    case TPropertyKind::pkStringList:
      break;
  }
  message = "not a single value";
  return false;
}

/// Reads a <Property> element's value; on failure names the message and the node at fault.
bool ReadPropertyValue(pugi::xml_node element, const TPublishedProperty& prop,
                       TPropertyValue& value, std::string& message, pugi::xml_node& at) {
  at = element;
  if (prop.kind == TPropertyKind::pkStringList) {
    TStrings lines;
    for (pugi::xml_node child : element.children()) {
      if (child.type() == pugi::node_element) {
        if (std::strcmp(child.name(), "Item") != 0) {
          at = child;
          message = std::string("unexpected element <") + child.name() + "> in a string list";
          return false;
        }
        lines.push_back(ElementText(child));
      } else if ((child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) &&
                 !IsBlank(child.value())) {
        at = child;
        message = "a string list holds one <Item> per line, not text";
        return false;
      }
    }
    value = std::move(lines);
    return true;
  }
  for (pugi::xml_node child : element.children()) {
    if (child.type() == pugi::node_element) {
      at = child;
      message = std::string("unexpected element <") + child.name() + "> in a single value";
      return false;
    }
  }
  return ParseScalar(prop, ElementText(element), value, message);
}

}  // namespace

std::string TWrenProjectError::ToString() const {
  std::string location = file;
  if (line > 0) location += ":" + std::to_string(line);
  std::string context;
  if (!action.empty()) context = "action '" + action + "'";
  if (!property.empty()) context += (context.empty() ? "" : ", ") + ("property '" + property + "'");
  std::string text;
  const std::string* parts[] = {&location, &context, &message};
  for (const std::string* part : parts) {
    if (part->empty()) continue;
    text += (text.empty() ? "" : ": ") + *part;
  }
  return text;
}

/// The document a project was read from, with the original bytes of every node, and the
/// operations that bring it in line with the project's current state.
struct TWrenProject::TDocument {
  pugi::xml_document xml;
  std::string bom;
  std::string trailing;  // bytes after the last top-level node
  std::unordered_map<const void*, TSpan> spans;
  std::string indentUnit = "  ";
  TWrenActionFactory factory;
  std::unordered_map<const TCustomWrenAction*, pugi::xml_node> actionElements;

  /// Parses the text and records the bytes of each node. False with result set on malformed XML.
  bool Parse(const std::string& text, pugi::xml_parse_result& result);
  std::string Write() const;

  // Editing that keeps the surrounding layout.
  pugi::xml_node AppendChildElement(pugi::xml_node parent, const char* name);
  pugi::xml_node InsertElementAfter(pugi::xml_node anchor, const char* name);
  pugi::xml_node InsertElementBefore(pugi::xml_node anchor, const char* name);
  void RemoveElement(pugi::xml_node element);
  void RemoveNode(pugi::xml_node node);
  void SetElementText(pugi::xml_node element, const std::string& text);
  std::string IndentBefore(pugi::xml_node element) const;

  // Bringing the document in line with the project.
  void SyncVariables(pugi::xml_node root, const std::vector<TWrenProjectVariable>& variables);
  void SyncSteps(pugi::xml_node root, const std::vector<TWrenProjectStep>& steps);
  void SyncAction(pugi::xml_node element, const std::string& className,
                  const TWrenProjectStep& step);
  void SyncProperty(pugi::xml_node element, const TPublishedProperty& prop,
                    const TPropertyValue& value);
  void WritePropertyValue(pugi::xml_node element, const TPublishedProperty& prop,
                          const TPropertyValue& value);

 private:
  size_t Scan(pugi::xml_node node, size_t from, const std::string& src);
  void WriteNode(pugi::xml_node node, std::string& out) const;
  void WriteElement(pugi::xml_node node, const TSpan* span, std::string& out) const;
  std::string PatchStartTag(pugi::xml_node node, const TSpan& span) const;
  const TSpan* SpanOf(pugi::xml_node node) const {
    auto it = spans.find(node.internal_object());
    return it == spans.end() ? nullptr : &it->second;
  }
};

bool TWrenProject::TDocument::Parse(const std::string& text, pugi::xml_parse_result& result) {
  std::string src = text;
  if (src.compare(0, 3, kUtf8Bom) == 0) {
    bom = kUtf8Bom;
    src.erase(0, 3);
  }
  result = xml.load_buffer(src.data(), src.size(), kParseOptions, pugi::encoding_utf8);
  if (!result) return false;

  size_t pos = 0;
  for (pugi::xml_node child : xml.children()) {
    pos = Scan(child, pos, src);
    if (pos == std::string::npos) break;
  }
  if (pos == std::string::npos) {
    // Some node could not be traced to its bytes: write everything afresh rather than guess.
    spans.clear();
    trailing = "\n";
  } else {
    trailing = src.substr(pos);
  }

  // The indentation step of the file, taken from the first child of the root.
  pugi::xml_node root = xml.document_element();
  for (pugi::xml_node child = root.first_child(); child; child = child.next_sibling()) {
    if (child.type() != pugi::node_element) continue;
    pugi::xml_node before = child.previous_sibling();
    if (before && IsBlankText(before)) {
      std::string line = LastLineOf(before.value());
      size_t indent = line.find_first_not_of("\r\n");
      if (HasNewline(line) && indent != std::string::npos) indentUnit = line.substr(indent);
    }
    break;
  }
  return true;
}

// Records the bytes of a node that starts at or after `from`; answers where it ends, npos when
// the node cannot be located.
size_t TWrenProject::TDocument::Scan(pugi::xml_node node, size_t from, const std::string& src) {
  const ptrdiff_t offset = node.offset_debug();
  if (offset < 0) return std::string::npos;
  const size_t at = static_cast<size_t>(offset);
  const size_t n = src.size();
  TSpan span;
  size_t start = 0;
  size_t end = 0;

  switch (node.type()) {
    case pugi::node_element: {
      if (at < 1 || src[at - 1] != '<') return std::string::npos;
      start = at - 1;
      span.name = node.name();
      size_t p = at + span.name.size();
      while (true) {
        const size_t wsBegin = p;
        while (p < n && IsXmlSpace(src[p])) ++p;
        if (p >= n) return std::string::npos;
        if (src[p] == '>') {
          ++p;
          break;
        }
        if (src[p] == '/') {
          if (p + 1 >= n || src[p + 1] != '>') return std::string::npos;
          span.selfClosing = true;
          p += 2;
          break;
        }
        TRawAttribute attr;
        attr.begin = wsBegin - start;
        const size_t nameBegin = p;
        while (p < n && src[p] != '=' && !IsXmlSpace(src[p])) ++p;
        attr.name = src.substr(nameBegin, p - nameBegin);
        while (p < n && IsXmlSpace(src[p])) ++p;
        if (p >= n || src[p] != '=') return std::string::npos;
        ++p;
        while (p < n && IsXmlSpace(src[p])) ++p;
        if (p >= n || (src[p] != '"' && src[p] != '\'')) return std::string::npos;
        attr.quote = src[p++];
        attr.valueBegin = p - start;
        p = src.find(attr.quote, p);
        if (p == std::string::npos) return std::string::npos;
        attr.valueEnd = p - start;
        ++p;
        span.attributes.push_back(std::move(attr));
      }
      span.raw = src.substr(start, p - start);
      size_t index = 0;
      for (pugi::xml_attribute a : node.attributes()) {
        if (index >= span.attributes.size() || span.attributes[index].name != a.name())
          return std::string::npos;
        span.attributes[index++].value = a.value();
      }
      if (index != span.attributes.size()) return std::string::npos;
      end = p;
      if (!span.selfClosing) {
        for (pugi::xml_node child : node.children()) {
          end = Scan(child, end, src);
          if (end == std::string::npos) return end;
        }
        if (src.compare(end, 2, "</") != 0) return std::string::npos;
        const size_t close = src.find('>', end);
        if (close == std::string::npos) return std::string::npos;
        span.rawEnd = src.substr(end, close + 1 - end);
        end = close + 1;
      }
      break;
    }
    case pugi::node_pcdata:
      start = at;
      end = std::min(src.find('<', at), n);
      span.value = node.value();
      span.raw = src.substr(start, end - start);
      break;
    case pugi::node_cdata:
    case pugi::node_comment: {
      const bool cdata = node.type() == pugi::node_cdata;
      const char* open = cdata ? "<![CDATA[" : "<!--";
      const char* close = cdata ? "]]>" : "-->";
      const size_t openSize = std::strlen(open);
      if (at < openSize || src.compare(at - openSize, openSize, open) != 0)
        return std::string::npos;
      start = at - openSize;
      end = src.find(close, at);
      if (end == std::string::npos) return end;
      end += 3;
      span.value = node.value();
      span.raw = src.substr(start, end - start);
      break;
    }
    case pugi::node_pi:
    case pugi::node_declaration:
      if (at < 2 || src.compare(at - 2, 2, "<?") != 0) return std::string::npos;
      start = at - 2;
      end = src.find("?>", at);
      if (end == std::string::npos) return end;
      end += 2;
      span.name = node.name();
      span.value = node.value();
      for (pugi::xml_attribute a : node.attributes())
        span.attributes.push_back({a.name(), a.value(), 0, 0, 0, '"'});
      span.raw = src.substr(start, end - start);
      break;
    case pugi::node_doctype:
      start = src.rfind("<!DOCTYPE", at);
      end = src.find('>', at + std::strlen(node.value()));
      if (start == std::string::npos || end == std::string::npos) return std::string::npos;
      ++end;
      span.value = node.value();
      span.raw = src.substr(start, end - start);
      break;
    default:
      return std::string::npos;
  }
  if (start < from) return std::string::npos;
  span.gapBefore = src.substr(from, start - from);
  spans[node.internal_object()] = std::move(span);
  return end;
}

std::string TWrenProject::TDocument::Write() const {
  std::string out = bom;
  bool first = true;
  for (pugi::xml_node child : xml.children()) {
    if (!SpanOf(child) && !first) out += "\n";
    WriteNode(child, out);
    first = false;
  }
  out += trailing;
  return out;
}

void TWrenProject::TDocument::WriteNode(pugi::xml_node node, std::string& out) const {
  const TSpan* span = SpanOf(node);
  if (span) out += span->gapBefore;
  const std::string value = node.value();
  switch (node.type()) {
    case pugi::node_element:
      WriteElement(node, span, out);
      break;
    case pugi::node_pcdata:
      out += span && span->value == value ? span->raw : EscapeXml(value);
      break;
    case pugi::node_cdata:
      if (span && span->value == value) {
        out += span->raw;
      } else {
        // "]]>" cannot stand inside a section: end it and start another between ']]' and '>'.
        std::string text = value;
        for (size_t pos = 0; (pos = text.find("]]>", pos)) != std::string::npos; pos += 15)
          text.replace(pos, 3, "]]]]><![CDATA[>");
        out += "<![CDATA[" + text + "]]>";
      }
      break;
    case pugi::node_comment:
      out += span && span->value == value ? span->raw : "<!--" + value + "-->";
      break;
    case pugi::node_pi:
      if (span && span->name == node.name() && span->value == value)
        out += span->raw;
      else
        out += std::string("<?") + node.name() + (value.empty() ? "" : " " + value) + "?>";
      break;
    case pugi::node_declaration: {
      std::vector<TRawAttribute> now;
      for (pugi::xml_attribute a : node.attributes())
        now.push_back({a.name(), a.value(), 0, 0, 0, '"'});
      bool same = span && now.size() == span->attributes.size();
      for (size_t i = 0; same && i < now.size(); ++i)
        same = now[i].name == span->attributes[i].name && now[i].value == span->attributes[i].value;
      if (same) {
        out += span->raw;
      } else {
        out += std::string("<?") + node.name();
        for (const TRawAttribute& a : now)
          out += " " + a.name + "=\"" + EscapeXml(a.value, '"') + "\"";
        out += "?>";
      }
      break;
    }
    case pugi::node_doctype:
      out += span && span->value == value ? span->raw : "<!DOCTYPE " + value + ">";
      break;
    default:
      break;
  }
}

void TWrenProject::TDocument::WriteElement(pugi::xml_node node, const TSpan* span,
                                           std::string& out) const {
  const bool hasChildren = static_cast<bool>(node.first_child());
  std::string endTag = std::string("</") + node.name() + ">";
  if (!span || span->name != node.name()) {
    out += std::string("<") + node.name();
    for (pugi::xml_attribute a : node.attributes())
      out += std::string(" ") + a.name() + "=\"" + EscapeXml(a.value(), '"') + "\"";
    if (!hasChildren) {
      out += "/>";
      return;
    }
    out += ">";
  } else {
    std::string tag = PatchStartTag(node, *span);
    if (span->selfClosing && !hasChildren) {
      out += tag;
      return;
    }
    if (span->selfClosing) {
      // The element gained content: "<Item />" becomes "<Item>...</Item>".
      tag.erase(tag.rfind('/'));
      while (!tag.empty() && IsXmlSpace(tag.back())) tag.pop_back();
      tag += ">";
    } else {
      endTag = span->rawEnd;
    }
    out += tag;
  }
  for (pugi::xml_node child : node.children()) WriteNode(child, out);
  out += endTag;
}

// The original start tag with changed attribute values replaced in place, removed attributes cut
// out and new ones added after the last.
std::string TWrenProject::TDocument::PatchStartTag(pugi::xml_node node, const TSpan& span) const {
  std::string tag = span.raw;
  std::string added;
  for (pugi::xml_attribute a : node.attributes()) {
    bool known = false;
    for (const TRawAttribute& raw : span.attributes) known = known || raw.name == a.name();
    if (!known)
      added += std::string(" ") + a.name() + "=\"" + EscapeXml(a.value(), '"') + "\"";
  }
  if (!added.empty()) {
    const size_t pos =
        span.attributes.empty() ? 1 + span.name.size() : span.attributes.back().valueEnd + 1;
    tag.insert(pos, added);
  }
  for (size_t i = span.attributes.size(); i-- > 0;) {
    const TRawAttribute& raw = span.attributes[i];
    pugi::xml_attribute now = node.attribute(raw.name.c_str());
    if (!now)
      tag.erase(raw.begin, raw.valueEnd + 1 - raw.begin);
    else if (raw.value != now.value())
      tag.replace(raw.valueBegin, raw.valueEnd - raw.valueBegin,
                  EscapeXml(now.value(), raw.quote));
  }
  return tag;
}

// The line break and indentation in front of an element; "" when it stands inline.
std::string TWrenProject::TDocument::IndentBefore(pugi::xml_node element) const {
  pugi::xml_node before = element.previous_sibling();
  if (before && IsBlankText(before)) return LastLineOf(before.value());
  if (element.parent().type() == pugi::node_document) {
    const TSpan* span = SpanOf(element);
    return span && HasNewline(span->gapBefore) ? LastLineOf(span->gapBefore) : "\n";
  }
  return "";
}

pugi::xml_node TWrenProject::TDocument::InsertElementAfter(pugi::xml_node anchor,
                                                           const char* name) {
  pugi::xml_node parent = anchor.parent();
  pugi::xml_node before = anchor.previous_sibling();
  const std::string ws = before && IsBlankText(before) ? LastLineOf(before.value()) : "";
  pugi::xml_node element = parent.insert_child_after(name, anchor);
  if (!ws.empty()) parent.insert_child_after(pugi::node_pcdata, anchor).set_value(ws.c_str());
  return element;
}

pugi::xml_node TWrenProject::TDocument::InsertElementBefore(pugi::xml_node anchor,
                                                            const char* name) {
  pugi::xml_node parent = anchor.parent();
  pugi::xml_node before = anchor.previous_sibling();
  const std::string ws = before && IsBlankText(before) ? LastLineOf(before.value()) : "";
  pugi::xml_node element = parent.insert_child_before(name, anchor);
  if (!ws.empty()) parent.insert_child_after(pugi::node_pcdata, element).set_value(ws.c_str());
  return element;
}

// Appends an element after the parent's last element (or comment), indented like it; an empty
// parent gets its first child one indentation step deeper than itself.
pugi::xml_node TWrenProject::TDocument::AppendChildElement(pugi::xml_node parent,
                                                           const char* name) {
  for (pugi::xml_node child = parent.last_child(); child; child = child.previous_sibling())
    if (child.type() != pugi::node_pcdata) return InsertElementAfter(child, name);

  const std::string outer = IndentBefore(parent);
  const bool layout = HasNewline(outer);
  for (pugi::xml_node child = parent.first_child(); child;) {
    pugi::xml_node next = child.next_sibling();
    if (IsBlankText(child)) RemoveNode(child);
    child = next;
  }
  if (layout) parent.append_child(pugi::node_pcdata).set_value((outer + indentUnit).c_str());
  pugi::xml_node element = parent.append_child(name);
  if (layout) parent.append_child(pugi::node_pcdata).set_value(outer.c_str());
  return element;
}

void TWrenProject::TDocument::RemoveNode(pugi::xml_node node) {
  // Freed nodes may be reused for new ones: forget their bytes so nothing stale is written.
  struct TForget : pugi::xml_tree_walker {
    std::unordered_map<const void*, TSpan>* spans;
    bool for_each(pugi::xml_node& n) override {
      spans->erase(n.internal_object());
      return true;
    }
  } forget;
  forget.spans = &spans;
  node.traverse(forget);
  spans.erase(node.internal_object());
  node.parent().remove_child(node);
}

void TWrenProject::TDocument::RemoveElement(pugi::xml_node element) {
  pugi::xml_node before = element.previous_sibling();
  if (before && IsBlankText(before)) RemoveNode(before);
  RemoveNode(element);
}

void TWrenProject::TDocument::SetElementText(pugi::xml_node element, const std::string& text) {
  pugi::xml_node only = element.first_child();
  if (only && !only.next_sibling() &&
      (only.type() == pugi::node_pcdata || only.type() == pugi::node_cdata)) {
    only.set_value(text.c_str());
    return;
  }
  while (pugi::xml_node child = element.first_child()) RemoveNode(child);
  if (!text.empty()) element.append_child(pugi::node_pcdata).set_value(text.c_str());
}

void TWrenProject::TDocument::SyncVariables(pugi::xml_node root,
                                            const std::vector<TWrenProjectVariable>& variables) {
  pugi::xml_node container = root.child("Variables");
  std::vector<pugi::xml_node> elements;
  if (container)
    for (pugi::xml_node e : container.children("Variable")) elements.push_back(e);
  std::vector<bool> used(elements.size(), false);

  for (const TWrenProjectVariable& variable : variables) {
    size_t found = elements.size();
    for (size_t i = 0; i < elements.size() && found == elements.size(); ++i)
      if (!used[i] && SameText(elements[i].attribute("name").value(), variable.name)) found = i;
    if (found < elements.size()) {
      used[found] = true;
      pugi::xml_node e = elements[found];
      if (variable.name != e.attribute("name").value())
        e.attribute("name").set_value(variable.name.c_str());
      if (ElementText(e) != variable.value) SetElementText(e, variable.value);
      continue;
    }
    if (!container) {
      pugi::xml_node actions = root.child("Actions");
      container = actions ? InsertElementBefore(actions, "Variables")
                          : AppendChildElement(root, "Variables");
    }
    pugi::xml_node e = AppendChildElement(container, "Variable");
    e.append_attribute("name").set_value(variable.name.c_str());
    if (!variable.value.empty())
      e.append_child(pugi::node_pcdata).set_value(variable.value.c_str());
  }
  for (size_t i = 0; i < elements.size(); ++i)
    if (!used[i]) RemoveElement(elements[i]);
}

void TWrenProject::TDocument::SyncSteps(pugi::xml_node root,
                                        const std::vector<TWrenProjectStep>& steps) {
  pugi::xml_node container = root.child("Actions");
  if (!container && steps.empty()) return;
  if (!container) container = AppendChildElement(root, "Actions");

  std::vector<pugi::xml_node> wanted;
  std::unordered_map<const TCustomWrenAction*, pugi::xml_node> placed;
  for (const TWrenProjectStep& step : steps) {
    if (!step.action) continue;
    const std::string className =
        step.className.empty() ? step.action->ClassName() : step.className;
    pugi::xml_node element;
    auto it = actionElements.find(step.action.get());
    if (it != actionElements.end() && it->second.parent() == container &&
        SameText(it->second.attribute("class").value(), className))
      element = it->second;
    if (!element || std::find(wanted.begin(), wanted.end(), element) != wanted.end()) {
      element = AppendChildElement(container, "Action");
      element.append_attribute("class").set_value(className.c_str());
    }
    SyncAction(element, className, step);
    wanted.push_back(element);
    placed[step.action.get()] = element;
  }

  // Action elements of steps that are gone.
  std::vector<pugi::xml_node> stale;
  for (pugi::xml_node e : container.children("Action"))
    if (std::find(wanted.begin(), wanted.end(), e) == wanted.end()) stale.push_back(e);
  for (pugi::xml_node e : stale) RemoveElement(e);

  // Put the elements in the order of the steps, each moving with its indentation.
  pugi::xml_node previous;
  for (pugi::xml_node e : wanted) {
    pugi::xml_node expected =
        previous ? previous.next_sibling("Action") : container.child("Action");
    if (expected != e) {
      pugi::xml_node ws = e.previous_sibling();
      if (!IsBlankText(ws)) ws = pugi::xml_node();
      container.insert_move_before(e, expected);
      if (ws) container.insert_move_after(ws, e);
    }
    previous = e;
  }
  actionElements = std::move(placed);
}

void TWrenProject::TDocument::SyncAction(pugi::xml_node element, const std::string& className,
                                         const TWrenProjectStep& step) {
  const TCustomWrenAction& action = *step.action;

  pugi::xml_attribute enabled = element.attribute("enabled");
  if (enabled) {
    if ((std::strcmp(enabled.value(), "false") != 0) != step.enabled)
      enabled.set_value(step.enabled ? "true" : "false");
  } else if (!step.enabled) {
    element.append_attribute("enabled").set_value("false");
  }

  const std::string description = action.GetDescription();
  pugi::xml_attribute stored = element.attribute("description");
  if (stored) {
    if (description == stored.value()) {
      // unchanged, also when written as description=""
    } else if (description.empty()) {
      element.remove_attribute(stored);
    } else {
      stored.set_value(description.c_str());
    }
  } else if (!description.empty()) {
    element.append_attribute("description").set_value(description.c_str());
  }

  // Values at creation: a property the file does not name is written only when it differs.
  std::unique_ptr<TCustomWrenAction> fresh;
  if (factory)
    fresh = factory(className);
  else
    fresh = CreateRegisteredAction(className);

  const TPropertyTable& table = action.GetPublishedProperties();
  std::vector<pugi::xml_node> found(table.size());
  pugi::xml_node lastProperty;
  for (pugi::xml_node p : element.children("Property")) {
    lastProperty = p;
    const TPublishedProperty* prop = FindProperty(table, p.attribute("name").value());
    if (!prop) continue;
    const size_t index = static_cast<size_t>(prop - table.data());
    if (!found[index]) found[index] = p;
  }
  for (size_t i = 0; i < table.size(); ++i) {
    const TPropertyValue value = table[i].get(action);
    if (found[i]) {
      SyncProperty(found[i], table[i], value);
      continue;
    }
    if (fresh && table[i].get(*fresh) == value) continue;
    pugi::xml_node script = element.child("Script");
    pugi::xml_node p = lastProperty ? InsertElementAfter(lastProperty, "Property")
                       : script     ? InsertElementBefore(script, "Property")
                                    : AppendChildElement(element, "Property");
    p.append_attribute("name").set_value(table[i].name.c_str());
    WritePropertyValue(p, table[i], value);
    lastProperty = p;
  }

  for (const TWrenActionScript& script : action.Scripts()) {
    pugi::xml_node e;
    for (pugi::xml_node s : element.children("Script"))
      if (!e && SameText(s.attribute("name").value(), script.name)) e = s;
    if (!e) {
      const TWrenActionScript* initial = fresh ? fresh->GetScriptByName(script.name) : nullptr;
      const std::string initialText = initial ? initial->text : "";
      if (script.text == initialText) continue;
      e = AppendChildElement(element, "Script");
      e.append_attribute("name").set_value(script.name.c_str());
      e.append_attribute("language").set_value(script.language.c_str());
      if (!script.text.empty()) e.append_child(pugi::node_pcdata).set_value(script.text.c_str());
      continue;
    }
    if (ElementText(e) != script.text) SetElementText(e, script.text);
    pugi::xml_attribute language = e.attribute("language");
    if (!SameText(language ? language.value() : "lua", script.language)) {
      if (!language) language = e.append_attribute("language");
      language.set_value(script.language.c_str());
    }
  }
}

// Brings an existing <Property> element in line with the value, touching only what differs.
void TWrenProject::TDocument::SyncProperty(pugi::xml_node element, const TPublishedProperty& prop,
                                           const TPropertyValue& value) {
  if (prop.kind != TPropertyKind::pkStringList) {
    TPropertyValue stored;
    std::string message;
    pugi::xml_node at;
    if (ReadPropertyValue(element, prop, stored, message, at) && stored == value) return;
    SetElementText(element, PropertyValueToString(prop, value));
    return;
  }
  const TStrings& lines = std::get<TStrings>(value);
  std::vector<pugi::xml_node> items;
  for (pugi::xml_node item : element.children("Item")) items.push_back(item);
  for (size_t i = 0; i < std::min(items.size(), lines.size()); ++i)
    if (ElementText(items[i]) != lines[i]) SetElementText(items[i], lines[i]);
  for (size_t i = items.size(); i < lines.size(); ++i) {
    pugi::xml_node item = AppendChildElement(element, "Item");
    if (!lines[i].empty()) item.append_child(pugi::node_pcdata).set_value(lines[i].c_str());
  }
  for (size_t i = lines.size(); i < items.size(); ++i) RemoveElement(items[i]);
}

void TWrenProject::TDocument::WritePropertyValue(pugi::xml_node element,
                                                 const TPublishedProperty& prop,
                                                 const TPropertyValue& value) {
  if (prop.kind == TPropertyKind::pkStringList) {
    SyncProperty(element, prop, value);
    return;
  }
  const std::string text = PropertyValueToString(prop, value);
  if (!text.empty()) element.append_child(pugi::node_pcdata).set_value(text.c_str());
}

namespace {

/// Reads the document into variables and steps; fills the error and answers false on bad input.
class TProjectReader {
 public:
  TProjectReader(const std::string& text, const std::string& file,
                 const TWrenActionFactory& factory, TWrenProjectError& error)
      : lines_(text), file_(file), factory_(factory), error_(error) {}

  bool Read(pugi::xml_node root, std::vector<TWrenProjectVariable>& variables,
            std::vector<TWrenProjectStep>& steps,
            std::unordered_map<const TCustomWrenAction*, pugi::xml_node>& elements) {
    if (!root || std::strcmp(root.name(), "MarrowbyProject") != 0)
      return Fail(root, "", "", "the root element must be <MarrowbyProject>");
    const std::string version = root.attribute("version").value();
    if (version != "1")
      return Fail(root, "", "",
                  version.empty() ? "the project has no version (expected version=\"1\")"
                                  : "unsupported project version '" + version + "' (expected 1)");
    for (pugi::xml_node child : root.children()) {
      if (child.type() != pugi::node_element) continue;
      if (std::strcmp(child.name(), "Variables") == 0) {
        if (!ReadVariables(child, variables)) return false;
      } else if (std::strcmp(child.name(), "Actions") == 0) {
        for (pugi::xml_node e : child.children()) {
          if (e.type() != pugi::node_element) continue;
          if (std::strcmp(e.name(), "Action") != 0)
            return Fail(e, "", "",
                        std::string("unexpected element <") + e.name() + "> in <Actions>");
          TWrenProjectStep step;
          if (!ReadAction(e, step)) return false;
          elements[step.action.get()] = e;
          steps.push_back(std::move(step));
        }
      } else {
        return Fail(child, "", "",
                    std::string("unexpected element <") + child.name() + "> in <MarrowbyProject>");
      }
    }
    return true;
  }

  bool Fail(pugi::xml_node at, const std::string& action, const std::string& property,
            const std::string& message) {
    error_.file = file_;
    error_.line = lines_.LineOf(at ? at.offset_debug() : 0);
    error_.action = action;
    error_.property = property;
    error_.message = message;
    return false;
  }

 private:
  bool ReadVariables(pugi::xml_node container, std::vector<TWrenProjectVariable>& variables) {
    for (pugi::xml_node e : container.children()) {
      if (e.type() != pugi::node_element) continue;
      if (std::strcmp(e.name(), "Variable") != 0)
        return Fail(e, "", "", std::string("unexpected element <") + e.name() + "> in <Variables>");
      const std::string name = e.attribute("name").value();
      if (name.empty()) return Fail(e, "", "", "<Variable> has no name");
      variables.push_back({name, ElementText(e)});
    }
    return true;
  }

  bool ReadAction(pugi::xml_node e, TWrenProjectStep& step) {
    const std::string className = e.attribute("class").value();
    if (className.empty()) return Fail(e, "", "", "<Action> has no class");
    std::unique_ptr<TCustomWrenAction> action = factory_ ? factory_(className) : nullptr;
    if (!action) return Fail(e, className, "", "unknown action class '" + className + "'");

    bool enabled = true;
    if (pugi::xml_attribute a = e.attribute("enabled")) {
      const std::string text = a.value();
      if (text != "true" && text != "false")
        return Fail(e, className, "", "enabled must be true or false, not '" + text + "'");
      enabled = text == "true";
    }
    if (pugi::xml_attribute a = e.attribute("description")) action->SetDescription(a.value());

    const TPropertyTable& table = action->GetPublishedProperties();
    std::vector<std::optional<TPropertyValue>> values(table.size());
    std::vector<pugi::xml_node> where(table.size());
    std::unordered_set<TWrenActionScript*> scriptsSeen;
    for (pugi::xml_node child : e.children()) {
      if (child.type() != pugi::node_element) continue;
      if (std::strcmp(child.name(), "Property") == 0) {
        const std::string name = child.attribute("name").value();
        if (name.empty()) return Fail(child, className, "", "<Property> has no name");
        const TPublishedProperty* prop = FindProperty(table, name);
        if (!prop) return Fail(child, className, name, "unknown property");
        const size_t index = static_cast<size_t>(prop - table.data());
        if (values[index])
          return Fail(child, className, prop->name,
                      "the property is given twice (first on line " +
                          std::to_string(lines_.LineOf(where[index].offset_debug())) + ")");
        TPropertyValue value;
        std::string message;
        pugi::xml_node at;
        if (!ReadPropertyValue(child, *prop, value, message, at))
          return Fail(at, className, prop->name, message);
        values[index] = std::move(value);
        where[index] = child;
      } else if (std::strcmp(child.name(), "Script") == 0) {
        const std::string name = child.attribute("name").value();
        if (name.empty()) return Fail(child, className, "", "<Script> has no name");
        TWrenActionScript* script = action->GetScriptByName(name);
        if (!script) return Fail(child, className, name, "the action has no script of that name");
        const pugi::xml_attribute language = child.attribute("language");
        if (language && !SameText(language.value(), "lua"))
          return Fail(child, className, name,
                      std::string("unsupported script language '") + language.value() +
                          "' (scripts are lua)");
        if (!scriptsSeen.insert(script).second)
          return Fail(child, className, name, "the script is given twice");
        script->text = ElementText(child);
        script->language = "lua";
      } else {
        return Fail(child, className, "",
                    std::string("unexpected element <") + child.name() + "> in an action");
      }
    }

    // Declaration order, whatever the file's order: a setter may depend on an earlier property.
    for (size_t i = 0; i < table.size(); ++i) {
      if (!values[i]) continue;
      try {
        table[i].set(*action, *values[i]);
      } catch (const std::exception& ex) {
        return Fail(where[i], className, table[i].name, ex.what());
      }
    }
    try {
      action->Loaded();
    } catch (const std::exception& ex) {
      return Fail(e, className, "", ex.what());
    }
    step.className = action->ClassName();
    step.action = std::move(action);
    step.enabled = enabled;
    step.line = lines_.LineOf(e.offset_debug());
    return true;
  }

  TLineIndex lines_;
  std::string file_;
  const TWrenActionFactory& factory_;
  TWrenProjectError& error_;
};

}  // namespace

TWrenProject::TWrenProject() = default;
TWrenProject::~TWrenProject() = default;
TWrenProject::TWrenProject(TWrenProject&&) noexcept = default;
TWrenProject& TWrenProject::operator=(TWrenProject&&) noexcept = default;

bool TWrenProject::Load(const std::string& path, const TWrenActionFactory& factory,
                        TWrenProjectError& error) {
  std::string text;
  std::string readError;
  if (!ReadFileBytes(path, text, readError)) {
    *this = TWrenProject();
    error =
        TWrenProjectError{path, 0, "", "", readError.empty() ? "cannot read the file" : readError};
    return false;
  }
  return LoadFromText(text, path, factory, error);
}

bool TWrenProject::LoadFromText(const std::string& text, const std::string& file,
                                const TWrenActionFactory& factory, TWrenProjectError& error) {
  *this = TWrenProject();
  auto doc = std::make_unique<TDocument>();
  pugi::xml_parse_result parsed;
  const size_t bomSize = text.compare(0, 3, kUtf8Bom) == 0 ? 3 : 0;
  if (!doc->Parse(text, parsed)) {
    const TLineIndex lines(text.substr(bomSize));
    error = TWrenProjectError{file, lines.LineOf(parsed.offset), "", "", parsed.description()};
    return false;
  }
  std::vector<TWrenProjectVariable> loadedVariables;
  std::vector<TWrenProjectStep> loadedSteps;
  TProjectReader reader(text.substr(bomSize), file, factory, error);
  if (!reader.Read(doc->xml.document_element(), loadedVariables, loadedSteps, doc->actionElements))
    return false;
  doc->factory = factory;
  fileName = file;
  variables = std::move(loadedVariables);
  steps = std::move(loadedSteps);
  doc_ = std::move(doc);
  return true;
}

std::string TWrenProject::SaveToText() {
  if (!doc_) {
    doc_ = std::make_unique<TDocument>();
    pugi::xml_parse_result parsed;
    doc_->Parse(kNewProjectText, parsed);
  }
  pugi::xml_node root = doc_->xml.document_element();
  doc_->SyncVariables(root, variables);
  doc_->SyncSteps(root, steps);
  return doc_->Write();
}

bool TWrenProject::Save(const std::string& path, std::string& error) {
  return WriteFileAtomic(path, SaveToText(), error);
}

}  // namespace wren
