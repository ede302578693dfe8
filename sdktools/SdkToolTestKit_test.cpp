#include "SdkToolTestKit_test.h"

#include <algorithm>
#include <filesystem>

#include "WrenCommandLine.h"
#include "WrenRegistry.h"
#include "host/WrenRegistryHive.h"
#include "WrenUtils.h"
#include "dotnet/WrenDotNetFrameWorkAPI.h"

namespace wren::test {

namespace {

std::string ReplaceAll(std::string text, const std::string& from, const std::string& to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
    text.replace(at, from.size(), to);
  return text;
}

/// A .reg string literal: backslashes and quotes escaped.
std::string RegString(const std::string& text) {
  return "\"" + ReplaceAll(ReplaceAll(text, "\\", "\\\\"), "\"", "\\\"") + "\"";
}

}  // namespace

void ApplySettings(TCustomWrenAction& action, const TSettings& settings) {
  const TPropertyTable& table = action.GetPublishedProperties();
  for (const auto& [name, text] : settings) {
    const TPublishedProperty* prop = FindProperty(table, name);
    ASSERT_NE(prop, nullptr) << action.ClassName() << " publishes no " << name;
    switch (prop->kind) {
      case TPropertyKind::pkString:
        prop->set(action, text);
        break;
      case TPropertyKind::pkBoolean:
        ASSERT_TRUE(text == "true" || text == "false") << name << "=" << text;
        prop->set(action, text == "true");
        break;
      case TPropertyKind::pkInteger:
        prop->set(action, static_cast<int32_t>(std::stoi(text)));
        break;
      case TPropertyKind::pkEnumeration: {
        const auto it = std::find(prop->enumNames.begin(), prop->enumNames.end(), text);
        ASSERT_NE(it, prop->enumNames.end()) << name << " has no value " << text;
        prop->set(action, static_cast<int32_t>(it - prop->enumNames.begin()));
        break;
      }
      case TPropertyKind::pkStringList: {
        TStrings lines;
        size_t start = 0;
        for (;;) {
          const size_t end = text.find('\n', start);
          lines.push_back(text.substr(start, end - start));
          if (end == std::string::npos) break;
          start = end + 1;
        }
        prop->set(action, lines);
        break;
      }
    }
  }
}

namespace {

class TReportCollector : public IWrenActionValidationError {
 public:
  void AddError(const std::string& field, const std::string& message) override {
    reports.emplace_back(field, message);
  }
  TReports reports;
};

}  // namespace

void CheckValidation(const std::function<std::unique_ptr<TCustomWrenAction>()>& make,
                     const std::vector<TValidationCase>& cases) {
  for (const TValidationCase& c : cases) {
    SCOPED_TRACE(c.name);
    std::unique_ptr<TCustomWrenAction> action = make();
    ApplySettings(*action, c.settings);
    TReportCollector collector;
    EXPECT_EQ(action->Validate(collector), c.reports.empty());
    EXPECT_EQ(collector.reports, c.reports);
  }
}

bool TStepRun::Logged(const std::string& fragment) const {
  return std::any_of(log.begin(), log.end(), [&fragment](const std::string& line) {
    return line.find(fragment) != std::string::npos;
  });
}

void TSdkToolTest::SetUp() {
  temp_ = std::make_unique<TempDir>();
  root_ = temp_->path() + "net sdk/";
  work_ = temp_->path() + "work dir";
  std::filesystem::create_directories(root_ + "Framework/v4.0.30319");
  std::filesystem::create_directories(root_ + "SDK/v4.0/Bin");
  std::filesystem::create_directories(work_);

  const std::string hive = "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\.NETFramework]\n"
                           "\"InstallRoot\"=" + RegString(root_ + "Framework/") + "\n"
                           "\"sdkInstallRootv4.0\"=" + RegString(root_ + "SDK/v4.0/") + "\n";
  std::string error;
  std::shared_ptr<IWrenRegistry> registry = ParseRegistryText(hive, "sdk-fixture.reg", error);
  ASSERT_NE(registry, nullptr) << error;
  SetWrenRegistry(registry);
  ReleaseWrenDotNetInfo();
  ASSERT_NE(WrenDotNetInfo()->GetFrameWorkBySDKVersion("v4.0"), nullptr)
      << "the fixture's framework was not detected";
}

void TSdkToolTest::TearDown() {
  SetWrenRegistry(nullptr);
  ReleaseWrenDotNetInfo();
  temp_.reset();
}

void TSdkToolTest::UseFixtureSDK(TWrenDotNetAction& action) {
  action.OverrideSDKDefault = true;
  action.SetDefaultSDKVersion("v4.0");
}

std::string TSdkToolTest::InstallTool(const TWrenDotNetAction& action) {
  const std::string dir = action.GetDotNetToolType() == TWrenDotNetToolType::ttFramework
                              ? root_ + "Framework/v4.0.30319/"
                              : root_ + "SDK/v4.0/Bin/";
  const std::string path = dir + action.GetDotNetTool();
  InstallRecorder(path);
  return path;
}

void TSdkToolTest::ConfigureTool(const std::string& toolPath, const nlohmann::json& config) {
  WriteFile(toolPath + ".recorder.json", config.dump());
}

std::unique_ptr<TWrenStepHost> TSdkToolTest::MakeHost(std::vector<std::string>& log) {
  auto host = std::make_unique<TWrenStepHost>();
  host->SetVariable("WORK", work_);
  host->SetVariable("EMPTY", "");
  host->SetLogSink([&log](TWrenLogStream, const std::string& text) { log.push_back(text); });
  return host;
}

TStepRun TSdkToolTest::Run(TWrenDotNetAction& action) {
  TStepRun run;
  std::unique_ptr<TWrenStepHost> host = MakeHost(run.log);
  action.SetHost(host.get());
  const std::string tool = action.GetExecutable();
  std::filesystem::remove(tool + ".argv.json");
  run.success = action.Execute();
  action.SetHost(nullptr);
  run.call = RecordedCall(tool);
  return run;
}

std::string TSdkToolTest::Expand(const std::string& text) const {
  return ReplaceAll(text, "{W}", work_);
}

void TSdkToolTest::CheckCommandCases(
    const std::function<std::unique_ptr<TWrenDotNetAction>()>& make,
    const std::vector<TCommandCase>& cases) {
  const std::string tool = InstallTool(*make());
  for (const TCommandCase& c : cases) {
    SCOPED_TRACE(c.name);

    // As the builder collects it.
    std::unique_ptr<TWrenDotNetAction> action = make();
    UseFixtureSDK(*action);
    ApplySettings(*action, c.settings);
    std::vector<std::string> log;
    std::unique_ptr<TWrenStepHost> host = MakeHost(log);
    action->SetHost(host.get());
    std::shared_ptr<ICommandLineBuilder> builder = CreateCommandLineBuilder();
    EXPECT_EQ(action->GetCommandLine(*builder), c.ok);
    if (c.ok) {
      EXPECT_EQ(builder->GetCommandLineText(), Expand(c.text));
    }
    action->SetHost(nullptr);

    // As the tool receives it.
    std::unique_ptr<TWrenDotNetAction> runAction = make();
    UseFixtureSDK(*runAction);
    ApplySettings(*runAction, c.settings);
    ASSERT_EQ(runAction->GetExecutable(), tool);
    const TStepRun run = Run(*runAction);
    if (!c.ok) {
      EXPECT_FALSE(run.success);
      EXPECT_TRUE(run.call.is_null()) << "a refused command line started the tool";
      if (!c.failLabel.empty()) {
        EXPECT_TRUE(run.Logged(c.failLabel)) << "the log does not name " << c.failLabel;
      }
      continue;
    }
    EXPECT_TRUE(run.success);
    ASSERT_FALSE(run.call.is_null()) << "the tool did not run";
    std::vector<std::string> argv = run.call["argv"].get<std::vector<std::string>>();
    ASSERT_FALSE(argv.empty());
    argv.erase(argv.begin());
    std::vector<std::string> expected;
    for (const std::string& arg : c.argv) expected.push_back(Expand(arg));
    EXPECT_EQ(argv, expected);
    const std::string cwd = c.cwd.empty() ? ExtractFilePath(tool) : Expand(c.cwd);
    std::error_code ec;
    EXPECT_TRUE(std::filesystem::equivalent(run.call["cwd"].get<std::string>(), cwd, ec))
        << run.call["cwd"] << " is not " << cwd;
  }
}

}  // namespace wren::test
