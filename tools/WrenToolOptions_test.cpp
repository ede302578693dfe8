#include "tools/WrenToolOptions.h"

#include <gtest/gtest.h>

#include "ToolsTestKit_test.h"
#include "WrenPluginAPI.h"
#include "pages/WrenToolOptionsFrame.h"
#include "runtime/WrenRegistryHive.h"
#include "tools/WrenDemeanorOptions.h"
#include "tools/WrenDotfuscatorOptions.h"
#include "tools/WrenFxCopOptions.h"
#include "tools/WrenNDocOptions.h"
#include "tools/WrenXenoCodeOptions.h"

namespace wren {
namespace {

/// A machine whose installer registered tools per machine and per user, as the .reg export
/// shows them: each subkey is an application file's path with '|' for its delimiters.
const char* const kInstalled = R"(Windows Registry Editor Version 5.00

[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\Installer\Assemblies\C:|Program Files|Microsoft FxCop 1.36|FxCop.exe]
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\Installer\Assemblies\C:|Program Files|Microsoft FxCop 1.36|FxCopCmd.exe]
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\Installer\Assemblies\C:|VS|DotfuscatorCE|dotfuscator.exe]
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\Installer\Assemblies\C:|VS|DotfuscatorCE|dotfuscatorCLI.exe]
[HKEY_LOCAL_MACHINE\SOFTWARE\Classes\Installer\Assemblies\C:|Program Files|Xenocode|Postbuild.exe]
[HKEY_CURRENT_USER\Software\Microsoft\Installer\Assemblies\C:|Users|me|Demeanor v4.0|Demeanor.exe]
)";

class ToolOptionsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    std::shared_ptr<IWrenRegistry> registry = ParseRegistryText(kInstalled, "installed.reg", error);
    ASSERT_NE(registry, nullptr) << error;
    SetWrenRegistry(registry);
  }
  void TearDown() override { SetWrenRegistry(nullptr); }

  test::TempDir temp_;
};

TEST_F(ToolOptionsTest, UnsetLocationsDefaultToRegisteredInstallations) {
  // The stored NDoc location, even empty, is the user's choice; FxCop's is stored elsewhere.
  test::WriteFile(temp_ / "options.xml",
                  "<MarrowbyOptions version=\"1\"><Options key=\"XenoCode\">"
                  "<Value name=\"XenoCodeLocation\"></Value></Options>"
                  "<Options key=\"NDoc\"><Value name=\"NDocLocation\">/opt/ndoc/NDocConsole.exe"
                  "</Value></Options></MarrowbyOptions>");
  test::TOptionsScope scope(temp_ / "options.xml");
  WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenNDocOptions>(), "NDOCICON");
  WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenFxCopOptions>(), "FXCOPICON");
  WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenDotfuscatorOptions>(), "D");
  WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenDemeanorOptions>(), "D");
  WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenXenoCodeOptions>(), "X");
  const std::string d(1, PathDelim);
  const std::vector<std::pair<std::shared_ptr<IWrenToolOptions>, std::string>> cases = {
      {NDocOptions(), "/opt/ndoc/NDocConsole.exe"},
      // The console program, not the user interface registered beside it.
      {FxCopOptions(),
       "C:" + d + "Program Files" + d + "Microsoft FxCop 1.36" + d + "FxCopCmd.exe"},
      {DotfuscatorOptions(), "C:" + d + "VS" + d + "DotfuscatorCE" + d + "dotfuscatorCLI.exe"},
      {DemeanorOptions(), "C:" + d + "Users" + d + "me" + d + "Demeanor v4.0" + d + "Demeanor.exe"},
      {XenoCodeOptions(), ""},  // stored empty, though one is registered
  };
  for (const auto& [options, location] : cases) {
    ASSERT_NE(options, nullptr);
    EXPECT_EQ(options->GetLocation(), location);
  }
  EXPECT_EQ(FindInstalledTool({"nothing.exe", "dotfuscator.exe"}),
            "C:" + d + "VS" + d + "DotfuscatorCE" + d + "dotfuscator.exe");
  EXPECT_EQ(FindInstalledTool({}), "");

  // The options page writes the location, which is stored under the options' key and seen by
  // scripts.
  auto fxcop = WrenOptionsServices().FindOptions("FxCop", ".Net Tools");
  ASSERT_NE(fxcop, nullptr);
  TFxCopOptionsFrame page, again;
  page.edLocation.text = "/opt/fxcop/FxCopCmd.exe";
  page.WriteOptions(*fxcop);
  again.ReadOptions(*fxcop);
  EXPECT_EQ(again.edLocation.text, "/opt/fxcop/FxCopCmd.exe");
  EXPECT_EQ(again.edLocation.caption, "Location of FxCopCmd.exe");
  const auto object = ToolOptionsScriptObject("TWrenFxCopOptions", "FxCop", ".Net Tools");
  EXPECT_EQ(object->fields.at(0).second(), WrenVariant(std::string("/opt/fxcop/FxCopCmd.exe")));
  EXPECT_EQ(test::SavedOption(temp_ / "options.xml", "FxCop", "FxCopLocation"),
            "/opt/fxcop/FxCopCmd.exe");
  EXPECT_EQ(test::SavedOption(temp_ / "options.xml", "NDoc", "NDocLocation"),
            "/opt/ndoc/NDocConsole.exe");
}

}  // namespace
}  // namespace wren
