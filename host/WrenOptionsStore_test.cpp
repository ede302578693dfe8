#include "WrenOptionsStore.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "WrenFiles.h"

namespace wren {
namespace {

namespace fs = std::filesystem;

/// A temporary directory removed at the end of the test.
struct TTempDir {
  TTempDir() {
    path = fs::temp_directory_path() /
           ("wren_options_" + std::to_string(getpid()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(path);
  }
  ~TTempDir() { fs::remove_all(path); }
  fs::path path;
};

/// An options object with two values; counts its saves.
class TTestOptions : public TWrenOptionsObject {
 public:
  static std::string StaticClassName() { return "TTestOptions"; }
  std::string GetOptionKey() const override { return "Test.Options"; }
  std::string GetOptionsName() const override { return "Test Options"; }
  std::string GetOptionsCategory() const override { return "Tools"; }
  void LoadOptions(IWrenOptionsReader& reader) override {
    path = reader.ReadString("Path", "none");
    level = reader.ReadString("Level", "1");
  }
  void SaveOptions(IWrenOptionsWriter& writer) override {
    ++saves;
    writer.WriteString("Path", path);
    writer.WriteString("Level", level);
  }
  std::string path;
  std::string level;
  int saves = 0;
};

class TOtherOptions : public TTestOptions {
 public:
  static std::string StaticClassName() { return "TOtherOptions"; }
  std::string GetOptionKey() const override { return "Other"; }
  std::string GetOptionsName() const override { return "Other"; }
};

TEST(WrenOptionsStore, SavesAndLoadsBackValuesInOrder) {
  TTempDir dir;
  const std::string file = (dir.path / "nested" / "deeper" / "options.xml").string();
  TWrenOptionsStore store;
  std::string error;
  ASSERT_TRUE(store.Load(file, error)) << "a missing file is an empty store: " << error;
  EXPECT_TRUE(store.Keys().empty());

  store.Set("Microsoft.NET", "SDKVersion", "v2.0");
  store.Set("NUnit", "Path", "/opt/nunit <2> & \"more\"");
  store.Set("microsoft.net", "sdkversion", "v4.0");  // same key and name, other case
  store.Set("Microsoft.NET", "Blank", "  ");
  store.Set("Microsoft.NET", "Empty", "");
  ASSERT_TRUE(store.Save(error)) << error;

  TWrenOptionsStore loaded;
  ASSERT_TRUE(loaded.Load(file, error)) << error;
  EXPECT_EQ(loaded.Keys(), (std::vector<std::string>{"Microsoft.NET", "NUnit"}));
  EXPECT_EQ(loaded.Values("MICROSOFT.NET"),
            (std::vector<std::pair<std::string, std::string>>{
                {"SDKVersion", "v4.0"}, {"Blank", "  "}, {"Empty", ""}}));
  EXPECT_EQ(loaded.Get("nunit", "PATH", "?"), "/opt/nunit <2> & \"more\"");

  std::unique_ptr<IWrenOptionsReader> reader = loaded.Reader("NUnit");
  EXPECT_EQ(reader->ReadString("Path", "?"), "/opt/nunit <2> & \"more\"");
  EXPECT_EQ(reader->ReadString("Missing", "fallback"), "fallback");
  EXPECT_EQ(loaded.Reader("NoSuchKey")->ReadString("Path", "d"), "d");
  loaded.Writer("NUnit")->WriteString("path", "/usr/bin");
  EXPECT_EQ(loaded.Get("NUnit", "Path", ""), "/usr/bin");
}

TEST(WrenOptionsStore, RejectsMalformedFilesWithTheLine) {
  TTempDir dir;
  fs::create_directories(dir.path);
  struct TCase {
    const char* text;
    const char* part;
  };
  const TCase cases[] = {
      {"<MarrowbyOptions version=\"1\">\n<Options key=\"a\">\n<Value name=\"x\">1</Options>\n",
       ":3: "},
      {"<Other version=\"1\"/>", "<MarrowbyOptions>"},
      {"<MarrowbyOptions version=\"7\"/>", "version '7'"},
  };
  for (const TCase& c : cases) {
    const std::string file = (dir.path / "bad.xml").string();
    std::string error;
    ASSERT_TRUE(WriteFileAtomic(file, c.text, error)) << error;
    TWrenOptionsStore store;
    EXPECT_FALSE(store.Load(file, error)) << c.text;
    EXPECT_NE(error.find(c.part), std::string::npos) << error;
  }
  TWrenOptionsStore unsaved;
  std::string error;
  EXPECT_FALSE(unsaved.Save(error)) << "no file chosen";
}

TEST(WrenOptionsStore, DefaultPathFollowsTheConfigDirectory) {
  const char* oldXdg = std::getenv("XDG_CONFIG_HOME");
  const std::string savedXdg = oldXdg ? oldXdg : "";
  setenv("XDG_CONFIG_HOME", "/cfg", 1);
  EXPECT_EQ(DefaultOptionsPath(), "/cfg/marrowby/options.xml");
  unsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(DefaultOptionsPath(),
            std::string(std::getenv("HOME")) + "/.config/marrowby/options.xml");
  if (oldXdg) setenv("XDG_CONFIG_HOME", savedXdg.c_str(), 1);
}

/// Keeps the process-wide store and registrations as other tests left them.
class WrenOptionsServicesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    savedStore_ = WrenOptionsStore();
    savedRegistrations_ = RegisteredOptions();
    ClearRegisteredOptions();
  }
  void TearDown() override {
    WrenOptionsStore() = savedStore_;
    RegisteredOptions() = savedRegistrations_;
  }

 private:
  TWrenOptionsStore savedStore_;
  std::vector<TWrenRegisteredOptions> savedRegistrations_;
};

TEST_F(WrenOptionsServicesTest, LoadsRegisteredObjectsAndSavesTheModifiedOnes) {
  TTempDir dir;
  fs::create_directories(dir.path);
  const std::string file = (dir.path / "options.xml").string();
  std::string error;
  ASSERT_TRUE(
      WriteFileAtomic(file,
                      "<?xml version=\"1.0\"?>\n<MarrowbyOptions version=\"1\">\n"
                      "  <Options key=\"TEST.OPTIONS\"><Value name=\"path\">/srv/tools</Value>"
                      "</Options>\n</MarrowbyOptions>\n",
                      error))
      << error;
  ASSERT_TRUE(WrenOptionsStore().Load(file, error)) << error;

  WrenOptionsServices().RegisterOptions(OptionsClassOf<TTestOptions>(), "Icon_Tools");
  WrenOptionsServices().RegisterOptions(OptionsClassOf<TOtherOptions>(), "icon_other");
  WrenOptionsServices().RegisterOptions(OptionsClassOf<TTestOptions>(), "Icon_Tools");
  ASSERT_EQ(RegisteredOptions().size(), 2u) << "one instance per class";
  EXPECT_EQ(RegisteredOptions()[0].iconResourceName, "ICON_TOOLS");

  auto found = std::dynamic_pointer_cast<TTestOptions>(
      WrenOptionsServices().FindOptions("test OPTIONS", "tools"));
  ASSERT_TRUE(found);
  EXPECT_EQ(found, RegisteredOptions()[0].instance);
  EXPECT_EQ(found->path, "/srv/tools");
  EXPECT_EQ(found->level, "1") << "a name the file lacks keeps its default";
  EXPECT_FALSE(found->IsModified());
  EXPECT_EQ(WrenOptionsServices().FindOptions("Test Options", "Compilers"), nullptr);

  found->level = "3";
  found->SetModified(true);
  ASSERT_TRUE(SaveModifiedOptions(error)) << error;
  EXPECT_FALSE(found->IsModified());
  EXPECT_EQ(found->saves, 1);
  auto other = std::dynamic_pointer_cast<TTestOptions>(RegisteredOptions()[1].instance);
  EXPECT_EQ(other->saves, 0) << "unmodified objects are not written";

  TWrenOptionsStore reread;
  ASSERT_TRUE(reread.Load(file, error)) << error;
  EXPECT_EQ(reread.Get("Test.Options", "Level", ""), "3");
  EXPECT_EQ(reread.Get("Test.Options", "Path", ""), "/srv/tools");
  EXPECT_EQ(reread.Keys(), (std::vector<std::string>{"TEST.OPTIONS"}));
}

}  // namespace
}  // namespace wren
