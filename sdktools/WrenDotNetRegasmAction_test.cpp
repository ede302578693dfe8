#include "sdktools/WrenDotNetRegasmAction.h"

#include "SdkToolTestKit_test.h"

namespace wren::test {

using RegasmActionTest = TSdkToolTest;

TEST_F(RegasmActionTest, CommandLinesAndValidation) {
  const std::string regFile = "AssemblyPath=Core.dll|RegAsmMode=asmGenerateRegFile|GenRegFile=";
  CheckCommandCases<TWrenRegasmAction>(
      {{"register with every switch; AsmPath stays off the line",
        "AssemblyPath=%WORK%/My Lib.dll|AsmPath=unused|Codebase=true|Registered=true|NoLogo=true|"
        "Silent=true|Verbose=true",
        R"("{W}/My Lib.dll" /codebase /registered /nologo /silent /verbose)",
        {"{W}/My Lib.dll", "/codebase", "/registered", "/nologo", "/silent", "/verbose"}},
       {"unregister", "AssemblyPath=Core.dll|RegAsmMode=asmUnregister", "Core.dll /unregister",
        {"Core.dll", "/unregister"}},
       {"reg file with a blank", regFile + "%WORK%/core file.reg",
        R"(Core.dll /regfile":{W}/core file.reg")", {"Core.dll", "/regfile:{W}/core file.reg"}},
       {"reg file stored but expanding to blank", regFile + "%EMPTY%", "Core.dll /regfile",
        {"Core.dll", "/regfile"}},
       {"type library",
        "AssemblyPath=Core.dll|RegAsmMode=asmGenAndRegTLB|ExportToTLB=Core.tlb|GenRegFile=x.reg",
        "Core.dll /tlb:Core.tlb", {"Core.dll", "/tlb:Core.tlb"}},
       {"type library without a file", "AssemblyPath=Core.dll|RegAsmMode=asmGenAndRegTLB",
        "Core.dll /tlb", {"Core.dll", "/tlb"}}},
      {{"AssemblyPath=%EMPTY%", "\"Assembly\""}, {regFile + "%NO_SUCH_VARIABLE%", "\"Reg File\""}});
  // Stricter than the command line: a bare /regfile or /tlb is refused; every gap is reported.
  CheckValidation<TWrenRegasmAction>(
      {{"", {"Assembly: Assembly has not been set"}},
       {"RegAsmMode=asmGenerateRegFile",
        {"Assembly: Assembly has not been set", "Reg File: Reg file has not been set"}},
       {"RegAsmMode=asmGenAndRegTLB|AssemblyPath=a.dll",
        {"Type Library File: Type Library file has not been set"}},
       {"RegAsmMode=asmUnregister|AssemblyPath=a.dll", {}}});
}

}  // namespace wren::test
