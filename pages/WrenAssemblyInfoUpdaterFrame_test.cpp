#include "WrenAssemblyInfoUpdaterFrame.h"

#include <gtest/gtest.h>

#include "assemblyinfo/WrenAssemblyInfoUpdaterAction.h"

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

}  // namespace
}  // namespace wren
