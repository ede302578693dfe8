#include "WrenAssemblyInfoUpdaterAction.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <filesystem>

#include "TestSupport.h"
#include "WrenFiles.h"
#include "runtime/WrenStepHost.h"

namespace wren {
namespace {

using test::ReadFile;
using test::WriteFile;
using testing::PrintToString;

const char kCs[] = "using System.Reflection;\n[assembly: AssemblyVersion(\"1.0.0.0\")]\n";

/// kCs as saved with the given version.
std::string Cs(const std::string& version) {
  return "using System.Reflection;\r\n[assembly: AssemblyVersion(\"" + version + "\")]\r\n";
}

/// An updater action run by a real step host that keeps its log; the named files are written
/// with kCs in a temporary directory and selected in order.
struct Harness {
  explicit Harness(std::initializer_list<std::string> files = {}, TStrings attributes = {}) {
    host.SetStopFlag(&stop);
    host.SetLogSink([this](TWrenLogStream, const std::string& text) { log.push_back(text); });
    action.SetHost(&host);
    action.BackupFiles = false;
    for (const std::string& name : files) {
      WriteFile(tmp / name, kCs);
      action.Selection.push_back(tmp / name);
    }
    action.Attributes = attributes;
  }
  bool Logged(const std::string& part) const {
    return std::any_of(log.begin(), log.end(),
                       [&](auto& line) { return line.find(part) != std::string::npos; });
  }
  void Script(const char* name, const char* text) { action.GetScriptByName(name)->text = text; }

  test::TempDir tmp;
  std::atomic<bool> stop{false};
  TWrenStepHost host;
  TWrenAssemblyInfoUpdaterAction action;
  std::vector<std::string> log;
};

TEST(AssemblyInfoUpdaterAction, WildcardSelectionWithAndWithoutRecurse) {
  Harness h;
  const test::TempDir& tmp = h.tmp;
  for (const char* name : {"a/AssemblyInfo.cs", "a/b/AssemblyInfo.cs", "Z.CS", "m.cs", "notes.txt",
                           "c/deep/er/x.cs", "c/readme.md"})
    WriteFile(tmp / name, kCs);
  h.host.SetVariable("SRC", tmp.path());
  h.action.Selection = {"%SRC%*.cs"};
  h.action.Recurse = true;
  ASSERT_TRUE(h.action.BuildFileList());
  // Sorted without regard to case, directories walked where they fall.
  EXPECT_EQ(h.action.FileList(), (TStrings{tmp / "a/AssemblyInfo.cs", tmp / "a/b/AssemblyInfo.cs",
                                           tmp / "c/deep/er/x.cs", tmp / "m.cs", tmp / "Z.CS"}));
  h.action.Recurse = false;
  ASSERT_TRUE(h.action.BuildFileList());
  EXPECT_EQ(h.action.FileList(), (TStrings{tmp / "m.cs", tmp / "Z.CS"}));

  // A full run with Recurse updates every match and leaves the rest alone.
  h.action.Recurse = true;
  h.action.Attributes = {"AssemblyVersion=\"2.0\""};
  ASSERT_TRUE(h.action.Execute()) << PrintToString(h.log);
  for (const char* name : {"a/AssemblyInfo.cs", "a/b/AssemblyInfo.cs", "c/deep/er/x.cs", "Z.CS"})
    EXPECT_EQ(ReadFile(tmp / name), Cs("2.0")) << name;
  EXPECT_EQ(ReadFile(tmp / "notes.txt"), kCs);
  EXPECT_TRUE(h.Logged("Processing File : " + tmp / "c/deep/er/x.cs"));
}

TEST(AssemblyInfoUpdaterAction, FileNamedTwiceIsProcessedTwice) {
  Harness h({"a.cs", "a.cs"});
  h.action.BackupFiles = true;
  h.Script("OnProcessEntry",
           "if EntryName == 'AssemblyVersion' then EntryValue = EntryValue .. '.1' end");
  ASSERT_TRUE(h.action.Execute()) << PrintToString(h.log);
  EXPECT_EQ(ReadFile(h.tmp / "a.cs"), Cs("1.0.0.0.1.1"));
  EXPECT_EQ(ReadFile(h.tmp / "a.cs.bak"), Cs("1.0.0.0.1"));  // the second pass backs up the first
  EXPECT_EQ(std::count(h.log.begin(), h.log.end(), "Processing File : " + h.tmp / "a.cs"), 2);
}

TEST(AssemblyInfoUpdaterAction, ReadOnlyFileFailsTheRun) {
  Harness h({"a.cs", "ro.cs", "c.cs"}, {"AssemblyVersion='2.0'"});
  ::chmod((h.tmp / "ro.cs").c_str(), 0444);
  h.action.BackupFiles = true;
  EXPECT_FALSE(h.action.Execute());
  EXPECT_TRUE(h.Logged("File : " + h.tmp / "ro.cs" + "- is read only!")) << PrintToString(h.log);
  EXPECT_EQ(ReadFile(h.tmp / "a.cs"), Cs("2.0"));  // single quotes give the file's own quotes
  EXPECT_EQ(ReadFile(h.tmp / "ro.cs"), kCs);
  EXPECT_FALSE(test::Exists(h.tmp / "ro.cs.bak"));
  EXPECT_EQ(ReadFile(h.tmp / "c.cs"), kCs) << "the run stops at the first failure";
}

TEST(AssemblyInfoUpdaterAction, OnProcessFileScriptAddsAnEntryForOneFileOnly) {
  Harness h({"a.cs", "b.cs"}, {"AssemblyVersion=\"3.1\"", "", "AssemblyDelaySign=false"});
  h.Script("OnProcessFile",
           "assert(Action.ClassName == 'TWrenAssemblyInfoUpdaterAction')\n"
           "if FileName:match('a%.cs$') then\n"
           "  AssemblyInfo:AddEntry('AssemblyCompany', 'Acme', true)\n"
           "  AssemblyInfo:RemoveEntry('AssemblyDelaySign')\n"
           "end");
  ASSERT_TRUE(h.action.Execute()) << PrintToString(h.log);
  const std::string region = "#region Assembly Information Added By Marrowby\r\n";
  EXPECT_EQ(ReadFile(h.tmp / "a.cs"),
            Cs("3.1") + region + "[assembly: AssemblyCompany(\"Acme\")]\r\n#endregion\r\n");
  // b.cs gets the list as entered: the script's change applied to a.cs only.
  EXPECT_EQ(ReadFile(h.tmp / "b.cs"),
            Cs("3.1") + region + "[assembly: AssemblyDelaySign(false)]\r\n#endregion\r\n");
}

TEST(AssemblyInfoUpdaterAction, OnProcessEntryScriptChangesAValue) {
  Harness h({}, {"AssemblyVersion=\"1.0.%BUILD%\"", "AssemblyCompany=\"Acme\""});
  WriteFile(h.tmp / "Lib.vb",
            "<Assembly: AssemblyTitle(\"x\")>\n<Assembly: AssemblyVersion(\"1.0\")>\n");
  h.host.SetVariable("BUILD", "77");
  h.action.Selection = {h.tmp / "Lib.vb"};
  h.action.UpdateOnly = true;
  // Every attribute is offered, listed or not, with the listed value when there is one.
  h.Script("OnProcessEntry",
           "if EntryName == 'AssemblyTitle' then\n"
           "  EntryValue = 'Title of ' .. FileName:match('[^/]*$')\n"
           "else EntryValue = EntryValue .. '.1' end");
  ASSERT_TRUE(h.action.Execute()) << PrintToString(h.log);
  // Update only: the missing AssemblyCompany is dropped and no region is written.
  EXPECT_EQ(ReadFile(h.tmp / "Lib.vb"), "<Assembly: AssemblyTitle(\"Title of Lib.vb\")>\r\n"
                                        "<Assembly: AssemblyVersion(\"1.0.77.1\")>\r\n");
  EXPECT_TRUE(h.Logged("Setting Attribute : AssemblyTitle Value : \"Title of Lib.vb\""));
}

TEST(AssemblyInfoUpdaterAction, ScriptErrorFailsTheStepWithItsLine) {
  Harness h({"a.cs"}, {"AssemblyVersion=\"2.0\""});
  h.Script("OnProcessEntry", "local x = 1\nerror('boom')\n");
  EXPECT_FALSE(h.action.Execute());
  EXPECT_TRUE(h.Logged("script OnProcessEntry, line 2: boom")) << PrintToString(h.log);
  EXPECT_EQ(ReadFile(h.tmp / "a.cs"), kCs);
}

TEST(AssemblyInfoUpdaterAction, ExpansionFailures) {
  // In the selection: the step ends without an error result and processes nothing.
  Harness selection;
  selection.action.Selection = {"%NO_SUCH_VARIABLE_X1%/a.cs"};
  EXPECT_TRUE(selection.action.Execute());
  EXPECT_TRUE(selection.Logged("\"Selection\"")) << PrintToString(selection.log);
  EXPECT_FALSE(selection.Logged("Processing File"));
  // In an attribute value: the run fails before the file is touched.
  Harness value({"a.cs"}, {"AssemblyVersion=%NO_SUCH_VARIABLE_X1%"});
  EXPECT_FALSE(value.action.Execute());
  EXPECT_TRUE(value.Logged("\"AttributeValue\"")) << PrintToString(value.log);
  EXPECT_EQ(ReadFile(value.tmp / "a.cs"), kCs);
}

TEST(AssemblyInfoUpdaterAction, FailedSaveLeavesTheOriginalByteIdentical) {
  Harness h({"a.cs"}, {"AssemblyVersion=\"2.0\""});
  const std::string file = h.tmp / "a.cs", original = kCs + std::string(4096, 'x') + "\n";
  WriteFile(file, original);
  SetAtomicWriteFailAfter(100);
  // Puts the writer back however the test ends (the deleter runs for the null pointer too).
  const std::shared_ptr<void> restore(nullptr, [](void*) { SetAtomicWriteFailAfter(SIZE_MAX); });
  EXPECT_FALSE(h.action.Execute());
  EXPECT_EQ(ReadFile(file), original);
  EXPECT_TRUE(h.Logged(file)) << PrintToString(h.log);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(h.tmp.path()), {}), 1)
      << "no temporary file left beside the target";
}

/// The names in dir, sorted; hidden ones too.
std::vector<std::string> Names(const std::string& dir) {
  std::vector<std::string> names;
  for (const auto& e : std::filesystem::directory_iterator(dir)) names.push_back(e.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

// Backups go into the run's batch with the rewrites: after the run each holds its source's old
// lines; a write failing half way leaves that file and its backup as they were; a run killed
// before the commit leaves every source old and no backup, and its temporary files go with the
// next listing.
TEST(AssemblyInfoUpdaterAction, BackupsLandWithTheRewrites) {
  const std::string big = kCs + std::string(4096, 'x') + "\n";
  {
    Harness h({"a.cs", "b.cs", "c.cs"}, {"AssemblyVersion=\"2.0\""});
    h.action.BackupFiles = true;
    WriteFile(h.tmp / "b.cs", big);
    WriteFile(h.tmp / "c.cs.bak", "an old backup");
    ASSERT_TRUE(h.action.Execute()) << PrintToString(h.log);
    for (const char* name : {"a.cs", "c.cs"}) {
      EXPECT_EQ(ReadFile(h.tmp / name), Cs("2.0")) << name;
      EXPECT_EQ(ReadFile(h.tmp / (name + std::string(".bak"))), Cs("1.0.0.0")) << name;
    }
    EXPECT_EQ(ReadFile(h.tmp / "b.cs.bak"), Cs("1.0.0.0") + std::string(4096, 'x') + "\r\n");
    EXPECT_EQ(Names(h.tmp.path()).size(), 6u) << PrintToString(Names(h.tmp.path()));
  }
  {
    // b.cs's backup is the first write too long for the disk: the run stops there.
    Harness h({"a.cs", "b.cs", "c.cs"}, {"AssemblyVersion=\"2.0\""});
    h.action.BackupFiles = true;
    WriteFile(h.tmp / "b.cs", big);
    SetAtomicWriteFailAfter(1000);
    const std::shared_ptr<void> restore(nullptr, [](void*) { SetAtomicWriteFailAfter(SIZE_MAX); });
    EXPECT_FALSE(h.action.Execute());
    EXPECT_EQ(ReadFile(h.tmp / "a.cs"), Cs("2.0"));
    EXPECT_EQ(ReadFile(h.tmp / "a.cs.bak"), Cs("1.0.0.0"));
    EXPECT_EQ(ReadFile(h.tmp / "b.cs"), big);
    EXPECT_EQ(ReadFile(h.tmp / "c.cs"), kCs);
    EXPECT_EQ(Names(h.tmp.path()), (std::vector<std::string>{"a.cs", "a.cs.bak", "b.cs", "c.cs"}));
  }
  {
    Harness h({"a.cs", "b.cs"}, {"AssemblyVersion=\"2.0\""});
    h.action.BackupFiles = true;
    WriteFile(h.tmp / "b.cs", big);
    const pid_t pid = ::fork();
    if (pid == 0) {
      SetWriteBatchDefersInMemory(true);  // a batch as on a disk, wherever TMPDIR is
      SetAtomicWriteFailAfter(1000, true);  // dies as by kill -9 on b.cs's backup
      h.action.Execute();
      ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(pid, &status, 0), pid);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 137);
    EXPECT_EQ(ReadFile(h.tmp / "a.cs"), kCs);
    EXPECT_EQ(ReadFile(h.tmp / "b.cs"), big);
    EXPECT_FALSE(test::Exists(h.tmp / "a.cs.bak"));
    // a.cs's rewrite and backup, and the half of b.cs's backup, wait hidden.
    EXPECT_EQ(Names(h.tmp.path()).size(), 5u) << PrintToString(Names(h.tmp.path()));
    EXPECT_EQ(FindFiles(h.tmp / "*.*", false).size(), 2u);
    EXPECT_EQ(Names(h.tmp.path()), (std::vector<std::string>{"a.cs", "b.cs"}));
  }
}

TEST(AssemblyInfoUpdaterAction, StopRequestProcessesNothing) {
  Harness h({"a.cs"}, {"AssemblyVersion=\"2.0\""});
  h.stop = true;
  EXPECT_TRUE(h.action.Execute());
  EXPECT_EQ(ReadFile(h.tmp / "a.cs"), kCs);
}

// The files of a run are those there before it: backups written (and committed, past a thousand
// pending files) while one selection line is rewritten are not found by the next, and a run
// without backups, which rewrites each file as the walk finds it, still stops at the first
// failure with the later files untouched.
TEST(AssemblyInfoUpdaterAction, ARunRewritesTheFilesThereBeforeIt) {
  Harness h({}, {"AssemblyVersion=\"2.0\""});
  for (int i = 0; i < 501; ++i) WriteFile(h.tmp / ("d/f" + std::to_string(i) + ".cs"), kCs);
  h.action.Selection = {h.tmp / "d/*.cs", h.tmp / "d/*.bak"};
  h.action.BackupFiles = true;
  ASSERT_TRUE(h.action.Execute()) << PrintToString(h.log);
  EXPECT_EQ(h.action.FileList().size(), 501u);
  EXPECT_EQ(ReadFile(h.tmp / "d/f500.cs"), Cs("2.0"));
  EXPECT_EQ(ReadFile(h.tmp / "d/f500.cs.bak"), Cs("1.0.0.0"));
  EXPECT_FALSE(test::Exists(h.tmp / "d/f0.cs.bak.bak"));

  Harness s({}, {"AssemblyVersion=\"2.0\""});
  for (const char* name : {"w/a.cs", "w/b/ro.cs", "w/c.cs"}) WriteFile(s.tmp / name, kCs);
  ::chmod((s.tmp / "w/b/ro.cs").c_str(), 0444);
  s.action.Selection = {s.tmp / "w/*.cs", s.tmp / "w/c.cs"};
  s.action.Recurse = true;
  EXPECT_FALSE(s.action.Execute());
  EXPECT_EQ(ReadFile(s.tmp / "w/a.cs"), Cs("2.0"));
  EXPECT_EQ(ReadFile(s.tmp / "w/c.cs"), kCs);
  EXPECT_EQ(s.action.FileList(), (TStrings{s.tmp / "w/a.cs", s.tmp / "w/b/ro.cs"}));
  EXPECT_EQ(std::count_if(s.log.begin(), s.log.end(),
                          [](const std::string& line) { return line.rfind("Processing", 0) == 0; }),
            2);
}

}  // namespace
}  // namespace wren
