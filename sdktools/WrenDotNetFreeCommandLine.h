// What the free-command-line actions (Run SN.EXE, Run AL.EXE, Run ASPNET_REGIIS.EXE) share: the
// user's whole options text as the command line, and the user's working folder.
#pragma once

#include <string>
#include <utility>

#include "WrenActionAPI.h"
#include "WrenCommandLine.h"
#include "WrenProperties.h"

namespace wren {

/// Expands options (caption "Options", blank allowed) and appends it as one switch without value,
/// neither split nor quoted, after setting the separator to one blank. False when the expansion
/// fails.
bool AddFreeCommandLine(TCustomWrenAction& action, const std::string& options,
                        ICommandLineBuilder& builder);

/// The expanded working folder (caption "Working Directory", blank fails). When the expansion
/// fails, logs "Warning: working directory is blank" and answers "" (the host's directory).
std::string FreeStartingDir(TCustomWrenAction& action, const std::string& startDir);

/// A free-command-line action on the tool action Base: publishes Options (the whole command line)
/// and StartDir (the working folder) after Base's properties. Options may be empty (the tool then
/// prints its usage); the folder is what a user forgets, so a blank one is reported on folderField
/// as "<folderField> has not been set".
template <class Base>
class TFreeCommandLineAction : public Base {
 public:
  bool GetCommandLine(ICommandLineBuilder& builder) override {
    return AddFreeCommandLine(*this, Options, builder);
  }
  bool Validate(IWrenActionValidationError& errors) override {
    if (!StartDir.empty()) return true;
    errors.AddError(folderField_, folderField_ + " has not been set");
    return false;
  }
  /// The expanded StartDir; "" (with a warning in the log) when it expands to nothing.
  std::string GetStartingDir(const std::string& fileName) override {
    (void)fileName;
    return FreeStartingDir(*this, StartDir);
  }

  static const TPropertyTable& ClassProperties() {
    static const TPropertyTable table = ChainProperties(
        Base::ClassProperties(), {StringProperty("Options", &TFreeCommandLineAction::Options),
                                  StringProperty("StartDir", &TFreeCommandLineAction::StartDir)});
    return table;
  }
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  std::string Options;
  std::string StartDir;

 protected:
  explicit TFreeCommandLineAction(std::string folderField) : folderField_(std::move(folderField)) {}

 private:
  std::string folderField_;
};

}  // namespace wren
