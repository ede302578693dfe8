#include "dotnet/WrenDotNetOptionsImpl.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "dotnet/WrenDotNetTestFixtures.h"
#include "host/WrenActionRegistry.h"
#include "pages/WrenDotNetOptionsFrame.h"

namespace wren {
namespace {

using test::TempDir;

/// A tree with v1.1 and v2.0 installed, v2.0 found last.
void InstallTwoFrameworks(const TempDir& tmp) {
  for (const char* dir : {"v1.1.4322", "v2.0.50727"})
    std::filesystem::create_directories(tmp.path() + dir);
  test::UseRegistryFixture("action-frameworks.reg", tmp.path());
}

TEST(WrenDotNetOptions, DefaultIsTheLastDetectedSDKVersion) {
  {
    test::TDotNetEnvironment env;
    TempDir tmp;
    InstallTwoFrameworks(tmp);
    TWrenDotNetOptions options;
    EXPECT_EQ(options.GetDefaultSDKVersion(), "v2.0");
    EXPECT_FALSE(options.IsModified());
    EXPECT_EQ(options.GetOptionKey(), "Microsoft.NET");
    EXPECT_EQ(options.GetOptionsName(), "Microsoft .NET SDK");
    EXPECT_EQ(options.GetOptionsCategory(), "Compilers");
  }
  {
    test::TDotNetEnvironment env;  // nothing installed
    EXPECT_EQ(TWrenDotNetOptions().GetDefaultSDKVersion(), "");
  }
}

TEST(WrenDotNetOptions, LoadAndSaveDefaultSDKVersion) {
  test::TDotNetEnvironment env;
  TempDir tmp;
  InstallTwoFrameworks(tmp);
  TWrenOptionsStore store;
  store.Set("Microsoft.NET", "DefaultSDKVersion", "v1.1");

  TWrenDotNetOptions options;
  options.LoadOptions(*store.Reader("Microsoft.NET"));
  EXPECT_EQ(options.GetDefaultSDKVersion(), "v1.1");

  options.SetDefaultSDKVersion("v3.0");  // not installed: kept as stored
  EXPECT_TRUE(options.IsModified());
  options.SaveOptions(*store.Writer("Microsoft.NET"));
  EXPECT_EQ(store.Get("Microsoft.NET", "DefaultSDKVersion", "?"), "v3.0");

  // Loading reads with an empty default, so an unset value empties the detected default.
  TWrenOptionsStore empty;
  TWrenDotNetOptions fresh;
  fresh.LoadOptions(*empty.Reader("Microsoft.NET"));
  EXPECT_EQ(fresh.GetDefaultSDKVersion(), "");
}

TEST(WrenDotNetOptions, RegistrationAndScriptObject) {
  for (bool designTime : {false, true}) {
    SCOPED_TRACE(designTime ? "design time" : "run time");
    test::TDotNetEnvironment env;
    ClearRegistrations();
    TempDir tmp;
    InstallTwoFrameworks(tmp);
    EXPECT_EQ(DotNetOptions(), nullptr);

    RegisterOptions(designTime);
    ASSERT_EQ(RegisteredOptions().size(), 1u);
    const TWrenRegisteredOptions& record = RegisteredOptions()[0];
    EXPECT_EQ(record.optionsClass.name, "TWrenDotNetOptions");
    EXPECT_EQ(record.iconResourceName, "DOTNETOPT");
    if (designTime) {
      ASSERT_EQ(record.pages.size(), 1u);
      EXPECT_EQ(record.pages[0].name, TDotNetOptionsFrame::StaticClassName());
      ASSERT_TRUE(record.pages[0].createOptionsPage);
    } else {
      EXPECT_TRUE(record.pages.empty());
    }
    ASSERT_NE(DotNetOptions(), nullptr);
    EXPECT_EQ(DotNetOptions().get(), dynamic_cast<IWrenDotNetOptions*>(record.instance.get()));
    std::dynamic_pointer_cast<TWrenDotNetOptions>(DotNetOptions())->SetDefaultSDKVersion("v1.1");

    const std::shared_ptr<TWrenScriptObject> object = CreateScriptObject("DotNetOptionsObject");
    ASSERT_NE(object, nullptr);
    auto field = [&](const std::string& name) {
      for (auto& [fieldName, read] : object->fields)
        if (fieldName == name) return VariantToString(read());
      return std::string("<no field>");
    };
    auto call = [&](const std::string& name, std::vector<WrenVariant> args) -> WrenVariant {
      for (const TWrenScriptMethod& m : object->methods)
        if (m.name == name) return m.call(args);
      ADD_FAILURE() << "no method " << name;
      return {};
    };
    EXPECT_EQ(field("DefaultSDKVersion"), "v1.1");  // the current option, not the detected one
    EXPECT_EQ(std::get<int64_t>(call("GetInstalledFrameWorkCount", {})), 2);
    EXPECT_EQ(VariantToString(call("FrameWorkVersion", {int64_t{1}})), "v2.0.50727");
    EXPECT_EQ(VariantToString(call("SDKVersion", {1.0})), "v2.0");  // Lua numbers may be floats
    EXPECT_EQ(VariantToString(call("FrameWorkLocation", {int64_t{0}})), tmp.path() + "v1.1.4322");
    EXPECT_EQ(VariantToString(call("SDKLocation", {int64_t{1}})), tmp.path() + "SDK/v2.0/Bin/");
    for (const WrenVariant& bad : {WrenVariant{int64_t{2}}, WrenVariant{int64_t{-1}},
                                   WrenVariant{0.5}, WrenVariant{std::string("0")}})
      EXPECT_TRUE(std::holds_alternative<std::monostate>(call("SDKVersion", {bad})));
    ClearRegistrations();
  }
}

}  // namespace
}  // namespace wren
