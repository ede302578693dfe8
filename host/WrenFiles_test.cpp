#include "WrenFiles.h"
#include "TestSupport.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <tuple>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

namespace wren {
namespace {

namespace fs = std::filesystem;

/// A fresh directory under /tmp, removed with everything in it at the end of the test.
class WrenFilesPosix : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string templ = base_ + "/wren-files-XXXXXX";
    ASSERT_NE(::mkdtemp(templ.data()), nullptr);
    dir_ = templ;
    SetWriteBatchDefersInMemory(deferInMemory_);  // by default the batch as on a disk
  }
  void TearDown() override {
    SetAtomicWriteFailAfter(SIZE_MAX);
    SetWriteBatchDefersInMemory(false);
    std::error_code ec;
    fs::remove_all(dir_, ec);
  }
  std::string Path(const std::string& name) const { return dir_ + "/" + name; }
  void Write(const std::string& name, const std::string& bytes, mode_t mode = 0644) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
    ASSERT_EQ(::chmod(Path(name).c_str(), mode), 0);
  }
  std::string Read(const std::string& name) const {
    std::string bytes, error;
    EXPECT_TRUE(ReadFileBytes(Path(name), bytes, error)) << error;
    return bytes;
  }
  mode_t Mode(const std::string& name) const {
    struct stat st {};
    EXPECT_EQ(::stat(Path(name).c_str(), &st), 0);
    return st.st_mode & 07777;
  }
  std::vector<std::string> Entries() const {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(dir_)) names.push_back(e.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }

  std::string dir_;
  std::string base_ = "/tmp";
  bool deferInMemory_ = true;
};

/// The same in /dev/shm, a tmpfs, with batches as they are there.
class WrenFilesInMemory : public WrenFilesPosix {
 protected:
  void SetUp() override {
    struct statfs shm {};
    ASSERT_EQ(::statfs("/dev/shm", &shm), 0) << "a tmpfs at /dev/shm is needed";
    ASSERT_EQ(static_cast<unsigned long>(shm.f_type), TMPFS_MAGIC) << "/dev/shm is not a tmpfs";
    base_ = "/dev/shm";
    deferInMemory_ = false;
    WrenFilesPosix::SetUp();
  }
};

std::vector<std::string> Names(const std::vector<TWrenFindData>& found) {
  std::vector<std::string> names;
  for (const auto& f : found) names.push_back(f.name);
  return names;
}

TEST(WrenFilesMask, WindowsSemantics) {
  struct Case {
    const char* name;
    const char* mask;
    bool matches;
  } cases[] = {
      {"Project.CS", "*.cs", true},   {"project.cs", "*.CS", true},   {"a.cs.bak", "*.cs", false},
      {"x.cs", "?.cs", true},         {"xy.cs", "?.cs", false},       {".cs", "?.cs", false},
      {"abc", "a?c", true},           {"ac", "a?c", false},           {"a", "a?", false},
      {"Makefile", "*.*", true},      {"a.b.c", "*.*", true},         {".", "*.*", true},
      {"..", "*.*", true},            {"v4", "v*.*", true},           {"v4.0.30319", "v*.*", true},
      {"x4", "v*.*", false},          {"readme", "readme.*", true},   {"readme.txt", "readme.*", true},
      {"readmee", "readme.*", false}, {"anything", "*", true},        {"", "*", true},
      {"abc", "a*b*c", true},         {"aXbYc", "A*B*C", true},       {"abd", "a*b*c", false},
      {"mississippi", "*sip*", true}, {"mississippi", "m*i*s*z", false},
      {"caf\xC3\xA9", "caf?", true},  // '?' is one character, even a two-byte one
      {"caf\xC3\xA9", "caf??", false}, {"noext", "*.txt", false},    {"a", "", false},
      {"", "*.*", true},              {"\xC3\xA9t\xC3\xA9", "*t?", true}, {"\xC3\xA9t\xC3\xA9", "*\xC3\xA9", true},
      {"a\x80", "?", true},          // a stray continuation byte belongs to the character before
      {"ab", "*\x80", false},         {"a*\x80", "a*\x80", true},  // "*\x80" is no star
      // A star and plain text: the name's end, case aside, whatever bytes come before it.
      {".cs", "*.cs", true},          {"cs", "*.cs", false},          {"A.Cs", "*.cS", true},
      {"\xFF\xFE.cs", "*.cs", true},  {"\xC3.cs", "*.cs", true},      {"x.c", "*.cs", false},
      {"ab.", "*.", true},            {"ab", "*.", false},            {"caf\xC3\xA9.CS", "*\xC3\xA9.cs", true},
      {"x.csx", "*.cs", false},       {"x.cs", "*x.cs", true},        {"a.cs", "*ba.cs", false},
  };
  for (const Case& c : cases)
    EXPECT_EQ(MatchesMask(c.name, c.mask), c.matches) << c.name << " ~ " << c.mask;
}

TEST_F(WrenFilesPosix, FindFilesSortsAndListsDots) {
  for (const char* name : {"b", "A", "a2", "a", "B.txt", "v4.0", "_x"}) Write(name, "1234");
  fs::create_directory(Path("Sub"));
  fs::create_directory(Path("v2.0"));
  ASSERT_EQ(::chmod(Path("a2").c_str(), 0444), 0);

  // Upper-cased order as NTFS gives it ("_x" after the letters); "A" and "a" differ only in
  // case and keep byte order.
  EXPECT_EQ(Names(FindFiles(Path("*"), false)),
            (std::vector<std::string>{"A", "a", "a2", "b", "B.txt", "v4.0", "_x"}));
  EXPECT_EQ(Names(FindFiles(Path("*.*"), true)),
            (std::vector<std::string>{".", "..", "A", "a", "a2", "b", "B.txt", "Sub", "v2.0", "v4.0",
                                      "_x"}));
  EXPECT_EQ(Names(FindFiles(Path("*"), true, true)),
            (std::vector<std::string>{".", "..", "Sub", "v2.0"}));
  EXPECT_EQ(Names(FindFiles(Path("v*.*"), true, true)), (std::vector<std::string>{"v2.0"}));
  EXPECT_EQ(Names(FindFiles(Path("B*"), true)), (std::vector<std::string>{"b", "B.txt"}));
  EXPECT_EQ(Names(FindFiles(Path("?"), false)), (std::vector<std::string>{"A", "a", "b"}));

  // A backslash separates too; a missing directory and an empty mask find nothing.
  std::string backslashed = dir_ + "\\a*";
  EXPECT_EQ(Names(FindFiles(backslashed, false)), (std::vector<std::string>{"A", "a", "a2"}));
  EXPECT_TRUE(FindFiles(Path("missing/*"), true).empty());
  EXPECT_TRUE(FindFiles(dir_ + "/", true).empty());

  auto found = FindFiles(Path("a*"), true);
  ASSERT_EQ(found.size(), 3u);
  EXPECT_FALSE(found[0].readOnly);
  EXPECT_EQ(found[0].size, 4u);
  EXPECT_TRUE(found[2].readOnly);
  auto dirs = FindFiles(Path("Sub"), true);
  ASSERT_EQ(dirs.size(), 1u);
  EXPECT_TRUE(dirs[0].isDirectory);

  // The lean listing finds the same entries, links taken for what they name (a dangling one is
  // a file).
  ASSERT_EQ(::symlink("Sub", Path("LinkToSub").c_str()), 0);
  ASSERT_EQ(::symlink("gone", Path("dangling").c_str()), 0);
  for (const auto& [mask, dirs, onlyDirs] :
       {std::tuple{"*", false, false}, {"*.*", true, false}, {"*", true, true}, {"?", true, false}}) {
    SCOPED_TRACE(mask);
    const auto full = FindFiles(Path(mask), dirs, onlyDirs);
    const auto lean = FindFileNames(Path(mask), dirs, onlyDirs);
    ASSERT_EQ(Names(lean), Names(full));
    for (size_t i = 0; i < full.size(); ++i) EXPECT_EQ(lean[i].isDirectory, full[i].isDirectory);
  }
  EXPECT_EQ(Names(FindFileNames(Path("*"), true, true)),
            (std::vector<std::string>{".", "..", "LinkToSub", "Sub", "v2.0"}));

  // No directory part: the current directory.
  const fs::path cwd = fs::current_path();
  fs::current_path(dir_);
  EXPECT_EQ(Names(FindFiles("a?", false)), (std::vector<std::string>{"a2"}));
  fs::current_path(cwd);
}

TEST_F(WrenFilesPosix, ExistenceAndReadOnly) {
  Write("rw", "x", 0644);
  Write("ro", "x", 0444);
  Write("group-writable-only", "x", 0464);
  Write("owner-write-only", "x", 0200);
  fs::create_directory(Path("dir"));
  struct Case {
    const char* name;
    bool file, directory, readOnly;
  } cases[] = {
      {"rw", true, false, false},
      {"ro", true, false, true},
      {"group-writable-only", true, false, true},  // only the owner bit counts
      {"owner-write-only", true, false, false},
      {"dir", false, true, false},
      {"missing", false, false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(FileExists(Path(c.name)), c.file);
    EXPECT_EQ(DirectoryExists(Path(c.name)), c.directory);
    EXPECT_EQ(IsReadOnly(Path(c.name)), c.readOnly);
  }
  EXPECT_FALSE(FileExists(""));
  EXPECT_FALSE(DirectoryExists(""));
}

TEST_F(WrenFilesPosix, ReadFileBytes) {
  const std::string binary("a\0b\r\n\xFF", 6);
  Write("bin", binary);
  EXPECT_EQ(Read("bin"), binary);
  std::string bytes, error;
  EXPECT_FALSE(ReadFileBytes(Path("missing"), bytes, error));
  EXPECT_NE(error.find(Path("missing")), std::string::npos) << error;
  EXPECT_NE(error.find("No such file or directory"), std::string::npos) << error;
}

TEST_F(WrenFilesPosix, AtomicWriteReplacesAndKeepsMode) {
  Write("target.cs", "old content", 0640);
  std::string error;
  ASSERT_TRUE(WriteFileAtomic(Path("target.cs"), "new content\n", error)) << error;
  EXPECT_EQ(Read("target.cs"), "new content\n");
  EXPECT_EQ(Mode("target.cs"), 0640u);

  ASSERT_TRUE(WriteFileAtomic(Path("fresh.txt"), "", error)) << error;
  EXPECT_EQ(Read("fresh.txt"), "");

  // Through a symbolic link the file it names is rewritten and the link stays.
  ASSERT_EQ(::symlink("target.cs", Path("link.cs").c_str()), 0);
  ASSERT_TRUE(WriteFileAtomic(Path("link.cs"), "via link", error)) << error;
  EXPECT_TRUE(fs::is_symlink(Path("link.cs")));
  EXPECT_EQ(Read("target.cs"), "via link");
  EXPECT_EQ(Entries(), (std::vector<std::string>{"fresh.txt", "link.cs", "target.cs"}));
}

TEST_F(WrenFilesPosix, AtomicWriteFailuresLeaveTargetUntouched) {
  const std::string original("original\0bytes", 14);
  Write("target.cs", original, 0600);
  std::string error;

  for (size_t failAfter : {size_t{0}, size_t{3}, size_t{99}}) {
    SCOPED_TRACE(failAfter);
    SetAtomicWriteFailAfter(failAfter);
    error.clear();
    EXPECT_FALSE(WriteFileAtomic(Path("target.cs"), std::string(100, 'x'), error));
    EXPECT_NE(error.find(Path("target.cs")), std::string::npos) << error;
    EXPECT_NE(error.find("No space left on device"), std::string::npos) << error;
    EXPECT_EQ(Read("target.cs"), original);
    EXPECT_EQ(Entries(), (std::vector<std::string>{"target.cs"}));  // no temporary file left
  }
  SetAtomicWriteFailAfter(100);  // exactly enough room
  EXPECT_TRUE(WriteFileAtomic(Path("target.cs"), std::string(100, 'x'), error)) << error;
  SetAtomicWriteFailAfter(SIZE_MAX);
  Write("target.cs", original, 0600);

  // A file the user marked read-only is never replaced, whoever runs the test.
  ASSERT_EQ(::chmod(Path("target.cs").c_str(), 0444), 0);
  EXPECT_FALSE(WriteFileAtomic(Path("target.cs"), "new", error));
  EXPECT_EQ(error, Path("target.cs") + " is read only");
  EXPECT_EQ(Read("target.cs"), original);
  EXPECT_EQ(Mode("target.cs"), 0444u);

  EXPECT_FALSE(WriteFileAtomic(Path("no-dir/file.txt"), "x", error));
  EXPECT_NE(error.find(Path("no-dir/file.txt")), std::string::npos) << error;
  EXPECT_NE(error.find("No such file or directory"), std::string::npos) << error;
  EXPECT_EQ(Entries(), (std::vector<std::string>{"target.cs"}));
}

// Rewrites under a batch stay beside their targets until the commit, read back as their new
// bytes, and then replace the targets together.
TEST_F(WrenFilesPosix, WriteBatchReplacesOnCommit) {
  Write("a.cs", "old a", 0640);
  Write("b.cs", "old b");
  auto onDisk = [&](const std::string& name) {
    std::ifstream in(Path(name), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  };
  std::string error;
  {
    TWrenWriteBatch batch;
    ASSERT_TRUE(WriteFileAtomic(Path("a.cs"), "new a", error)) << error;
    ASSERT_TRUE(WriteFileAtomic(Path("./a.cs"), "newer a", error)) << error;  // one pending file
    ASSERT_TRUE(WriteFileAtomic(Path("b.cs"), "new b", error)) << error;
    ASSERT_TRUE(WriteFileAtomic(Path("fresh.txt"), "first", error)) << error;
    ASSERT_TRUE(WriteFileAtomic(Path("fresh.txt"), "fresh", error)) << error;
    EXPECT_EQ(onDisk("a.cs"), "old a");
    EXPECT_FALSE(fs::exists(Path("fresh.txt")));  // a new file appears at the commit
    EXPECT_EQ(Read("a.cs"), "newer a");
    EXPECT_EQ(Entries().size(), 5u);  // a.cs, b.cs and three temporary files

    {
      TWrenWriteBatch inner;  // joins the outer batch: its commit replaces nothing
      EXPECT_TRUE(inner.Commit(error));
      EXPECT_EQ(onDisk("b.cs"), "old b");
    }
    ASSERT_TRUE(batch.Commit(error)) << error;
    EXPECT_EQ(onDisk("a.cs"), "newer a");
    EXPECT_EQ(onDisk("b.cs"), "new b");
    EXPECT_EQ(Mode("a.cs"), 0640u);
    EXPECT_EQ(Entries(), (std::vector<std::string>{"a.cs", "b.cs", "fresh.txt"}));

    // A target that cannot be replaced any more is named; the other pending file still lands.
    ASSERT_TRUE(WriteFileAtomic(Path("a.cs"), "third a", error)) << error;
    ASSERT_TRUE(WriteFileAtomic(Path("b.cs"), "third b", error)) << error;
    ASSERT_TRUE(fs::remove(Path("a.cs")));
    ASSERT_TRUE(fs::create_directory(Path("a.cs")));
    EXPECT_FALSE(batch.Commit(error));
    EXPECT_NE(error.find("Cannot replace " + Path("a.cs")), std::string::npos) << error;
    EXPECT_EQ(onDisk("b.cs"), "third b");
    EXPECT_EQ(Entries(), (std::vector<std::string>{"a.cs", "b.cs", "fresh.txt"}));

    // A write failing half way under a batch leaves nothing pending and the target as it was.
    SetAtomicWriteFailAfter(2);
    EXPECT_FALSE(WriteFileAtomic(Path("b.cs"), "fourth b", error));
    SetAtomicWriteFailAfter(SIZE_MAX);
    EXPECT_EQ(Read("b.cs"), "third b");
    ASSERT_TRUE(WriteFileAtomic(Path("fresh.txt"), "left pending", error)) << error;
  }
  // Closing the batch commits what is still pending.
  EXPECT_EQ(onDisk("fresh.txt"), "left pending");
  EXPECT_EQ(Entries(), (std::vector<std::string>{"a.cs", "b.cs", "fresh.txt"}));
}

// On a file system held in memory a batch has nothing to sync: each rewrite lands at once, with
// the same bytes, mode and checks, and leaves no temporary file; a batch on a disk still waits.
TEST_F(WrenFilesInMemory, WriteBatchLandsAtOnce) {
  Write("a.cs", "old a", 0640);
  Write("ro.cs", "read only", 0444);
  std::string error;
  {
    TWrenWriteBatch batch;
    ASSERT_TRUE(WriteFileAtomic(Path("a.cs"), "new a", error)) << error;
    ASSERT_TRUE(WriteFileAtomic(Path("fresh.txt"), "fresh", error)) << error;
    EXPECT_EQ(test::ReadFile(Path("a.cs")), "new a");
    EXPECT_EQ(test::ReadFile(Path("fresh.txt")), "fresh");
    EXPECT_EQ(Mode("a.cs"), 0640u);
    EXPECT_FALSE(WriteFileAtomic(Path("ro.cs"), "x", error));
    EXPECT_EQ(error, Path("ro.cs") + " is read only");
    EXPECT_EQ(Entries(), (std::vector<std::string>{"a.cs", "fresh.txt", "ro.cs"}));

    SetWriteBatchDefersInMemory(true);  // a batch decides once per file system
    ASSERT_TRUE(WriteFileAtomic(Path("a.cs"), "newer a", error)) << error;
    EXPECT_EQ(test::ReadFile(Path("a.cs")), "newer a");
    ASSERT_TRUE(batch.Commit(error)) << error;
  }
  {
    TWrenWriteBatch batch;  // with the hook still set: as on a disk
    ASSERT_TRUE(WriteFileAtomic(Path("a.cs"), "deferred a", error)) << error;
    EXPECT_EQ(test::ReadFile(Path("a.cs")), "newer a");
    EXPECT_EQ(Entries().size(), 4u);  // the temporary file
  }
  EXPECT_EQ(test::ReadFile(Path("a.cs")), "deferred a");
  EXPECT_EQ(Entries(), (std::vector<std::string>{"a.cs", "fresh.txt", "ro.cs"}));
}

// A batch too large to flush file by file syncs whole file systems instead: every file, new or
// rewritten, still lands with its own bytes and no temporary file stays.
TEST_F(WrenFilesPosix, LargeWriteBatchLandsEveryFile) {
  constexpr int kFiles = 40;
  for (int i = 0; i < kFiles; ++i) Write("f" + std::to_string(i), "old", 0600);
  std::string error;
  {
    TWrenWriteBatch batch;
    for (int i = 0; i < kFiles; ++i) {
      const std::string n = std::to_string(i);
      ASSERT_TRUE(WriteFileAtomic(Path("f" + n + ".bak"), "backup " + n, error)) << error;
      ASSERT_TRUE(WriteFileAtomic(Path("f" + n), "new " + n, error)) << error;
    }
    EXPECT_EQ(Read("f7"), "new 7");
    EXPECT_EQ(Entries().size(), 3u * kFiles);
    ASSERT_TRUE(batch.Commit(error)) << error;
  }
  EXPECT_EQ(Entries().size(), 2u * kFiles);
  for (int i = 0; i < kFiles; ++i) {
    const std::string n = std::to_string(i);
    EXPECT_EQ(Read("f" + n), "new " + n);
    EXPECT_EQ(Read("f" + n + ".bak"), "backup " + n);
    EXPECT_EQ(Mode("f" + n), 0600u);
  }
}

// A rewrite through one name shows through all of them, whatever the writer can and cannot do
// in the file's directory, and a failed one leaves the old content under every name.
TEST_F(WrenFilesPosix, RewriteKeepsHardLinksAndWorksInLockedDirectories) {
  Write("a.cs", "old", 0640);
  ASSERT_EQ(::link(Path("a.cs").c_str(), Path("b.cs").c_str()), 0);
  std::string error;
  ASSERT_TRUE(WriteFileAtomic(Path("a.cs"), "new", error)) << error;
  EXPECT_EQ(Read("b.cs"), "new");
  EXPECT_EQ(Mode("a.cs"), 0640u);
  {
    TWrenWriteBatch batch;
    ASSERT_TRUE(WriteFileAtomic(Path("b.cs"), "batched", error)) << error;
    ASSERT_TRUE(batch.Commit(error)) << error;
  }
  EXPECT_EQ(Read("a.cs"), "batched");
  SetAtomicWriteFailAfter(3);
  EXPECT_FALSE(WriteFileAtomic(Path("a.cs"), "much longer text", error));
  SetAtomicWriteFailAfter(SIZE_MAX);
  EXPECT_NE(error.find("No space left on device"), std::string::npos) << error;
  EXPECT_EQ(Read("b.cs"), "batched");
  EXPECT_EQ(Entries(), (std::vector<std::string>{"a.cs", "b.cs"}));  // no journal left

  // A writable file in a directory the writer may not change, and one of another owner: as root,
  // the test drops to an unprivileged user to be such a writer.
  fs::create_directory(Path("locked"));
  fs::create_directory(Path("recovery"));
  fs::create_directory(Path("open"));
  Write("locked/c.cs", "old c", 0666);
  Write("open/d.cs", "old d", 0666);
  ASSERT_EQ(::chmod(Path("recovery").c_str(), 0777), 0);
  ASSERT_EQ(::chmod(Path("open").c_str(), 0777), 0);
  ASSERT_EQ(::chmod(Path("locked").c_str(), 0555), 0);
  ASSERT_EQ(::chmod(dir_.c_str(), 0755), 0);
  const int code = test::InChild([&] {
    if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0)) return 3;
    ::setenv("MARROWBY_RECOVERY_DIR", Path("recovery").c_str(), 1);
    std::string childError;
    if (WriteFileAtomic(Path("locked/c.cs"), "new c", childError) &&
        WriteFileAtomic(Path("open/d.cs"), "new d", childError))
      return 0;
    std::fprintf(stderr, "%s\n", childError.c_str());
    return 1;
  });
  EXPECT_EQ(code, 0);
  EXPECT_EQ(Read("locked/c.cs"), "new c");
  EXPECT_EQ(Read("open/d.cs"), "new d");
  struct stat st {};
  ASSERT_EQ(::stat(Path("open/d.cs").c_str(), &st), 0);
  EXPECT_EQ(st.st_uid, ::geteuid());  // still the test's, not the writer's
  EXPECT_TRUE(fs::is_empty(Path("recovery")));
  ASSERT_EQ(::chmod(Path("locked").c_str(), 0755), 0);
}

// A run killed while writing leaves files that no selection sees and that the next run removes;
// a torn rewrite in place is rolled back from its journal. Files of a live run are left alone.
TEST_F(WrenFilesPosix, KilledRunLeftoversAreHiddenAndCleanedUp) {
  for (const char* name : {"a.cs", "b.cs", "c.cs"}) Write(name, std::string("old ") + name);
  ASSERT_EQ(::link(Path("c.cs").c_str(), Path("c-link.cs").c_str()), 0);
  EXPECT_EQ(test::InChild([&]() -> int {
              TWrenWriteBatch batch;
              std::string e;
              WriteFileAtomic(Path("a.cs"), "new a", e);
              WriteFileAtomic(Path("b.cs"), "new b", e);
              ::_exit(0);  // ends before the batch commits
            }),
            0);
  EXPECT_EQ(Entries().size(), 6u);  // two temporary files
  // The next run's first write in the directory clears them, then dies rewriting in place.
  EXPECT_EQ(test::InChild([&] {
              SetAtomicWriteFailAfter(5, true);
              std::string e;
              WriteFileAtomic(Path("c.cs"), "brand new c", e);
              return 0;  // not reached
            }),
            137);
  ASSERT_EQ(Entries().size(), 5u);  // the journal
  EXPECT_EQ(Read("a.cs"), "old a.cs");
  std::string torn;
  std::string error;
  ASSERT_TRUE(ReadFileBytes(Path("c.cs"), torn, error));
  EXPECT_EQ(torn, "brand.cs");  // five new bytes over the old ones

  // A live run's temporary file (this process's) stays, but is not listed either.
  std::string live = Path(".d.cs.tmp" + std::to_string(::getpid()) + "-1-2");
  std::ofstream(live) << "pending";
  EXPECT_EQ(Names(FindFiles(Path("*.*"), true)),
            (std::vector<std::string>{".", "..", "a.cs", "b.cs", "c-link.cs", "c.cs"}));
  EXPECT_EQ(Entries(), (std::vector<std::string>{".d.cs.tmp" + std::to_string(::getpid()) + "-1-2",
                                                 "a.cs", "b.cs", "c-link.cs", "c.cs"}));
  EXPECT_EQ(Read("c-link.cs"), "old c.cs");
  fs::remove(live);
}

TEST(WrenFilesScratch, NamesOfTemporaryFiles) {
  struct Case {
    const char* name;
    bool scratch, journal;
    long pid;
  } cases[] = {
      {".a.cs.tmp123-4-567", true, false, 123}, {".a.cs.jrn9-0-0", true, true, 9},
      {".tmp1-2-3", false, false, 0},           {"a.cs.tmp1-2-3", false, false, 0},
      {".a.cs.tmp-2-3", false, false, 0},       {".a.cs.tmp1-2-", false, false, 0},
      {".a.cs.bak1-2-3", false, false, 0},      {".a.cs.tmp1-2x-3", false, false, 0},
      {".x.tmp12-3", false, false, 0},          {".gitignore", false, false, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const auto parsed = ParseScratchFileName(c.name);
    ASSERT_EQ(parsed.has_value(), c.scratch);
    if (parsed) {
      EXPECT_EQ(parsed->journal, c.journal);
      EXPECT_EQ(parsed->pid, c.pid);
    }
  }
}

}  // namespace
}  // namespace wren
