#include "dotnet/WrenDotNetFrameWorkImpl.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "dotnet/WrenDotNetTestFixtures.h"

namespace wren {
namespace {

using test::TempDir;

/// The detected list as "version|sdkVersion|location|sdkLocation" rows.
std::vector<std::string> Rows(const IWrenDotNetInfo& info) {
  std::vector<std::string> rows;
  for (int32_t i = 0; i < info.GetInstalledFrameWorkCount(); ++i) {
    const auto f = info.GetFrameWork(i);
    rows.push_back(f->GetFrameWorkVersion() + "|" + f->GetSDKVersion() + "|" +
                   f->GetFrameWorkLocation() + "|" + f->GetSDKLocation());
  }
  return rows;
}

std::vector<std::string> Versions(const IWrenDotNetInfo& info) {
  std::vector<std::string> versions;
  for (int32_t i = 0; i < info.GetInstalledFrameWorkCount(); ++i)
    versions.push_back(info.GetFrameWork(i)->GetFrameWorkVersion());
  return versions;
}

TEST(WrenDotNetFrameWork, DetectsFrameworksWithTheirSDKs) {
  test::TDotNetEnvironment env;
  TempDir tmp;
  const std::string root = tmp.path() + "Framework/";
  for (const char* dir : {"v1.0.3705", "v1.1.4322", "v2.0.50727", "vtemp", "VX.1", "v"})
    std::filesystem::create_directories(root + dir);
  test::WriteFile(root + "v3.5.txt", "a file, not a framework directory");
  test::UseRegistryFixture("frameworks.reg", tmp.path());

  TWrenDotNetInfo info;
  const std::string sdk = tmp.path() + "SDK/";
  EXPECT_EQ(Rows(info), (std::vector<std::string>{
                            "v1.0.3705|v1.0|" + root + "v1.0.3705|" + sdk + "v1.0/Bin/",
                            "v1.1.4322|v1.1|" + root + "v1.1.4322|" + sdk + "v1.1/Bin/",
                            // No value of its own: the SDK root read for v1.1 carries over.
                            "v2.0.50727|v2.0|" + root + "v2.0.50727|" + sdk + "v1.1/Bin/",
                        }));

  // Lookups ignore case and compare whole strings.
  ASSERT_NE(info.GetFrameWorkBySDKVersion("V1.1"), nullptr);
  EXPECT_EQ(info.GetFrameWorkBySDKVersion("V1.1")->GetFrameWorkVersion(), "v1.1.4322");
  ASSERT_NE(info.GetFrameWorkByVersion("V2.0.50727"), nullptr);
  EXPECT_EQ(info.GetFrameWorkByVersion("V2.0.50727")->GetSDKVersion(), "v2.0");
  EXPECT_EQ(info.GetFrameWorkByVersion("v2.0"), nullptr);
  EXPECT_EQ(info.GetFrameWorkBySDKVersion("v1.1.4322"), nullptr);
  EXPECT_EQ(info.GetFrameWorkBySDKVersion(""), nullptr);
  EXPECT_EQ(info.GetFrameWork(3), nullptr);
  EXPECT_EQ(info.GetFrameWork(-1), nullptr);
}

TEST(WrenDotNetFrameWork, TwoBuildsOfOneSDKVersion) {
  struct Case {
    std::vector<std::string> dirs;  // found in this (sorted) order
    std::vector<std::string> expected;
  } cases[] = {
      // The older found first gives way to the newer.
      {{"v1.1.4322", "v1.1.5000"}, {"v1.1.5000"}},
      // The newer found first stays, and the older is added all the same.
      {{"v1.1.40000", "v1.1.5000"}, {"v1.1.40000", "v1.1.5000"}},
      // A build that is not a number counts as 1 when new and 0 when already listed.
      {{"v1.1.4322", "v1.1.beta"}, {"v1.1.4322", "v1.1.beta"}},
      {{"v1.1.-rc", "v1.1.4322"}, {"v1.1.4322"}},
      // Different SDK versions never replace each other.
      {{"v1.0.3705", "v1.1.4322"}, {"v1.0.3705", "v1.1.4322"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.dirs.front() + " then " + c.dirs.back());
    test::TDotNetEnvironment env;
    TempDir tmp;
    for (const std::string& dir : c.dirs) std::filesystem::create_directories(tmp.path() + dir);
    test::UseRegistryFixture("install-root-only.reg", tmp.path());
    TWrenDotNetInfo info;
    EXPECT_EQ(Versions(info), c.expected);
    ASSERT_NE(info.GetFrameWorkBySDKVersion(info.GetFrameWork(0)->GetSDKVersion()), nullptr);
    EXPECT_EQ(info.GetFrameWorkBySDKVersion(info.GetFrameWork(0)->GetSDKVersion()),
              info.GetFrameWork(0));
    // Without any SDK value every SDK location is empty, not "Bin/".
    EXPECT_EQ(info.GetFrameWork(0)->GetSDKLocation(), "");
  }
}

TEST(WrenDotNetFrameWork, NothingToDetectGivesAnEmptyList) {
  TempDir tmp;
  std::filesystem::create_directories(tmp.path() + "v1.1.4322");
  struct Case {
    const char* what;
    const char* fixture;  // nullptr: the empty registry
    std::string root;
  } cases[] = {
      {"no .NETFramework key", nullptr, ""},
      {"key without InstallRoot", "no-install-root.reg", tmp.path()},
      {"empty InstallRoot", "empty-install-root.reg", tmp.path()},
      {"InstallRoot pointing nowhere", "install-root-only.reg", tmp.path() + "missing"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    test::TDotNetEnvironment env;
    if (c.fixture) test::UseRegistryFixture(c.fixture, c.root);
    TWrenDotNetInfo info;
    EXPECT_EQ(info.GetInstalledFrameWorkCount(), 0);
    EXPECT_EQ(info.GetFrameWork(0), nullptr);
  }
}

TEST(WrenDotNetFrameWork, SingletonDetectsOnceUntilReleased) {
  test::TDotNetEnvironment env;
  TempDir tmp;
  std::filesystem::create_directories(tmp.path() + "v1.1.4322");
  test::UseRegistryFixture("install-root-only.reg", tmp.path());
  const std::shared_ptr<IWrenDotNetInfo> first = WrenDotNetInfo();
  EXPECT_EQ(first->GetInstalledFrameWorkCount(), 1);

  std::filesystem::create_directories(tmp.path() + "v2.0.50727");
  EXPECT_EQ(WrenDotNetInfo(), first);
  EXPECT_EQ(WrenDotNetInfo()->GetInstalledFrameWorkCount(), 1);

  ReleaseWrenDotNetInfo();
  EXPECT_EQ(WrenDotNetInfo()->GetInstalledFrameWorkCount(), 2);
  EXPECT_EQ(first->GetInstalledFrameWorkCount(), 1);  // a holder keeps its object
}

}  // namespace
}  // namespace wren
