#include <gtest/gtest.h>

#include "TestSupport.h"
#include "WrenBuildEngine.h"
#include "WrenExecuteAction.h"
#include "WrenUtils.h"

namespace wren {
namespace {

/// An execute action that runs a configured program with one argument, and remembers what the
/// host handed back to it.
class TRecordingAction : public TWrenExecuteAbstractAction {
 public:
  static std::string StaticClassName() { return "TRecordingAction"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return "Recording"; }
  static const TPropertyTable& ClassProperties() {
    static const TPropertyTable table = ChainProperties(
        TWrenExecuteAbstractAction::ClassProperties(),
        {StringProperty("Program", &TRecordingAction::Program),
         StringProperty("Switch", &TRecordingAction::Switch),
         StringProperty("Argument", &TRecordingAction::Argument),
         BoolProperty("Invalid", &TRecordingAction::Invalid)});
    return table;
  }
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  TRecordingAction() { CaptureOutput = true; }
  bool Validate(IWrenActionValidationError& errors) override {
    if (Invalid) errors.AddError("Program", "Program has not been set");
    return !Invalid;
  }
  std::string GetExecutable() override { return ExpandExpression(Program); }
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    std::string value;
    if (!TryExpandExpression("Argument", Argument, true, value)) return false;
    builder.AddArgument(Switch, value, 2);
    return true;
  }
  bool InterpretResult(int32_t exitCode) override {
    interpreted.push_back(exitCode);
    return exitCode == 0;
  }
  void OnExeNotFound(const std::string& exe) override {
    notFound.push_back(exe);
    TWrenExecuteAbstractAction::OnExeNotFound(exe);
  }

  std::string Program, Argument, Switch = "/in:";
  bool Invalid = false;
  std::vector<int32_t> interpreted;
  std::vector<std::string> notFound;
};

/// Collects what the engine reports.
class TEvents : public IWrenBuildListener {
 public:
  void OnInvalid(const TWrenValidationProblem& p) override { invalid.push_back(p.message); }
  void OnStepStart(const TWrenStepReport& s, int) override { started.push_back(s.step); }
  void OnLog(const TWrenStepReport& s, TWrenLogStream stream, const std::string& t) override {
    log.push_back(std::to_string(s.step) + (stream == TWrenLogStream::StdOut ? " out " : " msg ") +
                  t);
  }
  std::vector<std::string> invalid, log;
  std::vector<int> started;
};

std::unique_ptr<TCustomWrenAction> Make(const std::string& name) {
  if (SameText(name, TRecordingAction::StaticClassName()))
    return std::make_unique<TRecordingAction>();
  return nullptr;
}

std::string Step(const std::string& program, const std::string& argument,
                 const std::string& extra = "") {
  return "<Action class=\"TRecordingAction\"" + extra + "><Property name=\"Program\">" + program +
         "</Property><Property name=\"Argument\">" + argument + "</Property></Action>\n";
}

std::string Project(const std::string& steps) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MarrowbyProject version=\"1\">\n"
         "<Variables><Variable name=\"TOOLS\">" +
         std::string() + "</Variable></Variables>\n<Actions>\n" + steps +
         "</Actions>\n</MarrowbyProject>\n";
}

TEST(BuildEngine, RunsStepsInOrderAndStopsAtTheFirstFailure) {
  test::TempDir dir;
  const std::string ok = dir / "tools/ok.exe", bad = dir / "tools/bad.exe";
  test::InstallRecorder(ok);
  test::InstallRecorder(bad);
  test::WriteFile(ok + ".recorder.json", R"({"stdout":"first line\r\nsecond line"})");
  test::WriteFile(bad + ".recorder.json", R"({"exit":3,"stderr":"it broke"})");
  const std::string never = dir / "tools/never.exe";
  test::InstallRecorder(never);

  TWrenProject project;
  TWrenProjectError error;
  ASSERT_TRUE(project.LoadFromText(
      Project(Step("%ProjectDir%/tools/ok.exe", "%ProjectName% input.txt") +
              Step(never, "x", " enabled=\"false\"") + Step(bad, "y") + Step(never, "z")),
      dir / "my build.mbproj", Make, error))
      << error.ToString();

  TEvents events;
  const TWrenBuildResult result = RunBuild(project, {}, events);
  EXPECT_FALSE(result.success);
  EXPECT_FALSE(result.invalid);
  ASSERT_EQ(result.steps.size(), 3u);
  EXPECT_EQ(events.started, (std::vector<int>{1, 2, 3}));

  // Step 1: built-in variables expanded, quoting survives the Windows splitting, output in order.
  EXPECT_TRUE(result.steps[0].success);
  EXPECT_EQ(result.steps[0].exitCode, 0);
  const nlohmann::json call = test::RecordedCall(ok);
  ASSERT_FALSE(call.is_null());
  EXPECT_EQ(call["argv"][1], "/in:my build input.txt");
  EXPECT_EQ(events.log[0], "1 out first line");
  EXPECT_EQ(events.log[1], "1 out second line");

  // Step 2 is disabled; step 3's exit code reaches InterpretResult and fails the build.
  EXPECT_FALSE(result.steps[1].enabled);
  EXPECT_FALSE(result.steps[2].success);
  EXPECT_EQ(result.steps[2].exitCode, 3);
  EXPECT_EQ(result.steps[2].failureReason, "the program exited with code 3");
  auto* third = static_cast<TRecordingAction*>(project.steps[2].action.get());
  EXPECT_EQ(third->interpreted, (std::vector<int32_t>{3}));
  EXPECT_TRUE(test::RecordedCall(never).is_null());
}

TEST(BuildEngine, MissingProgramsFailedExpansionsAndInvalidStepsStartNothing) {
  test::TempDir dir;
  const std::string tool = dir / "tool.exe";
  test::InstallRecorder(tool);

  {  // A missing program goes to OnExeNotFound.
    TWrenProject project;
    TWrenProjectError error;
    ASSERT_TRUE(project.LoadFromText(Project(Step(dir / "missing.exe", "a")), dir / "p.mbproj",
                                     Make, error));
    TEvents events;
    const TWrenBuildResult result = RunBuild(project, {}, events);
    EXPECT_FALSE(result.success);
    auto* action = static_cast<TRecordingAction*>(project.steps[0].action.get());
    EXPECT_EQ(action->notFound, (std::vector<std::string>{dir / "missing.exe"}));
    EXPECT_TRUE(action->interpreted.empty());
    EXPECT_FALSE(result.steps[0].exitCode.has_value());
  }
  {  // A failed expansion ends the step before the process and gives the reason.
    TWrenProject project;
    TWrenProjectError error;
    ASSERT_TRUE(project.LoadFromText(Project(Step(tool, "%NOT_DEFINED_ANYWHERE%")),
                                     dir / "p.mbproj", Make, error));
    TEvents events;
    const TWrenBuildResult result = RunBuild(project, {}, events);
    EXPECT_FALSE(result.success);
    EXPECT_NE(result.steps[0].failureReason.find("\"Argument\""), std::string::npos)
        << result.steps[0].failureReason;
    EXPECT_TRUE(test::RecordedCall(tool).is_null());
  }
  {  // Validation problems: nothing runs at all.
    TWrenProject project;
    TWrenProjectError error;
    ASSERT_TRUE(project.LoadFromText(
        Project(Step(tool, "a") + "<Action class=\"TRecordingAction\"><Property name=\"Invalid\">"
                                  "true</Property></Action>\n"),
        dir / "p.mbproj", Make, error));
    TEvents events;
    const TWrenBuildResult result = RunBuild(project, {}, events);
    EXPECT_TRUE(result.invalid);
    EXPECT_EQ(events.invalid, (std::vector<std::string>{"Program has not been set"}));
    EXPECT_TRUE(events.started.empty());
    EXPECT_TRUE(test::RecordedCall(tool).is_null());
  }
}

TEST(BuildEngine, DryRunRecordsTheCallAndOverridesWinOverProjectVariables) {
  test::TempDir dir;
  const std::string tool = dir / "tool.exe";
  test::InstallRecorder(tool);
  test::WriteFile(dir / "args.rsp", "/a\r\n/b\r\n");
  TWrenProject project;
  TWrenProjectError error;
  ASSERT_TRUE(project.LoadFromText(
      Project(Step(tool, "@%ProjectDir%/%TOOLS%.rsp", "><Property name=\"Switch\"></Property")),
      dir / "p.mbproj", Make, error))
      << error.ToString();
  TWrenBuildOptions options;
  options.dryRun = true;
  options.variables["tools"] = "args";
  TEvents events;
  const TWrenBuildResult result = RunBuild(project, options, events);
  EXPECT_TRUE(result.success);
  ASSERT_EQ(result.steps[0].dryRuns.size(), 1u);
  const TWrenDryRunRecord& record = result.steps[0].dryRuns[0];
  EXPECT_EQ(record.executable, tool);
  EXPECT_EQ(record.argv, (std::vector<std::string>{"@" + dir.path() + "args.rsp"}));
  EXPECT_EQ(record.responseFilePath, dir.path() + "args.rsp");
  EXPECT_EQ(record.responseFileText, "/a\r\n/b\r\n");
  EXPECT_TRUE(test::RecordedCall(tool).is_null());
}

}  // namespace
}  // namespace wren
