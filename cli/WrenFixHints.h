// Messages of the package that send the user to a dialog the command line does not have get the
// command that does the same job, printed on the line after them.
#pragma once

#include <ostream>
#include <string>

#include "runtime/WrenBuildEngine.h"

namespace wren {

/// The marrowby command that fixes what the message complains about; "" when it names no dialog.
std::string FixCommandFor(const std::string& message);

/// Prints "  fix: COMMAND" after each validation problem or step failure that has one. Add it
/// after the terminal reporter so that the hint follows the message it belongs to.
class TFixHintReporter : public IWrenBuildListener {
 public:
  explicit TFixHintReporter(std::ostream& out) : out_(out) {}
  void OnInvalid(const TWrenValidationProblem& problem) override;
  void OnLogLines(const TWrenStepReport&, const TWrenLogLines&) override {}  // hints need no log
  void OnStepEnd(const TWrenStepReport& step) override;

 private:
  void Hint(const std::string& message);
  std::ostream& out_;
};

}  // namespace wren
