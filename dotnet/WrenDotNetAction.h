// The base of every action that runs a tool of the .NET Framework or SDK.
#pragma once

#include <string>
#include <vector>

#include "WrenExecuteAction.h"
#include "WrenPluginAPI.h"

namespace wren {

/// Where a .NET tool lives: on the path (ttNone), in the framework directory, or in the SDK's Bin.
enum class TWrenDotNetToolType { ttNone, ttFramework, ttSDK };

/// Value names of TWrenDotNetToolType by ordinal, as stored in projects.
const std::vector<std::string>& DotNetToolTypeNames();

/// Runs one .NET tool: picks the SDK version the step uses (the options' default unless
/// OverrideSDKDefault), refuses to run when it is below MinimumSDKVersion or not installed, and
/// turns the tool's file name into a full path. Subclasses give the tool and its type.
class TWrenDotNetAction : public TWrenExecuteAbstractAction {
 public:
  TWrenDotNetAction();

  virtual TWrenDotNetToolType GetDotNetToolType() const = 0;
  /// The tool's file name without directory ("gacutil.exe").
  virtual std::string GetDotNetTool() const = 0;

  /// The effective SDK version: the stored one when OverrideSDKDefault, else the options' default.
  std::string GetDefaultSDKVersion() const;
  /// Stores version when OverrideSDKDefault; otherwise stores the options' default instead.
  void SetDefaultSDKVersion(const std::string& version);

  bool BeforeGetCommandLine() override;
  bool AfterGetCommandLine() override { return true; }
  std::string GetExecutable() override;
  /// The directory part of fileName, delimiter included.
  std::string GetStartingDir(const std::string& fileName) override;
  bool InterpretResult(int32_t exitCode) override { return exitCode == 0; }
  void GetHiddenProperties(TStrings& list) const override;

  /// The directory of the framework with the effective SDK version; "" when none.
  std::string GetFrameWorkPath() const;
  /// The SDK Bin directory of that framework; "" when none.
  std::string GetSDKPath() const;

  static const TPropertyTable& ClassProperties();
  const TPropertyTable& GetPublishedProperties() const override { return ClassProperties(); }

  bool OverrideSDKDefault = false;
  std::string MinimumSDKVersion;

 private:
  std::string sdkVersion_;
};

/// A version text as a number for comparisons: the first "v" (any case) removed and the rest read
/// as a whole floating-point number; 1.0 when it is not one ("v1.1.4322", "").
double DotNetVersionNumber(const std::string& version);

/// Lets the user pick a file for an edit of a .NET action page: the edit's text, expanded, is the
/// starting name; on acceptance the chosen name goes into the edit. False (edit unchanged) on
/// cancel.
bool GetFile(TEditModel& edit, const std::string& filter);

}  // namespace wren
