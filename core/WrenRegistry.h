// Read-only access to the registry, shaped like the operations the package uses.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "WrenTypes.h"

namespace wren {

enum class TRegistryRoot { HKEY_CLASSES_ROOT, HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE, HKEY_USERS };

inline constexpr uint32_t KEY_READ = 0x20019;

/// An open key. Value and subkey names compare without regard to case; the default value is "".
class IWrenRegistryKey {
 public:
  virtual ~IWrenRegistryKey() = default;
  virtual bool ValueExists(const std::string& name) const = 0;
  /// The string value; "" when missing.
  virtual std::string ReadString(const std::string& name) const = 0;
  virtual TStrings GetValueNames() const = 0;
  /// Subkey names in the registry's order.
  virtual TStrings GetKeyNames() const = 0;
};

/// A registry. Keys are opened read-only; nullptr when the key does not exist.
class IWrenRegistry {
 public:
  virtual ~IWrenRegistry() = default;
  virtual std::unique_ptr<IWrenRegistryKey> OpenKey(TRegistryRoot root, const std::string& path,
                                                    uint32_t access = KEY_READ) const = 0;
};

/// The registry the host has configured (an empty one until it sets one).
const IWrenRegistry& WrenRegistry();
void SetWrenRegistry(std::shared_ptr<const IWrenRegistry> registry);

}  // namespace wren
