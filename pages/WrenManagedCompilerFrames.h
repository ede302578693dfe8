// The parts the property pages of the C#, VB.NET and J# compiler actions share: each language's
// five pages derive from these and add the controls of its own switches.
#pragma once

#include <string>
#include <vector>

#include "WrenPluginAPI.h"
#include "compilers/WrenDotNetManagedCompilerAction.h"
#include "pages/WrenCodePageForm.h"
#include "pages/WrenDotNetBaseFrame.h"

namespace wren {

/// A delimited property value shown one item per line.
TStrings ListToLines(const std::string& text, const std::string& separators);
/// Lines joined by separator; blank lines are not items and are left out.
std::string LinesToList(const TStrings& lines, const std::string& separator);

/// Fills a drop-down with display texts and selects ordinal.
void SetChoice(TComboBoxModel& combo, std::vector<std::string> items, int ordinal);
/// The selected ordinal, or fallback when nothing is selected.
int ChoiceOrdinal(const TComboBoxModel& combo, int fallback);

/// The main page: project directory, files, output and target, with the version panel.
class TManagedCompilerMainFrame : public TDotNetToolBaseFrame {
 public:
  /// filesHint: the language's example under the files edit.
  TManagedCompilerMainFrame(const std::string& heading, const std::string& filesHint);

  std::string PageName() const override { return "Main"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  /// A project directory and files are required before the page may close.
  bool CheckPage(std::string& message) override;

  /// The folder dialog for the project directory; false (unchanged) when cancelled.
  bool BrowseProjectDir();
  /// The file dialog for the output assembly; false (unchanged) when cancelled.
  bool BrowseOutputFile();
  /// The heading, the version panel, the source controls and the output controls.
  void ListControls(TWrenPageControls& controls) override;

  TEditModel ProjectDirectory{"Project Directory:", ""};
  TEditModel FilesToCompile{"File(s) to compile:", ""};
  TLabelModel FilesHint;
  TEditModel OutputFile{"Output file:", ""};
  TComboBoxModel TargetType;

 protected:
  /// The project directory with its browse button, the files and their hint.
  void ListSourceControls(TWrenPageControls& controls);
  /// The output file with its browse button and the target type.
  void ListOutputControls(TWrenPageControls& controls);
};

/// The options page: code generation, output and source search settings.
class TManagedCompilerOptionsFrame : public TFrame {
 public:
  TManagedCompilerOptionsFrame();

  std::string PageName() const override { return "Options"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  /// Takes the code page chosen in the picker; nothing when it was cancelled.
  void ApplyCodePage(const TCodePageForm& form);
  /// Opens the code-page picker and takes its choice.
  void ChooseCodePage();
  /// The shared options; a language lists its own after them.
  void ListControls(TWrenPageControls& controls) override;

  TCheckBoxModel Optimize{"Optimize code"};
  TCheckBoxModel NoLogo{"Suppress compiler copyright message"};
  TCheckBoxModel OutputInUTF8{"Output compiler messages in UTF-8"};
  TEditModel BaseAddress{"Base address:", ""};
  TEditModel MainClass{"Main class:", ""};
  TEditModel CodePage{"Code page:", ""};
  TEditModel RecurseDir{"Recurse directory:", ""};
  TEditModel RecurseFiles{"Recurse file mask:", ""};
};

/// The debugging page: debug information, symbols and warnings.
class TManagedCompilerDebuggingFrame : public TFrame {
 public:
  TManagedCompilerDebuggingFrame();

  std::string PageName() const override { return "Debugging"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TComboBoxModel DebugInfo;
  TEditModel Defines{"Conditional compilation symbols:", ""};
  TCheckBoxModel WarnAsError{"Treat warnings as errors"};
  TEditModel SupressWarnings{"Suppress warnings (numbers):", ""};
};

/// The assemblies page: references, their search directories and added modules.
class TManagedCompilerAssembliesFrame : public TFrame {
 public:
  TManagedCompilerAssembliesFrame();

  std::string PageName() const override { return "Assemblies"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;
  void ListControls(TWrenPageControls& controls) override;

  TMemoModel References{"Referenced assemblies:", {}};
  TMemoModel LibLocations{"Additional assembly directories:", {}};
  TMemoModel Modules{"Modules to add:", {}};
};

/// The resources page: embedded and linked resources, Win32 resources and icons.
class TManagedCompilerResourcesFrame : public TFrame {
 public:
  TManagedCompilerResourcesFrame();

  std::string PageName() const override { return "Resources"; }
  void ReadActionData(TWrenAction& action) override;
  void WriteActionData(TWrenAction& action) override;
  std::vector<TWrenPagePropertyInfo> PropertyInfo() const override;

  /// Adds a resource through the resource-list editor: the file and, optionally, its name.
  void AddResource(const std::string& fileName, const std::string& manifestName);
  /// Adds the resource entered in the editor's fields and clears them for the next one.
  void AddEnteredResource();
  /// The file dialog for the editor's resource file; false (unchanged) when cancelled.
  bool BrowseResourceFile();
  void ListControls(TWrenPageControls& controls) override;

  TMemoModel Resources{"Embedded resources:", {}};
  // The resource-list editor: a file and the optional name it is embedded under.
  TEditModel ResourceFile{"Resource file:", ""};
  TEditModel ResourceName{"Resource name (optional):", ""};
  TMemoModel LinkResources{"Linked resources:", {}};
  TMemoModel Win32Resources{"Win32 resource files:", {}};
  TMemoModel Icons{"Win32 icon files:", {}};
};

/// The warning level drop-down of the C# and J# pages.
void FillWarningLevels(TComboBoxModel& combo, TDotNetWarningLevels level);

}  // namespace wren
