#include "compilers/WrenMSBuildAction.h"

#include <gtest/gtest.h>

#include <functional>

#include "WrenProcess.h"
#include "compilers/CompilerTestHelpers.h"

namespace wren {
namespace {

using test::TempDir;

TEST(MSBuildAction, CommandLineOrderAndForms) {
  TempDir dir;
  const std::string project = dir / "My App.proj";
  test::WriteFile(project, "<Project/>");
  struct TCase {
    const char* name;
    std::function<void(TMSBuildAction&)> setup;
    std::string expected;  // {P} stands for the quoted project file
  };
  const std::vector<TCase> cases = {
      {"defaults still name the verbosity", [](TMSBuildAction&) {}, "/v:normal {P}"},
      {"properties in one switch, values quoted",
       [](TMSBuildAction& a) {
         a.Properties = {"Configuration=Release", "Platform=Any CPU"};
       },
       "/v:normal /property:Configuration=\"Release\";Platform=\"Any CPU\" {P}"},
      {"lines without a name are skipped",
       [](TMSBuildAction& a) {
         a.Properties = {"=x", "  =y", "NoValueSign", " OutDir =%OUT%"};
       },
       "/v:normal /property:OutDir=\"bin\" {P}"},
      {"everything, in order",
       [](TMSBuildAction& a) {
         a.LogLevel = TMSLogLevel::llDiagnostic;
         a.Properties = {"A=1"};
         a.NoLogo = a.Restricted = true;
         a.Targets = "Build;Test";
       },
       "/v:diagnostic /property:A=\"1\" /nologo /restricted /target:Build;Test {P}"},
      {"quiet with a target holding a blank",
       [](TMSBuildAction& a) {
         a.LogLevel = TMSLogLevel::llQuiet;
         a.Targets = "My Target";
       },
       "/v:quiet /target:\"My Target\" {P}"},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.name);
    test::TLoggingHost host;
    host.host.SetVariable("OUT", "bin");
    TMSBuildAction action;
    action.SetHost(&host.host);
    action.BuildFile = project;
    c.setup(action);
    EXPECT_EQ(test::CommandLineOf(action),
              test::ReplaceText(c.expected, "{P}", "\"" + project + "\""))
        << host.Text();
  }

  // The Windows argument rules hand msbuild each pair unquoted, in one argument.
  TMSBuildAction action;
  action.BuildFile = project;
  action.Properties = {"Configuration=Release", "Platform=Any CPU"};
  const std::vector<std::string> argv = SplitCommandLine(test::CommandLineOf(action));
  EXPECT_EQ(argv, (std::vector<std::string>{
                      "/v:normal", "/property:Configuration=Release;Platform=Any CPU", project}));
}

TEST(MSBuildAction, FailsBeforeAnyProcessWhenTheProjectIsMissingOrUnexpandable) {
  struct TCase {
    const char* name;
    std::function<void(TMSBuildAction&)> setup;
    const char* message;
  };
  const std::vector<TCase> cases = {
      {"missing project", [](TMSBuildAction& a) { a.BuildFile = "/no/such/dir/app.proj"; },
       "Project file does not exist : /no/such/dir/app.proj"},
      {"property name",
       [](TMSBuildAction& a) {
         a.BuildFile = "/etc/hostname";
         a.Properties = {"%NO_SUCH_VARIABLE%=1"};
       },
       "Property"},
      {"property value",
       [](TMSBuildAction& a) {
         a.BuildFile = "/etc/hostname";
         a.Properties = {"A=%NO_SUCH_VARIABLE%"};
       },
       "Value"},
      {"targets",
       [](TMSBuildAction& a) {
         a.BuildFile = "/etc/hostname";
         a.Targets = "%NO_SUCH_VARIABLE%";
       },
       "Targets"},
  };
  for (const TCase& c : cases) {
    SCOPED_TRACE(c.name);
    test::TLoggingHost host;
    TMSBuildAction action;
    action.SetHost(&host.host);
    c.setup(action);
    EXPECT_EQ(test::CommandLineOf(action), "<failed>");
    EXPECT_TRUE(host.Logged(c.message)) << host.Text();
  }
}

TEST(MSBuildAction, ValidationAndPublishedProperties) {
  TMSBuildAction action;

  struct TErrors : IWrenActionValidationError {
    std::vector<std::string> items;
    void AddError(const std::string& field, const std::string& message) override {
      items.push_back(field + ": " + message);
    }
  } errors;
  EXPECT_FALSE(action.Validate(errors));
  EXPECT_EQ(errors.items, std::vector<std::string>{"Project File: Project file has not been set"});

  const TPublishedProperty* level = FindProperty(action.GetPublishedProperties(), "LogLevel");
  ASSERT_NE(level, nullptr);
  EXPECT_EQ(PropertyValueToString(*level, level->get(action)), "llNormal");
  TStrings names;
  const TPropertyTable& table = action.GetPublishedProperties();
  for (size_t i = TWrenDotNetAction::ClassProperties().size(); i < table.size(); ++i)
    names.push_back(table[i].name);
  EXPECT_EQ(names, (TStrings{"BuildFile", "Properties", "LogLevel", "OutputToLog", "Targets",
                             "NoLogo", "Restricted"}));
}

}  // namespace
}  // namespace wren
