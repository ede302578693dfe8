#include "sdktools/WrenDotNetRegasmAction.h"

#include "SdkToolTestKit_test.h"

namespace wren::test {
namespace {

using RegasmActionTest = TSdkToolTest;

TEST_F(RegasmActionTest, CommandLines) {
  CheckCommandCases(
      [] { return std::make_unique<TWrenRegasmAction>(); },
      {
          {"register with every switch; AsmPath stays off the line",
           {{"AssemblyPath", "%WORK%/My Lib.dll"},
            {"AsmPath", "unused"},
            {"Codebase", "true"},
            {"Registered", "true"},
            {"NoLogo", "true"},
            {"Silent", "true"},
            {"Verbose", "true"}},
           true,
           R"("{W}/My Lib.dll" /codebase /registered /nologo /silent /verbose)",
           {"{W}/My Lib.dll", "/codebase", "/registered", "/nologo", "/silent", "/verbose"}},
          {"unregister",
           {{"AssemblyPath", "Core.dll"}, {"RegAsmMode", "asmUnregister"}},
           true,
           "Core.dll /unregister",
           {"Core.dll", "/unregister"}},
          {"reg file with a blank",
           {{"AssemblyPath", "Core.dll"},
            {"RegAsmMode", "asmGenerateRegFile"},
            {"GenRegFile", "%WORK%/core file.reg"}},
           true,
           R"(Core.dll /regfile":{W}/core file.reg")",
           {"Core.dll", "/regfile:{W}/core file.reg"}},
          {"reg file stored but expanding to blank",
           {{"AssemblyPath", "Core.dll"},
            {"RegAsmMode", "asmGenerateRegFile"},
            {"GenRegFile", "%EMPTY%"}},
           true,
           "Core.dll /regfile",
           {"Core.dll", "/regfile"}},
          {"type library",
           {{"AssemblyPath", "Core.dll"},
            {"RegAsmMode", "asmGenAndRegTLB"},
            {"ExportToTLB", "Core.tlb"},
            {"GenRegFile", "ignored.reg"}},
           true,
           "Core.dll /tlb:Core.tlb",
           {"Core.dll", "/tlb:Core.tlb"}},
          {"type library without a file",
           {{"AssemblyPath", "Core.dll"}, {"RegAsmMode", "asmGenAndRegTLB"}},
           true,
           "Core.dll /tlb",
           {"Core.dll", "/tlb"}},
          {"assembly expands to blank", {{"AssemblyPath", "%EMPTY%"}}, false, "", {},
           "\"Assembly\""},
          {"reg file fails to expand",
           {{"AssemblyPath", "Core.dll"},
            {"RegAsmMode", "asmGenerateRegFile"},
            {"GenRegFile", "%NO_SUCH_VARIABLE%"}},
           false, "", {}, "\"Reg File\""},
      });
}

// Stricter than the command line: a bare /regfile or /tlb is refused here.
TEST_F(RegasmActionTest, ValidationReportsEveryGap) {
  CheckValidation(
      [] { return std::make_unique<TWrenRegasmAction>(); },
      {
          {"nothing set", {}, {{"Assembly", "Assembly has not been set"}}},
          {"reg file mode, nothing set",
           {{"RegAsmMode", "asmGenerateRegFile"}},
           {{"Assembly", "Assembly has not been set"}, {"Reg File", "Reg file has not been set"}}},
          {"type library mode without the file",
           {{"RegAsmMode", "asmGenAndRegTLB"}, {"AssemblyPath", "a.dll"}},
           {{"Type Library File", "Type Library file has not been set"}}},
          {"unregister", {{"RegAsmMode", "asmUnregister"}, {"AssemblyPath", "a.dll"}}, {}},
      });
}

}  // namespace
}  // namespace wren::test
