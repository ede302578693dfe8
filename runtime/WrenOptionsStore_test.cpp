#include "WrenOptionsStore.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>

#include "TestSupport.h"

namespace wren {
namespace {

/// An options object with two values, under the key and name given; counts its saves.
class TTestOptions : public TWrenOptionsObject {
 public:
  explicit TTestOptions(const std::string& optionKey) : key(optionKey) {}
  std::string GetOptionKey() const override { return key; }
  std::string GetOptionsName() const override { return key + " Options"; }
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
  std::string key, path, level;
  int saves = 0;
};

TEST(WrenOptionsStore, SavesAndLoadsBackValuesInOrderAndServesRegisteredObjects) {
  test::TempDir dir;
  TWrenOptionsStore store;
  std::string error;
  EXPECT_FALSE(store.Save(error)) << "no file chosen";
  ASSERT_TRUE(store.Load(dir / "nested/deeper/options.xml", error))
      << "a missing file is an empty store: " << error;
  EXPECT_TRUE(store.Keys().empty());

  store.Set("Microsoft.NET", "SDKVersion", "v2.0");
  store.Set("NUnit", "Path", "/opt/nunit <2> & \"more\"");
  store.Set("microsoft.net", "sdkversion", "v4.0");  // same key and name, other case
  store.Set("Microsoft.NET", "Blank", "  ");
  store.Set("Microsoft.NET", "Empty", "");
  ASSERT_TRUE(store.Save(error)) << error;

  TWrenOptionsStore loaded;
  ASSERT_TRUE(loaded.Load(dir / "nested/deeper/options.xml", error)) << error;
  EXPECT_EQ(loaded.Keys(), (std::vector<std::string>{"Microsoft.NET", "NUnit"}));
  EXPECT_EQ(loaded.Values("MICROSOFT.NET"),
            (std::vector<std::pair<std::string, std::string>>{
                {"SDKVersion", "v4.0"}, {"Blank", "  "}, {"Empty", ""}}));
  EXPECT_EQ(loaded.Reader("NUnit")->ReadString("path", "?"), "/opt/nunit <2> & \"more\"");
  EXPECT_EQ(loaded.Reader("NoSuchKey")->ReadString("Path", "default"), "default");
  loaded.Writer("nunit")->WriteString("PATH", "/usr/bin");
  EXPECT_EQ(loaded.Get("NUnit", "Path", ""), "/usr/bin");

  // Malformed files are refused with the line or what is wrong.
  const std::pair<const char*, const char*> bad[] = {
      {"<MarrowbyOptions version=\"1\">\n<Options key=\"a\">\n<Value>1</Options>", ":3: "},
      {"<Other version=\"1\"/>", "<MarrowbyOptions>"}, {"<MarrowbyOptions version=\"7\"/>", "'7'"}};
  for (const auto& [text, part] : bad) {
    test::WriteFile(dir / "bad.xml", text);
    EXPECT_FALSE(loaded.Load(dir / "bad.xml", error)) << text;
    EXPECT_NE(error.find(part), std::string::npos) << error;
  }

  // The services: one object per class, loaded from the store, saved only when modified.
  struct TKeep {  // the process-wide store and registrations as other tests left them
    TWrenOptionsStore store = WrenOptionsStore();
    std::vector<TWrenRegisteredOptions> registrations = RegisteredOptions();
    ~TKeep() {
      WrenOptionsStore() = store;
      RegisteredOptions() = registrations;
    }
  } keep;
  ClearRegisteredOptions();
  test::WriteFile(dir / "options.xml",
                  "<MarrowbyOptions version=\"1\"><Options key=\"TEST\"><Value name=\"path\">"
                  "/srv/tools</Value></Options></MarrowbyOptions>\n");
  ASSERT_TRUE(WrenOptionsStore().Load(dir / "options.xml", error)) << error;

  const auto classOf = [](const char* name, const char* key) {
    return TWrenOptionsClass{name, [key] { return std::make_shared<TTestOptions>(key); }};
  };
  WrenOptionsServices().RegisterOptions(classOf("TTest", "Test"), "Icon_Tools");
  WrenOptionsServices().RegisterOptions(classOf("TOther", "Other"), "icon_other");
  WrenOptionsServices().RegisterOptions(classOf("TTest", "Test"), "Icon_Tools");
  ASSERT_EQ(RegisteredOptions().size(), 2u);
  EXPECT_EQ(RegisteredOptions()[0].iconResourceName, "ICON_TOOLS");

  auto found = std::dynamic_pointer_cast<TTestOptions>(
      WrenOptionsServices().FindOptions("test OPTIONS", "tools"));
  ASSERT_TRUE(found);
  EXPECT_EQ(found->path, "/srv/tools");
  EXPECT_EQ(found->level, "1") << "a name the file lacks keeps its default";
  EXPECT_EQ(WrenOptionsServices().FindOptions("Test Options", "Compilers"), nullptr);

  found->level = "3";
  found->SetModified(true);
  ASSERT_TRUE(SaveModifiedOptions(error)) << error;
  EXPECT_FALSE(found->IsModified());
  EXPECT_EQ(found->saves, 1);
  EXPECT_EQ(std::dynamic_pointer_cast<TTestOptions>(RegisteredOptions()[1].instance)->saves, 0)
      << "unmodified objects are not written";
  TWrenOptionsStore reread;
  ASSERT_TRUE(reread.Load(dir / "options.xml", error)) << error;
  EXPECT_EQ(reread.Values("Test"), (std::vector<std::pair<std::string, std::string>>{
                                       {"path", "/srv/tools"}, {"Level", "3"}}));
}

/// What tells a rewritten file from an untouched one, even one rewritten with the same bytes.
struct TFileState {
  ino_t inode = 0;
  timespec mtime{};
  std::string bytes;
  bool operator==(const TFileState& o) const {
    return inode == o.inode && mtime.tv_sec == o.mtime.tv_sec &&
           mtime.tv_nsec == o.mtime.tv_nsec && bytes == o.bytes;
  }
};

TFileState StateOf(const std::string& path) {
  struct stat st {};
  EXPECT_EQ(::stat(path.c_str(), &st), 0) << path;
  return {st.st_ino, st.st_mtim, test::ReadFile(path)};
}

TEST(WrenOptionsStore, WritesTheUsersFileOnlyWhenAValueChanged) {
  struct TKeep {
    TWrenOptionsStore store = WrenOptionsStore();
    std::vector<TWrenRegisteredOptions> registrations = RegisteredOptions();
    ~TKeep() {
      WrenOptionsStore() = store;
      RegisteredOptions() = registrations;
    }
  } keep;
  ClearRegisteredOptions();
  test::TempDir dir;
  const std::string path = dir / "options.xml";
  // Laid out by hand, unlike what a save writes, so any rewrite shows in the bytes too.
  test::WriteFile(path,
                  "<MarrowbyOptions version=\"1\">\n\t<Options key=\"Test\">"
                  "<Value name=\"Path\">/srv</Value><Value name=\"Level\">2</Value>"
                  "</Options>\n</MarrowbyOptions>\n");
  std::string error;
  ASSERT_TRUE(WrenOptionsStore().Load(path, error)) << error;
  WrenOptionsServices().RegisterOptions(
      {"TTest", [] { return std::make_shared<TTestOptions>("Test"); }}, "");
  auto& options = dynamic_cast<TTestOptions&>(*RegisteredOptions()[0].instance);
  const TFileState before = StateOf(path);

  // Nothing modified; modified but holding the same values; the same value set again.
  ASSERT_TRUE(SaveModifiedOptions(error)) << error;
  EXPECT_EQ(StateOf(path), before);
  options.SetModified(true);
  ASSERT_TRUE(SaveModifiedOptions(error)) << error;
  EXPECT_EQ(StateOf(path), before);
  EXPECT_FALSE(options.IsModified());
  WrenOptionsStore().Set("test", "LEVEL", "2");
  ASSERT_TRUE(WrenOptionsStore().Save(error)) << error;
  EXPECT_EQ(StateOf(path), before);

  // A changed value is written, once.
  options.level = "3";
  options.SetModified(true);
  ASSERT_TRUE(SaveModifiedOptions(error)) << error;
  const TFileState after = StateOf(path);
  EXPECT_NE(after.bytes, before.bytes);
  EXPECT_NE(after.bytes.find(">3</Value>"), std::string::npos) << after.bytes;
  ASSERT_TRUE(WrenOptionsStore().Save(error)) << error;
  EXPECT_EQ(StateOf(path), after);

  // With no file and nothing set, none is made; a value set makes it.
  const std::string fresh = dir / "config/options.xml";
  ASSERT_TRUE(WrenOptionsStore().Load(fresh, error)) << error;
  ASSERT_TRUE(WrenOptionsStore().Save(error)) << error;
  EXPECT_FALSE(std::filesystem::exists(fresh));
  WrenOptionsStore().Set("Test", "Path", "");
  ASSERT_TRUE(WrenOptionsStore().Save(error)) << error;
  EXPECT_TRUE(std::filesystem::exists(fresh));
}

}  // namespace
}  // namespace wren
