#include "dotnet/WrenDotNetUtils.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "dotnet/WrenDotNetTestFixtures.h"

namespace wren {
namespace {

using test::TempDir;
using test::TScopedEnv;

TEST(WrenDotNetUtils, FindTypLibTriesHexadecimalThenDecimal) {
  test::TDotNetEnvironment env;
  test::UseRegistryFixture("lookups.reg");
  struct Case {
    const char* guid;
    int32_t major, minor, locale;
    const char* expected;
  } cases[] = {
      {"{00020430-0000-0000-C000-000000000046}", 2, 0, 0, "C:\\Windows\\system32\\stdole2.tlb"},
      {"{AAAAAAAA-0000-0000-0000-000000000001}", 1, 10, 1033, "hex.tlb"},
      {"{BBBBBBBB-0000-0000-0000-000000000002}", 1, 10, 1033, "decimal-only.tlb"},
      {"{CCCCCCCC-0000-0000-0000-000000000003}", 16, 0, 0, "sixteen.tlb"},
      // The locale stays hexadecimal in the decimal retry.
      {"{BBBBBBBB-0000-0000-0000-000000000002}", 1, 10, 409, ""},
      {"{AAAAAAAA-0000-0000-0000-000000000001}", 1, 11, 1033, ""},
      {"{DDDDDDDD-0000-0000-0000-000000000004}", 1, 0, 0, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.guid) + " " + std::to_string(c.major) + "." +
                 std::to_string(c.minor));
    EXPECT_EQ(FindTypLib(c.guid, c.major, c.minor, c.locale), c.expected);
  }
}

TEST(WrenDotNetUtils, GetGACFolderFromFusionOrTheWindowsDirectory) {
  TempDir tmp;
  const std::string windows = tmp.path() + "Windows";
  const std::string bare = tmp.path() + "Bare";
  std::filesystem::create_directories(windows + "/assembly/GAC");
  std::filesystem::create_directories(bare);
  struct Case {
    const char* what;
    const char* fixture;  // nullptr: no Fusion key
    std::string cacheLocation;
    std::optional<std::string> winDir;
    std::string expected;
  } cases[] = {
      {"CacheLocation as it stands", "fusion.reg", "D:\\GAC", windows, "D:\\GAC"},
      {"empty CacheLocation", "fusion.reg", "", windows, windows + "/assembly/GAC/"},
      {"no Fusion key", nullptr, "", windows + "/", windows + "/assembly/GAC/"},
      {"no GAC folder", nullptr, "", bare, ""},
      {"no Windows directory", nullptr, "", std::nullopt, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    test::TDotNetEnvironment env;
    if (c.fixture) test::UseRegistryFixture(c.fixture, c.cacheLocation);
    TScopedEnv winDir("MARROWBY_WINDIR", c.winDir);
    EXPECT_EQ(GetGACFolder(), c.expected);
  }
}

TEST(WrenDotNetUtils, FindAssemblyKeyFolder) {
  test::TDotNetEnvironment env;
  test::UseRegistryFixture("lookups.reg", "/opt/wren");
  TScopedEnv sysDir("MARROWBY_SYSDIR", "/opt/windows/system32");
  const std::string pia = "/Program Files/Microsoft.NET/Primary Interop Assemblies/";
  struct Case {
    const char* folder;
    std::string expected;
  } cases[] = {
      {"HKLM\\SOFTWARE\\Microsoft\\.NETFramework\\AssemblyFolders\\Primary Interop Assemblies",
       pia},
      {"AssemblyFolders/PRIMARY INTEROP ASSEMBLIES", pia},
      {"HKLM\\SOFTWARE\\Microsoft\\.NETFramework\\AssemblyFolders\\Wren Components",
       "/opt/wren/Components/"},
      {"Wren Components", "/opt/wren/Components/"},
      {"AssemblyFolders\\Unknown", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.folder);
    EXPECT_EQ(FindAssemblyKeyFolder(c.folder), c.expected);
  }
}

TEST(WrenDotNetUtils, FindAssemblyPathTakesTheFirstMatchingSubkey) {
  test::TDotNetEnvironment env;
  test::UseRegistryFixture("lookups.reg");
  const auto HKLM = TRegistryRoot::HKEY_LOCAL_MACHINE;
  EXPECT_EQ(FindAssemblyPath("fxcop", HKLM, "SOFTWARE\\Wren\\Tools"), "C:/Tools/FxCop 1.35");
  EXPECT_EQ(FindAssemblyPath("FxCop 1.36", HKLM, "SOFTWARE\\Wren\\Tools"), "C:/Tools/FXCOP 1.36");
  EXPECT_EQ(FindAssemblyPath("tool", HKLM, "SOFTWARE\\Wren\\Tools"), "Other/Tool");
  EXPECT_EQ(FindAssemblyPath("NDoc", HKLM, "SOFTWARE\\Wren\\Tools"), "");
  EXPECT_EQ(FindAssemblyPath("fxcop", HKLM, "SOFTWARE\\Wren\\Missing"), "");
  EXPECT_EQ(FindAssemblyPath("fxcop", TRegistryRoot::HKEY_CURRENT_USER, "SOFTWARE\\Wren\\Tools"),
            "");
}

}  // namespace
}  // namespace wren
