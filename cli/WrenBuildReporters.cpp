#include "WrenBuildReporters.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <nlohmann/json.hpp>

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {
namespace {

std::string Seconds(double s) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%.2f s", s);
  return buf;
}

std::string StepTitle(const TWrenStepReport& step) {
  std::string title = step.displayName;
  if (!step.description.empty()) title += " - " + step.description;
  return title;
}

const char* StreamName(TWrenLogStream stream) {
  switch (stream) {
    case TWrenLogStream::StdOut:
      return "stdout";
    case TWrenLogStream::StdErr:
      return "stderr";
    default:
      return "message";
  }
}

// Tool output may carry control characters that XML 1.0 cannot hold at all, not even escaped.
std::string XmlEscape(const std::string& text, char quote = '\0') {
  std::string clean = text;
  for (char& c : clean)
    if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r') c = '?';
  return EscapeXml(clean, quote);
}

}  // namespace

void TTerminalReporter::OnInvalid(const TWrenValidationProblem& p) {
  out_ << "invalid: step " << p.step << " (" << p.className << ")";
  if (!p.field.empty()) out_ << ", " << p.field;
  out_ << ": " << p.message << "\n";
}

void TTerminalReporter::OnStepStart(const TWrenStepReport& step, int total) {
  total_ = total;
  out_ << "[" << step.step << "/" << total << "] " << StepTitle(step);
  if (!step.enabled) out_ << "  (disabled, skipped)";
  out_ << "\n" << std::flush;
}

void TTerminalReporter::OnLog(const TWrenStepReport&, TWrenLogStream, const std::string& text) {
  out_ << "    " << text << "\n";
}

void TTerminalReporter::OnDryRun(const TWrenStepReport&, const TWrenDryRunRecord& r) {
  nlohmann::json argv = r.argv;
  out_ << "    executable:   " << r.executable << "\n"
       << "    argv:         " << argv.dump() << "\n"
       << "    command line: " << r.commandLine << "\n"
       << "    working dir:  " << (r.workingDir.empty() ? "(current)" : r.workingDir) << "\n";
  if (!r.responseFilePath.empty()) {
    out_ << "    response file " << r.responseFilePath << ":\n";
    std::string line;
    for (char c : r.responseFileText) {
      if (c == '\n') {
        out_ << "      " << line << "\n";
        line.clear();
      } else if (c != '\r') {
        line += c;
      }
    }
    if (!line.empty()) out_ << "      " << line << "\n";
  }
}

void TTerminalReporter::OnStepEnd(const TWrenStepReport& step) {
  if (!step.enabled) return;
  if (step.listedOnly) {
    out_ << "    (runs in process; not run in a dry run)\n";
    return;
  }
  out_ << "[" << step.step << "/" << total_ << "] ";
  if (step.success)
    out_ << "ok in " << Seconds(step.seconds) << "\n";
  else
    out_ << "FAILED in " << Seconds(step.seconds) << ": " << step.failureReason << "\n";
  out_ << std::flush;
}

void TTerminalReporter::Summary(const TWrenBuildResult& result, bool dryRun) {
  if (result.invalid) {
    out_ << "Build not started: the project has validation problems.\n";
    return;
  }
  const char* what = dryRun ? "Dry run" : "Build";
  if (result.success) {
    out_ << what << " succeeded: " << result.steps.size() << " step(s) in "
         << Seconds(result.seconds) << "\n";
  } else if (result.stopped) {
    out_ << what << " stopped by user request after " << Seconds(result.seconds) << "\n";
  } else {
    const TWrenStepReport& last = result.steps.back();
    out_ << what << " FAILED at step " << last.step << " (" << last.displayName
         << "): " << last.failureReason << "\n";
  }
}

void TJsonReporter::OnInvalid(const TWrenValidationProblem& p) {
  out_ << nlohmann::json{{"event", "invalid"}, {"step", p.step}, {"class", p.className},
                         {"field", p.field}, {"message", p.message}}
              .dump()
       << "\n";
}

void TJsonReporter::OnStepStart(const TWrenStepReport& s, int total) {
  out_ << nlohmann::json{{"event", "step"}, {"step", s.step}, {"total", total},
                         {"class", s.className}, {"name", s.displayName},
                         {"description", s.description}, {"enabled", s.enabled}}
              .dump()
       << "\n"
       << std::flush;
}

void TJsonReporter::OnLog(const TWrenStepReport& s, TWrenLogStream stream, const std::string& t) {
  out_ << nlohmann::json{{"event", "log"}, {"step", s.step}, {"stream", StreamName(stream)},
                         {"text", t}}
              .dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)
       << "\n";
}

void TJsonReporter::OnDryRun(const TWrenStepReport& s, const TWrenDryRunRecord& r) {
  nlohmann::json event{{"event", "dry-run"},     {"step", s.step},
                       {"class", s.className},   {"executable", r.executable},
                       {"commandLine", r.commandLine}, {"argv", r.argv},
                       {"workingDir", r.workingDir}, {"responseFile", nullptr}};
  if (!r.responseFilePath.empty())
    event["responseFile"] = {{"path", r.responseFilePath}, {"text", r.responseFileText}};
  out_ << event.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
}

void TJsonReporter::OnStepEnd(const TWrenStepReport& s) {
  nlohmann::json event{{"event", "result"}, {"step", s.step}, {"success", s.success},
                       {"exitCode", nullptr}, {"seconds", s.seconds}};
  if (s.exitCode) event["exitCode"] = *s.exitCode;
  if (!s.enabled) event["skipped"] = true;
  if (!s.success) event["reason"] = s.failureReason;
  out_ << event.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace) << "\n"
       << std::flush;
}

void TJsonReporter::Summary(const TWrenBuildResult& result) {
  out_ << nlohmann::json{{"event", "build"}, {"success", result.success},
                         {"invalid", result.invalid}, {"stopped", result.stopped},
                         {"seconds", result.seconds}}
              .dump()
       << "\n";
}

bool TLogFileWriter::Open(const std::string& path, std::string& error) {
  file_.open(path, std::ios::out | std::ios::trunc | std::ios::binary);
  if (!file_) {
    error = "cannot write the log file " + path;
    return false;
  }
  return true;
}

void TLogFileWriter::Line(const std::string& text) {
  const std::time_t now = std::time(nullptr);
  char stamp[32];
  std::strftime(stamp, sizeof stamp, "%Y-%m-%d %H:%M:%S", std::localtime(&now));
  file_ << stamp << "  " << text << "\n";
  file_.flush();
}

void TLogFileWriter::OnStepStart(const TWrenStepReport& s, int total) {
  Line("[" + std::to_string(s.step) + "/" + std::to_string(total) + "] " + StepTitle(s) +
       (s.enabled ? "" : " (disabled, skipped)"));
}

void TLogFileWriter::OnLog(const TWrenStepReport&, TWrenLogStream stream, const std::string& t) {
  Line(std::string(stream == TWrenLogStream::StdErr ? "  ! " : "    ") + t);
}

void TLogFileWriter::OnStepEnd(const TWrenStepReport& s) {
  if (!s.enabled) return;
  Line(s.success ? "  ok in " + Seconds(s.seconds)
                 : "  FAILED in " + Seconds(s.seconds) + ": " + s.failureReason);
}

bool WriteJUnitReport(const std::string& path, const std::string& projectName,
                      const TWrenBuildResult& result, std::string& error) {
  int failures = 0, skipped = 0;
  for (const TWrenStepReport& s : result.steps) {
    if (!s.enabled) ++skipped;
    else if (!s.success) ++failures;
  }
  std::string xml = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
  xml += "<testsuite name=\"" + XmlEscape(projectName, '"') + "\" tests=\"" +
         std::to_string(result.steps.size()) + "\" failures=\"" + std::to_string(failures) +
         "\" skipped=\"" + std::to_string(skipped) + "\" time=\"" +
         std::to_string(result.seconds) + "\">\n";
  for (const TWrenStepReport& s : result.steps) {
    xml += "  <testcase classname=\"" + XmlEscape(s.className, '"') + "\" name=\"" +
           XmlEscape(std::to_string(s.step) + ". " + StepTitle(s), '"') + "\" time=\"" +
           std::to_string(s.seconds) + "\">\n";
    if (!s.enabled) xml += "    <skipped message=\"disabled\"/>\n";
    if (s.enabled && !s.success)
      xml += "    <failure message=\"" + XmlEscape(s.failureReason, '"') + "\"/>\n";
    if (!s.log.empty()) {
      xml += "    <system-out>";
      for (const auto& [stream, text] : s.log) xml += XmlEscape(text) + "\n";
      xml += "</system-out>\n";
    }
    xml += "  </testcase>\n";
  }
  xml += "</testsuite>\n";
  return WriteFileAtomic(path, xml, error);
}

}  // namespace wren
