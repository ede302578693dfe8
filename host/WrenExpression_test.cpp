#include <gtest/gtest.h>

#include <map>

#include "WrenExpression.h"
#include "WrenStepHost.h"

namespace wren {
namespace {

TEST(Expression, ExpandsNestedUndefinedAndLiteralPercents) {
  const std::map<std::string, std::string> vars = {
      {"ROOT", "/build"}, {"OUT", "%ROOT%/bin"}, {"DLL", "%OUT%/core.dll"},
      {"SELF", "x%SELF%"}, {"EMPTY", ""}, {"PCT", "50%%"}};
  const TVariableLookup lookup = [&](const std::string& name, std::string& value) {
    auto it = vars.find(name);
    if (it == vars.end()) return false;
    value = it->second;
    return true;
  };
  struct Case {
    std::string in;
    bool ok;
    std::string out;  // result, or a fragment of the error
  } cases[] = {
      {"plain text", true, "plain text"},
      {"%DLL%", true, "/build/bin/core.dll"},
      {"a%EMPTY%b", true, "ab"},
      {"100%% sure", true, "100% sure"},
      {"%PCT%", true, "50%"},
      {"50% and no partner", true, "50% and no partner"},
      {"%NOPE%/x", false, "%NOPE%"},
      {"%OUT%/%MISSING%", false, "%MISSING%"},
      {"%SELF%", false, "nest"},
  };
  for (const Case& c : cases) {
    std::string result = "unchanged", error;
    const bool ok = ExpandVariables(c.in, lookup, result, error);
    EXPECT_EQ(ok, c.ok) << c.in;
    if (c.ok)
      EXPECT_EQ(result, c.out) << c.in;
    else {
      EXPECT_NE(error.find(c.out), std::string::npos) << c.in << " -> " << error;
      EXPECT_EQ(result, "unchanged");
    }
  }
}

TEST(Expression, StepHostUsesProjectVariablesThenEnvironmentAndLogsFailures) {
  setenv("MARROWBY_TEST_ENV_VAR", "from-env", 1);
  TWrenStepHost host;
  std::vector<std::string> lines;
  host.SetLogSink([&](TWrenLogStream, const std::string& text) { lines.push_back(text); });
  host.SetVariables({{"Version", "1.2"}, {"MARROWBY_TEST_ENV_VAR", "from-project"}});

  std::string out;
  EXPECT_TRUE(host.TryExpandExpression("Output File", "v%VERSION%", true, out));
  EXPECT_EQ(out, "v1.2");  // names compare without case
  EXPECT_TRUE(host.TryExpandExpression("X", "%MARROWBY_TEST_ENV_VAR%", false, out));
  EXPECT_EQ(out, "from-project");
  host.SetVariables({});
  EXPECT_TRUE(host.TryExpandExpression("X", "%MARROWBY_TEST_ENV_VAR%", false, out));
  EXPECT_EQ(out, "from-env");
  EXPECT_TRUE(lines.empty());

  EXPECT_TRUE(host.TryExpandExpression("Assembly Path", "", false, out));
  EXPECT_EQ(out, "");
  EXPECT_FALSE(host.TryExpandExpression("Assembly Path", "", true, out));
  EXPECT_FALSE(host.TryExpandExpression("Key File", "%UNDEFINED_THING%", false, out));
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_NE(lines[0].find("\"Assembly Path\""), std::string::npos) << lines[0];
  EXPECT_NE(lines[0].find("blank"), std::string::npos) << lines[0];
  EXPECT_NE(lines[1].find("\"Key File\""), std::string::npos) << lines[1];
  EXPECT_NE(lines[1].find("%UNDEFINED_THING%"), std::string::npos) << lines[1];
  unsetenv("MARROWBY_TEST_ENV_VAR");
}

}  // namespace
}  // namespace wren
