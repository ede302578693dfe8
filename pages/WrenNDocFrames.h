// Property pages of the NDoc action.
#pragma once

#include <string>

#include "WrenPluginAPI.h"

namespace wren {

/// What NDoc documents: an NDoc project, or assemblies ("assembly[,xmldoc]" lines) with reference
/// folders and namespace summaries; and whether NDoc traces its work. The controls of the choice
/// not taken are disabled.
class TNDOCFrame : public TFrame {
 public:
  static constexpr const char* kProjectFilter = "NDoc Projects (*.ndoc)|*.ndoc|All Files (*.*)|*.*";
  static constexpr const char* kSummariesFilter = "XML Files (*.xml)|*.xml|All Files (*.*)|*.*";

  TNDOCFrame() { SetUseProjectFile(false); }
  static std::string StaticClassName() { return "TNDOCFrame"; }
  std::string PageName() const override { return "NDoc"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  bool CheckPage(std::string& message) override;

  void SetUseProjectFile(bool useProjectFile);
  bool BrowseProjectFile();
  bool BrowseNamespaceSummaries();
  void ListControls(TWrenPageControls& controls) override;

  TRadioButtonModel rbAssemblies{"Assemblies"};
  TRadioButtonModel rbProjectFile{"NDoc Project File"};
  TEditModel edProjectFile{"Project File", ""};
  TMemoModel mmAssemblies{"Assemblies (assembly[,xmldoc] per line)", {}};
  TMemoModel mmReferencePaths{"Reference Paths", {}};
  TEditModel edNamespaceSummaries{"Namespace Summaries", ""};
  TCheckBoxModel cbVerbose{"Verbose"};
};

/// The documenter NDoc runs (the shipped ones are listed; another name may be typed) and the
/// documenter properties passed to it, one Name=value per line.
class TNDocDocumenterFrame : public TFrame {
 public:
  TNDocDocumenterFrame();
  static std::string StaticClassName() { return "TNDocDocumenterFrame"; }
  std::string PageName() const override { return "Documenter"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  bool CheckPage(std::string& message) override;
  void ListControls(TWrenPageControls& controls) override;
  /// A documenter typed by name: selects the listed one of that name (ignoring case), else
  /// lists it and selects it. A blank name changes nothing.
  void SetDocumenterName(const std::string& name);

  TComboBoxModel cbDocumenter;
  TEditModel edDocumenterName{"Other documenter (by name)", ""};
  TMemoModel mmProperties{"Documenter Properties (Name=value per line)", {}};
};

}  // namespace wren
