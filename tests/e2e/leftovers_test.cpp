// The marrowby executable leaves nothing behind: no process of a build outlives it, however it
// ends, and no temporary file of a killed run is taken for a source by the next one.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/stat.h>
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

using ScriptMachine = CliMachine;

// The step's tool starts a background child and one that leaves the process group with setsid,
// then waits; the host is ended by a closed terminal, Ctrl-C, or kill -9.
TEST(Leftovers, NoProcessOfABuildOutlivesTheHost) {
  for (int sig : {SIGHUP, SIGINT, SIGKILL}) {
    SCOPED_TRACE(strsignal(sig));
    test::TempDir pidsDir;
    const std::string pids = pidsDir / "pids";
    ScriptMachine m("#!/bin/sh\n"
                    "setsid sleep 300 &\necho $! >> '" + pids + "'\n"
                    "sleep 300 &\necho $! >> '" + pids + "'\n"
                    "echo $$ >> '" + pids + "'\n"
                    "exec sleep 300\n");
    m.WriteProject("long.mbproj",
                   "    <Action class=\"TSNGenericSN\">\n"
                   "      <Property name=\"Options\">-wait</Property>\n"
                   "      <Property name=\"StartDir\">%ProjectDir%</Property>\n"
                   "    </Action>\n");
    ::setenv("MARROWBY_KILL_GRACE_MS", "300", 1);
    const pid_t host = m.Start({"run", m.dir / "long.mbproj"});
    ::unsetenv("MARROWBY_KILL_GRACE_MS");
    ASSERT_GT(host, 0);
    for (int i = 0; i < 400 && test::ReadPids(pids).size() < 3; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    const std::vector<int> started = test::ReadPids(pids);
    ASSERT_EQ(started.size(), 3u) << "the tool never started";

    ASSERT_EQ(::kill(host, sig), 0);
    int status = 0;
    ASSERT_EQ(::waitpid(host, &status, 0), host);
    if (sig == SIGKILL) {
      EXPECT_TRUE(WIFSIGNALED(status));
    } else {
      // Stopped, not killed: the exit code says which signal stopped the build.
      EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 128 + sig)
          << "wait status " << status;
    }
    for (pid_t pid : started) {
      for (int i = 0; i < 200 && test::ProcessRunning(pid); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
      EXPECT_FALSE(test::ProcessRunning(pid)) << pid << " outlived the host";
    }
  }
}

// A run killed while rewriting left a temporary file among the sources; the next run over "*.*"
// must neither take it (or a live run's) for a source nor leave it behind, and its rewrites show
// through every hard link of a source.
TEST(Leftovers, UpdaterSkipsAndClearsTemporaryFilesAndKeepsHardLinks) {
  ScriptMachine m("#!/bin/sh\nexit 0\n");
  const pid_t dead = ::fork();
  if (dead == 0) ::_exit(0);
  ::waitpid(dead, nullptr, 0);
  const std::string source = "[assembly: AssemblyVersion(\"1.0\")]\r\n";
  test::WriteFile(m.dir / "src/A.cs", source);
  test::WriteFile(m.dir / "other/keep.txt", "");
  ASSERT_EQ(::link((m.dir / "src/A.cs").c_str(), (m.dir / "other/A.cs").c_str()), 0);
  const std::string deadTemp = m.dir / ("src/.B.cs.tmp" + std::to_string(dead) + "-1-2");
  const std::string liveTemp = m.dir / ("src/.C.cs.tmp" + std::to_string(::getpid()) + "-1-2");
  test::WriteFile(deadTemp, source);
  test::WriteFile(liveTemp, source);
  m.WriteProject("stamp.mbproj",
                 "    <Action class=\"TWrenAssemblyInfoUpdaterAction\">\n"
                 "      <Property name=\"Selection\"><Item>%ProjectDir%/src/*.*</Item></Property>\n"
                 "      <Property name=\"BackupFiles\">false</Property>\n"
                 "      <Property name=\"Attributes\"><Item>AssemblyVersion=\"2.0\"</Item></Property>\n"
                 "    </Action>\n");
  std::string out;
  ASSERT_EQ(test::RunProgram(m.Command({"run", m.dir / "stamp.mbproj"}), &out), 0) << out;
  EXPECT_EQ(out.find(".tmp"), std::string::npos) << out;
  const std::string stamped = "[assembly: AssemblyVersion(\"2.0\")]\r\n";
  EXPECT_EQ(test::ReadFile(m.dir / "src/A.cs"), stamped);
  EXPECT_EQ(test::ReadFile(m.dir / "other/A.cs"), stamped);
  EXPECT_FALSE(test::Exists(deadTemp));
  EXPECT_EQ(test::ReadFile(liveTemp), source);
}

// A tree of more folders than the process may hold open at once: the updater keeps a bounded
// number of them open while it walks and while its rewrites wait for the commit.
TEST(Leftovers, UpdaterWalksMoreFoldersThanItMayKeepOpen) {
  ScriptMachine m("#!/bin/sh\nexit 0\n");
  const std::string source = "[assembly: AssemblyVersion(\"1.0\")]\r\n";
  for (int i = 0; i < 300; ++i)
    test::WriteFile(m.dir / ("tree/p" + std::to_string(i) + "/Properties/AssemblyInfo.cs"), source);
  std::string deep = "tree/";
  for (int i = 0; i < 100; ++i) deep += "d" + std::to_string(i) + "/";
  test::WriteFile(m.dir / (deep + "AssemblyInfo.cs"), source);
  m.WriteProject("stamp.mbproj",
                 "    <Action class=\"TWrenAssemblyInfoUpdaterAction\">\n"
                 "      <Property name=\"Selection\"><Item>%ProjectDir%/tree/*.cs</Item></Property>\n"
                 "      <Property name=\"BackupFiles\">false</Property>\n"
                 "      <Property name=\"Recurse\">true</Property>\n"
                 "      <Property name=\"Attributes\"><Item>AssemblyVersion=\"2.0\"</Item></Property>\n"
                 "    </Action>\n");
  std::vector<std::string> command = m.Command({"run", m.dir / "stamp.mbproj"});
  command.insert(command.begin(), {"/bin/sh", "-c", "ulimit -n 64 && exec \"$@\"", "sh"});
  std::string out;
  ASSERT_EQ(test::RunProgram(command, &out), 0) << out;
  for (int i = 0; i < 300; ++i)
    ASSERT_EQ(test::ReadFile(m.dir / ("tree/p" + std::to_string(i) + "/Properties/AssemblyInfo.cs")),
              "[assembly: AssemblyVersion(\"2.0\")]\r\n")
        << i;
  EXPECT_EQ(test::ReadFile(m.dir / (deep + "AssemblyInfo.cs")),
            "[assembly: AssemblyVersion(\"2.0\")]\r\n");
}

}  // namespace
}  // namespace wren
