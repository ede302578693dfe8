// The SDK tool actions end to end on Mono: `marrowby run` on project files drives Mono's sn,
// gacutil, resgen and al (linked in by `marrowby setup-mono`) on an assembly compiled with mcs.
// Each step is judged by the action, from the tool's exit code.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "TestSupport.h"

namespace wren {
namespace {

using nlohmann::json;

// Unique enough that no real assembly or key container of the machine is touched. Each test adds
// its own name: ctest runs the tests of this file side by side, and one test's clean-up must not
// remove what the other has just installed.
const char kAssemblyBase[] = "MarrowbyE2ESdkSample";
const char kContainerBase[] = "MarrowbyE2ESdkContainer";

/// A Mono-backed machine for marrowby: the hive and folders of setup-mono, and an options file
/// whose default SDK version is the one setup-mono registers.
class SdkToolsOnMono : public ::testing::Test {
 protected:
  void SetUp() override {
    const std::string test = ::testing::UnitTest::GetInstance()->current_test_info()->name();
    assemblyName_ = kAssemblyBase + test;
    container_ = kContainerBase + test;
    std::string out;
    ASSERT_EQ(test::RunProgram({MARROWBY_EXE, "setup-mono", "--dir", dir_ / "mono"}, &out), 0)
        << "setup-mono needs Mono installed: " << out;
    ASSERT_EQ(Marrowby({"options", "set", "Microsoft.NET", "DefaultSDKVersion", "v4.0"}, &out), 0)
        << out;
    CleanMachine();
  }

  void TearDown() override { CleanMachine(); }

  /// What these tests may leave in machine-wide places: the GAC entry and the key container.
  void CleanMachine() {
    std::string ignored;
    test::RunProgram({"gacutil", "-u", assemblyName_}, &ignored);
    test::RunProgram({"sn", "-q", "-d", container_}, &ignored);
  }

  int Marrowby(std::vector<std::string> args, std::string* out) {
    args.insert(args.begin(), {MARROWBY_EXE, "--registry", dir_ / "mono/registry.reg",
                               "--options", dir_ / "options.xml"});
    return test::RunProgram(args, out);
  }

  /// Writes a project of the given actions beside the sources.
  std::string WriteProject(const std::string& name, const std::string& actions) {
    const std::string path = dir_ / ("project/" + name);
    test::WriteFile(path,
                    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                    "<MarrowbyProject version=\"1\">\n  <Actions>\n" +
                        actions + "  </Actions>\n</MarrowbyProject>\n");
    return path;
  }

  /// Runs a project with JSON events; returns marrowby's exit code and the events.
  int RunProject(const std::string& project, std::vector<json>& events, std::string& text) {
    const int code = Marrowby({"run", project, "--json"}, &text);
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
      if (line.empty() || line[0] != '{') continue;
      events.push_back(json::parse(line));
    }
    return code;
  }

  /// The result events, in step order.
  static std::vector<json> Results(const std::vector<json>& events) {
    std::vector<json> results;
    for (const json& e : events)
      if (e["event"] == "result") results.push_back(e);
    return results;
  }

  static bool StepLogged(const std::vector<json>& events, int step, const std::string& fragment) {
    for (const json& e : events)
      if (e["event"] == "log" && e["step"] == step &&
          e["text"].get<std::string>().find(fragment) != std::string::npos)
        return true;
    return false;
  }

  std::string Path(const std::string& name) { return dir_ / ("project/" + name); }

  test::TempDir dir_;
  std::string assemblyName_;
  std::string container_;
};

std::string Action(const std::string& cls, const std::vector<std::pair<std::string, std::string>>& props) {
  std::string xml = "    <Action class=\"" + cls + "\">\n";
  for (const auto& [name, value] : props)
    xml += "      <Property name=\"" + name + "\">" + value + "</Property>\n";
  return xml + "    </Action>\n";
}

TEST_F(SdkToolsOnMono, KeysSigningGacResourcesAndLinker) {
  // 1. A key pair, made by the action.
  std::vector<json> events;
  std::string text;
  const std::string keys = WriteProject(
      "keys.mbproj", Action("TSNGenerateKeyPair", {{"OutputFile", "%ProjectDir%/keys/key pair.snk"}}));
  test::WriteFile(Path("keys/.keep"), "");
  ASSERT_EQ(RunProject(keys, events, text), 0) << text;
  ASSERT_TRUE(test::Exists(Path("keys/key pair.snk")));

  // 2. An assembly signed with it, and one not signed, compiled with mcs directly.
  test::WriteFile(Path("src/Sample.cs"),
                  "[assembly: System.Reflection.AssemblyVersion(\"1.2.3.4\")]\n"
                  "namespace MarrowbyE2E { public static class Sample {\n"
                  "  public static int Answer() { return 42; } } }\n");
  test::WriteFile(Path("bin dir/.keep"), "");
  test::WriteFile(Path("out dir/.keep"), "");
  const std::string dll = Path(std::string("bin dir/") + assemblyName_ + ".dll");
  std::string out;
  ASSERT_EQ(test::RunProgram({"mcs", "-nologo", "-target:library",
                              "-keyfile:" + Path("keys/key pair.snk"), "-out:" + dll,
                              Path("src/Sample.cs")},
                             &out),
            0)
      << out;
  ASSERT_EQ(test::RunProgram({"mcs", "-nologo", "-target:library",
                              "-out:" + Path("bin dir/Unsigned.dll"), Path("src/Sample.cs")},
                             &out),
            0)
      << out;
  test::WriteFile(
      Path("res/Strings.resx"),
      "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<root>\n"
      "  <resheader name=\"resmimetype\"><value>text/microsoft-resx</value></resheader>\n"
      "  <resheader name=\"version\"><value>2.0</value></resheader>\n"
      "  <resheader name=\"reader\"><value>System.Resources.ResXResourceReader, System.Windows.Forms, "
      "Version=4.0.0.0, Culture=neutral, PublicKeyToken=b77a5c561934e089</value></resheader>\n"
      "  <resheader name=\"writer\"><value>System.Resources.ResXResourceWriter, System.Windows.Forms, "
      "Version=4.0.0.0, Culture=neutral, PublicKeyToken=b77a5c561934e089</value></resheader>\n"
      "  <data name=\"Greeting\" xml:space=\"preserve\"><value>Hello from Marrowby</value></data>\n"
      "</root>\n");

  // 3. Everything that should succeed, in one build.
  const std::string dllRef = std::string("%ProjectDir%/bin dir/") + assemblyName_ + ".dll";
  const std::string main = WriteProject(
      "main.mbproj",
      Action("TSNVerifyAssembly", {{"Assembly", dllRef}}) +
          Action("TSNVerifyAssembly", {{"Assembly", "%ProjectDir%/bin dir/Unsigned.dll"},
                                       {"FailIfValid", "true"}}) +
          Action("TSNResignAssembly", {{"Assembly", dllRef}, {"KeyFile", "%ProjectDir%/keys/key pair.snk"}}) +
          Action("TSNVerifyAssembly", {{"Assembly", dllRef}, {"Force", "true"}}) +
          Action("TSNExtractPublicKey", {{"FromKeyFile", "%ProjectDir%/keys/key pair.snk"},
                                         {"ToKeyFile", "%ProjectDir%/keys/public.snk"}}) +
          Action("TSNExtractPublicKey", {{"ExtractFromType", "extractFromAssembly"},
                                         {"FromAssembly", dllRef},
                                         {"ToKeyFile", "%ProjectDir%/keys/from assembly.snk"}}) +
          Action("TSNInstallKeyPair", {{"KeyFile", "%ProjectDir%/keys/key pair.snk"},
                                       {"ContainerFile", container_}}) +
          Action("TSNExtractPublicKey", {{"ExtractFromType", "extractFromContainer"},
                                         {"FromContainer", container_},
                                         {"ToKeyFile", "%ProjectDir%/keys/from container.snk"}}) +
          Action("TSNGenericSN", {{"Options", "-q -o public.snk \"public key.csv\""},
                                  {"StartDir", "%ProjectDir%/keys"}}) +
          Action("TGACInstallAction", {{"AssemblyPath", dllRef},
                                       {"Force", "true"},
                                       {"ReferenceCount", "true"},
                                       {"RefScheme", "UNINSTALL_KEY"},
                                       {"RefID", "MarrowbyE2E"},
                                       {"RefDescription", "Marrowby end to end"}}) +
          Action("TGACUninstallAction", {{"AssemblyName", assemblyName_}}) +
          Action("TWrenResGenAction", {{"InputFiles", "%ProjectDir%/res/Strings.resx"},
                                       {"OutputFile", "%ProjectDir%/out dir/Strings.resources"}}) +
          Action("TALGenericAL", {{"Options", "/nologo /out:Strings.dll /embed:Strings.resources"},
                                  {"StartDir", "%ProjectDir%/out dir"}}));
  events.clear();
  const int code = RunProject(main, events, text);
  const std::vector<json> results = Results(events);
  ASSERT_EQ(results.size(), 13u) << text;
  for (const json& r : results) EXPECT_TRUE(r["success"].get<bool>()) << r.dump() << "\n" << text;
  EXPECT_EQ(code, 0) << text;
  // The unsigned assembly failed verification with a non-zero code, which FailIfValid accepts.
  EXPECT_NE(results[1]["exitCode"], 0);
  EXPECT_TRUE(test::Exists(Path("keys/public.snk")));
  EXPECT_TRUE(test::Exists(Path("keys/from assembly.snk")));
  EXPECT_TRUE(test::Exists(Path("keys/from container.snk")));
  EXPECT_TRUE(test::Exists(Path("keys/public key.csv")));
  EXPECT_EQ(test::ReadFile(Path("keys/public.snk")), test::ReadFile(Path("keys/from assembly.snk")));
  EXPECT_TRUE(test::Exists(Path("out dir/Strings.resources")));
  EXPECT_TRUE(test::Exists(Path("out dir/Strings.dll")));
  EXPECT_TRUE(StepLogged(events, 10, "Installed"));
  // Mono's gacutil keeps no traced references; it says so and installs all the same.
  EXPECT_TRUE(StepLogged(events, 10, "traced references"));
  EXPECT_TRUE(StepLogged(events, 11, "Uninstalled"));
  std::string listing;
  test::RunProgram({"gacutil", "-l", assemblyName_}, &listing);
  EXPECT_NE(listing.find("Number of items = 0"), std::string::npos) << listing;
}

// Steps whose failure the action reports from the tool's exit code, one build each (a build stops
// at its first failed step).
TEST_F(SdkToolsOnMono, FailuresJudgedByExitCode) {
  test::WriteFile(Path("src/Sample.cs"), "namespace MarrowbyE2E { public class Sample { } }\n");
  std::string out;
  ASSERT_EQ(test::RunProgram({"sn", "-q", "-k", Path("key.snk")}, &out), 0) << out;
  ASSERT_EQ(test::RunProgram({"mcs", "-nologo", "-target:library", "-keyfile:" + Path("key.snk"),
                              "-out:" + Path("Signed.dll"), Path("src/Sample.cs")},
                             &out),
            0)
      << out;
  ASSERT_EQ(test::RunProgram({"sn", "-q", "-i", Path("key.snk"), container_}, &out), 0) << out;

  struct TCase {
    const char* name;
    std::string action;
    int exitCode;
    const char* logged;
  };
  const TCase cases[] = {
      // A valid strong name fails the inverted verification.
      {"verify with FailIfValid on a signed assembly",
       Action("TSNVerifyAssembly", {{"Assembly", "%ProjectDir%/Signed.dll"}, {"FailIfValid", "true"}}),
       0, "is strongnamed"},
      // Mono's gacutil wants an argument after /ldl and /cdl.
      {"download cache listing", Action("TGACListAction", {}), 1, "Option /ldl takes 1 argument"},
      {"download cache deletion", Action("TGACListAction", {{"DeleteDownloadCache", "true"}}), 1,
       "Option /cdl takes 1 argument"},
      // Mono's sn does not re-sign from a key container holding the very key the assembly was
      // signed with.
      {"re-sign from a key container",
       Action("TSNResignAssembly", {{"UseKeyFile", "false"},
                                    {"Container", container_},
                                    {"Assembly", "%ProjectDir%/Signed.dll"}}),
       1, "did not match"},
      {"linker with an unknown option",
       Action("TALGenericAL", {{"Options", "/bogus"}, {"StartDir", "%ProjectDir%"}}), 1,
       "Unrecognized command line option"},
      // Two names in the one input text reach resgen as one file name.
      {"resgen with two input names",
       Action("TWrenResGenAction", {{"InputFiles", "%ProjectDir%/a.resx %ProjectDir%/b.resx"}}), 1,
       "a.resx"},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<json> events;
    std::string text;
    const std::string project = WriteProject("fail.mbproj", c.action);
    EXPECT_EQ(RunProject(project, events, text), 1) << text;
    const std::vector<json> results = Results(events);
    ASSERT_EQ(results.size(), 1u) << text;
    EXPECT_FALSE(results[0]["success"].get<bool>());
    EXPECT_EQ(results[0]["exitCode"], c.exitCode) << text;
    EXPECT_TRUE(StepLogged(events, 1, c.logged)) << text;
  }
}

}  // namespace
}  // namespace wren
