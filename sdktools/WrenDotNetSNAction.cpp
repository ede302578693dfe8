#include "sdktools/WrenDotNetSNAction.h"

namespace wren {

namespace {
constexpr int kArgMode = 2;
}  // namespace

const std::vector<std::string>& SNExtractFromTypeNames() {
  static const std::vector<std::string> names = {"extractFromKeyFile", "extractFromAssembly",
                                                 "extractFromContainer"};
  return names;
}

const std::vector<std::string>& SNExtractToTypeNames() {
  static const std::vector<std::string> names = {"extractToKeyFile", "extractToCSV",
                                                 "extractToClipboard"};
  return names;
}

TSNBaseAction::TSNBaseAction() {
  MinimumSDKVersion = "1.0";
  SetDefaultSDKVersion("1.0");
}

// --- Generate key pair ---

const TPropertyTable& TSNGenerateKeyPair::ClassProperties() {
  static const TPropertyTable table =
      ChainProperties(TSNBaseAction::ClassProperties(),
                      {StringProperty("OutputFile", &TSNGenerateKeyPair::OutputFile)});
  return table;
}

bool TSNGenerateKeyPair::GetCommandLine(ICommandLineBuilder& builder) {
  builder.SetSeparator(" ");
  std::string outputFile;
  if (!TryExpandExpression("Output File", OutputFile, true, outputFile)) return false;
  builder.AddArgument("-k", outputFile, kArgMode);
  return true;
}

bool TSNGenerateKeyPair::Validate(IWrenActionValidationError& errors) {
  if (OutputFile.empty()) {
    errors.AddError("Output file", "Output filename has not been set");
    return false;
  }
  return true;
}

// --- Verify ---

const TPropertyTable& TSNVerifyAssembly::ClassProperties() {
  static const TPropertyTable table =
      ChainProperties(TSNBaseAction::ClassProperties(),
                      {StringProperty("Assembly", &TSNVerifyAssembly::Assembly),
                       BoolProperty("Force", &TSNVerifyAssembly::Force),
                       BoolProperty("FailIfValid", &TSNVerifyAssembly::FailIfValid)});
  return table;
}

bool TSNVerifyAssembly::GetCommandLine(ICommandLineBuilder& builder) {
  builder.SetSeparator(" ");
  std::string assembly;
  if (!TryExpandExpression("Assembly", Assembly, true, assembly)) return false;
  builder.AddArgument(Force ? "-vf" : "-v", assembly, kArgMode);
  return true;
}

bool TSNVerifyAssembly::Validate(IWrenActionValidationError& errors) {
  if (Assembly.empty()) {
    errors.AddError("Assembly", "Assembly filename has not been set");
    return false;
  }
  return true;
}

bool TSNVerifyAssembly::InterpretResult(int32_t exitCode) {
  const bool valid = exitCode == 0;
  return FailIfValid ? !valid : valid;
}

// --- Install key pair ---

const TPropertyTable& TSNInstallKeyPair::ClassProperties() {
  static const TPropertyTable table =
      ChainProperties(TSNBaseAction::ClassProperties(),
                      {StringProperty("KeyFile", &TSNInstallKeyPair::KeyFile),
                       StringProperty("ContainerFile", &TSNInstallKeyPair::ContainerFile)});
  return table;
}

bool TSNInstallKeyPair::GetCommandLine(ICommandLineBuilder& builder) {
  builder.SetSeparator(" ");
  std::string keyFile, container;
  if (!TryExpandExpression("Key File", KeyFile, true, keyFile)) return false;
  if (!TryExpandExpression("Container File", ContainerFile, true, container)) return false;
  builder.AddArgument("-i", keyFile, kArgMode);
  builder.AddArgument("", container, kArgMode);
  return true;
}

// The container is left to the expansion at run time on purpose; only the key file is required
// here.
bool TSNInstallKeyPair::Validate(IWrenActionValidationError& errors) {
  if (KeyFile.empty()) {
    errors.AddError("Key file", "Key filename has not been set");
    return false;
  }
  return true;
}

// --- Extract public key ---

const TPropertyTable& TSNExtractPublicKey::ClassProperties() {
  static const TPropertyTable table = ChainProperties(
      TSNBaseAction::ClassProperties(),
      {StringProperty("FromKeyFile", &TSNExtractPublicKey::FromKeyFile),
       StringProperty("FromAssembly", &TSNExtractPublicKey::FromAssembly),
       StringProperty("FromContainer", &TSNExtractPublicKey::FromContainer),
       StringProperty("ToKeyFile", &TSNExtractPublicKey::ToKeyFile),
       StringProperty("ToCSV", &TSNExtractPublicKey::ToCSV),
       EnumProperty("ExtractFromType", &TSNExtractPublicKey::ExtractFromType,
                    SNExtractFromTypeNames()),
       EnumProperty("ExtractToType", &TSNExtractPublicKey::ExtractToType, SNExtractToTypeNames())});
  return table;
}

bool TSNExtractPublicKey::ValidateOptions() const {
  if (ExtractFromType == TSNExtractFromType::extractFromKeyFile) return true;
  return ExtractToType == TSNExtractToType::extractToKeyFile;
}

bool TSNExtractPublicKey::GetCommandLine(ICommandLineBuilder& builder) {
  if (!ValidateOptions()) {
    SendMessage("The options for the infile and outfile are not valid");
    return false;
  }

  std::string source;
  const std::string* sourceText = &FromKeyFile;
  if (ExtractFromType == TSNExtractFromType::extractFromAssembly) sourceText = &FromAssembly;
  if (ExtractFromType == TSNExtractFromType::extractFromContainer) sourceText = &FromContainer;
  if (!TryExpandExpression("Extract From", *sourceText, true, source)) return false;

  std::string destination;
  switch (ExtractToType) {
    case TSNExtractToType::extractToKeyFile:
      if (!TryExpandExpression("Extract To", ToKeyFile, true, destination)) return false;
      break;
    case TSNExtractToType::extractToCSV:
      if (!TryExpandExpression("Extract To", ToCSV, false, destination)) return false;
      break;
    case TSNExtractToType::extractToClipboard:
      break;
  }

  switch (ExtractFromType) {
    case TSNExtractFromType::extractFromAssembly:
      builder.AddArgument("-e", source, kArgMode);
      builder.AddArgument("", destination, kArgMode);
      break;
    case TSNExtractFromType::extractFromContainer:
      builder.AddArgument("-pc", source, kArgMode);
      builder.AddArgument("", destination, kArgMode);
      break;
    case TSNExtractFromType::extractFromKeyFile:
      switch (ExtractToType) {
        case TSNExtractToType::extractToKeyFile:
          builder.AddArgument("-p", source, kArgMode);
          builder.AddArgument("", destination, kArgMode);
          break;
        case TSNExtractToType::extractToCSV:
          builder.AddArgument("-o", source, kArgMode);
          builder.AddArgument("", destination, kArgMode);
          break;
        case TSNExtractToType::extractToClipboard:
          // Without an output file the tool puts the comma-separated text on the clipboard.
          builder.AddArgument("-o", source, kArgMode);
          break;
      }
      break;
  }
  return true;
}

bool TSNExtractPublicKey::Validate(IWrenActionValidationError& errors) {
  bool ok = true;
  auto report = [&](const char* field, const char* message) {
    errors.AddError(field, message);
    ok = false;
  };
  if (ExtractFromType == TSNExtractFromType::extractFromKeyFile && FromKeyFile.empty())
    report("Key File", "Key file has not been set");
  if (ExtractFromType == TSNExtractFromType::extractFromAssembly && FromAssembly.empty())
    report("Assembly", "Assembly filename has not been set");
  if (ExtractFromType == TSNExtractFromType::extractFromContainer && FromContainer.empty())
    report("Container", "Container has not been set");
  if (ExtractToType == TSNExtractToType::extractToKeyFile && ToKeyFile.empty())
    report("Key File", "Extract to key filename has not been set");
  if (ExtractToType == TSNExtractToType::extractToCSV && ToCSV.empty())
    report("CSV File", "Extract to CSV filename has not been set");
  return ok;
}

// --- Re-sign ---

const TPropertyTable& TSNResignAssembly::ClassProperties() {
  static const TPropertyTable table =
      ChainProperties(TSNBaseAction::ClassProperties(),
                      {StringProperty("Assembly", &TSNResignAssembly::Assembly),
                       StringProperty("KeyFile", &TSNResignAssembly::KeyFile),
                       StringProperty("Container", &TSNResignAssembly::Container),
                       BoolProperty("UseKeyFile", &TSNResignAssembly::UseKeyFile)});
  return table;
}

bool TSNResignAssembly::GetCommandLine(ICommandLineBuilder& builder) {
  std::string key, assembly;
  if (UseKeyFile) {
    if (!TryExpandExpression("Key File", KeyFile, true, key)) return false;
  } else {
    if (!TryExpandExpression("Container", Container, true, key)) return false;
  }
  if (!TryExpandExpression("Assembly", Assembly, true, assembly)) return false;
  builder.AddArgument(UseKeyFile ? "-R" : "-Rc", assembly, kArgMode);
  builder.AddArgument("", key, kArgMode);
  return true;
}

bool TSNResignAssembly::Validate(IWrenActionValidationError& errors) {
  bool ok = true;
  auto report = [&](const char* field, const char* message) {
    errors.AddError(field, message);
    ok = false;
  };
  if (Assembly.empty()) report("Assembly", "Assembly filename has not been set");
  if (UseKeyFile && KeyFile.empty()) report("Key File", "Key file has not been set");
  if (!UseKeyFile && Container.empty()) report("Container", "Container has not been set");
  return ok;
}

// --- Run SN.EXE ---

}  // namespace wren
