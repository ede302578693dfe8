// The user-wide options file: one XML file holding every options object's named strings.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "WrenOptionsAPI.h"
#include "WrenPluginAPI.h"

namespace wren {

/// Named strings per options key, read from and written to one XML file:
/// <MarrowbyOptions version="1"><Options key="K"><Value name="N">text</Value>...</Options>...
class TWrenOptionsStore {
 public:
  /// Loads the file; a missing file is an empty store. False (with error) on a malformed file.
  bool Load(const std::string& path, std::string& error);
  /// Writes the file atomically, creating its directory when needed, when a value changed since
  /// it was loaded or saved; the user's file is left alone otherwise.
  bool Save(std::string& error);
  const std::string& Path() const { return path_; }
  void SetPath(const std::string& path);
  /// True when the store holds what its file does not.
  bool Changed() const { return changed_; }

  std::string Get(const std::string& key, const std::string& name, const std::string& def) const;
  void Set(const std::string& key, const std::string& name, const std::string& value);
  /// Keys and their values, in the order first stored.
  std::vector<std::string> Keys() const;
  std::vector<std::pair<std::string, std::string>> Values(const std::string& key) const;

  /// Reader and writer over one key, for TWrenOptionsObject::LoadOptions / SaveOptions.
  std::unique_ptr<IWrenOptionsReader> Reader(const std::string& key) const;
  std::unique_ptr<IWrenOptionsWriter> Writer(const std::string& key);

 private:
  std::string path_;
  bool changed_ = false;
  std::vector<std::pair<std::string, std::vector<std::pair<std::string, std::string>>>> data_;
};

/// The store the options services load registered objects from (set by the host at start).
TWrenOptionsStore& WrenOptionsStore();

/// The default location: $XDG_CONFIG_HOME/marrowby/options.xml (or ~/.config/marrowby/...).
std::string DefaultOptionsPath();

/// Every registered options object with its class name and icon, in registration order.
struct TWrenRegisteredOptions {
  TWrenOptionsClass optionsClass;
  std::string iconResourceName;
  std::shared_ptr<TWrenOptionsObject> instance;
  std::vector<TWrenFrameClass> pages;
  /// The instance's name and category, taken once: every step that runs a program looks its
  /// options up by them.
  std::string name;
  std::string category;
};
std::vector<TWrenRegisteredOptions>& RegisteredOptions();
/// Saves every modified options object to the store and the store to its file.
bool SaveModifiedOptions(std::string& error);
/// Forgets all registrations (host shutdown, tests).
void ClearRegisteredOptions();

}  // namespace wren
