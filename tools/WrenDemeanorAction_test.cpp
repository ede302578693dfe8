#include "tools/WrenDemeanorAction.h"

#include <gtest/gtest.h>

#include "OutsideToolTestKit_test.h"
#include "pages/WrenDemeanorFrames.h"
#include "tools/WrenDemeanorOptions.h"

namespace wren {
namespace {

using DemeanorActionTest = test::TOutsideToolTest<TWrenDemeanorOptions>;

TEST_F(DemeanorActionTest, SwitchesAsWrittenBetweenOutputAndInput) {
  MakeWorkDirs({"bin/Release"});
  const std::string w = work_;
  ExpectCommandLines<TWrenDemeanorAction>({
      {"every property, the switches as the tool reads them",
       {{"InputAssembly", "%WORK%/bin/%CONFIG%/Calc App.exe"},
        {"OutputDirectory", "%WORK%/obfuscated"},
        // Written as the tool reads them: a path with blanks is quoted by the user.
        {"ExtraSwitches", "/es\n/r:\"%WORK%/Demeanor.xml\" /sa\n\n/app"}},
       {"/out:" + w + "/obfuscated", "/es", "/r:" + w + "/Demeanor.xml", "/sa", "/app",
        w + "/bin/Release/Calc App.exe"},
       w + "/bin/Release"},
      {"the input alone",
       {{"InputAssembly", "%WORK%/bin/Release/Calc App.exe"}},
       {w + "/bin/Release/Calc App.exe"},
       w + "/bin/Release"},
  });
  ExpectExitCodes<TWrenDemeanorAction>({{"InputAssembly", "a.exe"}},
                                       {{1, false, "Demeanor failed with exit code 1"}});
  ExpectNeverStarts<TWrenDemeanorAction>(
      {{"a switch that does not expand",
        {{"InputAssembly", "a.exe"}, {"ExtraSwitches", "/c:%NO_SUCH_WREN_VAR%"}},
        "\"Extra Switch\""}});
}

TEST_F(DemeanorActionTest, ValidationPagesAndNotes) {
  ExpectValidation<TWrenDemeanorAction>(
      {{"",
        {},
        {{"Demeanor Options", "Path to Demeanor.exe not defined, please check Tools->Options"},
         {"Input Assembly", "Input assembly has not been set"}}}});
  EXPECT_NE(TWrenDemeanorAction().GetNotes().find("not publicly documented"), std::string::npos);

  TDemeanorPEFrame pe;
  TDemeanorExcludeFrame exclude;
  test::ExpectPagesRoundTrip<TWrenDemeanorAction>(
      {{"InputAssembly", "a.exe"}, {"OutputDirectory", "out"}, {"ExtraSwitches", "/es\n/sa"}},
      {&pe, &exclude});
  pe.edInputAssembly.text = " ";
  std::string message;
  EXPECT_FALSE(pe.CheckPage(message));
  EXPECT_EQ(message, "Input Assembly is required.");
}

}  // namespace
}  // namespace wren
