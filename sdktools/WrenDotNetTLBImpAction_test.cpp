#include "sdktools/WrenDotNetTLBImpAction.h"

#include "SdkToolTestKit_test.h"

namespace wren::test {

using TLBImpActionTest = TSdkToolTest;

TEST_F(TLBImpActionTest, CommandLinesAndValidation) {
  CheckCommandCases<TTLBImportAction>(
      {{"resource id after a backslash",
        "TypeLibraryName=%WORK%/My Lib.dll|ResourceID=2|AssemblyOutFile=Interop.MyLib.dll",
        R"("{W}/My Lib.dll\2" /out:Interop.MyLib.dll)",
        {"{W}/My Lib.dll\\2", "/out:Interop.MyLib.dll"}},
       {"every value and switch in order, an empty reference line adds nothing",
        "TypeLibraryName=lib.tlb|AssemblyOutFile=Interop.Lib.dll|Namespace=Lib|AsmVersion=1.2.3.4|"
        "References=a.dll\n\n%WORK%/b c.dll|PublicKeyFile=pub.snk|KeyFile=key.snk|KeyContainer=Box|"
        "StrictRef=true|SysArray=true|Primary=true|Verbose=true|Silent=true|NoLogo=true|"
        "AllowUnsafe=true|DelaySign=true|Transform=true",
        "lib.tlb /out:Interop.Lib.dll /namespace:Lib /asmversion:1.2.3.4 /reference:a.dll "
        R"(/reference:"{W}/b c.dll" /publickey:pub.snk /keyfile:key.snk /keycontainer:Box )"
        "/transform:DispRet /delaysign /unsafe /nologo /silent /verbose /primary /sysarray "
        "/strictref",
        {"lib.tlb", "/out:Interop.Lib.dll", "/namespace:Lib", "/asmversion:1.2.3.4",
         "/reference:a.dll", "/reference:{W}/b c.dll", "/publickey:pub.snk", "/keyfile:key.snk",
         "/keycontainer:Box", "/transform:DispRet", "/delaysign", "/unsafe", "/nologo", "/silent",
         "/verbose", "/primary", "/sysarray", "/strictref"}},
       // Validation refuses a missing output file, the command line does not.
       {"no output file, optional values expanding to blank add nothing",
        "TypeLibraryName=lib.tlb|ResourceID=%EMPTY%|Namespace=%EMPTY%|KeyFile=%EMPTY%", "lib.tlb",
        {"lib.tlb"}}},
      {{"TypeLibraryName=lib.tlb|References=a.dll\n%NO_SUCH_VARIABLE%\nc.dll", "\"Reference 2\""},
       {"TypeLibraryName=%EMPTY%", "\"TypeLibraryName\""}});
  // Both gaps are reported.
  CheckValidation<TTLBImportAction>(
      {{"",
        {"Type Library name: Type Library name has not been set",
         "Assembly: Assembly output filename has not been set"}},
       {"TypeLibraryName=lib.tlb", {"Assembly: Assembly output filename has not been set"}}});
}

}  // namespace wren::test
