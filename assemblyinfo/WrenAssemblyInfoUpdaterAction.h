// The build step that stamps attribute values into AssemblyInfo sources before they are compiled.
#pragma once

#include <atomic>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "WrenActionAPI.h"
#include "WrenAssemblyInfoUpdater.h"

namespace wren {

/// Expands a selection of files and wildcards and runs the attribute rewriter over each file with
/// the user's attribute list, letting the "OnProcessFile" and "OnProcessEntry" scripts see and
/// change every file and every attribute. Runs in process.
class TWrenAssemblyInfoUpdaterAction : public TCustomWrenAction, public IWrenAssemblyInfoCallBack {
 public:
  TWrenAssemblyInfoUpdaterAction();

  static std::string StaticClassName() { return "TWrenAssemblyInfoUpdaterAction"; }
  static std::string GetActionName() { return "AssemblyInfo Updater"; }
  std::string ClassName() const override { return StaticClassName(); }
  std::string DisplayName() const override { return GetActionName(); }
  std::string GetQuickHelpFilename() const override { return "Plugins\\AssemblyInfoUpdater.html"; }
  std::string GetCopyRight() const override;

  bool Validate(IWrenActionValidationError& errors) override;
  bool Execute() override;
  bool CanTerminate() override { return true; }
  void TerminateAction() override { terminated_ = true; }
  void InitialiseScriptParams(TWrenActionScript& script) override;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  /// Fills the file list from Selection; false when an expansion failed.
  bool BuildFileList();
  /// Adds the files of path's directory that match mask, and, with recurse, those below it.
  void processWildCard(const std::string& path, const std::string& mask, bool recurse);
  /// Gives the expanded Attributes to the updater; false when an expansion failed.
  bool AddEntriesToUpdater(IWrenAssemblyInfoUpdater& updater);
  /// The files of the current (or last) run, in processing order.
  const TStrings& FileList() const { return fileList_; }

  // IWrenAssemblyInfoCallBack.
  void OnProcessFile(const std::string& fileName,
                     const std::shared_ptr<IWrenAssemblyInfoUpdater>& updater) override;
  void AssemblyInfoProcessMessage(const std::string& message) override;
  void AssemblyInfoProcessEntry(const std::string& fileName, const std::string& entryName,
                                std::string& entryValue) override;

  // Published properties.
  TStrings Selection;
  bool BackupFiles = true;
  bool Recurse = false;
  TStrings Attributes;
  bool UpdateOnly = false;

 private:
  bool Stopped();
  /// The text with its %NAME% variables expanded; false (logged) when one is not defined.
  bool Expand(const char* caption, const std::string& text, std::string& result);
  /// Splits and unquotes the attributes once for the whole run when none names a variable (they
  /// are then the same for every file); false when one does.
  bool PrepareLiteralEntries();
  std::shared_ptr<TWrenScriptObject> ActionObject();
  /// processWildCard over an open folder: files are kept with it, subfolders opened from it.
  void WalkFolder(const TWrenFolderRef& folder, const std::string& mask, bool recurse);
  /// Every Selection line expanded; false (logged) when one cannot be.
  bool ExpandSelection(TStrings& expanded);
  /// Adds the file or the files matching one expanded Selection line.
  void AddSelection(const std::string& expanded);
  /// Adds a file to the list (with its folder, if found by a walk); while the run streams, it is
  /// processed at once.
  void AddFile(std::string path, TWrenFolderRef folder, std::string name);

  /// A run over the files: the updater, the line buffer and how it stands.
  struct TRun {
    IWrenAssemblyInfoUpdater& updater;
    TWrenAssemblyInfo& info;
    std::string line;  // reused for the line of every file
    bool result = true;
    bool over = false;  // a file failed or the step was stopped
  };
  struct TFileSpot;
  /// Processes file i of the list, found at spot; false when the run ends there.
  bool ProcessListed(size_t i, TFileSpot& spot, TRun& run);
  /// False once the walk should end: the step was stopped or the run is over.
  bool Walking();
  /// Runs a script that has text; a failed script aborts the file being processed.
  void RunScript(TWrenActionScript& script);

  TStrings fileList_;
  /// Where a file of fileList_ was found: its folder and name, or no folder for a file named by
  /// its path.
  struct TFileSpot {
    TWrenFolderRef folder;
    std::string name;
  };
  std::vector<TFileSpot> spots_;  // of each file, when the files are listed before the run
  TRun* streaming_ = nullptr;  // set while files are processed as the walk finds them
  std::atomic<bool> terminated_{false};
  // False while a run has no OnProcessEntry script to ask; outside a run the script is looked up.
  bool entryScript_ = true;
  bool fileScript_ = true;  // the same for OnProcessFile
  /// One attribute as given to the updater.
  struct TLiteralEntry {
    std::string name;
    std::string value;
    bool quoted = false;
  };
  std::vector<TLiteralEntry> literal_;
  bool literalReady_ = false;  // literal_ holds the attributes of the current run
};

/// A user script that failed while a file was processed (the host has logged why).
class EWrenScriptFailed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace wren
