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

/// One problem found by validation.
struct TWrenValidationProblem {
  int step = 0;  // 1-based
  std::string className;
  std::string field;
  std::string message;
};

/// What happened in one step.
struct TWrenStepReport {
  int step = 0;  // 1-based
  std::string className;
  std::string displayName;
  std::string description;
  bool enabled = true;
  bool inProcess = false;  // the action does its work itself (no external program)
  bool listedOnly = false;  // a dry run listed the step without running it
  bool success = false;
  std::optional<int> exitCode;  // set when a program ran to its end
  double seconds = 0;
  std::string failureReason;  // one line, set on failure
  std::vector<std::pair<TWrenLogStream, std::string>> log;
  std::vector<TWrenDryRunRecord> dryRuns;
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
  virtual void OnDryRun(const TWrenStepReport& step, const TWrenDryRunRecord& record) {
    (void)step;
    (void)record;
  }
  virtual void OnStepEnd(const TWrenStepReport& step) { (void)step; }
};

struct TWrenBuildOptions {
  bool dryRun = false;
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

/// The variables a step sees: ProjectDir, ProjectName, the project's variables, then overrides.
std::map<std::string, std::string> BuildVariables(const TWrenProject& project,
                                                  const std::map<std::string, std::string>& overrides);

/// Validates, then runs every enabled step in order until one fails or a stop is requested.
TWrenBuildResult RunBuild(TWrenProject& project, const TWrenBuildOptions& options,
                          IWrenBuildListener& listener);

}  // namespace wren
