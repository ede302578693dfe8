#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include "TestSupport.h"
#include "WrenBuildEngine.h"
#include "WrenExecuteAction.h"
#include "WrenStepHost.h"

namespace wren {
namespace {

/// An execute action that runs a configured program with one argument, and remembers what the
/// host handed back to it.
class TRecordingAction : public TWrenExecuteAbstractAction {
 public:
  std::string ClassName() const override { return "TRecordingAction"; }
  std::string DisplayName() const override { return "Recording"; }
  const TPropertyTable& GetPublishedProperties() const override {
    static const TPropertyTable table = ChainProperties(
        TWrenExecuteAbstractAction::ClassProperties(),
        {StringProperty("Program", &TRecordingAction::Program),
         StringProperty("Switch", &TRecordingAction::Switch),
         StringProperty("Argument", &TRecordingAction::Argument)});
    return table;
  }

  TRecordingAction() { CaptureOutput = true; }
  bool Validate(IWrenActionValidationError& errors) override {
    if (Program.empty()) errors.AddError("Program", "Program has not been set");
    return !Program.empty();
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
  std::vector<int32_t> interpreted;
  std::vector<std::string> notFound;
};

/// A project loaded from steps and run; the step reports carry the rest of what happened.
struct TBuild : IWrenBuildListener {
  void OnInvalid(const TWrenValidationProblem& p) override { invalid.push_back(p.message); }
  void OnLog(const TWrenStepReport&, TWrenLogStream, const std::string& text) override {
    ++logged;
    longest = std::max(longest, text.size());
    unflushed = true;
  }
  void OnLogFlush(const TWrenStepReport&) override {
    ++flushes;
    unflushed = false;
  }
  void OnStepEnd(const TWrenStepReport&) override { endedUnflushed = endedUnflushed || unflushed; }

  void Run(const std::string& steps, const std::string& file,
           const TWrenBuildOptions& options = {}) {
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MarrowbyProject version=\"1\">\n"
        "<Variables><Variable name=\"TOOLS\"></Variable></Variables>\n<Actions>\n" +
        steps + "</Actions>\n</MarrowbyProject>\n";
    TWrenProjectError error;
    const auto make = [](const std::string&) { return std::make_unique<TRecordingAction>(); };
    ASSERT_TRUE(project.LoadFromText(text, file, make, error)) << error.ToString();
    result = RunBuild(project, options, *this);
  }
  TRecordingAction& Action(size_t i) {
    return static_cast<TRecordingAction&>(*project.steps.at(i).action);
  }

  TWrenProject project;
  TWrenBuildResult result;
  std::vector<std::string> invalid;
  size_t logged = 0, longest = 0, flushes = 0;
  bool unflushed = false, endedUnflushed = false;
};

std::string Step(const std::string& program, const std::string& argument,
                 const std::string& extra = "") {
  return "<Action class=\"TRecordingAction\"" + extra + "><Property name=\"Program\">" + program +
         "</Property><Property name=\"Argument\">" + argument + "</Property></Action>\n";
}

TEST(BuildEngine, RunsStepsInOrderStopsAtAFailureAndStartsNothingForBadSteps) {
  test::TempDir dir;
  const std::string ok = dir / "tools/ok.exe", bad = dir / "bad.exe", never = dir / "never.exe";
  for (const std::string& tool : {ok, bad, never}) test::InstallRecorder(tool);
  test::WriteFile(ok + ".recorder.json", R"({"stdout":"first line\r\nsecond line"})");
  test::WriteFile(bad + ".recorder.json", R"({"exit":3,"stderr":"it broke"})");

  TBuild build;
  build.Run(Step("%ProjectDir%/tools/ok.exe", "%ProjectName% input.txt") +
                Step(never, "x", " enabled=\"false\"") + Step(bad, "y") + Step(never, "z"),
            dir / "my build.mbproj");
  const TWrenBuildResult& result = build.result;
  EXPECT_FALSE(result.success);
  ASSERT_EQ(result.steps.size(), 4u);

  // Step 1: built-in variables expanded, quoting survives the Windows splitting, output in order
  // with CR LF and no final newline.
  EXPECT_TRUE(result.steps[0].success);
  EXPECT_EQ(result.steps[0].exitCode, 0);
  EXPECT_EQ(test::RecordedCall(ok)["argv"][1], "/in:my build input.txt");
  const std::vector<std::pair<TWrenLogStream, std::string>> lines = {
      {TWrenLogStream::Command, "starting " + ok + " /in:\"my build input.txt\"  (in .)"},
      {TWrenLogStream::StdOut, "first line"},
      {TWrenLogStream::StdOut, "second line"}};
  EXPECT_EQ(result.steps[0].log, lines);

  // Step 2 is disabled; step 3's exit code reaches InterpretResult and fails the build; step 4
  // is listed as never run.
  EXPECT_FALSE(result.steps[1].enabled);
  EXPECT_EQ(result.steps[1].skipped, "disabled");
  EXPECT_EQ(result.steps[3].skipped, "not run: an earlier step failed");
  EXPECT_FALSE(result.steps[2].success);
  EXPECT_EQ(result.steps[2].exitCode, 3);
  EXPECT_EQ(result.steps[2].failureReason, "the program exited with code 3");
  EXPECT_EQ(build.Action(2).interpreted, (std::vector<int32_t>{3}));
  EXPECT_TRUE(test::RecordedCall(never).is_null());

  // Missing programs, failed expansions and invalid steps start nothing.
  const std::string tool = dir / "tool.exe";
  test::InstallRecorder(tool);
  TBuild missing;  // a missing program goes to OnExeNotFound
  missing.Run(Step(dir / "missing.exe", "a"), dir / "p.mbproj");
  EXPECT_FALSE(missing.result.success);
  EXPECT_EQ(missing.Action(0).notFound, (std::vector<std::string>{dir / "missing.exe"}));
  EXPECT_TRUE(missing.Action(0).interpreted.empty());
  EXPECT_FALSE(missing.result.steps.at(0).exitCode.has_value());

  TBuild expansion;  // a failed expansion ends the step before the process, giving the reason
  expansion.Run(Step(tool, ""), dir / "p.mbproj");
  EXPECT_FALSE(expansion.result.success);
  const std::string reason = expansion.result.steps.at(0).failureReason;
  EXPECT_NE(reason.find("\"Argument\""), std::string::npos) << reason;

  TBuild undefined;  // an undefined variable is found before anything runs
  undefined.Run(Step(tool, "a") + Step(tool, "%NOT_DEFINED_ANYWHERE%"), dir / "p.mbproj");
  EXPECT_TRUE(undefined.result.invalid);
  ASSERT_EQ(undefined.invalid.size(), 1u);
  EXPECT_EQ(undefined.invalid[0].rfind("%NOT_DEFINED_ANYWHERE% is not defined", 0), 0u);

  TBuild invalid;  // validation problems: nothing runs at all
  invalid.Run(Step(tool, "a") + Step("", "b"), dir / "p.mbproj");
  EXPECT_TRUE(invalid.result.invalid);
  EXPECT_EQ(invalid.invalid, (std::vector<std::string>{"Program has not been set"}));
  EXPECT_TRUE(invalid.result.steps.empty());
  EXPECT_TRUE(test::RecordedCall(tool).is_null());

  // A dry run records the call, with the response file it names, and starts nothing; --var
  // overrides win over the project's variables.
  test::WriteFile(dir / "args.rsp", "/a\r\n/b\r\n");
  TWrenBuildOptions options;
  options.dryRun = true;
  options.variables["tools"] = "args";
  TBuild dry;
  dry.Run(Step(tool, "@%ProjectDir%/%TOOLS%.rsp", "><Property name=\"Switch\"></Property"),
          dir / "p.mbproj", options);
  ASSERT_TRUE(dry.result.success);
  ASSERT_EQ(dry.result.steps.at(0).dryRuns.size(), 1u);
  const TWrenDryRunRecord& record = dry.result.steps[0].dryRuns[0];
  EXPECT_EQ(record.executable, tool);
  EXPECT_EQ(record.argv, (std::vector<std::string>{"@" + dir.path() + "args.rsp"}));
  EXPECT_EQ(record.responseFilePath, dir.path() + "args.rsp");
  EXPECT_EQ(record.responseFileText, "/a\r\n/b\r\n");
  EXPECT_TRUE(test::RecordedCall(tool).is_null());
}

TEST(BuildEngine, AToolsWholeOutputReachesListenersWhileTheReportKeepsItsEnd) {
  test::TempDir dir;
  const std::string tool = dir / "noisy.sh";
  const size_t kLines = 1000000, kHuge = 1024 * 1024;
  test::WriteFile(tool, "#!/bin/sh\n"
                        "head -c " + std::to_string(kHuge) + " /dev/zero | tr '\\0' x; echo\n"
                        "yes line | head -n " + std::to_string(kLines) + "\n"
                        "echo last line\n"
                        "echo broken >&2\n"
                        "exit 3\n");
  ASSERT_EQ(::chmod(tool.c_str(), 0755), 0);

  TBuild build;
  build.Run(Step(tool, "a"), dir / "p.mbproj");
  ASSERT_EQ(build.result.steps.size(), 1u);
  const TWrenStepReport& step = build.result.steps[0];
  EXPECT_EQ(step.failureReason, "the program exited with code 3");

  // Listeners get every line whole (the command line, the huge one, the rest), and each batch is
  // flushed before the step ends; flushes follow reads, not lines.
  const size_t total = kLines + 4;
  EXPECT_EQ(build.logged, total);
  EXPECT_EQ(build.longest, kHuge);
  EXPECT_FALSE(build.endedUnflushed);
  EXPECT_GT(build.flushes, 0u);
  EXPECT_LT(build.flushes, kLines / 10);

  // The report keeps a bounded end of the log, no line of it longer than a few kilobytes.
  EXPECT_EQ(step.logLines, total);
  EXPECT_LT(step.log.size(), 1000u);
  using TLine = std::pair<TWrenLogStream, std::string>;
  EXPECT_NE(std::find(step.log.begin(), step.log.end(), TLine{TWrenLogStream::StdOut, "last line"}),
            step.log.end());
  EXPECT_NE(std::find(step.log.begin(), step.log.end(), TLine{TWrenLogStream::StdErr, "broken"}),
            step.log.end());
  for (const auto& [stream, text] : step.log) EXPECT_LT(text.size(), 8192u);

  // A huge line the report does keep is cut, saying by how much.
  test::WriteFile(tool, "#!/bin/sh\nhead -c " + std::to_string(kHuge) +
                            " /dev/zero | tr '\\0' x\nexit 1\n");
  TBuild huge;
  huge.Run(Step(tool, "a"), dir / "p.mbproj");
  const TWrenStepReport& cut = huge.result.steps.at(0);
  ASSERT_EQ(cut.log.size(), 2u);
  const std::string& kept = cut.log[1].second;
  EXPECT_EQ(kept.find(" ... (" + std::to_string(kHuge - kWrenLogTailLineBytes) + " more bytes)"),
            kWrenLogTailLineBytes)
      << kept.substr(kWrenLogTailLineBytes);
}

/// An in-process action that logs a burst of messages, then one it waits to see reach the
/// listener, then a last one.
class TChattyAction : public TCustomWrenAction {
 public:
  std::string ClassName() const override { return "TChattyAction"; }
  std::string DisplayName() const override { return "Chatty"; }
  bool Execute() override {
    if (throws) {
      // The second message is held when an exception no one catches ends the build.
      SendMessage("one");
      SendMessage("two");
      throw 42;
    }
    if (!seen) {
      // A failing step: its reason is the last message with text, blanks trimmed.
      for (const char* text : {"first", "  the reason \t", "", "   "}) SendMessage(text);
      return false;
    }
    for (int i = 0; i < kBurst; ++i) SendMessage("message " + std::to_string(i));
    SendMessage("waiting");
    // Nothing else is logged meanwhile: the line must get out on its own.
    const auto giveUp = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!seen->load() && std::chrono::steady_clock::now() < giveUp)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    sawWhileWaiting = seen->load();
    SendMessage("last");
    return true;
  }
  static constexpr int kBurst = 2000;
  std::atomic<bool>* seen = nullptr;
  bool sawWhileWaiting = false, throws = false;
};

/// Messages an action logs in a row reach the listeners together, in order and whole; one
/// followed by silence still gets out while the action is busy, and all are out before the step
/// ends.
TEST(BuildEngine, MessagesInARowArePassedOnTogetherAndNeverLeftBehind) {
  struct TListener : IWrenBuildListener {
    void OnLog(const TWrenStepReport&, TWrenLogStream, const std::string& text) override {
      std::lock_guard<std::mutex> lock(mutex);
      lines.push_back(text);
      if (text == "waiting") seen.store(true);
    }
    void OnLogFlush(const TWrenStepReport&) override { ++flushes; }
    void OnStepEnd(const TWrenStepReport&) override {
      std::lock_guard<std::mutex> lock(mutex);
      linesAtEnd = lines.size();
    }
    std::mutex mutex;
    std::vector<std::string> lines;
    std::atomic<bool> seen{false};
    std::atomic<int> flushes{0};
    size_t linesAtEnd = 0;
  } listener;
  const std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MarrowbyProject version=\"1\">\n<Actions>\n"
      "<Action class=\"TChattyAction\"/>\n</Actions>\n</MarrowbyProject>\n";
  TWrenProject project;
  TWrenProjectError error;
  const auto make = [](const std::string&) { return std::make_unique<TChattyAction>(); };
  ASSERT_TRUE(project.LoadFromText(text, "chatty.mbproj", make, error)) << error.ToString();
  auto& action = static_cast<TChattyAction&>(*project.steps.at(0).action);
  action.seen = &listener.seen;
  const TWrenBuildResult result = RunBuild(project, {}, listener);

  ASSERT_TRUE(result.success);
  EXPECT_TRUE(action.sawWhileWaiting);
  std::vector<std::string> expected;
  for (int i = 0; i < TChattyAction::kBurst; ++i) expected.push_back("message " + std::to_string(i));
  expected.push_back("waiting");
  expected.push_back("last");
  EXPECT_EQ(listener.lines, expected);
  EXPECT_EQ(listener.linesAtEnd, expected.size());
  EXPECT_EQ(result.steps.at(0).logLines, expected.size());
  EXPECT_EQ(result.steps.at(0).log.back().second, "last");
  EXPECT_LT(listener.flushes.load(), TChattyAction::kBurst / 10);

  action.seen = nullptr;
  TListener failing;
  const TWrenBuildResult failed = RunBuild(project, {}, failing);
  EXPECT_FALSE(failed.success);
  EXPECT_EQ(failed.steps.at(0).failureReason, "the reason");
  EXPECT_EQ(failing.lines, (std::vector<std::string>{"first", "  the reason \t", "", "   "}));

  // Unwinding, the step's host still passes its held messages on, to a log tail still there.
  action.throws = true;
  TListener thrown;
  EXPECT_THROW(RunBuild(project, {}, thrown), int);
  EXPECT_EQ(thrown.lines, (std::vector<std::string>{"one", "two"}));
}

/// A message held back goes out before the command line and output of a program started after
/// it, and a lone message after a pause goes out at once.
TEST(BuildEngine, HeldMessagesGoOutBeforeAProgramsOutput) {
  test::TempDir dir;
  const std::string tool = dir / "hello.sh";
  test::WriteFile(tool, "#!/bin/sh\necho hello\n");
  ASSERT_EQ(::chmod(tool.c_str(), 0755), 0);
  std::vector<std::string> lines;
  int flushes = 0;
  {
    TWrenStepHost host;
    host.SetLogLinesSink([&](const TWrenLogLines& block) {
      block.ForEach([&](std::string_view line) { lines.emplace_back(line); });
    });
    host.SetFlushSink([&] { ++flushes; });
    TRecordingAction action;
    action.Program = tool;
    action.Argument = "a";
    action.SetHost(&host);
    host.SendMessage("first");  // passed on at once
    EXPECT_EQ(lines, std::vector<std::string>{"first"});
    EXPECT_EQ(flushes, 1);
    host.SendMessage("second");  // right after: held
    EXPECT_TRUE(action.Execute());
    host.FinishMessages();
    action.SetHost(nullptr);
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines[1], "second");
    EXPECT_EQ(lines[2].rfind("starting " + tool, 0), 0u) << lines[2];
    EXPECT_EQ(lines[3], "hello");

    std::this_thread::sleep_for(TWrenStepHost::kMessageHold * 2);
    const size_t before = lines.size();
    host.SendMessage("after a pause");
    ASSERT_EQ(lines.size(), before + 1);
    EXPECT_EQ(lines.back(), "after a pause");
  }
}

}  // namespace
}  // namespace wren
