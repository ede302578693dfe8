#include "WrenAssemblyInfoUpdater.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "TestSupport.h"
#include "WrenUtils.h"

namespace wren {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;

using test::ReadFile;
using test::TempDir;
using test::WriteFile;

/// Keeps the updater's messages and counts the files it offers.
struct MessageLog : IWrenAssemblyInfoCallBack {
  void OnProcessFile(const std::string&,
                     const std::shared_ptr<IWrenAssemblyInfoUpdater>&) override { ++files; }
  void AssemblyInfoProcessMessage(const std::string& text) override { messages.push_back(text); }
  void AssemblyInfoProcessEntry(const std::string&, const std::string& name,
                                std::string&) override {
    asked.push_back(name);
  }
  int files = 0;
  std::vector<std::string> messages;
  std::vector<std::string> asked;  // the attribute names offered to the callback
};

/// One golden case: <dir>/<name>.in<ext> processed with the entries must give <name>.out<ext>.
struct GoldenCase {
  std::string dir, name, ext;
  std::vector<std::string> entries;  // Name='quoted value' or Name=bare value
  bool updateOnly = false, throws = false;
  std::vector<std::string> messages = {};  // checked when not empty
};

const fs::path kFixtures = fs::path(SOURCE_DIR) / "tests" / "fixtures" / "assemblyinfo";

// Entries written NAME=VALUE; a value between two quote characters is a quoted one.
void AddEntries(IWrenAssemblyInfoUpdater& updater, const std::vector<std::string>& entries,
                char quote) {
  for (const std::string& entry : entries) {
    const size_t eq = entry.find('=');
    std::string value = entry.substr(eq + 1);
    const bool quoted = value.size() >= 2 && value.front() == quote;
    if (quoted) value = value.substr(1, value.size() - 2);
    updater.AddEntry(entry.substr(0, eq), value, quoted);
  }
}

// One case, with the callback asked about every attribute or only about listed ones.
void RunGoldenCase(const GoldenCase& c, bool askEvery) {
  SCOPED_TRACE(c.dir + "/" + c.name + c.ext + (askEvery ? "" : ", asked about listed ones"));
  TempDir tmp;
  const std::string target = tmp / ("AssemblyInfo" + c.ext);
  fs::copy_file(kFixtures / c.dir / (c.name + ".in" + c.ext), target);
  auto updater = NewAssemblyInfoUpdater(c.updateOnly);
  MessageLog callBack;
  updater->SetCallBack(&callBack);
  updater->GetImplementation()->SetAskAboutEveryAttribute(askEvery);
  AddEntries(*updater, c.entries, '\'');
  if (c.throws) {
    EXPECT_THROW(updater->ProcessFile(target, false), EStringListError);
  } else {
    EXPECT_TRUE(updater->ProcessFile(target, false));
  }
  EXPECT_EQ(ReadFile(target), ReadFile(kFixtures / c.dir / (c.name + ".out" + c.ext)));
  EXPECT_TRUE(updater->GetImplementation()->Entries().empty());
  if (!c.messages.empty()) {
    EXPECT_EQ(callBack.messages, c.messages);
  }
  // No backup was asked for and no temporary file may be left behind.
  EXPECT_EQ(std::distance(fs::directory_iterator(tmp.path()), fs::directory_iterator()), 1);
  if (askEvery) return;
  for (const std::string& name : callBack.asked) {
    const bool listed = std::any_of(c.entries.begin(), c.entries.end(), [&](const std::string& e) {
      return SameText(e.substr(0, e.find('=')), name);
    });
    EXPECT_TRUE(listed) << name << " was offered though no entry names it";
  }
}

// Each case runs twice: the lines the callback is not asked about are passed over, and the file
// must come out the same.
void RunGolden(const std::vector<GoldenCase>& cases) {
  for (const GoldenCase& c : cases)
    for (const bool askEvery : {true, false}) RunGoldenCase(c, askEvery);
}

const std::string kSet = "Setting Attribute : ", kAdd = "Adding Entry : ";
const std::string kNew = "Processing new Attributes...";

TEST(AssemblyInfoUpdaterGolden, CSharp) {
  RunGolden({
      {"csharp", "examples", ".cs",
       {"AssemblyVersion='2.0.0.1'", "AssemblyKeyFile='k.snk'", "assemblytitle='App'",
        "AssemblyDescription='new'", "CLSCompliant=false", "AssemblyKeyName=Other", "Foo=Baz(2)"},
       false, false,
       {kSet + "AssemblyVersion Value : \"2.0.0.1\"", kSet + "AssemblyKeyFile Value : \"k.snk\"",
        kSet + "AssemblyTitle Value : \"App\"", kSet + "AssemblyDescription Value : \"new\"",
        kSet + "CLSCompliant Value : false", kSet + "AssemblyKeyName Value : Other",
        kSet + "Foo Value : Baz(2)"}},
      // An equal value is still rewritten; new lines copy the last attribute's closing text.
      {"csharp", "new_entries", ".cs",
       {"AssemblyVersion='1.0.0.0'", "AssemblyCompany='Acme'", "AssemblyCulture=''",
        "AssemblyDelaySign=false"},
       false, false,
       {kSet + "AssemblyVersion Value : \"1.0.0.0\"", kNew,
        kAdd + "AssemblyCompany Value : \"Acme\"", kAdd + "AssemblyCulture Value : \"\"",
        kAdd + "AssemblyDelaySign Value : false"}},
      {"csharp", "update_only", ".cs", {"AssemblyVersion='3.0.0.0'", "AssemblyCompany='Acme'"},
       true, false, {kSet + "AssemblyVersion Value : \"3.0.0.0\""}},
      {"csharp", "update_only_nothing", ".cs", {"AssemblyCompany='Acme'"}, true},
  });
}

TEST(AssemblyInfoUpdaterGolden, Pascal) {
  RunGolden({
      // Only lines above "implementation" are read: the AssemblyCompany below it is added anew.
      {"pascal", "unit", ".pas",
       {"AssemblyVersion='1.2.0.0'", "AssemblyCompany='Acme'", "AssemblyProduct='Tool'"}, false,
       false,
       {kSet + "AssemblyVersion Value : '1.2.0.0'", kNew, kAdd + "AssemblyCompany Value : 'Acme'",
        kAdd + "AssemblyProduct Value : 'Tool'"}},
      // The attribute line right above "begin" keeps its place under the new region.
      {"pascal", "program", ".dpr",
       {"AssemblyVersion='2.0.0.0'", "AssemblyDescription='Console tool'"}},
      {"pascal", "package", ".dpk", {"AssemblyCompany='Acme'"}},
      // Without a stop line there is nowhere to insert: the index error reaches the caller...
      {"pascal", "no_stop_line", ".pas", {"AssemblyVersion='2.0.0.0'", "AssemblyCompany='Acme'"},
       false, true},
  });
  // ...but with nothing left to insert the file is saved.
  TempDir tmp;
  fs::copy_file(kFixtures / "pascal" / "no_stop_line.in.pas", tmp / "Broken.pas");
  auto updater = NewAssemblyInfoUpdater(false);
  updater->AddEntry("AssemblyVersion", "2.0.0.0", true);
  EXPECT_TRUE(updater->ProcessFile(tmp / "Broken.pas", false));
  EXPECT_EQ(ReadFile(tmp / "Broken.pas"),
            "unit Broken;\r\n[assembly: AssemblyVersion('2.0.0.0')]\r\n");
}

TEST(AssemblyInfoUpdaterGolden, VisualBasicJSharpAndCpp) {
  RunGolden({
      {"vb", "examples", ".vb", {"AssemblyTitle='App'", "AssemblyCompany='Acme'"}},
      {"jsharp", "examples", ".jsl", {"AssemblyVersion='1.1'", "AssemblyCompany='Acme'"}},
      // Existing C++ lines match by the name as written; new names gain "Attribute".
      {"cpp", "examples", ".cpp",
       {"AssemblyVersionAttribute='2.0.0.1'", "AssemblyTitle='Tool'", "AssemblyCompany='Acme'"},
       false, false,
       {kSet + "AssemblyVersionAttribute Value : \"2.0.0.1\"", kNew,
        kAdd + "AssemblyTitle Value : \"Tool\"", kAdd + "AssemblyCompany Value : \"Acme\""}},
  });
}

TEST(AssemblyInfoUpdater, StyleCarriesAcrossFilesAndEntriesReplaceByName) {
  TempDir tmp;
  // Lines end at CR, LF or CR LF (LF CR is two ends); bytes, NUL too, are kept; CR LF is saved.
  WriteFile(tmp / "a.cs", "[assembly: AssemblyVersion(\"1\")]\r[module: UnverifiableCode]");
  WriteFile(tmp / "b.txt", "no\0 attributes here\n\r"s);
  WriteFile(tmp / "c.vb", "Imports System\n");
  auto shared = NewAssemblyInfoUpdater(false);
  // The last bracketed line of a.cs is not an assembly attribute, yet its keyword is reused.
  shared->AddEntry("AssemblyCompany", "Acme", true);
  ASSERT_TRUE(shared->ProcessFile(tmp / "a.cs", false));
  EXPECT_EQ(ReadFile(tmp / "a.cs"),
            "[assembly: AssemblyVersion(\"1\")]\r\n[module: UnverifiableCode]\r\n"
            "#region Assembly Information Added By Marrowby\r\n"
            "[module: AssemblyCompany(\"Acme\")]\r\n#endregion\r\n");
  // A later file of another language without attribute lines inherits the style.
  shared->AddEntry("AssemblyProduct", "Tool", true);
  ASSERT_TRUE(shared->ProcessFile(tmp / "b.txt", false));
  EXPECT_EQ(ReadFile(tmp / "b.txt"),
            "no\0 attributes here\r\n\r\n[module: AssemblyProduct(\"Tool\")]\r\n"s);

  // A fresh updater has nothing to copy: new lines begin with a blank.
  auto fresh = NewAssemblyInfoUpdater(false);
  fresh->AddEntry("AssemblyVersion", "1.0", true);
  fresh->AddEntry("assemblyversion", "2.0", false);  // replaces, whatever the case
  fresh->AddEntry("AssemblyVersion", "", true);      // stands beside the earlier one
  fresh->AddEntry("AssemblyTitle", "T", true);
  fresh->RemoveEntry("ASSEMBLYTITLE");
  fresh->RemoveEntry("NotThere");
  ASSERT_TRUE(fresh->ProcessFile(tmp / "c.vb", false));
  EXPECT_EQ(ReadFile(tmp / "c.vb"),
            "Imports System\r\n#region \"Assembly Information Added By Marrowby\"\r\n"
            " assemblyversion(2.0)\r\n AssemblyVersion(\"\")\r\n#end region\r\n");
}

/// One scanner case: a file of the given extension with the given bytes, rewritten with the
/// entries (Name="quoted" or Name=bare), must hold out and log the messages.
struct ScanCase {
  std::string what, ext, in;
  std::vector<std::string> entries;
  bool updateOnly;
  std::string out;  // empty: the file is left untouched
  std::vector<std::string> messages;
};

// The line scanner at its edges: line ends of every kind, byte order marks, attribute-like text
// in comments and strings, attributes split over lines or oddly spaced, and the style (bracket,
// keyword, closing text) that later new lines copy.
TEST(AssemblyInfoUpdater, ScannerEdgeCases) {
  const std::vector<std::string> kStamp = {"AssemblyVersion=\"2.0\"", "CLSCompliant=false"};
  const std::vector<ScanCase> cases = {
      {"line ends of every kind", ".cs",
       "[assembly: AssemblyVersion(\"1\")]\r\n\n\r[assembly: CLSCompliant(true)]\rx", kStamp, true,
       "[assembly: AssemblyVersion(\"2.0\")]\r\n\r\n\r\n[assembly: CLSCompliant(false)]\r\nx\r\n",
       {kSet + "AssemblyVersion Value : \"2.0\"", kSet + "CLSCompliant Value : false"}},
      {"no final line end", ".cs", "a\n[assembly: AssemblyVersion(\"1\")]", kStamp, true,
       "a\r\n[assembly: AssemblyVersion(\"2.0\")]\r\n",
       {kSet + "AssemblyVersion Value : \"2.0\""}},
      {"byte order mark before the first attribute", ".cs",
       "\xEF\xBB\xBF[assembly: AssemblyVersion(\"1\")]\r\n[assembly: CLSCompliant(true)]\r\n",
       kStamp, true, "\xEF\xBB\xBF[assembly: AssemblyVersion(\"1\")]\r\n"
       "[assembly: CLSCompliant(false)]\r\n",
       {kSet + "CLSCompliant Value : false"}},
      {"comments and strings holding attribute text", ".cs",
       "// [assembly: AssemblyVersion(\"1\")]\n/* [assembly: AssemblyVersion(\"1\")] */\n"
       "var s = \"[assembly: AssemblyVersion(\\\"1\\\")]\";\n"
       "#if X [assembly: CLSCompliant(true)]\n",
       kStamp, true, "", {}},
      {"attribute split over two lines", ".cs",
       "[assembly: AssemblyVersion(\n  \"1.0\")]\n[assembly:\nCLSCompliant(true)]\n", kStamp, true,
       "[assembly: AssemblyVersion(2.0)\r\n  \"1.0\")]\r\n[assembly:\r\nCLSCompliant(true)]\r\n",
       {kSet + "AssemblyVersion Value : 2.0"}},
      {"spacing, case and tabs", ".cs",
       "\t [ ASSEMBLY :  assemblyversion ( \"1\" ) ] // v\n  [assembly:CLSCompliant( true )]  \n",
       kStamp, true, "[ASSEMBLY: assemblyversion(\"2.0\")) ] // v\r\n"
       "[assembly: CLSCompliant(false)]  \r\n",
       {kSet + "assemblyversion Value : \"2.0\"", kSet + "CLSCompliant Value : false"}},
      {"unterminated quote, empty value, no colon, lone bracket", ".cs",
       "[assembly: AssemblyVersion(\"1.0]\n[assembly: CLSCompliant()]\n[assembly]\n[", kStamp,
       true, "[assembly: AssemblyVersion(\"2.0\")\r\n" "[assembly: CLSCompliant(false)]\r\n"
       "[assembly]\r\n" "[\r\n",
       {kSet + "AssemblyVersion Value : \"2.0\"", kSet + "CLSCompliant Value : false"}},
      {"inner parentheses, marker and NUL bytes", ".cs",
       "[assembly: Foo(Bar(1)) ] // x\n[assembly: AssemblyKeyFile(@\"k\")]\n"
       "[assembly: AssemblyTitle(\"a\0b\")]\n"s,
       {"Foo=Baz(2)", "AssemblyKeyFile=\"n\"", "AssemblyTitle=\"t\""}, true,
       "[assembly: Foo(Baz(2)) ] // x\r\n" "[assembly: AssemblyKeyFile(@\"n\")]\r\n"
       "[assembly: AssemblyTitle(\"t\")]\r\n",
       {kSet + "Foo Value : Baz(2)", kSet + "AssemblyKeyFile Value : \"n\"",
        kSet + "AssemblyTitle Value : \"t\""}},
      {"angle brackets and a javadoc attribute", ".jsl",
       "<Assembly: AssemblyVersion(\"1\")> \n/** @assembly AssemblyVersion(\"1\") */\n"
       "/**@assembly CLSCompliant(true)*/\n/* @assembly CLSCompliant(true) */\n",
       kStamp, true, "<Assembly: AssemblyVersion(\"2.0\")> \r\n"
       "/** @assembly AssemblyVersion(\"1\") */\r\n" "/** @assembly CLSCompliant(false)*/\r\n"
       "/* @assembly CLSCompliant(true) */\r\n",
       {kSet + "AssemblyVersion Value : \"2.0\"", kSet + "CLSCompliant Value : false"}},
      {"new lines copy the last bracket line, attribute or not", ".cs",
       "[assembly: AssemblyVersion(\"1\")]  // old\n[STAThread]\nclass A {}\n",
       {"AssemblyVersion=\"2.0\"", "AssemblyCompany=\"Acme\""}, false,
       "[assembly: AssemblyVersion(\"2.0\")]  // old\r\n" "[STAThread]\r\n" "class A {}\r\n"
       "#region Assembly Information Added By Marrowby\r\n"
       "[STAThread]: AssemblyCompany(\"Acme\")]  // old\r\n" "#endregion\r\n",
       {kSet + "AssemblyVersion Value : \"2.0\"", kNew, kAdd + "AssemblyCompany Value : \"Acme\""}},
      {"an unchanged file is not written", ".cs", "[assembly: AssemblyVersion(\"1\")]\n", {},
       false, "", {}},
      {"a Pascal stop line in another case, an attribute right above it", ".pas",
       "unit U;\r\n[assembly: AssemblyVersion('1')]\r\n  IMPLEMENTATION  \r\n"
       "[assembly: CLSCompliant(true)]\r\n",
       {"AssemblyVersion=\"2.0\"", "CLSCompliant=false"}, false, "unit U;\r\n"
       "{$REGION 'Program/Assembly Information Added By Marrowby'}\r\n"
       "[assembly: CLSCompliant(false)]\r\n" "{$ENDREGION}\r\n"
       "[assembly: AssemblyVersion('2.0')]\r\n" "  IMPLEMENTATION  \r\n"
       "[assembly: CLSCompliant(true)]\r\n",
       {kSet + "AssemblyVersion Value : '2.0'", kNew, kAdd + "CLSCompliant Value : false"}},
  };
  for (const ScanCase& c : cases) {
    SCOPED_TRACE(c.what);
    TempDir tmp;
    const std::string file = tmp / ("AssemblyInfo" + c.ext);
    WriteFile(file, c.in);
    auto updater = NewAssemblyInfoUpdater(c.updateOnly);
    MessageLog log;
    updater->SetCallBack(&log);
    AddEntries(*updater, c.entries, '"');
    EXPECT_TRUE(updater->ProcessFile(file, false));
    EXPECT_EQ(ReadFile(file), c.out.empty() ? c.in : c.out);
    EXPECT_EQ(log.messages, c.messages);
}
}

// The scanner looks for line ends many bytes at a time: a break at any offset, of any kind,
// splits as the byte-by-byte reading does.
TEST(AssemblyInfoUpdater, LineBreaksAtEveryOffset) {
  TempDir tmp;
  const std::string file = tmp / "AssemblyInfo.cs";
  auto updater = NewAssemblyInfoUpdater(false);
  for (const std::string& brk : {"\r\n"s, "\n"s, "\r"s, "\n\r"s}) {
    for (size_t at = 0; at < 40; ++at) {
      const std::string text = std::string(at, 'a') + brk + std::string(33 - at % 17, 'b') + "\r" +
                               std::string(20, 'c') + "\n\n" + std::string(at % 3, 'd');
      SCOPED_TRACE(testing::PrintToString(text));
      WriteFile(file, text);
      EXPECT_TRUE(updater->ProcessFile(file, false));
      EXPECT_EQ(ReadFile(file), text);  // nothing to change: not written
      EXPECT_EQ(updater->GetImplementation()->Lines(), SplitTextLines(text));
    }
  }
}

TEST(AssemblyInfoUpdater, MissingAndEmptyFilesAndBackups) {
  TempDir tmp;
  MessageLog callBack;
  auto updater = NewAssemblyInfoUpdater(false);
  updater->SetCallBack(&callBack);
  const std::string missing = tmp / "missing.cs", empty = tmp / "empty.cs";
  updater->AddEntry("AssemblyVersion", "1", true);
  EXPECT_FALSE(updater->ProcessFile(missing, true));
  EXPECT_TRUE(updater->GetImplementation()->Entries().empty());
  // An empty file: no message, no scan, but the backup asked for is still made.
  WriteFile(empty, "");
  updater->AddEntry("AssemblyVersion", "2", true);
  EXPECT_FALSE(updater->ProcessFile(empty, true));
  EXPECT_TRUE(updater->GetImplementation()->Entries().empty());
  EXPECT_EQ(ReadFile(empty), "");
  EXPECT_TRUE(fs::exists(empty + ".bak"));
  EXPECT_EQ(callBack.messages, std::vector<std::string>{"File : " + missing + "- does not exist!"});
  EXPECT_EQ(callBack.files, 0);

  // A backup holds the lines as loaded (CR LF); an old one is replaced unless it cannot be
  // deleted, in which case it is kept and the file still processed.
  const std::string file = tmp / "a.cs", bak = file + ".bak";
  auto cs = [](const std::string& v) { return "[assembly: AssemblyVersion(\"" + v + "\")]\r\n"; };
  WriteFile(file, "[assembly: AssemblyVersion(\"1\")]\n");
  TStrings backups;
  for (const char* version : {"2", "3", "4"}) {
    if (version[0] == '4') ::chmod(bak.c_str(), 0444);
    updater->AddEntry("AssemblyVersion", version, true);
    ASSERT_TRUE(updater->ProcessFile(file, true));
    backups.push_back(ReadFile(bak));
  }
  EXPECT_EQ(backups, (TStrings{cs("1"), cs("2"), cs("2")}));
  EXPECT_EQ(ReadFile(file), cs("4"));
}

}  // namespace
}  // namespace wren
