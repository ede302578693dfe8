#include "WrenAssemblyInfoUpdater.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <iterator>

#include "TestSupport.h"

namespace wren {
namespace {

namespace fs = std::filesystem;

using test::TempDir;

std::string ReadBytes(const fs::path& path) { return test::ReadFile(path.string()); }
void WriteBytes(const std::string& path, const std::string& bytes) { test::WriteFile(path, bytes); }

/// Records what the updater tells its callback; may change values and entries.
class RecordingCallBack : public IWrenAssemblyInfoCallBack {
 public:
  void OnProcessFile(const std::string& fileName,
                     const std::shared_ptr<IWrenAssemblyInfoUpdater>& updater) override {
    files.push_back(fileName);
    if (onFile) onFile(*updater);
  }
  void AssemblyInfoProcessMessage(const std::string& message) override {
    messages.push_back(message);
  }
  void AssemblyInfoProcessEntry(const std::string& fileName, const std::string& entryName,
                                std::string& entryValue) override {
    entries.push_back(ExtractName(fileName) + ":" + entryName + "=" + entryValue);
    if (onEntry) onEntry(entryName, entryValue);
  }
  static std::string ExtractName(const std::string& path) { return fs::path(path).filename(); }

  std::vector<std::string> files, messages, entries;
  std::function<void(IWrenAssemblyInfoUpdater&)> onFile;
  std::function<void(const std::string&, std::string&)> onEntry;
};

struct Entry {
  std::string name, value;
  bool quoted;
};

enum class Outcome { Updated, Throws };

/// One golden case: <dir>/<name>.in<ext> processed with the entries must give <name>.out<ext>.
struct GoldenCase {
  std::string dir, name, ext;
  std::vector<Entry> entries;
  bool updateOnly;
  Outcome outcome;
  std::vector<std::string> messages;  // checked when not empty
};

const fs::path kFixtures = fs::path(SOURCE_DIR) / "tests" / "fixtures" / "assemblyinfo";

void RunGolden(const std::vector<GoldenCase>& cases) {
  for (const GoldenCase& c : cases) {
    SCOPED_TRACE(c.dir + "/" + c.name + c.ext);
    TempDir tmp;
    const std::string target = tmp / ("AssemblyInfo" + c.ext);
    fs::copy_file(kFixtures / c.dir / (c.name + ".in" + c.ext), target);
    auto updater = NewAssemblyInfoUpdater(c.updateOnly);
    RecordingCallBack callBack;
    updater->SetCallBack(&callBack);
    for (const Entry& e : c.entries) updater->AddEntry(e.name, e.value, e.quoted);
    if (c.outcome == Outcome::Throws) {
      EXPECT_THROW(updater->ProcessFile(target, false), EStringListError);
    } else {
      EXPECT_TRUE(updater->ProcessFile(target, false));
    }
    EXPECT_EQ(ReadBytes(target), ReadBytes(kFixtures / c.dir / (c.name + ".out" + c.ext)));
    EXPECT_TRUE(updater->GetImplementation()->Entries().empty());
    if (!c.messages.empty()) {
      EXPECT_EQ(callBack.messages, c.messages);
    }
    // No backup was asked for and no temporary file may be left behind.
    EXPECT_EQ(std::distance(fs::directory_iterator(tmp.path()), fs::directory_iterator()), 1);
  }
}

TEST(AssemblyInfoUpdaterGolden, CSharp) {
  RunGolden({
      {"csharp", "examples", ".cs",
       {{"AssemblyVersion", "2.0.0.1", true},
        {"AssemblyKeyFile", "k.snk", true},
        {"assemblytitle", "App", true},
        {"AssemblyDescription", "new", true},
        {"CLSCompliant", "false", false},
        {"AssemblyKeyName", "Other", false},
        {"Foo", "Baz(2)", false}},
       false,
       Outcome::Updated,
       {"Setting Attribute : AssemblyVersion Value : \"2.0.0.1\"",
        "Setting Attribute : AssemblyKeyFile Value : \"k.snk\"",
        "Setting Attribute : AssemblyTitle Value : \"App\"",
        "Setting Attribute : AssemblyDescription Value : \"new\"",
        "Setting Attribute : CLSCompliant Value : false",
        "Setting Attribute : AssemblyKeyName Value : Other",
        "Setting Attribute : Foo Value : Baz(2)"}},
      // An equal value is still rewritten; new lines copy the last attribute's closing text.
      {"csharp", "new_entries", ".cs",
       {{"AssemblyVersion", "1.0.0.0", true},
        {"AssemblyCompany", "Acme", true},
        {"AssemblyCulture", "", true},
        {"AssemblyDelaySign", "false", false}},
       false,
       Outcome::Updated,
       {"Setting Attribute : AssemblyVersion Value : \"1.0.0.0\"", "Processing new Attributes...",
        "Adding Entry : AssemblyCompany Value : \"Acme\"",
        "Adding Entry : AssemblyCulture Value : \"\"",
        "Adding Entry : AssemblyDelaySign Value : false"}},
      {"csharp", "update_only", ".cs",
       {{"AssemblyVersion", "3.0.0.0", true}, {"AssemblyCompany", "Acme", true}},
       true,
       Outcome::Updated,
       {"Setting Attribute : AssemblyVersion Value : \"3.0.0.0\""}},
      {"csharp", "update_only_nothing", ".cs", {{"AssemblyCompany", "Acme", true}}, true,
       Outcome::Updated, {}},
  });
}

TEST(AssemblyInfoUpdaterGolden, VisualBasic) {
  RunGolden({{"vb", "examples", ".vb",
              {{"AssemblyTitle", "App", true}, {"AssemblyCompany", "Acme", true}},
              false,
              Outcome::Updated,
              {}}});
}

TEST(AssemblyInfoUpdaterGolden, Pascal) {
  RunGolden({
      // Only lines above "implementation" are read: the AssemblyCompany below it is added anew.
      {"pascal", "unit", ".pas",
       {{"AssemblyVersion", "1.2.0.0", true},
        {"AssemblyCompany", "Acme", true},
        {"AssemblyProduct", "Tool", true}},
       false,
       Outcome::Updated,
       {"Setting Attribute : AssemblyVersion Value : '1.2.0.0'", "Processing new Attributes...",
        "Adding Entry : AssemblyCompany Value : 'Acme'",
        "Adding Entry : AssemblyProduct Value : 'Tool'"}},
      // The attribute line right above "begin" keeps its place under the new region.
      {"pascal", "program", ".dpr",
       {{"AssemblyVersion", "2.0.0.0", true}, {"AssemblyDescription", "Console tool", true}},
       false,
       Outcome::Updated,
       {}},
      {"pascal", "package", ".dpk", {{"AssemblyCompany", "Acme", true}}, false,
       Outcome::Updated, {}},
      // Without a stop line there is nowhere to insert: the index error reaches the caller.
      {"pascal", "no_stop_line", ".pas",
       {{"AssemblyVersion", "2.0.0.0", true}, {"AssemblyCompany", "Acme", true}},
       false,
       Outcome::Throws,
       {}},
  });
}

TEST(AssemblyInfoUpdaterGolden, JSharpAndCpp) {
  RunGolden({
      {"jsharp", "examples", ".jsl",
       {{"AssemblyVersion", "1.1", true}, {"AssemblyCompany", "Acme", true}},
       false,
       Outcome::Updated,
       {"Setting Attribute : AssemblyVersion Value : \"1.1\"", "Processing new Attributes...",
        "Adding Entry : AssemblyCompany Value : \"Acme\""}},
      // Existing C++ lines match by the name as written; new names gain "Attribute".
      {"cpp", "examples", ".cpp",
       {{"AssemblyVersionAttribute", "2.0.0.1", true},
        {"AssemblyTitle", "Tool", true},
        {"AssemblyCompany", "Acme", true}},
       false,
       Outcome::Updated,
       {"Setting Attribute : AssemblyVersionAttribute Value : \"2.0.0.1\"",
        "Processing new Attributes...", "Adding Entry : AssemblyTitle Value : \"Tool\"",
        "Adding Entry : AssemblyCompany Value : \"Acme\""}},
  });
}

TEST(AssemblyInfoUpdater, NoStopLineSucceedsWhenNothingRemains) {
  TempDir tmp;
  const std::string target = tmp / "Broken.pas";
  fs::copy_file(kFixtures / "pascal" / "no_stop_line.in.pas", target);
  auto updater = NewAssemblyInfoUpdater(false);
  updater->AddEntry("AssemblyVersion", "2.0.0.0", true);
  EXPECT_TRUE(updater->ProcessFile(target, false));
  EXPECT_EQ(ReadBytes(target), "unit Broken;\r\n[assembly: AssemblyVersion('2.0.0.0')]\r\n");
}

TEST(AssemblyInfoUpdater, BracketStyleCarriesAcrossLinesAndFiles) {
  TempDir tmp;
  WriteBytes(tmp / "a.cs", "[assembly: AssemblyVersion(\"1\")]\n[module: UnverifiableCode]\n");
  WriteBytes(tmp / "b.txt", "no attributes here\n");
  WriteBytes(tmp / "c.vb", "Imports System\n");

  auto shared = NewAssemblyInfoUpdater(false);
  // The last bracketed line of a.cs is not an assembly attribute, yet its keyword is reused.
  shared->AddEntry("AssemblyCompany", "Acme", true);
  ASSERT_TRUE(shared->ProcessFile(tmp / "a.cs", false));
  EXPECT_EQ(ReadBytes(tmp / "a.cs"),
            "[assembly: AssemblyVersion(\"1\")]\r\n[module: UnverifiableCode]\r\n"
            "#region Assembly Information Added By Marrowby\r\n"
            "[module: AssemblyCompany(\"Acme\")]\r\n#endregion\r\n");
  // A later file of another language without attribute lines inherits the style.
  shared->AddEntry("AssemblyProduct", "Tool", true);
  ASSERT_TRUE(shared->ProcessFile(tmp / "b.txt", false));
  EXPECT_EQ(ReadBytes(tmp / "b.txt"), "no attributes here\r\n[module: AssemblyProduct(\"Tool\")]\r\n");

  // A fresh updater has nothing to copy: the new line begins with a blank.
  auto fresh = NewAssemblyInfoUpdater(false);
  fresh->AddEntry("AssemblyProduct", "Tool", false);
  ASSERT_TRUE(fresh->ProcessFile(tmp / "c.vb", false));
  EXPECT_EQ(ReadBytes(tmp / "c.vb"),
            "Imports System\r\n#region \"Assembly Information Added By Marrowby\"\r\n"
            " AssemblyProduct(Tool)\r\n#end region\r\n");
}

TEST(AssemblyInfoUpdater, EntriesAddRemoveAndEmptyValues) {
  TempDir tmp;
  WriteBytes(tmp / "a.cs", "// nothing\n");
  auto updater = NewAssemblyInfoUpdater(false);
  TWrenAssemblyInfo* impl = updater->GetImplementation();
  updater->AddEntry("AssemblyVersion", "1.0", true);
  updater->AddEntry("assemblyversion", "2.0", false);  // replaces, whatever the case
  updater->AddEntry("AssemblyVersion", "", true);      // stands beside the earlier one
  updater->AddEntry("AssemblyTitle", "T", true);
  updater->RemoveEntry("ASSEMBLYTITLE");
  updater->RemoveEntry("NotThere");
  ASSERT_EQ(impl->Entries().size(), 2u);
  EXPECT_EQ(impl->Entries()[0].text, "assemblyversion=2.0");
  EXPECT_FALSE(impl->Entries()[0].quoted);
  EXPECT_EQ(impl->Entries()[1].text, "AssemblyVersion=");
  EXPECT_TRUE(impl->Entries()[1].quoted);

  // Both survive to the end of the file; the fresh updater's empty style gives leading blanks.
  ASSERT_TRUE(updater->ProcessFile(tmp / "a.cs", false));
  EXPECT_EQ(ReadBytes(tmp / "a.cs"),
            "// nothing\r\n#region Assembly Information Added By Marrowby\r\n"
            " assemblyversion(2.0)\r\n AssemblyVersion(\"\")\r\n#endregion\r\n");
}

TEST(AssemblyInfoUpdater, MissingReadOnlyAndEmptyFiles) {
  TempDir tmp;
  RecordingCallBack callBack;
  auto updater = NewAssemblyInfoUpdater(false);
  updater->SetCallBack(&callBack);
  TWrenAssemblyInfo* impl = updater->GetImplementation();

  const std::string missing = tmp / "missing.cs";
  updater->AddEntry("AssemblyVersion", "1", true);
  EXPECT_FALSE(updater->ProcessFile(missing, true));
  EXPECT_TRUE(impl->Entries().empty());

  const std::string ro = tmp / "ro.cs";
  WriteBytes(ro, "[assembly: AssemblyVersion(\"1\")]\n");
  ::chmod(ro.c_str(), 0444);
  updater->AddEntry("AssemblyVersion", "2", true);
  EXPECT_FALSE(updater->ProcessFile(ro, true));
  EXPECT_EQ(ReadBytes(ro), "[assembly: AssemblyVersion(\"1\")]\n");
  EXPECT_FALSE(fs::exists(tmp / "ro.cs.bak"));

  // An empty file: no message, no scan, but the backup asked for is still made.
  const std::string empty = tmp / "empty.cs";
  WriteBytes(empty, "");
  updater->AddEntry("AssemblyVersion", "2", true);
  EXPECT_FALSE(updater->ProcessFile(empty, true));
  EXPECT_TRUE(impl->Entries().empty());
  EXPECT_EQ(ReadBytes(empty), "");
  EXPECT_TRUE(fs::exists(tmp / "empty.cs.bak"));

  EXPECT_EQ(callBack.messages,
            (std::vector<std::string>{"File : " + missing + "- does not exist!",
                                      "File : " + ro + "- is read only!"}));
  EXPECT_TRUE(callBack.files.empty());
}

TEST(AssemblyInfoUpdater, BackupHoldsTheLoadedLines) {
  TempDir tmp;
  const std::string file = tmp / "a.cs";
  const std::string bak = tmp / "a.cs.bak";
  auto updater = NewAssemblyInfoUpdater(false);

  // No backup yet: one is written from the lines as loaded (line ends become CR LF).
  WriteBytes(file, "[assembly: AssemblyVersion(\"1\")]\n");
  updater->AddEntry("AssemblyVersion", "2", true);
  ASSERT_TRUE(updater->ProcessFile(file, true));
  EXPECT_EQ(ReadBytes(bak), "[assembly: AssemblyVersion(\"1\")]\r\n");

  // An old writable backup is replaced.
  updater->AddEntry("AssemblyVersion", "3", true);
  ASSERT_TRUE(updater->ProcessFile(file, true));
  EXPECT_EQ(ReadBytes(bak), "[assembly: AssemblyVersion(\"2\")]\r\n");

  // An old backup that cannot be deleted is kept; the file is still processed.
  ::chmod(bak.c_str(), 0444);
  updater->AddEntry("AssemblyVersion", "4", true);
  ASSERT_TRUE(updater->ProcessFile(file, true));
  EXPECT_EQ(ReadBytes(bak), "[assembly: AssemblyVersion(\"2\")]\r\n");
  EXPECT_EQ(ReadBytes(file), "[assembly: AssemblyVersion(\"4\")]\r\n");
}

TEST(AssemblyInfoUpdater, CallBackSeesFilesAndEveryAttribute) {
  TempDir tmp;
  const std::string file = tmp / "a.cs";
  WriteBytes(file,
             "[assembly: AssemblyVersion(\"1.0\")]\n[assembly: AssemblyTitle(\"T\")]\n"
             "[assembly: AssemblyCompany(\"C\")]\n[assembly: Foo( Bar(1))]  // c\n");
  RecordingCallBack callBack;
  callBack.onFile = [](IWrenAssemblyInfoUpdater& u) {
    u.AddEntry("AssemblyCompany", "Acme", true);
    u.RemoveEntry("AssemblyTitle");
  };
  callBack.onEntry = [](const std::string& name, std::string& value) {
    if (name == "AssemblyVersion") value += ".9";
  };
  auto updater = NewAssemblyInfoUpdater(false);
  updater->SetCallBack(&callBack);
  updater->AddEntry("AssemblyTitle", "Dropped by the callback", true);
  ASSERT_TRUE(updater->ProcessFile(file, false));

  EXPECT_EQ(callBack.files, std::vector<std::string>{file});
  // Every attribute is offered, found or not, with the entry's value when there is one.
  EXPECT_EQ(callBack.entries,
            (std::vector<std::string>{"a.cs:AssemblyVersion=1.0", "a.cs:AssemblyTitle=T",
                                      "a.cs:AssemblyCompany=Acme", "a.cs:Foo=Bar(1)"}));
  // The title was neither in the entries nor changed, so its line keeps its bytes.
  EXPECT_EQ(ReadBytes(file),
            "[assembly: AssemblyVersion(\"1.0.9\")]\r\n[assembly: AssemblyTitle(\"T\")]\r\n"
            "[assembly: AssemblyCompany(\"Acme\")]\r\n[assembly: Foo( Bar(1))]  // c\r\n");
}

TEST(AssemblyInfoUpdater, TextLines) {
  const std::vector<std::pair<std::string, TStrings>> cases = {
      {"", {}},
      {"a", {"a"}},
      {"a\r\n", {"a"}},
      {"a\nb\rc\r\nd", {"a", "b", "c", "d"}},
      {"\r\n\r\n", {"", ""}},
      {"a\n\rb", {"a", "", "b"}},
      {std::string("x\0y\n", 4), {std::string("x\0y", 3)}},
  };
  for (const auto& [bytes, lines] : cases) {
    EXPECT_EQ(SplitTextLines(bytes), lines) << bytes;
  }
  EXPECT_EQ(JoinTextLines({"a", "", "b"}), "a\r\n\r\nb\r\n");
  EXPECT_EQ(JoinTextLines({}), "");
}

}  // namespace
}  // namespace wren
