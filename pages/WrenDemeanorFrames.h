// Property pages of the Demeanor action.
#pragma once

#include <string>

#include "WrenPluginAPI.h"

namespace wren {

/// The assembly (PE file) Demeanor obfuscates and the folder it writes to.
class TDemeanorPEFrame : public TFrame {
 public:
  static constexpr const char* kAssemblyFilter =
      "Assemblies (*.exe;*.dll)|*.exe;*.dll|All Files (*.*)|*.*";
  static std::string StaticClassName() { return "TDemeanorPEFrame"; }
  std::string PageName() const override { return "PE"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  bool CheckPage(std::string& message) override;
  bool BrowseInputAssembly();
  bool BrowseOutputDirectory();
  void ListControls(TWrenPageControls& controls) override;

  TEditModel edInputAssembly{"Input Assembly", ""};
  TEditModel edOutputDirectory{"Output Directory", ""};
};

/// Exclusions and every other Demeanor switch, one per line, passed as written.
class TDemeanorExcludeFrame : public TFrame {
 public:
  static std::string StaticClassName() { return "TDemeanorExcludeFrame"; }
  std::string PageName() const override { return "Exclude"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TMemoModel mmExtraSwitches{"Switches (/name or /name:value per line)", {}};
  TLabelModel lblHint{
      "Demeanor's switches are not publicly documented; they are passed as written"};
};

}  // namespace wren
