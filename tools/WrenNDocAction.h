// Building API documentation with NDoc's console program.
#pragma once

#include <cstdint>
#include <string>

#include "tools/WrenNDocOptions.h"
#include "tools/WrenToolActionSupport.h"

namespace wren {

/// A build step that runs NDocConsole.exe (from the NDoc options' location) on an NDoc project or
/// on a list of assemblies, with one documenter and its properties.
///
/// Command line, in the order NDoc insists on: -documenter=, then -project= or the bare
/// "assembly[,xmldoc]" arguments with -referencepath= and -namespacesummaries=, then one
/// -Name=value per documenter property, then -verbose. The step starts in the project's folder
/// (or the first assembly's), since NDoc resolves a relative OutputDirectory there.
/// Exit codes: 0 built; 1 nothing to document; 2 NDoc failed (its error text is on stdout).
class TWrenNDocAction : public TWrenOutsideToolAction<TWrenNDocAction, TWrenNDocOptions> {
 public:
  static std::string StaticClassName() { return "TWrenNDocAction"; }
  static std::string GetActionName() { return "NDoc"; }
  static constexpr const char* kProgram = "NDocConsole.exe";

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  std::string GetStartingDir(const std::string& fileName) override;
  bool InterpretResult(int32_t exitCode) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();

  // What to document (the main page).
  bool UseProjectFile = false;
  std::string ProjectFile;  // an .ndoc project
  TStrings Assemblies;      // "assembly[,xmldoc]" lines
  TStrings ReferencePaths;  // folders for resolving references
  std::string NamespaceSummaries;
  bool Verbose = false;
  // How (the documenter page).
  std::string Documenter = "MSDN";  // blanks become '_' (VS.NET 2003 -> VS.NET_2003)
  TStrings DocumenterProperties;    // Name=value lines
};

}  // namespace wren
