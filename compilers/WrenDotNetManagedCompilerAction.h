// The shared base of the .NET command-line compiler actions: the options common to C#, VB.NET and
// J#, and the response file "wrenresp.rsp" that hands them to the compiler.
#pragma once

#include <string>
#include <vector>

#include "WrenActionAPI.h"
#include "dotnet/WrenDotNetAction.h"
#include "dotnet/WrenDotNetFrameWorkAPI.h"

namespace wren {

/// The kind of assembly a compiler produces.
enum class TDotNetTarget { Exe, Lib, Module, WindowsExe };
/// The debug information a compiler writes.
enum class TDotNetDebugOptions { DebugOff, DebugFull, DebugPDBOnly };
/// Compiler warning levels; the ordinal is the level.
enum class TDotNetWarningLevels { WarnOff, WarnLevel1, WarnLevel2, WarnLevel3, WarnLevel4 };

/// Value names by ordinal, as stored in projects.
const std::vector<std::string>& DotNetTargetNames();
const std::vector<std::string>& DotNetDebugOptionNames();
const std::vector<std::string>& DotNetWarningLevelNames();

/// The "/warn:<n>" line of a warning level.
std::string WarningLevelSwitch(TDotNetWarningLevels level);

/// Splits a delimited list in which quoted items keep their blanks and delimiters: blanks and the
/// delimiter separate unquoted items, a quoted item ends at its closing quote ("" inside it is one
/// quote), and a delimiter at the very end adds an empty item.
TStrings SplitQuotedList(const std::string& text, char delimiter = ',', char quote = '"');

/// The text cut at every separator character into lines; a separator at the very end adds no
/// empty line, one between two others does.
TStrings SplitToLines(const std::string& text, const std::string& separators);

/// path relative to baseDir when path is absolute and lies below it (".." steps otherwise);
/// a relative path is taken as relative to baseDir already and returned as it is.
std::string RelativePathTo(const std::string& baseDir, const std::string& path);

/// The base of every action that runs a .NET command-line compiler. It holds the option fields of
/// all three languages (each concrete action publishes its language's subset), writes them into
/// the response file in the project directory and passes the compiler that one file.
class TWrenManagedCompilerAction : public TWrenDotNetAction, public IWrenManagedCompiler {
 public:
  static constexpr const char* kResponseFileName = "wrenresp.rsp";

  TWrenManagedCompilerAction();

  static std::string StaticClassName() { return "TWrenManagedCompilerAction"; }

  TWrenDotNetToolType GetDotNetToolType() const override {
    return TWrenDotNetToolType::ttFramework;
  }
  /// Project actions answer true for Compact Framework projects.
  virtual bool IsCompactFramework() const { return false; }

  /// Sets the option fields to their defaults; subclasses reset their own fields after calling it.
  virtual void ResetOptions();
  /// Appends the response-file lines to lines; false when an expansion failed or nothing is to be
  /// compiled (the reason is in the log).
  virtual bool GenerateResponseFile(const std::string& projectDir, TStrings& lines);
  /// Turns one valued option into a line: switch, ':' and the expanded value (quoted when it holds
  /// a blank and no quote) with separator + second value after it; the switch alone when the value
  /// is empty and addIfEmpty is set. False when an expansion failed.
  bool AddOptionToResponseFile(const std::string& switchText, const std::string& caption,
                               const std::string& separator, const std::string& secondValue,
                               TStrings& lines, bool addIfEmpty, const std::string& value);

  /// Writes the response file into the project directory and adds the one argument naming it.
  bool GetCommandLine(ICommandLineBuilder& builder) override;
  /// The expanded project directory with a trailing delimiter; "" when it cannot be expanded.
  std::string GetStartingDir(const std::string& fileName) override;
  void OnSuccess() override;

  /// Fills the option fields from a project file: ".bdsproj" files go to the Borland reader,
  /// every other file to the Visual Studio reader. False (logged) when it cannot be loaded.
  bool LoadProjectFile(const std::string& fileName);

  /// Rows for the option fields, by property name, for the concrete actions to publish.
  static TPropertyTable PublishedOptionFields(const std::vector<std::string>& names);
  /// A concrete compiler action's table: the .NET action's properties, the named option fields,
  /// then the action's own rows.
  static TPropertyTable CompilerProperties(const std::vector<std::string>& optionFields,
                                           TPropertyTable own);

  /// The checks of the command-line compilers: a project directory and files to compile.
  bool Validate(IWrenActionValidationError& errors) override;

  // Option fields (property names as published).
  bool NoLogo = false;
  bool OutputInUTF8 = false;
  std::string ConfigName;
  std::string ProjectFile;
  std::string CFResGen;
  bool CopyConfigFiles = false;
  bool Optimize = false;
  std::string OutputFile;
  TDotNetTarget Target = TDotNetTarget::Lib;
  std::string Modules;
  std::string LibLocations;
  std::string References;
  TDotNetDebugOptions Debug = TDotNetDebugOptions::DebugFull;
  std::string SupressWarnings;
  bool WarnAsError = false;
  std::string Defines;
  std::string LinkResources;
  std::string Resources;
  std::string Icon;
  std::string Win32Resources;
  std::string BaseAddress;
  std::string CodePage;
  std::string MainClass;
  std::string RecurseDir;
  std::string RecurseFiles;
  std::string Files;
  std::string ProjectDir;
  std::string RootNameSpace;
  TStrings ProjectResources;
  TStrings ProjectLicenses;

 protected:
  /// Declares the action's scripts; none in the compilers. Subclasses with scripts call their
  /// own from their constructor.
  virtual void AddScripts() {}
  /// The project readers of the project compiler actions; the command-line compilers have none.
  virtual bool LoadBorlandProject(const std::string& fileName);
  virtual bool LoadVisualStudioProject(const std::string& fileName);

  /// Expands a list of files under caption, splits it on ';' and ',' and adds one line
  /// switchText + the quoted file per item. False when the expansion failed.
  bool AddFileListLines(const std::string& switchText, const std::string& caption,
                        const std::string& value, TStrings& lines);
  /// Expands value under caption for a response file. A line break in the result would add a
  /// line of its own to the file (a switch nobody set), so it fails the step, naming the caption.
  bool ExpandResponseValue(const std::string& caption, const std::string& value,
                           std::string& result);
  /// False, logged under caption, when text holds a line break.
  bool CheckSingleLine(const std::string& caption, const std::string& text);
  /// Saves lines to path, each ended by CR LF, replacing an older file. False when an older file
  /// is read-only, a line holds a line break or the file cannot be written; reason says why.
  static bool SaveLinesToFile(const std::string& path, const TStrings& lines,
                              std::string& reason);
  static bool SaveLinesToFile(const std::string& path, const TStrings& lines);
  /// The "/resource:" lines of the expanded ProjectResources (rootNameSpace expanded too); project
  /// actions that know the manifest name of each resource write them their own way.
  virtual void AddProjectResourceLines(const std::string& expanded, const std::string& projectDir,
                                       const std::string& rootNameSpace, TStrings& lines) const;

 private:
  /// Which embedded resources are given a manifest name after the root namespace.
  enum class TManifestRule { UnlessResources, WithRootNameSpace, Never };
  /// One "/resource:" line per entry of an expanded comma list (empty entries skipped).
  void AddResourceLines(const std::string& expanded, const std::string& projectDir,
                        const std::string& rootNameSpace, TManifestRule rule,
                        TStrings& lines) const;
};

}  // namespace wren
