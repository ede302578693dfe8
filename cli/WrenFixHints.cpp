#include "WrenFixHints.h"

namespace wren {

namespace {

/// A tool location kept in the options, and the words of the message that point at it.
struct TOptionsHint {
  const char* messagePart;
  const char* command;
};

constexpr TOptionsHint kOptionsHints[] = {
    {"nunit-console.exe", "marrowby options set NUnit NUnitLocation PATH"},
    {"nant.exe", "marrowby options set NAnt NAntLocation PATH"},
};

}  // namespace

std::string FixCommandFor(const std::string& message) {
  if (message.find("Tools->Options") == std::string::npos) return "";
  for (const TOptionsHint& hint : kOptionsHints)
    if (message.find(hint.messagePart) != std::string::npos) return hint.command;
  return "marrowby options   (shows every option; set one with: marrowby options set KEY NAME VALUE)";
}

void TFixHintReporter::Hint(const std::string& message) {
  const std::string command = FixCommandFor(message);
  if (!command.empty()) out_ << "  fix: " << command << "\n";
}

void TFixHintReporter::OnInvalid(const TWrenValidationProblem& problem) { Hint(problem.message); }

void TFixHintReporter::OnStepEnd(const TWrenStepReport& step) {
  if (!step.success) Hint(step.failureReason);
}

}  // namespace wren
