#include "WrenProcess.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace wren {
namespace {

namespace fs = std::filesystem;

using TArgs = std::vector<std::string>;

TEST(SplitCommandLine, FollowsTheCRuntimeRules) {
  struct TCase {
    std::string text;
    TArgs args;
  };
  const TCase cases[] = {
      {"", {}},
      {"   \t ", {}},
      {"a b\tc", {"a", "b", "c"}},
      {"  lead and trail  ", {"lead", "and", "trail"}},
      {"a \t\t b", {"a", "b"}},
      // Quotes group blanks and may start or end inside an argument.
      {R"("a b" c)", {"a b", "c"}},
      {R"(x"y z"w)", {"xy zw"}},
      {"\"tab\there\"", {"tab\there"}},
      // Empty arguments.
      {R"("")", {""}},
      {R"(a "" b)", {"a", "", "b"}},
      {R"("" "")", {"", ""}},
      // Unterminated quote runs to the end, blanks included.
      {R"(a "b c   )", {"a", "b c   "}},
      {R"(")", {""}},
      // 2n backslashes + quote: n backslashes, the quote toggles.
      {R"(a\\"b c")", {R"(a\b c)"}},
      {R"(a\\\\"b c")", {R"(a\\b c)"}},
      // 2n+1 backslashes + quote: n backslashes and a literal quote.
      {R"(a\"b)", {R"(a"b)"}},
      {R"(a\\\"b)", {R"(a\"b)"}},
      {R"("a\"b c")", {R"(a"b c)"}},
      // Backslashes not before a quote are literal.
      {R"(C:\dir\file.cs \\server\share\ a\\b)", {R"(C:\dir\file.cs)", R"(\\server\share\)", R"(a\\b)"}},
      // Directory arguments quoted with a trailing backslash: doubled it ends the quote, single it
      // escapes the quote and swallows what follows.
      {R"("C:\my dir\\" next)", {R"(C:\my dir\)", "next"}},
      {R"("C:\my dir\" next)", {R"(C:\my dir" next)"}},
      {R"(/out:"C:\a b\\")", {R"(/out:C:\a b\)"}},
      // "" inside a quoted part is a literal quote and the part stays quoted.
      {R"("a""b c")", {R"(a"b c)"}},
      {R"("""")", {R"(")"}},
      {R"("""" x)", {R"(")", "x"}},
      {R"("""x y" z)", {R"("x y)", "z"}},
      // Outside quotes "" only opens and closes an empty part.
      {R"(a""b)", {"ab"}},
      {R"(@"C:\rsp file.rsp")", {R"(@C:\rsp file.rsp)"}},
  };
  for (const TCase& c : cases) {
    EXPECT_EQ(SplitCommandLine(c.text), c.args) << "command line: [" << c.text << "]";
  }
}

TEST(IsManagedExecutable, LooksAtTheFirstTwoBytes) {
  const fs::path dir = fs::temp_directory_path() / ("mz-test-" + std::to_string(::getpid()));
  fs::create_directories(dir);
  auto write = [&](const std::string& name, const std::string& bytes) {
    std::ofstream(dir / name, std::ios::binary) << bytes;
    return (dir / name).string();
  };
  EXPECT_TRUE(IsManagedExecutable(write("tool.exe", std::string("MZ\x90\0\x03", 5))));
  EXPECT_TRUE(IsManagedExecutable(write("exact.exe", "MZ")));
  EXPECT_FALSE(IsManagedExecutable(write("script.sh", "#!/bin/sh\n")));
  EXPECT_FALSE(IsManagedExecutable(write("short", "M")));
  EXPECT_FALSE(IsManagedExecutable(write("empty", "")));
  EXPECT_FALSE(IsManagedExecutable(write("lower", "mz")));
  EXPECT_FALSE(IsManagedExecutable((dir / "missing.exe").string()));
  EXPECT_FALSE(IsManagedExecutable(dir.string()));
  fs::remove_all(dir);
}

}  // namespace
}  // namespace wren
