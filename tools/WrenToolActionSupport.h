// Steps shared by the actions that run an outside tool from the location in its options.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "WrenActionAPI.h"
#include "WrenCommandLine.h"
#include "WrenExecuteAction.h"
#include "tools/WrenToolOptions.h"

namespace wren {

/// Reports a tool location that is not set ("<program> Options") or names no file ("Options"),
/// in the words the NUnit and NAnt actions use; false when it reported.
bool ValidateToolLocation(IWrenActionValidationError& errors, const std::string& location,
                          const std::string& program, const std::string& optionsField);

/// Adds each non-blank line, expanded under "Extra Switch", as it stands: no quoting, so a line
/// may carry several words. False when an expansion fails.
bool AddExtraSwitches(TCustomWrenAction& action, ICommandLineBuilder& builder,
                      const TStrings& lines);

/// Adds switchText + value for each line of the list, expanded under caption; blank lines are
/// skipped. False when an expansion fails.
bool AddEachLine(TCustomWrenAction& action, ICommandLineBuilder& builder, const TStrings& lines,
                 const std::string& caption, const std::string& switchText);

/// The directory of the first non-blank path (expanded); otherwise that of fallback.
std::string FirstPathDir(TCustomWrenAction& action, const TStrings& paths,
                         const std::string& fallback);

/// The ground of an action A that runs the program at the location in its tool's options O and
/// starts in a folder of its own choosing. A gives its names (StaticClassName, GetActionName), its
/// published properties (ClassProperties) and kProgram, the program as validation names it.
template <class A, class O>
class TWrenOutsideToolAction : public TWrenExecuteAbstractAction {
 public:
  std::string ClassName() const override { return A::StaticClassName(); }
  std::string DisplayName() const override { return A::GetActionName(); }
  std::string GetQuickHelpFilename() const override {
    return "Plugins\\" + A::GetActionName() + ".html";
  }
  const TPropertyTable& GetPublishedProperties() const override { return A::ClassProperties(); }

  std::string GetExecutable() override { return ToolLocation(); }
  /// Few of these tools publish their exit codes: any but 0 fails the step, and is logged.
  bool InterpretResult(int32_t exitCode) override {
    if (exitCode == 0) return true;
    SendMessage(A::GetActionName() + " failed with exit code " + std::to_string(exitCode));
    return false;
  }

 protected:
  // These tools resolve relative paths, and put default outputs, in their working directory.
  TWrenOutsideToolAction() { UseStartingDir = true; }

  /// The program's path from the tool's options; empty when they are not registered.
  static std::string ToolLocation() {
    const std::shared_ptr<IWrenToolOptions> options =
        FindToolOptions(O::kOptionsName, O::kOptionsCategory);
    return options ? options->GetLocation() : "";
  }
  /// ValidateToolLocation for this tool, reported against "<options name> Options".
  static bool ValidateLocation(IWrenActionValidationError& errors) {
    return ValidateToolLocation(errors, ToolLocation(), A::kProgram,
                                std::string(O::kOptionsName) + " Options");
  }
};

}  // namespace wren
