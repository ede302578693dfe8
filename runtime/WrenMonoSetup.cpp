#include "WrenMonoSetup.h"

#ifdef _WIN32

namespace wren {

// Windows has the real framework: there is nothing to build.
std::string DefaultMonoSetupDir() { return ""; }

bool SetupMono(const std::string&, const std::string&, TMonoSetupResult& result,
               std::string& error) {
  result = TMonoSetupResult{};
  error = "setup-mono builds a framework from Mono on POSIX systems; Windows has its own";
  return false;
}

}  // namespace wren

#else

#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <system_error>

#include "WrenFiles.h"
#include "WrenProcess.h"

namespace wren {

namespace fs = std::filesystem;

namespace {

const char kFrameWorkVersion[] = "v4.0.30319";
const char kSDKVersion[] = "v4.0";

/// SDK tools as the Windows SDK names them; Mono's 4.5 profile has them under the same names,
/// except the IL disassembler.
const char* const kSDKTools[] = {
    "al.exe",       "gacutil.exe",  "sn.exe",       "resgen.exe",  "lc.exe",
    "sgen.exe",     "xsd.exe",      "wsdl.exe",     "disco.exe",   "soapsuds.exe",
    "svcutil.exe",  "permview.exe", "secutil.exe",  "makecert.exe", "certmgr.exe",
    "cert2spc.exe", "signcode.exe", "chktrust.exe", "setreg.exe",  "ildasm.exe",
};

std::string MonoProgramOf(const std::string& sdkTool) {
  return sdkTool == "ildasm.exe" ? "ikdasm.exe" : sdkTool;
}

std::string Env(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

bool IsExecutableFile(const fs::path& path) {
  std::error_code ec;
  return fs::is_regular_file(path, ec) && access(path.c_str(), X_OK) == 0;
}

std::vector<fs::path> PathDirectories() {
  std::vector<fs::path> dirs;
  std::stringstream path(Env("PATH"));
  std::string entry;
  while (std::getline(path, entry, ':')) dirs.emplace_back(entry.empty() ? "." : entry);
  return dirs;
}

/// True when prefix holds Mono's 4.5 profile.
bool IsMonoPrefix(const fs::path& prefix) {
  return FileExists((prefix / "lib/mono/4.5/mscorlib.dll").string());
}

/// The install prefix of the `mono` on PATH: the parent of its bin directory, or of the real
/// program's when mono is linked in from elsewhere.
bool FindMonoPrefix(fs::path& prefix) {
  for (const fs::path& dir : PathDirectories()) {
    const fs::path mono = dir / "mono";
    if (!IsExecutableFile(mono)) continue;
    std::error_code ec;
    const fs::path linked = fs::absolute(dir, ec).parent_path();
    if (!ec && IsMonoPrefix(linked)) {
      prefix = linked;
      return true;
    }
    const fs::path real = fs::canonical(mono, ec);
    if (!ec && IsMonoPrefix(real.parent_path().parent_path())) {
      prefix = real.parent_path().parent_path();
      return true;
    }
  }
  return false;
}

/// The newest xbuild (the one Mono's own `xbuild` command runs), else the 4.5 profile's.
fs::path FindXBuild(const fs::path& prefix) {
  fs::path best;
  double bestVersion = -1;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(prefix / "lib/mono/xbuild", ec)) {
    const fs::path exe = entry.path() / "bin/xbuild.exe";
    if (!FileExists(exe.string())) continue;
    char* end = nullptr;
    const std::string name = entry.path().filename().string();
    const double version = std::strtod(name.c_str(), &end);
    if (end == name.c_str() || *end != '\0') continue;
    if (version > bestVersion) {
      bestVersion = version;
      best = exe;
    }
  }
  if (best.empty() && FileExists((prefix / "lib/mono/4.5/xbuild.exe").string()))
    best = prefix / "lib/mono/4.5/xbuild.exe";
  return best;
}

/// The NUnit console runner: the program behind an `nunit-console` command on PATH, else where
/// Mono packages install it.
std::string FindNUnitConsole(const fs::path& prefix) {
  for (const fs::path& dir : PathDirectories()) {
    const fs::path command = dir / "nunit-console";
    if (!IsExecutableFile(command)) continue;
    if (IsManagedExecutable(command.string())) return command.string();
    // A launcher script: the runner is the .exe it names.
    std::string text, error;
    if (!ReadFileBytes(command.string(), text, error)) continue;
    std::replace_if(text.begin(), text.end(), [](char c) { return c == '"' || c == '\''; }, ' ');
    std::stringstream words(text);
    std::string word;
    while (words >> word) {
      if (word.size() > 4 && word.compare(word.size() - 4, 4, ".exe") == 0 &&
          word.find("nunit") != std::string::npos && FileExists(word))
        return word;
    }
  }
  for (const char* candidate : {"lib/nunit/nunit-console.exe", "lib/mono/4.5/nunit-console.exe",
                                "lib/mono/4.0/nunit-console.exe"}) {
    const fs::path path = prefix / candidate;
    if (FileExists(path.string())) return path.string();
  }
  return "";
}

/// NUnit 2.6 on POSIX reads options only in their '-' form ('/' begins a path there), while the
/// NUnit action writes the Windows form. Like csc.exe standing for mcs, the runner the options name
/// is a launcher that hands the runner those switches as it expects them and passes the rest on.
bool WriteNUnitLauncher(const fs::path& path, const std::string& runner, std::string& error) {
  std::string quoted = "'";
  for (char c : runner) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  quoted += "'";
  const std::string script =
      "#!/bin/sh\n"
      "# Written by marrowby setup-mono: runs the NUnit console runner with the Windows-style\n"
      "# switches of the NUnit action in the form NUnit reads on this platform.\n"
      "for arg do\n"
      "  shift\n"
      "  case \"$arg\" in\n"
      "    /fixture=*|/xml=*|/transform=*|/config=*|/nologo|/xmlConsole) arg=\"-${arg#/}\" ;;\n"
      "  esac\n"
      "  set -- \"$@\" \"$arg\"\n"
      "done\n"
      "exec \"${MARROWBY_MONO:-mono}\" " + quoted + " \"$@\"\n";
  std::error_code ec;
  fs::create_directories(path.parent_path(), ec);
  if (!WriteFileAtomic(path.string(), script, error)) return false;
  fs::permissions(path, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                            fs::perms::others_read | fs::perms::others_exec, ec);
  if (ec) {
    error = "cannot make " + path.string() + " executable: " + ec.message();
    return false;
  }
  return true;
}

/// A string value of a .reg file: quoted, with backslashes and quotes escaped.
std::string RegString(const std::string& text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '\\' || c == '"') out += '\\';
    out += c;
  }
  return out + "\"";
}

bool Link(const fs::path& target, const fs::path& link, std::string& error) {
  std::error_code ec;
  fs::remove(link, ec);
  fs::create_symlink(target, link, ec);
  if (ec) error = "cannot link " + link.string() + " to " + target.string() + ": " + ec.message();
  return !ec;
}

/// Fills framework/v4.0.30319: every program and assembly of Mono's 4.5 profile under its own
/// name, plus the compilers and build engine under their Windows names. Mono follows the links to
/// the real files, so each program finds its dependent assemblies beside its real location.
bool BuildFrameWork(const fs::path& prefix, const fs::path& folder, TMonoSetupResult& result,
                    std::string& error) {
  const fs::path profile = prefix / "lib/mono/4.5";
  std::error_code ec;
  fs::create_directories(folder, ec);
  if (ec) {
    error = "cannot create " + folder.string() + ": " + ec.message();
    return false;
  }
  for (const auto& entry : fs::directory_iterator(profile, ec))
    if (!Link(entry.path(), folder / entry.path().filename(), error)) return false;
  if (ec) {
    error = "cannot list " + profile.string() + ": " + ec.message();
    return false;
  }

  if (!FileExists((profile / "mcs.exe").string()))
    result.notes.push_back("csc.exe: Mono's C# compiler (mcs.exe) is not installed");
  else if (!Link(profile / "mcs.exe", folder / "csc.exe", error))
    return false;

  const fs::path xbuild = FindXBuild(prefix);
  if (xbuild.empty())
    result.notes.push_back("msbuild.exe: xbuild is not installed (package mono-xbuild)");
  else if (!Link(xbuild, folder / "msbuild.exe", error))
    return false;

  if (FileExists((profile / "vbnc.exe").string())) {
    if (!Link(profile / "vbnc.exe", folder / "vbc.exe", error)) return false;
  } else {
    result.notes.push_back("vbc.exe: Mono's VB.NET compiler (vbnc) is not installed");
  }
  result.notes.push_back("Regasm.exe, Aspnet_regiis.exe, vjc.exe: Mono has no equivalent");
  return true;
}

/// Fills sdk/v4.0/Bin with the SDK tools Mono provides.
bool BuildSDK(const fs::path& prefix, const fs::path& bin, TMonoSetupResult& result,
              std::string& error) {
  std::error_code ec;
  fs::create_directories(bin, ec);
  if (ec) {
    error = "cannot create " + bin.string() + ": " + ec.message();
    return false;
  }
  for (const std::string name : kSDKTools) {
    const std::string program = MonoProgramOf(name);
    const fs::path source = prefix / "lib/mono/4.5" / program;
    if (!FileExists(source.string())) {
      result.notes.push_back(name + ": not installed with Mono (" + program + ")");
      continue;
    }
    if (!Link(source, bin / name, error)) return false;
  }
  result.notes.push_back("TLBImp.exe, TLBExp.exe: Mono has no equivalent");
  return true;
}

/// Puts the staged folder in place of dir/name; the previous one is removed afterwards.
bool Replace(const fs::path& staged, const fs::path& target, const fs::path& trash,
             std::string& error) {
  std::error_code ec;
  if (fs::exists(fs::symlink_status(target, ec))) {
    fs::rename(target, trash, ec);
    if (ec) {
      error = "cannot move " + target.string() + " aside: " + ec.message();
      return false;
    }
  }
  fs::rename(staged, target, ec);
  if (ec) {
    error = "cannot move " + staged.string() + " to " + target.string() + ": " + ec.message();
    return false;
  }
  return true;
}

}  // namespace

std::string DefaultMonoSetupDir() {
  std::string base = Env("XDG_DATA_HOME");
  if (base.empty()) {
    std::string home = Env("HOME");
    if (home.empty())
      if (const passwd* pw = getpwuid(getuid())) home = pw->pw_dir;
    base = home + "/.local/share";
  }
  return base + "/marrowby/mono";
}

bool SetupMono(const std::string& dir, const std::string& monoPrefix, TMonoSetupResult& result,
               std::string& error) {
  result = TMonoSetupResult{};
  fs::path prefix;
  if (!monoPrefix.empty()) {
    prefix = monoPrefix;
    if (!IsMonoPrefix(prefix)) {
      error = "Mono's 4.5 profile is not installed under " + monoPrefix;
      return false;
    }
  } else if (!FindMonoPrefix(prefix)) {
    error = "Mono is not installed: no mono with a 4.5 profile on PATH";
    return false;
  }

  std::error_code ec;
  const fs::path root = fs::absolute(dir, ec).lexically_normal();
  if (!ec) fs::create_directories(root, ec);
  if (ec) {
    error = "cannot create " + dir + ": " + ec.message();
    return false;
  }

  // Build everything beside the target first, so a failure leaves the previous setup intact.
  std::string stagingTemplate = (root / ".setup-XXXXXX").string();
  if (!mkdtemp(stagingTemplate.data())) {
    error = "cannot create a staging folder in " + root.string();
    return false;
  }
  const fs::path staging = stagingTemplate;
  const bool built =
      BuildFrameWork(prefix, staging / "framework" / kFrameWorkVersion, result, error) &&
      BuildSDK(prefix, staging / "sdk" / kSDKVersion / "Bin", result, error) &&
      Replace(staging / "framework", root / "framework", staging / "old-framework", error) &&
      Replace(staging / "sdk", root / "sdk", staging / "old-sdk", error);
  fs::remove_all(staging, ec);
  if (!built) return false;

  result.frameworkRoot = (root / "framework").string() + "/";
  result.sdkRoot = (root / "sdk" / kSDKVersion).string() + "/";
  result.hiveFile = (root / "registry.reg").string();
  const std::string hive = "Windows Registry Editor Version 5.00\r\n\r\n"
                           "[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\.NETFramework]\r\n"
                           "\"InstallRoot\"=" + RegString(result.frameworkRoot) + "\r\n"
                           "\"sdkInstallRootv4.0\"=" + RegString(result.sdkRoot) + "\r\n";
  if (!WriteFileAtomic(result.hiveFile, hive, error)) return false;

  const std::string runner = FindNUnitConsole(prefix);
  if (runner.empty()) {
    result.notes.push_back("NUnit console runner: not installed (package nunit-console)");
    return true;
  }
  const fs::path launcher = root / "nunit" / "nunit-console";
  if (!WriteNUnitLauncher(launcher, runner, error)) return false;
  result.nunitConsole = launcher.string();
  result.notes.push_back("nunit-console: a launcher for " + runner +
                         " that turns /switches into -switches");
  return true;
}

}  // namespace wren

#endif
