// User-wide options objects and the services that hold them.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace wren {

/// Reads named strings of one options object from the host's store.
class IWrenOptionsReader {
 public:
  virtual ~IWrenOptionsReader() = default;
  virtual std::string ReadString(const std::string& name, const std::string& defaultValue) = 0;
};

/// Writes named strings of one options object to the host's store.
class IWrenOptionsWriter {
 public:
  virtual ~IWrenOptionsWriter() = default;
  virtual void WriteString(const std::string& name, const std::string& value) = 0;
};

/// The base of a user-wide options object. The host keeps one instance per registered class,
/// loads it from its store at start and saves it when it has been modified.
class TWrenOptionsObject {
 public:
  virtual ~TWrenOptionsObject() = default;
  /// The key the options are stored under ("Microsoft.NET").
  virtual std::string GetOptionKey() const = 0;
  virtual std::string GetOptionsName() const = 0;
  virtual std::string GetOptionsCategory() const = 0;
  virtual std::string GetOptionType() const { return "user"; }
  virtual bool IsModified() const { return modified_; }
  void SetModified(bool modified) { modified_ = modified; }
  virtual void LoadOptions(IWrenOptionsReader& reader) = 0;
  virtual void SaveOptions(IWrenOptionsWriter& writer) = 0;

 private:
  bool modified_ = false;
};

/// A registered options class: its name and how to make its one instance.
struct TWrenOptionsClass {
  std::string name;
  std::function<std::shared_ptr<TWrenOptionsObject>()> create;
};

template <class O>
TWrenOptionsClass OptionsClassOf() {
  return {O::StaticClassName(), [] { return std::shared_ptr<TWrenOptionsObject>(new O()); }};
}

struct TWrenFrameClass;

/// The host's registry of options objects (global `WrenOptionsServices`).
class IWrenOptionsServices {
 public:
  virtual ~IWrenOptionsServices() = default;
  /// Creates the one instance of the class and loads it from the host's store.
  virtual void RegisterOptions(const TWrenOptionsClass& optionsClass,
                               const std::string& iconResourceName) = 0;
  virtual void RegisterOptionsPages(const TWrenOptionsClass& optionsClass,
                                    const std::vector<TWrenFrameClass>& frames) = 0;
  /// The registered instance with that name and category (case-insensitive); nullptr when none.
  virtual std::shared_ptr<TWrenOptionsObject> FindOptions(const std::string& name,
                                                          const std::string& category) = 0;
};

IWrenOptionsServices& WrenOptionsServices();

}  // namespace wren
