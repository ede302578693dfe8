#include "WrenUtils.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

namespace wren {
namespace {

TEST(WrenUtils, Quoting) {
  struct Case {
    const char* text;
    bool skipIfQuoted;
    const char* expected;
  } quote[] = {
      {"a b", false, "\"a b\""},       {"", false, "\"\""},
      {"\"a b\"", false, "\"\"a b\"\""}, {"\"a b\"", true, "\"a b\""},
      {"\"", true, "\"\"\""},        {"\"\"", true, "\"\""},
      {"a\"b", true, "\"a\"b\""},       {"'x'", true, "\"'x'\""},
  };
  for (const Case& c : quote) EXPECT_EQ(DoubleQuoteString(c.text, c.skipIfQuoted), c.expected) << c.text;

  struct Strip {
    const char* text;
    const char* expected;
  } strip[] = {
      {"\"a b\"", "a b"}, {"'a b'", "a b"}, {"\"\"x\"\"", "\"x\""}, {"\"a'", "\"a'"},
      {"\"", "\""},       {"''", ""},       {"plain", "plain"},     {"\"open", "\"open"},
  };
  for (const Strip& c : strip) EXPECT_EQ(StripQuotes(c.text), c.expected) << c.text;
}

TEST(WrenUtils, ExpandRelativePath) {
  const std::string d(1, PathDelim);
  struct Case {
    const char* base;
    const char* path;
    std::string expected;
  } cases[] = {
      {"/proj", "/abs/file.cs", "/abs/file.cs"},
      {"/proj", "C:\\abs\\file.cs", "C:\\abs\\file.cs"},
      {"/proj", "src/a.cs", "/proj" + d + "src" + d + "a.cs"},
      {"/proj/", "./src/../lib/./b.cs", "/proj" + d + "lib" + d + "b.cs"},
      {"/proj/sub", "../../../x", "/x"},
      {"/proj", "out/", "/proj" + d + "out" + d},
      {"/proj", "", "/proj"},
      {"rel/dir", "../../../x", ".." + d + "x"},
      {"", "a/./b", "a" + d + "b"},
      {"C:\\proj", "..\\bin\\x.exe", "C:\\bin" + d + "x.exe"},
  };
  for (const Case& c : cases)
    EXPECT_EQ(ExpandRelativePath(c.base, c.path), c.expected) << c.base << " + " << c.path;
}

TEST(WrenUtils, LoadUnicodeFile) {
  char templ[] = "/tmp/wren-utils-XXXXXX";
  ASSERT_NE(::mkdtemp(templ), nullptr);
  const std::string file = std::string(templ) + "/text";
  struct Case {
    const char* what;
    std::string bytes;
    TStrings lines;
  } cases[] = {
      {"UTF-8 with BOM, mixed breaks", "\xEF\xBB\xBF" "a\r\nb\nc\rd", {"a", "b", "c", "d"}},
      {"trailing break adds no line", "one\r\n\r\n", {"one", ""}},
      {"8-bit stays bytes", "caf\xE9\n", {"caf\xE9"}},
      {"empty", "", {}},
      {"UTF-16LE", std::string("\xFF\xFE" "a\0\xE9\0\r\0\n\0" "b\0", 12), {"a\xC3\xA9", "b"}},
      {"UTF-16BE", std::string("\xFE\xFF\0a\0\r\0b", 8), {"a", "b"}},
      {"UTF-16LE surrogate pair", std::string("\xFF\xFE\x3D\xD8\x00\xDE", 6), {"\xF0\x9F\x98\x80"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    std::ofstream(file, std::ios::binary | std::ios::trunc) << c.bytes;
    TStrings lines{"stale"};
    ASSERT_TRUE(LoadUnicodeFile(file, lines));
    EXPECT_EQ(lines, c.lines);
  }
  TStrings lines;
  EXPECT_FALSE(LoadUnicodeFile(std::string(templ) + "/missing", lines));
  std::filesystem::remove_all(templ);
}

TEST(WrenUtils, CodePagesAndSystemFolders) {
  EXPECT_EQ(CodePageToString(65001), "65001 (UTF-8)");
  EXPECT_EQ(CodePageToString(1252), "1252 (ANSI Latin 1)");
  EXPECT_EQ(CodePageToString(437), "437 (OEM United States)");
  EXPECT_EQ(CodePageToString(12345), "12345");
  for (int cp : {850, 1250, 1258, 28591, 65000, 1200, 1201, 932, 936, 949, 950})
    EXPECT_EQ(CodePageToString(cp).rfind(std::to_string(cp) + " (", 0), 0u) << cp;

  ::setenv("MARROWBY_WINDIR", "/opt/win", 1);
  ::unsetenv("MARROWBY_SYSDIR");
  EXPECT_EQ(GetWinDirectory(), "/opt/win");
  EXPECT_EQ(GetSysDirectory(), "");
  ::unsetenv("MARROWBY_WINDIR");
  EXPECT_EQ(GetWinDirectory(), "");
}

TEST(WrenUtils, TextHelpers) {
  EXPECT_EQ(UpperCase("aBz\xC3\xA9"), "ABZ\xC3\xA9");  // ASCII only: other bytes untouched
  EXPECT_EQ(LowerCase("AbZ"), "abz");
  EXPECT_TRUE(SameText("Assembly:", "aSSEMBLY:"));
  EXPECT_FALSE(SameText("abc", "abd"));
  EXPECT_FALSE(SameText("abc", "ab"));
  EXPECT_EQ(Trim(" \t\r\n x y \x01"), "x y");
  EXPECT_EQ(TrimLeft("\t x "), "x ");
  EXPECT_EQ(TrimRight("\t x \n"), "\t x");
  EXPECT_EQ(Trim("\xC3\xA9 "), "\xC3\xA9");  // UTF-8 bytes are not blanks
  EXPECT_EQ(Trim("   "), "");
  EXPECT_EQ(FindText("Hello World", "WORLD"), 6u);
  EXPECT_EQ(FindText("Hello", "xyz"), std::string::npos);
  EXPECT_EQ(FindText("ab", "abc"), std::string::npos);
}

TEST(WrenUtils, Paths) {
  const std::string d(1, PathDelim);
  EXPECT_EQ(IncludeTrailingPathDelimiter("dir"), "dir" + d);
  EXPECT_EQ(IncludeTrailingPathDelimiter("dir/"), "dir/");
  EXPECT_EQ(IncludeTrailingPathDelimiter("dir\\"), "dir\\");
  EXPECT_EQ(IncludeTrailingPathDelimiter(""), d);
  EXPECT_EQ(ExcludeTrailingPathDelimiter("dir\\"), "dir");
  EXPECT_EQ(ExcludeTrailingPathDelimiter("dir"), "dir");

  struct Case {
    const char* path;
    const char* dir;
    const char* name;
    const char* ext;
    const char* changed;  // ChangeFileExt(path, ".dll")
  } cases[] = {
      {"/src/App.cs", "/src/", "App.cs", ".cs", "/src/App.dll"},
      {"C:\\src\\lib.v2\\App", "C:\\src\\lib.v2\\", "App", "", "C:\\src\\lib.v2\\App.dll"},
      {"mixed\\dir/a.b.c", "mixed\\dir/", "a.b.c", ".c", "mixed\\dir/a.b.dll"},
      {"noext", "", "noext", "", "noext.dll"},
      {"dir/", "dir/", "", "", "dir/.dll"},
      {"/x/.hidden", "/x/", ".hidden", ".hidden", "/x/.dll"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path);
    EXPECT_EQ(ExtractFilePath(c.path), c.dir);
    EXPECT_EQ(ExtractFileName(c.path), c.name);
    EXPECT_EQ(ExtractFileExt(c.path), c.ext);
    EXPECT_EQ(ChangeFileExt(c.path, ".dll"), c.changed);
  }
}

TEST(WrenUtils, NameValueLines) {
  const TStrings lines{"Debug=true", "noequals", "Define=A=B", "=anonymous", "debug=second", "Empty="};
  EXPECT_EQ(NameOfLine("Define=A=B"), "Define");
  EXPECT_EQ(ValueOfLine("Define=A=B"), "A=B");
  EXPECT_EQ(NameOfLine("noequals"), "noequals");
  EXPECT_EQ(ValueOfLine("noequals"), "");
  struct Case {
    const char* name;
    int index;
    const char* value;
  } cases[] = {
      {"DEBUG", 0, "true"}, {"define", 2, "A=B"}, {"noequals", 1, ""}, {"", 3, "anonymous"},
      {"Empty", 5, ""},     {"missing", -1, ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(IndexOfName(lines, c.name), c.index) << c.name;
    EXPECT_EQ(ValueOfName(lines, c.name), c.value) << c.name;
  }
}

}  // namespace
}  // namespace wren
