#include "sdktools/WrenDotNetTLBExpAction.h"

#include "SdkToolTestKit_test.h"

namespace wren::test {

using TLBExpActionTest = TSdkToolTest;

TEST_F(TLBExpActionTest, CommandLinesAndValidation) {
  CheckCommandCases<TTLBExportAction>(
      {{"assembly and output with blanks",
        "AssemblyName=%WORK%/My Lib.dll|OutputFile=%WORK%/My Lib.tlb",
        R"("{W}/My Lib.dll" /out:"{W}/My Lib.tlb")", {"{W}/My Lib.dll", "/out:{W}/My Lib.tlb"}},
       {"every switch",
        "AssemblyName=Core.dll|OutputFile=Core.tlb|NoLogo=true|Silent=true|NamesCaseFile=names.txt",
        "Core.dll /out:Core.tlb /nologo /silent /names:names.txt",
        {"Core.dll", "/out:Core.tlb", "/nologo", "/silent", "/names:names.txt"}},
       {"names file expanding to blank adds nothing",
        "AssemblyName=Core.dll|OutputFile=Core.tlb|NamesCaseFile=%EMPTY%", "Core.dll /out:Core.tlb",
        {"Core.dll", "/out:Core.tlb"}}},
      {{"AssemblyName=Core.dll|OutputFile=%EMPTY%", "\"OutputFile\""},
       {"AssemblyName=%EMPTY%|OutputFile=Core.tlb", "\"AssemblyName\""}});
  // Both gaps are reported.
  CheckValidation<TTLBExportAction>(
      {{"",
        {"Output filename: Output filename has not been set",
         "Assembly: Assembly name has not been set"}},
       {"AssemblyName=a.dll|OutputFile=a.tlb", {}}});
}

}  // namespace wren::test
