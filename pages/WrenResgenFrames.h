// Property page of the ResGen action.
#pragma once

#include <string>

#include "pages/WrenDotNetBaseFrame.h"

namespace wren {

/// The resource files to compile and the optional output file.
class TResGenFrame : public TDotNetToolBaseFrame {
 public:
  static constexpr const char* kInputFilter = "Resources (*.resx)|*.resx|All Files (*.*)|*.*";
  static constexpr const char* kOutputFilter =
      "Resource (*.resource)|*.resource|Resources (*.resources)|*.resources|All Files (*.*)|*.*";

  TResGenFrame();
  static std::string StaticClassName() { return "TResGenFrame"; }
  std::string PageName() const override { return "Resources"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;
  bool BrowseInputFiles() { return GetFile(edInputFiles, kInputFilter); }
  bool BrowseOutputFile() { return GetFile(edOutputFile, kOutputFilter); }

  TEditModel edInputFiles;
  TEditModel edOutputFile;
};

}  // namespace wren
