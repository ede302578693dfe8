#include "pages/WrenDotNetSNFrames.h"

#include <gtest/gtest.h>

#include "pages/WrenDotNetALFrames.h"
#include "pages/WrenDotNetASPdotNETIISRegFrames.h"
#include "sdktools/WrenDotNetALAction.h"
#include "sdktools/WrenDotNetASPdotNETIISRegAction.h"
#include "sdktools/WrenDotNetSNAction.h"

namespace wren {
namespace {

/// Answers the file and folder dialogs with fixed names and remembers what they were shown.
class TAnsweringDialogs : public IWrenDesignApplicationServices {
 public:
  TAnsweringDialogs() { SetWrenDesignApplicationServices(this); }
  ~TAnsweringDialogs() override { SetWrenDesignApplicationServices(nullptr); }
  std::string ExpandText(const std::string& text) override { return text; }
  bool BrowseForFile(const std::string&, const std::string& filter_,
                     std::string& fileName) override {
    filter = filter_;
    proposed = fileName;
    fileName = "/keys/chosen.snk";
    return true;
  }
  bool BrowseForDirectory(const std::string& title_, std::string& directory) override {
    title = title_;
    proposed = directory;
    directory = "/work";
    return true;
  }
  std::string filter, title, proposed;
};

TEST(SNFrames, GenerateKeyPairPageWantsAnOutputFile) {
  for (const char* blank : {"", "   "}) {
    TSNGenerateKeyPairFrame page;
    page.edOutputFile.text = blank;
    std::string message;
    EXPECT_FALSE(page.CheckPage(message)) << "'" << blank << "'";
    EXPECT_EQ(message, "Output file cannot be blank");
  }
  TSNGenerateKeyPairFrame page;
  page.edOutputFile.text = "key.snk";
  std::string message;
  EXPECT_TRUE(page.CheckPage(message));
  EXPECT_EQ(message, "");
}

TEST(SNFrames, GenerateKeyPairBrowseProposesTheDefaultName) {
  TAnsweringDialogs dialogs;
  TSNGenerateKeyPairFrame page;
  EXPECT_TRUE(page.BrowseOutputFile());
  EXPECT_EQ(dialogs.proposed, "keypair.snk");
  EXPECT_EQ(dialogs.filter, "Key File (*.snk)|*.snk");
  EXPECT_EQ(page.edOutputFile.text, "/keys/chosen.snk");
  page.edOutputFile.text = "mine.snk";
  page.BrowseOutputFile();
  EXPECT_EQ(dialogs.proposed, "mine.snk");
}

TEST(SNFrames, ExtractPageRoundTripEnablesTheChosenEdits) {
  TSNExtractPublicKey stored;
  stored.ExtractFromType = TSNExtractFromType::extractFromContainer;
  stored.ExtractToType = TSNExtractToType::extractToCSV;
  stored.FromContainer = "Keys";
  stored.ToCSV = "k.csv";
  TSNExtractKeyFrame page;
  page.ReadActionData(stored);
  EXPECT_TRUE(page.rbFromContainer.checked);
  EXPECT_FALSE(page.rbFromKeyFile.checked);
  EXPECT_TRUE(page.rbToCSV.checked);
  EXPECT_TRUE(page.edFromContainer.enabled);
  EXPECT_FALSE(page.edFromKeyFile.enabled);
  EXPECT_TRUE(page.edToCSV.enabled);
  EXPECT_FALSE(page.edToKeyFile.enabled);

  page.rbToCSV.checked = false;
  page.rbToClipboard.checked = true;
  TSNExtractPublicKey written;
  page.WriteActionData(written);
  EXPECT_EQ(written.ExtractFromType, TSNExtractFromType::extractFromContainer);
  EXPECT_EQ(written.ExtractToType, TSNExtractToType::extractToClipboard);
  EXPECT_EQ(written.FromContainer, "Keys");
  EXPECT_EQ(written.ToCSV, "k.csv");
}

// The three free-command-line pages edit Options and StartDir of whichever action they get.
TEST(SNFrames, FreeCommandLinePagesEditOptionsAndFolder) {
  TAnsweringDialogs dialogs;
  TSNGenericSN sn;
  TALGenericAL al;
  TASPIISRegGeneric iis;
  TSNGenericFrame snPage;
  TALGenericFrame alPage;
  TASPdotNetIISInstallFrame iisPage;
  const std::vector<std::pair<TFreeCommandLineFrame*, TCustomWrenAction*>> pairs = {
      {&snPage, &sn}, {&alPage, &al}, {&iisPage, &iis}};
  for (auto [page, action] : pairs) {
    SCOPED_TRACE(action->ClassName());
    page->edOptions.text = "-x \"a b\"";
    page->edWorkingFolder.text = "%ProjectDir%";
    EXPECT_TRUE(page->BrowseWorkingFolder());
    EXPECT_EQ(dialogs.title, "Select the working folder");
    EXPECT_EQ(dialogs.proposed, "%ProjectDir%");
    page->WriteActionData(*action);
  }
  EXPECT_EQ(sn.Options, "-x \"a b\"");
  EXPECT_EQ(sn.StartDir, "/work");
  EXPECT_EQ(al.StartDir, "/work");
  EXPECT_EQ(iis.Options, "-x \"a b\"");

  iis.Options = "-i";
  TASPdotNetIISInstallFrame reread;
  reread.ReadActionData(iis);
  EXPECT_EQ(reread.edOptions.text, "-i");
  EXPECT_EQ(reread.edWorkingFolder.text, "/work");
}

}  // namespace
}  // namespace wren
