// Project scripts through the marrowby executable: what a script may reach, how much memory it may
// take, and that a stop request ends a script that never returns.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <sstream>
#include <thread>

#include "CliMachine.h"
#include "TestSupport.h"

extern char** environ;

namespace wren {
namespace {

/// A temporary folder with an empty registry hive, an options file, one C# AssemblyInfo source and
/// a project whose AssemblyInfo updater step runs the given script.
class ScriptProject {
 public:
  ScriptProject(const std::string& event, const std::string& script) {
    test::WriteFile(dir / "registry.reg", "Windows Registry Editor Version 5.00\r\n\r\n");
    test::WriteFile(source, kSource);
    test::WriteFile(project,
                    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MarrowbyProject version=\"1\">\n"
                    "  <Actions>\n"
                    "    <Action class=\"TWrenAssemblyInfoUpdaterAction\">\n"
                    "      <Property name=\"Selection\"><Item>" + source + "</Item></Property>\n"
                    "      <Property name=\"Attributes\"><Item>AssemblyVersion=\"2.0\"</Item>"
                    "</Property>\n"
                    "      <Property name=\"BackupFiles\">false</Property>\n"
                    "      <Script name=\"" + event + "\" language=\"lua\">" + script +
                    "</Script>\n"
                    "    </Action>\n"
                    "  </Actions>\n</MarrowbyProject>\n");
  }

  std::vector<std::string> Command() const {
    return {MARROWBY_EXE, "--registry", dir / "registry.reg", "--options", dir / "options.xml",
            "run", project, "--json"};
  }

  static constexpr char kSource[] = "[assembly: AssemblyVersion(\"1.0\")]\n";
  test::TempDir dir;
  std::string source = dir / "AssemblyInfo.cs";
  std::string project = dir / "scripts.mbproj";
};

/// The texts of the build's log events, one per line.
std::string LogText(const std::vector<nlohmann::json>& events) {
  std::string text;
  for (const nlohmann::json& e : events)
    if (e["event"] == "log") text += e["text"].get<std::string>() + "\n";
  return text;
}

const nlohmann::json* EventOf(const std::vector<nlohmann::json>& events, const char* kind) {
  for (const nlohmann::json& e : events)
    if (e["event"] == kind) return &e;
  return nullptr;
}

TEST(Scripts, LibraryOutsideTheSandboxFailsTheStepAndNamesTheScriptAndLine) {
  const std::pair<const char*, const char*> cases[] = {  // script, the error it gives
      {"local path = FileName .. '.so'\n"
       "-- an ELF object would be written here and loaded as native code\n"
       "local f = io.open(path, 'wb') f:write('x') f:close()\n"
       "package.loadlib(path, 'init')",
       "script OnProcessFile, line 3: 'io' is not available to project scripts"},
      {"package.loadlib(FileName .. '.so', '*')",
       "script OnProcessFile, line 1: 'package' is not available to project scripts"},
      {"os.execute('touch ' .. FileName .. '.so')",
       "script OnProcessFile, line 1: 'os.execute' is not available to project scripts"},
      {"local x = 1\nlocal m = require('socket')",
       "script OnProcessFile, line 2: 'require' is not available to project scripts"},
      {"load(string.dump(function() end))()",
       "script OnProcessFile, line 1: 'string.dump' is not available to project scripts"},
  };
  for (const auto& [script, expected] : cases) {
    ScriptProject p("OnProcessFile", script);
    std::string out;
    EXPECT_EQ(test::RunProgram(p.Command(), &out), 1) << script << "\n" << out;
    const std::vector<nlohmann::json> events = JsonLines(out);
    EXPECT_NE(LogText(events).find(expected), std::string::npos) << script << "\n" << out;
    EXPECT_FALSE(test::Exists(p.source + ".so")) << script;
    EXPECT_EQ(test::ReadFile(p.source), ScriptProject::kSource) << script;
  }
}

TEST(Scripts, ScriptThatAllocatesWithoutEndFailsTheStepAndTheHostCarriesOn) {
  ScriptProject p("OnProcessEntry",
                  "local t = {}\nwhile true do t[#t + 1] = ('x'):rep(4096) .. #t end");
  std::string out;
  EXPECT_EQ(test::RunProgram(p.Command(), &out), 1) << out;
  const std::vector<nlohmann::json> events = JsonLines(out);
  EXPECT_NE(LogText(events).find("script OnProcessEntry: the script needs more than the 64 MiB of "
                                 "memory a project script may use"),
            std::string::npos)
      << out;
  const nlohmann::json* build = EventOf(events, "build");
  ASSERT_NE(build, nullptr) << out;
  EXPECT_EQ((*build)["success"], false);
  EXPECT_EQ((*build)["stopped"], false);
  EXPECT_EQ(test::ReadFile(p.source), ScriptProject::kSource);
}

/// The host started with its stdout on a pipe.
struct RunningHost {
  explicit RunningHost(const std::vector<std::string>& args) {
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
    if (posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) != 0) pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    out = fds[0];
  }
  ~RunningHost() {
    if (pid > 0) {
      kill(pid, SIGKILL);
      waitpid(pid, nullptr, 0);
    }
    if (out >= 0) close(out);
  }

  /// Reads the output until it holds the text or the host closes it; false if it never came.
  bool ReadUntil(const std::string& text, int waitMs) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(waitMs);
    while (output.find(text) == std::string::npos) {
      const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
          end - std::chrono::steady_clock::now());
      if (left.count() <= 0) return false;
      pollfd fd{out, POLLIN, 0};
      if (poll(&fd, 1, static_cast<int>(left.count())) <= 0) continue;
      char buf[4096];
      const ssize_t n = read(out, buf, sizeof buf);
      if (n <= 0) return output.find(text) != std::string::npos;
      output.append(buf, static_cast<size_t>(n));
    }
    return true;
  }

  void ReadToEnd() {
    char buf[4096];
    for (ssize_t n; (n = read(out, buf, sizeof buf)) > 0;)
      output.append(buf, static_cast<size_t>(n));
  }

  /// Waits for the host to exit; its wait status, or -1 if it was still running and was killed.
  int Wait(int waitMs) {
    for (int waited = 0; waited < waitMs; waited += 20) {
      int status = 0;
      if (waitpid(pid, &status, WNOHANG) == pid) {
        pid = -1;
        ReadToEnd();
        return status;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return -1;
  }

  pid_t pid = -1;
  int out = -1;
  std::string output;
};

TEST(Scripts, InterruptEndsAScriptThatNeverReturns) {
  for (int signal : {SIGINT, SIGTERM}) {
    ScriptProject p("OnProcessEntry",
                    "print('looping')\nlocal n = 0\nwhile true do\n  n = n + 1\n"
                    "  pcall(function() while true do end end)\nend");
    std::vector<std::string> command = p.Command();
    command.insert(command.end(), {"--log", p.dir / "build.log"});
    RunningHost host(command);
    ASSERT_GT(host.pid, 0);
    ASSERT_TRUE(host.ReadUntil("\"event\":\"step\"", 30000)) << host.output;
    // The log file is written line by line: once the script's line is there, it is looping.
    for (int i = 0; i < 200; ++i) {
      if (test::Exists(p.dir / "build.log") &&
          test::ReadFile(p.dir / "build.log").find("looping") != std::string::npos)
        break;
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    ASSERT_EQ(kill(host.pid, signal), 0);
    // Generous: a host that ignores the request would run for ever, one that honours it ends at
    // once.
    const int status = host.Wait(30000);
    ASSERT_NE(status, -1) << "the host did not stop on signal " << signal;
    ASSERT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), 128 + signal);  // stopped, as a shell reports a signal
    const std::vector<nlohmann::json> events = JsonLines(host.output);
    EXPECT_NE(LogText(events).find("looping\n"), std::string::npos) << host.output;
    EXPECT_NE(LogText(events).find("script OnProcessEntry, line "), std::string::npos)
        << host.output;
    EXPECT_NE(LogText(events).find(": stopped by user request"), std::string::npos)
        << host.output;
    const nlohmann::json* result = EventOf(events, "result");
    ASSERT_NE(result, nullptr) << host.output;
    EXPECT_EQ((*result)["reason"], "stopped by user request");
    const nlohmann::json* build = EventOf(events, "build");
    ASSERT_NE(build, nullptr) << host.output;
    EXPECT_EQ((*build)["stopped"], true);
    EXPECT_EQ(test::ReadFile(p.source), ScriptProject::kSource);
  }
}

}  // namespace
}  // namespace wren
