#include "sdktools/WrenDotNetTLBExpAction.h"

#include "SdkToolTestKit_test.h"

namespace wren::test {
namespace {

using TLBExpActionTest = TSdkToolTest;

TEST_F(TLBExpActionTest, CommandLines) {
  CheckCommandCases(
      [] { return std::make_unique<TTLBExportAction>(); },
      {
          {"assembly and output with blanks",
           {{"AssemblyName", "%WORK%/My Lib.dll"}, {"OutputFile", "%WORK%/My Lib.tlb"}},
           true,
           R"("{W}/My Lib.dll" /out:"{W}/My Lib.tlb")",
           {"{W}/My Lib.dll", "/out:{W}/My Lib.tlb"}},
          {"every switch",
           {{"AssemblyName", "Core.dll"},
            {"OutputFile", "Core.tlb"},
            {"NoLogo", "true"},
            {"Silent", "true"},
            {"NamesCaseFile", "names.txt"}},
           true,
           "Core.dll /out:Core.tlb /nologo /silent /names:names.txt",
           {"Core.dll", "/out:Core.tlb", "/nologo", "/silent", "/names:names.txt"}},
          {"names file expanding to blank adds nothing",
           {{"AssemblyName", "Core.dll"}, {"OutputFile", "Core.tlb"}, {"NamesCaseFile", "%EMPTY%"}},
           true,
           "Core.dll /out:Core.tlb",
           {"Core.dll", "/out:Core.tlb"}},
          {"output expands to blank",
           {{"AssemblyName", "Core.dll"}, {"OutputFile", "%EMPTY%"}},
           false, "", {}, "\"OutputFile\""},
          {"assembly expands to blank",
           {{"AssemblyName", "%EMPTY%"}, {"OutputFile", "Core.tlb"}},
           false, "", {}, "\"AssemblyName\""},
      });
}

TEST_F(TLBExpActionTest, ValidationReportsEveryGap) {
  CheckValidation([] { return std::make_unique<TTLBExportAction>(); },
                  {
                      {"nothing set",
                       {},
                       {{"Output filename", "Output filename has not been set"},
                        {"Assembly", "Assembly name has not been set"}}},
                      {"names file is optional",
                       {{"AssemblyName", "a.dll"}, {"OutputFile", "a.tlb"}},
                       {}},
                  });
}

}  // namespace
}  // namespace wren::test
