#include "dotnet/WrenDotNetAction.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "dotnet/WrenDotNetTestFixtures.h"
#include "host/WrenStepHost.h"

namespace wren {
namespace {

using test::TempDir;

/// A .NET action whose tool and type the test chooses; it passes one argument.
class TTestDotNetAction : public TWrenDotNetAction {
 public:
  TWrenDotNetToolType toolType = TWrenDotNetToolType::ttSDK;
  std::string tool = "tool.exe";

  static std::string StaticClassName() { return "TTestDotNetAction"; }
  static std::string GetActionName() { return "Test .NET Tool"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  TWrenDotNetToolType GetDotNetToolType() const override { return toolType; }
  std::string GetDotNetTool() const override { return tool; }
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    builder.AddArgument("/nologo", "", 2);
    return true;
  }
};

/// Runs actions with the real step host and keeps the log lines.
struct TRun {
  TWrenStepHost host;
  std::vector<std::string> log;
  TRun() {
    host.SetLogSink([this](TWrenLogStream, const std::string& text) { log.push_back(text); });
  }
  bool Execute(TWrenDotNetAction& action) {
    action.SetHost(&host);
    return action.Execute();
  }
  std::string Log() const {
    std::string all;
    for (const std::string& line : log) all += line + "\n";
    return all;
  }
};

/// v1.1 (without SDK) and v2.0 (with SDK) installed; the .NET options registered.
class DotNetActionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const char* dir : {"v1.1.4322", "v2.0.50727", "SDK/v2.0/Bin"})
      std::filesystem::create_directories(tmp.path() + dir);
    test::UseRegistryFixture("action-frameworks.reg", tmp.path());
    options = env.RegisterOptions("v1.0");
  }
  std::string SDKBin() const { return tmp.path() + "SDK/v2.0/Bin/"; }

  test::TDotNetEnvironment env;
  TempDir tmp;
  std::shared_ptr<TWrenDotNetOptions> options;
};

TEST(WrenDotNetVersionNumber, WholeTextOrOne) {
  struct Case {
    const char* text;
    double expected;
  } cases[] = {
      {"v1.1", 1.1},  {"V2.0", 2.0},  {"1.5", 1.5},       {"", 1.0},     {"v", 1.0},
      {"vx", 1.0},    {"v 1.1", 1.0}, {"v1.1.4322", 1.0}, {"2.0v", 2.0}, {"vv3", 1.0},
      {"v1e1", 10.0}, {"vinf", 1.0},  {"v1.1 ", 1.0},     {"v.5", 0.5},  {"v-2", -2.0},
  };
  for (const Case& c : cases) EXPECT_DOUBLE_EQ(DotNetVersionNumber(c.text), c.expected) << c.text;
}

TEST_F(DotNetActionTest, MinimumVersionAboveTheEffectiveOneStopsTheStep) {
  TTestDotNetAction action;
  action.MinimumSDKVersion = "v1.1";
  TRun run;
  EXPECT_FALSE(run.Execute(action));
  EXPECT_EQ(run.log, (std::vector<std::string>{
                         "The current SDK version (v1.0) is less than the minimum version "
                         "required (v1.1)"}));
  EXPECT_FALSE(run.host.ProcessStarted());
}

TEST_F(DotNetActionTest, BeforeGetCommandLineChecksVersionAndInstallation) {
  const std::string sdkMissing = "The .NET SDK version you are trying to use is not installed";
  const std::string fwMissing = "The .NET framework version you are trying to use is not installed";
  using TT = TWrenDotNetToolType;
  struct Case {
    const char* sdkVersion;
    const char* minimum;
    TT type;
    bool ok;
    std::string message;
  } cases[] = {
      {"v3.0", "v1.0", TT::ttSDK, false, sdkMissing},
      {"v3.0", "v1.0", TT::ttFramework, false, fwMissing},
      {"v3.0", "v1.0", TT::ttNone, true, ""},
      {"v1.1", "v1.0", TT::ttSDK, false, sdkMissing},  // framework there, SDK not
      {"v1.1", "v1.0", TT::ttFramework, true, ""},
      {"V2.0", "v2.0", TT::ttSDK, true, ""},
      {"", "v1.0", TT::ttFramework, false, fwMissing},  // counts as 1.0, then found nowhere
      {"v1.1.4322", "v1.1", TT::ttFramework, false,
       "The current SDK version (v1.1.4322) is less than the minimum version required (v1.1)"},
      {"v2.0", "v1.1.4322", TT::ttSDK, true, ""},  // an unreadable minimum counts as 1.0
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.sdkVersion) + " / " + c.minimum);
    TTestDotNetAction action;
    action.toolType = c.type;
    action.OverrideSDKDefault = true;
    action.SetDefaultSDKVersion(c.sdkVersion);
    action.MinimumSDKVersion = c.minimum;
    TRun run;
    action.SetHost(&run.host);
    EXPECT_EQ(action.BeforeGetCommandLine(), c.ok);
    EXPECT_EQ(run.log,
              c.message.empty() ? std::vector<std::string>{} : std::vector<std::string>{c.message});
  }
}

TEST_F(DotNetActionTest, ExecutableAndStartingDirectoryByToolType) {
  TTestDotNetAction action;
  action.OverrideSDKDefault = true;
  action.SetDefaultSDKVersion("v2.0");
  action.toolType = TWrenDotNetToolType::ttSDK;
  EXPECT_EQ(action.GetSDKPath(), SDKBin());
  EXPECT_EQ(action.GetExecutable(), SDKBin() + "tool.exe");
  EXPECT_EQ(action.GetStartingDir(action.GetExecutable()), SDKBin());
  action.toolType = TWrenDotNetToolType::ttFramework;
  EXPECT_EQ(action.GetFrameWorkPath(), tmp.path() + "v2.0.50727");
  EXPECT_EQ(action.GetExecutable(), tmp.path() + "v2.0.50727/tool.exe");
  EXPECT_EQ(action.GetStartingDir(action.GetExecutable()), tmp.path() + "v2.0.50727/");
  action.toolType = TWrenDotNetToolType::ttNone;
  EXPECT_EQ(action.GetExecutable(), "tool.exe");
  EXPECT_EQ(action.GetStartingDir("tool.exe"), "");

  action.SetDefaultSDKVersion("v9.9");
  EXPECT_EQ(action.GetFrameWorkPath(), "");
  EXPECT_EQ(action.GetSDKPath(), "");
}

TEST_F(DotNetActionTest, ExitCodeDecidesWhateverTheToolPrints) {
  const std::string tool = SDKBin() + "tool.exe";
  test::InstallRecorder(tool);
  for (int exitCode : {0, 1}) {
    SCOPED_TRACE(exitCode);
    test::WriteFile(tool + ".recorder.json",
                    nlohmann::json{{"exit", exitCode}, {"stdout", "Success"}}.dump());
    TTestDotNetAction action;
    action.OverrideSDKDefault = true;
    action.SetDefaultSDKVersion("v2.0");
    TRun run;
    EXPECT_EQ(run.Execute(action), exitCode == 0);
    EXPECT_EQ(action.LastExitCode(), exitCode);
    EXPECT_NE(run.Log().find("Success"), std::string::npos) << run.Log();  // output captured
    const nlohmann::json call = test::RecordedCall(tool);
    ASSERT_FALSE(call.is_null());
    EXPECT_EQ(call["argv"].back(), "/nologo");
    EXPECT_EQ(std::filesystem::path(call["cwd"].get<std::string>()),
              std::filesystem::path(SDKBin()).parent_path());
  }
}

TEST_F(DotNetActionTest, NoneToolRunsByItsBareNameFromThePath) {
  const std::string bin = tmp.path() + "bin/";
  test::InstallRecorder(bin + "wren-dotnet-tool");
  const std::string record = tmp.path() + "record.json";
  test::TScopedEnv path("PATH", bin + ":" + std::getenv("PATH"));
  test::TScopedEnv out("ARGV_RECORDER_OUT", record);
  TTestDotNetAction action;
  action.toolType = TWrenDotNetToolType::ttNone;
  action.tool = "wren-dotnet-tool";
  action.OverrideSDKDefault = true;
  action.SetDefaultSDKVersion("v7.0");  // installed nowhere, and not needed
  EXPECT_EQ(action.GetExecutable(), "wren-dotnet-tool");
  TRun run;
  EXPECT_TRUE(run.Execute(action)) << run.Log();
  EXPECT_TRUE(test::Exists(record));
}

TEST_F(DotNetActionTest, StoredSDKVersionDependsOnOverrideAtWriteTime) {
  options->SetDefaultSDKVersion("v1.1");
  TTestDotNetAction action;  // its constructor stored the options' default
  EXPECT_FALSE(action.OverrideSDKDefault);
  EXPECT_EQ(action.GetDefaultSDKVersion(), "v1.1");

  action.SetDefaultSDKVersion("v2.0");  // written while not overriding: lost
  EXPECT_EQ(action.GetDefaultSDKVersion(), "v1.1");
  action.OverrideSDKDefault = true;
  EXPECT_EQ(action.GetDefaultSDKVersion(), "v1.1");

  action.SetDefaultSDKVersion("v2.0");  // written while overriding: kept
  options->SetDefaultSDKVersion("v1.0");
  EXPECT_EQ(action.GetDefaultSDKVersion(), "v2.0");
  action.OverrideSDKDefault = false;  // the option is read afresh
  EXPECT_EQ(action.GetDefaultSDKVersion(), "v1.0");

  // Through the published properties, in the order the host applies stored values.
  TTestDotNetAction loaded;
  const TPropertyTable& props = loaded.GetPublishedProperties();
  FindProperty(props, "OverrideSDKDefault")->set(loaded, true);
  FindProperty(props, "SDKVersion")->set(loaded, std::string("v2.0"));
  EXPECT_EQ(std::get<std::string>(FindProperty(props, "SDKVersion")->get(loaded)), "v2.0");
}

TEST_F(DotNetActionTest, PublishedAndHiddenProperties) {
  TTestDotNetAction action;
  EXPECT_TRUE(action.CaptureOutput);
  EXPECT_TRUE(action.UseStartingDir);
  EXPECT_EQ(action.MinimumSDKVersion, "v1.0");

  std::vector<std::string> names;
  for (const TPublishedProperty& p : action.GetPublishedProperties()) names.push_back(p.name);
  const std::vector<std::string> own = {"OverrideSDKDefault", "SDKVersion", "MinimumSDKVersion",
                                        "DotNetToolType"};
  ASSERT_GE(names.size(), own.size());
  EXPECT_EQ(std::vector<std::string>(names.end() - 4, names.end()), own);

  const TPublishedProperty* type = FindProperty(action.GetPublishedProperties(), "DotNetToolType");
  EXPECT_EQ(type->kind, TPropertyKind::pkEnumeration);
  EXPECT_EQ(type->enumNames, (std::vector<std::string>{"ttNone", "ttFramework", "ttSDK"}));
  action.toolType = TWrenDotNetToolType::ttFramework;
  EXPECT_EQ(PropertyValueToString(*type, type->get(action)), "ttFramework");

  TStrings hidden = {"Inherited"};
  action.GetHiddenProperties(hidden);
  EXPECT_EQ(hidden, (TStrings{"Inherited", "MinimumSDKVersion", "DotNetToolType", "SDKVersion"}));
}

/// Design-time services that record the dialog and answer as told.
class TFakeDesignServices : public IWrenDesignApplicationServices {
 public:
  bool accept = false;
  std::string title, filter, startName;
  std::string ExpandText(const std::string& text) override { return "/expanded/" + text; }
  bool BrowseForFile(const std::string& t, const std::string& f, std::string& fileName) override {
    title = t;
    filter = f;
    startName = fileName;
    if (accept) fileName = "/chosen/a.dll";
    return accept;
  }
  bool BrowseForDirectory(const std::string&, std::string&) override { return false; }
};

TEST(WrenDotNetGetFile, WritesTheChosenFileOnlyOnAcceptance) {
  for (bool accept : {true, false}) {
    TFakeDesignServices dialogs;
    dialogs.accept = accept;
    SetWrenDesignApplicationServices(&dialogs);
    TEditModel edit{"Assembly", "%OUT%/a.dll"};
    const bool chosen = GetFile(edit, "Assemblies (*.dll)|*.dll");
    SetWrenDesignApplicationServices(nullptr);
    EXPECT_EQ(chosen, accept);
    EXPECT_EQ(dialogs.title, "Select File");
    EXPECT_EQ(dialogs.filter, "Assemblies (*.dll)|*.dll");
    EXPECT_EQ(dialogs.startName, "/expanded/%OUT%/a.dll");
    EXPECT_EQ(edit.text, accept ? "/chosen/a.dll" : "%OUT%/a.dll");
  }
}

}  // namespace
}  // namespace wren
