// A temporary machine for running the marrowby executable end to end, never touching the real
// HOME: its own registry hive, options file and project folder.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"

extern char** environ;

namespace wren {

/// A temporary machine: a registry hive naming a framework folder and an SDK whose sn.exe is the
/// argv recorder (or the shell script given), and an empty options file.
class CliMachine {
 public:
  explicit CliMachine(const std::string& snScript = "") {
    test::WriteFile(dir / "fw/v4.0.30319/.keep", "");
    sn = dir / "sdk/Bin/sn.exe";
    if (snScript.empty()) {
      test::InstallRecorder(sn);
    } else {
      test::WriteFile(sn, snScript);
      ::chmod(sn.c_str(), 0755);
    }
    test::WriteFile(dir / "registry.reg",
                    "Windows Registry Editor Version 5.00\r\n\r\n"
                    "[HKEY_LOCAL_MACHINE\\Software\\Microsoft\\.NETFramework]\r\n"
                    "\"InstallRoot\"=\"" + dir.path() + "fw/\"\r\n"
                    "\"sdkInstallRootv4.0\"=\"" + dir.path() + "sdk/\"\r\n");
  }

  std::vector<std::string> Command(std::vector<std::string> args) const {
    args.insert(args.begin(), {MARROWBY_EXE, "--registry", dir / "registry.reg", "--options",
                               dir / "options.xml"});
    return args;
  }

  int Run(const std::vector<std::string>& args, std::string* out = nullptr,
          std::string* err = nullptr, const std::string& cwd = "") const {
    std::string o, e;
    const int code = test::RunProgram(Command(args), &o, cwd, &e);
    if (out) *out = o;
    if (err) *err = e;
    return code;
  }

  void WriteProject(const std::string& name, const std::string& actions,
                    const std::string& variables = "") const {
    test::WriteFile(dir / name,
                    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MarrowbyProject version=\"1\">\n" +
                        variables + "  <Actions>\n" + actions + "  </Actions>\n</MarrowbyProject>\n");
  }

  /// Starts marrowby without waiting for it, its output thrown away.
  pid_t Start(const std::vector<std::string>& args) const {
    const std::vector<std::string> command = Command(args);
    std::vector<char*> argv;
    for (const std::string& a : command) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    pid_t pid = -1;
    const int rc = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return rc == 0 ? pid : -1;
  }

  test::TempDir dir;
  std::string sn;
};

inline std::string SnStep(const std::string& options, const std::string& extra = "") {
  return "    <Action class=\"TSNGenericSN\"" + extra + ">\n"
         "      <Property name=\"Options\">" + options + "</Property>\n"
         "      <Property name=\"StartDir\">%ProjectDir%</Property>\n"
         "    </Action>\n";
}

inline std::vector<nlohmann::json> JsonLines(const std::string& text) {
  std::vector<nlohmann::json> events;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line))
    if (!line.empty()) events.push_back(nlohmann::json::parse(line));
  return events;
}

}  // namespace wren
