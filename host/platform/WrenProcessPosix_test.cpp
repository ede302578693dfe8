#include "WrenProcess.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <sstream>
#include <thread>

namespace wren {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using TStatus = TWrenProcessResult::TStatus;
using TLines = std::vector<std::string>;

/// A fresh directory, removed with everything in it.
class TTempDir {
 public:
  TTempDir() {
    std::string pattern = (fs::temp_directory_path() / "wren-proc-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
    path_ = fs::canonical(pattern);
  }
  ~TTempDir() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  const fs::path& Path() const { return path_; }

 private:
  fs::path path_;
};

/// Sets an environment variable for the lifetime of the object.
class TScopedEnv {
 public:
  TScopedEnv(std::string name, const std::string& value) : name_(std::move(name)) {
    if (const char* old = std::getenv(name_.c_str())) old_ = old;
    ::setenv(name_.c_str(), value.c_str(), 1);
  }
  ~TScopedEnv() {
    if (old_) {
      ::setenv(name_.c_str(), old_->c_str(), 1);
    } else {
      ::unsetenv(name_.c_str());
    }
  }

 private:
  std::string name_;
  std::optional<std::string> old_;
};

bool ProcessGone(pid_t pid) { return ::kill(pid, 0) == -1 && errno == ESRCH; }

/// Waits a generous while for the process to be gone (killed and reaped by whoever reaps it).
bool EndsSoon(pid_t pid) {
  for (int i = 0; i < 500 && !ProcessGone(pid); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return ProcessGone(pid);
}

struct TRun {
  TWrenProcessResult result;
  TLines out;
  TLines err;
};

TRun RunProgram(const std::string& exe, const std::string& commandLine,
                const std::string& workingDir = "", std::function<bool()> stop = {}) {
  TRun run;
  std::shared_ptr<IWrenProcess> process = CreateWrenProcess();
  process->SetExecutable(exe);
  process->SetCommandLine(commandLine);
  process->SetWorkingDir(workingDir);
  process->SetOnStdOut([&](const std::string& line) { run.out.push_back(line); });
  process->SetOnStdErr([&](const std::string& line) { run.err.push_back(line); });
  if (stop) process->SetStopCheck(std::move(stop));
  run.result = process->Run();
  return run;
}

/// The recorder under another name in dir, configured through <name>.recorder.json.
std::string InstallRecorder(const fs::path& dir, const std::string& name, const json& config) {
  const fs::path link = dir / name;
  fs::remove(link);
  fs::create_symlink(ARGV_RECORDER, link);
  std::ofstream(link.string() + ".recorder.json") << config.dump();
  return link.string();
}

json ReadJson(const std::string& path) {
  std::ifstream in(path);
  if (!in) throw std::runtime_error("no record at " + path);
  return json::parse(in);
}

std::string ReadText(const std::string& path) {
  std::ifstream in(path);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

TEST(WrenProcessPosix, CommandLineReachesTheProgramAsSplit) {
  TTempDir dir;
  const std::string tool = InstallRecorder(dir.Path(), "tool", json::object());
  std::ofstream(dir.Path() / "rsp file.rsp") << "/r:x.dll\n";
  const std::string commandLine =
      R"(/out:"C:\my dir\\" "a b"   plain "say \"hi\"" tail\ @"rsp file.rsp" @missing.rsp "")";
  const TLines expected = {R"(/out:C:\my dir\)", "a b", "plain", R"(say "hi")", R"(tail\)",
                           "@rsp file.rsp", "@missing.rsp", ""};
  ASSERT_EQ(SplitCommandLine(commandLine), expected);

  const TRun run = RunProgram(tool, commandLine, dir.Path().string());
  ASSERT_EQ(run.result.status, TStatus::Exited) << run.result.error;
  EXPECT_EQ(run.result.exitCode, 0);

  const json record = ReadJson(tool + ".argv.json");
  TLines argv = record["argv"].get<TLines>();
  ASSERT_FALSE(argv.empty());
  EXPECT_EQ(argv[0], tool);
  EXPECT_EQ(TLines(argv.begin() + 1, argv.end()), expected);
  EXPECT_EQ(record["responseFiles"]["rsp file.rsp"], "/r:x.dll\n");
  EXPECT_TRUE(record["responseFiles"]["missing.rsp"].is_null());
}

TEST(WrenProcessPosix, WorkingDirectoryIsHonoured) {
  TTempDir dir;
  fs::create_directory(dir.Path() / "sub dir");
  const std::string tool = InstallRecorder(dir.Path(), "tool", json::object());

  ASSERT_EQ(RunProgram(tool, "", (dir.Path() / "sub dir").string()).result.status, TStatus::Exited);
  EXPECT_EQ(ReadJson(tool + ".argv.json")["cwd"], (dir.Path() / "sub dir").string());

  ASSERT_EQ(RunProgram(tool, "").result.status, TStatus::Exited);
  EXPECT_EQ(ReadJson(tool + ".argv.json")["cwd"], fs::current_path().string());

  const TRun missing = RunProgram(tool, "", (dir.Path() / "gone").string());
  EXPECT_EQ(missing.result.status, TStatus::Failed);
  EXPECT_NE(missing.result.error.find("gone"), std::string::npos) << missing.result.error;
}

TEST(WrenProcessPosix, BareNameIsSearchedOnPath) {
  TTempDir dir;
  InstallRecorder(dir.Path(), "wren-path-tool", json::object());
  TScopedEnv path("PATH", dir.Path().string() + ":" + std::getenv("PATH"));
  TScopedEnv out("ARGV_RECORDER_OUT", (dir.Path() / "record.json").string());

  const TRun run = RunProgram("wren-path-tool", "x");
  ASSERT_EQ(run.result.status, TStatus::Exited) << run.result.error;
  EXPECT_EQ(ReadJson((dir.Path() / "record.json").string())["argv"], json({"wren-path-tool", "x"}));
}

TEST(WrenProcessPosix, OutputIsSplitIntoLines) {
  TTempDir dir;
  const std::string tool =
      InstallRecorder(dir.Path(), "tool",
                      {{"stdout", "alpha\r\nbeta\n\nmid\rcr\r\nlast without break"},
                       {"stderr", "warning 1\r\nwarning 2\r\n"}});
  const TRun run = RunProgram(tool, "");
  ASSERT_EQ(run.result.status, TStatus::Exited) << run.result.error;
  EXPECT_EQ(run.out, (TLines{"alpha", "beta", "", "mid\rcr", "last without break"}));
  EXPECT_EQ(run.err, (TLines{"warning 1", "warning 2"}));
}

TEST(WrenProcessPosix, LargeOutputOnBothStreamsAtOnce) {
  // Both streams well past a pipe's buffer, written at the same time: a runner that drained one
  // stream before the other would deadlock here.
  const int lines = 40000;
  const std::string script = "-c \"(yes out | head -n " + std::to_string(lines) +
                             ") & (yes err | head -n " + std::to_string(lines) + " 1>&2); wait\"";
  const TRun run = RunProgram("/bin/sh", script);
  ASSERT_EQ(run.result.status, TStatus::Exited) << run.result.error;
  EXPECT_EQ(run.result.exitCode, 0);
  EXPECT_EQ(run.out, TLines(lines, "out"));
  EXPECT_EQ(run.err, TLines(lines, "err"));
}

TEST(WrenProcessPosix, EachReadEndsWithAChunkEndAfterItsLines) {
  // A line split across reads (even between its CR and LF), a last line without a break, and a
  // megabyte-long line all arrive whole; every line is followed by a chunk end before the run
  // returns, so a listener that buffers lines never holds one back.
  const size_t kHuge = 1024 * 1024;
  const std::string script =
      "-c \"printf 'first\\r'; sleep 0.2; printf '\\nsecond\\n'; sleep 0.2; "
      "head -c " + std::to_string(kHuge) + " /dev/zero | tr '\\0' x; printf '\\ntail'\"";
  std::vector<std::string> events;
  std::shared_ptr<IWrenProcess> process = CreateWrenProcess();
  process->SetExecutable("/bin/sh");
  process->SetCommandLine(script);
  process->SetOnStdOut([&](const std::string& line) {
    events.push_back(line.size() == kHuge && line.find_first_not_of('x') == std::string::npos
                         ? "<huge>"
                         : line);
  });
  process->SetOnChunkEnd([&] {
    if (events.empty() || events.back() != "|") events.push_back("|");
  });
  const TWrenProcessResult result = process->Run();
  ASSERT_EQ(result.status, TStatus::Exited) << result.error;
  std::vector<std::string> lines;
  for (const std::string& e : events)
    if (e != "|") lines.push_back(e);
  EXPECT_EQ(lines, (TLines{"first", "second", "<huge>", "tail"}));
  ASSERT_FALSE(events.empty());
  EXPECT_EQ(events.back(), "|");
  // A finished line is passed on with the read that completed it, not held for the next one.
  const auto second = std::find(events.begin(), events.end(), "second");
  ASSERT_NE(second, events.end());
  EXPECT_EQ(*(second + 1), "|");
}

// The block handlers see exactly the lines the line handlers see, whatever the reads cut.
TEST(WrenProcessPosix, BlocksOfLinesHoldWhatLineByLineDelivers) {
  const std::string scripts[] = {
      "printf 'alpha\\r\\nbeta\\n\\nmid\\rcr\\r\\nlast without break'; printf 'w1\\r\\nw2' >&2",
      "printf 'first\\r'; sleep 0.1; printf '\\nsecond\\n'; sleep 0.1; "
      "head -c 1048576 /dev/zero | tr '\\0' x; printf '\\ntail\\r'",
      "(yes out | head -n 30000) & (yes err | head -n 30000 1>&2); wait",
      "",
  };
  for (const std::string& script : scripts) {
    const std::string commandLine = "-c \"" + script + "\"";
    const TRun byLine = RunProgram("/bin/sh", commandLine);
    ASSERT_EQ(byLine.result.status, TStatus::Exited) << script;

    TRun byBlock;
    size_t blocks = 0;
    std::shared_ptr<IWrenProcess> process = CreateWrenProcess();
    process->SetExecutable("/bin/sh");
    process->SetCommandLine(commandLine);
    auto collect = [&blocks](TLines& into) {
      return [&blocks, &into](const std::string_view* lines, size_t count) {
        ++blocks;
        for (size_t i = 0; i < count; ++i) into.emplace_back(lines[i]);
      };
    };
    process->SetOnStdOutLines(collect(byBlock.out));
    process->SetOnStdErrLines(collect(byBlock.err));
    byBlock.result = process->Run();
    ASSERT_EQ(byBlock.result.status, TStatus::Exited) << script;
    EXPECT_EQ(byBlock.out, byLine.out) << script;
    EXPECT_EQ(byBlock.err, byLine.err) << script;
    EXPECT_LE(blocks, byLine.out.size() + byLine.err.size()) << script;
    if (byLine.out.size() > 1000) {
      EXPECT_LT(blocks * 10, byLine.out.size()) << script;
    }
  }
}

TEST(WrenProcessPosix, ExitCodesArePassedThrough) {
  TTempDir dir;
  for (int code : {0, 1, 3, 255}) {
    const std::string tool = InstallRecorder(dir.Path(), "tool", {{"exit", code}});
    const TRun run = RunProgram(tool, "");
    EXPECT_EQ(run.result.status, TStatus::Exited) << code;
    EXPECT_EQ(run.result.exitCode, code);
  }
  const TRun killed = RunProgram("/bin/sh", "-c \"kill -KILL $$\"");
  EXPECT_EQ(killed.result.status, TStatus::Exited);
  EXPECT_EQ(killed.result.exitCode, 128 + SIGKILL);
}

TEST(WrenProcessPosix, MissingOrNonExecutableProgramIsNotFound) {
  TTempDir dir;
  const fs::path text = dir.Path() / "notes.txt";
  std::ofstream(text) << "#!/bin/sh\necho hi\n";
  fs::permissions(text, fs::perms::owner_read | fs::perms::owner_write);
  for (const std::string& exe : {(dir.Path() / "no-such-tool").string(),
                                 std::string("wren-no-such-program-on-path"), text.string(),
                                 dir.Path().string(), std::string()}) {
    const TRun run = RunProgram(exe, "a b");
    EXPECT_EQ(run.result.status, TStatus::NotFound) << exe;
    EXPECT_FALSE(run.result.error.empty()) << exe;
  }
}

TEST(WrenProcessPosix, WindowsProgramRunsThroughTheManagedRuntime) {
  TTempDir dir;
  const std::string record = (dir.Path() / "mono.json").string();
  const std::string mono = InstallRecorder(dir.Path(), "fake-mono", {{"out", record}});
  // No execute bit: Windows programs do not carry one, mono reads them.
  const std::string exe = (dir.Path() / "Tool.exe").string();
  std::ofstream(exe, std::ios::binary) << std::string("MZ\x90\0\x03\0", 6);
  fs::permissions(exe, fs::perms::owner_read | fs::perms::owner_write);

  {
    TScopedEnv env("MARROWBY_MONO", mono);
    const TRun run = RunProgram(exe, R"(/nologo "a b" c\)");
    ASSERT_EQ(run.result.status, TStatus::Exited) << run.result.error;
    EXPECT_EQ(ReadJson(record)["argv"], json({mono, exe, "/nologo", "a b", "c\\"}));
  }
  {
    TScopedEnv env("MARROWBY_MONO", (dir.Path() / "no-mono").string());
    const TRun run = RunProgram(exe, "");
    EXPECT_EQ(run.result.status, TStatus::NotFound);
    EXPECT_NE(run.result.error.find("no-mono"), std::string::npos) << run.result.error;
  }
}

// The same file rewritten between runs, from a script to a Windows program and back: each run
// goes by what the file holds at that moment.
TEST(WrenProcessPosix, RewrittenProgramIsLookedAtAgain) {
  TTempDir dir;
  const std::string record = (dir.Path() / "mono.json").string();
  const std::string mono = InstallRecorder(dir.Path(), "fake-mono", {{"out", record}});
  const TScopedEnv env("MARROWBY_MONO", mono);
  const std::string exe = (dir.Path() / "Tool.exe").string();
  const TWrenProcessReuse reuse;
  for (const bool windows : {false, true, false, true}) {
    SCOPED_TRACE(windows ? "windows" : "script");
    fs::remove(record);
    std::ofstream(exe, std::ios::binary | std::ios::trunc)
        << (windows ? std::string("MZ\x90\0\x03\0", 6) : std::string("#!/bin/sh\necho native\n"));
    fs::permissions(exe, fs::perms::owner_all);
    const TRun run = RunProgram(exe, "x");
    ASSERT_EQ(run.result.status, TStatus::Exited) << run.result.error;
    EXPECT_EQ(fs::exists(record), windows);
    EXPECT_EQ(run.out, windows ? TLines{} : TLines{"native"});
  }
}

TEST(WrenProcessPosix, RealMonoRunsAWindowsProgram) {
  // mcs.exe lives beside the mono install: <prefix>/bin/mono, <prefix>/lib/mono/4.5/mcs.exe.
  const char* pathVar = std::getenv("PATH");
  fs::path mono;
  std::stringstream dirs(pathVar ? pathVar : "");
  for (std::string entry; mono.empty() && std::getline(dirs, entry, ':');) {
    if (!entry.empty() && ::access((fs::path(entry) / "mono").c_str(), X_OK) == 0) {
      mono = fs::path(entry) / "mono";
    }
  }
  ASSERT_FALSE(mono.empty()) << "mono is not installed";
  const fs::path mcs = fs::canonical(mono).parent_path().parent_path() / "lib/mono/4.5/mcs.exe";
  ASSERT_TRUE(fs::exists(mcs)) << mcs;

  const TRun run = RunProgram(mcs.string(), "--version");
  ASSERT_EQ(run.result.status, TStatus::Exited) << run.result.error;
  EXPECT_EQ(run.result.exitCode, 0);
  ASSERT_FALSE(run.out.empty());
  EXPECT_NE(run.out[0].find("Mono C# compiler"), std::string::npos) << run.out[0];
}

TEST(WrenProcessPosix, RunsLeaveNoDescriptorsOpen) {
  auto openFds = [] {
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
  };
  TTempDir dir;
  const std::string tool = InstallRecorder(dir.Path(), "tool", {{"stdout", "x\n"}, {"exit", 2}});
  const auto before = openFds();
  RunProgram(tool, "a");
  RunProgram(tool, "", (dir.Path() / "gone").string());
  RunProgram((dir.Path() / "missing").string(), "");
  RunProgram("sleep", "30", "", [] { return true; });
  EXPECT_EQ(openFds(), before);
}

TEST(WrenProcessPosix, StopTerminatesThenKillsTheWholeGroup) {
  TScopedEnv grace("MARROWBY_KILL_GRACE_MS", "300");
  TTempDir dir;
  const std::string tool = InstallRecorder(
      dir.Path(), "stubborn",
      {{"ignoreTerm", true}, {"spawnChild", true}, {"sleepMs", 30000}, {"stdout", "started\n"}});
  const std::string childPidFile = tool + ".child.pid";

  const auto start = std::chrono::steady_clock::now();
  const TRun run = RunProgram(tool, "", "", [&] {
    return std::chrono::steady_clock::now() - start > std::chrono::milliseconds(300) &&
           fs::exists(childPidFile);
  });
  ASSERT_EQ(run.result.status, TStatus::Stopped) << run.result.error;
  // SIGTERM was ignored, so only the kill ended it.
  EXPECT_EQ(run.result.exitCode, 128 + SIGKILL);
  EXPECT_EQ(run.out, TLines{"started"});

  const pid_t recorderPid = ReadJson(tool + ".argv.json")["pid"].get<pid_t>();
  const pid_t childPid = std::stoi(ReadText(childPidFile));
  EXPECT_TRUE(ProcessGone(recorderPid));
  EXPECT_TRUE(EndsSoon(childPid)) << "the recorder's child outlived the run";
}

TEST(WrenProcessPosix, ThrowingHandlerStillEndsTheProgram) {
  std::shared_ptr<IWrenProcess> process = CreateWrenProcess();
  process->SetExecutable("/bin/sh");
  process->SetCommandLine("-c \"echo $$; exec sleep 30\"");
  pid_t pid = 0;
  process->SetOnStdOut([&](const std::string& line) {
    pid = std::stoi(line);
    throw std::runtime_error("handler failed");
  });
  EXPECT_THROW(process->Run(), std::runtime_error);
  ASSERT_GT(pid, 0);
  EXPECT_TRUE(ProcessGone(pid));
}

TEST(WrenProcessPosix, StopSendsSigtermFirst) {
  const TRun run = RunProgram("sleep", "30", "", [] { return true; });
  EXPECT_EQ(run.result.status, TStatus::Stopped);
  EXPECT_EQ(run.result.exitCode, 128 + SIGTERM);
}

// Whatever the program leaves behind dies with the run: a background child holding the pipes, and
// one that left the process group with setsid, whether the run ends, is stopped, or the host
// itself is killed.
TEST(WrenProcessPosix, NoDescendantOutlivesTheRunOrTheHost) {
  TTempDir dir;
  const std::string pids = (dir.Path() / "pids").string();
  const std::string script =
      "-c \"setsid sleep 30 & echo $! >> " + pids + "; sleep 30 & echo $! >> " + pids + "; %s\"";
  auto lines = [&] {
    const std::string text = ReadText(pids);
    return std::count(text.begin(), text.end(), '\n');
  };
  auto startedPids = [&] {
    std::vector<pid_t> found;
    std::istringstream in(ReadText(pids));
    for (pid_t pid; in >> pid;) found.push_back(pid);
    fs::remove(pids);
    return found;
  };
  auto expectAllEnd = [&](const std::vector<pid_t>& started) {
    ASSERT_EQ(started.size(), 2u);
    for (pid_t pid : started) EXPECT_TRUE(EndsSoon(pid)) << pid << " outlived the run";
  };

  char text[512];
  std::snprintf(text, sizeof text, script.c_str(), "exit 0");
  const TRun ended = RunProgram("/bin/sh", text);
  EXPECT_EQ(ended.result.status, TStatus::Exited) << ended.result.error;
  expectAllEnd(startedPids());

  std::snprintf(text, sizeof text, script.c_str(), "exec sleep 30");
  const TRun stopped = RunProgram("/bin/sh", text, "", [&] { return lines() == 2; });
  EXPECT_EQ(stopped.result.status, TStatus::Stopped) << stopped.result.error;
  expectAllEnd(startedPids());

  // A host killed outright never gets to end the run itself.
  const pid_t host = ::fork();
  if (host == 0) {
    RunProgram("/bin/sh", text);
    ::_exit(0);
  }
  for (int i = 0; i < 500 && lines() < 2; ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  ::kill(host, SIGKILL);
  ::waitpid(host, nullptr, 0);
  expectAllEnd(startedPids());
}


// The helper process that started the program: its parent.
pid_t SupervisorOf(const TRun& run) {
  if (run.out.empty()) return -1;
  return static_cast<pid_t>(std::stol(run.out[0]));
}

// Reuse keeps one helper for run after run, and each run still ends with nothing it started
// left over, a setsid grandchild included.
TEST(WrenProcessPosix, ReuseKeepsTheHelperAndStillCleansUpEachRun) {
  TTempDir dir;
  const std::string pids = (dir.Path() / "pids").string();
  const std::string script =
      "-c \"echo $PPID; setsid sleep 30 & echo $! >> " + pids + "; sleep 30 & echo $! >> " + pids +
      "\"";
  for (const bool reuse : {true, false}) {
    SCOPED_TRACE(reuse ? "reuse" : "no reuse");
    std::optional<TWrenProcessReuse> scope;
    if (reuse) scope.emplace();
    std::vector<pid_t> supervisors;
    for (int i = 0; i < 3; ++i) {
      const TRun run = RunProgram("/bin/sh", script);
      ASSERT_EQ(run.result.status, TStatus::Exited) << run.result.error;
      EXPECT_EQ(run.result.exitCode, 0);
      supervisors.push_back(SupervisorOf(run));
      std::istringstream in(ReadText(pids));
      fs::remove(pids);
      int count = 0;
      for (pid_t pid; in >> pid; ++count) EXPECT_TRUE(EndsSoon(pid)) << pid << " outlived run " << i;
      EXPECT_EQ(count, 2);
    }
    EXPECT_EQ(supervisors[0] == supervisors[1] && supervisors[1] == supervisors[2], reuse);
    EXPECT_NE(supervisors[0], ::getpid());
  }
}

TEST(WrenProcessPosix, ConcurrentRunsEachGetTheirOwnOutputAndExitCode) {
  const TWrenProcessReuse reuse;
  constexpr int kThreads = 3;
  std::vector<std::vector<TRun>> runs(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([t, &runs] {
      const std::string id = std::to_string(t + 1);
      for (int i = 0; i < 4; ++i)
        runs[t].push_back(RunProgram(
            "/bin/sh", "-c \"echo out" + id + "; sleep 0.05; echo err" + id + " >&2; exit " + id + "\""));
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (int t = 0; t < kThreads; ++t) {
    const std::string id = std::to_string(t + 1);
    for (const TRun& run : runs[t]) {
      ASSERT_EQ(run.result.status, TStatus::Exited) << run.result.error;
      EXPECT_EQ(run.result.exitCode, t + 1);
      EXPECT_EQ(run.out, TLines{"out" + id});
      EXPECT_EQ(run.err, TLines{"err" + id});
    }
  }
}

// The host's environment and current directory are read at each run, not when the helper began.
TEST(WrenProcessPosix, EachRunGetsTheHostsEnvironmentAndDirectoryOfTheMoment) {
  const TWrenProcessReuse reuse;
  TTempDir dir;
  const fs::path home = fs::current_path();
  struct TCase {
    const char* value;  // null: unset
    const char* subdir;
  };
  for (const TCase& c : {TCase{"one", "a"}, TCase{"two words", "b c"}, TCase{nullptr, "a"},
                         TCase{"", "b c"}}) {
    fs::create_directories(dir.Path() / c.subdir);
    if (c.value) {
      ::setenv("WREN_REUSE_PROBE", c.value, 1);
    } else {
      ::unsetenv("WREN_REUSE_PROBE");
    }
    fs::current_path(dir.Path() / c.subdir);
    const TRun run =
        RunProgram("/bin/sh", "-c \"echo ${WREN_REUSE_PROBE-unset}; pwd\"");
    fs::current_path(home);
    ASSERT_EQ(run.result.status, TStatus::Exited) << run.result.error;
    ASSERT_EQ(run.out.size(), 2u);
    EXPECT_EQ(run.out[0], c.value ? c.value : "unset");
    EXPECT_EQ(run.out[1], (dir.Path() / c.subdir).string());
  }
  ::unsetenv("WREN_REUSE_PROBE");

  // An environment bigger than one message to the helper arrives whole.
  const std::string big(100000, 'x');
  const TScopedEnv big1("WREN_BIG_1", big), big2("WREN_BIG_2", big), big3("WREN_BIG_3", big);
  const TRun run = RunProgram("/bin/sh", "-c \"echo ${#WREN_BIG_1} ${#WREN_BIG_3}\"");
  ASSERT_EQ(run.result.status, TStatus::Exited) << run.result.error;
  EXPECT_EQ(run.out, TLines{"100000 100000"});
}

// A helper killed from outside, between runs or during one: that run ends without an exit code,
// its program with it, and the next run gets a new helper.
TEST(WrenProcessPosix, KilledHelperGivesWayToANewOne) {
  const TWrenProcessReuse reuse;
  const TRun first = RunProgram("/bin/sh", "-c \"echo $PPID\"");
  const pid_t helper = SupervisorOf(first);
  ASSERT_GT(helper, 0) << first.result.error;

  ::kill(helper, SIGKILL);
  siginfo_t info{};
  ::waitid(P_PID, helper, &info, WEXITED | WNOWAIT);  // dead, not yet reaped
  const TRun second = RunProgram("/bin/sh", "-c \"echo $PPID\"");
  ASSERT_EQ(second.result.status, TStatus::Exited) << second.result.error;
  EXPECT_EQ(second.result.exitCode, 0);
  const pid_t nextHelper = SupervisorOf(second);
  EXPECT_GT(nextHelper, 0);
  EXPECT_NE(nextHelper, helper);

  // Now during a run: the program's line names its helper and itself.
  pid_t program = 0;
  std::shared_ptr<IWrenProcess> process = CreateWrenProcess();
  process->SetExecutable("/bin/sh");
  process->SetCommandLine("-c \"echo $PPID $$; exec sleep 30\"");
  process->SetOnStdOut([&](const std::string& line) {
    std::istringstream in(line);
    pid_t running = 0;
    in >> running >> program;
    EXPECT_EQ(running, nextHelper);
    ::kill(running, SIGKILL);
  });
  const TWrenProcessResult killed = process->Run();
  EXPECT_EQ(killed.status, TStatus::Exited) << killed.error;
  EXPECT_EQ(killed.exitCode, -1);
  ASSERT_GT(program, 0);
  EXPECT_TRUE(EndsSoon(program)) << "the program outlived its helper";

  const TRun third = RunProgram("/bin/sh", "-c \"echo $PPID; exit 4\"");
  ASSERT_EQ(third.result.status, TStatus::Exited) << third.result.error;
  EXPECT_EQ(third.result.exitCode, 4);
  EXPECT_NE(SupervisorOf(third), nextHelper);
}

// How a run ends, as the helper reports it: alone, with a signal, with a background process
// (in the group or not, still writing output or silent) that the run still kills, or with a
// start that failed inside the helper.
TEST(WrenProcessPosix, EveryWayARunEndsIsReportedAndCleanedUp) {
  const TWrenProcessReuse reuse;
  TTempDir dir;
  const std::string pids = (dir.Path() / "pids").string();
  const fs::path badFormat = dir.Path() / "bad-format";
  std::ofstream(badFormat) << std::string("\x7f" "ELF\x01\x01", 6);
  fs::permissions(badFormat, fs::perms::owner_all);
  struct TCase {
    std::string exe;
    std::string commandLine;
    TStatus status;
    int exitCode;
    TLines out;
    int leftovers;  // pids the program wrote to the pids file
  };
  const std::string record = " echo $! >> " + pids + ";";
  const TCase cases[] = {
      {"/bin/sh", "-c \"echo alone; exit 7\"", TStatus::Exited, 7, {"alone"}, 0},
      {"/bin/sh", "-c \"echo hit; kill -TERM $$\"", TStatus::Exited, 128 + SIGTERM, {"hit"}, 0},
      {"/bin/sh", "-c \"sleep 30 &" + record + " kill -KILL $$\"", TStatus::Exited, 128 + SIGKILL,
       {}, 1},
      // The grandchild left the group and still holds the output when the program exits: its
      // later line is read, then it is killed.
      {"/bin/sh",
       "-c \"setsid sh -c 'sleep 0.2; echo late; exec sleep 30' &" + record + " echo early\"",
       TStatus::Exited, 0, {"early", "late"}, 1},
      // A silent one that let go of the output is killed all the same.
      {"/bin/sh", "-c \"setsid sleep 30 > /dev/null 2>&1 &" + record + " exit 2\"", TStatus::Exited,
       2, {}, 1},
      {badFormat.string(), "", TStatus::Failed, -1, {}, 0},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.commandLine.empty() ? c.exe : c.commandLine);
    const TRun run = RunProgram(c.exe, c.commandLine);
    EXPECT_EQ(run.result.status, c.status) << run.result.error;
    EXPECT_EQ(run.result.exitCode, c.exitCode);
    EXPECT_EQ(run.out, c.out);
    if (c.status == TStatus::Failed) {
      EXPECT_NE(run.result.error.find("cannot start " + c.exe + ": "), std::string::npos)
          << run.result.error;
    }
    std::istringstream in(fs::exists(pids) ? ReadText(pids) : "");
    fs::remove(pids);
    int count = 0;
    for (pid_t pid; in >> pid; ++count) EXPECT_TRUE(EndsSoon(pid)) << pid << " outlived the run";
    EXPECT_EQ(count, c.leftovers);
  }
  // The helper that saw all of that still serves runs.
  const TRun after = RunProgram("/bin/sh", "-c \"exit 5\"");
  EXPECT_EQ(after.result.exitCode, 5) << after.result.error;
}

// A stop that comes as the program exits by itself may cross the helper's report of the end;
// the helper is then idle and the stray request must not disturb the next run.
TEST(WrenProcessPosix, StopCrossingTheEndLeavesTheHelperReady) {
  const TWrenProcessReuse reuse;
  const pid_t helper = SupervisorOf(RunProgram("/bin/sh", "-c \"echo $PPID\""));
  ASSERT_GT(helper, 0);
  for (int i = 0; i < 20; ++i) {
    SCOPED_TRACE(i);
    // Whether the stop or the end came first is up to the scheduler.
    const TRun stopped = RunProgram("/bin/true", "", "", [] { return true; });
    EXPECT_TRUE(stopped.result.status == TStatus::Stopped ||
                stopped.result.status == TStatus::Exited)
        << stopped.result.error;
    const TRun next = RunProgram("/bin/sh", "-c \"echo $PPID; exit 3\"");
    ASSERT_EQ(next.result.status, TStatus::Exited) << next.result.error;
    EXPECT_EQ(next.result.exitCode, 3);
    EXPECT_EQ(SupervisorOf(next), helper);
  }
}

// The program gets standard input, output and error and nothing else of the host or its helper,
// and every processor the host may use: the helper keeps to one during a run, the program must not.
TEST(WrenProcessPosix, ProgramGetsOnlyTheStandardDescriptorsAndTheHostsProcessors) {
  std::ifstream status("/proc/self/status");
  std::string hostCpus;
  for (std::string line; std::getline(status, line);)
    if (line.rfind("Cpus_allowed_list:", 0) == 0) hostCpus = line;
  ASSERT_FALSE(hostCpus.empty());
  for (const bool reuse : {false, true}) {
    std::optional<TWrenProcessReuse> scope;
    if (reuse) scope.emplace();
    for (int i = 0; i < 2; ++i) {
      const TRun run = RunProgram(
          "/bin/sh", "-c \"ls /proc/$$/fd; grep Cpus_allowed_list: /proc/self/status\"");
      ASSERT_EQ(run.result.status, TStatus::Exited) << run.result.error;
      EXPECT_EQ(run.out, (TLines{"0", "1", "2", hostCpus})) << (reuse ? "reuse" : "no reuse");
    }
  }
}

// A host may be started with signals ignored or blocked (by a parent that ignores SIGCHLD or
// SIGPIPE and execs it, or by nohup): its programs still start with those signals at their
// default and none blocked, and their exit codes still come back. Run in a forked copy, so
// that this process keeps its own signals, with an alarm in case the run never ends.
TEST(WrenProcessPosix, ProgramGetsDefaultSignalsWhateverTheHostInherited) {
  for (const bool reuse : {false, true}) {
    int report[2];
    ASSERT_EQ(::pipe(report), 0);
    const pid_t copy = ::fork();
    if (copy == 0) {
      ::close(report[0]);
      ::alarm(20);
      struct sigaction ignore {};
      ignore.sa_handler = SIG_IGN;
      for (int sig : {SIGCHLD, SIGPIPE, SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        ::sigaction(sig, &ignore, nullptr);
      sigset_t blocked;
      sigemptyset(&blocked);
      sigaddset(&blocked, SIGUSR2);
      sigaddset(&blocked, SIGTERM);
      ::sigprocmask(SIG_BLOCK, &blocked, nullptr);
      std::optional<TWrenProcessReuse> scope;
      if (reuse) scope.emplace();
      std::string text;
      for (int code : {0, 3}) {
        const TRun run = RunProgram(
            "/bin/sh", "-c \"grep -E '^Sig(Ign|Blk)' /proc/self/status; exit " +
                           std::to_string(code) + "\"");
        text += std::to_string(static_cast<int>(run.result.status)) + " " +
                std::to_string(run.result.exitCode);
        for (const std::string& line : run.out) text += "\n" + line;
        text += "\n";
      }
      (void)!::write(report[1], text.data(), text.size());
      ::_exit(0);
    }
    ::close(report[1]);
    std::string text;
    char buffer[512];
    for (ssize_t got; (got = ::read(report[0], buffer, sizeof buffer)) > 0;)
      text.append(buffer, got);
    ::close(report[0]);
    int status = 0;
    ::waitpid(copy, &status, 0);
    EXPECT_TRUE(WIFEXITED(status)) << "the run never ended (" << (reuse ? "reuse" : "no reuse")
                                   << ")";
    const std::string exited = std::to_string(static_cast<int>(TStatus::Exited));
    const std::string lines = "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n";
    EXPECT_EQ(text, exited + " 0\n" + lines + exited + " 3\n" + lines)
        << (reuse ? "reuse" : "no reuse");
  }
}

// A forked copy of the host starts its own helper and leaves the host's one serving the host.
TEST(WrenProcessPosix, ForkedHostDoesNotShareTheHelper) {
  const TWrenProcessReuse reuse;
  const pid_t helper = SupervisorOf(RunProgram("/bin/sh", "-c \"echo $PPID\""));
  ASSERT_GT(helper, 0);
  int report[2];
  ASSERT_EQ(::pipe(report), 0);
  const pid_t copy = ::fork();
  if (copy == 0) {
    const TRun run = RunProgram("/bin/sh", "-c \"echo $PPID\"");
    const pid_t seen = run.result.status == TStatus::Exited ? SupervisorOf(run) : -1;
    (void)!::write(report[1], &seen, sizeof seen);
    ::_exit(0);
  }
  ::close(report[1]);
  pid_t seenByCopy = 0;
  ASSERT_EQ(::read(report[0], &seenByCopy, sizeof seenByCopy), static_cast<ssize_t>(sizeof seenByCopy));
  ::close(report[0]);
  ::waitpid(copy, nullptr, 0);
  EXPECT_GT(seenByCopy, 0);
  EXPECT_NE(seenByCopy, helper);
  EXPECT_EQ(SupervisorOf(RunProgram("/bin/sh", "-c \"echo $PPID\"")), helper);
}

}  // namespace
}  // namespace wren
