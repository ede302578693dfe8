#include "WrenRegistryHive.h"

#include <gtest/gtest.h>

namespace wren {
namespace {

constexpr TRegistryRoot HKLM = TRegistryRoot::HKEY_LOCAL_MACHINE;

std::shared_ptr<IWrenRegistry> Parse(const std::string& text) {
  std::string error;
  auto registry = ParseRegistryText(text, "test.reg", error);
  EXPECT_NE(registry, nullptr) << error;
  return registry;
}

TEST(WrenRegistryHive, ValuesKeysRootsDeletionsAndOrder) {
  auto registry = Parse(
      "\xEF\xBB\xBFWindows Registry Editor Version 5.00\n; a comment line\n"
      "[HKEY_LOCAL_MACHINE\\Software\\Wren\\Zeta]\n[HKLM\\Software\\Wren\\alpha]\n"
      "[HKEY_LOCAL_MACHINE\\SOFTWARE\\wren\\Mid]\n"
      "[HKLM\\Software\\Wren\\ZETA]\n"  // listed again: keeps its first place and spelling
      "[HKLM\\Software\\Wren]\n"
      "\"zz\"=\"last-first\"\n@=\"the default\"\n\"Path\"=\"C:\\\\Program Files\\\\\"\n"
      "\"Quote\"=\"say \\\"hi\\\"\"\n\"Count\"=dword:0000000a\n\"Max\"=dword:FFFFFFFF\n"
      "   \"Indented\" = \"x=y\"  \n\"Blob\"=hex:01,02,\\\n  03,04\n"
      "\"Expand\"=hex(2):25,00,41,00,25,00,00,00\n\"ZZ\"=\"overwritten\"\n"
      "[HKCR\\.cs]\n@=\"cs\"\n[HKCU\\Env]\n\"A\"=\"1\"\n\"B\"=\"2\"\n\"C\"=\"3\"\n"
      "[HKU\\S-1\\Env]\n\"X\"=\"y\"\n[HKEY_CURRENT_CONFIG\\Ignored]\n\"I\"=\"i\"\n"
      "[HKLM\\A\\B\\C]\n\"v\"=\"1\"\n[HKLM\\A\\D]\n"
      "[-HKLM\\a\\b]\n\"after\"=\"ignored under a removed key\"\n[-HKLM\\Never\\There]\n"
      "[HKEY_CURRENT_USER\\Env]\n\"b\"=-\n\"Missing\"=-\n\"A\"=-\n\"A\"=\"again\"\n");
  ASSERT_NE(registry, nullptr);

  auto wren = registry->OpenKey(HKLM, "software\\WREN");
  ASSERT_NE(wren, nullptr);
  EXPECT_EQ(wren->GetKeyNames(), (TStrings{"Zeta", "alpha", "Mid"}));
  EXPECT_EQ(wren->GetValueNames(),
            (TStrings{"zz", "", "Path", "Quote", "Count", "Max", "Indented", "Blob", "Expand"}));
  const std::pair<const char*, const char*> values[] = {
      {"ZZ", "overwritten"}, {"", "the default"}, {"path", "C:\\Program Files\\"},
      {"Quote", "say \"hi\""}, {"count", "10"}, {"Max", "4294967295"}, {"Indented", "x=y"},
      {"Blob", ""}, {"Expand", "%A%"}, {"Missing", ""}};
  for (const auto& [name, expected] : values) {
    SCOPED_TRACE(name);
    EXPECT_EQ(wren->ReadString(name), expected);
    EXPECT_EQ(wren->ValueExists(name), std::string(name) != "Missing");
  }

  // Parents exist because a child is named; roots open with an empty path.
  EXPECT_NE(registry->OpenKey(HKLM, ""), nullptr);
  ASSERT_NE(registry->OpenKey(HKLM, "Software"), nullptr);
  EXPECT_EQ(registry->OpenKey(HKLM, "Software")->GetKeyNames(), (TStrings{"Wren"}));
  EXPECT_EQ(registry->OpenKey(HKLM, "Software\\Nope"), nullptr);
  EXPECT_EQ(registry->OpenKey(TRegistryRoot::HKEY_CURRENT_USER, "Software"), nullptr);
  auto zeta = registry->OpenKey(HKLM, "Software\\Wren\\zeta");
  ASSERT_NE(zeta, nullptr);
  EXPECT_TRUE(zeta->GetValueNames().empty());
  EXPECT_FALSE(zeta->ValueExists(""));  // no default value was set

  EXPECT_EQ(registry->OpenKey(TRegistryRoot::HKEY_CLASSES_ROOT, ".CS")->ReadString(""), "cs");
  EXPECT_EQ(registry->OpenKey(TRegistryRoot::HKEY_USERS, "s-1\\env")->ReadString("x"), "y");
  // Removing a key removes its subkeys; values and keys added again come last.
  EXPECT_EQ(registry->OpenKey(HKLM, "A\\B"), nullptr);
  ASSERT_NE(registry->OpenKey(HKLM, "A"), nullptr);
  EXPECT_EQ(registry->OpenKey(HKLM, "A")->GetKeyNames(), (TStrings{"D"}));
  auto env = registry->OpenKey(TRegistryRoot::HKEY_CURRENT_USER, "Env");
  ASSERT_NE(env, nullptr);
  EXPECT_EQ(env->GetValueNames(), (TStrings{"C", "A"}));
  EXPECT_EQ(env->ReadString("a"), "again");
}

// Both headers, CR LF and UTF-16 (a UTF-8 mark with LF line ends is read above).
TEST(WrenRegistryHive, ReadsEveryHeaderAndEncodingAndSyntaxErrorsNameTheLine) {
  const std::string body = "\r\n[HKEY_LOCAL_MACHINE\\Software\\Wren]\r\n\"Name\"=\"value\"\r\n";
  std::string utf16 = "\xFF\xFE";
  for (char c : "Windows Registry Editor Version 5.00" + body) utf16 += std::string{c, '\0'};
  for (const std::string& text : {"REGEDIT4" + body, utf16}) {
    auto registry = Parse(text);
    auto key = registry ? registry->OpenKey(HKLM, "Software\\Wren") : nullptr;
    ASSERT_NE(key, nullptr) << text;
    EXPECT_EQ(key->ReadString("Name"), "value");
  }

  const std::pair<const char*, const char*> cases[] = {
      {"REGEDIT5\n[HKLM\\A]\n", "test.reg:1: not a registry file"},
      {"REGEDIT4\n\"v\"=\"outside\"\n", "test.reg:2: value outside"},
      {"REGEDIT4\n[HKLM\\A\n", "test.reg:2: missing ']'"},
      {"REGEDIT4\n[HKEY_NOWHERE\\A]\n", "test.reg:2: unknown root key"},
      {"REGEDIT4\n\n[HKLM\\A]\n\"v\"=\"open\n", "test.reg:4: unterminated string"},
      {"REGEDIT4\n[HKLM\\A]\n\"v\" \"x\"\n", "test.reg:3: expected '='"},
      {"REGEDIT4\n[HKLM\\A]\n\"v\"=dword:123456789\n", "test.reg:3: a dword"},
      {"REGEDIT4\n[HKLM\\A]\n\"v\"=hex:01,\\\n  0z\n", "test.reg:3: bad byte"},
      {"REGEDIT4\n[HKLM\\A]\n\"v\"=hex:01,\\", "test.reg:3: continuation line missing"},
      {"REGEDIT4\n[HKLM\\A]\n\"v\"=hex(2aaaaaaaa):01\n", "test.reg:3: bad hex(type)"},
      {"REGEDIT4\n[HKLM\\A]\n\"v\"=str\n", "test.reg:3: unrecognised value data"},
      {"REGEDIT4\n[HKLM\\A]\n\"v\"=\"a\" junk\n", "test.reg:3: unexpected text after"},
      {"REGEDIT4\n[HKLM\\A]\n\"v\"=hex:01,02\\\n  ,03\ngarbage\n", "test.reg:5: unexpected text"},
  };
  for (const auto& [text, expected] : cases) {
    SCOPED_TRACE(text);
    std::string error;
    EXPECT_EQ(ParseRegistryText(text, "test.reg", error), nullptr);
    EXPECT_NE(error.find(expected), std::string::npos) << error;
  }
}

TEST(WrenRegistryHive, LoadMergesFilesInOrderAndGlobalRegistry) {
  const std::string dir = SOURCE_DIR "/tests/fixtures/registry/";
  std::string error;
  auto registry =
      LoadRegistryHive({dir + "framework-base.reg", dir + "framework-update.reg"}, error);
  ASSERT_NE(registry, nullptr) << error;
  auto framework = registry->OpenKey(HKLM, "SOFTWARE\\Microsoft\\.NETFramework");
  ASSERT_NE(framework, nullptr);
  EXPECT_EQ(framework->ReadString("InstallRoot"), "D:\\Framework\\");  // the update's value
  EXPECT_FALSE(framework->ValueExists("sdkInstallRootv2.0"));           // and its deletions
  EXPECT_EQ(registry->OpenKey(HKLM, "Software\\Microsoft\\.NETFramework\\Policy")->GetKeyNames(),
            (TStrings{"v2.0", "v1.1", "v4.0"}));
  EXPECT_EQ(LoadRegistryHive({dir + "framework-base.reg", dir + "no-such.reg"}, error), nullptr);
  EXPECT_NE(error.find("no-such.reg"), std::string::npos) << error;

  SetWrenRegistry(registry);
  EXPECT_NE(WrenRegistry().OpenKey(HKLM, "software\\microsoft\\.netframework"), nullptr);
  SetWrenRegistry(nullptr);  // back to the empty registry
  EXPECT_EQ(WrenRegistry().OpenKey(HKLM, ""), nullptr);
  registry.reset();
  EXPECT_EQ(framework->ReadString("InstallRoot"), "D:\\Framework\\") << "outlives its registry";
}

}  // namespace
}  // namespace wren
