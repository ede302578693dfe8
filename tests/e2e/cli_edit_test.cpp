// Changing a build project from the command line: new, add, set, remove, move. Each edit changes
// what it names and keeps every other byte of the file.
#include <gtest/gtest.h>

#include "CliMachine.h"
#include "TestSupport.h"

namespace wren {
namespace {

// Comments, odd spacing and a variable: the things an editor must not disturb.
const char kProject[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!-- signing -->\n"
    "<MarrowbyProject version=\"1\">\n"
    "  <Variables>\n"
    "    <Variable name=\"KEY\">%ProjectDir%/k.snk</Variable>\n"
    "  </Variables>\n"
    "  <Actions>\n"
    "    <!-- first -->\n"
    "    <Action class=\"TSNGenericSN\"   description=\"Make a key\">\n"
    "      <Property name=\"Options\">-k %KEY%</Property>\n"
    "      <Property name=\"StartDir\">%ProjectDir%</Property>\n"
    "    </Action>\n"
    "    <Action class=\"TSNGenericSN\" description=\"Check\">\n"
    "      <Property name=\"Options\">-q -v a.dll</Property>\n"
    "      <Property name=\"StartDir\">%ProjectDir%</Property>\n"
    "    </Action>\n"
    "  </Actions>\n"
    "</MarrowbyProject>\n";

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  const size_t at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from;
  if (at != std::string::npos) text.replace(at, from.size(), to);
  return text;
}

TEST(CliEdit, EditsChangeOnlyWhatTheyName) {
  CliMachine m;
  const std::string file = m.dir / "p.mbproj";
  test::WriteFile(file, kProject);
  std::string out, err;

  ASSERT_EQ(m.Run({"add", file, "TSNVerifyAssembly", "--description", "Verify",
                   "Assembly=%ProjectDir%/a.dll", "Force=true"},
                  &out, &err),
            0)
      << err;
  const std::string added = test::ReadFile(file);
  const std::string newStep =
      "    <Action class=\"TSNVerifyAssembly\" description=\"Verify\">\n"
      "      <Property name=\"Assembly\">%ProjectDir%/a.dll</Property>\n"
      "      <Property name=\"Force\">true</Property>\n"
      "    </Action>\n";
  EXPECT_EQ(added, Replaced(kProject, "  </Actions>\n", newStep + "  </Actions>\n"));

  // Moving a step away and back, by number and by description, gives the same bytes again.
  ASSERT_EQ(m.Run({"move", file, "3", "1"}, &out, &err), 0) << err;
  EXPECT_LT(test::ReadFile(file).find("TSNVerifyAssembly"), test::ReadFile(file).find("Make a key"));
  ASSERT_EQ(m.Run({"move", file, "verify", "3"}, &out, &err), 0) << err;
  EXPECT_EQ(test::ReadFile(file), added);

  ASSERT_EQ(m.Run({"set", file, "2", "Options", "-q -vf a.dll"}, &out, &err), 0) << err;
  ASSERT_EQ(m.Run({"set", file, "Make a key", "description", "Make the key"}, &out, &err), 0);
  ASSERT_EQ(m.Run({"set", file, "3", "enabled", "false"}, &out, &err), 0) << err;
  std::string expected = Replaced(added, "-q -v a.dll", "-q -vf a.dll");
  expected = Replaced(expected, "description=\"Make a key\"", "description=\"Make the key\"");
  expected = Replaced(expected, "description=\"Verify\"", "description=\"Verify\" enabled=\"false\"");
  EXPECT_EQ(test::ReadFile(file), expected);

  ASSERT_EQ(m.Run({"remove", file, "3"}, &out, &err), 0) << err;
  ASSERT_EQ(m.Run({"set", file, "2", "Options", "-q -v a.dll"}, &out, &err), 0) << err;
  ASSERT_EQ(m.Run({"set", file, "1", "description", "Make a key"}, &out, &err), 0) << err;
  EXPECT_EQ(test::ReadFile(file), kProject);
}

TEST(CliEdit, BadNamesAreRefusedWithSuggestionsAndTheFileKept) {
  CliMachine m;
  const std::string file = m.dir / "p.mbproj";
  test::WriteFile(file, kProject);
  const struct {
    std::vector<std::string> args;
    std::string expected;
  } cases[] = {
      {{"add", file, "TSNVerifyAsembly"}, "did you mean TSNVerifyAssembly"},
      {{"add", file, "TSNVerifyAssembly", "Asembly=a.dll"}, "did you mean Assembly?"},
      {{"add", file, "TSNVerifyAssembly", "Asembly=a.dll"},
       "properties of TSNVerifyAssembly: CaptureOutput"},
      {{"add", file, "TSNVerifyAssembly", "Force=yes"}, "not a boolean"},
      {{"add", file, "TSNVerifyAssembly", "Force"}, "PROP=VALUE"},
      {{"add", file, "TWrenCSharpCompilerAction", "Target=Modul"}, "did you mean Module?"},
      {{"set", file, "1", "Optons", "-x"}, "did you mean Options?"},
      {{"set", file, "Chek", "Options", "-x"}, "did you mean Check?"},
      {{"set", file, "9", "Options", "-x"}, "the project has 2 step(s)"},
      {{"set", file, "1", "enabled", "no"}, "true or false"},
      {{"remove", file, "0"}, "no step 0"},
      {{"move", file, "1", "3"}, "from 1 to 2"},
      {{"new", file}, "already exists"},
      {{"add", m.dir / "missing.mbproj", "TSNVerifyAssembly"}, "missing.mbproj"},
  };
  for (const auto& c : cases) {
    std::string out, err;
    EXPECT_EQ(m.Run(c.args, &out, &err), 2) << c.expected;
    EXPECT_NE(err.find(c.expected), std::string::npos) << c.expected << "\n" << err;
    EXPECT_EQ(test::ReadFile(file), kProject) << c.expected;
  }
}

TEST(CliEdit, NewProjectBuiltStepByStepRuns) {
  CliMachine m;
  const std::string file = m.dir / "sub/new.mbproj";
  std::string out, err;
  ASSERT_EQ(m.Run({"new", file}, &out, &err), 0) << err;
  ASSERT_EQ(m.Run({"add", file, "tsngenericsn", "Options=-k %ProjectDir%/k.snk",
                   "StartDir=%ProjectDir%"},
                  &out, &err),
            0)
      << err;
  EXPECT_NE(test::ReadFile(file).find("class=\"TSNGenericSN\""), std::string::npos);
  ASSERT_EQ(m.Run({"run", file}, &out, &err), 0) << out << err;
  EXPECT_EQ(test::RecordedCall(m.sn)["argv"],
            (nlohmann::json{m.sn, "-k", m.dir / "sub/k.snk"}));
}

}  // namespace
}  // namespace wren
