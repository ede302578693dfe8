// A build of 500 tool steps against a shell loop starting the same program 500 times: what the
// host costs per step (project load, expansion, command line, spawn, output reading, logging).
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <spawn.h>
#include <string>
#include <sys/wait.h>

#include "WrenExecuteAction.h"
#include "WrenUtils.h"
#include "runtime/WrenBuildEngine.h"

extern char** environ;

namespace {

using namespace wren;

constexpr int kSteps = 500;
const char* const kProgram = "/bin/true";

/// The smallest tool step: runs Program with one argument.
class TBenchToolAction : public TWrenExecuteAbstractAction {
 public:
  static std::string StaticClassName() { return "TBenchToolAction"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return "Bench tool"; }
  static const TPropertyTable& ClassProperties() {
    static const TPropertyTable table =
        ChainProperties(TWrenExecuteAbstractAction::ClassProperties(),
                        {StringProperty("Program", &TBenchToolAction::Program),
                         StringProperty("Argument", &TBenchToolAction::Argument)});
    return table;
  }
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }
  TBenchToolAction() { CaptureOutput = true; }
  std::string GetExecutable() override { return Program; }
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    std::string value;
    if (!TryExpandExpression("Argument", Argument, false, value)) return false;
    builder.AddArgument("/step:", value, 2);
    return true;
  }
  std::string Program, Argument;
};

class TQuiet : public IWrenBuildListener {};

double hostSeconds = 0, shellSeconds = 0;

void BM_Marrowby500Steps(benchmark::State& state) {
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MarrowbyProject version=\"1\">\n"
                     "<Variables><Variable name=\"N\">x</Variable></Variables>\n<Actions>\n";
  for (int i = 0; i < kSteps; ++i)
    text += std::string("<Action class=\"TBenchToolAction\"><Property name=\"Program\">") +
            kProgram + "</Property><Property name=\"Argument\">%N%" + std::to_string(i) +
            "</Property></Action>\n";
  text += "</Actions>\n</MarrowbyProject>\n";
  const TWrenActionFactory factory = [](const std::string&) {
    return std::unique_ptr<TCustomWrenAction>(new TBenchToolAction());
  };
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    TWrenProject project;
    TWrenProjectError error;
    if (!project.LoadFromText(text, "/tmp/bench.mbproj", factory, error)) {
      state.SkipWithError(error.ToString().c_str());
      return;
    }
    TQuiet quiet;
    const TWrenBuildResult result = RunBuild(project, {}, quiet);
    if (!result.success || result.steps.size() != static_cast<size_t>(kSteps)) {
      state.SkipWithError("the build did not run every step");
      return;
    }
    hostSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
}

void BM_ShellLoop500(benchmark::State& state) {
  const std::string script = "i=0; while [ $i -lt " + std::to_string(kSteps) + " ]; do " +
                             kProgram + " /step:x$i; i=$((i+1)); done";
  for (auto _ : state) {
    const auto start = std::chrono::steady_clock::now();
    const char* argv[] = {"/bin/sh", "-c", script.c_str(), nullptr};
    pid_t pid;
    if (posix_spawn(&pid, "/bin/sh", nullptr, nullptr, const_cast<char**>(argv), environ) != 0) {
      state.SkipWithError("cannot start /bin/sh");
      return;
    }
    int status = 0;
    waitpid(pid, &status, 0);
    shellSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
}

BENCHMARK(BM_Marrowby500Steps)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ShellLoop500)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  if (hostSeconds > 0 && shellSeconds > 0)
    std::printf("500 steps: marrowby %.3f s, shell loop %.3f s, ratio %.2f\n", hostSeconds,
                shellSeconds, hostSeconds / shellSeconds);
  return 0;
}
