#include "sdktools/WrenDotNetTLBExpAction.h"

namespace wren {

namespace {
constexpr int kArgMode = 2;
}  // namespace

const TPropertyTable& TTLBExportAction::ClassProperties() {
  static const TPropertyTable table =
      ChainProperties(TTLBExportBaseAction::ClassProperties(),
                      {StringProperty("OutputFile", &TTLBExportAction::OutputFile),
                       StringProperty("AssemblyName", &TTLBExportAction::AssemblyName),
                       BoolProperty("NoLogo", &TTLBExportAction::NoLogo),
                       BoolProperty("Silent", &TTLBExportAction::Silent),
                       StringProperty("NamesCaseFile", &TTLBExportAction::NamesCaseFile)});
  return table;
}

bool TTLBExportAction::GetCommandLine(ICommandLineBuilder& builder) {
  builder.SetSeparator("");
  std::string assembly, output, names;
  if (!TryExpandExpression("AssemblyName", AssemblyName, true, assembly)) return false;
  builder.AddArgument("", assembly, kArgMode);
  if (!TryExpandExpression("OutputFile", OutputFile, true, output)) return false;
  builder.AddArgument("/out:", output, kArgMode);
  if (NoLogo) builder.AddArgument("/nologo", "", kArgMode);
  if (Silent) builder.AddArgument("/silent", "", kArgMode);
  if (!TryExpandExpression("NamesCaseFile", NamesCaseFile, false, names)) return false;
  if (!names.empty()) builder.AddArgument("/names:", names, kArgMode);
  return true;
}

bool TTLBExportAction::Validate(IWrenActionValidationError& errors) {
  bool ok = true;
  if (OutputFile.empty()) {
    errors.AddError("Output filename", "Output filename has not been set");
    ok = false;
  }
  if (AssemblyName.empty()) {
    errors.AddError("Assembly", "Assembly name has not been set");
    ok = false;
  }
  return ok;
}

}  // namespace wren
