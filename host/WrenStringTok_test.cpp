#include "WrenStringTok.h"

#include <gtest/gtest.h>

namespace wren {
namespace {

TEST(WrenStringTok, WalksAnAttributeLineAndStartsAgainOnNewText) {
  auto tok = CreateStringTokeniser(" \t[assembly: AssemblyVersion(\"1.0.*\")]");
  tok->SkipBlanks();
  EXPECT_EQ(tok->Position(), 2u);
  EXPECT_EQ(tok->NextChar(), 'a');
  EXPECT_EQ(tok->ReadUpTo(':'), "assembly");
  EXPECT_EQ(tok->CurrentChar(), ':');  // left on the character read up to
  EXPECT_EQ(tok->ReadUpTo(':'), "");   // already there: nothing read, no move
  EXPECT_EQ(tok->NextChar(), ' ');
  EXPECT_EQ(tok->Rest(), "AssemblyVersion(\"1.0.*\")]");
  EXPECT_EQ(tok->CurrentChar(), ' ');                              // Rest does not move
  EXPECT_EQ(tok->ReadUpTo('#'), " AssemblyVersion(\"1.0.*\")]");  // absent: to the end
  EXPECT_TRUE(tok->AtEnd());
  EXPECT_EQ(tok->NextChar(), '\0');  // stays at the end

  tok->SetText("\n x");
  EXPECT_EQ(tok->Rest(), "\n x");
  tok->SkipBlanks();  // only spaces and tabs are blanks
  EXPECT_EQ(tok->CurrentChar(), '\n');
  tok->SetText("   ");
  tok->SkipBlanks();
  EXPECT_TRUE(tok->AtEnd());
}

}  // namespace
}  // namespace wren
