#include <gtest/gtest.h>

#include "WrenCommandLine.h"
#include "WrenProcess.h"

namespace wren {
namespace {

struct BuilderCase {
  std::string separator;  // "" keeps the default
  std::string switchText;
  std::string value;
  int mode;
  std::string text;
};

TEST(CommandLineBuilder, RendersEveryModeAndSeparatorCase) {
  const BuilderCase cases[] = {
      {"", "/nologo", "", 2, "/nologo"},
      {"", "", "a.dll", 2, "a.dll"},
      {"", "", "my file.dll", 2, "\"my file.dll\""},
      {"", "", "tab\there", 2, "\"tab\there\""},
      {"", "", "my file.dll", 0, "my file.dll"},
      {"", "", "plain", 1, "\"plain\""},
      {"", "/out:", "bin dir\\x.dll", 2, "/out:\"bin dir\\x.dll\""},
      {"", "/out:", "x.dll", 2, "/out:x.dll"},
      {"", "-D:name=", "a b", 2, "-D:name=\"a b\""},
      {"", "-k", "key.snk", 2, "-k key.snk"},
      {"", "-k", "my key.snk", 2, "-k \"my key.snk\""},
      {" ", "-R", "a.dll", 2, "-R a.dll"},
      {"", "/t", "x", 2, "/t x"},
      {"#", "/t", "x", 2, "/t#x"},
      // A value holding a double quote is the caller's own quoting: left alone in mode 2.
      {"", "/reference:", "\"a b.dll\"", 2, "/reference:\"a b.dll\""},
      {"", "", "say \"hi\" there", 2, "say \"hi\" there"},
      // Trailing backslashes are doubled inside quotes so the Windows rules give them back.
      {"", "/lib:", "C:\\My Libs\\", 2, "/lib:\"C:\\My Libs\\\\\""},
      {"", "", "dir\\\\", 1, "\"dir\\\\\\\\\""},
      {"", "", "no blank\\", 0, "no blank\\"},
      {"", "", "", 2, ""},
  };
  for (const BuilderCase& c : cases) {
    auto builder = CreateCommandLineBuilder();
    if (!c.separator.empty()) builder->SetSeparator(c.separator);
    auto arg = builder->AddArgument(c.switchText, c.value, c.mode);
    EXPECT_EQ(builder->GetCommandLineText(), c.text)
        << "switch '" << c.switchText << "' value '" << c.value << "' mode " << c.mode;
    EXPECT_EQ(arg->GetText(), c.text);
  }
}

TEST(CommandLineBuilder, JoinsArgumentsAndQuotedValuesSplitBackUnchanged) {
  auto builder = CreateCommandLineBuilder();
  const std::vector<std::string> values = {"plain", "with blank", "C:\\Program Files\\",
                                           "trail\\\\ x\\\\", "tab\tinside"};
  for (const std::string& v : values) builder->AddArgument("", v, 2);
  builder->AddArgument("/flag", "", 2);
  builder->AddArgument("", "", 2);  // adds nothing, not even a blank
  EXPECT_EQ(builder->GetCommandLineText(),
            "plain \"with blank\" \"C:\\Program Files\\\\\" \"trail\\\\ x\\\\\\\\\" "
            "\"tab\tinside\" /flag");
  std::vector<std::string> expected = values;
  expected.push_back("/flag");
  EXPECT_EQ(SplitCommandLine(builder->GetCommandLineText()), expected);

  builder->Clear();
  EXPECT_EQ(builder->GetCommandLineText(), "");
  builder->SetSeparator(" ");
  builder->AddArgument("-Vr", "a.dll", 2);
  EXPECT_EQ(builder->GetCommandLineText(), "-Vr a.dll");
}

}  // namespace
}  // namespace wren
