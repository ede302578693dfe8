// Files reached through an open folder: the walk, the status, the read and the batched rewrite
// by leaf name must see and do what the same operations by path do.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "TestSupport.h"
#include "WrenFiles.h"

namespace wren {
namespace {

namespace fs = std::filesystem;

class WrenFolder : public ::testing::Test {
 protected:
  // The batch as on a disk, whatever file system the temporary folder is on.
  void SetUp() override { SetWriteBatchDefersInMemory(true); }
  void TearDown() override {
    SetAtomicWriteFailAfter(SIZE_MAX);
    SetWriteBatchDefersInMemory(false);
  }
  void Write(const std::string& name, const std::string& bytes) const {
    test::WriteFile(dir_ + name, bytes);
  }
  std::string Read(const std::string& name) const { return test::ReadFile(dir_ + name); }
  std::vector<std::string> Entries(const std::string& sub = "") const {
    std::vector<std::string> names;
    for (const auto& e : fs::directory_iterator(dir_ + sub)) names.push_back(e.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }

  const test::TempDir temp_;
  const std::string dir_ = temp_.path();
};

// Every file below dir, by path, as the updater walked before it kept folders open.
void PathWalk(const std::string& dir, std::vector<std::string>& files) {
  for (const TWrenFindData& found : FindFileNames(dir + "*.*", true)) {
    if (!found.isDirectory)
      files.push_back(dir + found.name);
    else if (found.name != "." && found.name != "..")
      PathWalk(dir + found.name + "/", files);
  }
}

void FolderWalk(TWrenFolder& folder, std::vector<std::string>& files) {
  for (const TWrenFindData& found : FindFileNames(folder, "*.*", true)) {
    if (!found.isDirectory) {
      files.push_back(folder.Path() + found.name);
      // The status by name is the status by path.
      const TWrenFileStatus a = FileStatus(folder, found.name);
      const TWrenFileStatus b = FileStatus(folder.Path() + found.name);
      EXPECT_EQ(std::tie(a.exists, a.isLink, a.inode, a.size),
                std::tie(b.exists, b.isLink, b.inode, b.size))
          << folder.Path() + found.name;
    } else if (found.name != "." && found.name != "..") {
      if (const TWrenFolderRef sub = OpenSubfolder(folder, found.name)) FolderWalk(*sub, files);
    }
  }
}

// Deep folders, odd names, a linked folder and a link looping back up: the walk by folder lists
// the same files, the same number of times, as the walk by path (which a loop ends by the
// system's limit on links in one path).
TEST_F(WrenFolder, WalkListsWhatPathsList) {
  std::string deep;
  for (int i = 0; i < 60; ++i) deep += "d" + std::to_string(i) + "/";
  Write(deep + "bottom.cs", "x");
  for (const std::string& odd : {std::string("sp ace.cs"), std::string("new\nline.cs"),
                                 std::string("bad\xff\xfe.cs"), std::string("-dash.cs"),
                                 std::string("100%.cs"), std::string("back\\slash.cs")})
    Write("odd/" + odd, "y");
  Write("real/inner.cs", "z");
  ASSERT_EQ(::symlink("../real", (dir_ + "odd/linked").c_str()), 0);
  ASSERT_EQ(::symlink(".", (dir_ + "real/loop").c_str()), 0);
  ASSERT_EQ(::symlink("nowhere", (dir_ + "odd/dangling").c_str()), 0);

  std::vector<std::string> byPath, byFolder;
  PathWalk(dir_, byPath);
  TWrenFolder root(dir_);
  FolderWalk(root, byFolder);
  EXPECT_EQ(byFolder, byPath);
  const auto inner = std::count_if(byFolder.begin(), byFolder.end(), [](const std::string& f) {
    return f.size() > 8 && f.compare(f.size() - 8, 8, "inner.cs") == 0;
  });
  EXPECT_GT(inner, 40);  // the loop was followed to the limit, and no further
  EXPECT_LT(inner, 100);
  EXPECT_NE(std::find(byFolder.begin(), byFolder.end(), dir_ + deep + "bottom.cs"), byFolder.end());

  // A second listing of the same open folder reads it again from the start.
  TWrenFolder odd(dir_ + "odd/");
  EXPECT_EQ(FindFileNames(odd, "*.cs", false).size(), 6u);
  EXPECT_EQ(FindFileNames(odd, "*.cs", false).size(), 6u);
  EXPECT_EQ(FindFileNames(odd, "", false).size(), 0u);
}

// A folder keeps naming the same directory when its path changes under the walk; one that is
// removed fails every operation with a message naming the file.
TEST_F(WrenFolder, RenamedOrRemovedWhileWalked) {
  Write("a/x.cs", "old x");
  Write("b/y.cs", "old y");
  auto a = std::make_shared<TWrenFolder>(dir_ + "a/");
  auto b = std::make_shared<TWrenFolder>(dir_ + "b/");
  ASSERT_EQ(FindFileNames(*a, "*.cs", false).size(), 1u);
  ASSERT_EQ(FindFileNames(*b, "*.cs", false).size(), 1u);
  fs::rename(dir_ + "a", dir_ + "moved");
  fs::remove_all(dir_ + "b");

  std::string bytes, error;
  const TWrenFileStatus x = FileStatus(*a, "x.cs");
  ASSERT_TRUE(x.exists);
  ASSERT_TRUE(ReadFileBytes(*a, "x.cs", x, bytes, error)) << error;
  EXPECT_EQ(bytes, "old x");
  {
    TWrenWriteBatch batch;
    ASSERT_TRUE(WriteFileAtomic(a, "x.cs", x, "new x", error)) << error;
    ASSERT_TRUE(batch.Commit(error)) << error;
  }
  EXPECT_EQ(Read("moved/x.cs"), "new x");
  EXPECT_EQ(Entries("moved"), (std::vector<std::string>{"x.cs"}));

  EXPECT_FALSE(FileStatus(*b, "y.cs").exists);
  EXPECT_FALSE(ReadFileBytes(*b, "y.cs", TWrenFileStatus(), bytes, error));
  EXPECT_NE(error.find(dir_ + "b/y.cs"), std::string::npos) << error;
  EXPECT_FALSE(WriteFileAtomic(b, "y.cs", TWrenFileStatus(), "new y", error));
  EXPECT_NE(error.find(dir_ + "b/y.cs"), std::string::npos) << error;
  for (const TWrenFindData& found : FindFileNames(*b, "*.*", true)) EXPECT_TRUE(found.isDirectory);
  EXPECT_EQ(OpenSubfolder(*b, "c"), nullptr);
}

// Rewrites by name under a batch: read back as their new bytes before the commit, the newer of
// two writes wins, a new file appears at the commit, a link is written through, a read-only
// file or a directory is refused with the messages writes by path give.
TEST_F(WrenFolder, BatchedRewritesByName) {
  Write("f/a.cs", "old a");
  Write("f/target.cs", "old target");
  ASSERT_EQ(::symlink("target.cs", (dir_ + "f/link.cs").c_str()), 0);
  Write("f/locked.cs", "locked");
  ASSERT_EQ(::chmod((dir_ + "f/locked.cs").c_str(), 0444), 0);
  fs::create_directory(dir_ + "f/sub");
  ASSERT_EQ(::chmod((dir_ + "f/a.cs").c_str(), 0640), 0);
  auto f = std::make_shared<TWrenFolder>(dir_ + "f/");
  std::string bytes, error;
  {
    TWrenWriteBatch batch;
    const TWrenFileStatus a = FileStatus(*f, "a.cs");
    ASSERT_TRUE(WriteFileAtomic(f, "a.cs", a, "first", error)) << error;
    ASSERT_TRUE(WriteFileAtomic(f, "a.cs", a, "second", error)) << error;
    ASSERT_TRUE(ReadFileBytes(*f, "a.cs", FileStatus(*f, "a.cs"), bytes, error)) << error;
    EXPECT_EQ(bytes, "second");
    EXPECT_EQ(Read("f/a.cs"), "old a");
    ASSERT_TRUE(WriteFileAtomic(f, "a.cs.bak", FileStatus(*f, "a.cs.bak"), "backup", error));
    EXPECT_FALSE(fs::exists(dir_ + "f/a.cs.bak"));
    ASSERT_TRUE(WriteFileAtomic(f, "link.cs", FileStatus(*f, "link.cs"), "via link", error));

    EXPECT_FALSE(WriteFileAtomic(f, "locked.cs", FileStatus(*f, "locked.cs"), "x", error));
    EXPECT_EQ(error, dir_ + "f/locked.cs is read only");
    std::string byPath;
    EXPECT_FALSE(WriteFileAtomic(dir_ + "f/sub", "x", byPath));
    EXPECT_FALSE(WriteFileAtomic(f, "sub", FileStatus(*f, "sub"), "x", error));
    EXPECT_EQ(error, byPath);
    ASSERT_TRUE(batch.Commit(error)) << error;
  }
  EXPECT_EQ(Read("f/a.cs"), "second");
  EXPECT_EQ(Read("f/a.cs.bak"), "backup");
  EXPECT_EQ(Read("f/target.cs"), "via link");
  EXPECT_TRUE(fs::is_symlink(dir_ + "f/link.cs"));
  struct stat st {};
  ASSERT_EQ(::stat((dir_ + "f/a.cs").c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 07777, 0640u);
  EXPECT_EQ(Entries("f"), (std::vector<std::string>{"a.cs", "a.cs.bak", "link.cs", "locked.cs",
                                                    "sub", "target.cs"}));
  // The permission bits stay, whether or not the umask would clear some of them.
  const mode_t umask = ::umask(022);
  for (const mode_t mode : {0600u, 0666u, 0757u, 01644u}) {
    ASSERT_EQ(::chmod((dir_ + "f/a.cs").c_str(), mode), 0);
    ASSERT_TRUE(WriteFileAtomic(f, "a.cs", FileStatus(*f, "a.cs"), "moded", error)) << error;
    ASSERT_EQ(::stat((dir_ + "f/a.cs").c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 07777, mode);
  }
  ::umask(umask);
  EXPECT_TRUE(DeleteFileIn(*f, "a.cs.bak"));
  EXPECT_FALSE(DeleteFileIn(*f, "sub"));
  EXPECT_FALSE(DeleteFileIn(*f, "a.cs.bak"));
}

// A run killed before its commit, or half way through a rewrite in place, leaves files that a
// later listing of the folder clears or rolls back; a live run's scratch file is left alone.
TEST_F(WrenFolder, CrashRecoveryRelativeToTheFolder) {
  Write("w/a.cs", "old a");
  Write("w/b.cs", "old b");
  ASSERT_EQ(::link((dir_ + "w/b.cs").c_str(), (dir_ + "w/b-link.cs").c_str()), 0);
  EXPECT_EQ(test::InChild([&]() -> int {
              auto w = std::make_shared<TWrenFolder>(dir_ + "w/");
              TWrenWriteBatch batch;
              std::string e;
              WriteFileAtomic(w, "a.cs", FileStatus(*w, "a.cs"), "new a", e);
              ::_exit(0);  // before the commit
            }),
            0);
  EXPECT_EQ(Entries("w").size(), 4u);  // a temporary file
  // The next run's first write in the folder clears it, then dies rewriting in place.
  EXPECT_EQ(test::InChild([&] {
              auto w = std::make_shared<TWrenFolder>(dir_ + "w/");
              SetAtomicWriteFailAfter(3, true);
              std::string e;
              WriteFileAtomic(w, "b.cs", FileStatus(*w, "b.cs"), "brand new b", e);
              return 0;  // not reached
            }),
            137);
  EXPECT_EQ(Read("w/b.cs"), "bra b");  // torn: three new bytes over the old ones
  ASSERT_EQ(Entries("w").size(), 4u);  // the journal

  const std::string live = ".a.cs.tmp" + std::to_string(::getpid()) + "-1-2";
  Write("w/" + live, "a live run's");
  TWrenFolder w(dir_ + "w/");
  std::vector<std::string> names;
  for (const TWrenFindData& found : FindFileNames(w, "*.*", false)) names.push_back(found.name);
  EXPECT_EQ(names, (std::vector<std::string>{"a.cs", "b-link.cs", "b.cs"}));
  EXPECT_EQ(Read("w/a.cs"), "old a");
  EXPECT_EQ(Read("w/b-link.cs"), "old b");  // rolled back through its other name too
  EXPECT_EQ(Entries("w"), (std::vector<std::string>{live, "a.cs", "b-link.cs", "b.cs"}));
  EXPECT_EQ(Read("w/" + live), "a live run's");
}

}  // namespace
}  // namespace wren
