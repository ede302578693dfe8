#include "WrenUnifiedDiff.h"

#include <gtest/gtest.h>

#include "TestSupport.h"

namespace wren {
namespace {

TEST(UnifiedDiff, MatchesWhatPatchAndDiffAgreeOn) {
  struct Case {
    std::string before, after, expected;
  } cases[] = {
      {"same\n", "same\n", ""},
      // One changed line among others: three lines of context each side.
      {"1\n2\n3\n4\n5\n6\n7\n8\n", "1\n2\n3\n4x\n5\n6\n7\n8\n",
       "--- a/f.cs\n+++ b/f.cs\n@@ -1,7 +1,7 @@\n 1\n 2\n 3\n-4\n+4x\n 5\n 6\n 7\n"},
      // Far-apart changes make two hunks.
      {"a\nb\nc\nd\ne\nf\ng\nh\ni\nj\nk\n", "A\nb\nc\nd\ne\nf\ng\nh\ni\nj\nK\n",
       "--- a/f.cs\n+++ b/f.cs\n@@ -1,4 +1,4 @@\n-a\n+A\n b\n c\n d\n@@ -8,4 +8,4 @@\n h\n i\n j\n"
       "-k\n+K\n"},
      // A line added at the end of a file without a final line end.
      {"x", "x\ny\n",
       "--- a/f.cs\n+++ b/f.cs\n@@ -1 +1,2 @@\n-x\n\\ No newline at end of file\n+x\n+y\n"},
      // CR LF kept: a changed value keeps its line end.
      {"k\r\nv=1\r\n", "k\r\nv=2\r\n", "--- a/f.cs\n+++ b/f.cs\n@@ -1,2 +1,2 @@\n k\r\n-v=1\r\n+v=2\r\n"},
  };
  for (const Case& c : cases) EXPECT_EQ(UnifiedDiff("f.cs", c.before, c.after), c.expected);
  EXPECT_EQ(UnifiedDiff("n.cs", "", "new\n", false, true),
            "--- /dev/null\n+++ b/n.cs\n@@ -0,0 +1 @@\n+new\n");
}

TEST(UnifiedDiff, PatchAppliesItBack) {
  // The real patch program is the judge of the format.
  test::TempDir dir;
  std::string before, after;
  for (int i = 0; i < 60; ++i) {
    before += "line " + std::to_string(i) + "\n";
    if (i % 17 == 3) after += "changed " + std::to_string(i) + "\n";
    if (i % 23 != 5) after += "line " + std::to_string(i) + "\n";
  }
  test::WriteFile(dir / "f.txt", before);
  test::WriteFile(dir / "d.patch", UnifiedDiff("f.txt", before, after));
  std::string out;
  ASSERT_EQ(test::RunProgram({"patch", "-p1", "-i", dir / "d.patch"}, &out, dir.path()), 0) << out;
  EXPECT_EQ(test::ReadFile(dir / "f.txt"), after);
}

}  // namespace
}  // namespace wren
