#include "pages/WrenResgenFrames.h"

#include <gtest/gtest.h>

#include "pages/WrenDotNetComRefFrame.h"
#include "pages/WrenPageTesting.h"
#include "sdktools/WrenDotNetComRefAction.h"
#include "sdktools/WrenResgenAction.h"

namespace wren {
namespace {

namespace pt = pagetest;

TEST(ResGenFrame, BrowsesForInputAndOutputWithTheirFilters) {
  TResGenFrame page;
  EXPECT_EQ(pt::Layout(page),
            pt::WithVersionPanel({"edInputFiles:edit", "btnInputFiles:button",
                                  "edOutputFile:edit", "btnOutputFile:button"}));
  pt::ExpectCaptions(page, {{"edInputFiles", "Input File(s)"},
                            {"edOutputFile", "Output File (optional)"}});
  pt::TAnsweringDialogs dialogs;
  dialogs.file = "/res/Strings.resx";
  pt::Click(page, "btnInputFiles");
  EXPECT_EQ(dialogs.filter, "Resources (*.resx)|*.resx|All Files (*.*)|*.*");
  dialogs.file = "/out/Strings.resources";
  pt::Click(page, "btnOutputFile");
  EXPECT_EQ(dialogs.filter,
            "Resource (*.resource)|*.resource|Resources (*.resources)|*.resources|"
            "All Files (*.*)|*.*");
  TWrenResGenAction action;
  page.WriteActionData(action);
  EXPECT_EQ(action.InputFiles, "/res/Strings.resx");
  EXPECT_EQ(action.OutputFile, "/out/Strings.resources");
}

TEST(DotNetComRefFrame, ShowsTheHintsAndBrowsesForTheProject) {
  TDotNetComRefFrame page;
  EXPECT_EQ(pt::Layout(page),
            (std::vector<std::string>{"edProjectFile:edit", "btnProjectFile:button",
                                      "edReferenceName:edit", "lblReferenceNameHint:label",
                                      "edProgID:edit", "lblProgIDHint:label"}));
  pt::ExpectCaptions(
      page, {{"edProjectFile", "Project File"},
             {"edReferenceName", "Reference Name"},
             {"lblReferenceNameHint",
              "should be as it appears in the References section in Visual Studio"},
             {"edProgID", "ProgID"},
             {"lblProgIDHint", "should be in the format Typlib.ClassName - e.g. Word.Document"}});
  pt::TAnsweringDialogs dialogs;
  dialogs.file = "/src/App.csproj";
  pt::Click(page, "btnProjectFile");
  EXPECT_EQ(dialogs.filter, TDotNetComRefFrame::kProjectFilter);
  pt::Type(page, "edReferenceName", "Word");
  pt::Type(page, "edProgID", "Word.Document");
  TWrenDotNetComReferenceFixAction action;
  page.WriteActionData(action);
  EXPECT_EQ(action.ProjectFile + "|" + action.ReferenceName + "|" + action.ProgID,
            "/src/App.csproj|Word|Word.Document");
}

}  // namespace
}  // namespace wren
