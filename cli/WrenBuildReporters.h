// Writers of build events: the terminal, JSON lines, the --log file and the JUnit report.
#pragma once

#include <fstream>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "runtime/WrenBuildEngine.h"

namespace wren {

/// Human-readable progress: step headers [n/N], indented log lines, durations, one-line reasons.
class TTerminalReporter : public IWrenBuildListener {
 public:
  explicit TTerminalReporter(std::ostream& out) : out_(out) {}
  void OnInvalid(const TWrenValidationProblem& problem) override;
  void OnStepStart(const TWrenStepReport& step, int total) override;
  void OnLog(const TWrenStepReport& step, TWrenLogStream stream, const std::string& text) override;
  void OnDryRun(const TWrenStepReport& step, const TWrenDryRunRecord& record) override;
  void OnStepEnd(const TWrenStepReport& step) override;
  void Summary(const TWrenBuildResult& result, bool dryRun);

 private:
  std::ostream& out_;
  int total_ = 0;
};

/// One JSON object per build event on a line.
class TJsonReporter : public IWrenBuildListener {
 public:
  explicit TJsonReporter(std::ostream& out) : out_(out) {}
  void OnInvalid(const TWrenValidationProblem& problem) override;
  void OnStepStart(const TWrenStepReport& step, int total) override;
  void OnLog(const TWrenStepReport& step, TWrenLogStream stream, const std::string& text) override;
  void OnDryRun(const TWrenStepReport& step, const TWrenDryRunRecord& record) override;
  void OnStepEnd(const TWrenStepReport& step) override;
  void Summary(const TWrenBuildResult& result);

 private:
  std::ostream& out_;
};

/// The build log file: every line with a time stamp and its step.
class TLogFileWriter : public IWrenBuildListener {
 public:
  bool Open(const std::string& path, std::string& error);
  void OnStepStart(const TWrenStepReport& step, int total) override;
  void OnLog(const TWrenStepReport& step, TWrenLogStream stream, const std::string& text) override;
  void OnStepEnd(const TWrenStepReport& step) override;

 private:
  void Line(const std::string& text);
  std::ofstream file_;
};

/// Fans events out to several listeners.
class TBuildListeners : public IWrenBuildListener {
 public:
  void Add(IWrenBuildListener* listener) { listeners_.push_back(listener); }
  void OnInvalid(const TWrenValidationProblem& p) override {
    for (auto* l : listeners_) l->OnInvalid(p);
  }
  void OnStepStart(const TWrenStepReport& s, int total) override {
    for (auto* l : listeners_) l->OnStepStart(s, total);
  }
  void OnLog(const TWrenStepReport& s, TWrenLogStream stream, const std::string& t) override {
    for (auto* l : listeners_) l->OnLog(s, stream, t);
  }
  void OnDryRun(const TWrenStepReport& s, const TWrenDryRunRecord& r) override {
    for (auto* l : listeners_) l->OnDryRun(s, r);
  }
  void OnStepEnd(const TWrenStepReport& s) override {
    for (auto* l : listeners_) l->OnStepEnd(s);
  }

 private:
  std::vector<IWrenBuildListener*> listeners_;
};

/// Writes the steps of a build as a JUnit XML report (one test case per step).
bool WriteJUnitReport(const std::string& path, const std::string& projectName,
                      const TWrenBuildResult& result, std::string& error);

}  // namespace wren
