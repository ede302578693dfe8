#include "sdktools/WrenDotNetRegasmAction.h"

namespace wren {

namespace {
constexpr int kArgMode = 2;
}  // namespace

const std::vector<std::string>& RegAsmModeNames() {
  static const std::vector<std::string> names = {"asmRegister", "asmUnregister",
                                                 "asmGenerateRegFile", "asmGenAndRegTLB"};
  return names;
}

const TPropertyTable& TWrenRegasmAction::ClassProperties() {
  static const TPropertyTable table = ChainProperties(
      TRegasmBaseAction::ClassProperties(),
      {EnumProperty("RegAsmMode", &TWrenRegasmAction::RegAsmMode, RegAsmModeNames()),
       StringProperty("AssemblyPath", &TWrenRegasmAction::AssemblyPath),
       StringProperty("ExportToTLB", &TWrenRegasmAction::ExportToTLB),
       StringProperty("GenRegFile", &TWrenRegasmAction::GenRegFile),
       BoolProperty("Codebase", &TWrenRegasmAction::Codebase),
       BoolProperty("Registered", &TWrenRegasmAction::Registered),
       StringProperty("AsmPath", &TWrenRegasmAction::AsmPath),
       BoolProperty("NoLogo", &TWrenRegasmAction::NoLogo),
       BoolProperty("Silent", &TWrenRegasmAction::Silent),
       BoolProperty("Verbose", &TWrenRegasmAction::Verbose)});
  return table;
}

bool TWrenRegasmAction::GetCommandLine(ICommandLineBuilder& builder) {
  // Switches carry their own colon.
  builder.SetSeparator("");
  std::string assembly;
  if (!TryExpandExpression("Assembly", AssemblyPath, true, assembly)) return false;
  builder.AddArgument("", assembly, kArgMode);

  std::string file;
  switch (RegAsmMode) {
    case TRegAsmMode::asmRegister:
      break;
    case TRegAsmMode::asmUnregister:
      builder.AddArgument("/unregister", "", kArgMode);
      break;
    case TRegAsmMode::asmGenerateRegFile:
      // Without a file the tool picks its own name: a bare /regfile.
      if (!TryExpandExpression("Reg File", GenRegFile, false, file)) return false;
      if (!file.empty()) file = ":" + file;
      builder.AddArgument("/regfile", file, kArgMode);
      break;
    case TRegAsmMode::asmGenAndRegTLB:
      if (!TryExpandExpression("Tlb File", ExportToTLB, false, file)) return false;
      if (!file.empty()) file = ":" + file;
      builder.AddArgument("/tlb", file, kArgMode);
      break;
  }

  if (Codebase) builder.AddArgument("/codebase", "", kArgMode);
  if (Registered) builder.AddArgument("/registered", "", kArgMode);
  if (NoLogo) builder.AddArgument("/nologo", "", kArgMode);
  if (Silent) builder.AddArgument("/silent", "", kArgMode);
  if (Verbose) builder.AddArgument("/verbose", "", kArgMode);
  return true;
}

// Stricter than the command line on purpose: a stored action must name its output files.
bool TWrenRegasmAction::Validate(IWrenActionValidationError& errors) {
  bool ok = true;
  if (AssemblyPath.empty()) {
    errors.AddError("Assembly", "Assembly has not been set");
    ok = false;
  }
  if (RegAsmMode == TRegAsmMode::asmGenerateRegFile && GenRegFile.empty()) {
    errors.AddError("Reg File", "Reg file has not been set");
    ok = false;
  }
  if (RegAsmMode == TRegAsmMode::asmGenAndRegTLB && ExportToTLB.empty()) {
    errors.AddError("Type Library File", "Type Library file has not been set");
    ok = false;
  }
  return ok;
}

}  // namespace wren
