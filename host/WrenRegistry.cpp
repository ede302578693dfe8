#include "WrenRegistry.h"

#include <mutex>

namespace wren {

namespace {

/// The registry before the host configures one: it has no keys at all.
class TEmptyRegistry final : public IWrenRegistry {
 public:
  std::unique_ptr<IWrenRegistryKey> OpenKey(TRegistryRoot, const std::string&,
                                            uint32_t) const override {
    return nullptr;
  }
};

std::mutex gMutex;

std::shared_ptr<const IWrenRegistry>& Current() {
  static std::shared_ptr<const IWrenRegistry> registry = std::make_shared<TEmptyRegistry>();
  return registry;
}

}  // namespace

// The reference stays valid until the next SetWrenRegistry.
const IWrenRegistry& WrenRegistry() {
  std::lock_guard<std::mutex> lock(gMutex);
  return *Current();
}

void SetWrenRegistry(std::shared_ptr<const IWrenRegistry> registry) {
  std::lock_guard<std::mutex> lock(gMutex);
  Current() = registry ? std::move(registry) : std::make_shared<TEmptyRegistry>();
}

}  // namespace wren
