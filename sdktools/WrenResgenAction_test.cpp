#include "sdktools/WrenResgenAction.h"

#include "SdkToolTestKit_test.h"

namespace wren::test {
namespace {

using ResGenActionTest = TSdkToolTest;

TEST_F(ResGenActionTest, CommandLines) {
  CheckCommandCases(
      [] { return std::make_unique<TWrenResGenAction>(); },
      {
          {"two input names reach the tool as one argument",
           {{"InputFiles", "%WORK%/a.resx %WORK%/b.resx"}},
           true,
           R"("{W}/a.resx {W}/b.resx")",
           {"{W}/a.resx {W}/b.resx"}},
          {"input and output",
           {{"InputFiles", "Strings.resx"}, {"OutputFile", "%WORK%/My Strings.resources"}},
           true,
           R"("Strings.resx" "{W}/My Strings.resources")",
           {"Strings.resx", "{W}/My Strings.resources"}},
          {"an already quoted input is not quoted again",
           {{"InputFiles", R"("Strings.resx")"}},
           true,
           R"("Strings.resx")",
           {"Strings.resx"}},
          {"output expanding to blank adds nothing",
           {{"InputFiles", "Strings.resx"}, {"OutputFile", "%EMPTY%"}},
           true,
           R"("Strings.resx")",
           {"Strings.resx"}},
          {"input expands to blank", {{"InputFiles", "%EMPTY%"}}, false, "", {},
           "\"InputFiles\""},
      });
}

TEST_F(ResGenActionTest, ValidationWantsTheInput) {
  CheckValidation([] { return std::make_unique<TWrenResGenAction>(); },
                  {{"nothing set", {}, {{"Input files", "Input file(s) has not been set"}}},
                   {"output is optional", {{"InputFiles", "a.resx"}}, {}}});
}

}  // namespace
}  // namespace wren::test
