// Runs a loaded build project: validation, then each enabled step in order.
#pragma once

#include <atomic>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "WrenProject.h"
#include "WrenStepHost.h"

namespace wren {

/// One problem found by validation. Warnings are reported but do not stop a build.
struct TWrenValidationProblem {
  int step = 0;  // 1-based; 0 for the project as a whole
  std::string className;
  std::string field;
  std::string message;
  bool warning = false;
};

/// How much of a step's log its report keeps: tool output may be any size, the report may not.
constexpr size_t kWrenLogTailLines = 500;
constexpr size_t kWrenLogTailLineBytes = 4096;

/// What happened in one step.
struct TWrenStepReport {
  int step = 0;  // 1-based
  std::string className;
  std::string displayName;
  std::string description;
  bool enabled = true;
  bool inProcess = false;  // the action does its work itself (no external program)
  bool listedOnly = false;  // a dry run listed the step without running it
  std::string skipped;      // why the step did not run ("disabled", "not selected", ...); "" ran
  bool success = false;
  std::optional<int> exitCode;  // set when a program ran to its end
  double seconds = 0;
  std::string failureReason;  // one line, set on failure
  // The end of the step's log, kept for failure reports: at most kWrenLogTailLines lines, each
  // cut at kWrenLogTailLineBytes. Listeners saw every line as it came (OnLog).
  std::vector<std::pair<TWrenLogStream, std::string>> log;
  size_t logLines = 0;  // lines logged in all; more than log.size() when earlier ones were dropped
  std::vector<TWrenDryRunRecord> dryRuns;
  std::string testResultFile;  // an XML test result the step's tool wrote (absolute), or ""
};

/// Receives build events as they happen (the terminal, JSON and report writers).
class IWrenBuildListener {
 public:
  virtual ~IWrenBuildListener() = default;
  virtual void OnInvalid(const TWrenValidationProblem& problem) { (void)problem; }
  virtual void OnStepStart(const TWrenStepReport& step, int total) {
    (void)step;
    (void)total;
  }
  virtual void OnLog(const TWrenStepReport& step, TWrenLogStream stream, const std::string& text) {
    (void)step;
    (void)stream;
    (void)text;
  }
  /// A block of lines of one stream, in order (a read of a tool's output): each goes to OnLog
  /// unless the listener takes the block at once.
  virtual void OnLogLines(const TWrenStepReport& step, const TWrenLogLines& lines) {
    std::string line;
    lines.ForEach([&](std::string_view text) {
      line.assign(text);
      OnLog(step, lines.Stream(), line);
    });
  }
  /// The lines logged since the last call are all there is for now (one read of a tool's
  /// output, or one message): a writer that buffers lines passes them on here.
  virtual void OnLogFlush(const TWrenStepReport& step) { (void)step; }
  virtual void OnDryRun(const TWrenStepReport& step, const TWrenDryRunRecord& record) {
    (void)step;
    (void)record;
  }
  virtual void OnStepEnd(const TWrenStepReport& step) { (void)step; }
};

struct TWrenBuildOptions {
  bool dryRun = false;
  // Steps to run, by number or description; empty: all. --only, --from, --skip.
  std::vector<std::string> only;
  std::string from;
  std::vector<std::string> skip;
  std::map<std::string, std::string> variables;  // --var, over the project's own
  const std::atomic<bool>* stopFlag = nullptr;    // default: the process-wide flag
};

struct TWrenBuildResult {
  bool success = false;
  bool invalid = false;  // validation failed; nothing ran
  bool stopped = false;
  double seconds = 0;
  std::vector<TWrenStepReport> steps;
};

/// Validates every enabled step; the problems in step order.
std::vector<TWrenValidationProblem> ValidateProject(TWrenProject& project);

/// The host's own checks of the enabled steps, before anything runs: %NAME%s that nothing defines
/// (errors), Windows-style paths on POSIX and wildcard selections that match no file (warnings).
/// Relative paths are taken from the project's folder.
std::vector<TWrenValidationProblem> CheckProject(
    const TWrenProject& project, const std::map<std::string, std::string>& variables);

/// Validation and the host's checks together, errors and warnings in step order.
std::vector<TWrenValidationProblem> ValidateAll(TWrenProject& project,
                                                const std::map<std::string, std::string>& overrides);

/// Which steps the options select (index per step); false with error for a selector that names no
/// step (a number out of range or a description no step has).
bool SelectSteps(const TWrenProject& project, const TWrenBuildOptions& options,
                 std::vector<bool>& selected, std::string& error);

/// The variables a step sees: ProjectDir, ProjectName, the project's variables, then overrides.
std::map<std::string, std::string> BuildVariables(const TWrenProject& project,
                                                  const std::map<std::string, std::string>& overrides);

/// Validates, then runs every enabled step in order until one fails or a stop is requested.
TWrenBuildResult RunBuild(TWrenProject& project, const TWrenBuildOptions& options,
                          IWrenBuildListener& listener);

}  // namespace wren
