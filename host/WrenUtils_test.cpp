#include "WrenUtils.h"

#include <gtest/gtest.h>

#include "TestSupport.h"

namespace wren {
namespace {

const std::string d(1, PathDelim);

TEST(WrenUtils, QuotingTextNameValueLinesPathsAndTextFiles) {
  const std::tuple<const char*, bool, const char*> quote[] = {
      {"a b", false, "\"a b\""}, {"", false, "\"\""}, {"\"a b\"", false, "\"\"a b\"\""},
      {"\"a b\"", true, "\"a b\""}, {"\"", true, "\"\"\""}, {"\"\"", true, "\"\""},
      {"a\"b", true, "\"a\"b\""}, {"'x'", true, "\"'x'\""}};
  for (const auto& [text, skip, expected] : quote)
    EXPECT_EQ(DoubleQuoteString(text, skip), expected) << text;
  const std::pair<const char*, const char*> strip[] = {
      {"\"a b\"", "a b"}, {"'a b'", "a b"}, {"\"\"x\"\"", "\"x\""}, {"\"a'", "\"a'"},
      {"\"", "\""},       {"''", ""},       {"plain", "plain"},     {"\"open", "\"open"}};
  for (const auto& [text, expected] : strip) EXPECT_EQ(StripQuotes(text), expected) << text;

  // ASCII case and blanks only: other bytes (UTF-8 here) are left alone.
  EXPECT_EQ(UpperCase("aBz\xC3\xA9"), "ABZ\xC3\xA9");
  EXPECT_EQ(Trim(" \t\r\n x y \x01"), "x y");
  EXPECT_EQ(Trim("\xC3\xA9 "), "\xC3\xA9");
  EXPECT_EQ(FindText("Hello World", "WORLD"), 6u);

  const TStrings lines{"Debug=true", "noequals", "Define=A=B", "=anonymous", "debug=2", "Empty="};
  const std::tuple<const char*, int, const char*> names[] = {
      {"DEBUG", 0, "true"}, {"define", 2, "A=B"}, {"noequals", 1, ""}, {"", 3, "anonymous"},
      {"Empty", 5, ""},     {"missing", -1, ""}};
  for (const auto& [name, index, value] : names) {
    EXPECT_EQ(IndexOfName(lines, name), index) << name;
    EXPECT_EQ(ValueOfName(lines, name), value) << name;
  }

  struct {
    const char *path, *dir, *name, *ext, *changed;  // changed: ChangeFileExt(path, ".dll")
  } const parts[] = {
      {"/src/App.cs", "/src/", "App.cs", ".cs", "/src/App.dll"},
      {"C:\\src\\lib.v2\\App", "C:\\src\\lib.v2\\", "App", "", "C:\\src\\lib.v2\\App.dll"},
      {"mixed\\dir/a.b.c", "mixed\\dir/", "a.b.c", ".c", "mixed\\dir/a.b.dll"},
      {"noext", "", "noext", "", "noext.dll"},
      {"dir/", "dir/", "", "", "dir/.dll"},
      {"/x/.hidden", "/x/", ".hidden", ".hidden", "/x/.dll"},
  };
  for (const auto& c : parts) {
    SCOPED_TRACE(c.path);
    EXPECT_EQ(ExtractFilePath(c.path), c.dir);
    EXPECT_EQ(ExtractFileName(c.path), c.name);
    EXPECT_EQ(ExtractFileExt(c.path), c.ext);
    EXPECT_EQ(ChangeFileExt(c.path, ".dll"), c.changed);
  }

  const std::tuple<const char*, const char*, std::string> relative[] = {
      {"/proj", "/abs/file.cs", "/abs/file.cs"}, {"/proj", "C:\\abs\\f.cs", "C:\\abs\\f.cs"},
      {"/proj", "src/a.cs", "/proj" + d + "src" + d + "a.cs"},
      {"/proj/", "./src/../lib/./b.cs", "/proj" + d + "lib" + d + "b.cs"},
      {"/proj/sub", "../../../x", "/x"}, {"/proj", "out/", "/proj" + d + "out" + d},
      {"/proj", "", "/proj"},            {"rel/dir", "../../../x", ".." + d + "x"},
      {"", "a/./b", "a" + d + "b"},      {"C:\\proj", "..\\bin\\x.exe", "C:\\bin" + d + "x.exe"},
  };
  for (const auto& [base, path, expected] : relative)
    EXPECT_EQ(ExpandRelativePath(base, path), expected) << base << " + " << path;

  test::TempDir dir;  // text files
  const std::tuple<const char*, std::string, TStrings> cases[] = {
      {"UTF-8 with BOM, mixed breaks", "\xEF\xBB\xBF" "a\r\nb\nc\rd", {"a", "b", "c", "d"}},
      {"trailing break adds no line", "one\r\n\r\n", {"one", ""}},
      {"8-bit stays bytes", "caf\xE9\n", {"caf\xE9"}},
      {"empty", "", {}},
      {"UTF-16LE", std::string("\xFF\xFE" "a\0\xE9\0\r\0\n\0" "b\0", 12), {"a\xC3\xA9", "b"}},
      {"UTF-16BE", std::string("\xFE\xFF\0a\0\r\0b", 8), {"a", "b"}},
      {"UTF-16LE surrogate pair", std::string("\xFF\xFE\x3D\xD8\x00\xDE", 6), {"\xF0\x9F\x98\x80"}},
  };
  for (const auto& [what, bytes, expected] : cases) {
    SCOPED_TRACE(what);
    test::WriteFile(dir / "text", bytes);
    TStrings read{"stale"};
    ASSERT_TRUE(LoadUnicodeFile(dir / "text", read));
    EXPECT_EQ(read, expected);
  }
  TStrings none;
  EXPECT_FALSE(LoadUnicodeFile(dir / "missing", none));
}

}  // namespace
}  // namespace wren
