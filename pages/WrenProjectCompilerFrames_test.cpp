#include "pages/WrenProjectCompilerFrames.h"

#include <gtest/gtest.h>

#include "compilers/WrenDotNetProjectCompilerAction.h"

namespace wren {
namespace {

/// Answers the file dialog with a chosen name and keeps the filter it was asked with.
class TFileDialog : public IWrenDesignApplicationServices {
 public:
  TFileDialog() { SetWrenDesignApplicationServices(this); }
  ~TFileDialog() override { SetWrenDesignApplicationServices(nullptr); }
  std::string ExpandText(const std::string& text) override { return text; }
  bool BrowseForFile(const std::string&, const std::string& filter_, std::string& name) override {
    filter = filter_;
    name = "/src/App.vbproj";
    return true;
  }
  bool BrowseForDirectory(const std::string&, std::string&) override { return false; }
  std::string filter;
};

TEST(ProjectCompilerPages, EditThePublishedPropertiesOfEveryProjectAction) {
  TWrenVBProjCompilerAction vb;
  vb.ProjectFile = "%ProjectDir%/Hello.vbproj";
  vb.ConfigName = "Release";
  vb.OutputDir = "out";
  vb.CopyConfigFiles = true;
  TVBProjPropertyPage page;
  page.ReadActionData(vb);
  EXPECT_EQ(page.edProjectFile.text, "%ProjectDir%/Hello.vbproj");
  EXPECT_EQ(page.edConfigName.text, "Release");
  EXPECT_EQ(page.edOutputDir.text, "out");
  EXPECT_TRUE(page.cbCopyConfigFiles.checked);
  EXPECT_FALSE(page.cbNoLogo.checked);

  TFileDialog dialog;
  ASSERT_TRUE(page.BrowseProjectFile());
  EXPECT_EQ(dialog.filter, "VB.NET Projects (*.vbproj;*.vbdproj)|*.vbproj;*.vbdproj");
  page.cbNoLogo.checked = true;
  page.edCFResGen.text = "/opt/cf/resgen.exe";
  page.WriteActionData(vb);
  EXPECT_EQ(vb.ProjectFile, "/src/App.vbproj");
  EXPECT_TRUE(vb.NoLogo);
  EXPECT_EQ(vb.CFResGen, "/opt/cf/resgen.exe");

  // A Visual Studio page asks for the configuration; the C#Builder page, whose projects hold
  // only the active one, does not.
  std::string message;
  page.edConfigName.text = " ";
  EXPECT_FALSE(page.CheckPage(message));
  EXPECT_EQ(message, "Configuration is required.");
  TWrenBorlandCSBuilderProjCompilerAction bds;
  TCSharpBuilderPropertyPage bdsPage;
  bdsPage.ReadActionData(bds);
  EXPECT_FALSE(bdsPage.CheckPage(message));
  EXPECT_EQ(message, "Project File is required.");
  bdsPage.edProjectFile.text = "a.bdsproj";
  EXPECT_TRUE(bdsPage.CheckPage(message));
}

}  // namespace
}  // namespace wren
