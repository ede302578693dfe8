#include "cli/editor/WrenEditorSession.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>

#include <filesystem>
#include <map>
#include <set>

#include "TestSupport.h"
#include "WrenRegister.h"
#include "runtime/WrenActionRegistry.h"
#include "runtime/WrenOptionsStore.h"

namespace wren {
namespace {

using nlohmann::json;

/// The package registered at design time, as `marrowby edit` loads it; options in the test's dir.
class EditorSession : public ::testing::Test {
 protected:
  void SetUp() override {
    ClearRegistrations();
    ClearRegisteredOptions();
    WrenOptionsStore() = TWrenOptionsStore();
    WrenOptionsStore().SetPath(dir / "options.xml");
    WrenRegister(true);
  }
  void TearDown() override {
    ClearRegistrations();
    ClearRegisteredOptions();
    WrenOptionsStore() = TWrenOptionsStore();
  }

  static json Control(const json& controls, const std::string& name) {
    for (const json& c : controls)
      if (c["name"] == name) return c;
    ADD_FAILURE() << "no control " << name;
    return json::object();
  }
  static json Change(const std::string& control, const std::string& text) {
    return {{"control", control}, {"kind", "change"}, {"text", text}};
  }
  /// The status a refused call gives, 0 when it was not refused.
  template <class F>
  static int Refusal(F call) {
    try {
      call();
    } catch (const TWrenEditorError& e) {
      return e.status;
    }
    return 0;
  }

  test::TempDir dir;
};

/// The <Property> elements of each <Action> in a saved file, by name.
std::vector<std::map<std::string, std::string>> SavedProperties(const std::string& file) {
  pugi::xml_document doc;
  EXPECT_TRUE(doc.load_file(file.c_str()));
  std::vector<std::map<std::string, std::string>> actions;
  for (pugi::xml_node action : doc.child("MarrowbyProject").child("Actions").children("Action")) {
    std::map<std::string, std::string> props{{"@class", action.attribute("class").value()}};
    for (pugi::xml_node p : action.children("Property"))
      props[p.attribute("name").value()] = p.text().get();
    actions.push_back(props);
  }
  return actions;
}

TEST_F(EditorSession, GacInstallPageEditedAppliedAndSavedHoldsExactlyItsProperties) {
  TWrenEditorSession session(dir / "new/build.mbproj");
  EXPECT_FALSE(session.Project()["exists"].get<bool>());
  EXPECT_EQ(session.AddStep({{"className", "TGACInstallAction"}})["index"], 0);
  session.Save(json::object());  // the first save makes the file and its folder
  EXPECT_TRUE(test::Exists(dir / "new/build.mbproj"));

  const json opened = session.OpenPages(0);
  ASSERT_EQ(opened["pages"].size(), 1u);
  EXPECT_EQ(opened["pages"][0]["name"], "GAC Install");
  EXPECT_FALSE(Control(opened["pages"][0]["controls"], "edScheme")["enabled"].get<bool>());
  // A disabled field takes no input.
  EXPECT_EQ(Refusal([&] { session.PageEvent(0, 0, Change("edScheme", "x")); }), 409);

  json after = session.PageEvent(0, 0, {{"control", "cbReferenceCount"}, {"kind", "click"},
                                        {"checked", true}});
  EXPECT_TRUE(Control(after["controls"], "edScheme")["enabled"].get<bool>());

  // The page's own check stops the apply and nothing reaches the action.
  json refused = session.Apply(0);
  EXPECT_FALSE(refused["ok"].get<bool>());
  EXPECT_EQ(refused["page"], 0);
  EXPECT_EQ(refused["message"], "Assembly Path is required.");
  EXPECT_FALSE(session.Project()["dirty"].get<bool>());
  EXPECT_FALSE(session.CheckPage(0, 0)["ok"].get<bool>());

  for (const auto& [name, text] : std::map<std::string, std::string>{
           {"edAssemblyPath", "bin/Core.dll"}, {"edScheme", "UNINSTALL_KEY"},
           {"edID", "Core"}, {"edDescription", "Core library"}})
    session.PageEvent(0, 0, Change(name, text));
  json applied = session.Apply(0);
  ASSERT_TRUE(applied["ok"].get<bool>()) << applied.dump();
  EXPECT_EQ(applied["step"]["displayName"], "GAC Install [GACUTIL]");
  EXPECT_TRUE(session.Project()["dirty"].get<bool>());

  EXPECT_TRUE(session.Save(json::object())["ok"].get<bool>());
  const json project = session.Project();
  EXPECT_TRUE(project["exists"].get<bool>());
  EXPECT_FALSE(project["dirty"].get<bool>());
  const auto saved = SavedProperties(dir / "new/build.mbproj");
  ASSERT_EQ(saved.size(), 1u);
  EXPECT_EQ(saved[0], (std::map<std::string, std::string>{{"@class", "TGACInstallAction"},
                                                          {"AssemblyPath", "bin/Core.dll"},
                                                          {"ReferenceCount", "true"},
                                                          {"RefScheme", "UNINSTALL_KEY"},
                                                          {"RefID", "Core"},
                                                          {"RefDescription", "Core library"}}));
}

TEST_F(EditorSession, AnEditOfOneStepKeepsEveryOtherByteAndAChangeOnDiskIsAConflict) {
  const std::string original =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<!-- kept as written -->\n"
      "<MarrowbyProject version=\"1\">\n"
      "  <Variables>\n    <Variable name=\"OUT\">bin</Variable>\n  </Variables>\n"
      "  <Actions>\n"
      "    <Action class=\"TGACInstallAction\"   description=\"first\">\n"
      "      <Property name=\"AssemblyPath\">%OUT%/a.dll</Property>\n"
      "    </Action>\n"
      "    <Action class=\"TSNGenericSN\" description=\"second\">\n"
      "      <Property name=\"Options\">-v   x.dll</Property>\n"
      "    </Action>\n"
      "  </Actions>\n"
      "</MarrowbyProject>\n";
  const std::string file = dir / "p.mbproj";
  test::WriteFile(file, original);
  TWrenEditorSession session(file);
  session.SetDescription(1, {{"description", "verify"}});
  session.Save(json::object());
  std::string expected = original;
  expected.replace(expected.find("\"second\""), 8, "\"verify\"");
  EXPECT_EQ(test::ReadFile(file), expected);

  // Someone else writes the file: a save would lose their change, unless forced.
  test::WriteFile(file, original);
  session.SetEnabled(0, {{"enabled", false}});
  try {
    session.Save(json::object());
    ADD_FAILURE() << "saved over a file changed on disk";
  } catch (const TWrenEditorError& e) {
    EXPECT_EQ(e.status, 409);
    EXPECT_EQ(e.extra["conflict"], true);
  }
  EXPECT_EQ(test::ReadFile(file), original);
  session.Save({{"force", true}});
  EXPECT_NE(test::ReadFile(file).find("enabled=\"false\""), std::string::npos);
  // Its own save is not a change on disk.
  session.SetEnabled(0, {{"enabled", true}});
  EXPECT_EQ(Refusal([&] { session.Save(json::object()); }), 0);
  // Nor is a file removed behind its back something to overwrite silently.
  std::filesystem::remove(file);
  EXPECT_EQ(Refusal([&] { session.Save(json::object()); }), 409);
}

TEST_F(EditorSession, StepListEditsAndRefusals) {
  TWrenEditorSession session(dir / "p.mbproj");
  session.AddStep({{"className", "TSNGenericSN"}});
  session.AddStep({{"className", "tgacinstallaction"}, {"position", 0}});
  session.SetDescription(1, {{"description", "sign"}});
  session.SetProperty(1, "Options", {{"value", "-k key.snk"}});
  EXPECT_EQ(session.DuplicateStep(1)["index"], 2);
  session.MoveStep(0, {{"to", 2}});
  session.SetVariables({{"variables", {{{"name", "OUT"}, {"value", "bin"}}}}});
  json project = session.Project();
  ASSERT_EQ(project["steps"].size(), 3u);
  EXPECT_EQ(project["steps"][0]["description"], "sign");
  EXPECT_EQ(project["steps"][1]["description"], "sign");
  EXPECT_EQ(project["steps"][2]["className"], "TGACInstallAction");
  EXPECT_EQ(project["variables"], json::parse(R"([{"name":"OUT","value":"bin"}])"));
  session.Save(json::object());
  const auto saved = SavedProperties(dir / "p.mbproj");
  EXPECT_EQ(saved[0].at("Options"), "-k key.snk");
  EXPECT_EQ(saved[1].at("Options"), "-k key.snk");  // the copy is its own step with the same values

  session.RemoveStep(0);
  EXPECT_EQ(session.Project()["steps"].size(), 2u);

  const std::vector<std::pair<int, std::function<void()>>> refused = {
      {404, [&] { session.RemoveStep(5); }},
      {404, [&] { session.OpenPages(-1); }},
      {400, [&] { session.AddStep({{"className", "TNoSuchAction"}}); }},
      {400, [&] { session.AddStep({{"className", "TSNGenericSN"}, {"position", 9}}); }},
      {400, [&] { session.MoveStep(0, {{"to", 2}}); }},
      {400, [&] { session.SetEnabled(0, {{"enabled", "yes"}}); }},
      {400, [&] { session.SetProperty(0, "NoSuchProperty", {{"value", "x"}}); }},
      {400, [&] { session.SetVariables({{"variables", {{{"name", " "}, {"value", "x"}}}}}); }},
      // Pages of a step not opened, and the page events that need them.
      {409, [&] { session.PageEvent(0, 0, Change("edAssemblyPath", "x")); }},
      {409, [&] { session.Apply(0); }},
      {409, [&] { session.OptionsEvent(0, 0, Change("x", "y")); }},
  };
  for (size_t i = 0; i < refused.size(); ++i)
    EXPECT_EQ(Refusal(refused[i].second), refused[i].first) << "case " << i;
}

TEST_F(EditorSession, PropertyEditorsAndSetPropertyReachOpenPages) {
  TWrenEditorSession session(dir / "p.mbproj");
  session.AddStep({{"className", "TWrenCSProjCompilerAction"}});
  const json opened = session.OpenPages(0);
  ASSERT_EQ(opened["editors"].size(), 1u);
  EXPECT_EQ(opened["editors"][0]["property"], "ProjectFile");
  EXPECT_EQ(opened["editors"][0]["title"], "Select Project File");
  EXPECT_EQ(opened["editors"][0]["filter"], "C# Projects (*.csproj)|*.csproj");

  session.SetProperty(0, "ProjectFile", {{"value", "src/App.csproj"}});
  // Applying the open pages afterwards keeps the editor's value, not the page's old one.
  session.Apply(0);
  EXPECT_EQ(session.OpenPages(0)["editors"][0]["value"], "src/App.csproj");
}

TEST_F(EditorSession, DialogIsReportedThenAnswered) {
  TWrenEditorSession session(dir / "p.mbproj");
  session.SetVariables({{"variables", {{{"name", "OUT"}, {"value", "bin"}}}}});
  session.AddStep({{"className", "TGACInstallAction"}});
  session.OpenPages(0);
  session.PageEvent(0, 0, Change("edAssemblyPath", "%OUT%/Core.dll"));
  const json click = {{"control", "btnAssemblyPath"}, {"kind", "click"}};

  const json asked = session.PageEvent(0, 0, click);
  ASSERT_TRUE(asked.contains("dialog")) << asked.dump();
  EXPECT_EQ(asked["dialog"]["type"], "file");
  EXPECT_EQ(asked["dialog"]["filter"], "Assemblies (*.dll, *.exe)|*.dll;*.exe|All Files (*.*)|*.*");
  // The proposal is expanded, as the file dialog would open on it.
  EXPECT_EQ(asked["dialog"]["initial"], "bin/Core.dll");

  json cancelled = click;
  cancelled["answer"] = {{"accepted", false}};
  EXPECT_EQ(Control(session.PageEvent(0, 0, cancelled)["controls"], "edAssemblyPath")["text"],
            "%OUT%/Core.dll");

  json chosen = click;
  chosen["answer"] = {{"accepted", true}, {"value", "/opt/lib/Core.dll"}};
  EXPECT_EQ(Control(session.PageEvent(0, 0, chosen)["controls"], "edAssemblyPath")["text"],
            "/opt/lib/Core.dll");
  // The answer served one dialog only: the next click asks again.
  EXPECT_TRUE(session.PageEvent(0, 0, click).contains("dialog"));
}

TEST_F(EditorSession, OptionsApplyWritesTheUsersOptionsFile) {
  TWrenEditorSession session(dir / "p.mbproj");
  const json options = session.Options()["options"];
  ASSERT_FALSE(options.empty());
  const json& dotNet = options[0];
  EXPECT_EQ(dotNet["pages"].size(), 1u);
  EXPECT_FALSE(dotNet["pages"][0]["name"].get<std::string>().empty());
  EXPECT_FALSE(test::Exists(dir / "options.xml"));
  EXPECT_TRUE(session.ApplyOptions(dotNet["index"].get<int>())["ok"].get<bool>());
  pugi::xml_document doc;
  ASSERT_TRUE(doc.load_file((dir / "options.xml").c_str()));
  EXPECT_TRUE(doc.child("MarrowbyOptions").child("Options"));
}

TEST_F(EditorSession, FolderListsDirectoriesFirstWithoutRegardToCase) {
  test::WriteFile(dir / "b.txt", "");
  test::WriteFile(dir / "A.dll", "");
  test::WriteFile(dir / "zeta/x", "");
  test::WriteFile(dir / "Alpha/x", "");
  TWrenEditorSession session(dir / "p.mbproj");
  const json here = session.Folder("");
  EXPECT_EQ(here["path"], std::filesystem::path(dir.path()).lexically_normal().string().substr(
                              0, dir.path().size() - 1));
  std::vector<std::pair<std::string, bool>> names;
  for (const json& e : here["entries"]) names.emplace_back(e["name"], e["dir"]);
  EXPECT_EQ(names, (std::vector<std::pair<std::string, bool>>{
                       {"Alpha", true}, {"zeta", true}, {"A.dll", false}, {"b.txt", false}}));
  // Relative paths start at the project's folder; ".." is resolved.
  EXPECT_EQ(session.Folder("zeta/..")["path"], here["path"]);
  EXPECT_EQ(session.Folder("zeta")["parent"], here["path"]);
  EXPECT_EQ(session.Folder("/")["parent"], "");
  EXPECT_EQ(Refusal([&] { session.Folder("b.txt"); }), 404);
}

}  // namespace
}  // namespace wren
