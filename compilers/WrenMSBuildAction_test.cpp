#include "compilers/WrenMSBuildAction.h"

#include <gtest/gtest.h>

#include <functional>

#include "compilers/CompilerTestHelpers.h"
#include "tools/ToolsTestKit_test.h"

namespace wren {
namespace {

using TSetup = std::function<void(TMSBuildAction&)>;

/// msbuild.exe (the recorder) in the framework folder, and a project file with a blank in its
/// name.
class MSBuildActionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    test::InstallRecorder(msbuild_);
    test::WriteFile(project_, "<Project/>");
  }
  /// Runs the action on project_ after setup, with %OUT% = bin; commandLine gets the text first.
  test::TToolRun Run(const TSetup& setup, std::string* commandLine = nullptr) {
    TMSBuildAction action;
    action.OverrideSDKDefault = true;
    action.SetDefaultSDKVersion(test::TTestFrameWork::kSDKVersion);
    action.BuildFile = project_;
    setup(action);
    test::TLoggingHost host;
    host.host.SetVariable("OUT", "bin");
    action.SetHost(&host.host);
    if (commandLine) *commandLine = test::CommandLineOf(action);
    return test::RunAction(action, msbuild_, {{"OUT", "bin"}});
  }

  test::TempDir dir_;
  test::TTestFrameWork frameWork_{dir_};
  const std::string msbuild_ = frameWork_.Folder() + "msbuild.exe";
  const std::string project_ = dir_ / "My App.proj";
};

// The command line quotes values; the recorder shows what the Windows argument rules hand msbuild:
// each property pair unquoted, all pairs in one argument.
TEST_F(MSBuildActionTest, CommandLineOrderAndForms) {
  using TArgs = std::vector<std::string>;
  const std::vector<std::tuple<const char*, TSetup, std::string, TArgs>> cases = {
      {"defaults still name the verbosity", [](auto&) {}, "/v:normal {P}", {"/v:normal"}},
      {"properties in one switch, values quoted",
       [](auto& a) { a.Properties = {"Configuration=Release", "Platform=Any CPU"}; },
       "/v:normal /property:Configuration=\"Release\";Platform=\"Any CPU\" {P}",
       {"/v:normal", "/property:Configuration=Release;Platform=Any CPU"}},
      {"a value holding a semicolon reaches msbuild as one property",
       [](auto& a) { a.Properties = {"DefineConstants=DEBUG;TRACE", "Platform=Any CPU"}; },
       "/v:normal /property:DefineConstants=\"DEBUG;TRACE\";Platform=\"Any CPU\" {P}",
       {"/v:normal", "/property:DefineConstants=DEBUG%3BTRACE;Platform=Any CPU"}},
      {"lines without a name are skipped",
       [](auto& a) { a.Properties = {"=x", "  =y", "NoValueSign", " OutDir =%OUT%"}; },
       "/v:normal /property:OutDir=\"bin\" {P}", {"/v:normal", "/property:OutDir=bin"}},
      {"everything, in order",
       [](auto& a) {
         a.LogLevel = TMSLogLevel::llDiagnostic;
         a.Properties = {"A=1"};
         a.NoLogo = a.Restricted = true;
         a.Targets = "Build;Test";
       },
       "/v:diagnostic /property:A=\"1\" /nologo /restricted /target:Build;Test {P}",
       {"/v:diagnostic", "/property:A=1", "/nologo", "/restricted", "/target:Build;Test"}},
      {"quiet with a target holding a blank",
       [](auto& a) { a.LogLevel = TMSLogLevel::llQuiet; a.Targets = "My Target"; },
       "/v:quiet /target:\"My Target\" {P}", {"/v:quiet", "/target:My Target"}},
  };
  for (auto [name, setup, expected, args] : cases) {
    SCOPED_TRACE(name);
    std::string commandLine;
    const test::TToolRun run = Run(setup, &commandLine);
    EXPECT_EQ(commandLine, test::ReplaceText(expected, "{P}", "\"" + project_ + "\""));
    EXPECT_TRUE(run.success) << testing::PrintToString(run.log);
    args.push_back(project_);
    EXPECT_EQ(run.Args(), args);
  }
}

// Only what the quotes of the property switch hold is escaped, with the quote state read as the
// argument split reads it.
TEST(MSBuildPropertyEscape, EscapesSemicolonsQuotedInsideThePropertySwitchOnly) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {R"(/target:A;B /property:X="1;2";Y="3" "/p/a;b.proj")",
       R"(/target:A;B /property:X="1%3B2";Y="3" "/p/a;b.proj")"},
      {R"(/PROPERTY:X="1;2")", R"(/PROPERTY:X="1%3B2")"},
      {R"(/property:X="a\"b;c")", R"(/property:X="a\"b%3Bc")"},  // \" is a quote, not the end
      {R"(/property:X="a""b;c")", R"(/property:X="a""b%3Bc")"},    // so is "" inside quotes
      {R"(/property:X="a\\";Y="b")", R"(/property:X="a\\";Y="b")"},  // \\" does end it
      {R"(/v:normal "/x;y" /property:X=1;Y=2)", R"(/v:normal "/x;y" /property:X=1;Y=2)"},
  };
  for (const auto& [text, expected] : cases)
    EXPECT_EQ(EscapeQuotedPropertySeparators(text), expected) << text;
}

TEST_F(MSBuildActionTest, FailsBeforeAnyProcessStartsWhenTheProjectIsMissingOrUnexpandable) {
  const std::vector<std::tuple<const char*, TSetup, const char*>> cases = {
      {"missing project", [](auto& a) { a.BuildFile = "/no/such/dir/app.proj"; },
       "Project file does not exist : /no/such/dir/app.proj"},
      {"property name", [](auto& a) { a.Properties = {"%NO_SUCH_VARIABLE%=1"}; }, "Property"},
      {"property value", [](auto& a) { a.Properties = {"A=%NO_SUCH_VARIABLE%"}; }, "Value"},
      {"targets", [](auto& a) { a.Targets = "%NO_SUCH_VARIABLE%"; }, "Targets"},
  };
  for (const auto& [name, setup, message] : cases) {
    SCOPED_TRACE(name);
    const test::TToolRun run = Run(setup);
    EXPECT_FALSE(run.success);
    EXPECT_TRUE(run.Logged(message)) << testing::PrintToString(run.log);
    EXPECT_TRUE(run.call.is_null()) << "msbuild.exe must not start";
  }
  TMSBuildAction unset;
  test::TReportCollector errors;
  EXPECT_FALSE(unset.Validate(errors));
  EXPECT_EQ(errors.reports,
            (decltype(errors.reports){{"Project File", "Project file has not been set"}}));
}

}  // namespace
}  // namespace wren
