#include "pages/WrenNAntFrames.h"

#include <gtest/gtest.h>

#include "pages/WrenPageTesting.h"
#include "tools/WrenNAnt.h"

namespace wren {
namespace {

namespace pt = pagetest;

TEST(NAntFrames, PageAndOptionsPageAreDrivenThroughTheirControls) {
  TNAntFrame page;
  EXPECT_EQ(pt::Layout(page),
            (std::vector<std::string>{
                "edBuildFile:edit", "btnBuildFile:button", "grpProperties:label",
                "Properties:grid", "edPropFile:edit", "btnPropFile:button", "edTargets:edit",
                "lblTargetsHint:label", "edFramework:edit", "cbLogLevel:combo",
                "cbOutputToLog:checkbox", "edLogFile:edit", "btnLogFile:button",
                "cbIndentLevel:combo", "cbNoLogo:checkbox"}));
  pt::ExpectCaptions(page, {{"edBuildFile", "Build File"},
                            {"lblTargetsHint", "separate multiple targets with spaces"},
                            {"cbOutputToLog", "Output to Log File"},
                            {"edLogFile", "Log File"}});
  // A new page does not log to a file, so the log file takes nothing until the box is checked.
  EXPECT_FALSE(pt::Control(page, "edLogFile").enabled);
  EXPECT_TRUE(pt::Refused(page, "btnLogFile", TWrenPageEventKind::Click));
  pt::Click(page, "cbOutputToLog", true);
  EXPECT_TRUE(pt::Control(page, "edLogFile").enabled);

  pt::TAnsweringDialogs dialogs;
  dialogs.file = "/logs/nant.log";
  pt::Click(page, "btnLogFile");
  EXPECT_EQ(dialogs.filter, TNAntFrame::kLogFilter);
  dialogs.file = "/src/default.build";
  pt::Click(page, "btnBuildFile");
  EXPECT_EQ(dialogs.filter, TNAntFrame::kBuildFilter);
  pt::SetRows(page, "Properties", {{"config", "Release"}, {" ", "dropped"}});
  pt::Pick(page, "cbLogLevel", 2);
  pt::Pick(page, "cbIndentLevel", 3);  // "2", after "Default", "0" and "1"
  TNAntAction action;
  page.WriteActionData(action);
  EXPECT_EQ(action.BuildFile, "/src/default.build");
  EXPECT_EQ(action.Properties, (TStrings{"config=Release"}));
  EXPECT_TRUE(action.OutputToLog);
  EXPECT_EQ(action.LogFile, "/logs/nant.log");
  EXPECT_EQ(action.LogLevel, TNAntLogLevel::llVerbose);
  EXPECT_EQ(action.IndentLevel, TNAntIndent::i2);

  TNAntOptionsFrame options;
  EXPECT_EQ(pt::Layout(options),
            (std::vector<std::string>{"edNAntLocation:edit", "btnNAntLocation:button"}));
  EXPECT_EQ(pt::Control(options, "edNAntLocation").caption, "Location of NAnt.exe");
  dialogs.file = "/opt/nant/bin/NAnt.exe";
  pt::Click(options, "btnNAntLocation");
  EXPECT_EQ(options.edNAntLocation.text, "/opt/nant/bin/NAnt.exe");
}

}  // namespace
}  // namespace wren
