#include "WrenXmlDocument.h"

#include <gtest/gtest.h>

namespace wren {
namespace {

TWrenXmlDocument ParseGood(const std::string& text) {
  TWrenXmlDocument doc;
  TXmlParseError error;
  EXPECT_TRUE(doc.Parse(text, error)) << error.message;
  return doc;
}

TEST(WrenXmlDocument, WritesUnchangedDocumentsByteForByte) {
  const char* cases[] = {
      "<?xml version='1.0'?>\r\n<!DOCTYPE r>\r\n<?pi x?>\r\n<r\n   a = \"1\"\tb='&apos;'>"
      "<!-- c --><![CDATA[x < y]]>&amp;&#65;<e/><e /><e></e ></r >\r\n\r\n",
      "\xEF\xBB\xBF<r>no final newline</r>",
      "<r>\n\t<a>\n\t\t<b x=\"&quot;\"/>\n\t</a>\n</r>\n<!-- after -->\n",
  };
  for (const char* text : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(ParseGood(text).Write(), text);
  }
}

TEST(WrenXmlDocument, EditsKeepTheLayoutAroundThem) {
  const std::string text =
      "<r>\r\n\t<a k='v' n=\"1\">old</a>\r\n\t<b/>\r\n\t<gone/>\r\n\t<empty></empty>\r\n</r>\r\n";
  TWrenXmlDocument doc = ParseGood(text);
  pugi::xml_node r = doc.xml.document_element();
  r.child("a").attribute("k").set_value("it's");
  r.child("a").remove_attribute("n");
  r.child("a").append_attribute("m").set_value("<");
  doc.SetElementText(r.child("a"), "new & more");
  doc.RemoveElement(r.child("gone"));
  doc.InsertElementAfter(r.child("b"), "c").append_attribute("x").set_value("1");
  doc.AppendChildElement(r.child("empty"), "item");
  doc.SetElementText(r.child("b"), "filled");
  EXPECT_EQ(doc.Write(),
            "<r>\r\n\t<a k='it&apos;s' m=\"&lt;\">new &amp; more</a>\r\n\t<b>filled</b>\r\n"
            "\t<c x=\"1\"/>\r\n\t<empty>\r\n\t\t<item/>\r\n\t</empty>\r\n</r>\r\n");
}

std::string Repeat(const std::string& part, size_t times) {
  std::string text;
  for (size_t i = 0; i < times; ++i) text += part;
  return text;
}

TEST(WrenXmlDocument, RejectsWhatTheParserLetsThroughAndNestingTooDeep) {
  const struct {
    std::string text;
    std::string message;  // a part of it
    ptrdiff_t offset;
  } cases[] = {
      {"<r/>\n<s/>\n", "a second root element <s> after <r>", 6},
      {"<r/>\n<!-- c -->\n  tail\n", "text outside the root element", 18},
      {"lead <r/>", "text outside the root element", 0},
      // The root's end is found down its last children, whatever they are.
      {"<r a='>'><e><![CDATA[ ]]></e><!-- x --></r> > t", "text outside the root element", 44},
      {"<r>\n<e b=\"/>\"/>\n</r>\n<?pi a?>x", "text outside the root element", 29},
      {"<r><e/>text</r >\n\n\t>", "text outside the root element", 19},
      {"<r><e a=\"1\" b=\"2\" a=\"3\"/></r>", "attribute 'a' given twice in <e>", 4},
      {std::string("<r>a\0b</r>", 10), "NUL byte", 4},
      {"<r>" + Repeat("<e>", 100) + Repeat("</e>", 100) + "</r>", "nested more than 100 deep",
       3 + 99 * 3 + 1},
      // Deep enough to exhaust the stack of any recursive walk, closed and unclosed.
      {Repeat("<e>", 200000) + Repeat("</e>", 200000), "nested more than 100 deep", 100 * 3 + 1},
      {Repeat("<e a='1'>", 200000), "", -1},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text.substr(0, 60));
    TWrenXmlDocument doc;
    TXmlParseError error;
    EXPECT_FALSE(doc.Parse(c.text, error));
    // Reading without recording bytes judges alike.
    pugi::xml_document xml;
    TXmlParseError readError;
    EXPECT_FALSE(ParseXml(c.text, xml, readError));
    EXPECT_EQ(readError.message, error.message);
    EXPECT_EQ(readError.offset, error.offset);
    EXPECT_NE(error.message.find(c.message), std::string::npos) << error.message;
    if (c.offset >= 0) {
      EXPECT_EQ(error.offset, c.offset);
    }
  }
  // What is outside the root but allowed there.
  for (const char* text : {"<?xml version='1.0'?>\n<!DOCTYPE r>\n<r/>\n<!-- c -->\n<?p?>\n",
                           "<r><e>a &gt; b</e><![CDATA[>]]></r>"}) {
    pugi::xml_document xml;
    TXmlParseError error;
    EXPECT_TRUE(ParseXml(text, xml, error)) << text << ": " << error.message;
  }
  // Exactly as deep as allowed still parses and writes back.
  const std::string deepest = Repeat("<e>", 100) + Repeat("</e>", 100);
  EXPECT_EQ(ParseGood(deepest).Write(), deepest);

  // An element cut out of a document counts its depth there.
  for (const unsigned depth : {0u, 1u, 2u, 50u}) {
    SCOPED_TRACE(depth);
    pugi::xml_document xml;
    TXmlParseError error;
    const std::string allowed = Repeat("<e>", 100 - depth) + Repeat("</e>", 100 - depth);
    EXPECT_TRUE(ParseXml(allowed, xml, error, depth)) << error.message;
    EXPECT_FALSE(ParseXml("<r>" + allowed + "</r>", xml, error, depth));
    EXPECT_EQ(error.message, "elements nested more than 100 deep");
    EXPECT_EQ(error.offset, static_cast<ptrdiff_t>(3 * (100 - depth) + 1));
  }
}

TEST(WrenXmlDocument, LineCounterCountsFromOneInAnyOrder) {
  TLineCounter lines("a\nb\r\n\nc");
  // Forward, then back to an earlier offset, then past the end.
  const std::pair<ptrdiff_t, int> asks[] = {{-1, 0}, {0, 1}, {1, 1}, {2, 2}, {6, 4},
                                            {5, 3}, {1, 1}, {6, 4}, {99, 4}};
  for (const auto& [offset, line] : asks) EXPECT_EQ(lines.LineOf(offset), line) << offset;
}

}  // namespace
}  // namespace wren
