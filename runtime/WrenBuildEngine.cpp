#include "WrenBuildEngine.h"

#include <chrono>
#include <filesystem>

#include "WrenExecuteAction.h"
#include "WrenUtils.h"

namespace wren {
namespace {

/// Collects validation reports of one step.
class TValidationSink : public IWrenActionValidationError {
 public:
  TValidationSink(int step, std::string className, std::vector<TWrenValidationProblem>& out)
      : step_(step), className_(std::move(className)), out_(out) {}
  void AddError(const std::string& field, const std::string& message) override {
    out_.push_back({step_, className_, field, message});
    ++count_;
  }
  int Count() const { return count_; }

 private:
  int step_;
  std::string className_;
  std::vector<TWrenValidationProblem>& out_;
  int count_ = 0;
};

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// The one-line reason a failed step gives.
std::string FailureReason(const TWrenStepReport& report, const TWrenStepHost& host) {
  if (host.StopSignalledNow()) return "stopped by user request";
  const TWrenProcessResult& process = host.LastProcessResult();
  if (host.ProcessStarted() && process.status == TWrenProcessResult::TStatus::Exited)
    return "the program exited with code " + std::to_string(process.exitCode);
  if (process.status == TWrenProcessResult::TStatus::NotFound)
    return "program not found";
  for (auto it = report.log.rbegin(); it != report.log.rend(); ++it)
    if (it->first == TWrenLogStream::Message && !Trim(it->second).empty()) return Trim(it->second);
  return "the action reported failure";
}

}  // namespace

std::vector<TWrenValidationProblem> ValidateProject(TWrenProject& project) {
  std::vector<TWrenValidationProblem> problems;
  for (size_t i = 0; i < project.steps.size(); ++i) {
    TWrenProjectStep& step = project.steps[i];
    if (!step.enabled) continue;
    TValidationSink sink(static_cast<int>(i + 1), step.className, problems);
    const bool ok = step.action->Validate(sink);
    if (!ok && sink.Count() == 0)
      problems.push_back({static_cast<int>(i + 1), step.className, "", "the action is not valid"});
  }
  return problems;
}

std::map<std::string, std::string> BuildVariables(
    const TWrenProject& project, const std::map<std::string, std::string>& overrides) {
  std::map<std::string, std::string> vars;
  // Names compare without case: a later definition replaces an earlier one of any spelling.
  auto define = [&vars](const std::string& name, const std::string& value) {
    for (auto it = vars.begin(); it != vars.end();)
      it = SameText(it->first, name) ? vars.erase(it) : std::next(it);
    vars[name] = value;
  };
  std::error_code ec;
  const std::string absolute = std::filesystem::absolute(project.fileName, ec).string();
  define("ProjectDir", ExcludeTrailingPathDelimiter(ExtractFilePath(absolute)));
  define("ProjectName", ChangeFileExt(ExtractFileName(project.fileName), ""));
  for (const TWrenProjectVariable& v : project.variables) define(v.name, v.value);
  for (const auto& [name, value] : overrides) define(name, value);
  return vars;
}

TWrenBuildResult RunBuild(TWrenProject& project, const TWrenBuildOptions& options,
                          IWrenBuildListener& listener) {
  TWrenBuildResult result;
  const auto buildStart = std::chrono::steady_clock::now();
  const std::atomic<bool>* stop = options.stopFlag ? options.stopFlag : &WrenStopFlag();

  const std::vector<TWrenValidationProblem> problems = ValidateProject(project);
  for (const TWrenValidationProblem& p : problems) listener.OnInvalid(p);
  if (!problems.empty()) {
    result.invalid = true;
    return result;
  }

  const std::map<std::string, std::string> variables = BuildVariables(project, options.variables);
  const int total = static_cast<int>(project.steps.size());
  result.success = true;
  for (int i = 0; i < total; ++i) {
    TWrenProjectStep& step = project.steps[i];
    TWrenStepReport report;
    report.step = i + 1;
    report.className = step.className;
    report.displayName = step.action->DisplayName();
    report.description = step.action->GetDescription();
    report.enabled = step.enabled;
    auto* executeAction = dynamic_cast<TWrenExecuteAbstractAction*>(step.action.get());
    report.inProcess = executeAction == nullptr;

    if (stop->load()) {
      result.stopped = true;
      result.success = false;
      break;
    }
    listener.OnStepStart(report, total);
    if (!step.enabled || (options.dryRun && report.inProcess)) {
      // Disabled steps are skipped; a dry run lists in-process steps without running them.
      report.success = true;
      report.listedOnly = step.enabled;
      listener.OnStepEnd(report);
      result.steps.push_back(std::move(report));
      continue;
    }

    TWrenStepHost host;
    host.SetVariables(variables);
    host.SetStopFlag(stop);
    host.SetDryRun(options.dryRun);
    host.SetLogSink([&](TWrenLogStream stream, const std::string& text) {
      report.log.emplace_back(stream, text);
      listener.OnLog(report, stream, text);
    });
    step.action->SetHost(&host);
    const auto stepStart = std::chrono::steady_clock::now();
    bool ok = false;
    try {
      ok = step.action->Execute();
    } catch (const std::exception& e) {
      host.SendMessage(std::string("Internal error: ") + e.what());
      ok = false;
    }
    step.action->SetHost(nullptr);
    report.seconds = SecondsSince(stepStart);
    report.success = ok;
    if (host.ProcessStarted() &&
        host.LastProcessResult().status == TWrenProcessResult::TStatus::Exited)
      report.exitCode = host.LastProcessResult().exitCode;
    report.dryRuns = host.DryRunRecords();
    for (const TWrenDryRunRecord& record : report.dryRuns) listener.OnDryRun(report, record);
    if (!ok) report.failureReason = FailureReason(report, host);
    listener.OnStepEnd(report);
    result.steps.push_back(std::move(report));
    if (!ok) {
      result.success = false;
      result.stopped = stop->load();
      break;
    }
  }
  result.seconds = SecondsSince(buildStart);
  return result;
}

}  // namespace wren
