#include "WrenAssemblyInfoUpdaterFrame.h"

#include <gtest/gtest.h>

#include "assemblyinfo/WrenAssemblyInfoUpdaterAction.h"
#include "pages/WrenPageTesting.h"

namespace wren {
namespace {

TEST(AssemblyInfoUpdaterFrame, OptionsPageMovesFilesAndSwitches) {
  TAssemblyInfoUpdaterFrame page;
  EXPECT_EQ(page.PageName(), "Options");
  EXPECT_EQ(page.Files.caption, "Files");
  EXPECT_EQ(page.BackupFiles.caption, "Backup Files");
  EXPECT_EQ(page.Recurse.caption, "Recurse Subdirectories");
  EXPECT_EQ(page.UpdateOnly.caption, "Update Only");

  TWrenAssemblyInfoUpdaterAction action;
  action.Selection = {"src\\*.cs", "%ROOT%/AssemblyInfo.pas"};
  action.Recurse = true;
  page.ReadActionData(action);
  EXPECT_EQ(page.Files.lines, action.Selection);
  EXPECT_TRUE(page.BackupFiles.checked);
  EXPECT_TRUE(page.Recurse.checked);
  EXPECT_FALSE(page.UpdateOnly.checked);

  page.Files.lines = {"a.cs"};
  page.BackupFiles.checked = false;
  page.Recurse.checked = false;
  page.UpdateOnly.checked = true;
  page.WriteActionData(action);
  EXPECT_EQ(action.Selection, TStrings{"a.cs"});
  EXPECT_FALSE(action.BackupFiles);
  EXPECT_FALSE(action.Recurse);
  EXPECT_TRUE(action.UpdateOnly);
}

TEST(AssemblyInfoUpdaterFrame, AttributesGridEditsNameValueLines) {
  TAssemblyInfoUpdaterEntriesFrame page;
  EXPECT_EQ(page.PageName(), "Attributes");
  EXPECT_EQ(page.Grid.titles, (std::vector<std::string>{"Attribute", "Value"}));
  EXPECT_EQ(page.Hint.caption,
            "Use Ctrl+Del to remove a variable from the list. Use Shift+Insert to add a new "
            "Attribute.");
  EXPECT_EQ(page.AddButton.caption, "&Add");

  TWrenAssemblyInfoUpdaterAction action;
  action.Attributes = {"AssemblyVersion=\"1.0.%BUILD%\"", "Formula=a=b", "NoValue"};
  page.ReadActionData(action);
  ASSERT_EQ(page.Grid.rows.size(), 3u);
  // The value is everything after the first '='.
  EXPECT_EQ(page.Grid.rows[1], (std::pair<std::string, std::string>{"Formula", "a=b"}));
  EXPECT_EQ(page.Grid.rows[2], (std::pair<std::string, std::string>{"NoValue", ""}));

  page.RemoveRow(2);
  page.RemoveRow(7);
  page.AddRow();  // left empty: not stored
  page.AddRow();
  page.Grid.rows.back() = {"AssemblyCompany", "'Acme'"};
  page.WriteActionData(action);
  EXPECT_EQ(action.Attributes, (TStrings{"AssemblyVersion=\"1.0.%BUILD%\"", "Formula=a=b",
                                         "AssemblyCompany='Acme'"}));
}

TEST(AssemblyInfoUpdaterFrame, BothPagesAreDrivenThroughTheirControls) {
  using namespace pagetest;
  TAssemblyInfoUpdaterFrame options;
  EXPECT_EQ(Layout(options), (std::vector<std::string>{"Files:memo", "BackupFiles:checkbox",
                                                       "Recurse:checkbox",
                                                       "UpdateOnly:checkbox"}));
  EXPECT_EQ(Control(options, "Recurse").caption, "Recurse Subdirectories");
  SetLines(options, "Files", {"src/*.cs", "lib/AssemblyInfo.vb"});
  Click(options, "Recurse", true);
  Click(options, "UpdateOnly", true);
  TWrenAssemblyInfoUpdaterAction action;
  options.WriteActionData(action);
  EXPECT_EQ(action.Selection, (TStrings{"src/*.cs", "lib/AssemblyInfo.vb"}));
  EXPECT_TRUE(action.Recurse);
  EXPECT_TRUE(action.UpdateOnly);

  action.Attributes = {"AssemblyVersion=1.2.3.4", "AssemblyTitle=Core"};
  TAssemblyInfoUpdaterEntriesFrame entries;
  entries.ReadActionData(action);
  EXPECT_EQ(Layout(entries),
            (std::vector<std::string>{"Grid:grid", "Hint:label", "AddButton:button"}));
  const TWrenPageControl grid = Control(entries, "Grid");
  EXPECT_EQ(grid.items, (std::vector<std::string>{"Attribute", "Value"}));
  EXPECT_EQ(grid.rows, (std::vector<std::vector<std::string>>{{"AssemblyVersion", "1.2.3.4"},
                                                              {"AssemblyTitle", "Core"}}));
  EXPECT_EQ(Control(entries, "AddButton").caption, "&Add");

  Click(entries, "AddButton");
  EXPECT_EQ(Control(entries, "Grid").rows.back(), (std::vector<std::string>{"", ""}));

  // One change carries the whole grid: the title row removed, the new row filled in, a short
  // row padded and a surplus cell dropped.
  SetRows(entries, "Grid",
          {{"AssemblyVersion", "2.0.0.0", "extra"}, {"AssemblyCompany"}, {"", ""}});
  EXPECT_EQ(Control(entries, "Grid").rows,
            (std::vector<std::vector<std::string>>{
                {"AssemblyVersion", "2.0.0.0"}, {"AssemblyCompany", ""}, {"", ""}}));
  entries.WriteActionData(action);
  EXPECT_EQ(action.Attributes,
            (std::vector<std::string>{"AssemblyVersion=2.0.0.0", "AssemblyCompany="}));
}

}  // namespace
}  // namespace wren
