#include "WrenBuildReporters.h"

#include <gtest/gtest.h>

#include <sstream>

#include "TestSupport.h"

namespace wren {
namespace {

/// A block of lines of the given lengths, each made of one repeated letter.
TWrenLogLines Block(TWrenLogStream stream, const std::vector<size_t>& lengths) {
  TWrenLogLines lines;
  lines.Reset(stream);
  for (size_t i = 0; i < lengths.size(); ++i)
    lines.Add(std::string(lengths[i], static_cast<char>('a' + i % 26)));
  return lines;
}

std::string Formatted(const std::string& head, const std::vector<size_t>& lengths) {
  std::string text;
  for (size_t i = 0; i < lengths.size(); ++i)
    text += head + std::string(lengths[i], static_cast<char>('a' + i % 26)) + "\n";
  return text;
}

// Short lines and heads are copied with fixed-size copies that run past them: what runs over
// must never show.
TEST(LineBatch, BlocksOfLinesComeOutWholeWhateverTheirLengths) {
  std::vector<size_t> lengths;
  for (size_t n = 0; n <= 40; ++n) lengths.push_back(n);
  for (size_t n = 40; n-- > 0;) lengths.push_back(n);
  lengths.push_back(100000);
  lengths.push_back(0);
  const TWrenLogLines block = Block(TWrenLogStream::StdOut, lengths);
  ASSERT_EQ(block.Count(), lengths.size());
  EXPECT_EQ(std::string(block.Text()), Formatted("", lengths));

  for (const std::string& head :
       {std::string(), std::string("    "), std::string("2026-01-02 03:04:05      "),
        std::string(TLineBatch::kMaxHead, '#')}) {
    TLineBatch batch;
    batch.Add("before\n");
    batch.AddLines(head, block);
    batch.AddLines(head, Block(TWrenLogStream::StdOut, {1, 2}));
    std::ostringstream out;
    batch.WriteTo(out);
    EXPECT_EQ(out.str(), "before\n" + Formatted(head, lengths) + Formatted(head, {1, 2}))
        << "head of " << head.size();
  }
}

std::string Line(size_t i) { return "line " + std::to_string(i) + std::string(i % 300, 'x'); }

// Far more than the writer's queue holds, over an older and longer log or into a device that
// takes nothing: the file holds every line in order, or the run learns why not.
// A step's time is shown to the hundredth, rounded as printf's %.2f rounds the double: halves
// that are exact go to the even digit, the others by the value the double really holds.
TEST(TerminalReporter, StepTimesAreRoundedToTheHundredth) {
  const std::pair<double, const char*> cases[] = {
      {0, "0.00"},       {0.004999, "0.00"}, {0.005, "0.01"},  {0.125, "0.12"},
      {0.375, "0.38"},   {2.675, "2.67"},    {59.999, "60.00"}, {1234.5, "1234.50"},
  };
  for (const auto& [seconds, shown] : cases) {
    for (const bool success : {true, false}) {
      std::ostringstream out;
      {
        TTerminalReporter reporter(out);
        TWrenStepReport step;
        step.step = 1;
        step.displayName = "Tool";
        step.success = success;
        step.seconds = seconds;
        step.failureReason = "exit code 1";
        reporter.OnStepStart(step, 1);
        reporter.OnStepEnd(step);
      }
      const std::string expected = std::string(success ? "ok" : "FAILED") + " in " + shown + " s";
      EXPECT_NE(out.str().find(expected), std::string::npos) << seconds << ": " << out.str();
    }
  }
}

TEST(LogFileWriter, WritesEveryLineInOrderOrSaysWhyNot) {
  test::TempDir dir;
  struct Case {
    std::string path;
    std::string before;  // the file's bytes before the run
    bool fails;
  };
  const Case cases[] = {
      {dir / "fresh.log", "", false},
      {dir / "old.log", std::string(30u << 20, 'o'), false},
      {"/dev/full", "", true},
  };
  constexpr size_t kBlocks = 400, kPerBlock = 500;
  for (const Case& c : cases) {
    if (!c.before.empty()) test::WriteFile(c.path, c.before);
    std::string error;
    bool closed = false;
    {
      TLogFileWriter log;
      ASSERT_TRUE(log.Open(c.path, error)) << error;
      TWrenStepReport step;
      step.step = 1;
      step.displayName = "Tool";
      log.OnStepStart(step, 1);
      TWrenLogLines lines;
      for (size_t b = 0; b < kBlocks; ++b) {
        lines.Reset(b % 7 == 0 ? TWrenLogStream::StdErr : TWrenLogStream::StdOut);
        for (size_t i = 0; i < kPerBlock; ++i) lines.Add(Line(b * kPerBlock + i));
        log.OnLogLines(step, lines);
        if (b % 3 == 0) log.OnLogFlush(step);
      }
      log.OnLog(step, TWrenLogStream::Message, "one more");
      step.success = true;
      log.OnStepEnd(step);
      closed = log.Close(error);
    }
    if (c.fails) {
      EXPECT_FALSE(closed) << c.path;
      EXPECT_EQ(error.rfind("cannot write the log file /dev/full: ", 0), 0u) << error;
      continue;
    }
    EXPECT_TRUE(closed) << error;
    std::istringstream in(test::ReadFile(c.path));
    std::vector<std::string> texts;
    for (std::string line; std::getline(in, line);) {
      ASSERT_GE(line.size(), 21u) << line;
      texts.push_back(line.substr(21));  // after "YYYY-MM-DD HH:MM:SS  "
    }
    ASSERT_EQ(texts.size(), kBlocks * kPerBlock + 3) << c.path;
    EXPECT_EQ(texts.front(), "[1/1] Tool");
    for (size_t n = 0; n < kBlocks * kPerBlock; ++n) {
      const std::string prefix = (n / kPerBlock) % 7 == 0 ? "  ! " : "    ";
      ASSERT_EQ(texts[n + 1], prefix + Line(n)) << c.path;
    }
    EXPECT_EQ(texts[texts.size() - 2], "    one more");
    EXPECT_EQ(texts.back().rfind("  ok in ", 0), 0u) << texts.back();
  }
}

}  // namespace
}  // namespace wren
