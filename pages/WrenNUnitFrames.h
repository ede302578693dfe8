// Property page of the NUnit action.
#pragma once

#include <string>

#include "WrenPluginAPI.h"

namespace wren {

/// What NUnit runs (a project file or a list of assemblies) and how: fixture, XML output and
/// transform, project configuration, banner and console XML. The controls of the choice not taken
/// are disabled.
class TNUnitActionFrame : public TFrame {
 public:
  static constexpr const char* kProjectFilter = "NUnit Projects (*.nunit)|*.nunit|All Files (*.*)|*.*";
  static constexpr const char* kAssemblyFilter =
      "Assemblies (*.dll;*.exe)|*.dll;*.exe|All Files (*.*)|*.*";
  static constexpr const char* kXMLFilter = "XML Files (*.xml)|*.xml|All Files (*.*)|*.*";
  static constexpr const char* kTransformFilter =
      "XSL Transforms (*.xsl;*.xslt)|*.xsl;*.xslt|All Files (*.*)|*.*";

  TNUnitActionFrame();
  static std::string StaticClassName() { return "TNUnitActionFrame"; }
  std::string PageName() const override { return "NUnit"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  bool CheckPage(std::string& message) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  /// The project choice with its fields, then the assembly choice with its list.
  void ListControls(TWrenPageControls& controls) override;

  /// Switches between project file and assemblies, enabling the controls of the choice.
  void SetUseProjectFile(bool useProjectFile);
  bool BrowseProjectFile();
  /// Adds the chosen file as a line of the assembly list; false when cancelled.
  bool AddAssembly();
  bool BrowseXMLOutputFile();
  bool BrowseTransformFile();

  TRadioButtonModel rbAssemblies{"Test Assemblies"};
  TRadioButtonModel rbProjectFile{"NUnit Project File"};
  TEditModel edProjectFile{"Project File", ""};
  TEditModel edProjectConfig{"Configuration", ""};
  TMemoModel mmAssemblies{"Assemblies", {}};
  TEditModel edFixture{"Fixture", ""};
  TEditModel edXMLOutputFile{"XML Output File", ""};
  TEditModel edTransformFile{"Transform File", ""};
  TCheckBoxModel cbNoLogo{"No Logo"};
  TCheckBoxModel cbXMLToConsole{"XML Output to Console"};
};

}  // namespace wren
