// A temporary machine for running the marrowby executable end to end, never touching the real
// HOME: its own registry hive, options file and project folder.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"

namespace wren {

/// A temporary machine: a registry hive naming a framework folder and an SDK whose sn.exe is the
/// argv recorder, and an empty options file.
class CliMachine {
 public:
  CliMachine() {
    test::WriteFile(dir / "fw/v4.0.30319/.keep", "");
    sn = dir / "sdk/Bin/sn.exe";
    test::InstallRecorder(sn);
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
          std::string* err = nullptr) const {
    std::string o, e;
    const int code = test::RunProgram(Command(args), &o, "", &e);
    if (out) *out = o;
    if (err) *err = e;
    return code;
  }

  void WriteProject(const std::string& name, const std::string& actions) const {
    test::WriteFile(dir / name,
                    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MarrowbyProject version=\"1\">\n"
                    "  <Actions>\n" + actions + "  </Actions>\n</MarrowbyProject>\n");
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
