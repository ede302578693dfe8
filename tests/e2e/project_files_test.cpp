// Project files through the marrowby executable: malformed or mistyped files are refused with
// their place and nothing runs; no file, however built, crashes the loader.
#include <gtest/gtest.h>

#include "CliMachine.h"
#include "TestSupport.h"

namespace wren {
namespace {

const char kHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MarrowbyProject version=\"1\">\n";

std::string SnAction(const std::string& attributes) {
  return "  <Actions>\n    <Action class=\"TSNGenericSN\"" + attributes + ">\n"
         "      <Property name=\"Options\">-q</Property>\n"
         "      <Property name=\"StartDir\">%ProjectDir%</Property>\n    </Action>\n  </Actions>\n";
}

TEST(ProjectFiles, MalformedOrMistypedFilesAreRefusedAndNothingRuns) {
  std::string deep = kHead;
  for (int i = 0; i < 15000; ++i) deep += "<Actions>";
  for (int i = 0; i < 15000; ++i) deep += "</Actions>";
  deep += "</MarrowbyProject>\n";

  const struct {
    const char* label;
    std::string text;
    std::string where;    // ":line: " and what follows it
  } cases[] = {
      {"enabled mistyped", kHead + SnAction(" enable=\"false\"") + "</MarrowbyProject>\n",
       ":4: action 'TSNGenericSN': unknown attribute 'enable' in <Action> (expected class, "
       "enabled or description); did you mean enabled?"},
      {"description mistyped", kHead + SnAction(" descripton=\"x\"") + "</MarrowbyProject>\n",
       ":4: action 'TSNGenericSN': unknown attribute 'descripton' in <Action>"},
      {"bad enabled value", kHead + SnAction(" enabled=\"yes\"") + "</MarrowbyProject>\n",
       ":4: action 'TSNGenericSN': enabled: 'yes' is not a boolean (true or false)"},
      {"second root element",
       kHead + SnAction("") + "</MarrowbyProject>\n<MarrowbyProject version=\"1\"/>\n",
       ":10: a second root element <MarrowbyProject> after <MarrowbyProject>"},
      {"text after the root", kHead + SnAction("") + "</MarrowbyProject>\ntrailing words\n",
       ":10: text outside the root element"},
      {"nested 15,000 deep", deep, ":3: elements nested more than 100 deep"},
  };
  CliMachine m;
  const std::string path = m.dir / "p.mbproj";
  for (const auto& c : cases) {
    SCOPED_TRACE(c.label);
    test::WriteFile(path, c.text);
    for (const char* command : {"validate", "run"}) {
      SCOPED_TRACE(command);
      std::string err;
      EXPECT_EQ(m.Run({command, path}, nullptr, &err), 2) << err;
      EXPECT_NE(err.find("marrowby: " + path + c.where), std::string::npos) << err;
      EXPECT_TRUE(test::RecordedCall(m.sn).is_null()) << "a step ran";
    }
  }

  // The same step, written correctly, does run: the refusals above are the file's fault.
  test::WriteFile(path, kHead + SnAction(" enabled=\"true\" description=\"\xFF\xFE\"") +
                            "</MarrowbyProject>\n");
  std::string err;
  EXPECT_EQ(m.Run({"run", path}, nullptr, &err), 0) << err;
  EXPECT_FALSE(test::RecordedCall(m.sn).is_null());
}

}  // namespace
}  // namespace wren
