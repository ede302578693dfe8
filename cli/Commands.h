// The subcommands of the marrowby executable; main() parses arguments and wires these up.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace wren {

/// What every subcommand gets: the global options and where to print.
struct TCliContext {
  std::string registryFile;  // --registry, or "" for the default
  std::string optionsFile;   // --options, or "" for the default
  bool json = false;
  std::ostream* out = nullptr;
  std::ostream* err = nullptr;
};

/// Exit codes of the host.
enum TExitCode { kExitOk = 0, kExitFailed = 1, kExitUsage = 2 };

/// `marrowby frameworks [--json]`: the detected frameworks and the effective default SDK version.
/// Runs after the package is registered.
int CmdFrameworks(TCliContext& ctx);

/// `marrowby setup-mono [--dir DIR]`: builds the registry hive and folders from the local Mono.
int CmdSetupMono(TCliContext& ctx, const std::string& dir);

}  // namespace wren
