#include "sdktools/WrenDotNetTLBImpAction.h"

namespace wren {

namespace {
constexpr int kArgMode = 2;
}  // namespace

const TPropertyTable& TTLBImportAction::ClassProperties() {
  using A = TTLBImportAction;
  static const TPropertyTable table = ChainProperties(
      TTLBImportBaseAction::ClassProperties(),
      {StringProperty("TypeLibraryName", &A::TypeLibraryName),
       StringProperty("ResourceID", &A::ResourceID),
       StringProperty("AssemblyOutFile", &A::AssemblyOutFile),
       StringProperty("Namespace", &A::Namespace), StringProperty("AsmVersion", &A::AsmVersion),
       StringListProperty("References", &A::References),
       StringProperty("PublicKeyFile", &A::PublicKeyFile), StringProperty("KeyFile", &A::KeyFile),
       StringProperty("KeyContainer", &A::KeyContainer), BoolProperty("DelaySign", &A::DelaySign),
       BoolProperty("AllowUnsafe", &A::AllowUnsafe), BoolProperty("NoLogo", &A::NoLogo),
       BoolProperty("Silent", &A::Silent), BoolProperty("Verbose", &A::Verbose),
       BoolProperty("Primary", &A::Primary), BoolProperty("SysArray", &A::SysArray),
       BoolProperty("Transform", &A::Transform), BoolProperty("StrictRef", &A::StrictRef)});
  return table;
}

bool TTLBImportAction::GetCommandLine(ICommandLineBuilder& builder) {
  builder.SetSeparator("");
  std::string typeLibrary, resourceID;
  if (!TryExpandExpression("TypeLibraryName", TypeLibraryName, true, typeLibrary)) return false;
  if (!TryExpandExpression("Resource ID", ResourceID, false, resourceID)) return false;
  // The tool's own syntax for a type library embedded as a resource: <file>\<id>, a backslash on
  // every platform.
  builder.AddArgument("", resourceID.empty() ? typeLibrary : typeLibrary + "\\" + resourceID,
                      kArgMode);

  // Optional values: an empty expansion adds no switch.
  auto addOptional = [&](const char* caption, const std::string& stored, const char* switchText) {
    std::string value;
    if (!TryExpandExpression(caption, stored, false, value)) return false;
    if (!value.empty()) builder.AddArgument(switchText, value, kArgMode);
    return true;
  };

  if (!addOptional("AssemblyOutFile", AssemblyOutFile, "/out:")) return false;
  if (!addOptional("Namespace", Namespace, "/namespace:")) return false;
  if (!addOptional("AsmVersion", AsmVersion, "/asmversion:")) return false;
  for (size_t i = 0; i < References.size(); ++i) {
    const std::string caption = "Reference " + std::to_string(i + 1);
    if (!addOptional(caption.c_str(), References[i], "/reference:")) return false;
  }
  if (!addOptional("PublicKeyFile", PublicKeyFile, "/publickey:")) return false;
  if (!addOptional("KeyFile", KeyFile, "/keyfile:")) return false;
  if (!addOptional("KeyContainer", KeyContainer, "/keycontainer:")) return false;

  if (Transform) builder.AddArgument("/transform:DispRet", "", kArgMode);
  if (DelaySign) builder.AddArgument("/delaysign", "", kArgMode);
  if (AllowUnsafe) builder.AddArgument("/unsafe", "", kArgMode);
  if (NoLogo) builder.AddArgument("/nologo", "", kArgMode);
  if (Silent) builder.AddArgument("/silent", "", kArgMode);
  if (Verbose) builder.AddArgument("/verbose", "", kArgMode);
  if (Primary) builder.AddArgument("/primary", "", kArgMode);
  if (SysArray) builder.AddArgument("/sysarray", "", kArgMode);
  if (StrictRef) builder.AddArgument("/strictref", "", kArgMode);
  return true;
}

// Stricter than the command line on purpose: a stored action must name its output assembly.
bool TTLBImportAction::Validate(IWrenActionValidationError& errors) {
  bool ok = true;
  if (TypeLibraryName.empty()) {
    errors.AddError("Type Library name", "Type Library name has not been set");
    ok = false;
  }
  if (AssemblyOutFile.empty()) {
    errors.AddError("Assembly", "Assembly output filename has not been set");
    ok = false;
  }
  return ok;
}

}  // namespace wren
