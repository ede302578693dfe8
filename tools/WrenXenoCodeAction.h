// Protecting and packaging an application with Xenocode's command-line program.
#pragma once

#include <cstdint>
#include <string>

#include "tools/WrenToolActionSupport.h"
#include "tools/WrenXenoCodeOptions.h"

namespace wren {

/// A build step that runs Xenocode's command-line program (from the XenoCode options' location)
/// on a project file saved by Xenocode's user interface. Nothing of that command line is
/// published, so the project file is the one property and every switch is passed as the user
/// writes it, before the project file. The step starts in the project's folder; any exit code
/// but 0 fails it.
class TWrenXenoCodeAction
    : public TWrenOutsideToolAction<TWrenXenoCodeAction, TWrenXenoCodeOptions> {
 public:
  static std::string StaticClassName() { return "TWrenXenoCodeAction"; }
  static std::string GetActionName() { return "XenoCode"; }
  static constexpr const char* kProgram = "Xenocode's program";
  std::string GetNotes() const override;

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  std::string GetStartingDir(const std::string& fileName) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();

  std::string ProjectFile;
  TStrings ExtraSwitches;
};

}  // namespace wren
