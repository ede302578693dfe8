#include "WrenScriptEngine.h"

#include <gtest/gtest.h>

#include <atomic>
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
      {"x = = 1", "script OnProcessEntry, line 1: unexpected symbol near '='"},
      {"local t = nil\n\nObj:Fail('k')", "script OnProcessEntry, line 3: no such entry"},
      {"error('bare', 0)", "script OnProcessEntry: bare"},
      {"error({})", "script OnProcessEntry: error object is a table value"},
      {"Obj:Add({}, 1)",
       "script OnProcessEntry, line 1: bad argument #1 to 'Add' (table value not allowed)"},
      {"return {}", "script OnProcessEntry: the script returned a table value"},
      {"Value = {}", "script OnProcessEntry: parameter 'Value' holds a table value"},
      {"io = nil\nValue = io", "script OnProcessEntry, line 2: 'io' is not available"},
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

/// Runs the text as script "S" with a parameter Value = "v"; answers the error ("" on success).
std::string RunError(const std::string& text, const TWrenScriptLimits& limits = {}) {
  TWrenActionScript script = Script("S", text);
  script.params.Add("Value", "string").value = std::string("v");
  WrenVariant result;
  std::string error;
  return RunScript(script, result, error, limits) ? "" : error;
}

TEST(WrenScriptEngine, ScriptsGetOnlyTheSandboxLibraryAndBoundedMemory) {
  std::vector<std::string> printed;
  TWrenScriptLimits limits;
  limits.print = [&](const std::string& line) { printed.push_back(line); };
  EXPECT_EQ(RunError(
                "assert(os.time() > 0 and os.date('%Y') and os.clock() >= 0)\n"
                "assert(string.format('%03d', 7) == '007' and ('ab'):upper() == 'AB')\n"
                "assert(table.concat({1, 2}, ',') == '1,2' and math.floor(2.5) == 2)\n"
                "assert(utf8.char(228) == '\\u{e4}' and select('#', 1, 2) == 2)\n"
                "assert(load('return Value .. 1')() == 'v1')\n"
                "assert(load('return x', 'c', 't', {x = 5})() == 5)\n"
                "local t = setmetatable({}, {__index = function() return 3 end})\n"
                "assert(t.k == 3 and nosuch == nil and getmetatable(_G) == 'locked')\n"
                "assert(pcall(error, 'x') == false)\n"
                "print('a', 1, nil, true)\n",
                limits),
            "");
  EXPECT_EQ(printed, std::vector<std::string>{"a\t1\tnil\ttrue"});

  const std::pair<const char*, const char*> denied[] = {  // script, its error
      {"local x = 1\n\nlocal f = io.open('/tmp/x', 'w')",
       "script S, line 3: 'io' is not available to project scripts"},
      {"package.loadlib('/tmp/x.so', '*')",
       "script S, line 1: 'package' is not available to project scripts"},
      {"require('x')", "script S, line 1: 'require' is not available to project scripts"},
      {"debug.sethook()", "script S, line 1: 'debug' is not available to project scripts"},
      {"dofile('/etc/hostname')",
       "script S, line 1: 'dofile' is not available to project scripts"},
      {"loadfile('/etc/hostname')",
       "script S, line 1: 'loadfile' is not available to project scripts"},
      {"collectgarbage('stop')",
       "script S, line 1: 'collectgarbage' is not available to project scripts"},
      {"coroutine.wrap(print)",
       "script S, line 1: 'coroutine' is not available to project scripts"},
      {"os.execute('true')", "script S, line 1: 'os.execute' is not available to project scripts"},
      {"Value = os.getenv('HOME')",
       "script S, line 1: 'os.getenv' is not available to project scripts"},
      {"os.exit(0)", "script S, line 1: 'os.exit' is not available to project scripts"},
      {"os.remove(Value)", "script S, line 1: 'os.remove' is not available to project scripts"},
      {"return string.dump(print)",
       "script S, line 1: 'string.dump' is not available to project scripts"},
      {"load('\\27Lua\\84\\0')",
       "script S, line 1: binary chunks are not available to project scripts"},
      {"local done\n"
       "local f, e = load(function() if not done then done = true return '\\27Lua' end end)\n"
       "error(e)",
       "script S, line 3: attempt to load a binary chunk (mode is 't')"},
      {"setmetatable({}, {__gc = function() end})",
       "script S, line 1: '__gc' metamethods are not available to project scripts"},
      {"local function f(n) return 1 + f(n + 1) end\nreturn f(1)",
       "script S, line 1: stack overflow"},
      // Memory: the limit holds for one huge string and for endless small ones, and the host
      // goes on.
      {"return ('x'):rep(1 << 30)",
       "script S: the script needs more than the 64 MiB of memory a project script may use"},
      {"local t = {}\nwhile true do t[#t + 1] = ('x'):rep(1000) .. #t end",
       "script S: the script needs more than the 64 MiB of memory a project script may use"},
  };
  for (const auto& [text, expected] : denied)
    EXPECT_EQ(RunError(text).rfind(expected, 0), 0u) << text << "\n  gave: " << RunError(text);

  TWrenScriptLimits small;
  small.memoryBytes = size_t{1} << 20;
  EXPECT_EQ(RunError("local s = ('x'):rep(400000)\nreturn s .. s .. s", small),
            "script S: the script needs more than the 1 MiB of memory a project script may use");
  EXPECT_EQ(RunError("local s = ('x'):rep(400000)\nreturn #s", small), "");
}

TEST(WrenScriptEngine, StopRequestEndsARunningScriptWhateverItCatches) {
  // print() is the script's sign that it is running: the stop comes while it loops.
  const std::pair<const char*, const char*> cases[] = {  // script, its error
      {"print()\nwhile true do end", "script S, line 2: stopped by user request"},
      {"print()\nwhile true do\n  pcall(function() while true do end end)\nend",
       "script S, line 3: stopped by user request"},
      {"print()\nlocal function f() return f() end\nf()",
       "script S, line 2: stopped by user request"},
      {"print()\nxpcall(function() error('x') end, function() while true do end end)\n"
       "while true do end",
       "script S, line 2: stopped by user request"},
      {"print()\nValue = ('x'):gsub('x', function() while true do end end)",
       "script S, line 2: stopped by user request"},
      {"print()\ntable.sort({3, 2, 1}, function(a, b) while true do end end)",
       "script S, line 2: stopped by user request"},
  };
  for (const auto& [text, expected] : cases) {
    std::atomic<bool> stop{false};
    TWrenScriptLimits limits;
    limits.stop = &stop;
    limits.print = [&](const std::string&) { stop = true; };
    const std::string error = RunError(text, limits);
    EXPECT_TRUE(stop) << text;
    EXPECT_EQ(error, expected) << text;
  }
  // A stop already requested ends a script before it gets far; a short one still finishes.
  std::atomic<bool> stop{true};
  TWrenScriptLimits limits;
  limits.stop = &stop;
  EXPECT_EQ(RunError("for i = 1, 1e9 do end", limits),
            "script S, line 1: stopped by user request");
  EXPECT_EQ(RunError("Value = Value .. 'x'", limits), "");
}

}  // namespace
}  // namespace wren
