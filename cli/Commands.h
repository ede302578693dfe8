// The subcommands of the marrowby executable; main() parses arguments and wires these up.
#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace wren {

constexpr const char* kMarrowbyVersion = "1.0.0";

/// What every subcommand gets: the global options and where to print.
struct TCliContext {
  std::string registryFile;  // --registry, or "" for the default
  std::string optionsFile;   // --options, or "" for the default
  bool json = false;
  std::ostream* out = nullptr;
  std::ostream* err = nullptr;
};

/// Exit codes of the host. A build stopped by a signal exits 128 + the signal (130, 143).
enum TExitCode { kExitOk = 0, kExitFailed = 1, kExitUsage = 2 };

/// `marrowby frameworks [--json]`: the detected frameworks and the effective default SDK version.
/// Runs after the package is registered.
int CmdFrameworks(TCliContext& ctx);

/// `marrowby setup-mono [--dir DIR]`: builds the registry hive and folders from the local Mono.
int CmdSetupMono(TCliContext& ctx, const std::string& dir);

/// `marrowby new FILE`: an empty build project; refuses to overwrite.
int CmdNew(TCliContext& ctx, const std::string& file);
/// `marrowby add FILE CLASS [--description TEXT] [PROP=VALUE ...]`: appends a step.
int CmdAdd(TCliContext& ctx, const std::string& file, const std::string& className,
           const std::string* description, const std::vector<std::string>& assignments);
/// `marrowby set FILE STEP PROP VALUE`: changes one property (or `description`, `enabled`).
int CmdSet(TCliContext& ctx, const std::string& file, const std::string& step,
           const std::string& property, const std::string& value);
/// `marrowby remove FILE STEP`.
int CmdRemove(TCliContext& ctx, const std::string& file, const std::string& step);
/// `marrowby move FILE STEP POSITION`: the step ends up at 1-based POSITION.
int CmdMove(TCliContext& ctx, const std::string& file, const std::string& step,
            const std::string& position);

/// `marrowby edit PROJECT [--port N] [--no-browser]`: serves the property editor on 127.0.0.1
/// until SIGINT or SIGTERM. Runs after the package is registered with its pages.
int CmdEditor(TCliContext& ctx, const std::string& projectFile, int port, bool noBrowser);
/// Loads the editor module (from executableDir, else the build's module folder) and runs
/// CmdEditor in it.
int RunEditorModule(TCliContext& ctx, const std::string& executableDir,
                    const std::string& projectFile, int port, bool noBrowser);
/// Where this executable carries the C++ run-time in its core and the command needs the system's
/// shared one (the editor, or a package module linked to libstdc++.so), replaces this process with
/// the twin built on the shared run-time, given the same arguments. Returns the exit code when
/// that fails, and -1 when the command runs here.
int HandOverToSharedCxx(TCliContext& ctx, const std::string& executableDir, char** argv,
                        bool editor, const std::string& packagePath);

/// `marrowby completion bash|zsh`: prints the shell's completion script.
int CmdCompletion(TCliContext& ctx, const std::string& shell);

// Texts shared by the subcommands.

/// "a, b, c".
std::string JoinNames(const std::vector<std::string>& names);
/// "; did you mean X?" for a non-empty suggestion, else "".
std::string WithSuggestion(const std::string& didYouMean);
/// "no action class named 'X' is registered; did you mean ...? (see marrowby actions)".
std::string UnknownClassMessage(const std::string& className);

}  // namespace wren
