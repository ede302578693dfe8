#include "sdktools/WrenDotNetGACAction.h"

#include "WrenUtils.h"

namespace wren {

namespace {
// Every argument goes in with the builder's mode 2: quoted when it holds a blank.
constexpr int kArgMode = 2;
}  // namespace

TWrenGACAction::TWrenGACAction() {
  MinimumSDKVersion = "1.0";
  SetDefaultSDKVersion("1.0");
}

const TPropertyTable& TWrenGACAction::ClassProperties() {
  static const TPropertyTable table = ChainProperties(
      TWrenDotNetAction::ClassProperties(),
      {StringProperty("AssemblyName", &TWrenGACAction::AssemblyName),
       StringProperty("AssemblyPath", &TWrenGACAction::AssemblyPath),
       StringProperty("AssemblyListFile", &TWrenGACAction::AssemblyListFile),
       BoolProperty("UseListFile", &TWrenGACAction::UseListFile),
       BoolProperty("Force", &TWrenGACAction::Force),
       BoolProperty("ReferenceCount", &TWrenGACAction::ReferenceCount),
       StringProperty("RefScheme", &TWrenGACAction::RefScheme),
       StringProperty("RefID", &TWrenGACAction::RefID),
       StringProperty("RefDescription", &TWrenGACAction::RefDescription)});
  return table;
}

bool TWrenGACAction::GetCommandLine(ICommandLineBuilder& builder) {
  if (Force) builder.AddArgument("/f", "", kArgMode);
  if (!ReferenceCount) return true;
  std::string scheme, id, description;
  if (!TryExpandExpression("Scheme", RefScheme, true, scheme)) return false;
  if (!TryExpandExpression("ID", RefID, true, id)) return false;
  if (!TryExpandExpression("Description", RefDescription, true, description)) return false;
  // gacutil takes the triple as three words after /r; quotes inside a word are passed as they are.
  builder.AddArgument("/r",
                      DoubleQuoteString(scheme) + " " + DoubleQuoteString(id) + " " +
                          DoubleQuoteString(description),
                      kArgMode);
  return true;
}

TGACInstallAction::TGACInstallAction() { SetDescription(GetActionName()); }

bool TGACInstallAction::GetCommandLine(ICommandLineBuilder& builder) {
  if (!TWrenGACAction::GetCommandLine(builder)) return false;
  std::string value;
  if (UseListFile) {
    if (!TryExpandExpression("Assembly Listfile", AssemblyListFile, true, value)) return false;
    builder.AddArgument("/il", value, kArgMode);
  } else {
    if (!TryExpandExpression("Assembly Path", AssemblyPath, true, value)) return false;
    builder.AddArgument("/i", value, kArgMode);
  }
  return true;
}

bool TGACInstallAction::Validate(IWrenActionValidationError& errors) {
  if (UseListFile && AssemblyListFile.empty()) {
    errors.AddError("List File", "Assembly list file has not been set");
    return false;
  }
  if (!UseListFile && AssemblyPath.empty()) {
    errors.AddError("Assembly Path", "Assembly path has not been set");
    return false;
  }
  return true;
}

TGACUninstallAction::TGACUninstallAction() { SetDescription(GetActionName()); }

const TPropertyTable& TGACUninstallAction::ClassProperties() {
  static const TPropertyTable table =
      ChainProperties(TWrenGACAction::ClassProperties(),
                      {BoolProperty("UseAssemblyPath", &TGACUninstallAction::UseAssemblyPath)});
  return table;
}

bool TGACUninstallAction::GetCommandLine(ICommandLineBuilder& builder) {
  if (!TWrenGACAction::GetCommandLine(builder)) return false;
  std::string value;
  if (UseListFile) {
    if (!TryExpandExpression("Assembly Listfile", AssemblyListFile, true, value)) return false;
    builder.AddArgument("/ul", value, kArgMode);
  } else if (UseAssemblyPath) {
    if (!TryExpandExpression("Assembly Path", AssemblyPath, true, value)) return false;
    builder.AddArgument("/u", value, kArgMode);
  } else {
    if (!TryExpandExpression("Assembly", AssemblyName, true, value)) return false;
    builder.AddArgument("/u", value, kArgMode);
  }
  return true;
}

bool TGACUninstallAction::Validate(IWrenActionValidationError& errors) {
  if (UseListFile) {
    if (AssemblyListFile.empty()) {
      errors.AddError("List File", "Assembly list file has not been set");
      return false;
    }
    return true;
  }
  if (UseAssemblyPath) {
    if (AssemblyPath.empty()) {
      errors.AddError("Assembly Path", "Assembly path has not been set");
      return false;
    }
    return true;
  }
  if (AssemblyName.empty()) {
    errors.AddError("Assembly Name", "Assembly name has not been set");
    return false;
  }
  return true;
}

const TPropertyTable& TGACListAction::ClassProperties() {
  static const TPropertyTable table =
      ChainProperties(TWrenGACAction::ClassProperties(),
                      {BoolProperty("DeleteDownloadCache", &TGACListAction::DeleteDownloadCache)});
  return table;
}

bool TGACListAction::GetCommandLine(ICommandLineBuilder& builder) {
  builder.AddArgument(DeleteDownloadCache ? "/cdl" : "/ldl", "", kArgMode);
  return true;
}

}  // namespace wren
