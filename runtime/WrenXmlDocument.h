// A byte-faithful XML document: every node remembers the bytes it was read from, so writing an
// unchanged document gives back the same bytes and an edited one changes only what was edited.
#pragma once

#include <cstddef>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace wren {

/// Inline: parsing and checking ask it of nearly every byte.
inline bool IsXmlSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }
/// True when the text is empty or only XML whitespace.
bool IsBlank(const char* text);
/// A text node holding only whitespace.
bool IsBlankText(pugi::xml_node node);
/// The text of an element: its text and CDATA children joined.
std::string ElementText(pugi::xml_node element);

/// Line numbers from byte offsets, counted on from the offset asked for last: asking in file
/// order reads the text once and keeps no table (the text must outlive the counter).
class TLineCounter {
 public:
  explicit TLineCounter(std::string_view text) : text_(text) {}
  /// 1-based line of the byte at offset; 0 for a negative offset.
  int LineOf(ptrdiff_t offset);

 private:
  std::string_view text_;
  size_t at_ = 0;  // counted up to here
  int line_ = 1;   // the line at_ is on
};

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

/// Why text is not a well-formed document; offset counts bytes after a byte-order mark.
struct TXmlParseError {
  std::string message;
  ptrdiff_t offset = 0;
};

/// Parses text for reading only, without recording any bytes: the same checks as
/// TWrenXmlDocument::Parse, at a fraction of the cost. The text must not begin with a byte-order
/// mark; error offsets count bytes of the text. For an element cut out of a bigger document,
/// `depth` is how deep it stood there (0 for the root), so that nesting is limited as in the whole.
/// With a scratch string, the tree is parsed from a copy of the text there, which must then
/// outlive the tree: parsing many small texts in turn allocates no buffer for each.
bool ParseXml(std::string_view text, pugi::xml_document& xml, TXmlParseError& error,
              unsigned depth = 0, std::string* scratch = nullptr);

/// A parsed XML document with the original bytes of every node, and editing operations that
/// keep the surrounding layout (line ends, indentation, quotes).
class TWrenXmlDocument {
 public:
  pugi::xml_document xml;

  /// Parses the text (a UTF-8 byte-order mark is kept aside) and records the bytes of each node.
  /// False on malformed XML, including what the parser itself lets through (text or a second
  /// element after the root, an attribute given twice, a NUL byte) and nesting deeper than
  /// any document needs.
  bool Parse(const std::string& text, TXmlParseError& error);
  std::string Write() const;

  pugi::xml_node AppendChildElement(pugi::xml_node parent, const char* name);
  pugi::xml_node InsertElementAfter(pugi::xml_node anchor, const char* name);
  pugi::xml_node InsertElementBefore(pugi::xml_node anchor, const char* name);
  /// Removes an element with the indentation in front of it.
  void RemoveElement(pugi::xml_node element);
  void RemoveNode(pugi::xml_node node);
  void SetElementText(pugi::xml_node element, const std::string& text);
  std::string IndentBefore(pugi::xml_node element) const;

  /// The bytes a node was read from; nullptr for a node made since.
  const TSpan* SpanOf(pugi::xml_node node) const {
    auto it = spans_.find(node.internal_object());
    return it == spans_.end() ? nullptr : &it->second;
  }

 private:
  size_t Scan(pugi::xml_node node, size_t from, std::string_view src);
  void WriteNode(pugi::xml_node node, std::string& out) const;
  void WriteElement(pugi::xml_node node, const TSpan* span, std::string& out) const;
  std::string PatchStartTag(pugi::xml_node node, const TSpan& span) const;

  std::string bom_;
  std::string trailing_;  // bytes after the last top-level node
  std::unordered_map<const void*, TSpan> spans_;
  std::string indentUnit_ = "  ";
};

}  // namespace wren
