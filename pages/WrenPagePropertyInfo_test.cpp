// What the property pages tell about the properties they edit, as the design-time registration
// hands them out.
#include <gtest/gtest.h>

#include <algorithm>

#include "WrenRegister.h"
#include "WrenUtils.h"
#include "runtime/WrenActionRegistry.h"

namespace wren {

namespace {

/// The first page of the class that names the property, as describe merges them.
const TWrenPagePropertyInfo* FindInfo(const TWrenRegisteredAction& action,
                                      const std::string& property,
                                      std::vector<TWrenPagePropertyInfo>& holder) {
  holder.clear();
  for (const TWrenFrameClass& page : action.pages)
    if (page.createPage)
      for (const TWrenPagePropertyInfo& info : page.createPage()->PropertyInfo())
        holder.push_back(info);
  auto it = std::find_if(holder.begin(), holder.end(),
                         [&](const TWrenPagePropertyInfo& i) { return i.property == property; });
  return it == holder.end() ? nullptr : &*it;
}

}  // namespace

TEST(WrenPagePropertyInfo, RepresentativePagesGiveCaptionHintSeparatorAndPath) {
  struct Row {
    const char* className;
    const char* property;
    const char* caption;
    const char* hint;
    const char* separator;
    bool isPath;
  };
  const Row rows[] = {
      {"TGACInstallAction", "AssemblyPath",
       "Assembly Path (name of a file which contains an assembly manifest)", "", "", true},
      {"TGACInstallAction", "RefScheme", "Scheme :", "", "", false},
      {"TGACUninstallAction", "AssemblyName", "Assembly Name", "", "", false},
      {"TWrenCSharpCompilerAction", "Files", "File(s) to compile:",
       "(eg. *.cs or MyFile.cs, separate multiple files with a semicolon)", ";", false},
      {"TWrenVBDotNetCompilerAction", "Files", "File(s) to compile:",
       "(eg. *.vb or MyFile.vb, separate multiple files with a semicolon)", ";", false},
      {"TWrenCSharpCompilerAction", "ProjectDir", "Project Directory:", "", "", true},
      {"TWrenCSharpCompilerAction", "References", "Referenced assemblies:", "", ",", false},
      {"TWrenCSharpCompilerAction", "LibLocations", "Additional assembly directories:", "", ";",
       false},
      {"TMSBuildAction", "Targets", "Targets", "separate multiple targets with semi-colons", ";",
       false},
      {"TNAntAction", "Targets", "Targets", "separate multiple targets with spaces", " ", false},
      {"TNAntAction", "LogFile", "Log File", "", "", true},
      {"TWrenNUnitAction", "Assemblies", "Assemblies", "", "", true},
      {"TWrenNUnitAction", "Fixture", "Fixture", "", "", false},
      {"TWrenFxCopAction", "ProjectFile", "Project File", "", "", true},
      {"TWrenFxCopAction", "RuleIds", "Rules (Category#CheckId)", "", "", false},
  };
  ClearRegistrations();
  WrenRegister(true);
  std::vector<TWrenPagePropertyInfo> holder;
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.className) + "." + row.property);
    const TWrenRegisteredAction* action = FindRegisteredAction(row.className);
    ASSERT_NE(action, nullptr);
    const TWrenPagePropertyInfo* info = FindInfo(*action, row.property, holder);
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->caption, row.caption);
    EXPECT_EQ(info->hint, row.hint);
    EXPECT_EQ(info->separator, row.separator);
    EXPECT_EQ(info->isPath, row.isPath);
  }
  ClearRegistrations();
}

TEST(WrenPagePropertyInfo, EveryReportedPropertyIsPublishedByItsAction) {
  ClearRegistrations();
  WrenRegister(true);
  int reported = 0;
  for (const TWrenRegisteredAction& action : WrenRegistrations().actions) {
    const std::unique_ptr<TCustomWrenAction> made = action.actionClass.create();
    const TPropertyTable& published = made->GetPublishedProperties();
    for (const TWrenFrameClass& page : action.pages) {
      if (!page.createPage) continue;
      for (const TWrenPagePropertyInfo& info : page.createPage()->PropertyInfo()) {
        ++reported;
        // Exact case: a page naming a property differently from its action is a typo.
        const auto named = [&](const TPublishedProperty& p) { return p.name == info.property; };
        EXPECT_TRUE(std::any_of(published.begin(), published.end(), named))
            << action.actionClass.name << " / " << page.name << ": " << info.property;
        EXPECT_FALSE(info.caption.empty()) << page.name << ": " << info.property;
      }
    }
  }
  EXPECT_GT(reported, 0);
  ClearRegistrations();
}

}  // namespace wren
