#include "WrenProject.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "TestSupport.h"
#include "WrenActionRegistry.h"
#include "WrenRegister.h"
#include "sdktools/WrenDotNetGACAction.h"
#include "WrenUtils.h"

namespace wren {
namespace {

enum class TMode { mdFast, mdSlow, mdSafe };

/// An action with one property of each kind and a script. Tail is kept only while Force is set,
/// as a setter that depends on an earlier property.
class TTestAction : public TCustomWrenAction {
 public:
  TTestAction() { AddScript("OnRun"); }
  std::string ClassName() const override { return "TTestAction"; }
  std::string DisplayName() const override { return "Test"; }
  bool Execute() override { return true; }
  std::string GetTail() const { return tail; }
  void SetTail(const std::string& value) { tail = force ? value : tail; }
  const TPropertyTable& GetPublishedProperties() const override {
    static const TPropertyTable table = ChainProperties(
        TCustomWrenAction::ClassProperties(),
        {StringProperty("Name", &TTestAction::name), BoolProperty("Force", &TTestAction::force),
         IntProperty("Count", &TTestAction::count),
         EnumProperty("Mode", &TTestAction::mode, {"mdFast", "mdSlow", "mdSafe"}),
         StringListProperty("References", &TTestAction::references),
         StringProperty("Tail", &TTestAction::GetTail, &TTestAction::SetTail)});
    return table;
  }

  std::string name, tail;
  bool force = false;
  int32_t count = 5;
  TMode mode = TMode::mdFast;
  TStrings references;
};

std::unique_ptr<TCustomWrenAction> Factory(const std::string& name) {
  return SameText(name, "TTestAction") ? std::make_unique<TTestAction>() : nullptr;
}

TTestAction& TestAction(TWrenProject& project, size_t index) {
  return dynamic_cast<TTestAction&>(*project.steps.at(index).action);
}

/// What a load gave, in words: every variable, step, property value and script, or the error.
std::string Outcome(const TWrenProject& project, bool loaded, const TWrenProjectError& error) {
  if (!loaded)
    return "error " + error.ToString() + " [action '" + error.action + "', property '" +
           error.property + "']";
  std::string text;
  for (const TWrenProjectVariable& v : project.variables)
    text += "variable " + v.name + " = " + v.value + "\n";
  for (const TWrenProjectStep& step : project.steps) {
    const TCustomWrenAction& action = *step.action;
    text += "step " + step.className + " on line " + std::to_string(step.line) +
            (step.enabled ? "" : ", disabled") + ": " + action.GetDescription() + "\n";
    for (const TPublishedProperty& p : action.GetPublishedProperties())
      text += "  " + p.name + " = " + PropertyValueToString(p, p.get(action)) + "\n";
    for (const TWrenActionScript& script : action.Scripts())
      text += "  script " + script.name + " (" + script.language + "): " + script.text + "\n";
  }
  return text;
}

/// Loads text as commands do, and expects exactly what reading it as one tree gives; reading
/// one action at a time without falling back must give that too, or fail.
bool LoadBothWays(TWrenProject& project, const std::string& text, const std::string& file,
                  const TWrenActionFactory& factory, TWrenProjectError& error) {
  TWrenProject whole, streamed;
  TWrenProjectError wholeError, streamedError;
  const bool wholeLoaded =
      whole.LoadFromText(text, file, factory, wholeError, TWrenProjectReading::WholeTree);
  const std::string expected = Outcome(whole, wholeLoaded, wholeError);
  if (streamed.LoadFromText(text, file, factory, streamedError,
                            TWrenProjectReading::StreamedOnly)) {
    EXPECT_EQ(Outcome(streamed, true, streamedError), expected) << "read one action at a time";
  }
  const bool loaded = project.LoadFromText(text, file, factory, error);
  EXPECT_EQ(Outcome(project, loaded, error), expected);
  return loaded;
}

/// True when the text loads one action at a time, without the whole tree.
bool LoadsOneActionAtATime(const std::string& text, const TWrenActionFactory& factory) {
  TWrenProject project;
  TWrenProjectError error;
  return project.LoadFromText(text, "p.mbproj", factory, error,
                              TWrenProjectReading::StreamedOnly);
}

/// Loads text that must be good.
void LoadGood(TWrenProject& project, const std::string& text) {
  TWrenProjectError error;
  ASSERT_TRUE(LoadBothWays(project, text, "p.mbproj", Factory, error)) << error.ToString();
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
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- build of the core -->\n"
    "<MarrowbyProject   version='1' >\n"
    "\t<Variables>\n     <Variable name=\"OUT\">bin &amp; obj</Variable>\n\t</Variables>\n"
    "  <Actions>\n      <!-- first step -->\n"
    "    <Action class=\"TTestAction\" description=\"copy &quot;core&quot;\" >\n"
    "      <Property name=\"name\">a &amp; b &lt;c&gt; &#65;</Property>\n"
    "        <Property name=\"Force\">true</Property>\n"
    "      <Property name=\"References\">\n"
    "        <Item>x.dll</Item>\n        <Item/>\n        <Item></Item>\n        <Item />\n"
    "      </Property>\n"
    "      <Script name=\"OnRun\" language=\"lua\"><![CDATA[if a < b then return 1 end]]>"
    "</Script>\n    </Action>\n    <Action class=\"TTestAction\" enabled=\"false\"/>\n"
    "  </Actions>\n</MarrowbyProject>\n<!-- end -->\n";

TEST(WrenProject, SavesUnchangedProjectsByteForByteAndOnlyWhatChanged) {
  const std::pair<const char*, std::string> cases[] = {
      {"odd layout", kOddProject},
      {"CRLF line ends", ToCrlf(kOddProject)},
      {"byte-order mark, no declaration, no final newline",
       "\xEF\xBB\xBF<MarrowbyProject version=\"1\"><Actions><Action class=\"TTestAction\">"
       "<Property name=\"Mode\">MDSLOW</Property></Action></Actions></MarrowbyProject>"},
      {"doctype, instructions, spacing inside tags",
       "<?xml version='1.0'?>\n<!DOCTYPE MarrowbyProject>\n<?editor folded?>\n<MarrowbyProject\n"
       "   version = \"1\"><Actions><Action class=\"TTestAction\"\n description='it&apos;s'>"
       "<?mark x?><Property name=\"Name\" >x&#x20;y</Property "
       "></Action></Actions></MarrowbyProject >\n\n"},
      {"bytes that are not UTF-8 in names, values and descriptions",
       "<MarrowbyProject version=\"1\"><Variables><Variable name=\"V\xFF\">\xC3\x28</Variable>"
       "</Variables><Actions><Action class=\"TTestAction\" description=\"\xE2\x82\">"
       "<Property name=\"Name\">\x80\xBF</Property></Action></Actions></MarrowbyProject>\n"},
  };
  for (const auto& [label, text] : cases) {
    SCOPED_TRACE(label);
    TWrenProject project;
    LoadGood(project, text);
    EXPECT_EQ(project.SaveToText(), text);
    EXPECT_EQ(project.SaveToText(), text) << "a second save changes nothing either";
  }

  // The values behind the bytes were decoded, not just carried along.
  TWrenProject project;
  const std::string original = ToCrlf(kOddProject);
  LoadGood(project, original);
  EXPECT_EQ(project.variables.at(0).value, "bin & obj");
  TTestAction& first = TestAction(project, 0);
  EXPECT_EQ(first.name, "a & b <c> A");
  EXPECT_EQ(first.references, (TStrings{"x.dll", "", "", ""}));
  EXPECT_EQ(first.GetDescription(), "copy \"core\"");
  EXPECT_EQ(first.Scripts()[0].text, "if a < b then return 1 end");
  EXPECT_EQ(project.steps[0].line, 9);
  EXPECT_FALSE(project.steps[1].enabled);
  EXPECT_EQ(project.steps[1].line, 20);

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
  LoadGood(again, expected);
  EXPECT_EQ(TestAction(again, 0).references, first.references);
  EXPECT_EQ(TestAction(again, 0).mode, TMode::mdSafe);
  EXPECT_FALSE(again.steps[0].enabled);
  EXPECT_EQ(again.steps[0].action->GetDescription(), "it's \"new\"");
}

TEST(WrenProject, NewProjectHasTheDocumentedShapeAndFollowsStepsMovedRemovedAdded) {
  TWrenProject project;
  for (const char* name : {"one", "two"}) {
    auto action = std::make_unique<TTestAction>();
    action->name = name;
    action->force = name == std::string("two");
    action->SetTail("kept");
    project.steps.push_back({"TTestAction", std::move(action), true, 0});
  }
  project.steps[0].action->SetDescription("new");
  test::TempDir dir;
  const std::string path = dir / "new.mbproj";
  std::string saveError;
  ASSERT_TRUE(project.Save(path, saveError)) << saveError;
  const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                           "<MarrowbyProject version=\"1\">\n";
  // No registered class to compare with here, so every property is written.
  const auto p = [](const std::string& name, const std::string& value) {
    const std::string start = "      <Property name=\"" + name + "\"";
    return value.empty() ? start + "/>\n" : start + ">" + value + "</Property>\n";
  };
  const std::string one = "    <Action class=\"TTestAction\" description=\"new\">\n" +
                          p("Name", "one") + p("Force", "false") + p("Count", "5") +
                          p("Mode", "mdFast") + p("References", "") + p("Tail", "") +
                          "    </Action>\n";
  const std::string two = "    <Action class=\"TTestAction\">\n" + p("Name", "two") +
                          p("Force", "true") + p("Count", "5") + p("Mode", "mdFast") +
                          p("References", "") + p("Tail", "kept") + "    </Action>\n";
  const std::string tail = "  </Actions>\n</MarrowbyProject>\n";
  EXPECT_EQ(test::ReadFile(path), head + "  <Actions>\n" + one + two + tail);

  TWrenProject loaded;
  TWrenProjectError error;
  ASSERT_TRUE(loaded.Load(path, Factory, error)) << error.ToString();
  std::swap(loaded.steps[0], loaded.steps[1]);
  EXPECT_EQ(loaded.SaveToText(), head + "  <Actions>\n" + two + one + tail);

  // Held: steps are matched to their elements by action, whose address a new one could reuse.
  TWrenProjectStep removed = std::move(loaded.steps.front());
  loaded.steps.erase(loaded.steps.begin());
  auto added = std::make_unique<TTestAction>();
  added->references = {"a.dll", ""};
  added->AddScript("OnRun").text = "return 1";
  loaded.steps.push_back({"TTestAction", std::move(added), false, 0});
  loaded.variables.push_back({"V", "1"});
  EXPECT_EQ(loaded.SaveToText(),
            head + "  <Variables>\n    <Variable name=\"V\">1</Variable>\n  </Variables>\n" +
                "  <Actions>\n" + one +
                "    <Action class=\"TTestAction\" enabled=\"false\">\n"
                "      <Property name=\"References\">\n"
                "        <Item>a.dll</Item>\n        <Item/>\n      </Property>\n"
                "      <Script name=\"OnRun\" language=\"lua\">return 1</Script>\n    </Action>\n" +
                tail);

  std::filesystem::remove(path);
  EXPECT_FALSE(loaded.Load(path, Factory, error));
  EXPECT_EQ(error.file, path);
  EXPECT_TRUE(loaded.steps.empty());

  // Stored values are applied in declaration order, whatever their order in the file.
  for (const std::string force : {"true", "false"}) {
    LoadGood(loaded, "<MarrowbyProject version=\"1\"><Actions>\n<Action class=\"TTestAction\">"
                     "<Property name=\"Tail\">second</Property><Property name=\"Force\">" +
                         force + "</Property></Action>\n</Actions></MarrowbyProject>\n");
    EXPECT_EQ(TestAction(loaded, 0).tail, force == "true" ? "second" : "") << "Force=" << force;
  }
}

// Actions whose constructor gives them a description of their own.
std::unique_ptr<TCustomWrenAction> GacFactory(const std::string& name) {
  if (name == "TGACInstallAction") return std::make_unique<TGACInstallAction>();
  if (name == "TGACUninstallAction") return std::make_unique<TGACUninstallAction>();
  return nullptr;
}

TEST(WrenProject, DescriptionGivenAtCreationIsSavedOnlyWhenChanged) {
  const std::string head = "<MarrowbyProject version=\"1\">\n<Actions>\n";
  const std::string tail = "</Actions>\n</MarrowbyProject>\n";
  const std::string install = "<Action class=\"TGACInstallAction\"/>\n";
  const struct {
    const char* label;
    std::string action;
    std::string setTo;  // "-": left alone
    std::string saved;
    std::string loaded;
  } cases[] = {
      {"unchanged", install, "-", install, "GAC Install"},
      {"uninstall too", "<Action class=\"TGACUninstallAction\"/>\n", "-",
       "<Action class=\"TGACUninstallAction\"/>\n", "GAC Uninstall"},
      {"set to the value at creation", install, "GAC Install", install, "GAC Install"},
      {"changed", install, "Mine", "<Action class=\"TGACInstallAction\" description=\"Mine\"/>\n",
       "Mine"},
      {"cleared", install, "", "<Action class=\"TGACInstallAction\" description=\"\"/>\n", ""},
      {"stored empty", "<Action class=\"TGACInstallAction\" description=\"\"/>\n", "-",
       "<Action class=\"TGACInstallAction\" description=\"\"/>\n", ""},
      {"stored, then cleared", "<Action class=\"TGACInstallAction\" description=\"x\"/>\n", "",
       "<Action class=\"TGACInstallAction\" description=\"\"/>\n", ""},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.label);
    TWrenProject project;
    TWrenProjectError error;
    ASSERT_TRUE(project.LoadFromText(head + c.action + tail, "g.mbproj", GacFactory, error))
        << error.ToString();
    if (c.setTo != "-") project.steps.at(0).action->SetDescription(c.setTo);
    const std::string saved = project.SaveToText();
    EXPECT_EQ(saved, head + c.saved + tail);
    TWrenProject again;
    ASSERT_TRUE(again.LoadFromText(saved, "g.mbproj", GacFactory, error)) << error.ToString();
    EXPECT_EQ(again.steps.at(0).action->GetDescription(), c.loaded);
  }
}

TEST(WrenProject, BadInputNamesFileLineActionAndProperty) {
  const auto A = [](const std::string& inner) {
    return "<Action class=\"TTestAction\">" + inner + "</Action>\n";
  };
  const auto P = [](const std::string& name, const std::string& value) {
    return "<Property name=\"" + name + "\">" + value + "</Property>";
  };
  const struct {
    std::string body;  // the lines after <Actions>
    int line;
    std::string property, message, action = "TTestAction";  // message: a part of it
  } cases[] = {
      {"<Action class=\"TTestAction\">\n</Actions>\n", 5, "", "Start-end tags mismatch", ""},
      {"<Action class=\"TNo\"/>\n", 4, "", "unknown action class 'TNo'", "TNo"},
      {A("\n" + P("Name", "x") + "\n" + P("Colour", "red") + "\n"), 6, "Colour",
       "unknown property"},
      {A("\n\n" + P("Force", "yes") + "\n"), 6, "Force", "'yes' is not a boolean"},
      {A(P("Mode", "mdQuick")), 4, "Mode", "'mdQuick' is not one of mdFast, mdSlow, mdSafe"},
      {A(P("Count", "5x")), 4, "Count", "not a decimal integer"},
      {A("\n" + P("Force", "true") + "\n" + P("FORCE", "false") + "\n"), 6, "Force",
       "given twice (first on line 5)"},
      {A("\n<Script name=\"OnStop\">x()</Script>\n"), 5, "OnStop", "no script"},
      {A("\n<Script name=\"OnRun\" language=\"python\">x</Script>\n"), 5, "OnRun", "'python'"},
      {"<Action class=\"TTestAction\" enabled=\"no\"/>\n", 4, "",
       "enabled: 'no' is not a boolean (true or false)"},
      {A(P("References", "\n<Item>a</Item>b.dll\n")), 5, "References", "one <Item> per line"},
      // Typos and strays anywhere are errors, not silently ignored.
      {"<Action class=\"TTestAction\" enable=\"false\"/>\n", 4, "",
       "unknown attribute 'enable' in <Action> (expected class, enabled or description); "
       "did you mean enabled?"},
      {"<Action class=\"TTestAction\"\n descripton=\"x\"/>\n", 4, "",
       "did you mean description?"},
      {"<Action class=\"TTestAction\" enabled=\"True\"/>\n", 4, "", "'True' is not a boolean"},
      {"<Actio class=\"TTestAction\"/>\n", 4, "",
       "unexpected element <Actio> in <Actions> (expected <Action>); did you mean Action?", ""},
      {"\nstray\n", 5, "", "unexpected text in <Actions>", ""},
      {A("\n<Property nmae=\"Force\">true</Property>"), 5, "",
       "unknown attribute 'nmae' in <Property> (expected name); did you mean name?"},
      {A("\n" + P("Forc", "true")), 5, "Forc", "unknown property; did you mean Force?"},
      {A("\n" + P("Name", "<b>x</b>")), 5, "Name", "<b> in <Property> (it holds text only)"},
      {A("\ntext"), 5, "", "unexpected text in <Action>"},
      {A("\n<Propertys/>"), 5, "",
       "expected <Property> or <Script>); did you mean Property?"},
      {A(P("References", "\n<Item x=\"1\">a</Item>")), 5, "References",
       "unknown attribute 'x' in <Item> (it takes none)"},
      {A(P("References", "\n<Item>a<i>b</i></Item>")), 5, "References",
       "<i> in <Item> (it holds text only)"},
      {A("\n<Script name=\"OnRun\" langauge=\"lua\">x</Script>"), 5, "OnRun",
       "did you mean language?"},
      {A("\n<Script name=\"OnRnu\">x</Script>"), 5, "OnRnu", "did you mean OnRun?"},
      {A("\n<Script name=\"OnRun\">x<![CDATA[y]]><z/></Script>"), 5, "OnRun",
       "<z> in <Script> (it holds text only)"},
  };
  const std::string head = "<?xml version=\"1.0\"?>\n<MarrowbyProject version=\"1\">\n<Actions>\n";
  for (const auto& c : cases) {
    SCOPED_TRACE(c.body);
    TWrenProject project;
    LoadGood(project, kOddProject);
    TWrenProjectError error;
    const std::string text = head + c.body + "</Actions>\n</MarrowbyProject>\n";
    EXPECT_FALSE(LoadBothWays(project, text, "bad.mbproj", Factory, error));
    EXPECT_EQ(error.file, "bad.mbproj");
    EXPECT_EQ(error.line, c.line);
    EXPECT_EQ(error.action, c.action);
    EXPECT_EQ(error.property, c.property);
    EXPECT_NE(error.message.find(c.message), std::string::npos) << error.message;
    EXPECT_TRUE(project.steps.empty() && project.variables.empty()) << "nothing is kept";
  }

  // Deep enough to overflow the stack of any recursive walk.
  std::string deep = "<MarrowbyProject version=\"1\">\n<Actions>";
  for (int i = 0; i < 20000; ++i) deep += "<Action>";
  for (int i = 0; i < 20000; ++i) deep += "</Action>";
  deep += "</Actions></MarrowbyProject>\n";

  // Outside the actions, up to the document itself.
  const struct {
    std::string text;
    int line;
    std::string message;
  } documents[] = {
      {"<MarrowbyProject version=\"1\"/>\n<MarrowbyProject version=\"1\"/>\n", 2,
       "a second root element <MarrowbyProject> after <MarrowbyProject>"},
      {"<MarrowbyProject version=\"1\"/>\n<!-- ok -->\n}\n", 3, "text outside the root element"},
      {"<MarrowbyProject version=\"1\" verison=\"2\"/>", 1, "did you mean version?"},
      {"<MarrowbyProject version=\"1\">\n<Varaibles/>\n</MarrowbyProject>", 2,
       "(expected <Variables> or <Actions>); did you mean Variables?"},
      {"<MarrowbyProject version=\"1\">\n<Variables>\n<Variable name=\"A\" value=\"1\"/>\n"
       "</Variables>\n</MarrowbyProject>",
       3, "unknown attribute 'value' in <Variable> (expected name)"},
      {"<MarrowbyProject version=\"1\">\n<Variables>\n<Variable name=\"A\">1<b/></Variable>\n"
       "</Variables>\n</MarrowbyProject>",
       3, "<b> in <Variable> (it holds text only)"},
      {"<MarrowbyProject version=\"1\">\n<Variables>\n<Variable name=\"A\"/>\n"
       "<Variable name=\"a\"/>\n</Variables>\n</MarrowbyProject>",
       4, "variable 'a' is given twice (first on line 3)"},
      {"<MarrowbyProject version=\"1\">\n<Actions/>\n<Actions/>\n</MarrowbyProject>", 3,
       "<Actions> is given twice (first on line 2)"},
      {"<MarrowbyProject version=\"1\">\n<Variables>x</Variables>\n</MarrowbyProject>", 2,
       "unexpected text in <Variables>"},
      {"<MarrowbyProject version=\"1\">\n<Actions class=\"x\"/>\n</MarrowbyProject>", 2,
       "unknown attribute 'class' in <Actions> (it takes none)"},
      {"<MarrowbyProject version=\"1\">\n<Actions><Action class=\"TTestAction\" \xE9\xFF=\"1\"/>"
       "</Actions></MarrowbyProject>",
       2, "unknown attribute '\xE9\xFF' in <Action>"},
      {deep, 2, "elements nested more than 100 deep"},
  };
  for (const auto& d : documents) {
    SCOPED_TRACE(d.text.substr(0, 80));
    TWrenProject project;
    TWrenProjectError error;
    EXPECT_FALSE(LoadBothWays(project, d.text, "doc.mbproj", Factory, error));
    EXPECT_EQ(error.file, "doc.mbproj");
    EXPECT_EQ(error.line, d.line);
    EXPECT_NE(error.message.find(d.message), std::string::npos) << error.message;
  }

  TWrenProject project;
  TWrenProjectError error;
  EXPECT_FALSE(project.LoadFromText("<MarrowbyProject version=\"2\"/>", "v", Factory, error));
  EXPECT_EQ(error.ToString(), "v:1: unsupported project version '2' (expected 1)");
  EXPECT_FALSE(project.LoadFromText(head + A(P("Force", "1")) + "</Actions></MarrowbyProject>",
                                    "b.mbproj", Factory, error));
  EXPECT_EQ(
      error.ToString(),
      "b.mbproj:4: action 'TTestAction', property 'Force': '1' is not a boolean (true or false)");
}

// Reading one action at a time cuts the actions out of the text by a quick look at its markup:
// markup-like bytes where the look could stumble, and everything it leaves to the whole tree.
TEST(WrenProject, ReadingOneActionAtATimeGivesWhatTheWholeTreeGives) {
  const std::string head =
      "<?xml version=\"1.0\"?>\n<MarrowbyProject version=\"1\">\n  <Actions>\n";
  const std::string tail = "  </Actions>\n</MarrowbyProject>\n";
  const std::string action = "    <Action class=\"TTestAction\">\n"
                             "      <Property name=\"Name\">x</Property>\n    </Action>\n";
  // Property elements nested n deep in <Name>: the deepest stands n + 3 levels under the root.
  const auto nested = [&](int n) {
    std::string open, close;
    for (int i = 0; i < n; ++i) open += "<b>", close += "</b>";
    return head + "<Action class=\"TTestAction\"><Property name=\"Name\">" + open + close +
           "</Property></Action>\n" + tail;
  };
  const struct {
    const char* label;
    std::string text;
    bool streamed;  // read without the whole tree
  } cases[] = {
      {"plain", head + action + action + tail, true},
      {"comments between and inside actions", head + "<!-- a -- b --->\n" + action +
           "<!---->" + "<Action class=\"TTestAction\"><!-- </Action> --></Action>" + tail,
       true},
      {"markup in values, attributes and CDATA",
       head + "<Action class='TTestAction' description=\"a > b /> </Action> '\">"
              "<Property name=\"Name\"><![CDATA[</Action></Actions><x>]]> &lt;/Actions&gt;"
              "</Property><Script name=\"OnRun\">if a > b then end</Script></Action>\n" + tail,
       true},
      {"self-closing actions, CRLF, byte-order mark, no final newline",
       "\xEF\xBB\xBF" + ToCrlf(head) + "<Action class=\"TTestAction\"/><Action\r\n"
           "class=\"TTestAction\" enabled=\"false\" />\r\n</Actions></MarrowbyProject>",
       true},
      {"<Actions> in a comment and in a variable before the real one",
       "<!-- <MarrowbyProject><Actions> -->\n<MarrowbyProject version=\"1\">\n<Variables>"
       "<Variable name=\"A\">&lt;Actions&gt;<![CDATA[<Actions>]]></Variable></Variables>\n"
       "<Actions>" + action + "</Actions><!-- after --></MarrowbyProject>",
       true},
      {"variables after the actions", head + action + "  </Actions>\n  <Variables>\n"
           "<Variable name=\"V\">1</Variable></Variables>\n</MarrowbyProject>\n", true},
      {"no actions, empty and self-closing <Actions>",
       "<MarrowbyProject version=\"1\"><Actions/></MarrowbyProject>", true},
      {"empty <Actions>", "<MarrowbyProject version=\"1\"><Actions></Actions></MarrowbyProject>",
       true},
      {"no <Actions> at all", "<MarrowbyProject version=\"1\"/>", true},
      // Left to the whole tree.
      {"doctype", "<!DOCTYPE MarrowbyProject>\n" + head + action + tail, false},
      {"processing instruction between actions", head + action + "<?mark?>" + action + tail,
       false},
      {"a doctype-like declaration in an action",
       head + "<Action class=\"TTestAction\"><!ELEMENT x></Action>" + tail, false},
      // Errors, which always read the whole tree for its message.
      {"nesting one level short of the limit", nested(96), false},
      {"nesting at the limit", nested(97), false},
      {"a NUL byte in a comment between actions",
       head + action + std::string("<!-- \0 -->", 10) + action + tail, false},
      {"a NUL byte in an action",
       head + "<Action class=\"TTestAction\" description=\"" + std::string(1, '\0') + "\"/>" +
           tail, false},
      {"an attribute given twice", head + "<Action class=\"TTestAction\" class=\"TTestAction\"/>" +
           tail, false},
      {"an action not closed", head + "<Action class=\"TTestAction\">\n" + tail, false},
      {"<Actions> not closed", head + action + "</MarrowbyProject>\n", false},
      {"an unterminated CDATA section",
       head + "<Action class=\"TTestAction\"><![CDATA[x</Action>" + tail, false},
      {"an unterminated attribute value", head + "<Action class=\"TTestAction/>" + tail, false},
      {"text between actions", head + action + "x" + action + tail, false},
      {"an element other than <Action>", head + action + "<Step/>" + tail, false},
      {"a bad property in the last action", head + action +
           "<Action class=\"TTestAction\"><Property name=\"Force\">1</Property></Action>" + tail,
       false},
      {"a second root after a good project", head + action + tail + "<MarrowbyProject/>",
       false},
      {"text after the root", head + action + tail + "x", false},
      {"<Actions> inside <Variables>",
       "<MarrowbyProject version=\"1\"><Variables><Actions>" + action +
           "</Actions></Variables></MarrowbyProject>",
       false},
      {"<Actions> given twice", head + action + "</Actions><Actions>" + action + tail, false},
      {"a root of another name", "<Project version=\"1\"><Actions>" + action +
           "</Actions></Project>", false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.label);
    TWrenProject project;
    TWrenProjectError error;
    if (LoadBothWays(project, c.text, "p.mbproj", Factory, error)) {
      EXPECT_EQ(project.SaveToText(), c.text) << "an unchanged project saves as it was";
    }
    EXPECT_EQ(LoadsOneActionAtATime(c.text, Factory), c.streamed);
  }

  // The projects of the registered package, as a user writes them.
  ClearRegistrations();
  WrenRegister(true);
  const std::string fixture =
      test::ReadFile(std::string(SOURCE_DIR) + "/tests/fixtures/projects/all-shapes.mbproj");
  TWrenProject project;
  TWrenProjectError error;
  EXPECT_TRUE(LoadBothWays(project, fixture, "all-shapes.mbproj", CreateRegisteredAction, error))
      << error.ToString();
  EXPECT_TRUE(LoadsOneActionAtATime(fixture, CreateRegisteredAction));
  EXPECT_EQ(project.steps.size(), 4u);
  ClearRegistrations();
}

}  // namespace
}  // namespace wren
