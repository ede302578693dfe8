#include "compilers/WrenBdsProjectReader.h"

#include <gtest/gtest.h>

#include "TestSupport.h"

namespace wren {
namespace {

TEST(BdsProjectReader, ReadsOptionGroupsAndTheFileList) {
  TVSProject p;
  std::string error;
  // A byte-order mark, CRLF line ends and tabs, as the IDE writes them.
  ASSERT_TRUE(ReadBdsProject(std::string(SOURCE_DIR) + "/tests/fixtures/projcomp/bdsproj/BdsHello.bdsproj",
                             "", p, error))
      << error;
  EXPECT_EQ(p.language, TVSLanguage::CSharp);
  EXPECT_EQ(p.guid, "{9C1D2E3F-4A5B-4C6D-8E7F-0A1B2C3D4E5F}");
  EXPECT_EQ(p.settings, (TStrings{"OutputType=Exe", "AssemblyName=BdsHello",
                                  "RootNamespace=BdsHello", "StartupObject=BdsHello.Program"}));
  EXPECT_EQ(p.config, (TStrings{"OutputPath=bin\\Debug\\", "DefineConstants=DEBUG;TRACE",
                                "DebugSymbols=True", "Optimize=False", "WarningLevel=3",
                                "AllowUnsafeBlocks=False"}));
  EXPECT_EQ(p.RelativeOutputFile(), "bin/Debug/BdsHello.exe");
  ASSERT_EQ(p.references.size(), 1u);
  EXPECT_EQ(p.references[0].assemblyName, "System");
  ASSERT_EQ(p.files.size(), 3u);
  EXPECT_EQ(p.files[0].buildAction, "Compile");
  // The form's .resx depends on the source of the same name; other resources on nothing.
  EXPECT_EQ(p.files[1].buildAction, "EmbeddedResource");
  EXPECT_EQ(p.files[1].dependentUpon, "Program.cs");
  EXPECT_EQ(p.files[2].relPath, "Data\\note.txt");
  EXPECT_EQ(p.files[2].buildAction, "EmbeddedResource");
  EXPECT_EQ(p.files[2].dependentUpon, "");
}

TEST(BdsProjectReader, OtherPersonalitiesAndContainersAreRefused) {
  test::TempDir dir;
  struct Case {
    const char* text;
    const char* cause;
  };
  const Case cases[] = {
      {"<BorlandProject><PersonalityInfo><Option><Option Name=\"Personality\">"
       "DelphiDotNet.Personality</Option></Option></PersonalityInfo>"
       "<DelphiDotNet.Personality/></BorlandProject>",
       "it is not a C#Builder project (personality \"DelphiDotNet.Personality\")"},
      {"<BorlandProject><PersonalityInfo><Option><Option Name=\"Personality\">"
       "CSharp.Personality</Option></Option></PersonalityInfo></BorlandProject>",
       "it is not a C#Builder project (personality \"CSharp.Personality\")"},
      {"<VisualStudioProject/>", "it is not a Borland project (root element <VisualStudioProject>)"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.cause);
    test::WriteFile(dir / "p.bdsproj", c.text);
    TVSProject p;
    std::string error;
    EXPECT_FALSE(ReadBdsProject(dir / "p.bdsproj", "", p, error));
    EXPECT_EQ(error, c.cause);
  }
}

}  // namespace
}  // namespace wren
