// Property pages of the project compiler actions (Visual Studio and C#Builder project files).
#pragma once

#include <string>

#include "pages/WrenDotNetBaseFrame.h"

namespace wren {

/// The project file, the configuration to build, the output folder override, the options a
/// project file does not hold, and the SDK version. The four language pages differ in the
/// project files their browse button offers.
class TProjectFilePageBase : public TDotNetToolBaseFrame {
 public:
  /// configRequired: Visual Studio projects need a configuration; C#Builder ones hold only one.
  explicit TProjectFilePageBase(std::string projectFilter, bool configRequired = true);
  std::string PageName() const override { return "Project"; }

  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  bool CheckPage(std::string& message) override;

  /// The file dialog for the project file; false (unchanged) when cancelled.
  bool BrowseProjectFile() { return GetFile(edProjectFile, projectFilter_); }
  /// The folder dialog for the output folder; false (unchanged) when cancelled.
  bool BrowseOutputDir();
  /// The file dialog for the Compact Framework's resgen; false (unchanged) when cancelled.
  bool BrowseCFResGen() { return GetFile(edCFResGen, kProgramFilter); }
  void ListControls(TWrenPageControls& controls) override;

  static constexpr const char* kProgramFilter = "Programs (*.exe)|*.exe|All Files (*.*)|*.*";

  TEditModel edProjectFile;
  TEditModel edConfigName;
  TEditModel edOutputDir;
  TEditModel edCFResGen;
  TCheckBoxModel cbCopyConfigFiles{"Copy App.config beside the output"};
  TCheckBoxModel cbNoLogo{"Suppress compiler logo"};
  TCheckBoxModel cbOutputInUTF8{"Compiler output in UTF-8"};

 private:
  std::string projectFilter_;
  bool configRequired_;
};

/// Page of the C# project action.
class TProjectCompilerFrame : public TProjectFilePageBase {
 public:
  TProjectCompilerFrame();
  static std::string StaticClassName() { return "TProjectCompilerFrame"; }
};

/// Page of the VB.NET project action.
class TVBProjPropertyPage : public TProjectFilePageBase {
 public:
  TVBProjPropertyPage();
  static std::string StaticClassName() { return "TVBProjPropertyPage"; }
};

/// Page of the J# project action.
class TJSharpPropertyPage : public TProjectFilePageBase {
 public:
  TJSharpPropertyPage();
  static std::string StaticClassName() { return "TJSharpPropertyPage"; }
};

/// Page of the C#Builder project action.
class TCSharpBuilderPropertyPage : public TProjectFilePageBase {
 public:
  TCSharpBuilderPropertyPage();
  static std::string StaticClassName() { return "TCSharpBuilderPropertyPage"; }
};

}  // namespace wren
