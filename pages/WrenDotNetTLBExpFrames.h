// Property page of the type library export action.
#pragma once

#include <string>

#include "pages/WrenDotNetBaseFrame.h"

namespace wren {

/// The assembly to export, the type library to write, the capitalisation file and two switches.
class TTLBExportFrame : public TDotNetToolBaseFrame {
 public:
  static constexpr const char* kTlbFilter = "Type Libraries (*.tlb)|*.tlb|All Files (*.*)|*.*";
  static constexpr const char* kAssemblyFilter =
      "Assemblies (*.dll, *.exe)|*.dll;*.exe|All Files (*.*)|*.*";
  static constexpr const char* kNamesFilter = "Text Files (*.txt)|*.txt|All Files (*.*)|*.*";

  TTLBExportFrame();
  static std::string StaticClassName() { return "TTLBExportFrame"; }
  std::string PageName() const override { return "Type Library Export"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;
  bool BrowseOutputFile() { return GetFile(edOutputFile, kTlbFilter); }
  bool BrowseNamesCaseFile() { return GetFile(edNamesCaseFile, kNamesFilter); }
  bool BrowseAssembly() { return GetFile(edAssembly, kAssemblyFilter); }

  TEditModel edOutputFile;
  TEditModel edNamesCaseFile;
  TEditModel edAssembly;
  TCheckBoxModel cbNoLogo;
  TCheckBoxModel cbSilent;
};

}  // namespace wren
