// The documentation, analysis and obfuscation tool actions through the marrowby executable:
// their options found in the registry, shown and set on the command line, and steps of a
// project run with the argv recorder standing in for the Windows-only tools.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "TestSupport.h"

namespace wren {
namespace {

/// A machine whose installer registered FxCopCmd.exe (the recorder, in a folder with blanks)
/// per machine, and an options file that does not name it.
class ToolsMachine {
 public:
  ToolsMachine() {
    fxcop = dir / "Microsoft FxCop 1.36/FxCopCmd.exe";
    dotfuscator = dir / "Dotfuscator/dotfuscator.exe";
    test::InstallRecorder(fxcop);
    test::InstallRecorder(dotfuscator);
    std::string key = fxcop;
    for (char& c : key)
      if (c == '/') c = '|';
    test::WriteFile(dir / "registry.reg",
                    "Windows Registry Editor Version 5.00\r\n\r\n"
                    "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Classes\\Installer\\Assemblies\\" +
                        key + "]\r\n");
  }

  int Run(std::vector<std::string> args, std::string* out) const {
    args.insert(args.begin(), {MARROWBY_EXE, "--registry", dir / "registry.reg", "--options",
                               dir / "options.xml"});
    std::string errors;
    const int code = test::RunProgram(args, out, "", &errors);
    *out += errors;
    return code;
  }

  test::TempDir dir;
  std::string fxcop, dotfuscator;
};

TEST(OutsideTools, OptionsAreFoundShownAndSet) {
  ToolsMachine m;
  std::string out;
  ASSERT_EQ(m.Run({"options", "--json"}, &out), 0) << out;
  std::vector<std::string> keys;
  for (const nlohmann::json& o : nlohmann::json::parse(out)) {
    keys.push_back(o["key"]);
    if (o["key"] == "FxCop") {
      EXPECT_EQ(o["values"]["FxCopLocation"], m.fxcop);
    }
  }
  for (const char* key : {"NDoc", "FxCop", "Dotfuscator", "Demeanor", "XenoCode"})
    EXPECT_NE(std::find(keys.begin(), keys.end(), key), keys.end()) << key;

  ASSERT_EQ(m.Run({"options", "set", "dotfuscator", "DotfuscatorLocation", m.dotfuscator}, &out), 0)
      << out;
  ASSERT_EQ(m.Run({"options"}, &out), 0) << out;
  EXPECT_NE(out.find("  DotfuscatorLocation = " + m.dotfuscator), std::string::npos) << out;
  EXPECT_NE(out.find("  FxCopLocation = " + m.fxcop), std::string::npos) << out;

  ASSERT_EQ(m.Run({"actions"}, &out), 0) << out;
  for (const char* row :
       {"NDoc  (TWrenNDocAction, icon NDOCICON)", "FxCop  (TWrenFxCopAction, icon FXCOPICON)",
        "Demeanor  (TWrenDemeanorAction, icon DEMEANORICON)"})
    EXPECT_NE(out.find(row), std::string::npos) << row << "\n" << out;
  ASSERT_EQ(m.Run({"describe", "TWrenXenoCodeAction"}, &out), 0) << out;
  EXPECT_NE(out.find("not publicly documented"), std::string::npos) << out;
}

TEST(OutsideTools, ProjectStepsRunTheToolsFromTheirOptions) {
  ToolsMachine m;
  std::string out;
  ASSERT_EQ(m.Run({"options", "set", "Dotfuscator", "DotfuscatorLocation", m.dotfuscator}, &out), 0)
      << out;
  std::filesystem::create_directories(m.dir / "bin");  // FxCop starts in the target's folder
  test::WriteFile(
      m.dir / "build.mbproj",
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MarrowbyProject version=\"1\">\n"
      "  <Actions>\n"
      "    <Action class=\"TWrenFxCopAction\">\n"
      "      <Property name=\"Targets\"><Item>%ProjectDir%/bin/Calc.dll</Item></Property>\n"
      "      <Property name=\"OutputFile\">fxcop.xml</Property>\n"
      "      <Property name=\"Summary\">true</Property>\n"
      "    </Action>\n"
      "    <Action class=\"TWrenDotfuscatorAction\">\n"
      "      <Property name=\"ConfigFile\">%ProjectDir%/Dotfuscator.xml</Property>\n"
      "      <Property name=\"Quiet\">true</Property>\n"
      "    </Action>\n"
      "  </Actions>\n</MarrowbyProject>\n");
  ASSERT_EQ(m.Run({"run", m.dir / "build.mbproj"}, &out), 0) << out;
  const nlohmann::json fxcop = test::RecordedCall(m.fxcop);
  ASSERT_FALSE(fxcop.is_null()) << out;
  EXPECT_EQ(fxcop["argv"], nlohmann::json({m.fxcop, "/file:" + m.dir.path() + "bin/Calc.dll",
                                           "/out:fxcop.xml", "/summary"}));
  const nlohmann::json dotfuscator = test::RecordedCall(m.dotfuscator);
  ASSERT_FALSE(dotfuscator.is_null()) << out;
  EXPECT_EQ(dotfuscator["argv"],
            nlohmann::json({m.dotfuscator, "/q", m.dir.path() + "Dotfuscator.xml"}));
}

}  // namespace
}  // namespace wren
