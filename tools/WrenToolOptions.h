// The user-wide location of an outside tool, shared by the options objects of the documentation,
// analysis and obfuscation tools.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "WrenOptionsAPI.h"
#include "WrenScripts.h"

namespace wren {

/// What an outside-tool action asks of its options: the full path of the tool's program.
class IWrenToolOptions {
 public:
  virtual ~IWrenToolOptions() = default;
  virtual std::string GetLocation() const = 0;
  virtual void SetLocation(const std::string& location) = 0;
};

/// Holds one tool location, stored under LocationValueName. Until a value is stored, the location
/// is the first registered installation whose path holds one of installedFileNames (see
/// FindInstalledTool).
class TWrenToolOptions : public TWrenOptionsObject, public IWrenToolOptions {
 public:
  explicit TWrenToolOptions(std::vector<std::string> installedFileNames = {});
  void LoadOptions(IWrenOptionsReader& reader) override;
  void SaveOptions(IWrenOptionsWriter& writer) override;
  std::string GetLocation() const override { return location_; }
  void SetLocation(const std::string& location) override;

 protected:
  virtual std::string LocationValueName() const = 0;

 private:
  std::vector<std::string> installedFileNames_;
  std::string location_;
};

/// The path of an installed program whose name contains one of fileNames, from the Windows
/// Installer's record of per-machine private assemblies (HKLM
/// "SOFTWARE\Classes\Installer\Assemblies"), then of per-user ones (HKCU
/// "Software\Microsoft\Installer\Assemblies"). Those subkeys are named after the application's
/// full path with '|' for each delimiter. "" when nothing matches.
std::string FindInstalledTool(const std::vector<std::string>& fileNames);

/// The tool options registered under that name and category; nullptr when none.
std::shared_ptr<IWrenToolOptions> FindToolOptions(const std::string& name,
                                                  const std::string& category);

/// A script object with one field, Location, read from the named options at each access.
std::shared_ptr<TWrenScriptObject> ToolOptionsScriptObject(const std::string& typeName,
                                                           const std::string& name,
                                                           const std::string& category);

}  // namespace wren
