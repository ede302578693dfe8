#include "WrenStringTok.h"

#include <gtest/gtest.h>

namespace wren {
namespace {

TEST(WrenStringTok, WalksAnAttributeLine) {
  auto tok = CreateStringTokeniser(" \t[assembly: AssemblyVersion(\"1.0.*\")]");
  EXPECT_EQ(tok->CurrentChar(), ' ');
  tok->SkipBlanks();
  EXPECT_EQ(tok->Position(), 2u);
  EXPECT_EQ(tok->CurrentChar(), '[');
  EXPECT_EQ(tok->NextChar(), 'a');
  EXPECT_EQ(tok->ReadUpTo(':'), "assembly");
  EXPECT_EQ(tok->CurrentChar(), ':');  // left on the character read up to
  EXPECT_EQ(tok->ReadUpTo(':'), "");  // already there: nothing read, no move
  EXPECT_EQ(tok->NextChar(), ' ');
  EXPECT_EQ(tok->Rest(), "AssemblyVersion(\"1.0.*\")]");
  EXPECT_EQ(tok->CurrentChar(), ' ');  // Rest does not move
  EXPECT_EQ(tok->ReadUpTo('#'), " AssemblyVersion(\"1.0.*\")]");  // absent: to the end
  EXPECT_TRUE(tok->AtEnd());
  EXPECT_EQ(tok->CurrentChar(), '\0');
  EXPECT_EQ(tok->NextChar(), '\0');  // stays at the end
  EXPECT_EQ(tok->Rest(), "");
}

TEST(WrenStringTok, EdgeCases) {
  struct Case {
    const char* text;
    size_t afterSkip;
    char current;
    const char* rest;
  } cases[] = {
      {"", 0, '\0', ""},
      {"   ", 3, '\0', ""},
      {"\t\tx y ", 2, 'x', "x y "},
      {"\n x", 0, '\n', "\n x"},  // only spaces and tabs are blanks
      {"<Assembly: X>", 0, '<', "<Assembly: X>"},
  };
  auto tok = CreateStringTokeniser("previous text");
  tok->NextChar();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    tok->SetText(c.text);  // also resets the position
    EXPECT_EQ(tok->Position(), 0u);
    EXPECT_EQ(tok->Rest(), c.rest);
    tok->SkipBlanks();
    EXPECT_EQ(tok->Position(), c.afterSkip);
    EXPECT_EQ(tok->CurrentChar(), c.current);
    EXPECT_EQ(tok->AtEnd(), c.current == '\0');
  }
}

}  // namespace
}  // namespace wren
