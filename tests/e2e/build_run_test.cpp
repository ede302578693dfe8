// `marrowby run` and `validate` as a CI job uses them: paths beside the project, output that
// arrives as it happens, JUnit and JSON reports, checks before anything runs, partial runs, stops.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <map>
#include <sstream>
#include <thread>

#include "CliMachine.h"
#include "TestSupport.h"

extern char** environ;

namespace wren {
namespace {

using nlohmann::json;

using Machine = CliMachine;

std::string Step(const std::string& cls, const std::vector<std::pair<std::string, std::string>>& props,
                 const std::string& attributes = "") {
  std::string text = "    <Action class=\"" + cls + "\"" + attributes + ">\n";
  for (const auto& [name, value] : props)
    text += "      <Property name=\"" + name + "\">" + value + "</Property>\n";
  return text + "    </Action>\n";
}

std::string Sn(const std::string& options, const std::string& attributes = "") {
  return Step("TSNGenericSN", {{"Options", options}, {"StartDir", "%ProjectDir%"}}, attributes);
}

std::string Updater(const std::string& selection, const std::string& extra = "") {
  return "    <Action class=\"TWrenAssemblyInfoUpdaterAction\">\n"
         "      <Property name=\"Selection\"><Item>" + selection + "</Item></Property>\n"
         "      <Property name=\"Attributes\"><Item>AssemblyVersion=2.0.0.0</Item></Property>\n" +
         extra + "    </Action>\n";
}

std::vector<json> Events(const std::string& text) {
  std::vector<json> events;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line))
    if (!line.empty()) events.push_back(json::parse(line));
  return events;
}

std::vector<json> Named(const std::vector<json>& events, const std::string& name) {
  std::vector<json> out;
  for (const json& e : events)
    if (e["event"] == name) out.push_back(e);
  return out;
}

/// The host started with stdout on a pipe the test reads line by line.
class PipedHost {
 public:
  explicit PipedHost(const std::vector<std::string>& args) {
    int fds[2];
    EXPECT_EQ(pipe(fds), 0);
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], 1);
    posix_spawn_file_actions_addclose(&actions, fds[0]);
    posix_spawn_file_actions_addopen(&actions, 2, "/dev/null", O_WRONLY, 0);
    EXPECT_EQ(posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ), 0);
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    in_ = fdopen(fds[0], "r");
  }
  ~PipedHost() {
    if (pid > 0) {
      kill(pid, SIGKILL);
      Wait();
    }
    if (in_) fclose(in_);
  }
  /// The next line, or false at the end of the output.
  bool ReadLine(std::string& line) {
    line.clear();
    for (int c; (c = fgetc(in_)) != EOF;) {
      if (c == '\n') return true;
      line += static_cast<char>(c);
    }
    return !line.empty();
  }
  /// Reads until a line holds text; false when the output ended first.
  bool ReadUntil(const std::string& text, std::string* seen = nullptr) {
    std::string line;
    while (ReadLine(line)) {
      if (seen) *seen += line + "\n";
      if (line.find(text) != std::string::npos) return true;
    }
    return false;
  }
  std::string ReadRest() {
    std::string rest, line;
    while (ReadLine(line)) rest += line + "\n";
    return rest;
  }
  int Wait() {
    int status = 0;
    waitpid(pid, &status, 0);
    pid = -1;
    return status;
  }
  pid_t pid = -1;

 private:
  FILE* in_ = nullptr;
};

TEST(BuildRun, RelativePathsMeanTheProjectFolderWhereverTheHostStarts) {
  Machine m;
  test::WriteFile(m.dir / "work/sub/dir/Properties/AssemblyInfo.cs",
                  "[assembly: AssemblyVersion(\"1.0.0.0\")]\n");
  m.WriteProject("work/sub/dir/p.mbproj",
                 Step("TSNGenerateKeyPair", {{"OutputFile", "build/rel.snk"}}) +
                     Updater("Properties/AssemblyInfo.cs"));
  const std::string projectDir = m.dir / "work/sub/dir";
  for (const std::string& cwd : {m.dir.path(), m.dir / "work", projectDir}) {
    test::WriteFile(projectDir + "/Properties/AssemblyInfo.cs",
                    "[assembly: AssemblyVersion(\"1.0.0.0\")]\n");
    const std::string project =
        cwd == m.dir.path() ? "work/sub/dir/p.mbproj" : cwd == projectDir ? "p.mbproj" : "sub/dir/p.mbproj";
    std::string out, err;
    ASSERT_EQ(m.Run({"run", project}, &out, &err, cwd), 0) << cwd << "\n" << out << err;
    // The key tool starts beside the project, so its relative key file lands there, not in the SDK.
    const json call = test::RecordedCall(m.sn);
    EXPECT_EQ(call["cwd"], projectDir) << cwd;
    EXPECT_EQ(call["argv"][2], "build/rel.snk");
    EXPECT_NE(test::ReadFile(projectDir + "/Properties/AssemblyInfo.cs").find("2.0.0.0"),
              std::string::npos)
        << cwd << "\n" << out;
  }
}

TEST(BuildRun, ChecksBeforeAnythingRuns) {
  Machine m;
  test::WriteFile(m.dir / "src/AssemblyInfo.cs", "[assembly: AssemblyVersion(\"1.0.0.0\")]\n");
  const std::string windowsy = Step("TSNGenericSN", {{"Options", "-v bin\\Debug\\a.dll -q bin\\b.dll"},
                                                     {"StartDir", "C:\\build"}});
  struct Case {
    std::string actions;
    std::vector<std::string> extra;  // more arguments
    int validateCode;
    std::vector<std::string> expected;  // pieces of validate's output
  } cases[] = {
      // A mistyped variable fails validation instead of step 2.
      {Sn("-first") + Sn("-k %ProjectDri%/a.snk"), {}, 2,
       {"invalid: step 2 (TSNGenericSN), Options: %ProjectDri% is not defined by the project, a "
        "--var or the environment; did you mean ProjectDir?"}},
      // ... and a --var may define it.
      {Sn("-k %KEYDIR%/a.snk"), {"--var", "KEYDIR=/keys"}, 0, {"valid"}},
      // Windows paths are a warning per property, naming step and property; nothing is rewritten.
      {windowsy, {}, 0,
       {"warning: step 1 (TSNGenericSN), Options: looks like a Windows path",
        "warning: step 1 (TSNGenericSN), StartDir: looks like a Windows path", "2 warning(s)"}},
      // A wildcard that matches nothing is a warning; one that matches is not.
      {Updater("%ProjectDir%/src/AsemblyInfo.*"), {}, 0,
       {"warning: step 1 (TWrenAssemblyInfoUpdaterAction), Selection: "
        "'%ProjectDir%/src/AsemblyInfo.*' matches no file"}},
      {Updater("src/Assembly*.cs"), {}, 0, {"1 step(s), valid\n"}},
      // A missing input is an error when nothing before it could make it...
      {Step("TSNVerifyAssembly", {{"Assembly", "bin/Lib.dll"}}), {}, 2,
       {"invalid: step 1 (TSNVerifyAssembly), Assembly: the file " + m.dir.path() +
        "bin/Lib.dll does not exist"}},
      // ... and not when an earlier step runs a program that may.
      {Sn("-build") + Step("TSNVerifyAssembly", {{"Assembly", "bin/Lib.dll"}}), {}, 0,
       {"2 step(s), valid\n"}},
  };
  for (const Case& c : cases) {
    m.WriteProject("p.mbproj", c.actions);
    std::remove((m.sn + ".argv.json").c_str());
    std::vector<std::string> args = {"validate", m.dir / "p.mbproj"};
    args.insert(args.end(), c.extra.begin(), c.extra.end());
    std::string out, err;
    EXPECT_EQ(m.Run(args, &out, &err), c.validateCode) << c.actions << out << err;
    for (const std::string& piece : c.expected)
      EXPECT_NE(out.find(piece), std::string::npos) << piece << "\n" << out;
    if (c.expected.size() == 3) {
      EXPECT_EQ(out.find("warning:", out.find("StartDir") + 10), std::string::npos)
          << "one warning per property\n" << out;
    }
    // run: the same checks come first; errors stop the build before step 1.
    args[0] = "run";
    const int code = m.Run(args, &out, &err);
    if (c.validateCode != 0) {
      EXPECT_EQ(code, 2) << out;
      EXPECT_TRUE(test::RecordedCall(m.sn).is_null()) << out;
    } else {
      // Warnings are shown and the build goes on.
      if (c.expected[0].rfind("warning:", 0) == 0) {
        EXPECT_NE(out.find(c.expected[0]), std::string::npos) << out;
      }
      EXPECT_NE(out.find("[1/"), std::string::npos) << out;
    }
  }
  EXPECT_EQ(test::ReadFile(m.dir / "p.mbproj").find("/build"), std::string::npos);
}

TEST(BuildRun, ToolOutputReachesAPipeAndTheLogAsItHappens) {
  Machine m;
  test::WriteFile(m.sn + ".recorder.json", R"({"stdout": "first line\n", "sleepMs": 60000})");
  m.WriteProject("slow.mbproj", Sn("-slow"));
  PipedHost host(m.Command({"run", m.dir / "slow.mbproj", "--log", m.dir / "build.log"}));
  ASSERT_TRUE(host.ReadUntil("first line")) << "the line never arrived";
  // The tool is still sleeping: the line came while it ran, not when it ended.
  const json call = test::RecordedCall(m.sn);
  const pid_t tool = call["pid"].get<pid_t>();
  EXPECT_TRUE(test::ProcessRunning(tool));
  // A CI time-out kills the host outright: what was logged is on disk.
  kill(host.pid, SIGKILL);
  host.Wait();
  kill(tool, SIGKILL);
  EXPECT_NE(test::ReadFile(m.dir / "build.log").find("first line"), std::string::npos);
}

TEST(BuildRun, JUnitReportFollowsTheJenkinsSchema) {
  Machine m;
  const std::string nunit = m.dir / "nunit/nunit-console.exe";
  test::InstallRecorder(nunit);
  std::string out, err;
  ASSERT_EQ(m.Run({"options", "set", "NUnit", "NUnitLocation", nunit}, &out, &err), 0) << err;
  // What the runner leaves behind: one passed, one failed and one ignored test.
  test::WriteFile(m.dir / "TestResult.xml", R"(<?xml version="1.0" encoding="utf-8"?>
<test-results name="Lib.Tests.dll" total="3" failures="1" not-run="1">
  <test-suite name="Lib.Tests.dll" executed="True" result="Failure">
    <results>
      <test-case name="Lib.Tests.MathTest.Adds" executed="True" result="Success" success="True" time="0.012"/>
      <test-case name="Lib.Tests.MathTest.Divides" executed="True" result="Failure" success="False" time="0.003">
        <failure><message><![CDATA[Expected 2 but was 3]]></message><stack-trace>at MathTest.Divides()</stack-trace></failure>
      </test-case>
      <test-case name="Lib.Tests.MathTest.Later" executed="False" result="Ignored">
        <reason><message>not yet</message></reason>
      </test-case>
    </results>
  </test-suite>
</test-results>
)");
  m.WriteProject("ci.mbproj",
                 Step("TWrenNUnitAction", {{"Assemblies", "<Item>Lib.Tests.dll</Item>"},
                                           {"XMLOutputFile", "TestResult.xml"}}) +
                     Sn("-off", " enabled=\"false\"") + Sn("-fails \xc3\xa9\x01") + Sn("-never"));
  test::WriteFile(m.sn + ".recorder.json", R"({"exit": 4, "stdout": "caf\u00e9 <&>\n"})");
  EXPECT_EQ(m.Run({"run", m.dir / "ci.mbproj", "--junit", m.dir / "report.xml"}, &out, &err), 1)
      << out << err;
  const std::string xsd = std::string(SOURCE_DIR) + "/tests/fixtures/junit/jenkins-junit.xsd";
  auto schemaCheck = [&](const std::string& file) {
    std::string output;
    const int code = test::RunProgram({"xmllint", "--noout", "--schema", xsd, file}, &output);
    EXPECT_EQ(code, 0) << "xmllint (libxml2-utils) must be installed and accept the report:\n"
                       << output << test::ReadFile(file);
  };
  schemaCheck(m.dir / "report.xml");
  const std::string report = test::ReadFile(m.dir / "report.xml");
  EXPECT_EQ(report.rfind("<?xml", 0), 0u);
  EXPECT_NE(report.find("<testsuites name=\"ci\" tests=\"7\" failures=\"2\" errors=\"0\" skipped=\"3\""),
            std::string::npos)
      << report;
  EXPECT_NE(report.find("classname=\"Lib.Tests.MathTest\" name=\"Divides\""), std::string::npos);
  EXPECT_NE(report.find("message=\"Expected 2 but was 3\">at MathTest.Divides()</failure>"),
            std::string::npos);
  EXPECT_NE(report.find("<skipped message=\"not yet\"/>"), std::string::npos);
  EXPECT_NE(report.find("<skipped message=\"disabled\"/>"), std::string::npos);
  EXPECT_NE(report.find("name=\"4. Run SN.EXE\""), std::string::npos);
  EXPECT_NE(report.find("<skipped message=\"not run: an earlier step failed\"/>"),
            std::string::npos);
  EXPECT_NE(report.find("caf\xc3\xa9 &lt;&amp;&gt;"), std::string::npos) << report;

  // Validation problems are failures of their own; the build never started.
  m.WriteProject("bad.mbproj", Step("TSNGenericSN", {{"Options", "-x"}}));
  EXPECT_EQ(m.Run({"run", m.dir / "bad.mbproj", "--junit", m.dir / "bad.xml"}, &out, &err), 2);
  schemaCheck(m.dir / "bad.xml");
  EXPECT_NE(test::ReadFile(m.dir / "bad.xml").find("Starting directory has not been set"),
            std::string::npos);

  // A report that cannot be written is refused before anything runs.
  test::WriteFile(m.sn + ".recorder.json", "{}");
  std::remove((m.sn + ".argv.json").c_str());
  EXPECT_EQ(m.Run({"run", m.dir / "ci.mbproj", "--junit", m.dir / "no/such/dir/r.xml"}, &out, &err), 2);
  EXPECT_NE(err.find("no/such/dir/r.xml"), std::string::npos) << err;
  EXPECT_TRUE(test::RecordedCall(m.sn).is_null());
}

TEST(BuildRun, JsonEventsAreVersionedCompleteAndSurviveAnyBytes) {
  Machine m;
  // A Latin-1 byte in the description and in a variable, as a project saved by an old editor has.
  const std::string latin = m.dir / "lat\xe9n.mbproj";
  m.WriteProject("lat\xe9n.mbproj", Sn("-q %LATIN%", " description=\"Caf\xe9\""),
                 "  <Variables><Variable name=\"LATIN\">x\xe9y</Variable></Variables>\n");
  std::string out, err;
  for (const std::vector<std::string>& args :
       {std::vector<std::string>{"validate", latin, "--json"},
        std::vector<std::string>{"run", latin, "--json"},
        std::vector<std::string>{"run", latin, "--json", "--dry-run", "--var",
                                 "LATIN=\xff\xfe"},
        std::vector<std::string>{"run", latin, "--dry-run", "--var", "LATIN=\xff"}}) {
    const int code = m.Run(args, &out, &err);
    EXPECT_TRUE(code == 0 || code == 2) << code << out << err;
    if (args.back() == "--json" || args[3] == "--json") {
      const std::vector<json> events = Events(out);
      ASSERT_FALSE(events.empty());
      EXPECT_EQ(events.front()["event"], "start");
      EXPECT_EQ(events.front()["schemaVersion"], 2);
      EXPECT_NE(out.find("\xef\xbf\xbd"), std::string::npos) << "replacement character\n" << out;
    }
  }
  // validate --json says so also when the project is valid.
  m.WriteProject("ok.mbproj", Sn("-q"));
  ASSERT_EQ(m.Run({"validate", m.dir / "ok.mbproj", "--json"}, &out, &err), 0) << err;
  std::vector<json> events = Events(out);
  ASSERT_EQ(events.size(), 2u) << out;
  EXPECT_EQ(events[1], (json{{"event", "validation"}, {"valid", true}, {"steps", 1},
                             {"errors", 0}, {"warnings", 0}}));
  // An unreadable project: the error event, then the build event.
  test::WriteFile(m.dir / "broken.mbproj", "<MarrowbyProject version=\"1\"><Actions>");
  EXPECT_EQ(m.Run({"run", m.dir / "broken.mbproj", "--json"}, &out, &err), 2);
  events = Events(out);
  ASSERT_EQ(events.size(), 3u) << out;
  EXPECT_EQ(events[1]["event"], "error");
  EXPECT_EQ(events[1]["file"], m.dir / "broken.mbproj");
  EXPECT_EQ(events[2]["event"], "build");
  EXPECT_EQ(events[2]["success"], false);
}

TEST(BuildRun, OnlyFromAndSkipChooseStepsByNumberOrDescription) {
  Machine m;
  m.WriteProject("three.mbproj", Sn("-one", " description=\"Make key\"") +
                                     Sn("-two", " description=\"Sign\"") +
                                     Sn("-three", " description=\"Verify\""));
  struct Case {
    std::vector<std::string> options;
    std::vector<int> ran;
  } cases[] = {
      {{"--only", "1,3"}, {1, 3}},
      {{"--only", "sign"}, {2}},
      {{"--from", "2"}, {2, 3}},
      {{"--from", "Sign", "--skip", "Verify"}, {2}},
      {{"--skip", "1", "--skip", "make key"}, {2, 3}},
  };
  for (const Case& c : cases) {
    std::vector<std::string> args = {"run", m.dir / "three.mbproj", "--json"};
    args.insert(args.end(), c.options.begin(), c.options.end());
    std::string out, err;
    ASSERT_EQ(m.Run(args, &out, &err), 0) << out << err;
    std::vector<int> ran, skipped;
    for (const json& e : Named(Events(out), "result"))
      (e.contains("skipped") ? skipped : ran).push_back(e["step"].get<int>());
    EXPECT_EQ(ran, c.ran) << c.options[1];
    EXPECT_EQ(ran.size() + skipped.size(), 3u) << "left-out steps are reported";
  }
  std::string out, err;
  ASSERT_EQ(m.Run({"run", m.dir / "three.mbproj", "--only", "2"}, &out, &err), 0);
  EXPECT_NE(out.find("[1/3] Run SN.EXE - Make key  (not selected, skipped)"), std::string::npos)
      << out;
  EXPECT_NE(out.find("(1 run, 2 skipped)"), std::string::npos) << out;
  for (const std::vector<std::string>& bad : {std::vector<std::string>{"--only", "4"},
                                              std::vector<std::string>{"--from", "Nothing"},
                                              std::vector<std::string>{"--skip", "0"}}) {
    std::vector<std::string> args = {"run", m.dir / "three.mbproj", bad[0], bad[1]};
    EXPECT_EQ(m.Run(args, &out, &err), 2) << bad[1];
    EXPECT_NE(err.find("names no step"), std::string::npos) << err;
  }
}

TEST(BuildRun, VerbosityAndColour) {
  Machine m;
  m.WriteProject("v.mbproj", Sn("-q", " description=\"Quiet one\""));
  test::WriteFile(m.sn + ".recorder.json", R"({"stdout": "tool says hello\n"})");
  std::string out, err;
  ASSERT_EQ(m.Run({"run", m.dir / "v.mbproj", "-v", "quiet"}, &out, &err), 0) << err;
  EXPECT_EQ(out.find("[1/1]"), std::string::npos) << out;
  EXPECT_EQ(out.find("tool says hello"), std::string::npos) << out;
  EXPECT_NE(out.find("Build succeeded"), std::string::npos) << out;
  ASSERT_EQ(m.Run({"run", m.dir / "v.mbproj", "--verbosity", "minimal"}, &out, &err), 0);
  EXPECT_NE(out.find("[1/1] ok in"), std::string::npos) << out;
  EXPECT_EQ(out.find("tool says hello"), std::string::npos) << out;
  ASSERT_EQ(m.Run({"run", m.dir / "v.mbproj", "--verbosity", "detailed"}, &out, &err), 0);
  EXPECT_NE(out.find("starting " + m.sn + " -q  (in " + m.dir.path().substr(0, m.dir.path().size() - 1)),
            std::string::npos)
      << out;
  EXPECT_NE(out.find("tool says hello"), std::string::npos);
  // Piped: no colour codes, no status line.
  EXPECT_EQ(out.find('\033'), std::string::npos);
  // Quiet still shows a failure with what the tool said.
  test::WriteFile(m.sn + ".recorder.json", R"({"stdout": "bad thing\n", "exit": 1})");
  EXPECT_EQ(m.Run({"run", m.dir / "v.mbproj", "-v", "q"}, &out, &err), 1);
  EXPECT_NE(out.find("bad thing"), std::string::npos) << out;
  EXPECT_NE(out.find("FAILED"), std::string::npos) << out;
  EXPECT_EQ(m.Run({"run", m.dir / "v.mbproj", "-v", "loud"}, &out, &err), 2);
}

TEST(BuildRun, DryRunShowsTheDiffAnInProcessStepWouldMakeAndChangesNothing) {
  Machine m;
  const std::string original =
      "using System.Reflection;\r\n[assembly: AssemblyTitle(\"Lib\")]\r\n"
      "[assembly: AssemblyVersion(\"1.0.0.0\")]\r\n";
  test::WriteFile(m.dir / "src/Properties/AssemblyInfo.cs", original);
  m.WriteProject("dry.mbproj", Updater("%ProjectDir%/src/Properties/AssemblyInfo.cs") + Sn("-q"));
  std::string out, err;
  ASSERT_EQ(m.Run({"run", m.dir / "dry.mbproj", "--dry-run", "--json"}, &out, &err), 0) << err;
  const std::vector<json> dry = Named(Events(out), "dry-run");
  ASSERT_EQ(dry.size(), 2u) << out;
  std::map<std::string, std::string> diffs;
  for (const json& d : dry[0]["diffs"]) diffs[d["file"]] = d["diff"];
  ASSERT_EQ(diffs.size(), 2u) << out;
  // The backup the updater makes is a new file.
  EXPECT_EQ(diffs[m.dir / "src/Properties/AssemblyInfo.cs.bak"].rfind("--- /dev/null\n", 0), 0u);
  EXPECT_EQ(diffs[m.dir / "src/Properties/AssemblyInfo.cs"],
            "--- a/src/Properties/AssemblyInfo.cs\n+++ b/src/Properties/AssemblyInfo.cs\n"
            "@@ -1,3 +1,3 @@\n using System.Reflection;\r\n [assembly: AssemblyTitle(\"Lib\")]\r\n"
            "-[assembly: AssemblyVersion(\"1.0.0.0\")]\r\n+[assembly: AssemblyVersion(\"2.0.0.0\")]\r\n");
  EXPECT_EQ(dry[1]["argv"], (json{"-q"}));
  // Nothing changed: not the file, no backup, no scratch left in the project.
  EXPECT_EQ(test::ReadFile(m.dir / "src/Properties/AssemblyInfo.cs"), original);
  std::string listing;
  test::RunProgram({"find", m.dir.path(), "-newer", m.dir / "dry.mbproj", "-type", "f"}, &listing);
  EXPECT_EQ(listing.find("AssemblyInfo"), std::string::npos) << listing;
  // The terminal shows the same diff.
  ASSERT_EQ(m.Run({"run", m.dir / "dry.mbproj", "--dry-run"}, &out, &err), 0) << err;
  EXPECT_NE(out.find("would change " + m.dir / "src/Properties/AssemblyInfo.cs"), std::string::npos)
      << out;
  EXPECT_NE(out.find("+[assembly: AssemblyVersion(\"2.0.0.0\")]"), std::string::npos) << out;
  // A step naming files outside the project folder is listed, not run.
  test::TempDir elsewhere;
  test::WriteFile(elsewhere / "AssemblyInfo.cs", original);
  m.WriteProject("out.mbproj", Updater(elsewhere / "AssemblyInfo.cs"));
  ASSERT_EQ(m.Run({"run", m.dir / "out.mbproj", "--dry-run"}, &out, &err), 0) << err;
  EXPECT_NE(out.find("not run in a dry run: Selection names " + elsewhere / "AssemblyInfo.cs"),
            std::string::npos)
      << out;
  EXPECT_EQ(test::ReadFile(elsewhere / "AssemblyInfo.cs"), original);
}

TEST(BuildRun, AStopDuringAnInProcessLastStepIsNeverASuccess) {
  Machine m;
  for (int i = 0; i < 3000; ++i)
    test::WriteFile(m.dir / ("src/p" + std::to_string(i) + "/AssemblyInfo.cs"),
                    "[assembly: AssemblyVersion(\"1.0.0.0\")]\n");
  m.WriteProject("many.mbproj", Sn("-first") +
                                    Updater("src/*.cs",
                                            "      <Property name=\"Recurse\">true</Property>\n"));
  PipedHost host(m.Command({"run", m.dir / "many.mbproj", "--json"}));
  std::string seen;
  // The host blocks on the full pipe while the test does not read, so it is mid-way for sure.
  ASSERT_TRUE(host.ReadUntil("Processing File", &seen)) << seen;
  kill(host.pid, SIGTERM);
  const std::string rest = host.ReadRest();
  const int status = host.Wait();
  ASSERT_TRUE(WIFEXITED(status)) << status;
  EXPECT_NE(WEXITSTATUS(status), 0);
  const std::vector<json> events = Events(seen + rest);
  const std::vector<json> results = Named(events, "result");
  ASSERT_EQ(results.size(), 2u) << rest;
  EXPECT_EQ(results[1]["success"], false);
  EXPECT_EQ(results[1]["reason"], "stopped by user request");
  EXPECT_EQ(events.back()["event"], "build");
  EXPECT_EQ(events.back()["stopped"], true);
  EXPECT_EQ(events.back()["success"], false);
}

}  // namespace
}  // namespace wren
