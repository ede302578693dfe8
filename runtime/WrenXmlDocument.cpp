#include "WrenXmlDocument.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <unordered_set>

#include "WrenUtils.h"

namespace wren {

namespace {

// Everything the file holds becomes a node, so each byte of it can be traced back to one node.
// Line ends are kept as written (no parse_eol) and attribute whitespace is left alone.
constexpr unsigned kParseOptions = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_pi |
                                   pugi::parse_comments | pugi::parse_declaration |
                                   pugi::parse_doctype | pugi::parse_ws_pcdata;

constexpr char kUtf8Bom[] = "\xEF\xBB\xBF";

// Deeper nesting than any sane document needs; it also bounds the recursion of scanning and
// writing, so no input can exhaust the stack.
constexpr unsigned kMaxDepth = 100;

bool HasNewline(const std::string& text) { return text.find('\n') != std::string::npos; }

/// The last line break of a run of whitespace and the indentation after it ("\r\n    ");
/// the run itself when it holds no line break.
std::string LastLineOf(const std::string& ws) {
  size_t pos = ws.rfind('\n');
  if (pos == std::string::npos) return ws;
  if (pos > 0 && ws[pos - 1] == '\r') --pos;
  return ws.substr(pos);
}


}  // namespace

bool IsBlank(const char* text) {
  for (; *text; ++text)
    if (!IsXmlSpace(*text)) return false;
  return true;
}

bool IsBlankText(pugi::xml_node node) {
  return node.type() == pugi::node_pcdata && IsBlank(node.value());
}

/// The text of an element: its text and CDATA children joined.
std::string ElementText(pugi::xml_node element) {
  const pugi::xml_node first = element.first_child();
  if (first && !first.next_sibling() &&
      (first.type() == pugi::node_pcdata || first.type() == pugi::node_cdata))
    return first.value();  // the usual case, without growing a string
  std::string text;
  for (pugi::xml_node child : element.children())
    if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
      text += child.value();
  return text;
}


int TLineCounter::LineOf(ptrdiff_t offset) {
  if (offset < 0) return 0;
  const size_t to = std::min(static_cast<size_t>(offset), text_.size());
  if (to < at_) {
    // Back to an earlier node (an error naming where something was first given): count afresh.
    at_ = 0;
    line_ = 1;
  }
  const char* p = text_.data() + at_;
  const char* const end = text_.data() + to;
  while (p < end && (p = static_cast<const char*>(std::memchr(p, '\n', static_cast<size_t>(end - p))))) {
    ++line_;
    ++p;
  }
  at_ = to;
  return line_;
}

namespace {

/// The first attribute of an element named like one before it; a null attribute when none is.
pugi::xml_attribute RepeatedAttribute(pugi::xml_node element) {
  // Elements mostly carry a few attributes: comparing each with those before it is cheaper than
  // a hash set then, and the set bounds the work for an element with very many.
  constexpr int kFew = 8;
  int count = 0;
  for (pugi::xml_attribute a = element.first_attribute(); a && count <= kFew;
       a = a.next_attribute(), ++count) {
    for (pugi::xml_attribute b = element.first_attribute(); b != a; b = b.next_attribute())
      if (std::strcmp(a.name(), b.name()) == 0) return a;
  }
  if (count <= kFew) return {};
  std::unordered_set<std::string_view> names;
  for (pugi::xml_attribute a : element.attributes())
    if (!names.insert(a.name()).second) return a;
  return {};
}

// What the parser lets through but XML forbids: a second root element and an attribute given
// twice; and nesting too deep to walk safely.
bool CheckTree(const pugi::xml_document& xml, unsigned above, TXmlParseError& error) {
  pugi::xml_node root;
  for (pugi::xml_node child : xml.children()) {
    if (child.type() != pugi::node_element) continue;
    if (root) {
      error.message = std::string("a second root element <") + child.name() + "> after <" +
                      root.name() + "> (a document has one)";
      error.offset = child.offset_debug();
      return false;
    }
    root = child;
  }

  // pugixml's own walk is iterative, so the depth can be measured before anything recurses.
  struct TChecker : pugi::xml_tree_walker {
    TXmlParseError* error = nullptr;
    unsigned above = 0;
    bool for_each(pugi::xml_node& node) override {
      if (static_cast<unsigned>(depth()) + above >= kMaxDepth) {
        error->message = "elements nested more than " + std::to_string(kMaxDepth) + " deep";
        error->offset = node.offset_debug();
        return false;
      }
      if (node.type() != pugi::node_element || !node.first_attribute() ||
          !node.first_attribute().next_attribute())
        return true;
      if (const pugi::xml_attribute twice = RepeatedAttribute(node)) {
        error->message = std::string("attribute '") + twice.name() + "' given twice in <" +
                         node.name() + ">";
        error->offset = node.offset_debug();
        return false;
      }
      return true;
    }
  } checker;
  checker.error = &error;
  checker.above = above;
  return const_cast<pugi::xml_document&>(xml).traverse(checker);
}

/// Reads a start tag from its '<' at start: where it ends (npos when it cannot be followed),
/// whether it closes itself, and with a span, the place of each attribute.
size_t ScanStartTag(std::string_view src, size_t start, size_t nameSize, bool& selfClosing,
                    TSpan* span) {
  const size_t n = src.size();
  size_t p = start + 1 + nameSize;
  selfClosing = false;
  while (true) {
    const size_t wsBegin = p;
    while (p < n && IsXmlSpace(src[p])) ++p;
    if (p >= n) return std::string::npos;
    if (src[p] == '>') return p + 1;
    if (src[p] == '/') {
      if (p + 1 >= n || src[p + 1] != '>') return std::string::npos;
      selfClosing = true;
      return p + 2;
    }
    const size_t nameBegin = p;
    while (p < n && src[p] != '=' && !IsXmlSpace(src[p])) ++p;
    const size_t nameEnd = p;
    while (p < n && IsXmlSpace(src[p])) ++p;
    if (p >= n || src[p] != '=') return std::string::npos;
    ++p;
    while (p < n && IsXmlSpace(src[p])) ++p;
    if (p >= n || (src[p] != '"' && src[p] != '\'')) return std::string::npos;
    const char quote = src[p++];
    const size_t valueBegin = p;
    p = src.find(quote, p);
    if (p == std::string::npos) return p;
    if (span) {
      TRawAttribute attr;
      attr.begin = wsBegin - start;
      attr.name = std::string(src.substr(nameBegin, nameEnd - nameBegin));
      attr.quote = quote;
      attr.valueBegin = valueBegin - start;
      attr.valueEnd = p - start;
      span->attributes.push_back(std::move(attr));
    }
    ++p;
  }
}

/// Where a node's bytes begin; npos when they cannot be found.
size_t NodeBegin(pugi::xml_node node, std::string_view src) {
  const ptrdiff_t offset = node.offset_debug();
  if (offset < 0) return std::string::npos;
  const size_t at = static_cast<size_t>(offset);
  std::string_view open;
  switch (node.type()) {
    case pugi::node_element: open = "<"; break;
    case pugi::node_pcdata: return at;
    case pugi::node_cdata: open = "<![CDATA["; break;
    case pugi::node_comment: open = "<!--"; break;
    case pugi::node_pi:
    case pugi::node_declaration: open = "<?"; break;
    case pugi::node_doctype: return src.rfind("<!DOCTYPE", at);
    default: return std::string::npos;
  }
  if (at < open.size() || src.substr(at - open.size(), open.size()) != open)
    return std::string::npos;
  return at - open.size();
}

/// One past a node's last byte; npos when it cannot be found. An element is followed down its
/// last children only.
size_t NodeEnd(pugi::xml_node node, std::string_view src) {
  const size_t start = NodeBegin(node, src);
  if (start == std::string::npos) return start;
  const auto after = [&src](size_t from, std::string_view close) {
    const size_t at = src.find(close, from);
    return at == std::string::npos ? at : at + close.size();
  };
  const size_t at = static_cast<size_t>(node.offset_debug());
  switch (node.type()) {
    case pugi::node_element: {
      bool selfClosing = false;
      size_t end = ScanStartTag(src, start, std::strlen(node.name()), selfClosing, nullptr);
      if (end == std::string::npos || selfClosing) return end;
      if (pugi::xml_node last = node.last_child()) end = NodeEnd(last, src);
      if (end == std::string::npos || src.substr(end, 2) != "</") return std::string::npos;
      return after(end, ">");
    }
    case pugi::node_pcdata: return std::min(src.find('<', at), src.size());
    case pugi::node_cdata: return after(at, "]]>");
    case pugi::node_comment: return after(at, "-->");
    case pugi::node_pi:
    case pugi::node_declaration: return after(at, "?>");
    case pugi::node_doctype: return after(at + std::strlen(node.value()), ">");
    default: return std::string::npos;
  }
}

// The parser skips text beside the root element without a word; XML forbids it.
bool CheckOutsideRoot(const pugi::xml_document& xml, std::string_view src,
                      TXmlParseError& error) {
  size_t pos = 0;
  for (pugi::xml_node child : xml.children()) {
    const size_t begin = NodeBegin(child, src);
    const size_t end = begin == std::string::npos ? begin : NodeEnd(child, src);
    if (end == std::string::npos || begin < pos) return true;  // nothing to measure by
    if (const size_t stray = src.substr(pos, begin - pos).find_first_not_of(" \t\r\n");
        stray != std::string::npos) {
      error.message = "text outside the root element";
      error.offset = static_cast<ptrdiff_t>(pos + stray);
      return false;
    }
    pos = end;
  }
  if (const size_t stray = src.substr(pos).find_first_not_of(" \t\r\n");
      stray != std::string::npos) {
    error.message = "text outside the root element";
    error.offset = static_cast<ptrdiff_t>(pos + stray);
    return false;
  }
  return true;
}

}  // namespace

bool ParseXml(std::string_view text, pugi::xml_document& xml, TXmlParseError& error,
              unsigned depth, std::string* scratch) {
  // The parser reads C strings: a NUL would silently end a value or the document.
  if (const size_t nul = text.find('\0'); nul != std::string::npos) {
    error.message = "a NUL byte is not allowed in XML";
    error.offset = static_cast<ptrdiff_t>(nul);
    return false;
  }
  pugi::xml_parse_result result;
  if (scratch) {
    scratch->assign(text);
    result = xml.load_buffer_inplace(scratch->data(), scratch->size(), kParseOptions,
                                     pugi::encoding_utf8);
  } else {
    result = xml.load_buffer(text.data(), text.size(), kParseOptions, pugi::encoding_utf8);
  }
  if (!result) {
    error.message = result.description();
    error.offset = result.offset;
    return false;
  }
  return CheckTree(xml, depth, error) && CheckOutsideRoot(xml, text, error);
}

bool TWrenXmlDocument::Parse(const std::string& text, TXmlParseError& error) {
  std::string_view src = text;
  if (src.substr(0, 3) == kUtf8Bom) {
    bom_ = kUtf8Bom;
    src.remove_prefix(3);
  }
  if (!ParseXml(src, xml, error)) return false;

  size_t pos = 0;
  for (pugi::xml_node child : xml.children()) {
    pos = Scan(child, pos, src);
    if (pos == std::string::npos) break;
  }
  if (pos == std::string::npos) {
    // Some node could not be traced to its bytes: write everything afresh rather than guess.
    spans_.clear();
    trailing_ = "\n";
  } else {
    trailing_ = std::string(src.substr(pos));
  }

  // The indentation step of the file, taken from the first child of the root.
  pugi::xml_node root = xml.document_element();
  for (pugi::xml_node child = root.first_child(); child; child = child.next_sibling()) {
    if (child.type() != pugi::node_element) continue;
    pugi::xml_node before = child.previous_sibling();
    if (before && IsBlankText(before)) {
      std::string line = LastLineOf(before.value());
      size_t indent = line.find_first_not_of("\r\n");
      if (HasNewline(line) && indent != std::string::npos) indentUnit_ = line.substr(indent);
    }
    break;
  }
  return true;
}

// Records the bytes of a node that starts at or after `from`; answers where it ends, npos when
// the node cannot be located.
size_t TWrenXmlDocument::Scan(pugi::xml_node node, size_t from, std::string_view src) {
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
      const size_t p = ScanStartTag(src, start, span.name.size(), span.selfClosing, &span);
      if (p == std::string::npos) return p;
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
  spans_[node.internal_object()] = std::move(span);
  return end;
}

std::string TWrenXmlDocument::Write() const {
  std::string out = bom_;
  bool first = true;
  for (pugi::xml_node child : xml.children()) {
    if (!SpanOf(child) && !first) out += "\n";
    WriteNode(child, out);
    first = false;
  }
  out += trailing_;
  return out;
}

void TWrenXmlDocument::WriteNode(pugi::xml_node node, std::string& out) const {
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

void TWrenXmlDocument::WriteElement(pugi::xml_node node, const TSpan* span,
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
std::string TWrenXmlDocument::PatchStartTag(pugi::xml_node node, const TSpan& span) const {
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
std::string TWrenXmlDocument::IndentBefore(pugi::xml_node element) const {
  pugi::xml_node before = element.previous_sibling();
  if (before && IsBlankText(before)) return LastLineOf(before.value());
  if (element.parent().type() == pugi::node_document) {
    const TSpan* span = SpanOf(element);
    return span && HasNewline(span->gapBefore) ? LastLineOf(span->gapBefore) : "\n";
  }
  return "";
}

pugi::xml_node TWrenXmlDocument::InsertElementAfter(pugi::xml_node anchor,
                                                           const char* name) {
  pugi::xml_node parent = anchor.parent();
  pugi::xml_node before = anchor.previous_sibling();
  const std::string ws = before && IsBlankText(before) ? LastLineOf(before.value()) : "";
  pugi::xml_node element = parent.insert_child_after(name, anchor);
  if (!ws.empty()) parent.insert_child_after(pugi::node_pcdata, anchor).set_value(ws.c_str());
  return element;
}

pugi::xml_node TWrenXmlDocument::InsertElementBefore(pugi::xml_node anchor,
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
pugi::xml_node TWrenXmlDocument::AppendChildElement(pugi::xml_node parent,
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
  if (layout) parent.append_child(pugi::node_pcdata).set_value((outer + indentUnit_).c_str());
  pugi::xml_node element = parent.append_child(name);
  if (layout) parent.append_child(pugi::node_pcdata).set_value(outer.c_str());
  return element;
}

void TWrenXmlDocument::RemoveNode(pugi::xml_node node) {
  // Freed nodes may be reused for new ones: forget their bytes so nothing stale is written.
  struct TForget : pugi::xml_tree_walker {
    std::unordered_map<const void*, TSpan>* spans;
    bool for_each(pugi::xml_node& n) override {
      spans->erase(n.internal_object());
      return true;
    }
  } forget;
  forget.spans = &spans_;
  node.traverse(forget);
  spans_.erase(node.internal_object());
  node.parent().remove_child(node);
}

void TWrenXmlDocument::RemoveElement(pugi::xml_node element) {
  pugi::xml_node before = element.previous_sibling();
  if (before && IsBlankText(before)) RemoveNode(before);
  RemoveNode(element);
}

void TWrenXmlDocument::SetElementText(pugi::xml_node element, const std::string& text) {
  pugi::xml_node only = element.first_child();
  if (only && !only.next_sibling() &&
      (only.type() == pugi::node_pcdata || only.type() == pugi::node_cdata)) {
    only.set_value(text.c_str());
    return;
  }
  while (pugi::xml_node child = element.first_child()) RemoveNode(child);
  if (!text.empty()) element.append_child(pugi::node_pcdata).set_value(text.c_str());
}

}  // namespace wren
