#include "compilers/WrenVSProjectReader.h"

#include <gtest/gtest.h>

#include "TestSupport.h"

namespace wren {
namespace {

std::string Fixture(const std::string& name) {
  return std::string(SOURCE_DIR) + "/tests/fixtures/projcomp/" + name;
}

TEST(VSProjectReader, ReadsSettingsChosenConfigReferencesImportsAndFiles) {
  TVSProject p;
  std::string error;
  // Configuration names are matched without case; the file has CRLF line ends.
  ASSERT_TRUE(ReadVSProject(Fixture("vb/HelloVB.vbproj"), "release", p, error)) << error;
  EXPECT_EQ(p.language, TVSLanguage::VisualBasic);
  EXPECT_FALSE(p.smartDevice);
  EXPECT_EQ(p.guid, "{0B6A3F0E-6C1D-4E55-8F7A-3D2C1B0A9F01}");
  EXPECT_EQ(p.configName, "Release");
  EXPECT_EQ(p.configNames, (TStrings{"Debug", "Release"}));
  EXPECT_EQ(p.Setting("rootnamespace"), "HelloVB");
  EXPECT_EQ(p.ConfigValue("DefineTrace"), "true");
  EXPECT_FALSE(p.ConfigFlag("DebugSymbols", true));
  EXPECT_TRUE(p.ConfigFlag("Optimize"));
  EXPECT_TRUE(p.ConfigFlag("NoSuchFlag", true));  // absent: the default
  EXPECT_EQ(p.OutputFileName(), "HelloVB.exe");
  EXPECT_EQ(p.RelativeOutputFile(), NativePath("bin\\HelloVB.exe"));
  ASSERT_EQ(p.references.size(), 2u);
  EXPECT_EQ(p.references[1].assemblyName, "System.Windows.Forms");
  EXPECT_NE(p.references[1].hintPath.find("v1.1.4322"), std::string::npos);
  EXPECT_EQ(p.imports, (TStrings{"Microsoft.VisualBasic", "System", "System.Windows.Forms"}));
  ASSERT_EQ(p.files.size(), 5u);
  EXPECT_EQ(p.files[1].relPath, "MainForm.resx");
  EXPECT_EQ(p.files[1].dependentUpon, "MainForm.vb");
  EXPECT_EQ(p.files[2].buildAction, "EmbeddedResource");

  // Debug: "True"/"TRUE" in any case.
  ASSERT_TRUE(ReadVSProject(Fixture("vb/HelloVB.vbproj"), "Debug", p, error)) << error;
  EXPECT_TRUE(p.ConfigFlag("RemoveIntegerChecks"));
  EXPECT_TRUE(p.ConfigFlag("DefineTrace"));

  // J#: an OutputPath without its closing delimiter still separates folder and file.
  ASSERT_TRUE(ReadVSProject(Fixture("jsharp/HelloJ.vjsproj"), "Debug", p, error)) << error;
  EXPECT_EQ(p.language, TVSLanguage::JSharp);
  EXPECT_EQ(p.RelativeOutputFile(), NativePath(".\\bin\\Debug\\HelloJ.exe"));
}

TEST(VSProjectReader, SmartDeviceConfigsByPlatformAndDesignerReferencesLeftOut) {
  test::TempDir dir;
  const std::string file = dir / "Device.csdproj";
  const std::string configs =
      "<Config Name = \"Debug|Pocket PC\" OutputPath = \"bin\\Debug\\\" />"
      "<Config Name = \"Release|Pocket PC\" OutputPath = \"bin\\Release\\\" />";
  auto write = [&](const std::string& extraConfigs) {
    test::WriteFile(file,
                    "<VisualStudioProject><ECSHARP ProjectType = \"Local\"><Build>"
                    "<Settings AssemblyName = \"Dev\" OutputType = \"Exe\">"
                    "<Platform Name = \"Pocket PC\"/>" + configs + extraConfigs +
                    "</Settings><References>"
                    "<Reference Name = \"System\" AssemblyName = \"System\" Platform = \"Pocket PC\"/>"
                    "<Reference Name = \"System\" AssemblyName = \"System\" "
                    "Platform = \"Pocket PC-Designer\"/>"
                    "</References></Build><Files><Include/></Files></ECSHARP></VisualStudioProject>");
  };
  write("");
  TVSProject p;
  std::string error;
  ASSERT_TRUE(ReadVSProject(file, "Debug|Pocket PC", p, error)) << error;
  EXPECT_TRUE(p.smartDevice);
  EXPECT_EQ(p.language, TVSLanguage::CSharp);
  EXPECT_EQ(p.references.size(), 1u);
  ASSERT_TRUE(ReadVSProject(file, "Release", p, error)) << error;  // the only Release platform
  EXPECT_EQ(p.configName, "Release|Pocket PC");

  // With a second platform the short name no longer says which one.
  write("<Config Name = \"Debug|Smartphone\" OutputPath = \"bin\\\" />");
  EXPECT_FALSE(ReadVSProject(file, "Debug", p, error));
  EXPECT_EQ(error,
            "it has no configuration named \"Debug\" (configurations: Debug|Pocket PC, "
            "Release|Pocket PC, Debug|Smartphone)");
}

TEST(VSProjectReader, FilesThatCannotBeLoadedSayWhy) {
  test::TempDir dir;
  struct Case {
    const char* name;
    const char* text;  // nullptr: no file
    const char* cause;
  };
  const Case cases[] = {
      {"Missing.csproj", nullptr, "the file does not exist"},
      {"Broken.csproj", "<VisualStudioProject><CSHARP>", "it is not well-formed XML"},
      {"Msbuild.csproj", "<Project/>", "it is not a Visual Studio 2002/2003 project (root element <Project>)"},
      {"Cpp.vcproj", "<VisualStudioProject><CPP/></VisualStudioProject>",
       "unsupported element <CPP> under <VisualStudioProject>"},
      {"NoSettings.csproj", "<VisualStudioProject><CSHARP><Build/></CSHARP></VisualStudioProject>",
       "it has no <Build><Settings> element"},
      {"NoConfig.csproj",
       "<VisualStudioProject><CSHARP><Build><Settings><Config Name=\"Debug\"/></Settings></Build>"
       "</CSHARP></VisualStudioProject>",
       "it has no configuration named \"Debug-Strong\" (configurations: Debug)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string file = dir / c.name;
    if (c.text) test::WriteFile(file, c.text);
    TVSProject p;
    std::string error;
    EXPECT_FALSE(ReadVSProject(file, "Debug-Strong", p, error));
    EXPECT_EQ(error.substr(0, std::string(c.cause).size()), c.cause) << error;
  }
}

TEST(VSProjectReader, FirstDeclaredClassSkipsCommentsAndStrings) {
  struct Case {
    TVSLanguage language;
    const char* source;
    const char* expected;
  };
  const Case cases[] = {
      {TVSLanguage::CSharp, "// class Decoy\nnamespace A.B {\n namespace C { public class Form1 {} } }",
       "A.B.C.Form1"},
      {TVSLanguage::CSharp, "/* namespace X { */ using S = \"class Y\";\npublic class Top {}", "Top"},
      {TVSLanguage::CSharp, "namespace Empty { }", ""},
      {TVSLanguage::VisualBasic, "' Class Decoy\nNamespace Screens\n  Public Class MainForm\n",
       "Screens.MainForm"},
      {TVSLanguage::VisualBasic, "Public NotInheritable Class About\nEnd Class\n", "About"},
      {TVSLanguage::JSharp, "package hello.world;\n/* class Decoy */\npublic class Program {}",
       "hello.world.Program"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.source);
    EXPECT_EQ(FirstDeclaredClass(c.source, c.language), c.expected);
  }
  // Verbatim strings with doubled quotes, escaped quotes, and a comment longer than a regular
  // expression engine can walk (it used to crash the reader).
  EXPECT_EQ(FirstDeclaredClass("string a = @\"x \"\"class No\"\" y\"; string b = \"\\\" class No\";\n"
                               "namespace N { class Yes {} }",
                               TVSLanguage::CSharp),
            "N.Yes");
  EXPECT_EQ(FirstDeclaredClass("/*" + std::string(200000, 'x') + "*/ class Big {}",
                               TVSLanguage::CSharp),
            "Big");
  EXPECT_EQ(FirstDeclaredClass("Dim s = \"a \"\"Class No\"\"\"\nClass Yes\n", TVSLanguage::VisualBasic),
            "Yes");
}

TEST(VSProjectReader, ManifestNamesAsVisualStudioGivesThem) {
  TVSProject cs;
  cs.language = TVSLanguage::CSharp;
  cs.settings = {"RootNamespace=Demo.Lib"};
  TVSProject vb = cs;
  vb.language = TVSLanguage::VisualBasic;
  TVSProject bare = cs;
  bare.settings = {"RootNamespace="};
  struct Case {
    const TVSProject* project;
    TVSFile file;
    const char* formClass;
    const char* expected;
  };
  const Case cases[] = {
      {&cs, {"Forms\\Main.resx", "EmbeddedResource", "", "Main.cs", ""}, "App.Forms.Main",
       "App.Forms.Main.resources"},
      {&cs, {"Forms\\Strings.resx", "EmbeddedResource", "", "", ""}, "",
       "Demo.Lib.Forms.Strings.resources"},
      {&cs, {"Images\\Icons\\open.ico", "EmbeddedResource", "", "", ""}, "",
       "Demo.Lib.Images.Icons.open.ico"},
      // A linked file is named by where it sits in the project, not by where it lives.
      {&cs, {"Shared\\logo.bmp", "EmbeddedResource", "", "", "..\\..\\art\\logo.bmp"}, "",
       "Demo.Lib.Shared.logo.bmp"},
      {&vb, {"Resources\\logo.bmp", "EmbeddedResource", "", "", ""}, "", "Demo.Lib.logo.bmp"},
      {&vb, {"Resources\\Strings.resx", "EmbeddedResource", "", "", ""}, "",
       "Demo.Lib.Strings.resources"},
      {&vb, {"MainForm.resx", "EmbeddedResource", "", "MainForm.vb", ""}, "Screens.MainForm",
       "Demo.Lib.Screens.MainForm.resources"},
      {&bare, {"Images\\dot.gif", "EmbeddedResource", "", "", ""}, "", "Images.dot.gif"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file.relPath);
    EXPECT_EQ(VSManifestName(*c.project, c.file, c.formClass), c.expected);
  }
}

}  // namespace
}  // namespace wren
