#include "WrenProject.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {
namespace {

enum class TMode { mdFast, mdSlow, mdSafe };

/// An action with one property of each kind and a script.
class TTestAction : public TCustomWrenAction {
 public:
  TTestAction() { AddScript("OnRun"); }
  static std::string StaticClassName() { return "TTestAction"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return "Test"; }
  bool Execute() override { return true; }
  static const TPropertyTable& ClassProperties() {
    static const TPropertyTable table = ChainProperties(
        TCustomWrenAction::ClassProperties(),
        {StringProperty("Name", &TTestAction::name), BoolProperty("Force", &TTestAction::force),
         IntProperty("Count", &TTestAction::count),
         EnumProperty("Mode", &TTestAction::mode, {"mdFast", "mdSlow", "mdSafe"}),
         StringListProperty("References", &TTestAction::references)});
    return table;
  }
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string name;
  bool force = false;
  int32_t count = 5;
  TMode mode = TMode::mdFast;
  TStrings references;
};

/// B is kept only while A is set, as a setter that depends on an earlier property.
class TOrderAction : public TCustomWrenAction {
 public:
  static std::string StaticClassName() { return "TOrderAction"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return "Order"; }
  bool Execute() override { return true; }
  bool GetA() const { return a_; }
  void SetA(bool value) { a_ = value; }
  std::string GetB() const { return b_; }
  void SetB(const std::string& value) {
    if (a_) b_ = value;
  }
  static const TPropertyTable& ClassProperties() {
    static const TPropertyTable table =
        ChainProperties(TCustomWrenAction::ClassProperties(),
                        {BoolProperty("A", &TOrderAction::GetA, &TOrderAction::SetA),
                         StringProperty("B", &TOrderAction::GetB, &TOrderAction::SetB)});
    return table;
  }
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

 private:
  bool a_ = false;
  std::string b_;
};

std::unique_ptr<TCustomWrenAction> Factory(const std::string& name) {
  if (SameText(name, TTestAction::StaticClassName())) return std::make_unique<TTestAction>();
  if (SameText(name, TOrderAction::StaticClassName())) return std::make_unique<TOrderAction>();
  return nullptr;
}

TTestAction& TestAction(TWrenProject& project, size_t index) {
  return dynamic_cast<TTestAction&>(*project.steps.at(index).action);
}

std::string Replace(std::string text, const std::string& from, const std::string& to) {
  const size_t pos = text.find(from);
  EXPECT_NE(pos, std::string::npos) << from;
  if (pos != std::string::npos) text.replace(pos, from.size(), to);
  return text;
}

std::string ToCrlf(const std::string& text) {
  std::string out;
  for (char c : text) out += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return out;
}

// Odd layout on purpose: comments everywhere, tabs, uneven indentation, single quotes, entities,
// every way of writing an empty item, CDATA, and text after the root.
const std::string kOddProject =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!-- build of the core -->\n"
    "<MarrowbyProject   version='1' >\n"
    "\t<Variables>\n"
    "     <Variable name=\"OUT\">bin &amp; obj</Variable>\n"
    "\t</Variables>\n"
    "  <Actions>\n"
    "      <!-- first step -->\n"
    "    <Action class=\"TTestAction\" description=\"copy &quot;core&quot;\" >\n"
    "      <Property name=\"name\">a &amp; b &lt;c&gt; &#65;</Property>\n"
    "        <Property name=\"Force\">true</Property>\n"
    "      <Property name=\"References\">\n"
    "        <Item>x.dll</Item>\n"
    "        <Item/>\n"
    "        <Item></Item>\n"
    "        <Item />\n"
    "      </Property>\n"
    "      <Script name=\"OnRun\" language=\"lua\"><![CDATA[if a < b then return 1 "
    "end]]></Script>\n"
    "    </Action>\n"
    "    <Action class=\"TTestAction\" enabled=\"false\"/>\n"
    "  </Actions>\n"
    "</MarrowbyProject>\n"
    "<!-- end -->\n";

TEST(WrenProject, LoadsAndSavesUnchangedProjectsByteForByte) {
  struct TCase {
    const char* label;
    std::string text;
  };
  const TCase cases[] = {
      {"odd layout", kOddProject},
      {"CRLF line ends", ToCrlf(kOddProject)},
      {"byte-order mark, no declaration, no final newline",
       "\xEF\xBB\xBF<MarrowbyProject version=\"1\"><Actions><Action class=\"TTestAction\">"
       "<Property name=\"Mode\">MDSLOW</Property></Action></Actions></MarrowbyProject>"},
      {"doctype, instructions, spacing inside tags",
       "<?xml version='1.0'?>\n<!DOCTYPE MarrowbyProject>\n<?editor folded?>\n<MarrowbyProject\n"
       "   version = \"1\"><Actions><Action class=\"TTestAction\"\n description='it&apos;s'>"
       "<?mark x?><Property name=\"Name\" >x&#x20;y</Property "
       "></Action></Actions></MarrowbyProject >"
       "\n\n"},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.label);
    TWrenProject project;
    TWrenProjectError error;
    ASSERT_TRUE(project.LoadFromText(c.text, "p.mbproj", Factory, error)) << error.ToString();
    EXPECT_EQ(project.SaveToText(), c.text);
    EXPECT_EQ(project.SaveToText(), c.text) << "a second save changes nothing either";
  }

  // The values behind the bytes were decoded, not just carried along.
  TWrenProject project;
  TWrenProjectError error;
  ASSERT_TRUE(project.LoadFromText(ToCrlf(kOddProject), "p.mbproj", Factory, error));
  ASSERT_EQ(project.variables.size(), 1u);
  EXPECT_EQ(project.variables[0].value, "bin & obj");
  ASSERT_EQ(project.steps.size(), 2u);
  const TTestAction& first = TestAction(project, 0);
  EXPECT_EQ(first.name, "a & b <c> A");
  EXPECT_TRUE(first.force);
  EXPECT_EQ(first.references, (TStrings{"x.dll", "", "", ""}));
  EXPECT_EQ(first.GetDescription(), "copy \"core\"");
  EXPECT_EQ(project.steps[0].action->Scripts()[0].text, "if a < b then return 1 end");
  EXPECT_EQ(project.steps[0].line, 9);
  EXPECT_TRUE(project.steps[0].enabled);
  EXPECT_FALSE(project.steps[1].enabled);
  EXPECT_EQ(project.steps[1].line, 20);
}

TEST(WrenProject, SavesOnlyWhatChanged) {
  TWrenProject project;
  TWrenProjectError error;
  const std::string original = ToCrlf(kOddProject);
  ASSERT_TRUE(project.LoadFromText(original, "p.mbproj", Factory, error)) << error.ToString();
  TTestAction& first = TestAction(project, 0);

  // A property the file has: only its text changes, even back to the value at creation.
  first.force = false;
  std::string expected = Replace(original, ">true</Property>", ">false</Property>");
  EXPECT_EQ(project.SaveToText(), expected);

  // Items: a changed one, a filled self-closing one; the empty ones stay as written.
  first.references = {"y.dll", "", "", "z & w"};
  expected = Replace(expected, "<Item>x.dll</Item>", "<Item>y.dll</Item>");
  expected = Replace(expected, "<Item />", "<Item>z &amp; w</Item>");
  EXPECT_EQ(project.SaveToText(), expected);

  // Attributes are edited in place, keeping their quotes; a new one goes after the last.
  project.steps[0].enabled = false;
  first.SetDescription("it's \"new\"");
  project.variables[0].value = "out";
  expected = Replace(expected, "description=\"copy &quot;core&quot;\" >",
                     "description=\"it's &quot;new&quot;\" enabled=\"false\" >");
  expected = Replace(expected, ">bin &amp; obj<", ">out<");
  EXPECT_EQ(project.SaveToText(), expected);

  // A property the file lacks: added after the last property only when it differs from creation.
  first.count = 5;  // the value at creation
  first.mode = TMode::mdSafe;
  expected = Replace(expected, "      </Property>\r\n      <Script",
                     "      </Property>\r\n      <Property name=\"Mode\">mdSafe</Property>\r\n"
                     "      <Script");
  EXPECT_EQ(project.SaveToText(), expected);

  // The saved text loads back to the same state.
  TWrenProject again;
  ASSERT_TRUE(again.LoadFromText(expected, "p.mbproj", Factory, error)) << error.ToString();
  EXPECT_EQ(TestAction(again, 0).references, first.references);
  EXPECT_EQ(TestAction(again, 0).mode, TMode::mdSafe);
  EXPECT_FALSE(again.steps[0].enabled);
  EXPECT_EQ(again.steps[0].action->GetDescription(), "it's \"new\"");
}

TEST(WrenProject, ReflectsStepsAddedRemovedAndMoved) {
  const std::string original =
      "<MarrowbyProject version=\"1\">\n"
      "  <Actions>\n"
      "    <Action class=\"TTestAction\"><Property name=\"Name\">one</Property></Action>\n"
      "    <Action class=\"TTestAction\"><Property name=\"Name\">two</Property></Action>\n"
      "  </Actions>\n"
      "</MarrowbyProject>\n";
  TWrenProject project;
  TWrenProjectError error;
  ASSERT_TRUE(project.LoadFromText(original, "p.mbproj", Factory, error)) << error.ToString();

  std::swap(project.steps[0], project.steps[1]);
  EXPECT_EQ(project.SaveToText(),
            "<MarrowbyProject version=\"1\">\n"
            "  <Actions>\n"
            "    <Action class=\"TTestAction\"><Property name=\"Name\">two</Property></Action>\n"
            "    <Action class=\"TTestAction\"><Property name=\"Name\">one</Property></Action>\n"
            "  </Actions>\n"
            "</MarrowbyProject>\n");

  // Held so the new action cannot take the removed one's address (steps are matched to their
  // elements by action).
  TWrenProjectStep removed = std::move(project.steps.front());
  project.steps.erase(project.steps.begin());
  auto added = std::make_unique<TTestAction>();
  added->references = {"a.dll", ""};
  added->AddScript("OnRun").text = "return 1";
  project.steps.push_back({"TTestAction", std::move(added), false, 0});
  project.variables.push_back({"V", "1"});
  EXPECT_EQ(project.SaveToText(),
            "<MarrowbyProject version=\"1\">\n"
            "  <Variables>\n"
            "    <Variable name=\"V\">1</Variable>\n"
            "  </Variables>\n"
            "  <Actions>\n"
            "    <Action class=\"TTestAction\"><Property name=\"Name\">one</Property></Action>\n"
            "    <Action class=\"TTestAction\" enabled=\"false\">\n"
            "      <Property name=\"References\">\n"
            "        <Item>a.dll</Item>\n"
            "        <Item/>\n"
            "      </Property>\n"
            "      <Script name=\"OnRun\" language=\"lua\">return 1</Script>\n"
            "    </Action>\n"
            "  </Actions>\n"
            "</MarrowbyProject>\n");
}

TEST(WrenProject, NewProjectIsWrittenInTheDocumentedShapeAndReadsBack) {
  TWrenProject project;
  auto action = std::make_unique<TOrderAction>();
  action->SetA(true);
  action->SetB("kept");
  action->SetDescription("order");
  project.steps.push_back({"TOrderAction", std::move(action), true, 0});
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("wren_project_" + std::to_string(getpid()) + ".mbproj"))
                               .string();
  std::string saveError;
  ASSERT_TRUE(project.Save(path, saveError)) << saveError;
  std::string bytes, readError;
  ASSERT_TRUE(ReadFileBytes(path, bytes, readError)) << readError;
  EXPECT_EQ(bytes,
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
            "<MarrowbyProject version=\"1\">\n"
            "  <Actions>\n"
            "    <Action class=\"TOrderAction\" description=\"order\">\n"
            "      <Property name=\"A\">true</Property>\n"
            "      <Property name=\"B\">kept</Property>\n"
            "    </Action>\n"
            "  </Actions>\n"
            "</MarrowbyProject>\n");

  TWrenProject loaded;
  TWrenProjectError error;
  ASSERT_TRUE(loaded.Load(path, Factory, error)) << error.ToString();
  EXPECT_EQ(loaded.fileName, path);
  EXPECT_EQ(dynamic_cast<TOrderAction&>(*loaded.steps.at(0).action).GetB(), "kept");
  std::filesystem::remove(path);

  EXPECT_FALSE(loaded.Load(path, Factory, error));
  EXPECT_EQ(error.file, path);
  EXPECT_TRUE(loaded.steps.empty());
}

TEST(WrenProject, AppliesStoredValuesInDeclarationOrder) {
  const char* text =
      "<MarrowbyProject version=\"1\"><Actions>\n"
      "<Action class=\"TOrderAction\">\n"
      "  <Property name=\"B\">second</Property>\n"
      "  <Property name=\"A\">%s</Property>\n"
      "</Action>\n"
      "</Actions></MarrowbyProject>\n";
  for (const char* a : {"true", "false"}) {
    char buffer[512];
    std::snprintf(buffer, sizeof buffer, text, a);
    TWrenProject project;
    TWrenProjectError error;
    ASSERT_TRUE(project.LoadFromText(buffer, "o.mbproj", Factory, error)) << error.ToString();
    const auto& action = dynamic_cast<TOrderAction&>(*project.steps.at(0).action);
    EXPECT_EQ(action.GetB(), std::string(a) == "true" ? "second" : "") << "A=" << a;
  }
}

TEST(WrenProject, BadInputNamesFileLineActionAndProperty) {
  struct TCase {
    const char* label;
    std::string body;  // the lines after the root's start tag
    int line;
    std::string action;
    std::string property;
    std::string message;  // part of the message
  };
  const std::string head = "<?xml version=\"1.0\"?>\n<MarrowbyProject version=\"1\">\n<Actions>\n";
  const TCase cases[] = {
      {"malformed XML", "<Action class=\"TTestAction\">\n</Actions>\n", 5, "", "",
       "Start-end tags mismatch"},
      {"unknown class", "<Action class=\"TNoSuchAction\"/>\n", 4, "TNoSuchAction", "",
       "unknown action class 'TNoSuchAction'"},
      {"unknown property",
       "<Action class=\"TTestAction\">\n<Property name=\"Name\">x</Property>\n"
       "<Property name=\"Colour\">red</Property>\n</Action>\n",
       6, "TTestAction", "Colour", "unknown property"},
      {"bad boolean",
       "<Action class=\"TTestAction\">\n\n<Property name=\"Force\">yes</Property>\n</Action>\n", 6,
       "TTestAction", "Force", "'yes' is not a boolean"},
      {"bad enumeration",
       "<Action class=\"TTestAction\"><Property name=\"Mode\">mdQuick</Property></Action>\n", 4,
       "TTestAction", "Mode", "'mdQuick' is not one of mdFast, mdSlow, mdSafe"},
      {"bad integer",
       "<Action class=\"TTestAction\"><Property name=\"Count\">5x</Property></Action>\n", 4,
       "TTestAction", "Count", "not a decimal integer"},
      {"property twice",
       "<Action class=\"TTestAction\">\n<Property name=\"Force\">true</Property>\n"
       "<Property name=\"FORCE\">false</Property>\n</Action>\n",
       6, "TTestAction", "Force", "given twice (first on line 5)"},
      {"unknown script",
       "<Action class=\"TTestAction\">\n<Script name=\"OnStop\">x()</Script>\n</Action>\n", 5,
       "TTestAction", "OnStop", "no script"},
      {"script language",
       "<Action class=\"TTestAction\">\n<Script name=\"OnRun\" "
       "language=\"python\">x</Script>\n</Action>\n",
       5, "TTestAction", "OnRun", "'python'"},
      {"bad enabled", "<Action class=\"TTestAction\" enabled=\"no\"/>\n", 4, "TTestAction", "",
       "enabled must be true or false"},
      {"text in a list",
       "<Action class=\"TTestAction\"><Property "
       "name=\"References\">\n<Item>a</Item>b.dll\n</Property></Action>\n",
       5, "TTestAction", "References", "one <Item> per line"},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.label);
    TWrenProject project;
    TWrenProjectError error;
    ASSERT_TRUE(project.LoadFromText(kOddProject, "good.mbproj", Factory, error));
    const std::string text = head + c.body + "</Actions>\n</MarrowbyProject>\n";
    EXPECT_FALSE(project.LoadFromText(text, "bad.mbproj", Factory, error));
    EXPECT_EQ(error.file, "bad.mbproj");
    EXPECT_EQ(error.line, c.line);
    EXPECT_EQ(error.action, c.action);
    EXPECT_EQ(error.property, c.property);
    EXPECT_NE(error.message.find(c.message), std::string::npos) << error.message;
    EXPECT_TRUE(project.steps.empty() && project.variables.empty()) << "nothing is kept";
  }

  TWrenProject project;
  TWrenProjectError error;
  EXPECT_FALSE(
      project.LoadFromText("<MarrowbyProject version=\"2\"/>", "v.mbproj", Factory, error));
  EXPECT_EQ(error.ToString(), "v.mbproj:1: unsupported project version '2' (expected 1)");
  EXPECT_FALSE(project.LoadFromText(head + "<Action class=\"TTestAction\"><Property name=\"Force\">"
                                           "1</Property></Action></Actions></MarrowbyProject>",
                                    "b.mbproj", Factory, error));
  EXPECT_EQ(
      error.ToString(),
      "b.mbproj:4: action 'TTestAction', property 'Force': '1' is not a boolean (true or false)");
}

}  // namespace
}  // namespace wren
