// Property pages of the type library import action: main, references, strong name, logging.
#pragma once

#include <string>

#include "pages/WrenDotNetBaseFrame.h"

namespace wren {

/// The type library, the assembly to write and the import switches.
class TTLBImportFrame : public TDotNetToolBaseFrame {
 public:
  static constexpr const char* kTypeLibraryFilter =
      "Type Libraries (*.tlb;*.dll;*.exe;*.ocx)|*.tlb;*.dll;*.exe;*.ocx|All Files (*.*)|*.*";
  static constexpr const char* kAssemblyFilter = "Assemblies (*.dll)|*.dll|All Files (*.*)|*.*";

  TTLBImportFrame();
  static std::string StaticClassName() { return "TTLBImportFrame"; }
  std::string PageName() const override { return "Type Library Import"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;
  bool BrowseAssemblyOutFile() { return GetFile(edAssemblyOutFile, kAssemblyFilter); }
  bool BrowseTypeLibrary() { return GetFile(edTypeLibraryName, kTypeLibraryFilter); }

  TEditModel edAssemblyOutFile;
  TEditModel edTypeLibraryName;
  TEditModel edResourceID;
  TEditModel edNamespace;
  TEditModel edAsmVersion;
  TCheckBoxModel cbTransform;
  TCheckBoxModel cbAllowUnsafe;
  TCheckBoxModel cbPrimary;
  TCheckBoxModel cbSysArray;
};

/// The assemblies the import resolves references against.
class TTLBImportReferencesFrame : public TFrame {
 public:
  TTLBImportReferencesFrame();
  static std::string StaticClassName() { return "TTLBImportReferencesFrame"; }
  std::string PageName() const override { return "References"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TMemoModel mmReferences;
  TCheckBoxModel cbStrictRef;
};

/// Signing the interop assembly.
class TTLBImportSNFrame : public TFrame {
 public:
  static constexpr const char* kKeyFileFilter = "Key File (*.snk)|*.snk|All Files (*.*)|*.*";

  TTLBImportSNFrame();
  static std::string StaticClassName() { return "TTLBImportSNFrame"; }
  std::string PageName() const override { return "Strong Name"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;
  bool BrowsePublicKeyFile() { return GetFile(edPublicKeyFile, kKeyFileFilter); }
  bool BrowseKeyFile() { return GetFile(edKeyFile, kKeyFileFilter); }

  TEditModel edPublicKeyFile;
  TEditModel edKeyFile;
  TEditModel edKeyContainer;
  TCheckBoxModel cbDelaySign;
};

/// How much the tool says.
class TTLBImpLoggingFrame : public TFrame {
 public:
  TTLBImpLoggingFrame();
  static std::string StaticClassName() { return "TTLBImpLoggingFrame"; }
  std::string PageName() const override { return "Logging"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TCheckBoxModel cbNoLogo;
  TCheckBoxModel cbSilent;
  TCheckBoxModel cbVerbose;
};

}  // namespace wren
