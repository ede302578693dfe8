#include "pages/WrenDotNetSNFrames.h"

#include <gtest/gtest.h>

#include <memory>

#include "pages/WrenDotNetALFrames.h"
#include "pages/WrenDotNetASPdotNETIISRegFrames.h"
#include "pages/WrenPageTesting.h"
#include "sdktools/WrenDotNetALAction.h"
#include "sdktools/WrenDotNetASPdotNETIISRegAction.h"
#include "sdktools/WrenDotNetSNAction.h"

namespace wren {
namespace {

/// The dialogs answering with fixed names, as the older tests of these pages expect.
struct TAnsweringDialogs : pagetest::TAnsweringDialogs {
  TAnsweringDialogs() {
    file = "/keys/chosen.snk";
    folder = "/work";
  }
};

TEST(SNFrames, GenerateKeyPairPageWantsAnOutputFile) {
  using F = TSNGenerateKeyPairFrame;
  pagetest::ExpectChecks<F>({
      {"empty", [](F& p) { p.edOutputFile.text = ""; }, "Output file cannot be blank"},
      {"blanks", [](F& p) { p.edOutputFile.text = "   "; }, "Output file cannot be blank"},
      {"named", [](F& p) { p.edOutputFile.text = "key.snk"; }, ""},
  });
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

namespace pt = pagetest;

TEST(SNFrames, KeyPairVerifyAndInstallPagesAreDrivenThroughTheirControls) {
  pt::TAnsweringDialogs dialogs;
  dialogs.file = "/keys/new.snk";

  TSNGenerateKeyPairFrame generate;
  EXPECT_EQ(pt::Layout(generate),
            pt::WithVersionPanel({"edOutputFile:edit", "btnOutputFile:button"}));
  pt::ExpectCaptions(generate, {{"lblHeading", "Output File"}, {"edOutputFile", "Output File"}});
  pt::Click(generate, "btnOutputFile");
  EXPECT_EQ(dialogs.proposed, "keypair.snk");
  EXPECT_EQ(dialogs.filter, "Key File (*.snk)|*.snk");
  TSNGenerateKeyPair generated;
  generate.WriteActionData(generated);
  EXPECT_EQ(generated.OutputFile, "/keys/new.snk");

  TSNVerifySNFrame verify;
  EXPECT_EQ(pt::Layout(verify),
            pt::WithVersionPanel({"edAssembly:edit", "btnAssembly:button", "cbForce:checkbox",
                                  "cbFailIfValid:checkbox"}));
  pt::ExpectCaptions(verify, {{"edAssembly", "Assembly"},
                              {"cbForce", "Force"},
                              {"cbFailIfValid", "Fail if valid Strong Name"}});
  dialogs.file = "/bin/Core.dll";
  pt::Click(verify, "btnAssembly");
  EXPECT_EQ(dialogs.filter, "Assembly (*.dll, *.exe)|*.dll;*.exe");
  pt::Click(verify, "cbFailIfValid", true);
  TSNVerifyAssembly verified;
  verify.WriteActionData(verified);
  EXPECT_EQ(verified.Assembly, "/bin/Core.dll");
  EXPECT_TRUE(verified.FailIfValid);
  EXPECT_FALSE(verified.Force);

  TSNInstallKeyPairFrame install;
  EXPECT_EQ(pt::Layout(install),
            pt::WithVersionPanel({"edKeyFile:edit", "btnKeyFile:button", "edContainer:edit"}));
  pt::ExpectCaptions(install, {{"edKeyFile", "Key File:"}, {"edContainer", "Container:"}});
  dialogs.file = "/keys/pair.snk";
  pt::Click(install, "btnKeyFile");
  pt::Type(install, "edContainer", "BuildKeys");
  TSNInstallKeyPair installed;
  install.WriteActionData(installed);
  EXPECT_EQ(installed.KeyFile, "/keys/pair.snk");
  EXPECT_EQ(installed.ContainerFile, "BuildKeys");
}

TEST(SNFrames, ExtractAndResignPagesEnableOnlyTheChosenSource) {
  pt::TAnsweringDialogs dialogs;
  TSNExtractKeyFrame extract;
  EXPECT_EQ(pt::Layout(extract),
            pt::WithVersionPanel(
                {"lblInput:label", "rbFromAssembly:radio", "edFromAssembly:edit",
                 "btnFromAssembly:button", "rbFromKeyFile:radio", "edFromKeyFile:edit",
                 "btnFromKeyFile:button", "rbFromContainer:radio", "edFromContainer:edit",
                 "lblOutput:label", "rbToKeyFile:radio", "edToKeyFile:edit", "btnToKeyFile:button",
                 "rbToCSV:radio", "edToCSV:edit", "btnToCSV:button", "rbToClipboard:radio"}));
  pt::ExpectCaptions(extract, {{"lblInput", "Input File"},
                               {"rbFromAssembly", "Extract the public key from an assembly"},
                               {"rbFromKeyFile", "Extract the public key from a key file"},
                               {"rbFromContainer", "Extract the public key from a container"},
                               {"lblOutput", "Output"},
                               {"rbToKeyFile", "Output to Key File"},
                               {"rbToCSV", "Output to CSV"},
                               {"rbToClipboard", "Output to Clipboard as CSV"}});
  // A new page reads from a key file into a key file.
  EXPECT_TRUE(pt::Refused(extract, "edFromAssembly", TWrenPageEventKind::Change));
  EXPECT_TRUE(pt::Refused(extract, "btnToCSV", TWrenPageEventKind::Click));

  pt::Click(extract, "rbFromContainer");
  pt::Click(extract, "rbToCSV");
  EXPECT_FALSE(pt::Control(extract, "edFromKeyFile").enabled);
  EXPECT_FALSE(pt::Control(extract, "btnFromKeyFile").enabled);
  EXPECT_FALSE(pt::Control(extract, "edToKeyFile").enabled);
  pt::Type(extract, "edFromContainer", "BuildKeys");
  dialogs.file = "/out/key.csv";
  pt::Click(extract, "btnToCSV");
  EXPECT_EQ(dialogs.filter, "CSV Files (*.csv)|*.csv");
  TSNExtractPublicKey extracted;
  extract.WriteActionData(extracted);
  EXPECT_EQ(extracted.ExtractFromType, TSNExtractFromType::extractFromContainer);
  EXPECT_EQ(extracted.ExtractToType, TSNExtractToType::extractToCSV);
  EXPECT_EQ(extracted.FromContainer, "BuildKeys");
  EXPECT_EQ(extracted.ToCSV, "/out/key.csv");

  TSNResignFrame resign;
  EXPECT_EQ(pt::Layout(resign),
            pt::WithVersionPanel({"edAssembly:edit", "btnAssembly:button", "lblKey:label",
                                  "rbKeyFile:radio", "edKeyFile:edit", "btnKeyFile:button",
                                  "rbContainer:radio", "edContainer:edit"}));
  pt::ExpectCaptions(resign, {{"edAssembly", "Assembly"},
                              {"lblKey", "Key"},
                              {"rbKeyFile", "Key File"},
                              {"rbContainer", "Container"}});
  EXPECT_TRUE(pt::Refused(resign, "edContainer", TWrenPageEventKind::Change));
  pt::Click(resign, "rbContainer");
  EXPECT_TRUE(pt::Refused(resign, "btnKeyFile", TWrenPageEventKind::Click));
  pt::Type(resign, "edContainer", "BuildKeys");
  dialogs.file = "/bin/Core.dll";
  pt::Click(resign, "btnAssembly");
  EXPECT_EQ(dialogs.filter, "Assembly (*.dll, *.exe)|*.dll;*.exe");
  TSNResignAssembly resigned;
  resign.WriteActionData(resigned);
  EXPECT_FALSE(resigned.UseKeyFile);
  EXPECT_EQ(resigned.Container, "BuildKeys");
  EXPECT_EQ(resigned.Assembly, "/bin/Core.dll");
}

TEST(SNFrames, FreeCommandLinePagesBrowseForTheirWorkingFolder) {
  TSNGenericFrame sn;
  TALGenericFrame al;
  TASPdotNetIISInstallFrame asp;
  struct TCase {
    TFreeCommandLineFrame* page;
    std::string optionsCaption;
    std::unique_ptr<TWrenAction> action;
  };
  TCase cases[] = {
      {&sn, "SN.EXE Command Line Options", std::make_unique<TSNGenericSN>()},
      {&al, "AL.EXE command line options", std::make_unique<TALGenericAL>()},
      {&asp, "Aspnet_regiis.exe Command Line Options", std::make_unique<TASPIISRegGeneric>()},
  };
  for (TCase& c : cases) {
    SCOPED_TRACE(c.optionsCaption);
    TFrame& page = *c.page;
    EXPECT_EQ(pt::Layout(page), (std::vector<std::string>{"edOptions:edit", "edWorkingFolder:edit",
                                                          "btnWorkingFolder:button"}));
    pt::ExpectCaptions(page,
                       {{"edOptions", c.optionsCaption}, {"edWorkingFolder", "Working Folder"}});
    pt::TAnsweringDialogs dialogs;
    pt::Type(page, "edOptions", "-x y");
    pt::Click(page, "btnWorkingFolder");  // cancelled: the folder stays
    EXPECT_EQ(dialogs.title, "Select the working folder");
    EXPECT_EQ(pt::Control(page, "edWorkingFolder").text, "");
    dialogs.folder = "/work/keys";
    pt::Click(page, "btnWorkingFolder");
    page.WriteActionData(*c.action);
    EXPECT_EQ(std::get<std::string>(
                  FindProperty(c.action->GetPublishedProperties(), "Options")->get(*c.action)),
              "-x y");
    EXPECT_EQ(std::get<std::string>(
                  FindProperty(c.action->GetPublishedProperties(), "StartDir")->get(*c.action)),
              "/work/keys");
  }
}

}  // namespace
}  // namespace wren
