#include <gtest/gtest.h>

#include <algorithm>

#include "TestSupport.h"
#include "runtime/WrenModule.h"

namespace wren {
namespace {

bool Names(const std::vector<std::string>& needed, const std::string& prefix) {
  return std::any_of(needed.begin(), needed.end(),
                     [&](const std::string& n) { return n.rfind(prefix, 0) == 0; });
}

TEST(WrenModulePosix, NeededLibrariesOfRealAndDamagedFiles) {
  // Our package links the core; a package built the usual way links libstdc++.so besides.
  const std::vector<std::string> package = ModuleNeededLibraries(PACKAGE_MODULE);
  EXPECT_TRUE(Names(package, "libWren30CoreAPI.so"));
  const std::vector<std::string> shared = ModuleNeededLibraries(SHARED_CXX_PACKAGE);
  EXPECT_TRUE(Names(shared, "libstdc++.so")) << shared.size();
  EXPECT_TRUE(Names(shared, "libc.so"));
  EXPECT_TRUE(ModuleNeedsSharedCxxRunTime(SHARED_CXX_PACKAGE));

  // Anything that is not a whole ELF file names nothing, and reading it is harmless.
  test::TempDir dir;
  const std::string whole = test::ReadFile(SHARED_CXX_PACKAGE);
  ASSERT_GT(whole.size(), 4096u);
  struct Case {
    const char* name;
    std::string bytes;
  } cases[] = {
      {"empty", ""},
      {"text", "WrenRegister\n"},
      {"ELF magic only", "\x7f" "ELF"},
      {"header only", whole.substr(0, 64)},
      {"cut before the section headers", whole.substr(0, whole.size() / 2)},
  };
  for (const Case& c : cases) {
    const std::string path = dir / c.name;
    test::WriteFile(path, c.bytes);
    EXPECT_TRUE(ModuleNeededLibraries(path).empty()) << c.name;
    EXPECT_FALSE(ModuleNeedsSharedCxxRunTime(path)) << c.name;
  }
  EXPECT_TRUE(ModuleNeededLibraries(dir / "missing.so").empty());
}

}  // namespace
}  // namespace wren
