// A tool that prints a great deal: every line reaches the terminal and the log file in order and
// in the log's format, while failure reports and the JUnit report show its end, not all of it.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <sstream>

#include "CliMachine.h"
#include "TestSupport.h"

namespace wren {
namespace {

constexpr int kLines = 300000;

/// The text after a log line's "YYYY-MM-DD HH:MM:SS  " stamp; false when the stamp is not there.
/// (Plain code rather than <regex>: GCC 12 warns inside <regex> in the sanitizer build.)
bool StampedText(const std::string& line, std::string& text) {
  const std::string shape = "dddd-dd-dd dd:dd:dd  ";
  if (line.size() < shape.size()) return false;
  for (size_t i = 0; i < shape.size(); ++i) {
    const bool digit = std::isdigit(static_cast<unsigned char>(line[i])) != 0;
    if (shape[i] == 'd' ? !digit : line[i] != shape[i]) return false;
  }
  text = line.substr(shape.size());
  return true;
}

/// An sn.exe that prints "line 1" .. "line N", a warning on stderr, and fails.
std::string NoisyTool() {
  return "#!/bin/sh\nseq 1 " + std::to_string(kLines) +
         " | sed 's/^/line /'\necho 'warning: last words' >&2\nexit 3\n";
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

/// How many of the lines, in order, are "<prefix>line 1" .. "<prefix>line N".
int CountedLines(const std::vector<std::string>& lines, const std::string& prefix) {
  int next = 1;
  for (const std::string& line : lines)
    if (line == prefix + "line " + std::to_string(next)) ++next;
  return next - 1;
}

TEST(ToolOutput, EveryLineReachesTheTerminalAndTheLogInItsFormat) {
  CliMachine m(NoisyTool());
  m.WriteProject("noisy.mbproj", SnStep("-x"));
  std::string out, err;
  EXPECT_EQ(m.Run({"run", m.dir / "noisy.mbproj", "--log", m.dir / "build.log"}, &out, &err), 1)
      << err;
  const std::vector<std::string> terminal = Lines(out);
  EXPECT_EQ(CountedLines(terminal, "    "), kLines);
  EXPECT_NE(out.find("FAILED in "), std::string::npos);
  EXPECT_NE(out.find(": the program exited with code 3"), std::string::npos);

  // Each log line: a local time stamp, two spaces, then the text; stderr lines marked "  ! ".
  const std::vector<std::string> log = Lines(test::ReadFile(m.dir / "build.log"));
  std::vector<std::string> texts;
  for (const std::string& line : log) {
    std::string text;
    ASSERT_TRUE(StampedText(line, text)) << line;
    texts.push_back(text);
  }
  EXPECT_EQ(CountedLines(texts, "    "), kLines);
  ASSERT_GE(texts.size(), 3u);
  EXPECT_EQ(texts.front(), "[1/1] Run SN.EXE");
  EXPECT_NE(std::find(texts.begin(), texts.end(), "  ! warning: last words"), texts.end());
  EXPECT_EQ(texts.back().rfind("  FAILED in ", 0), 0u) << texts.back();
  EXPECT_NE(texts.back().find(" s: the program exited with code 3"), std::string::npos);
}

TEST(ToolOutput, FailureReportsShowTheEndOfALongOutput) {
  CliMachine m(NoisyTool());
  m.WriteProject("noisy.mbproj", SnStep("-x"));
  std::string out, err;
  // Quiet and minimal show a failed step's output after it ended: its last lines, and how many
  // came before them.
  for (const char* verbosity : {"quiet", "minimal"}) {
    EXPECT_EQ(m.Run({"run", m.dir / "noisy.mbproj", "-v", verbosity}, &out, &err), 1) << err;
    const std::vector<std::string> lines = Lines(out);
    EXPECT_LT(lines.size(), 2000u) << verbosity;
    EXPECT_NE(out.find(" earlier lines not shown)"), std::string::npos) << verbosity;
    const size_t last = out.find("    line " + std::to_string(kLines) + "\n");
    const size_t failed = out.find(": the program exited with code 3");
    EXPECT_NE(last, std::string::npos) << verbosity;
    EXPECT_NE(out.find("    warning: last words\n"), std::string::npos) << verbosity;
    EXPECT_LT(last, failed) << verbosity;
  }

  // The JUnit report holds the beginning and the end of the output, and says what it left out.
  EXPECT_EQ(m.Run({"run", m.dir / "noisy.mbproj", "--junit", m.dir / "report.xml"}, &out, &err), 1);
  const std::string report = test::ReadFile(m.dir / "report.xml");
  EXPECT_LT(report.size(), 2u * 1024 * 1024);
  EXPECT_NE(report.find("<system-out>starting "), std::string::npos);
  EXPECT_NE(report.find("\nline 1\nline 2\n"), std::string::npos);
  EXPECT_NE(report.find("line " + std::to_string(kLines) + "\n"), std::string::npos);
  EXPECT_NE(report.find("warning: last words\n</system-out>"), std::string::npos);
  const size_t gap = report.find("\n[... ");
  ASSERT_NE(gap, std::string::npos);
  const size_t number = gap + 7;
  size_t digits = 0;
  while (std::isdigit(static_cast<unsigned char>(report[number + digits]))) ++digits;
  EXPECT_GT(digits, 0u);
  const std::string tail = " bytes of output left out ...]\n";
  ASSERT_EQ(report.compare(number + digits, tail.size(), tail), 0);
  // The cut falls between whole lines.
  const size_t before = report.rfind('\n', gap - 1);
  EXPECT_EQ(report.compare(before + 1, 5, "line "), 0);
  const size_t after = number + digits + tail.size();
  EXPECT_EQ(report.compare(after, 5, "line "), 0);
  const std::string xsd = std::string(SOURCE_DIR) + "/tests/fixtures/junit/jenkins-junit.xsd";
  std::string output;
  EXPECT_EQ(test::RunProgram({"xmllint", "--noout", "--schema", xsd, m.dir / "report.xml"},
                             &output),
            0)
      << "xmllint (libxml2-utils) must be installed and accept the report:\n" << output;
}

// The log is written by a thread of its own: whatever ends the build, the host's exit waits
// for the whole of it, and one it could not write makes the run fail.
TEST(ToolOutput, TheLogIsCompleteWhenABuildIsStopped) {
  const struct {
    int signal;
    int exitCode;
  } cases[] = {{SIGINT, 130}, {SIGTERM, 143}};
  for (const auto& c : cases) {
    // Prints its lines, says so through a file, and waits to be stopped.
    CliMachine m("#!/bin/sh\nseq 1 " + std::to_string(kLines) +
                 " | sed 's/^/line /'\ntouch \"$0.printed\"\nexec sleep 60\n");
    // An older, longer log is replaced, not overwritten in part.
    test::WriteFile(m.dir / "build.log", std::string(40u << 20, 'o'));
    m.WriteProject("noisy.mbproj", SnStep("-x"));
    const pid_t host = m.Start({"run", m.dir / "noisy.mbproj", "--log", m.dir / "build.log"});
    ASSERT_GT(host, 0);
    // Waits for the tool, however long the machine takes; not a timing.
    for (int i = 0; i < 60000 && ::access((m.sn + ".printed").c_str(), F_OK) != 0; ++i)
      ::usleep(1000);
    ASSERT_EQ(::access((m.sn + ".printed").c_str(), F_OK), 0) << "the tool never finished printing";
    ::kill(host, c.signal);
    int status = 0;
    ASSERT_EQ(::waitpid(host, &status, 0), host);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), c.exitCode);

    std::vector<std::string> texts;
    for (const std::string& line : Lines(test::ReadFile(m.dir / "build.log"))) {
      std::string text;
      ASSERT_TRUE(StampedText(line, text)) << line.substr(0, 100);
      texts.push_back(text);
    }
    EXPECT_EQ(CountedLines(texts, "    "), kLines) << c.signal;
    ASSERT_FALSE(texts.empty());
    EXPECT_EQ(texts.front(), "[1/1] Run SN.EXE");
    EXPECT_EQ(texts.back().rfind("  FAILED in ", 0), 0u) << texts.back();
    EXPECT_NE(texts.back().find(": stopped by user request"), std::string::npos) << texts.back();
  }
}

TEST(ToolOutput, ALogThatCannotBeWrittenFailsTheRun) {
  const struct {
    const char* tool;
    int exitCode;
  } cases[] = {
      {"#!/bin/sh\nseq 1 1000\n", 1},          // the build itself succeeds
      {"#!/bin/sh\nseq 1 1000\nexit 3\n", 1},  // and fails
  };
  for (const auto& c : cases) {
    CliMachine m(c.tool);
    m.WriteProject("p.mbproj", SnStep("-x"));
    std::string out, err;
    EXPECT_EQ(m.Run({"run", m.dir / "p.mbproj", "--log", "/dev/full"}, &out, &err), c.exitCode)
        << out << err;
    EXPECT_NE(err.find("marrowby: cannot write the log file /dev/full: "), std::string::npos)
        << err;
    // The terminal still saw the whole build.
    EXPECT_NE(out.find("    1000\n"), std::string::npos);
  }
}

}  // namespace
}  // namespace wren
