// Property page of the COM reference fix action.
#pragma once

#include <string>

#include "WrenPluginAPI.h"

namespace wren {

/// The project file to update, the reference's name as Visual Studio shows it and the ProgID of
/// the COM class, each with its hint.
class TDotNetComRefFrame : public TFrame {
 public:
  static constexpr const char* kProjectFilter =
      "C# Project Files (*.csproj)|*.csproj|VB.NET Project Files (*.vbproj)|*.vbproj|"
      "J# Project Files (*.vjsproj)|*.vjsproj";

  static std::string StaticClassName() { return "TDotNetComRefFrame"; }
  std::string PageName() const override { return "Options"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;
  bool CheckPage(std::string& message) override;
  /// The file dialog for the project file; false (unchanged) when cancelled.
  bool BrowseProjectFile();

  TEditModel edProjectFile{"Project File", ""};
  TEditModel edReferenceName{"Reference Name", ""};
  TLabelModel lblReferenceNameHint{
      "should be as it appears in the References section in Visual Studio"};
  TEditModel edProgID{"ProgID", ""};
  TLabelModel lblProgIDHint{"should be in the format Typlib.ClassName - e.g. Word.Document"};
};

}  // namespace wren
