#include <gtest/gtest.h>

#include "TestSupport.h"
#include "WrenCommandLine.h"
#include "WrenProcess.h"

namespace wren {
namespace {

TEST(CommandLineBuilder, RendersEveryModeAndSeparatorCaseAndJoinsWhatSplitsBack) {
  const struct {
    std::string separator;  // "" keeps the default
    std::string switchText, value;
    int mode;
    std::string text;
  } cases[] = {
      {"", "/nologo", "", 2, "/nologo"}, {"", "", "a.dll", 2, "a.dll"}, {"", "", "", 2, ""},
      {"", "", "my file.dll", 2, "\"my file.dll\""}, {"", "", "tab\there", 2, "\"tab\there\""},
      {"", "", "my file.dll", 0, "my file.dll"}, {"", "", "plain", 1, "\"plain\""},
      {"", "/out:", "bin dir\\x.dll", 2, "/out:\"bin dir\\x.dll\""},
      {"", "-D:name=", "a b", 2, "-D:name=\"a b\""}, {"", "/out:", "x.dll", 2, "/out:x.dll"},
      {"", "-k", "key.snk", 2, "-k key.snk"}, {"", "-k", "my key.snk", 2, "-k \"my key.snk\""},
      {" ", "-R", "a.dll", 2, "-R a.dll"}, {"#", "/t", "x", 2, "/t#x"},
      // A value holding a double quote is the caller's own quoting: left alone in mode 2.
      {"", "/reference:", "\"a b.dll\"", 2, "/reference:\"a b.dll\""},
      {"", "", "say \"hi\" there", 2, "say \"hi\" there"},
      // Trailing backslashes are doubled inside quotes so the Windows rules give them back.
      {"", "/lib:", "C:\\My Libs\\", 2, "/lib:\"C:\\My Libs\\\\\""},
      {"", "", "dir\\\\", 1, "\"dir\\\\\\\\\""}, {"", "", "no blank\\", 0, "no blank\\"},
  };
  for (const auto& c : cases) {
    auto builder = CreateCommandLineBuilder();
    if (!c.separator.empty()) builder->SetSeparator(c.separator);
    auto arg = builder->AddArgument(c.switchText, c.value, c.mode);
    EXPECT_EQ(builder->GetCommandLineText(), c.text)
        << "switch '" << c.switchText << "' value '" << c.value << "' mode " << c.mode;
    EXPECT_EQ(arg->GetText(), c.text);
  }

  // Arguments joined with single blanks; quoted values split back unchanged.
  auto builder = CreateCommandLineBuilder();
  std::vector<std::string> values = {"plain", "with blank", "C:\\Program Files\\",
                                     "trail\\\\ x\\\\", "tab\tinside"};
  for (const std::string& v : values) builder->AddArgument("", v, 2);
  builder->AddArgument("/flag", "", 2);
  builder->AddArgument("", "", 2);  // adds nothing, not even a blank
  EXPECT_EQ(builder->GetCommandLineText(),
            "plain \"with blank\" \"C:\\Program Files\\\\\" \"trail\\\\ x\\\\\\\\\" "
            "\"tab\tinside\" /flag");
  values.push_back("/flag");
  EXPECT_EQ(SplitCommandLine(builder->GetCommandLineText()), values);

  builder->Clear();
  EXPECT_EQ(builder->GetCommandLineText(), "");
  builder->AddArgument("-Vr", "a.dll", 2);
  EXPECT_EQ(builder->GetCommandLineText(), "-Vr a.dll");
}

TEST(SplitCommandLine, FollowsTheCRuntimeRules) {
  const std::pair<std::string, std::vector<std::string>> cases[] = {
      {"", {}}, {"   \t ", {}}, {"a b\tc", {"a", "b", "c"}}, {"a \t\t b", {"a", "b"}},
      {"  lead and trail  ", {"lead", "and", "trail"}},
      // Quotes group blanks and may start or end inside an argument.
      {R"("a b" c)", {"a b", "c"}}, {R"(x"y z"w)", {"xy zw"}}, {"\"tab\there\"", {"tab\there"}},
      // Empty arguments; an unterminated quote runs to the end, blanks included.
      {R"("")", {""}}, {R"(a "" b)", {"a", "", "b"}}, {R"("" "")", {"", ""}},
      {R"(a "b c   )", {"a", "b c   "}}, {R"(")", {""}},
      // 2n backslashes + quote: n backslashes, the quote toggles.
      {R"(a\\"b c")", {R"(a\b c)"}}, {R"(a\\\\"b c")", {R"(a\\b c)"}},
      // 2n+1 backslashes + quote: n backslashes and a literal quote.
      {R"(a\"b)", {R"(a"b)"}}, {R"(a\\\"b)", {R"(a\"b)"}}, {R"("a\"b c")", {R"(a"b c)"}},
      // Backslashes not before a quote are literal.
      {R"(C:\dir\file.cs \\server\share\ a\\b)",
       {R"(C:\dir\file.cs)", R"(\\server\share\)", R"(a\\b)"}},
      // Directory arguments quoted with a trailing backslash: doubled it ends the quote, single it
      // escapes the quote and swallows what follows.
      {R"("C:\my dir\\" next)", {R"(C:\my dir\)", "next"}},
      {R"("C:\my dir\" next)", {R"(C:\my dir" next)"}},
      {R"(/out:"C:\a b\\")", {R"(/out:C:\a b\)"}},
      // "" inside a quoted part is a literal quote and the part stays quoted.
      {R"("a""b c")", {R"(a"b c)"}}, {R"("""")", {R"(")"}}, {R"("""" x)", {R"(")", "x"}},
      {R"("""x y" z)", {R"("x y)", "z"}},
      // Outside quotes "" only opens and closes an empty part.
      {R"(a""b)", {"ab"}}, {R"(@"C:\rsp file.rsp")", {R"(@C:\rsp file.rsp)"}},
  };
  for (const auto& [text, args] : cases)
    EXPECT_EQ(SplitCommandLine(text), args) << "command line: [" << text << "]";
}

TEST(IsManagedExecutable, LooksAtTheFirstTwoBytes) {
  test::TempDir dir;
  const std::pair<std::string, bool> files[] = {
      {std::string("MZ\x90\0\x03", 5), true}, {"MZ", true},  {"#!/bin/sh\n", false},
      {"M", false},                           {"", false},   {"mz", false}};
  for (const auto& [bytes, managed] : files) {
    test::WriteFile(dir / "tool", bytes);
    EXPECT_EQ(IsManagedExecutable(dir / "tool"), managed) << bytes;
  }
  EXPECT_FALSE(IsManagedExecutable(dir / "missing.exe"));
  EXPECT_FALSE(IsManagedExecutable(dir.path()));
}

}  // namespace
}  // namespace wren
