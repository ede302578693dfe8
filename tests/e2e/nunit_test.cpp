// The NUnit action with the real NUnit console runner: test assemblies compiled with Mono's mcs
// against the installed nunit.framework.dll, run through the host's process runner.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "TestSupport.h"
#include "runtime/WrenMonoSetup.h"
#include "tools/ToolsTestKit_test.h"
#include "tools/WrenNUnitAction.h"
#include "tools/WrenNUnitOptions.h"

namespace wren {
namespace {

namespace fs = std::filesystem;
using test::TempDir;

/// nunit.framework.dll from Mono's GAC, else from the nunit package's folder; "" when neither.
std::string FindNUnitFramework() {
  const std::pair<const char*, const char*> places[] = {
      {"/usr/lib/mono/gac/nunit.framework", ""}, {"/usr/lib/cli", "nunit.framework-"}};
  for (const auto& [root, prefix] : places) {
    std::error_code ec;
    for (const fs::directory_entry& dir : fs::directory_iterator(root, ec)) {
      if (dir.path().filename().string().rfind(prefix, 0) != 0) continue;
      const fs::path dll = dir.path() / "nunit.framework.dll";
      if (fs::exists(dll)) return dll.string();
    }
  }
  return "";
}

const char* const kCalcTests = R"(using NUnit.Framework;
namespace Calc.Tests {
  [TestFixture] public class AdditionFixture {
    [Test] public void AddsSmallNumbers() { Assert.AreEqual(4, 2 + 2); }
  }
  [TestFixture] public class BrokenFixture {
    [Test] public void ExpectsTheImpossible() { Assert.AreEqual(5, 2 + 2, "arithmetic still holds"); }
  }
}
)";

const char* const kPassingTests = R"(using NUnit.Framework;
namespace %NS% {
  [TestFixture] public class SmokeFixture {
    [Test] public void Runs() { Assert.IsTrue(true); }
  }
}
)";

/// The runner setup-mono installs (its launcher), and three test assemblies compiled once for the suite in a
/// folder with a blank in its name; each test registers the NUnit options afresh.
class NUnitConsoleTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    shared_ = new TempDir();
    TMonoSetupResult setup;
    std::string error;
    ASSERT_TRUE(SetupMono(*shared_ / "mono", "", setup, error)) << error;
    runner_ = setup.nunitConsole;
    ASSERT_FALSE(runner_.empty()) << "the NUnit console runner is not installed (nunit-console)";
    framework_ = FindNUnitFramework();
    ASSERT_FALSE(framework_.empty()) << "nunit.framework.dll not found";

    tests_ = *shared_ / "unit tests";
    fs::create_directories(tests_);
    fs::copy_file(framework_, tests_ + "/nunit.framework.dll");
    Compile("Calc.Tests", kCalcTests);
    for (const char* ns : {"Alpha.Tests", "Beta.Tests"}) {
      std::string source = kPassingTests;
      source.replace(source.find("%NS%"), 4, ns);
      Compile(ns, source);
    }
  }
  static void TearDownTestSuite() {
    delete shared_;
    shared_ = nullptr;
  }

  void SetUp() override {
    ASSERT_FALSE(runner_.empty() || framework_.empty()) << "no NUnit to run";
    WrenOptionsServices().RegisterOptions(OptionsClassOf<TWrenNUnitOptions>(), "NUNIT");
    ASSERT_NE(NUnitOptions(), nullptr);
    NUnitOptions()->SetNUnitLocation(runner_);
  }

  static void Compile(const std::string& name, const std::string& source) {
    const std::string cs = tests_ + "/" + name + ".cs";
    test::WriteFile(cs, source);
    std::string output;
    const int rc = test::RunProgram({"mcs", "-target:library", "-r:" + framework_,
                                     "-out:" + tests_ + "/" + name + ".dll", cs},
                                    &output);
    ASSERT_EQ(rc, 0) << "mcs failed: " << output;
  }

  test::TToolRun Run(const test::TSettings& settings) {
    TWrenNUnitAction action;
    test::ApplyProperties(action, settings);
    return test::RunAction(action, "", {{"TESTS", tests_}});
  }

  static inline TempDir* shared_ = nullptr;
  static inline std::string runner_, framework_, tests_;
  TempDir temp_;
  test::TOptionsScope options_{temp_ / "options.xml"};
};

TEST_F(NUnitConsoleTest, PassingSuiteSucceedsAndFailingSuiteFailsTheStep) {
  test::TToolRun run = Run({{"Assemblies", "%TESTS%/Alpha.Tests.dll"}});
  EXPECT_TRUE(run.success) << testing::PrintToString(run.log);
  EXPECT_TRUE(run.Logged("Tests run: 1, Errors: 0, Failures: 0"));

  run = Run({{"Assemblies", "%TESTS%/Calc.Tests.dll"}});
  EXPECT_FALSE(run.success);
  EXPECT_TRUE(run.Logged("Tests run: 2, Errors: 0, Failures: 1"));
  EXPECT_TRUE(run.Logged("arithmetic still holds"));
  // The runner ran in the assemblies' folder: that is where it leaves its result file.
  EXPECT_TRUE(fs::exists(tests_ + "/TestResult.xml"));
}

TEST_F(NUnitConsoleTest, ThreeAssembliesRunTogether) {
  const test::TToolRun run =
      Run({{"Assemblies", "%TESTS%/Alpha.Tests.dll\n%TESTS%/Beta.Tests.dll\n%TESTS%/Calc.Tests.dll"}});
  EXPECT_FALSE(run.success);  // Calc.Tests holds the failing fixture
  EXPECT_TRUE(run.Logged("Tests run: 4, Errors: 0, Failures: 1")) << testing::PrintToString(run.log);
}

TEST_F(NUnitConsoleTest, FixtureSelectsOneFixture) {
  test::TToolRun run = Run({{"Assemblies", "%TESTS%/Calc.Tests.dll"},
                            {"Fixture", "Calc.Tests.AdditionFixture"},
                            {"XMLOutputFile", "%TESTS%/addition result.xml"},
                            {"NoLogo", "true"}});
  EXPECT_TRUE(run.success) << testing::PrintToString(run.log);
  EXPECT_TRUE(run.Logged("Tests run: 1, Errors: 0, Failures: 0"));
  EXPECT_FALSE(run.Logged("NUnit-Console version"));  // no banner
  const std::string result = test::ReadFile(tests_ + "/addition result.xml");
  EXPECT_NE(result.find("AddsSmallNumbers"), std::string::npos);
  EXPECT_EQ(result.find("ExpectsTheImpossible"), std::string::npos);

  run = Run({{"Assemblies", "%TESTS%/Calc.Tests.dll"}, {"Fixture", "Calc.Tests.BrokenFixture"}});
  EXPECT_FALSE(run.success);
  EXPECT_TRUE(run.Logged("Tests run: 1, Errors: 0, Failures: 1"));
}

TEST_F(NUnitConsoleTest, SetupMonoFillsTheNUnitLocation) {
  const std::string optionsFile = temp_ / "user options.xml";
  test::WriteFile(optionsFile,
                  "<MarrowbyOptions version=\"1\"><Options key=\"NAnt\">"
                  "<Value name=\"NAntLocation\">/opt/nant/NAnt.exe</Value></Options>"
                  "<Options key=\"NUnit\"><Value name=\"NUnitLocation\">/old/nunit-console.exe</Value>"
                  "</Options></MarrowbyOptions>");
  std::string output;
  ASSERT_EQ(test::RunProgram({MARROWBY_EXE, "--options", optionsFile, "setup-mono", "--dir",
                              temp_ / "mono"},
                             &output),
            0)
      << output;
  TWrenOptionsStore store;
  std::string error;
  ASSERT_TRUE(store.Load(optionsFile, error)) << error;
  TMonoSetupResult setup;  // what setup-mono made in that folder
  ASSERT_TRUE(SetupMono(temp_ / "mono", "", setup, error)) << error;
  ASSERT_FALSE(setup.nunitConsole.empty());
  EXPECT_EQ(store.Get("NUnit", "NUnitLocation", ""), setup.nunitConsole);
  EXPECT_EQ(store.Get("NAnt", "NAntLocation", ""), "/opt/nant/NAnt.exe");  // the rest is kept
}

}  // namespace
}  // namespace wren
