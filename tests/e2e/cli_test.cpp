// The marrowby executable end to end: loading the package, running projects, reporting, stopping.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <thread>

#include "CliMachine.h"
#include "TestSupport.h"

extern char** environ;

namespace wren {
namespace {

TEST(Cli, RunReportsStepsAndWritesTheJUnitReport) {
  CliMachine m;
  m.WriteProject("ok.mbproj", SnStep("-k \"%ProjectDir%/my key.snk\"", " description=\"Make a key\"") +
                                  SnStep("-never", " enabled=\"false\"") + SnStep("-q -v a.dll"));
  std::string out, err;
  ASSERT_EQ(m.Run({"run", m.dir / "ok.mbproj", "--junit", m.dir / "report.xml", "--log",
                   m.dir / "build.log"},
                  &out, &err),
            0)
      << out << err;
  EXPECT_NE(out.find("[1/3] Run SN.EXE - Make a key"), std::string::npos) << out;
  EXPECT_NE(out.find("[2/3] Run SN.EXE  (disabled, skipped)"), std::string::npos) << out;
  EXPECT_NE(out.find("[3/3] ok in "), std::string::npos) << out;
  EXPECT_NE(out.find("Build succeeded: 3 step(s)"), std::string::npos) << out;
  // The last step's call is what the recorder kept: quoting survived the Windows splitting.
  const nlohmann::json call = test::RecordedCall(m.sn);
  ASSERT_FALSE(call.is_null());
  EXPECT_EQ(call["argv"], (nlohmann::json{m.sn, "-q", "-v", "a.dll"}));
  const std::string report = test::ReadFile(m.dir / "report.xml");
  EXPECT_NE(report.find("tests=\"3\" failures=\"0\" errors=\"0\" skipped=\"1\""), std::string::npos)
      << report;
  EXPECT_NE(report.find("name=\"1. Run SN.EXE - Make a key\""), std::string::npos) << report;
  EXPECT_NE(test::ReadFile(m.dir / "build.log").find("[3/3] Run SN.EXE"), std::string::npos);

  // A tool's exit code fails its step and the build, with the reason on one line.
  test::WriteFile(m.sn + ".recorder.json", R"({"exit": 3, "stderr": "sn: bad key"})");
  ASSERT_EQ(m.Run({"run", m.dir / "ok.mbproj", "--json"}, &out, &err), 1) << out << err;
  const std::vector<nlohmann::json> events = JsonLines(out);
  bool sawStderr = false, sawResult = false;
  for (const nlohmann::json& e : events) {
    if (e["event"] == "log" && e["stream"] == "stderr" && e["text"] == "sn: bad key")
      sawStderr = true;
    if (e["event"] == "result" && e["step"] == 1) {
      sawResult = true;
      EXPECT_EQ(e["success"], false);
      EXPECT_EQ(e["exitCode"], 3);
      EXPECT_EQ(e["reason"], "the program exited with code 3");
    }
  }
  EXPECT_TRUE(sawStderr) << out;
  EXPECT_TRUE(sawResult) << out;
  EXPECT_EQ(events.back()["event"], "build");
  EXPECT_EQ(events.back()["success"], false);
}

TEST(Cli, BadInputIsReportedWithItsPlaceAndRunsNothing) {
  CliMachine m;
  struct Case {
    std::string actions;
    std::string expected;  // a piece of the error
  } cases[] = {
      {"    <Action class=\"TNoSuchAction\"/>\n", "bad.mbproj:8: action 'TNoSuchAction'"},
      {"    <Action class=\"TSNGenericSN\"><Property name=\"Colour\">red</Property></Action>\n",
       "Colour"},
      {"    <Action class=\"TSNVerifyAssembly\"><Property name=\"Force\">yes</Property></Action>\n",
       "Force"},
      {"    <Action class=\"TSNGenericSN\"><Property name=\"Options\">x</Property>\n",
       "bad.mbproj:9: Start-end tags mismatch"},
      {"    <Action class=\"TSNGenericSN\" enabled=\"maybe\"/>\n", "enabled"},
  };
  for (const Case& c : cases) {
    m.WriteProject("bad.mbproj", SnStep("-first") + c.actions);
    std::string out, err;
    EXPECT_EQ(m.Run({"run", m.dir / "bad.mbproj"}, &out, &err), 2) << c.actions;
    EXPECT_NE(err.find("bad.mbproj"), std::string::npos) << err;
    EXPECT_NE(err.find(c.expected), std::string::npos) << err;
    EXPECT_TRUE(test::RecordedCall(m.sn).is_null()) << c.actions;
  }
  // A validation problem (no starting directory) also stops the build before anything runs.
  m.WriteProject("invalid.mbproj",
                 SnStep("-first") + "    <Action class=\"TSNGenericSN\"><Property name=\"Options\">"
                                    "-x</Property></Action>\n");
  std::string out, err;
  EXPECT_EQ(m.Run({"run", m.dir / "invalid.mbproj"}, &out, &err), 2);
  EXPECT_NE(out.find("Starting directory has not been set"), std::string::npos) << out;
  EXPECT_TRUE(test::RecordedCall(m.sn).is_null());
  EXPECT_EQ(m.Run({"validate", m.dir / "invalid.mbproj"}, &out, &err), 2);
  EXPECT_EQ(m.Run({"run", m.dir / "missing.mbproj"}, &out, &err), 2);
  EXPECT_EQ(m.Run({}, &out, &err), 2);
  EXPECT_EQ(m.Run({"run", m.dir / "invalid.mbproj", "--no-such-flag"}, &out, &err), 2);
}

TEST(Cli, DryRunShowsTheCallWithoutStartingIt) {
  CliMachine m;
  m.WriteProject("dry.mbproj", SnStep("-R \"%ProjectDir%/out dir/a.dll\" key.snk"));
  std::string out, err;
  ASSERT_EQ(m.Run({"run", m.dir / "dry.mbproj", "--dry-run", "--json"}, &out, &err), 0) << err;
  bool found = false;
  for (const nlohmann::json& e : JsonLines(out)) {
    if (e["event"] != "dry-run") continue;
    found = true;
    EXPECT_EQ(e["class"], "TSNGenericSN");
    EXPECT_EQ(e["executable"], m.sn);
    EXPECT_EQ(e["argv"], (nlohmann::json{"-R", m.dir / "out dir/a.dll", "key.snk"}));
    EXPECT_EQ(e["workingDir"], m.dir.path().substr(0, m.dir.path().size() - 1));
    EXPECT_TRUE(e["responseFile"].is_null());
  }
  EXPECT_TRUE(found) << out;
  EXPECT_TRUE(test::RecordedCall(m.sn).is_null());
}

TEST(Cli, ListsAndDescribesTheRegisteredActions) {
  CliMachine m;
  std::string out, err;
  ASSERT_EQ(m.Run({"actions"}, &out, &err), 0) << err;
  EXPECT_NE(out.find(".Net Tools\n"), std::string::npos) << out;
  EXPECT_NE(out.find("  Generate Key Pair [SN]  (TSNGenerateKeyPair, icon GENKEYPAIR)"),
            std::string::npos)
      << out;
  ASSERT_EQ(m.Run({"describe", "tsnextractpublickey", "--json"}, &out, &err), 0) << err;
  const nlohmann::json d = nlohmann::json::parse(out);
  EXPECT_EQ(d["class"], "TSNExtractPublicKey");
  bool sawHidden = false, sawEnum = false;
  for (const nlohmann::json& p : d["properties"]) {
    if (p["name"] == "SDKVersion") sawHidden = p["hidden"] == true;
    if (p["kind"] == "enumeration" && p["values"].size() > 1) sawEnum = true;
  }
  EXPECT_TRUE(sawHidden) << out;
  EXPECT_TRUE(sawEnum) << out;
  EXPECT_EQ(m.Run({"describe", "TNoSuchAction"}, &out, &err), 2);
  EXPECT_EQ(m.Run({"describe", "TSNGenerateKeyPiar"}, &out, &err), 2);
  EXPECT_NE(err.find("did you mean TSNGenerateKeyPair?"), std::string::npos) << err;
}

TEST(Cli, InterruptStopsTheBuildAndLeavesNoProcessBehind) {
  // Shells and CI runners tell an interrupted build by 128 + the signal.
  const struct {
    int signal;
    int exitCode;
  } cases[] = {{SIGINT, 130}, {SIGTERM, 143}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.signal);
    CliMachine m;
    test::WriteFile(m.sn + ".recorder.json",
                    R"({"sleepMs": 60000, "ignoreTerm": true, "spawnChild": true})");
    m.WriteProject("long.mbproj", SnStep("-wait") + SnStep("-never-reached"));
    const std::vector<std::string> args = m.Command({"run", m.dir / "long.mbproj", "--json"});
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    setenv("MARROWBY_KILL_GRACE_MS", "300", 1);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t host = 0;
    ASSERT_EQ(posix_spawn(&host, argv[0], &actions, nullptr, argv.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    unsetenv("MARROWBY_KILL_GRACE_MS");

    const std::string childPidFile = m.sn + ".child.pid";
    for (int i = 0; i < 200 && !test::Exists(childPidFile); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    ASSERT_TRUE(test::Exists(childPidFile)) << "the tool never started";
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const nlohmann::json call = test::RecordedCall(m.sn);
    const pid_t tool = call["pid"].get<pid_t>();
    const pid_t grandchild = std::stoi(test::ReadFile(childPidFile));

    ASSERT_EQ(kill(host, c.signal), 0);
    int status = 0;
    ASSERT_EQ(waitpid(host, &status, 0), host);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), c.exitCode);
    for (int i = 0;
         i < 100 && (test::ProcessRunning(tool) || test::ProcessRunning(grandchild)); ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(test::ProcessRunning(tool));
    EXPECT_FALSE(test::ProcessRunning(grandchild));
    // The second step never ran: the recorder's record is still the first call's.
    EXPECT_EQ(test::RecordedCall(m.sn)["argv"][1], "-wait");
  }
}

}  // namespace
}  // namespace wren
