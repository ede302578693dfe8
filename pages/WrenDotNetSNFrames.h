// Property pages of the strong-name actions.
#pragma once

#include <string>

#include "pages/WrenDotNetBaseFrame.h"
#include "pages/WrenDotNetFreeCommandLineFrame.h"

namespace wren {

/// The key pair file to create; it may not be left blank.
class TSNGenerateKeyPairFrame : public TDotNetToolBaseFrame {
 public:
  static constexpr const char* kKeyFileFilter = "Key File (*.snk)|*.snk";
  static constexpr const char* kDefaultKeyFile = "keypair.snk";

  TSNGenerateKeyPairFrame();
  static std::string StaticClassName() { return "TSNGenerateKeyPairFrame"; }
  std::string PageName() const override { return "Generate Key Pair"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  bool CheckPage(std::string& message) override;
  void ListControls(TWrenPageControls& controls) override;
  /// Offers "keypair.snk" when the edit is still empty.
  bool BrowseOutputFile();

  TEditModel edOutputFile;
};

/// The assembly to verify, forced verification and the inverted verdict.
class TSNVerifySNFrame : public TDotNetToolBaseFrame {
 public:
  static constexpr const char* kAssemblyFilter = "Assembly (*.dll, *.exe)|*.dll;*.exe";

  TSNVerifySNFrame();
  static std::string StaticClassName() { return "TSNVerifySNFrame"; }
  std::string PageName() const override { return "Verify Strong Name"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;
  bool BrowseAssembly() { return GetFile(edAssembly, kAssemblyFilter); }

  TEditModel edAssembly;
  TCheckBoxModel cbForce;
  TCheckBoxModel cbFailIfValid;
};

/// The key file and the container that receives it.
class TSNInstallKeyPairFrame : public TDotNetToolBaseFrame {
 public:
  static constexpr const char* kKeyFileFilter = "Key File (*.snk)|*.snk";

  TSNInstallKeyPairFrame();
  static std::string StaticClassName() { return "TSNInstallKeyPairFrame"; }
  std::string PageName() const override { return "Install Key Pair"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;
  bool BrowseKeyFile() { return GetFile(edKeyFile, kKeyFileFilter); }

  TEditModel edKeyFile;
  TEditModel edContainer;
};

/// Source and destination of the public key; each choice enables its own edit.
class TSNExtractKeyFrame : public TDotNetToolBaseFrame {
 public:
  static constexpr const char* kCSVFilter = "CSV Files (*.csv)|*.csv";
  static constexpr const char* kKeyFileFilter = "Key File (*.snk)|*.snk";
  static constexpr const char* kAssemblyFilter = "Assembly (*.dll, *.exe)|*.dll;*.exe";

  TSNExtractKeyFrame();
  static std::string StaticClassName() { return "TSNExtractKeyFrame"; }
  std::string PageName() const override { return "Extract Public Key"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  /// A radio button was clicked: the edits of the chosen source and destination are enabled.
  void UpdateChoices();
  void ListControls(TWrenPageControls& controls) override;
  bool BrowseFromAssembly() { return GetFile(edFromAssembly, kAssemblyFilter); }
  bool BrowseFromKeyFile() { return GetFile(edFromKeyFile, kKeyFileFilter); }
  bool BrowseToKeyFile() { return GetFile(edToKeyFile, kKeyFileFilter); }
  bool BrowseCSV() { return GetFile(edToCSV, kCSVFilter); }

  TLabelModel lblInput;
  TRadioButtonModel rbFromAssembly;
  TEditModel edFromAssembly;
  TRadioButtonModel rbFromKeyFile;
  TEditModel edFromKeyFile;
  TRadioButtonModel rbFromContainer;
  TEditModel edFromContainer;
  TLabelModel lblOutput;
  TRadioButtonModel rbToKeyFile;
  TEditModel edToKeyFile;
  TRadioButtonModel rbToCSV;
  TEditModel edToCSV;
  TRadioButtonModel rbToClipboard;
};

/// The assembly and whether it is re-signed from a key file or a container.
class TSNResignFrame : public TDotNetToolBaseFrame {
 public:
  static constexpr const char* kAssemblyFilter = "Assembly (*.dll, *.exe)|*.dll;*.exe";
  static constexpr const char* kKeyFileFilter = "Key File (*.snk)|*.snk";

  TSNResignFrame();
  static std::string StaticClassName() { return "TSNResignFrame"; }
  std::string PageName() const override { return "Re-sign Assembly"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  /// A radio button was clicked: only the chosen key source's edit is enabled.
  void UpdateChoices();
  void ListControls(TWrenPageControls& controls) override;
  bool BrowseAssembly() { return GetFile(edAssembly, kAssemblyFilter); }
  bool BrowseKeyFile() { return GetFile(edKeyFile, kKeyFileFilter); }

  TEditModel edAssembly;
  TLabelModel lblKey;
  TRadioButtonModel rbKeyFile;
  TEditModel edKeyFile;
  TRadioButtonModel rbContainer;
  TEditModel edContainer;
};

/// The free command line of sn and its working folder. Not on the version page: the user's
/// options say everything.
class TSNGenericFrame : public TFreeCommandLineFrame {
 public:
  TSNGenericFrame();
  static std::string StaticClassName() { return "TSNGenericFrame"; }
  std::string PageName() const override { return "Run SN.EXE"; }
};

}  // namespace wren
