// Obfuscating assemblies with the console Dotfuscator.
#pragma once

#include <cstdint>
#include <string>

#include "tools/WrenDotfuscatorOptions.h"
#include "tools/WrenToolActionSupport.h"

namespace wren {

/// Renaming switch: the configuration's setting, or on, or off.
enum class TDotfuscatorSwitch { dsDefault, dsOn, dsOff };
/// What renaming keeps: the configuration's setting, namespaces, the type hierarchy, or nothing.
enum class TDotfuscatorKeep { dkDefault, dkNamespace, dkHierarchy, dkNone };

/// A build step that runs the console Dotfuscator (from the Dotfuscator options' location) on a
/// configuration file, optionally overriding its inputs, output and renaming from the command line.
///
/// Command line, in this order: /q or /v; /i; /p=name=value,...; /in:a,b; /out:; /makeconfig:;
/// /disable; /rename:; /keep:; /mapout:; /clobbermap:on; the extra switches as written; the
/// configuration file last. The step starts in the configuration's folder (or the first input's),
/// where Dotfuscator puts its default output and map. Any exit code but 0 fails the step.
/// A location naming the user-interface program is warned about: it would "succeed" without
/// protecting anything.
class TWrenDotfuscatorAction
    : public TWrenOutsideToolAction<TWrenDotfuscatorAction, TWrenDotfuscatorOptions> {
 public:
  static std::string StaticClassName() { return "TWrenDotfuscatorAction"; }
  static std::string GetActionName() { return "Dotfuscator"; }
  static constexpr const char* kProgram = "Dotfuscator";

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  std::string GetStartingDir(const std::string& fileName) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();

  std::string ConfigFile;
  bool Quiet = false;
  bool Verbose = false;
  bool Investigate = false;  // map file only, no output assemblies
  TStrings Properties;       // name=value lines for ${name} in the configuration
  TStrings InputAssemblies;  // added to the configuration's inputs
  std::string OutputDirectory;
  std::string MakeConfig;  // saves the effective configuration
  bool DisableAll = false;
  TDotfuscatorSwitch Rename = TDotfuscatorSwitch::dsDefault;
  TDotfuscatorKeep Keep = TDotfuscatorKeep::dkDefault;
  std::string MapFile;
  bool OverwriteMap = false;
  TStrings ExtraSwitches;
};

/// True when the program at path is Dotfuscator's user interface rather than its console program:
/// dotfuscatorUI.exe, or a dotfuscator.exe with dotfuscatorCLI.exe beside it (version 5).
bool IsDotfuscatorUserInterface(const std::string& path);

}  // namespace wren
