#include "sdktools/WrenDotNetComRefAction.h"

#include <sys/stat.h>

#include <pugixml.hpp>

#include "SdkToolTestKit_test.h"
#include "pages/WrenDotNetComRefFrame.h"

namespace wren::test {

std::string Fixture(const std::string& name) {
  return ReadFile(std::string(SOURCE_DIR) + "/tests/fixtures/comref/" + name);
}

TStrings operator+(TStrings a, const TStrings& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

/// The fixture registry's type library GUID numbered n.
std::string Lib(char n) { return "{A1B2C3D4-" + std::string(4, n) + "-4E5F-8A9B-00C04FB1E2D3}"; }
const std::string kSheetLib = Lib('1');

/// The log of the registry walk to the class whose CLSID ends in n, and on to its library.
TStrings FoundClass(char n) {
  return {"Checking registry for CLSID...",
          std::string("Found CLSID : {6B7E3A10-4C2D-4F1E-9A55-0C3D2E1F4A0") + n + "}",
          "Checking for TypeLib Guid..."};
}
TStrings FoundLib(char n, const std::string& lib) {
  return FoundClass(n) + TStrings{"Found typelib guid : " + lib};
}

/// The project text with the Guid, VersionMajor and VersionMinor values of a reference replaced.
std::string Patched(std::string text, const std::string& reference, const TStrings& values) {
  const size_t element = text.find("Name = \"" + reference + "\"");
  const std::string attributes[] = {"Guid", "VersionMajor", "VersionMinor"};
  for (size_t i = 0; i < 3; ++i) {
    const size_t at = text.find(attributes[i] + " = \"", element) + attributes[i].size() + 4;
    text.replace(at, text.find('"', at) - at, values[i]);
  }
  return text;
}

class ComRefFixTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::string error;
    auto registry = ParseRegistryText(Fixture("typelibs.reg"), "typelibs.reg", error);
    ASSERT_NE(registry, nullptr) << error;
    SetWrenRegistry(registry);
    for (const char* name : {"SheetTool.csproj", "SheetTool.vbproj", "SheetTool.vjsproj"})
      WriteFile(temp_ / name, Fixture(name));
    host_.SetLogSink([this](TWrenLogStream, const std::string& text) { log_.push_back(text); });
    host_.SetVariables({{"LIB", "Wren"}, {"WORK", temp_.path()}, {"NOTHING", ""}});
  }
  void TearDown() override { SetWrenRegistry(nullptr); }

  bool Run(const std::string& id, const std::string& ref, const std::string& file) {
    TWrenDotNetComReferenceFixAction action;
    ApplySettings(action, "ProgID=" + id + "|ReferenceName=" + ref + "|ProjectFile=" + file);
    action.SetHost(&host_);
    log_.clear();
    return action.Execute();
  }

  TempDir temp_;
  TWrenStepHost host_;
  TStrings log_;
  const std::string cs_ = temp_ / "SheetTool.csproj";
};

TEST_F(ComRefFixTest, RegistryWalkProjectTypesAndExpansions) {
  WriteFile(temp_ / "UPPER.CSPROJ", Fixture("SheetTool.csproj"));
  WriteFile(temp_ / "SheetTool.sln", "Microsoft Visual Studio Solution File\r\n");
  WriteFile(temp_ / "Broken.csproj", "<VisualStudioProject>\r\n<CSHARP>\r\n</VisualStudioProject>");
  std::filesystem::create_directory(temp_ / "folder.csproj");
  const std::string checking = "Checking for current version of TypeLib...";
  const std::string updating = "Found TypeLib information, updating project reference..";
  const TStrings found2b =
      FoundLib('1', kSheetLib) + TStrings{checking, "Found current version : 2.b", updating};
  const TStrings updated = {"Project Reference for WrenSheet Updated OK."};
  const TStrings notFound = {"Unable to locate reference in project file!"};
  const TStrings sheet211 = {kSheetLib, "2", "11"};
  auto blank = [](const std::string& caption) {
    return "Could not expand \"" + caption + "\": the result is blank";
  };
  struct Case {
    const char* name;
    std::string progID, reference, file;
    TStrings log;
    TStrings values;  // the reference's three values afterwards; empty: failure, file untouched
  } cases[] = {
      {"version 2.b, the first listed", "Wren.Sheet", "WrenSheet", cs_, found2b + updated,
       sheet211},
      {"extension in capitals", "Wren.Sheet", "WrenSheet", temp_ / "UPPER.CSPROJ",
       found2b + updated, sheet211},
      {"VB.NET project", "Wren.Sheet", "WrenSheet", temp_ / "SheetTool.vbproj", found2b + updated,
       sheet211},
      {"library key without versions", "Wren.Bare", "WrenSheet", cs_,
       FoundLib('2', Lib('2')) +
           TStrings{checking, "Unable to determine current version of TypeLib", updating} + updated,
       {Lib('2'), "", ""}},
      {"library not registered: no versions, silently", "Wren.Orphan", "WrenSheet", cs_,
       FoundLib('3', Lib('3')) + TStrings{updating} + updated, {Lib('3'), "", ""}},
      {"version without a dot: no versions, silently", "Wren.Flat", "WrenSheet", cs_,
       FoundLib('7', Lib('7')) + TStrings{checking, updating} + updated, {Lib('7'), "", ""}},
      {"ProgID not registered", "Wren.Missing", "WrenSheet", cs_,
       {"Checking registry for CLSID...", "Unable to find ProID : Wren.Missing in Registry."}, {}},
      {"class without a type library", "Wren.NoLib", "WrenSheet", cs_,
       FoundClass('4') + TStrings{"Unable to find TypeLib Entry for : Wren.NoLib in Registry."},
       {}},
      {"empty library GUID stops without a word", "Wren.Blank", "WrenSheet", cs_,
       FoundLib('5', "") + TStrings{checking}, {}},
      {"reference with another WrapperTool", "Wren.Sheet", "WrenChart", cs_, found2b + notFound,
       {}},
      {"project file that does not parse", "Wren.Sheet", "WrenSheet", temp_ / "Broken.csproj",
       found2b + TStrings{"Error Loading project file", "Start-end tags mismatch"}, {}},
      {"J# project: its expression finds nothing", "Wren.Sheet", "WrenSheet",
       temp_ / "SheetTool.vjsproj", found2b + notFound, {}},
      {"unsupported project type", "Wren.Sheet", "WrenSheet", temp_ / "SheetTool.sln",
       {"Project type is not supported by this action!"}, {}},
      {"missing file counts as read only", "Wren.Sheet", "WrenSheet", temp_ / "Missing.csproj",
       {"Cannot update project file, file is read only"}, {}},
      {"a folder is not a project file", "Wren.Sheet", "WrenSheet", temp_ / "folder.csproj",
       {"Project file not found : " + (temp_ / "folder.csproj")}, {}},
      // A failed expansion leaves the host's line only: the action adds nothing.
      {"ProgID expands to blank", "%NOTHING%", "WrenSheet", cs_, {blank("ProgID")}, {}},
      {"reference name is blank", "Wren.Sheet", " ", cs_, {blank("ReferenceName")}, {}},
      {"reference name fails to expand", "Wren.Sheet", "%UNDEFINED_WREN_VARIABLE%", cs_,
       {"Could not expand \"ReferenceName\": variable %UNDEFINED_WREN_VARIABLE% is not defined"},
       {}},
      {"project file expands to blank", "Wren.Sheet", "WrenSheet", "%NOTHING%",
       {blank("ProjectFile")}, {}},
      {"every value expanded", "%LIB%.Sheet", "Wren%NOTHING%Sheet", "%WORK%SheetTool.csproj",
       found2b + updated, sheet211},  // the last row: it leaves the project changed
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const bool isFile = std::filesystem::is_regular_file(c.file);
    const std::string before = isFile ? ReadFile(c.file) : "";
    EXPECT_EQ(Run(c.progID, c.reference, c.file), !c.values.empty());
    EXPECT_EQ(log_, c.log);
    if (!isFile) continue;
    // Every other byte of the project stays as it was.
    EXPECT_EQ(ReadFile(c.file), c.values.empty() ? before : Patched(before, c.reference, c.values));
    WriteFile(c.file, before);
  }

  // A version key that is not hexadecimal raises the conversion error, the file untouched.
  WriteFile(cs_, Fixture("SheetTool.csproj"));
  EXPECT_THROW(Run("Wren.Odd", "WrenSheet", cs_), EConvertError);  // version key 1.g
  EXPECT_EQ(log_.back(), "Found current version : 1.g");
  EXPECT_EQ(ReadFile(cs_), Fixture("SheetTool.csproj"));

  // Read-only comes before anything else, the registry included.
  ASSERT_EQ(chmod(cs_.c_str(), 0444), 0);
  EXPECT_FALSE(Run("Wren.Sheet", "WrenSheet", cs_));
  EXPECT_EQ(log_, TStrings{"Cannot update project file, file is read only"});
}

// A reference without the three attributes gets them after its last one. UTF-8 keeps every other
// byte, byte-order mark or not; UTF-16 is rewritten whole in its encoding as the same document.
TEST_F(ComRefFixTest, TheRestOfTheProjectIsKept) {
  const std::string original = Fixture("SheetTool.csproj");
  std::string expected = Patched(original, "WrenSheet", {kSheetLib, "2", "11"});
  const std::string tool = "WrapperTool = \"tlbimp\"", indent = "\r\n                    ";
  expected.insert(expected.find(tool, expected.find("\"WrenLegacy\"")) + tool.size(),
                  indent + "Guid = \"" + kSheetLib + "\"" + indent + "VersionMajor = \"2\"" +
                      indent + "VersionMinor = \"11\"");
  std::string utf16 = "\xFF\xFE";
  for (char c : original) utf16 += std::string{c, '\0'};
  auto reprinted = [](const std::string& text) {
    pugi::xml_document doc;
    EXPECT_TRUE(doc.load_buffer(text.data(), text.size()));
    std::ostringstream out;
    doc.save(out, "", pugi::format_raw, pugi::encoding_utf8);
    return out.str();
  };
  for (const std::string bom : {"", "\xEF\xBB\xBF", "\xFF\xFE"}) {
    SCOPED_TRACE(bom.size());
    WriteFile(cs_, bom.size() == 2 ? utf16 : bom + original);
    ASSERT_TRUE(Run("Wren.Sheet", "WrenSheet", cs_));
    ASSERT_TRUE(Run("Wren.Sheet", "WrenLegacy", cs_));
    ASSERT_TRUE(Run("Wren.Sheet", "WrenLegacy", cs_));  // nothing left to change
    const std::string after = ReadFile(cs_);
    EXPECT_EQ(after.substr(0, bom.size()), bom);
    if (bom.size() == 2)
      EXPECT_EQ(reprinted(after), reprinted(expected));
    else
      EXPECT_EQ(after, bom + expected);
  }
}

// The page takes the action's settings and refuses a blank reference name.
TEST(DotNetComRefFrame, RequiresTheReferenceName) {
  TWrenDotNetComReferenceFixAction action;
  ApplySettings(action, "ProjectFile=%ProjectDir%\\App.csproj|ReferenceName=Excel|ProgID=X.App");
  TDotNetComRefFrame page;
  page.ReadActionData(action);
  std::string message;
  EXPECT_TRUE(page.CheckPage(message));
  page.edReferenceName.text = " ";
  EXPECT_FALSE(page.CheckPage(message));
  EXPECT_EQ(message, "Reference Name is required.");
}

}  // namespace wren::test
