// Tests of the .NET environment's registry side: framework detection, the options whose
// default it gives, and the registry lookups of WrenDotNetUtils.
#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "dotnet/WrenDotNetFrameWorkImpl.h"
#include "dotnet/WrenDotNetOptionsImpl.h"
#include "dotnet/WrenDotNetTestFixtures.h"
#include "dotnet/WrenDotNetUtils.h"
#include "runtime/WrenActionRegistry.h"
#include "pages/WrenDotNetOptionsFrame.h"

namespace wren {
namespace {

using test::TempDir;

/// The detected list, as "version|sdkVersion|location|sdkLocation" rows or as versions only.
std::vector<std::string> Rows(const IWrenDotNetInfo& info, bool full = true) {
  std::vector<std::string> rows;
  for (int32_t i = 0; i < info.GetInstalledFrameWorkCount(); ++i) {
    const auto f = info.GetFrameWork(i);
    rows.push_back(full ? f->GetFrameWorkVersion() + "|" + f->GetSDKVersion() + "|" +
                              f->GetFrameWorkLocation() + "|" + f->GetSDKLocation()
                        : f->GetFrameWorkVersion());
  }
  return rows;
}

TEST(WrenDotNetFrameWork, DetectsFrameworksWithTheirSDKs) {
  test::TDotNetEnvironment env;
  TempDir tmp;
  const std::string root = tmp.path() + "Framework/", sdk = tmp.path() + "SDK/";
  // Only directories whose second character is a digit are frameworks.
  for (const char* dir : {"v1.0.3705", "v1.1.4322", "v2.0.50727", "vtemp", "VX.1", "v"})
    std::filesystem::create_directories(root + dir);
  test::WriteFile(root + "v3.5.txt", "a file, not a framework directory");
  test::UseRegistryFixture("frameworks.reg", tmp.path());

  TWrenDotNetInfo info;
  EXPECT_EQ(Rows(info), (std::vector<std::string>{
                            "v1.0.3705|v1.0|" + root + "v1.0.3705|" + sdk + "v1.0/Bin/",
                            "v1.1.4322|v1.1|" + root + "v1.1.4322|" + sdk + "v1.1/Bin/",
                            // No value of its own: the SDK root read for v1.1 carries over.
                            "v2.0.50727|v2.0|" + root + "v2.0.50727|" + sdk + "v1.1/Bin/"}));
  // Lookups ignore case and compare whole strings.
  EXPECT_EQ(info.GetFrameWorkByVersion("V2.0.50727"), info.GetFrameWork(2));
  EXPECT_EQ(info.GetFrameWorkBySDKVersion("V1.1"), info.GetFrameWork(1));
  EXPECT_EQ(info.GetFrameWorkByVersion("v2.0"), nullptr);
  EXPECT_EQ(info.GetFrameWorkBySDKVersion("v1.1.4322"), nullptr);
}

TEST(WrenDotNetFrameWork, InstallRootEdgeCases) {
  TempDir other;
  std::filesystem::create_directories(other.path() + "v1.1.4322");
  const char* only = "install-root-only.reg";
  struct Case {
    const char* what;
    std::vector<std::string> dirs;  // found in this (sorted) order
    const char* fixture;            // nullptr: the empty registry
    std::string root;               // "": the case's own directory
    std::vector<std::string> expected;
  } cases[] = {
      {"older found first gives way", {"v1.1.4322", "v1.1.5000"}, only, "", {"v1.1.5000"}},
      {"newer found first stays, older added", {"v1.1.40000", "v1.1.5000"}, only, "",
       {"v1.1.40000", "v1.1.5000"}},
      // A build that is not a number counts as 1 when new and 0 when already listed.
      {"text build new", {"v1.1.4322", "v1.1.beta"}, only, "", {"v1.1.4322", "v1.1.beta"}},
      {"text build listed", {"v1.1.-rc", "v1.1.4322"}, only, "", {"v1.1.4322"}},
      // Nothing to detect: an empty list and no error.
      {"no .NETFramework key", {}, nullptr, "", {}},
      {"key without InstallRoot", {}, "no-install-root.reg", other.path(), {}},
      {"empty InstallRoot", {}, "empty-install-root.reg", other.path(), {}},
      {"InstallRoot pointing nowhere", {}, only, other.path() + "missing", {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    test::TDotNetEnvironment env;
    TempDir tmp;
    for (const std::string& dir : c.dirs) std::filesystem::create_directories(tmp.path() + dir);
    if (c.fixture) test::UseRegistryFixture(c.fixture, c.root.empty() ? tmp.path() : c.root);
    TWrenDotNetInfo info;
    EXPECT_EQ(Rows(info, false), c.expected);
    // Without any SDK value every SDK location is empty, not "Bin/".
    for (int32_t i = 0; i < info.GetInstalledFrameWorkCount(); ++i)
      EXPECT_EQ(info.GetFrameWork(i)->GetSDKLocation(), "");
  }
}

TEST(WrenDotNetFrameWork, SingletonDetectsOnceUntilReleased) {
  test::TDotNetEnvironment env;
  TempDir tmp;
  std::filesystem::create_directories(tmp.path() + "v1.1.4322");
  test::UseRegistryFixture("install-root-only.reg", tmp.path());
  const std::shared_ptr<IWrenDotNetInfo> first = WrenDotNetInfo();
  std::filesystem::create_directories(tmp.path() + "v2.0.50727");
  EXPECT_EQ(WrenDotNetInfo(), first);
  ReleaseWrenDotNetInfo();
  EXPECT_EQ(WrenDotNetInfo()->GetInstalledFrameWorkCount(), 2);
  EXPECT_EQ(first->GetInstalledFrameWorkCount(), 1);  // a holder keeps its object
}

/// A tree with v1.1 and v2.0 installed, v2.0 found last.
void InstallTwoFrameworks(const TempDir& tmp) {
  for (const char* dir : {"v1.1.4322", "v2.0.50727"})
    std::filesystem::create_directories(tmp.path() + dir);
  test::UseRegistryFixture("action-frameworks.reg", tmp.path());
}

TEST(WrenDotNetOptions, DefaultLoadAndSave) {
  test::TDotNetEnvironment env;
  EXPECT_EQ(TWrenDotNetOptions().GetDefaultSDKVersion(), "");  // nothing installed
  ReleaseWrenDotNetInfo();
  TempDir tmp;
  InstallTwoFrameworks(tmp);
  TWrenDotNetOptions options;
  EXPECT_EQ(options.GetDefaultSDKVersion(), "v2.0");  // the last detected
  EXPECT_FALSE(options.IsModified());
  EXPECT_EQ(options.GetOptionKey(), "Microsoft.NET");

  TWrenOptionsStore store;
  store.Set("Microsoft.NET", "DefaultSDKVersion", "v1.1");
  options.LoadOptions(*store.Reader("Microsoft.NET"));
  EXPECT_EQ(options.GetDefaultSDKVersion(), "v1.1");
  options.SetDefaultSDKVersion("v3.0");  // not installed: kept as stored
  EXPECT_TRUE(options.IsModified());
  options.SaveOptions(*store.Writer("Microsoft.NET"));
  EXPECT_EQ(store.Get("Microsoft.NET", "DefaultSDKVersion", "?"), "v3.0");

  // Loading reads with an empty default, so an unset value empties the detected default.
  TWrenOptionsStore empty;
  TWrenDotNetOptions fresh;
  fresh.LoadOptions(*empty.Reader("Microsoft.NET"));
  EXPECT_EQ(fresh.GetDefaultSDKVersion(), "");
}

TEST(WrenDotNetOptions, RegistrationAndScriptObject) {
  test::TDotNetEnvironment env;
  ClearRegistrations();
  TempDir tmp;
  InstallTwoFrameworks(tmp);
  RegisterOptions(true);
  ASSERT_EQ(RegisteredOptions().size(), 1u);
  EXPECT_EQ(RegisteredOptions()[0].pages.at(0).name, TDotNetOptionsFrame::StaticClassName());
  ASSERT_NE(DotNetOptions(), nullptr);
  std::dynamic_pointer_cast<TWrenDotNetOptions>(DotNetOptions())->SetDefaultSDKVersion("v1.1");

  // A script reads the current option, not the detected one, and the detected list by index.
  const std::shared_ptr<TWrenScriptObject> object = CreateScriptObject("DotNetOptionsObject");
  ASSERT_NE(object, nullptr);
  ASSERT_EQ(object->fields.size(), 1u);
  EXPECT_EQ(object->fields[0].first + "=" + VariantToString(object->fields[0].second()),
            "DefaultSDKVersion=v1.1");
  auto sdkVersion = [&](WrenVariant index) -> WrenVariant {
    for (const TWrenScriptMethod& m : object->methods)
      if (m.name == "SDKVersion") return m.call({index});
    ADD_FAILURE() << "no SDKVersion method";
    return {};
  };
  EXPECT_EQ(VariantToString(sdkVersion(1.0)), "v2.0");  // Lua numbers may be floats
  EXPECT_EQ(VariantToString(sdkVersion(int64_t{0})), "v1.1");
  for (const WrenVariant& bad : {WrenVariant{int64_t{2}}, WrenVariant{int64_t{-1}},
                                 WrenVariant{0.5}, WrenVariant{std::string("0")}})
    EXPECT_TRUE(std::holds_alternative<std::monostate>(sdkVersion(bad)));

  // Actions find the instance the host holds now: none once it is gone, a new one afterwards.
  const IWrenDotNetOptions* first = DotNetOptions().get();
  EXPECT_EQ(DotNetOptions().get(), first);
  ClearRegisteredOptions();
  EXPECT_EQ(DotNetOptions(), nullptr);
  RegisterOptions(false);
  ASSERT_NE(DotNetOptions(), nullptr);
  EXPECT_EQ(DotNetOptions()->GetDefaultSDKVersion(), "v2.0") << "the new instance, not the old";
  ClearRegistrations();
}

TEST(WrenDotNetUtils, RegistryLookups) {
  test::TDotNetEnvironment env;
  test::UseRegistryFixture("lookups.reg", "/opt/wren");
  const std::tuple<const char*, int32_t, int32_t, int32_t, const char*> typLibs[] = {
      {"{00020430-0000-0000-C000-000000000046}", 2, 0, 0, "C:\\Windows\\system32\\stdole2.tlb"},
      {"{AAAAAAAA-0000-0000-0000-000000000001}", 1, 10, 1033, "hex.tlb"},
      {"{BBBBBBBB-0000-0000-0000-000000000002}", 1, 10, 1033, "decimal-only.tlb"},
      {"{CCCCCCCC-0000-0000-0000-000000000003}", 16, 0, 0, "sixteen.tlb"},
      {"{BBBBBBBB-0000-0000-0000-000000000002}", 1, 10, 409, ""},  // locale stays hex
      {"{AAAAAAAA-0000-0000-0000-000000000001}", 1, 11, 1033, ""},
      {"{DDDDDDDD-0000-0000-0000-000000000004}", 1, 0, 0, ""},
  };
  for (const auto& [guid, major, minor, locale, expected] : typLibs)
    EXPECT_EQ(FindTypLib(guid, major, minor, locale), expected)
        << guid << " " << major << "." << minor << " " << locale;

  test::TScopedEnv sysDir("MARROWBY_SYSDIR", "/opt/windows/system32");
  const std::string pia = "/Program Files/Microsoft.NET/Primary Interop Assemblies/";
  const std::string keys = "HKLM\\SOFTWARE\\Microsoft\\.NETFramework\\AssemblyFolders\\";
  const std::pair<std::string, std::string> folders[] = {
      {keys + "Primary Interop Assemblies", pia},
      {"AssemblyFolders/PRIMARY INTEROP ASSEMBLIES", pia},
      {keys + "Wren Components", "/opt/wren/Components/"},
      {"Wren Components", "/opt/wren/Components/"},
      {"AssemblyFolders\\Unknown", ""},
  };
  for (const auto& [folder, expected] : folders)
    EXPECT_EQ(FindAssemblyKeyFolder(folder), expected) << folder;

  // FindAssemblyPath takes the first matching subkey.
  const auto HKLM = TRegistryRoot::HKEY_LOCAL_MACHINE;
  const std::string tools = "SOFTWARE\\Wren\\Tools";
  EXPECT_EQ(FindAssemblyPath("fxcop", HKLM, tools), "C:/Tools/FxCop 1.35");
  EXPECT_EQ(FindAssemblyPath("FxCop 1.36", HKLM, tools), "C:/Tools/FXCOP 1.36");
  EXPECT_EQ(FindAssemblyPath("tool", HKLM, tools), "Other/Tool");
  EXPECT_EQ(FindAssemblyPath("NDoc", HKLM, tools), "");
  EXPECT_EQ(FindAssemblyPath("fxcop", HKLM, "SOFTWARE\\Wren\\Missing"), "");
  EXPECT_EQ(FindAssemblyPath("fxcop", TRegistryRoot::HKEY_CURRENT_USER, tools), "");
}

TEST(WrenDotNetUtils, GetGACFolderFromFusionOrTheWindowsDirectory) {
  TempDir tmp;
  const std::string windows = tmp.path() + "Windows", bare = tmp.path() + "Bare";
  std::filesystem::create_directories(windows + "/assembly/GAC");
  std::filesystem::create_directories(bare);
  struct Case {
    const char *what, *fixture;  // no fixture: no Fusion key
    std::string cacheLocation, expected;
    std::optional<std::string> winDir;
  } cases[] = {
      {"CacheLocation as it stands", "fusion.reg", "D:\\GAC", "D:\\GAC", windows},
      {"empty CacheLocation", "fusion.reg", "", windows + "/assembly/GAC/", windows},
      {"no Fusion key", nullptr, "", windows + "/assembly/GAC/", windows + "/"},
      {"no GAC folder", nullptr, "", "", bare},
      {"no Windows directory", nullptr, "", "", std::nullopt},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    test::TDotNetEnvironment env;
    if (c.fixture) test::UseRegistryFixture(c.fixture, c.cacheLocation);
    test::TScopedEnv winDir("MARROWBY_WINDIR", c.winDir);
    EXPECT_EQ(GetGACFolder(), c.expected);
  }
}

}  // namespace
}  // namespace wren
