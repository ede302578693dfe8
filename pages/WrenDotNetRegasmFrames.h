// Property page of the RegAsm action.
#pragma once

#include <string>

#include "pages/WrenDotNetBaseFrame.h"

namespace wren {

/// The assembly, what RegAsm does with it (a radio group by mode) and its switches.
class TWrenRegasmActionFrame : public TDotNetToolBaseFrame {
 public:
  static constexpr const char* kAssemblyFilter =
      "Assemblies (*.dll, *.exe)|*.dll;*.exe|All Files (*.*)|*.*";
  static constexpr const char* kRegFileFilter = "Registry Files (*.reg)|*.reg|All Files (*.*)|*.*";
  static constexpr const char* kTlbFileFilter =
      "Type Libraries (*.tlb)|*.tlb|All Files (*.*)|*.*";

  TWrenRegasmActionFrame();
  static std::string StaticClassName() { return "TWrenRegasmActionFrame"; }
  std::string PageName() const override { return "RegAsm"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;
  /// The mode was changed: the reg file and type library edits follow it.
  void UpdateMode();
  bool BrowseAssembly() { return GetFile(edAssemblyPath, kAssemblyFilter); }
  bool BrowseRegFile() { return GetFile(edRegFile, kRegFileFilter); }
  bool BrowseTlbFile() { return GetFile(edTlbFile, kTlbFileFilter); }

  TEditModel edAssemblyPath;
  /// Items by TRegAsmMode ordinal.
  TComboBoxModel rgMode;
  TEditModel edRegFile;
  TEditModel edTlbFile;
  TCheckBoxModel cbCodebase;
  TCheckBoxModel cbNoLogo;
  TCheckBoxModel cbSilent;
  TCheckBoxModel cbVerbose;
  TCheckBoxModel cbRegistered;
};

}  // namespace wren
