#include "sdktools/WrenResgenAction.h"

#include "SdkToolTestKit_test.h"

namespace wren::test {

using ResGenActionTest = TSdkToolTest;

TEST_F(ResGenActionTest, CommandLinesAndValidation) {
  CheckCommandCases<TWrenResGenAction>(
      {{"two input names reach the tool as one argument", "InputFiles=%WORK%/a.resx %WORK%/b.resx",
        R"("{W}/a.resx {W}/b.resx")", {"{W}/a.resx {W}/b.resx"}},
       {"input and output", "InputFiles=Strings.resx|OutputFile=%WORK%/My Strings.resources",
        R"("Strings.resx" "{W}/My Strings.resources")",
        {"Strings.resx", "{W}/My Strings.resources"}},
       {"an already quoted input is not quoted again", R"(InputFiles="Strings.resx")",
        R"("Strings.resx")", {"Strings.resx"}},
       {"output expanding to blank adds nothing", "InputFiles=Strings.resx|OutputFile=%EMPTY%",
        R"("Strings.resx")", {"Strings.resx"}}},
      {{"InputFiles=%EMPTY%", "\"InputFiles\""}});
  CheckValidation<TWrenResGenAction>(
      {{"", {"Input files: Input file(s) has not been set"}}, {"InputFiles=a.resx", {}}});
}

}  // namespace wren::test
