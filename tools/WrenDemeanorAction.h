// Obfuscating an assembly with Demeanor.
#pragma once

#include <cstdint>
#include <string>

#include "tools/WrenDemeanorOptions.h"
#include "tools/WrenToolActionSupport.h"

namespace wren {

/// A build step that runs Demeanor.exe (from the Demeanor options' location) on one assembly.
/// Little of Demeanor's command line is published, so the step offers only what is known — the
/// input assembly, last on the line, and /out: for the output folder — and passes every other
/// switch as the user writes it (/name or /name:value), between the two.
/// The step starts in the input's folder. Exit codes are not published: any but 0 fails.
class TWrenDemeanorAction
    : public TWrenOutsideToolAction<TWrenDemeanorAction, TWrenDemeanorOptions> {
 public:
  static std::string StaticClassName() { return "TWrenDemeanorAction"; }
  static std::string GetActionName() { return "Demeanor"; }
  static constexpr const char* kProgram = "Demeanor.exe";
  std::string GetNotes() const override;

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  std::string GetStartingDir(const std::string& fileName) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();

  // The PE page.
  std::string InputAssembly;
  std::string OutputDirectory;
  // The Exclude page: exclusion files and every other switch, as written.
  TStrings ExtraSwitches;
};

}  // namespace wren
