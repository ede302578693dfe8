#include "sdktools/WrenDotNetComRefAction.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <pugixml.hpp>
#include <sstream>

#include "TestSupport.h"
#include "WrenRegistry.h"
#include "host/WrenRegistryHive.h"
#include "host/WrenStepHost.h"
#include "pages/WrenDotNetComRefFrame.h"

namespace wren {
namespace {

using test::ReadFile;
using test::WriteFile;
using TLines = std::vector<std::string>;

const std::string kSheetLib = "{A1B2C3D4-1111-4E5F-8A9B-00C04FB1E2D3}";

std::string Fixture(const std::string& name) {
  return ReadFile(std::string(SOURCE_DIR) + "/tests/fixtures/comref/" + name);
}

TLines operator+(TLines a, const TLines& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

/// The log of the registry walk for the class whose CLSID ends in n and library `lib`.
TLines FoundLib(char n, const std::string& lib) {
  return {"Checking registry for CLSID...",
          std::string("Found CLSID : {6B7E3A10-4C2D-4F1E-9A55-0C3D2E1F4A0") + n + "}",
          "Checking for TypeLib Guid...", "Found typelib guid : " + lib};
}

/// Guid, VersionMajor, VersionMinor of a reference in a project text; "-" where missing.
TLines ReferenceAttributes(const std::string& text, const std::string& name) {
  pugi::xml_document doc;
  EXPECT_TRUE(doc.load_buffer(text.data(), text.size()));
  const pugi::xml_node ref = doc.select_node(("//Reference[@Name='" + name + "']").c_str()).node();
  TLines values;
  for (const char* attr : {"Guid", "VersionMajor", "VersionMinor"})
    values.push_back(ref.attribute(attr) ? ref.attribute(attr).value() : "-");
  return values;
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
  }
  void TearDown() override { SetWrenRegistry(nullptr); }

  bool Run(const std::string& progID, const std::string& reference, const std::string& project) {
    TWrenDotNetComReferenceFixAction action;
    action.ProgID = progID;
    action.ReferenceName = reference;
    action.ProjectFile = project;
    action.SetHost(&host_);
    log_.clear();
    return action.Execute();
  }

  test::TempDir temp_;
  TWrenStepHost host_;
  TLines log_;
  const std::string cs_ = temp_ / "SheetTool.csproj";
};

TEST_F(ComRefFixTest, RegistryWalkAndProjectTypes) {
  WriteFile(temp_ / "UPPER.CSPROJ", Fixture("SheetTool.csproj"));
  WriteFile(temp_ / "SheetTool.sln", "Microsoft Visual Studio Solution File\r\n");
  WriteFile(temp_ / "Broken.csproj", "<VisualStudioProject>\r\n<CSHARP>\r\n</VisualStudioProject>\r\n");
  std::filesystem::create_directory(temp_ / "folder.csproj");
  const std::string checking = "Checking for current version of TypeLib...";
  const std::string updating = "Found TypeLib information, updating project reference..";
  const TLines found2b = FoundLib('1', kSheetLib) + TLines{checking, "Found current version : 2.b", updating};
  auto updated = [](const std::string& ref) { return "Project Reference for " + ref + " Updated OK."; };
  const std::string lib2 = "{A1B2C3D4-2222-4E5F-8A9B-00C04FB1E2D3}";
  const std::string lib3 = "{A1B2C3D4-3333-4E5F-8A9B-00C04FB1E2D3}";
  const std::string lib7 = "{A1B2C3D4-7777-4E5F-8A9B-00C04FB1E2D3}";

  struct Case {
    const char* name;
    std::string progID, reference, file;
    TLines log;
    TLines attributes;  // of the reference afterwards; empty: failure, file untouched
  } cases[] = {
      {"version 2.b, the first listed", "Wren.Sheet", "WrenSheet", cs_,
       found2b + TLines{updated("WrenSheet")}, {kSheetLib, "2", "11"}},
      {"extension in capitals", "Wren.Sheet", "WrenSheet", temp_ / "UPPER.CSPROJ",
       found2b + TLines{updated("WrenSheet")}, {kSheetLib, "2", "11"}},
      {"VB.NET project", "Wren.Sheet", "WrenSheet", temp_ / "SheetTool.vbproj",
       found2b + TLines{updated("WrenSheet")}, {kSheetLib, "2", "11"}},
      {"reference without the attributes gets them", "Wren.Sheet", "WrenLegacy", cs_,
       found2b + TLines{updated("WrenLegacy")}, {kSheetLib, "2", "11"}},
      {"library key without versions", "Wren.Bare", "WrenSheet", cs_,
       FoundLib('2', lib2) + TLines{checking, "Unable to determine current version of TypeLib",
                                    updating, updated("WrenSheet")},
       {lib2, "", ""}},
      {"library not registered: no versions, silently", "Wren.Orphan", "WrenSheet", cs_,
       FoundLib('3', lib3) + TLines{updating, updated("WrenSheet")}, {lib3, "", ""}},
      {"version without a dot: no versions, silently", "Wren.Flat", "WrenSheet", cs_,
       FoundLib('7', lib7) + TLines{checking, updating, updated("WrenSheet")}, {lib7, "", ""}},
      {"ProgID not registered", "Wren.Missing", "WrenSheet", cs_,
       {"Checking registry for CLSID...", "Unable to find ProID : Wren.Missing in Registry."}, {}},
      {"class without a type library", "Wren.NoLib", "WrenSheet", cs_,
       {"Checking registry for CLSID...", "Found CLSID : {6B7E3A10-4C2D-4F1E-9A55-0C3D2E1F4A04}",
        "Checking for TypeLib Guid...", "Unable to find TypeLib Entry for : Wren.NoLib in Registry."},
       {}},
      {"empty library GUID stops without a word", "Wren.Blank", "WrenSheet", cs_,
       FoundLib('5', "") + TLines{checking}, {}},
      {"reference with another WrapperTool", "Wren.Sheet", "WrenChart", cs_,
       found2b + TLines{"Unable to locate reference in project file!"}, {}},
      {"project file that does not parse", "Wren.Sheet", "WrenSheet", temp_ / "Broken.csproj",
       found2b + TLines{"Error Loading project file", "Start-end tags mismatch"}, {}},
      {"J# project: its expression finds nothing", "Wren.Sheet", "WrenSheet",
       temp_ / "SheetTool.vjsproj", found2b + TLines{"Unable to locate reference in project file!"},
       {}},
      {"unsupported project type", "Wren.Sheet", "WrenSheet", temp_ / "SheetTool.sln",
       {"Project type is not supported by this action!"}, {}},
      {"missing file counts as read only", "Wren.Sheet", "WrenSheet", temp_ / "Missing.csproj",
       {"Cannot update project file, file is read only"}, {}},
      {"a folder is not a project file", "Wren.Sheet", "WrenSheet", temp_ / "folder.csproj",
       {"Project file not found : " + (temp_ / "folder.csproj")}, {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const bool isFile = std::filesystem::is_regular_file(c.file);
    const std::string before = isFile ? ReadFile(c.file) : "";
    EXPECT_EQ(Run(c.progID, c.reference, c.file), !c.attributes.empty());
    EXPECT_EQ(log_, c.log);
    if (!isFile) continue;
    if (c.attributes.empty())
      EXPECT_EQ(ReadFile(c.file), before);
    else
      EXPECT_EQ(ReferenceAttributes(ReadFile(c.file), c.reference), c.attributes);
    WriteFile(c.file, before);
  }

  // Read-only comes before anything else, the registry included.
  ASSERT_EQ(chmod(cs_.c_str(), 0444), 0);
  EXPECT_FALSE(Run("Wren.Sheet", "WrenSheet", cs_));
  EXPECT_EQ(log_, TLines{"Cannot update project file, file is read only"});
}

TEST_F(ComRefFixTest, ExpansionAndConversionFailures) {
  host_.SetVariables({{"LIB", "Wren"}, {"WORK", temp_.path()}, {"NOTHING", ""}});
  EXPECT_TRUE(Run("%LIB%.Sheet", "Wren%NOTHING%Sheet", "%WORK%SheetTool.csproj"));
  for (const auto& [progID, reference, file, caption] :
       {std::tuple<std::string, std::string, std::string, std::string>{
            "%NOTHING%", "WrenSheet", cs_, "ProgID"},
        {"Wren.Sheet", " ", cs_, "ReferenceName"},
        {"Wren.Sheet", "%UNDEFINED_WREN_VARIABLE%", cs_, "ReferenceName"},
        {"Wren.Sheet", "WrenSheet", "%NOTHING%", "ProjectFile"}}) {
    EXPECT_FALSE(Run(progID, reference, file));
    ASSERT_EQ(log_.size(), 1u) << caption;  // the host's line only: the action adds nothing
    EXPECT_NE(log_[0].find("\"" + caption + "\""), std::string::npos) << log_[0];
  }

  const std::string before = ReadFile(cs_);
  EXPECT_THROW(Run("Wren.Odd", "WrenSheet", cs_), EConvertError);  // version key 1.g
  EXPECT_EQ(log_.back(), "Found current version : 1.g");
  EXPECT_EQ(ReadFile(cs_), before);
}

TEST_F(ComRefFixTest, EveryOtherByteOfTheProjectIsKept) {
  const std::string original = Fixture("SheetTool.csproj");
  std::string expected = original;
  const size_t sheet = expected.find("Name = \"WrenSheet\"");
  for (const auto& [attr, value] :
       {std::pair<std::string, std::string>{"Guid", kSheetLib}, {"VersionMajor", "2"},
        {"VersionMinor", "11"}}) {
    const size_t at = expected.find(attr + " = \"", sheet) + attr.size() + 4;
    expected.replace(at, expected.find('"', at) - at, value);
  }
  const std::string tool = "WrapperTool = \"tlbimp\"", indent = "\r\n                    ";
  expected.insert(expected.find(tool, expected.find("\"WrenLegacy\"")) + tool.size(),
                  indent + "Guid = \"" + kSheetLib + "\"" + indent + "VersionMajor = \"2\"" +
                      indent + "VersionMinor = \"11\"");

  for (const std::string bom : {"", "\xEF\xBB\xBF"}) {
    WriteFile(cs_, bom + original);
    ASSERT_TRUE(Run("Wren.Sheet", "WrenSheet", cs_));
    ASSERT_TRUE(Run("Wren.Sheet", "WrenLegacy", cs_));
    EXPECT_EQ(ReadFile(cs_), bom + expected);
    ASSERT_TRUE(Run("Wren.Sheet", "WrenLegacy", cs_));  // nothing left to change
    EXPECT_EQ(ReadFile(cs_), bom + expected);
  }
}

TEST_F(ComRefFixTest, UTF16ProjectIsRewrittenWholeInItsEncoding) {
  const std::string original = Fixture("SheetTool.csproj");
  std::string utf16 = "\xFF\xFE";
  for (char c : original) utf16 += std::string{c, '\0'};
  WriteFile(cs_, utf16);
  ASSERT_TRUE(Run("Wren.Sheet", "WrenSheet", cs_));
  const std::string after = ReadFile(cs_);
  ASSERT_EQ(after.substr(0, 2), "\xFF\xFE");

  // The same document as the original with the three values set by hand.
  auto printed = [](const pugi::xml_document& doc) {
    std::ostringstream out;
    doc.save(out, "", pugi::format_raw, pugi::encoding_utf8);
    return out.str();
  };
  pugi::xml_document expected, actual;
  ASSERT_TRUE(expected.load_buffer(original.data(), original.size()));
  ASSERT_TRUE(actual.load_buffer(after.data(), after.size()));
  pugi::xml_node ref = expected.select_node("//Reference[@Name='WrenSheet']").node();
  ref.attribute("Guid").set_value(kSheetLib.c_str());
  ref.attribute("VersionMajor").set_value("2");
  ref.attribute("VersionMinor").set_value("11");
  EXPECT_EQ(printed(actual), printed(expected));
}

TEST(DotNetComRefFrame, MovesTheThreeFieldsAndRequiresThem) {
  TWrenDotNetComReferenceFixAction action;
  action.ProjectFile = "%ProjectDir%\\App.csproj";
  action.ReferenceName = "Excel";
  action.ProgID = "Excel.Application";
  TDotNetComRefFrame page;
  page.ReadActionData(action);
  std::string message;
  EXPECT_TRUE(page.CheckPage(message));
  page.edReferenceName.text = " ";
  EXPECT_FALSE(page.CheckPage(message));
  EXPECT_EQ(message, "Reference Name is required.");
  page.edReferenceName.text = "Word";
  TWrenDotNetComReferenceFixAction written;
  page.WriteActionData(written);
  EXPECT_EQ(written.ProjectFile, action.ProjectFile);
  EXPECT_EQ(written.ReferenceName, "Word");
  EXPECT_EQ(written.ProgID, "Excel.Application");
}

}  // namespace
}  // namespace wren
