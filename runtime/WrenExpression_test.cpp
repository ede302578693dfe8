#include <gtest/gtest.h>

#include <map>

#include "WrenExpression.h"
#include "WrenStepHost.h"

namespace wren {
namespace {

TEST(Expression, ExpandsVariablesAndTheStepHostLooksUpAndAppliesBlankFails) {
  const std::map<std::string, std::string> vars = {
      {"ROOT", "/build"}, {"OUT", "%ROOT%/bin"}, {"DLL", "%OUT%/core.dll"},
      {"SELF", "x%SELF%"}, {"EMPTY", ""},        {"PCT", "50%%"}};
  const TVariableLookup lookup = [&](const std::string& name, std::string& value) {
    auto it = vars.find(name);
    if (it != vars.end()) value = it->second;
    return it != vars.end();
  };
  const std::tuple<std::string, bool, std::string> cases[] = {  // text, ok, result or error part
      {"plain text", true, "plain text"}, {"%DLL%", true, "/build/bin/core.dll"},
      {"a%EMPTY%b", true, "ab"},          {"100%% sure", true, "100% sure"},
      {"%PCT%", true, "50%"},             {"50% and no partner", true, "50% and no partner"},
      {"%NOPE%/x", false, "%NOPE%"},      {"%OUT%/%MISSING%", false, "%MISSING%"},
      {"%SELF%", false, "nest"},
  };
  for (const auto& [in, ok, out] : cases) {
    std::string result = "unchanged", error;
    EXPECT_EQ(ExpandVariables(in, lookup, result, error), ok) << in;
    EXPECT_EQ(result, ok ? out : "unchanged") << in;  // failures leave the result alone
    EXPECT_NE((ok ? result : error).find(out), std::string::npos) << in << " -> " << error;
  }

  // A step's host: project variables, then the environment; failures are logged.
  setenv("MARROWBY_TEST_ENV_VAR", "from-env", 1);
  TWrenStepHost host;
  std::vector<std::string> lines;
  host.SetLogSink([&](TWrenLogStream, const std::string& text) { lines.push_back(text); });
  host.SetVariables({{"Version", "1.2"}, {"MARROWBY_TEST_ENV_VAR", "from-project"}});

  const auto expand = [&](const std::string& field, const std::string& text, bool blankFails) {
    std::string out;
    return host.TryExpandExpression(field, text, blankFails, out) ? out : "(failed)";
  };
  EXPECT_EQ(expand("Output File", "v%VERSION%", true), "v1.2");  // names compare without case
  EXPECT_EQ(expand("X", "%MARROWBY_TEST_ENV_VAR%", false), "from-project");
  host.SetVariables({});
  EXPECT_EQ(expand("X", "%MARROWBY_TEST_ENV_VAR%", false), "from-env");
  unsetenv("MARROWBY_TEST_ENV_VAR");
  EXPECT_TRUE(lines.empty());

  // blankFails: an empty result is an error only when asked for.
  EXPECT_EQ(expand("Assembly Path", "", false), "");
  EXPECT_EQ(expand("Assembly Path", "", true), "(failed)");
  EXPECT_EQ(expand("Key File", "%UNDEFINED_THING%", false), "(failed)");
  ASSERT_EQ(lines.size(), 2u);
  for (const char* part : {"\"Assembly Path\"", "blank"})
    EXPECT_NE(lines[0].find(part), std::string::npos) << lines[0];
  for (const char* part : {"\"Key File\"", "%UNDEFINED_THING%"})
    EXPECT_NE(lines[1].find(part), std::string::npos) << lines[1];
}

}  // namespace
}  // namespace wren
