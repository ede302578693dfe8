#include "pages/WrenDotNetBaseFrame.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "dotnet/WrenDotNetTestFixtures.h"
#include "pages/WrenDotNetOptionsFrame.h"
#include "pages/WrenPageTesting.h"

namespace wren {
namespace {

using test::TempDir;

class TPageTestAction : public TWrenDotNetAction {
 public:
  TWrenDotNetToolType toolType = TWrenDotNetToolType::ttSDK;
  static std::string StaticClassName() { return "TPageTestAction"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return "Page Test"; }
  TWrenDotNetToolType GetDotNetToolType() const override { return toolType; }
  std::string GetDotNetTool() const override { return "tool.exe"; }
  bool GetCommandLine(ICommandLineBuilder&) override { return true; }
};

/// v1.1 and v2.0 installed (in that order), options registered with a default of v1.1.
class DotNetPagesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* dir : {"v1.1.4322", "v2.0.50727"})
      std::filesystem::create_directories(tmp.path() + dir);
    test::UseRegistryFixture("action-frameworks.reg", tmp.path());
    options = env.RegisterOptions("v1.1");
  }
  test::TDotNetEnvironment env;
  TempDir tmp;
  std::shared_ptr<TWrenDotNetOptions> options;
};

TEST_F(DotNetPagesTest, InitPageAdaptsTheVersionPanelToTheToolType) {
  using TT = TWrenDotNetToolType;
  struct Case {
    TT type;
    bool visible;
    const char* heading;
    const char* defaultCaption;
  } cases[] = {
      {TT::ttNone, false, "SDK Version", "Use Default SDK Version"},
      {TT::ttFramework, true, "Framework Version", "Use default Framework version"},
      {TT::ttSDK, true, "SDK Version", "Use Default SDK Version"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(static_cast<int>(c.type));
    TPageTestAction action;
    action.toolType = c.type;
    TDotNetToolBaseFrame page;
    page.InitPage(action);
    EXPECT_EQ(page.pnlVersion.visible, c.visible);
    EXPECT_EQ(page.lblVersion.caption, c.heading);
    EXPECT_EQ(page.rbDefaultVersion.caption, c.defaultCaption);
    EXPECT_EQ(page.rbUseVersion.caption, "Use");
    EXPECT_EQ(page.lblHeading.caption, "Output File");
  }
}

TEST_F(DotNetPagesTest, ReadActionDataSelectsTheEffectiveVersion) {
  struct Case {
    bool override;
    const char* stored;
    int index;
  } cases[] = {
      {false, "", 0},  // the options' v1.1
      {true, "v2.0", 1},
      {true, "v9.9", 0},  // not installed: the first entry
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.stored);
    TPageTestAction action;
    action.OverrideSDKDefault = c.override;
    action.SetDefaultSDKVersion(c.stored);
    TDotNetToolBaseFrame page;
    page.ReadActionData(action);
    EXPECT_TRUE(page.VersionInUse());
    EXPECT_EQ(page.rbUseVersion.checked, c.override);
    EXPECT_EQ(page.rbDefaultVersion.checked, !c.override);
    EXPECT_EQ(page.cbVersion.items, (std::vector<std::string>{"v1.1", "v2.0"}));
    EXPECT_EQ(page.cbVersion.itemIndex, c.index);
  }
}

TEST_F(DotNetPagesTest, WriteActionDataStoresTheChoice) {
  TPageTestAction action;
  TDotNetToolBaseFrame page;
  page.ReadActionData(action);
  page.rbUseVersion.checked = true;
  page.rbDefaultVersion.checked = false;
  page.cbVersion.itemIndex = 1;
  page.WriteActionData(action);
  EXPECT_TRUE(action.OverrideSDKDefault);
  EXPECT_EQ(action.GetDefaultSDKVersion(), "v2.0");

  // Back to the default: the entry picked is not what gets stored.
  page.rbUseVersion.checked = false;
  page.rbDefaultVersion.checked = true;
  page.WriteActionData(action);
  EXPECT_FALSE(action.OverrideSDKDefault);
  action.OverrideSDKDefault = true;
  EXPECT_EQ(action.GetDefaultSDKVersion(), "v1.1");

  // A tool outside any framework: the page leaves the version alone.
  TPageTestAction none;
  none.toolType = TWrenDotNetToolType::ttNone;
  TDotNetToolBaseFrame nonePage;
  nonePage.ReadActionData(none);
  EXPECT_FALSE(nonePage.VersionInUse());
  nonePage.rbUseVersion.checked = true;
  nonePage.cbVersion = {"", {"v2.0"}, 0, true};
  nonePage.WriteActionData(none);
  EXPECT_FALSE(none.OverrideSDKDefault);
}

TEST_F(DotNetPagesTest, OptionsPageKeepsAnUninstalledDefaultUntilSaved) {
  TDotNetOptionsFrame page;
  EXPECT_EQ(page.GetPageName(), "");
  EXPECT_EQ(page.lblHeading.caption, "Default .NET SDK Version");

  page.ReadOptions(*options);
  EXPECT_EQ(page.cbSDKVersion.items, (std::vector<std::string>{"v1.1", "v2.0"}));
  EXPECT_EQ(page.cbSDKVersion.itemIndex, 0);
  options->SetDefaultSDKVersion("v2.0");
  page.ReadOptions(*options);
  EXPECT_EQ(page.cbSDKVersion.itemIndex, 1);

  options->SetDefaultSDKVersion("v3.0");  // stored, no longer installed
  page.ReadOptions(*options);
  EXPECT_EQ(page.cbSDKVersion.itemIndex, 0);
  EXPECT_EQ(options->GetDefaultSDKVersion(), "v3.0");
  options->SetModified(false);
  page.WriteOptions(*options);
  EXPECT_EQ(options->GetDefaultSDKVersion(), "v1.1");
  EXPECT_TRUE(options->IsModified());
}

TEST_F(DotNetPagesTest, OptionsPageControlsPickTheVersionThatIsSaved) {
  TDotNetOptionsFrame page;
  page.ReadOptions(*options);
  EXPECT_EQ(pagetest::Layout(page),
            (std::vector<std::string>{"lblHeading:label", "cbSDKVersion:combo"}));
  EXPECT_EQ(pagetest::Control(page, "lblHeading").caption, "Default .NET SDK Version");
  const TWrenPageControl combo = pagetest::Control(page, "cbSDKVersion");
  EXPECT_EQ(combo.items, (std::vector<std::string>{"v1.1", "v2.0"}));
  EXPECT_EQ(combo.itemIndex, 0);
  pagetest::Pick(page, "cbSDKVersion", 1);
  page.WriteOptions(*options);
  EXPECT_EQ(options->GetDefaultSDKVersion(), "v2.0");
}

TEST(DotNetOptionsFrame, NothingInstalledGivesAnEmptyList) {
  test::TDotNetEnvironment env;
  TWrenDotNetOptions options;
  TDotNetOptionsFrame page;
  page.ReadOptions(options);
  EXPECT_TRUE(page.cbSDKVersion.items.empty());
  EXPECT_EQ(page.cbSDKVersion.itemIndex, -1);
  page.WriteOptions(options);
  EXPECT_EQ(options.GetDefaultSDKVersion(), "");
}

}  // namespace
}  // namespace wren
