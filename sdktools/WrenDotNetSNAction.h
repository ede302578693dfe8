// Actions that run the SDK's strong-name tool sn: key pairs, verification, key containers, public
// keys, re-signing, and a free command line.
#pragma once

#include <cstdint>
#include <string>

#include "dotnet/WrenDotNetAction.h"
#include "sdktools/WrenDotNetFreeCommandLine.h"

namespace wren {

/// Where the extract action takes the public key from.
enum class TSNExtractFromType { extractFromKeyFile, extractFromAssembly, extractFromContainer };
/// Where the extract action puts the public key.
enum class TSNExtractToType { extractToKeyFile, extractToCSV, extractToClipboard };

const std::vector<std::string>& SNExtractFromTypeNames();
const std::vector<std::string>& SNExtractToTypeNames();

/// The tool (sn.exe in the SDK) and the version settings the six strong-name actions share.
/// Publishes nothing; its own command line is empty. Not registered.
class TSNBaseAction : public TWrenDotNetAction {
 public:
  TSNBaseAction();

  static std::string StaticClassName() { return "TSNBaseAction"; }
  static std::string GetActionName() { return "SN"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }

  TWrenDotNetToolType GetDotNetToolType() const override { return TWrenDotNetToolType::ttSDK; }
  std::string GetDotNetTool() const override { return "sn.exe"; }
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    (void)builder;
    return true;
  }
};

/// Creates a key pair file: sn -k <file>.
class TSNGenerateKeyPair : public TSNBaseAction {
 public:
  static std::string StaticClassName() { return "TSNGenerateKeyPair"; }
  static std::string GetActionName() { return "Generate Key Pair"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2660; }
  std::string GetQuickHelpFilename() const override {
    return "Plugins\\DotNetGenerateKeyPair.html";
  }

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string OutputFile;
};

/// Verifies an assembly's strong name (sn -v / -vf); FailIfValid turns the verdict round.
class TSNVerifyAssembly : public TSNBaseAction {
 public:
  static std::string StaticClassName() { return "TSNVerifyAssembly"; }
  static std::string GetActionName() { return "Verify Assembly Strong Name"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2670; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\DotNetVerifyAssembly.html"; }

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  bool Validate(IWrenActionValidationError& errors) override;
  bool InterpretResult(int32_t exitCode) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string Assembly;
  bool Force = false;
  bool FailIfValid = false;
};

/// Installs a key pair into a named key container: sn -i <key file> <container>.
class TSNInstallKeyPair : public TSNBaseAction {
 public:
  static std::string StaticClassName() { return "TSNInstallKeyPair"; }
  static std::string GetActionName() { return "Install Key file"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2680; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\DotNetInstallKeyPair.html"; }

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string KeyFile;
  std::string ContainerFile;
};

/// Extracts a public key from a key file, an assembly or a container (sn -p, -e, -o, -pc).
class TSNExtractPublicKey : public TSNBaseAction {
 public:
  static std::string StaticClassName() { return "TSNExtractPublicKey"; }
  static std::string GetActionName() { return "Extract Public Key"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2690; }
  std::string GetQuickHelpFilename() const override {
    return "Plugins\\DotNetExtractPublicKey.html";
  }

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  bool Validate(IWrenActionValidationError& errors) override;
  /// True for the pairings the tool supports: from a key file to anything, and from an assembly
  /// or a container to a key file.
  bool ValidateOptions() const;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string FromKeyFile;
  std::string FromAssembly;
  std::string FromContainer;
  std::string ToKeyFile;
  std::string ToCSV;
  TSNExtractFromType ExtractFromType = TSNExtractFromType::extractFromKeyFile;
  TSNExtractToType ExtractToType = TSNExtractToType::extractToKeyFile;
};

/// Re-signs an assembly from a key file (sn -R) or a key container (sn -Rc).
class TSNResignAssembly : public TSNBaseAction {
 public:
  static std::string StaticClassName() { return "TSNResignAssembly"; }
  static std::string GetActionName() { return "Re-sign Assembly"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2700; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\DotNetResignAssembly.html"; }

  bool GetCommandLine(ICommandLineBuilder& builder) override;
  bool Validate(IWrenActionValidationError& errors) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string Assembly;
  std::string KeyFile;
  std::string Container;
  bool UseKeyFile = true;
};

/// Runs sn with a command line the user writes, in a working folder the user names.
class TSNGenericSN : public TFreeCommandLineAction<TSNBaseAction> {
 public:
  TSNGenericSN() : TFreeCommandLineAction("Starting directory") {}

  static std::string StaticClassName() { return "TSNGenericSN"; }
  static std::string GetActionName() { return "Run SN.EXE"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  int GetHelpTopicID() const override { return 2740; }
  std::string GetQuickHelpFilename() const override { return "Plugins\\DotNetRunSN.html"; }
};

}  // namespace wren
