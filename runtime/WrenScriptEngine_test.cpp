#include "WrenScriptEngine.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "WrenActionRegistry.h"

namespace wren {
namespace {

using TArgs = std::vector<WrenVariant>;

TWrenActionScript Script(const std::string& name, const std::string& text) {
  return {.name = name, .text = text, .params = {}};
}

/// An object whose calls are recorded; Count changes on every read.
struct TRecorder {
  std::vector<TArgs> calls;
  int64_t count = 10;

  std::shared_ptr<TWrenScriptObject> Object() {
    auto object = std::make_shared<TWrenScriptObject>();
    object->typeName = "TRecorder";
    object->methods = {
        {"Add", [](const TArgs& a) -> WrenVariant {
           return std::get<int64_t>(a.at(0)) + std::get<int64_t>(a.at(1));
         }},
        {"Record", [this](const TArgs& a) -> WrenVariant {
           calls.push_back(a);
           return {};
         }},
        {"Fail", [](const TArgs&) -> WrenVariant { throw std::runtime_error("no such entry"); }}};
    object->fields = {{"Count", [this]() -> WrenVariant { return count++; }}};
    return object;
  }
};

TEST(WrenScriptEngine, PassesValuesAndObjectsInAndOutAndErrorsNameTheScriptAndLine) {
  TRecorder recorder;
  TWrenActionScript script = Script(
      "OnProcessEntry",
      "assert(os.execute == nil and io.popen == nil and os.exit == nil and os.remove == nil and "
      "os.rename == nil and os.time and io.open)\n"
      "EntryValue = EntryValue .. '-x'; Ratio = Ratio * 2; Enabled = not Enabled\n"
      "Count = Count + 1; Nothing = 'set'; Gone = nil\n"
      "local first = Obj.Count\n"
      "assert(Obj.count == first + 1, 'fields are read when used')\n"
      "Obj:Record('a', nil, true, 1.5, 7); Obj.Record('plain call')\n"
      "assert(Obj.Missing == nil)\n"
      "return Count * 10 + Obj:Add(2, 3) + Obj.Add(first, 0)\n");
  script.params.Add("EntryValue", "string").value = std::string("1.0");
  script.params.Add("Ratio", "double").value = 0.75;
  script.params.Add("Enabled", "boolean").value = true;
  script.params.Add("Count", "integer").value = int64_t{3};
  script.params.Add("Nothing", "string");
  script.params.Add("Gone", "string").value = std::string("here");
  script.params.Add("Obj", "TRecorder").object = recorder.Object();

  WrenVariant result;
  std::string error;
  ASSERT_TRUE(RunScript(script, result, error)) << error;
  const std::pair<const char*, WrenVariant> after[] = {
      {"EntryValue", std::string("1.0-x")}, {"Ratio", 1.5}, {"Enabled", false},
      {"Count", int64_t{4}}, {"Nothing", std::string("set")}, {"Gone", std::monostate{}}};
  for (const auto& [name, value] : after) EXPECT_EQ(script.params.Find(name)->value, value) << name;
  EXPECT_EQ(result, WrenVariant(int64_t{55}));
  EXPECT_EQ(recorder.calls,
            (std::vector<TArgs>{{std::string("a"), std::monostate{}, true, 1.5, int64_t{7}},
                                {std::string("plain call")}}));
  EXPECT_EQ(recorder.count, 12);

  // Registered objects are globals, made afresh for each run.
  int made = 0;
  WrenScriptingServices().RegisterObject("Updater", [&] {
    ++made;
    return recorder.Object();
  });
  TWrenActionScript updater = Script("OnEnd", "Updater:Record(Value) return tostring(Updater)");
  updater.params.Add("Value", "string").value = std::string("v");
  const bool ran = RunScript(updater, result, error) && RunScript(updater, result, error);
  std::erase_if(WrenRegistrations().scriptObjects,
                [](const auto& entry) { return entry.first == "Updater"; });
  ASSERT_TRUE(ran) << error;
  EXPECT_EQ(made, 2);
  EXPECT_EQ(recorder.calls.size(), 4u);
  EXPECT_EQ(result, WrenVariant(std::string("TRecorder")));

  // Errors name the script and the line.
  const std::pair<const char*, const char*> cases[] = {  // script, the start of its error
      {"x = = 1", "OnProcessEntry:1: unexpected symbol near '='"},
      {"local t = nil\n\nObj:Fail('k')", "OnProcessEntry:3: no such entry"},
      {"error('bare', 0)", "OnProcessEntry: bare"},
      {"Obj:Add({}, 1)", "OnProcessEntry:1: bad argument #1 to 'Add' (table value not allowed)"},
      {"return {}", "OnProcessEntry: the script returned a table value"},
      {"Value = {}", "OnProcessEntry: parameter 'Value' holds a table value"},
  };
  for (const auto& [text, expected] : cases) {
    TRecorder recorder;
    TWrenActionScript script = Script("OnProcessEntry", text);
    script.params.Add("Obj", "TRecorder").object = recorder.Object();
    script.params.Add("Value", "string");
    WrenVariant result;
    std::string error;
    EXPECT_FALSE(RunScript(script, result, error)) << text;
    EXPECT_EQ(error.rfind(expected, 0), 0u) << text << "\n  gave: " << error;
  }
}

}  // namespace
}  // namespace wren
