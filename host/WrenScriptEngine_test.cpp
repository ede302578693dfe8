#include "WrenScriptEngine.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "WrenActionRegistry.h"

namespace wren {
namespace {

TWrenActionScript Script(const std::string& name, const std::string& text) {
  TWrenActionScript script;
  script.name = name;
  script.text = text;
  return script;
}

/// An object whose calls are recorded; Count changes on every read.
struct TRecorder {
  std::vector<std::vector<WrenVariant>> calls;
  int64_t count = 10;

  std::shared_ptr<TWrenScriptObject> Object() {
    auto object = std::make_shared<TWrenScriptObject>();
    object->typeName = "TRecorder";
    object->methods.push_back({"Add", [](const std::vector<WrenVariant>& args) -> WrenVariant {
                                 return std::get<int64_t>(args.at(0)) +
                                        std::get<int64_t>(args.at(1));
                               }});
    object->methods.push_back(
        {"Record", [this](const std::vector<WrenVariant>& args) -> WrenVariant {
           calls.push_back(args);
           return std::monostate{};
         }});
    object->methods.push_back({"Fail", [](const std::vector<WrenVariant>&) -> WrenVariant {
                                 throw std::runtime_error("no such entry");
                               }});
    object->fields.push_back({"Count", [this]() -> WrenVariant { return count++; }});
    return object;
  }
};

TEST(WrenScriptEngine, PassesParametersInAndReadsThemBack) {
  TWrenActionScript script = Script("OnProcessEntry",
                                    "EntryValue = EntryValue .. '-x'\n"
                                    "Ratio = Ratio * 2\n"
                                    "Enabled = not Enabled\n"
                                    "Count = Count + 1\n"
                                    "Nothing = 'set'\n"
                                    "Gone = nil\n"
                                    "return Count * 10\n");
  script.params.Add("EntryValue", "string").value = std::string("1.0");
  script.params.Add("Ratio", "double").value = 0.75;
  script.params.Add("Enabled", "boolean").value = true;
  script.params.Add("Count", "integer").value = int64_t{3};
  script.params.Add("Nothing", "string");
  script.params.Add("Gone", "string").value = std::string("here");

  WrenVariant result;
  std::string error;
  ASSERT_TRUE(RunScript(script, result, error)) << error;
  EXPECT_EQ(script.params.Find("EntryValue")->value, WrenVariant(std::string("1.0-x")));
  EXPECT_EQ(script.params.Find("Ratio")->value, WrenVariant(1.5));
  EXPECT_EQ(script.params.Find("Enabled")->value, WrenVariant(false));
  EXPECT_EQ(script.params.Find("Count")->value, WrenVariant(int64_t{4}));
  EXPECT_EQ(script.params.Find("Nothing")->value, WrenVariant(std::string("set")));
  EXPECT_EQ(script.params.Find("Gone")->value, WrenVariant(std::monostate{}));
  EXPECT_EQ(result, WrenVariant(int64_t{40}));
}

TEST(WrenScriptEngine, CallsObjectMethodsAndReadsFields) {
  TRecorder recorder;
  TWrenActionScript script = Script("OnRun",
                                    "local first = Obj.Count\n"
                                    "local second = Obj.count\n"
                                    "assert(second == first + 1, 'fields are read when used')\n"
                                    "Obj:Record('a', nil, true, 1.5, 7)\n"
                                    "Obj.Record('plain call')\n"
                                    "assert(Obj.Missing == nil)\n"
                                    "return Obj:Add(2, 3) + Obj.Add(first, 0)\n");
  script.params.Add("Obj", "TRecorder").object = recorder.Object();
  WrenVariant result;
  std::string error;
  ASSERT_TRUE(RunScript(script, result, error)) << error;
  EXPECT_EQ(result, WrenVariant(int64_t{15}));
  ASSERT_EQ(recorder.calls.size(), 2u);
  EXPECT_EQ(recorder.calls[0],
            (std::vector<WrenVariant>{std::string("a"), std::monostate{}, true, 1.5, int64_t{7}}));
  EXPECT_EQ(recorder.calls[1], (std::vector<WrenVariant>{std::string("plain call")}));
  EXPECT_EQ(recorder.count, 12);
}

TEST(WrenScriptEngine, RegisteredObjectsAreGlobalsMadeForEachRun) {
  TRecorder recorder;
  int made = 0;
  WrenScriptingServices().RegisterObject("Updater", [&] {
    ++made;
    return recorder.Object();
  });
  TWrenActionScript script = Script("OnEnd", "Updater:Record(Value) return tostring(Updater)");
  script.params.Add("Value", "string").value = std::string("v");
  WrenVariant result;
  std::string error;
  const bool first = RunScript(script, result, error);
  const bool second = RunScript(script, result, error);
  auto& objects = WrenRegistrations().scriptObjects;
  objects.erase(std::remove_if(objects.begin(), objects.end(),
                               [](const auto& entry) { return entry.first == "Updater"; }),
                objects.end());
  ASSERT_TRUE(first && second) << error;
  EXPECT_EQ(made, 2);
  EXPECT_EQ(recorder.calls.size(), 2u);
  EXPECT_EQ(result, WrenVariant(std::string("TRecorder")));
}

TEST(WrenScriptEngine, ErrorsNameTheScriptAndLine) {
  struct TCase {
    const char* text;
    const char* expected;  // the start of the error
  };
  const TCase cases[] = {
      {"x = = 1", "OnProcessEntry:1: unexpected symbol near '='"},
      {"local t = nil\n\nreturn t.x", "OnProcessEntry:3: attempt to index a nil value"},
      {"local a = 1\nObj:Fail('k')", "OnProcessEntry:2: no such entry"},
      {"\nerror('boom')", "OnProcessEntry:2: boom"},
      {"error('bare', 0)", "OnProcessEntry: bare"},
      {"Obj:Add({}, 1)", "OnProcessEntry:1: bad argument #1 to 'Add' (table value not allowed)"},
      {"os.execute('true')", "OnProcessEntry:1: attempt to call a nil value (field 'execute')"},
      {"io.popen('ls')", "OnProcessEntry:1: attempt to call a nil value (field 'popen')"},
      {"return {}", "OnProcessEntry: the script returned a table value"},
      {"Value = {}", "OnProcessEntry: parameter 'Value' holds a table value"},
  };
  for (const TCase& c : cases) {
    TRecorder recorder;
    TWrenActionScript script = Script("OnProcessEntry", c.text);
    script.params.Add("Obj", "TRecorder").object = recorder.Object();
    script.params.Add("Value", "string");
    WrenVariant result;
    std::string error;
    EXPECT_FALSE(RunScript(script, result, error)) << c.text;
    EXPECT_EQ(error.rfind(c.expected, 0), 0u) << c.text << "\n  gave: " << error;
  }

  // What stays of the os and io libraries.
  TWrenActionScript script =
      Script("Check",
             "return os.exit == nil and os.remove == nil and os.rename == nil and "
             "os.time ~= nil and io.open ~= nil");
  WrenVariant result;
  std::string error;
  ASSERT_TRUE(RunScript(script, result, error)) << error;
  EXPECT_EQ(result, WrenVariant(true));
}

}  // namespace
}  // namespace wren
