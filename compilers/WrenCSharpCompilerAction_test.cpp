#include "compilers/WrenCSharpCompilerAction.h"

#include <gtest/gtest.h>

#include <functional>

#include "compilers/CompilerTestHelpers.h"
#include "compilers/WrenJSharpDotNetCompilerAction.h"
#include "compilers/WrenVBDotNetCompilerAction.h"

namespace wren {
namespace {

using test::TempDir;

TEST(CSharpCompilerAction, ResponseFilesMatchGoldenFiles) {
  const std::vector<
      std::pair<const char*, std::function<void(TWrenCSharpCompilerAction&)>>>
      cases = {
          {"csharp_defaults.rsp", [](TWrenCSharpCompilerAction&) {}},
          {"csharp_incremental_doc.rsp",
           [](TWrenCSharpCompilerAction& a) {
             // Incremental builds never ask for the documentation file.
             a.Incremental = true;
             a.DocFile = "doc.xml";
           }},
          {"csharp_all.rsp",
           [](TWrenCSharpCompilerAction& a) {
             a.FileAlign = TCSharpFileAlign::fa4096;
             a.DocFile = "My Doc.xml";
             a.Checked = a.FullPaths = a.NoConfig = a.CompileUnsafe = a.NoSTDLib = true;
             a.WarningLevel = TDotNetWarningLevels::WarnOff;
             a.LibLocations = "/opt/A;/opt/B";
             a.Icon = "a.ico;b.ico";
             a.Win32Resources = "r.res, s.res";
             a.Target = TDotNetTarget::WindowsExe;
           }},
      };
  for (const auto& [golden, setup] : cases) {
    SCOPED_TRACE(golden);
    TempDir dir;
    test::TLoggingHost host;
    TWrenCSharpCompilerAction action;
    action.SetHost(&host.host);
    action.ProjectDir = dir.path();
    action.Files = "a.cs";
    setup(action);
    EXPECT_EQ(test::CommandLineOf(action), "@\"" + dir.path() + "wrenresp.rsp\"") << host.Text();
    EXPECT_EQ(test::ReadFile(dir / "wrenresp.rsp"), test::GoldenFile(golden, dir.path()));
  }
}

/// Collects what Validate reports.
struct TErrors : IWrenActionValidationError {
  std::vector<std::pair<std::string, std::string>> items;
  void AddError(const std::string& field, const std::string& message) override {
    items.emplace_back(field, message);
  }
};

TEST(LanguageCompilerActions, ValidateReportsBothMissingSettings) {
  TWrenCSharpCompilerAction cs;
  TWrenVBDotNetCompilerAction vb;
  TWrenJSharpCompilerAction js;
  for (TWrenManagedCompilerAction* action :
       std::vector<TWrenManagedCompilerAction*>{&cs, &vb, &js}) {
    SCOPED_TRACE(action->ClassName());
    TErrors errors;
    action->RecurseFiles = "*.cs";  // accepted by the response file, but not here
    EXPECT_FALSE(action->Validate(errors));
    const std::vector<std::pair<std::string, std::string>> both = {
        {"Project Directory", "Project directory has not been set"},
        {"Files", "Files to compile has not been set"}};
    EXPECT_EQ(errors.items, both);

    TErrors none;
    action->ProjectDir = "/src";
    action->Files = "a.cs";
    EXPECT_TRUE(action->Validate(none));
    EXPECT_TRUE(none.items.empty());
  }
}

/// Names of a class's published properties after those of the .NET base.
TStrings OwnPublishedNames(const TCustomWrenAction& action) {
  const size_t inherited = TWrenDotNetAction::ClassProperties().size();
  const TPropertyTable& table = action.GetPublishedProperties();
  TStrings names;
  for (size_t i = inherited; i < table.size(); ++i) names.push_back(table[i].name);
  return names;
}

TEST(LanguageCompilerActions, PublishTheirLanguagesSubsetAndNames) {
  const TStrings common = {"NoLogo", "OutputInUTF8", "Optimize", "OutputFile", "Target",
                           "Modules", "LibLocations", "References", "Debug", "SupressWarnings",
                           "WarnAsError", "Defines", "LinkResources", "Resources"};
  auto with = [&](TStrings tail) {
    TStrings all = common;
    all.insert(all.end(), tail.begin(), tail.end());
    return all;
  };
  TWrenCSharpCompilerAction cs;
  TWrenVBDotNetCompilerAction vb;
  TWrenJSharpCompilerAction js;
  EXPECT_EQ(OwnPublishedNames(cs),
            with({"Icon", "Win32Resources", "BaseAddress", "CodePage", "MainClass", "RecurseDir",
                  "RecurseFiles", "Files", "ProjectDir", "FileAlign", "DocFile", "NoSTDLib",
                  "Checked", "FullPaths", "Incremental", "NoConfig", "CompileUnsafe",
                  "WarningLevel"}));
  EXPECT_EQ(OwnPublishedNames(vb),
            with({"Icon", "Win32Resources", "BaseAddress", "MainClass", "RecurseDir",
                  "RecurseFiles", "Files", "ProjectDir", "RootNameSpace", "Verbose", "TargetCF",
                  "DelaySign", "Imports", "KeyContainer", "KeyFile", "Quiet", "RemoveIntChecks",
                  "OptionExplicit", "OptionStrict", "OptionCompare", "SDKPath"}));
  EXPECT_EQ(OwnPublishedNames(js),
            with({"Win32Resources", "BaseAddress", "CodePage", "MainClass", "RecurseDir",
                  "RecurseFiles", "Files", "ProjectDir", "WarningLevel", "SecureScoping",
                  "DisableLangExt", "JCPA"}));

  // Enumerations travel by value name, and a stored name reaches the field of the action.
  const TPublishedProperty* target = FindProperty(cs.GetPublishedProperties(), "Target");
  ASSERT_NE(target, nullptr);
  EXPECT_EQ(PropertyValueToString(*target, target->get(cs)), "Lib");
  target->set(cs, int32_t{3});
  EXPECT_EQ(cs.Target, TDotNetTarget::WindowsExe);
  const TPublishedProperty* align = FindProperty(cs.GetPublishedProperties(), "FileAlign");
  ASSERT_NE(align, nullptr);
  EXPECT_EQ(align->enumNames.back(), "fa8192");
  const TPublishedProperty* compare = FindProperty(vb.GetPublishedProperties(), "OptionCompare");
  ASSERT_NE(compare, nullptr);
  EXPECT_EQ(PropertyValueToString(*compare, compare->get(vb)), "OptCompareBinary");

}

TEST(LanguageCompilerActions, ResetKeepsTheVBSDKPathAndClearsTheJSharpMap) {
  TWrenVBDotNetCompilerAction vb;
  vb.SDKPath = "/opt/fw";
  vb.RootNameSpace = "MyApp";
  vb.ResetOptions();
  EXPECT_EQ(vb.SDKPath, "/opt/fw");
  EXPECT_EQ(vb.RootNameSpace, "");

  TWrenJSharpCompilerAction js;
  js.JCPA = {"a=b"};
  js.ResetOptions();
  EXPECT_TRUE(js.JCPA.empty());
  EXPECT_EQ(js.WarningLevel, TDotNetWarningLevels::WarnLevel4);
}

}  // namespace
}  // namespace wren
