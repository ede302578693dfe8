#include "pages/WrenMSBuildFrame.h"

#include <gtest/gtest.h>

#include "compilers/WrenMSBuildAction.h"
#include "pages/WrenPageTesting.h"

namespace wren {
namespace {

namespace pt = pagetest;

TEST(MSBuildFrame, GroupsComeFirstAndTheVersionPanelLast) {
  TMSBuildAction action;
  action.Properties = {"Configuration=Release"};
  TMSBuildFrame page;
  page.ReadActionData(action);
  EXPECT_EQ(pt::Layout(page),
            (std::vector<std::string>{
                "lblHeading:label", "grpProjectFile:label", "BuildFile:edit",
                "btnBuildFile:button", "grpProperties:label", "Properties:grid",
                "grpTargets:label", "Targets:edit", "TargetsHint:label", "grpLogOptions:label",
                "LogLevel:combo", "grpOtherOptions:label", "NoLogo:checkbox",
                "Restricted:checkbox", "pnlVersion:panel", "lblVersion:label",
                "rbDefaultVersion:radio", "rbUseVersion:radio", "cbVersion:combo"}));
  pt::ExpectCaptions(page, {{"grpProjectFile", "Project File"},
                            {"grpProperties", "Properties"},
                            {"grpTargets", "Targets"},
                            {"TargetsHint", "separate multiple targets with semi-colons"},
                            {"grpLogOptions", "Log Options"},
                            {"LogLevel", "Logging Level :"},
                            {"grpOtherOptions", "Other Options"},
                            {"NoLogo", "Surpress display of logo banner"},
                            {"Restricted",
                             "Restricted (build process runs with fewer permissions)"},
                            {"rbDefaultVersion", "Use Default SDK Version"}});
  const TWrenPageControl grid = pt::Control(page, "Properties");
  EXPECT_EQ(grid.items, (std::vector<std::string>{"Property", "Value"}));
  EXPECT_EQ(grid.rows, (std::vector<std::vector<std::string>>{{"Configuration", "Release"}}));

  pt::TAnsweringDialogs dialogs;
  dialogs.file = "/src/All.proj";
  pt::Click(page, "btnBuildFile");
  pt::SetRows(page, "Properties", {{"Configuration", "Debug"}, {"Platform", "x86"}});
  pt::Type(page, "Targets", "Clean;Build");
  pt::Pick(page, "LogLevel", 3);
  pt::Click(page, "Restricted", true);
  page.WriteActionData(action);
  EXPECT_EQ(action.BuildFile, "/src/All.proj");
  EXPECT_EQ(action.Properties, (TStrings{"Configuration=Debug", "Platform=x86"}));
  EXPECT_EQ(action.Targets, "Clean;Build");
  EXPECT_EQ(action.LogLevel, TMSLogLevel::llDetailed);
  EXPECT_TRUE(action.Restricted);
  EXPECT_FALSE(action.NoLogo);
}

}  // namespace
}  // namespace wren
