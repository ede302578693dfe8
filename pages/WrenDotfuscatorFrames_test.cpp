#include "pages/WrenDotfuscatorFrames.h"

#include <gtest/gtest.h>

#include "pages/WrenPageTesting.h"
#include "tools/WrenDotfuscatorAction.h"

namespace wren {
namespace {

using namespace pagetest;

TEST(DotfuscatorPage, ControlsInTabOrderQuietLocksVerboseAndBrowseButtonsFillTheirEdits) {
  TAnsweringDialogs dialogs;
  TWrenDotfuscatorAction action;
  TDotfuscatorFrame page;
  page.ReadActionData(action);
  EXPECT_EQ(Layout(page),
            (std::vector<std::string>{
                "edConfigFile:edit", "btnConfigFile:button", "cbQuiet:checkbox",
                "cbVerbose:checkbox", "cbInvestigate:checkbox", "mmProperties:memo",
                "mmInputAssemblies:memo", "edOutputDirectory:edit", "btnOutputDirectory:button",
                "edMakeConfig:edit", "btnMakeConfig:button", "cbDisableAll:checkbox",
                "cbRename:combo", "cbKeep:combo", "edMapFile:edit", "btnMapFile:button",
                "cbOverwriteMap:checkbox", "mmExtraSwitches:memo"}));
  EXPECT_EQ(Control(page, "cbKeep").items,
            (std::vector<std::string>{"As configured", "Namespaces", "Type hierarchy", "Nothing"}));

  Click(page, "cbVerbose", true);
  Click(page, "cbQuiet", true);
  EXPECT_FALSE(Control(page, "cbVerbose").enabled);
  EXPECT_TRUE(Refused(page, "cbVerbose", TWrenPageEventKind::Click));
  Click(page, "cbQuiet", false);
  EXPECT_TRUE(Control(page, "cbVerbose").enabled);
  Click(page, "cbQuiet", true);

  struct TBrowse {
    const char* button;
    const char* answer;
    const char* filter;  // "" for the folder dialog
  };
  for (const TBrowse& b :
       {TBrowse{"btnConfigFile", "/src/dotfuscator.xml", TDotfuscatorFrame::kConfigFilter},
        TBrowse{"btnMakeConfig", "/out/effective.xml", TDotfuscatorFrame::kConfigFilter},
        TBrowse{"btnMapFile", "/out/map.xml", TDotfuscatorFrame::kMapFilter},
        TBrowse{"btnOutputDirectory", "/out/obf", ""}}) {
    dialogs.filter.clear();
    (*b.filter ? dialogs.file : dialogs.folder) = b.answer;
    Click(page, b.button);
    EXPECT_EQ(dialogs.filter, b.filter) << b.button;
  }
  Pick(page, "cbRename", 2);
  Pick(page, "cbKeep", 1);
  page.WriteActionData(action);
  EXPECT_EQ(action.ConfigFile, "/src/dotfuscator.xml");
  EXPECT_EQ(action.MakeConfig, "/out/effective.xml");
  EXPECT_EQ(action.MapFile, "/out/map.xml");
  EXPECT_EQ(action.OutputDirectory, "/out/obf");
  EXPECT_TRUE(action.Quiet);
  EXPECT_TRUE(action.Verbose);  // kept, though quiet wins when the tool runs
  EXPECT_EQ(action.Rename, TDotfuscatorSwitch::dsOff);
  EXPECT_EQ(action.Keep, TDotfuscatorKeep::dkNamespace);
}

}  // namespace
}  // namespace wren
