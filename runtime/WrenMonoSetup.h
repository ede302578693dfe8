// Builds a registry hive and a framework folder from the local Mono install, so that a POSIX
// machine with Mono gets a working .NET Framework v4.0.30319 and SDK v4.0 without hand work.
#pragma once

#include <string>
#include <vector>

namespace wren {

struct TMonoSetupResult {
  std::string hiveFile;        // the .reg file written
  std::string frameworkRoot;   // InstallRoot: holds v4.0.30319/ with links to Mono's tools
  std::string sdkRoot;         // sdkInstallRootv4.0: holds Bin/ with links to the SDK tools
  std::string nunitConsole;    // path of the NUnit console runner, "" when not installed
  std::vector<std::string> notes;  // one line per thing found missing
};

/// Where setup-mono writes by default: $XDG_DATA_HOME/marrowby/mono (or ~/.local/share/...).
std::string DefaultMonoSetupDir();

/// Creates (or refreshes) dir/framework, dir/sdk and dir/registry.reg from the Mono install found
/// on this machine (monoPrefix: "" = find it from `mono` on PATH). False with error when Mono is
/// not installed.
bool SetupMono(const std::string& dir, const std::string& monoPrefix, TMonoSetupResult& result,
               std::string& error);

}  // namespace wren
