#include "dotnet/WrenDotNetAction.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "dotnet/WrenDotNetTestFixtures.h"
#include "runtime/WrenStepHost.h"

namespace wren {
namespace {

using TT = TWrenDotNetToolType;

/// A .NET action whose tool and type the test chooses; it passes one argument.
class TTestDotNetAction : public TWrenDotNetAction {
 public:
  TT toolType = TT::ttSDK;
  std::string tool = "tool.exe";

  std::string ClassName() const override { return "TTestDotNetAction"; }
  std::string DisplayName() const override { return "Test .NET Tool"; }
  TT GetDotNetToolType() const override { return toolType; }
  std::string GetDotNetTool() const override { return tool; }
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    builder.AddArgument("/nologo", "", 2);
    return true;
  }
};

/// v1.1 (without SDK) and v2.0 (with SDK) installed; the .NET options registered with default
/// v1.0; a real step host whose log lines are kept.
class DotNetActionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* dir : {"v1.1.4322", "v2.0.50727", "SDK/v2.0/Bin"})
      std::filesystem::create_directories(tmp.path() + dir);
    test::UseRegistryFixture("action-frameworks.reg", tmp.path());
    options = env.RegisterOptions("v1.0");
    host.SetLogSink([this](TWrenLogStream, const std::string& text) { log.push_back(text); });
  }
  std::string SDKBin() const { return tmp.path() + "SDK/v2.0/Bin/"; }
  /// An action on this host of the given type, overriding the SDK default as a project would.
  std::unique_ptr<TTestDotNetAction> Action(TT type, const std::string& sdkVersion) {
    auto action = std::make_unique<TTestDotNetAction>();
    action->toolType = type;
    action->OverrideSDKDefault = true;
    action->SetDefaultSDKVersion(sdkVersion);
    action->SetHost(&host);
    return action;
  }
  std::string Log() const { return testing::PrintToString(log); }

  test::TDotNetEnvironment env;
  test::TempDir tmp;
  std::shared_ptr<TWrenDotNetOptions> options;
  TWrenStepHost host;
  std::vector<std::string> log;
};

TEST(WrenDotNetVersionNumber, WholeTextOrOne) {
  const std::pair<const char*, double> cases[] = {
      {"v1.1", 1.1}, {"V2.0", 2.0}, {"1.5", 1.5}, {"", 1.0}, {"v", 1.0}, {"vx", 1.0},
      {"v 1.1", 1.0}, {"v1.1.4322", 1.0}, {"2.0v", 2.0}, {"vv3", 1.0}, {"v1e1", 10.0},
      {"vinf", 1.0}, {"v1.1 ", 1.0}, {"v.5", 0.5}, {"v-2", -2.0}};
  for (const auto& [text, number] : cases)
    EXPECT_DOUBLE_EQ(DotNetVersionNumber(text), number) << text;
}

TEST_F(DotNetActionTest, BeforeGetCommandLineChecksVersionAndInstallation) {
  const std::string sdkMissing = "The .NET SDK version you are trying to use is not installed";
  const std::string fwMissing = "The .NET framework version you are trying to use is not installed";
  struct Case {
    const char *sdkVersion, *minimum;
    TT type;
    std::string message;  // empty: passes
  } cases[] = {
      {"v3.0", "v1.0", TT::ttSDK, sdkMissing},
      {"v3.0", "v1.0", TT::ttFramework, fwMissing},
      {"v1.1", "v1.0", TT::ttSDK, sdkMissing},  // framework there, SDK not
      {"v1.1", "v1.0", TT::ttFramework, ""},
      {"V2.0", "v2.0", TT::ttSDK, ""},
      {"", "v1.0", TT::ttFramework, fwMissing},  // counts as 1.0, then found nowhere
      {"v1.1.4322", "v1.1", TT::ttFramework,
       "The current SDK version (v1.1.4322) is less than the minimum version required (v1.1)"},
      {"v2.0", "v1.1.4322", TT::ttSDK, ""},  // an unreadable minimum counts as 1.0
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.sdkVersion) + " / " + c.minimum);
    log.clear();
    auto action = Action(c.type, c.sdkVersion);
    action->MinimumSDKVersion = c.minimum;
    EXPECT_EQ(action->BeforeGetCommandLine(), c.message.empty());
    EXPECT_EQ(log, c.message.empty() ? std::vector<std::string>{} : std::vector{c.message});
  }
  // Not overriding, the options' default (v1.0) is the effective version; nothing is started.
  log.clear();
  TTestDotNetAction action;
  action.MinimumSDKVersion = "v1.1";
  action.SetHost(&host);
  EXPECT_FALSE(action.Execute());
  EXPECT_EQ(log, std::vector<std::string>{"The current SDK version (v1.0) is less than the "
                                          "minimum version required (v1.1)"});
  EXPECT_FALSE(host.ProcessStarted());
}

TEST_F(DotNetActionTest, RunsTheToolOfItsTypeWhoseExitCodeDecides) {
  const std::string framework = tmp.path() + "v2.0.50727/";
  for (const auto& [type, dir, exitCode] :
       {std::tuple{TT::ttSDK, SDKBin(), 0}, std::tuple{TT::ttFramework, framework, 1}}) {
    SCOPED_TRACE(dir);
    test::InstallRecorder(dir + "tool.exe");
    test::WriteFile(dir + "tool.exe.recorder.json",
                    nlohmann::json{{"exit", exitCode}, {"stdout", "Success"}}.dump());
    auto action = Action(type, "v2.0");
    EXPECT_EQ(action->Execute(), exitCode == 0);  // whatever the tool prints
    EXPECT_EQ(action->LastExitCode(), exitCode);
    EXPECT_NE(Log().find("Success"), std::string::npos) << Log();  // output captured
    const nlohmann::json call = test::RecordedCall(dir + "tool.exe");
    ASSERT_FALSE(call.is_null());
    EXPECT_EQ(call["argv"].back(), "/nologo");
    EXPECT_EQ(std::filesystem::path(call["cwd"].get<std::string>()),
              std::filesystem::path(dir).parent_path());
  }
}

TEST_F(DotNetActionTest, NoneToolRunsByItsBareNameFromThePath) {
  const std::string bin = tmp.path() + "bin/", record = tmp.path() + "record.json";
  test::InstallRecorder(bin + "wren-dotnet-tool");
  test::TScopedEnv path("PATH", bin + ":" + std::getenv("PATH"));
  test::TScopedEnv out("ARGV_RECORDER_OUT", record);
  auto action = Action(TT::ttNone, "v7.0");  // installed nowhere, and not needed
  action->tool = "wren-dotnet-tool";
  EXPECT_EQ(action->GetExecutable(), "wren-dotnet-tool");
  EXPECT_EQ(action->GetStartingDir("wren-dotnet-tool"), "");
  EXPECT_TRUE(action->Execute()) << Log();
  EXPECT_TRUE(test::Exists(record));
}

TEST_F(DotNetActionTest, StoredSDKVersionDependsOnOverrideAtWriteTime) {
  options->SetDefaultSDKVersion("v1.1");
  TTestDotNetAction action;  // its constructor stored the options' default
  action.SetDefaultSDKVersion("v2.0");  // written while not overriding: lost
  action.OverrideSDKDefault = true;
  EXPECT_EQ(action.GetDefaultSDKVersion(), "v1.1");
  action.SetDefaultSDKVersion("v2.0");  // written while overriding: kept
  options->SetDefaultSDKVersion("v1.0");
  EXPECT_EQ(action.GetDefaultSDKVersion(), "v2.0");
  action.OverrideSDKDefault = false;  // the option is read afresh
  EXPECT_EQ(action.GetDefaultSDKVersion(), "v1.0");

  // A project setting both keeps its version: stored values are applied in declaration order,
  // which puts OverrideSDKDefault first.
  TTestDotNetAction loaded;
  const TPropertyTable& props = loaded.GetPublishedProperties();
  TStrings names, hidden = {"Inherited"};
  for (const TPublishedProperty& p : props) names.push_back(p.name);
  ASSERT_GE(names.size(), 4u);
  EXPECT_EQ(TStrings(names.end() - 4, names.end()),
            (TStrings{"OverrideSDKDefault", "SDKVersion", "MinimumSDKVersion", "DotNetToolType"}));
  FindProperty(props, "OverrideSDKDefault")->set(loaded, true);
  FindProperty(props, "SDKVersion")->set(loaded, std::string("v2.0"));
  EXPECT_EQ(std::get<std::string>(FindProperty(props, "SDKVersion")->get(loaded)), "v2.0");
  loaded.GetHiddenProperties(hidden);
  EXPECT_EQ(hidden, (TStrings{"Inherited", "MinimumSDKVersion", "DotNetToolType", "SDKVersion"}));
}

}  // namespace
}  // namespace wren
