// The C++ run-time in the processes marrowby makes: whichever library carries it, a process has
// exactly one copy (two would keep two sets of exception and stream state), and exceptions cross
// between the package and the host.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>

#include "CliMachine.h"
#include "TestSupport.h"

namespace wren {
namespace {

/// A marrowby started with its stdout on a pipe, killed at the end of the test.
class StartedHost {
 public:
  explicit StartedHost(const std::vector<std::string>& command) {
    std::vector<char*> argv;
    for (const std::string& a : command) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0) pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    ::close(fds[1]);
    out_ = fds[0];
  }
  ~StartedHost() {
    if (pid > 0) {
      ::kill(pid, SIGKILL);
      ::waitpid(pid, nullptr, 0);
    }
    if (out_ >= 0) ::close(out_);
  }

  /// The first line the host prints; empty when none comes within a minute.
  std::string FirstLine() {
    std::string line;
    pollfd p{out_, POLLIN, 0};
    char c = 0;
    while (::poll(&p, 1, 60000) == 1 && ::read(out_, &c, 1) == 1 && c != '\n') line += c;
    return line;
  }

  /// The files the process has mapped: the executable and every library loaded so far.
  std::set<std::string> MappedFiles() const {
    std::set<std::string> files;
    std::ifstream maps("/proc/" + std::to_string(pid) + "/maps");
    for (std::string line; std::getline(maps, line);) {
      const size_t slash = line.find('/');
      if (slash != std::string::npos && line.find(" (deleted)") == std::string::npos)
        files.insert(line.substr(slash));
    }
    return files;
  }

  /// Waits until a mapped file's name holds each of the parts; false after a minute.
  bool WaitForMapped(const std::vector<std::string>& parts) const {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (std::chrono::steady_clock::now() < end) {
      size_t found = 0;
      const std::set<std::string> files = MappedFiles();
      for (const std::string& part : parts)
        for (const std::string& file : files)
          if (file.find(part) != std::string::npos) {
            ++found;
            break;
          }
      if (found == parts.size()) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
  }

  pid_t pid = -1;

 private:
  int out_ = -1;
};

/// The symbols a file defines, from its full symbol table and from its dynamic one (system
/// libraries keep only the latter): a private copy and an exported one both count.
std::set<std::string> DefinedSymbols(const std::string& file) {
  std::set<std::string> names;
  for (const char* table : {"--defined-only", "--dynamic"}) {
    std::string out, err;
    const std::vector<std::string> command =
        table == std::string("--dynamic")
            ? std::vector<std::string>{"nm", "--dynamic", "--defined-only", file}
            : std::vector<std::string>{"nm", "--defined-only", file};
    test::RunProgram(command, &out, "", &err);
    std::istringstream lines(out);
    for (std::string line; std::getline(lines, line);) {
      const size_t blank = line.rfind(' ');
      if (blank == std::string::npos) continue;
      std::string name = line.substr(blank + 1);
      name.erase(std::min(name.find('@'), name.size()));  // __cxa_throw@@CXXABI_1.3
      names.insert(name);
    }
  }
  return names;
}

/// For each symbol of the C++ run-time's own state, the mapped files that define it.
std::map<std::string, std::vector<std::string>> RunTimeDefiners(const StartedHost& host) {
  // Throwing, catching, the per-thread exception globals and the standard streams' set-up.
  const char* const kRunTimeSymbols[] = {"__cxa_throw", "__cxa_begin_catch", "__cxa_get_globals",
                                         "_ZNSt8ios_base4InitC1Ev"};
  std::map<std::string, std::vector<std::string>> definers;
  for (const char* symbol : kRunTimeSymbols) definers[symbol];
  for (const std::string& file : host.MappedFiles()) {
    if (file.find(".so") == std::string::npos && file.find("marrowby") == std::string::npos)
      continue;
    // A sanitizer's run-time defines __cxa_throw too, to look at the throw before passing it on.
    if (file.find("libasan") != std::string::npos || file.find("clang_rt") != std::string::npos)
      continue;
    const std::set<std::string> defined = DefinedSymbols(file);
    for (auto& [symbol, files] : definers)
      if (defined.count(symbol)) files.push_back(file);
  }
  return definers;
}

std::string Describe(const std::map<std::string, std::vector<std::string>>& definers) {
  std::string text;
  for (const auto& [symbol, files] : definers) {
    text += symbol + ":";
    for (const std::string& f : files) text += " " + f;
    text += "\n";
  }
  return text;
}

TEST(CxxRunTime, EveryProcessHasOneCopy) {
  // nm reads the symbol tables; without it the test cannot tell, and says so.
  std::string version;
  ASSERT_EQ(test::RunProgram({"nm", "--version"}, &version), 0) << "nm (binutils) is needed";

  CliMachine m;
  test::WriteFile(m.dir / "AssemblyInfo.cs", "[assembly: AssemblyVersion(\"1.0\")]\n");
  // A script that never returns keeps the build, with the package and Lua loaded, running.
  m.WriteProject("spin.mbproj",
                 "    <Action class=\"TWrenAssemblyInfoUpdaterAction\">\n"
                 "      <Property name=\"Selection\"><Item>" + m.dir / "AssemblyInfo.cs" +
                     "</Item></Property>\n"
                 "      <Property name=\"BackupFiles\">false</Property>\n"
                 "      <Script name=\"OnProcessFile\" language=\"lua\">while true do end</Script>\n"
                 "    </Action>\n");
  m.WriteProject("edit.mbproj", "");

  struct Case {
    const char* name;
    std::vector<std::string> args;
    std::vector<std::string> loaded;  // what must be mapped before the process is looked at
  } cases[] = {
      {"a build running a script", {"run", m.dir / "spin.mbproj"},
       {"Wren30DotNetFrameWork", "liblua"}},
      {"the editor", {"edit", m.dir / "edit.mbproj", "--no-browser"},
       {"Wren30DotNetFrameWork", "MarrowbyEditor", "httplib"}},
      // Held in its registration (MARROWBY_TEST_HOLD) with the shared libstdc++ it needs loaded.
      {"a package built against libstdc++.so", {"--module", SHARED_CXX_PACKAGE, "actions"},
       {"shared-cxx-package", "libstdc++.so"}},
  };
  for (const Case& c : cases) {
    const bool held = c.args[0] == "--module";
    if (held) ::setenv("MARROWBY_TEST_HOLD", "1", 1);
    StartedHost host(m.Command(c.args));
    ::unsetenv("MARROWBY_TEST_HOLD");
    ASSERT_GT(host.pid, 0) << c.name;
    if (c.args[0] == "edit") {
      EXPECT_NE(host.FirstLine().find("http://"), std::string::npos);
    }
    if (held) {
      EXPECT_EQ(host.FirstLine(), "shared run-time package registered");
    }
    ASSERT_TRUE(host.WaitForMapped(c.loaded)) << c.name;
    const auto definers = RunTimeDefiners(host);
    for (const auto& [symbol, files] : definers) {
      EXPECT_EQ(files.size(), 1u) << c.name << ": " << symbol << "\n" << Describe(definers);
    }
  }
}

TEST(CxxRunTime, ExceptionFromThePackageIsCaughtAndReportedByTheHost) {
  // A type library whose only version is not hexadecimal: the package's conversion throws, out of
  // the step into the host, which fails the step with the reason and ends the build normally.
  CliMachine m;
  test::WriteFile(m.dir / "registry.reg",
                  "Windows Registry Editor Version 5.00\r\n\r\n"
                  "[HKEY_CLASSES_ROOT\\Wren.Sheet\\Clsid]\r\n@=\"{C1}\"\r\n\r\n"
                  "[HKEY_CLASSES_ROOT\\CLSID\\{C1}\\TypeLib]\r\n@=\"{T1}\"\r\n\r\n"
                  "[HKEY_CLASSES_ROOT\\TypeLib\\{T1}\\1.zz]\r\n\r\n");
  test::WriteFile(m.dir / "Sheet.csproj", "<VisualStudioProject>\r\n</VisualStudioProject>\r\n");
  m.WriteProject("comref.mbproj",
                 "    <Action class=\"TWrenDotNetComReferenceFixAction\">\n"
                 "      <Property name=\"ProgID\">Wren.Sheet</Property>\n"
                 "      <Property name=\"ReferenceName\">WrenSheet</Property>\n"
                 "      <Property name=\"ProjectFile\">" + m.dir / "Sheet.csproj" +
                     "</Property>\n"
                 "    </Action>\n");
  std::string out, err;
  EXPECT_EQ(m.Run({"run", m.dir / "comref.mbproj"}, &out, &err), 1) << out << err;
  EXPECT_NE(out.find("Found current version : 1.zz"), std::string::npos) << out;
  EXPECT_NE(out.find("Internal error: '$zz' is not a valid integer value"), std::string::npos)
      << out;
  EXPECT_EQ(test::ReadFile(m.dir / "Sheet.csproj"),
            "<VisualStudioProject>\r\n</VisualStudioProject>\r\n");
}

}  // namespace
}  // namespace wren
