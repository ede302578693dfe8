// Static analysis of compiled assemblies with FxCop's console program.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/WrenFxCopOptions.h"
#include "tools/WrenToolActionSupport.h"

namespace wren {

/// The flags FxCopCmd ORs into its exit code, with the names the step logs.
struct TFxCopExitFlag {
  uint32_t bit;
  const char* name;
};
const std::vector<TFxCopExitFlag>& FxCopExitFlags();
/// Indirect assembly references were missing but handled: alone, a warning.
inline constexpr uint32_t kFxCopAssemblyReferencesError = 0x200;

/// A build step that runs FxCopCmd.exe (from the FxCop options' location) on an FxCop project or
/// on target assemblies with rule libraries.
///
/// Command line, in this order: /project: or one /file: per target; /rule: per rule library;
/// /ruleid: per rule; /import:; /directory:; /platform:; /types: (comma list); /out:, /outxsl:,
/// /applyoutxsl; /console, /consolexsl:; /summary, /verbose, /quiet; /update; /forceoutput,
/// /searchgac, /ignoregeneratedcode, /dictionary:, /timeout:; then the extra switches as written.
/// The step starts in the project's folder (or the first target's).
///
/// Result: each flag set in the exit code is logged by name. Assembly reference errors alone are
/// a warning unless ReferenceErrorsFail. FxCop exits 0 for rule violations, so FailOnMessages
/// removes an old report before the run and fails the step when the new one lists any message.
class TWrenFxCopAction : public TWrenOutsideToolAction<TWrenFxCopAction, TWrenFxCopOptions> {
 public:
  static std::string StaticClassName() { return "TWrenFxCopAction"; }
  static std::string GetActionName() { return "FxCop"; }
  static constexpr const char* kProgram = "FxCopCmd.exe";

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  std::string GetStartingDir(const std::string& fileName) override;
  void BeforeExecute() override;
  bool InterpretResult(int32_t exitCode) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();

  // Targets.
  bool UseProjectFile = false;
  std::string ProjectFile;  // a .FxCop project
  TStrings Targets;         // assemblies or folders of them
  TStrings DependencyDirectories;
  std::string PlatformDirectory;
  bool SearchGac = false;
  TStrings Imports;  // earlier reports whose exclusions stay excluded
  // Rules.
  TStrings RuleLibraries;  // [+|-]path of a rule assembly or folder
  TStrings RuleIds;        // [+|-]Category#CheckId
  std::string Dictionary;
  // Options.
  std::string OutputFile;  // the XML report
  std::string OutputXsl;
  bool ApplyOutputXsl = false;
  bool ForceOutput = false;
  bool ToConsole = false;
  std::string ConsoleXsl;
  bool Summary = false;
  bool Verbose = false;
  bool Quiet = false;
  bool UpdateProject = false;
  bool IgnoreGeneratedCode = false;
  std::string Timeout;  // seconds per rule; empty: FxCop's own
  // Types and members.
  TStrings Types;  // analysed alone; a trailing '*' is a wildcard
  // Additional.
  TStrings ExtraSwitches;
  bool ReferenceErrorsFail = false;
  bool FailOnMessages = false;

 private:
  /// The report as FxCop sees it, resolved against the starting directory; set by the command line.
  std::string ReportPath() const;
  std::string report_, startDir_;
};

}  // namespace wren
