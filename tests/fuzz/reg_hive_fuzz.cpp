// Fuzzes the .reg hive parser, then walks what it made: every key, value and subkey it lists can
// be opened and read back.
#include <cstddef>
#include <cstdint>
#include <string>

#include "WrenRegistry.h"
#include "runtime/WrenRegistryHive.h"

namespace {

void Walk(const wren::IWrenRegistry& registry, wren::TRegistryRoot root, const std::string& path,
          int depth) {
  auto key = registry.OpenKey(root, path);
  if (!key || depth > 64) return;
  for (const auto& name : key->GetValueNames()) (void)key->ReadString(name);
  for (const auto& sub : key->GetKeyNames())
    Walk(registry, root, path.empty() ? sub : path + "\\" + sub, depth + 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  std::string error;
  auto registry = wren::ParseRegistryText(text, "fuzz.reg", error);
  if (!registry) return 0;
  for (auto root : {wren::TRegistryRoot::HKEY_CLASSES_ROOT, wren::TRegistryRoot::HKEY_CURRENT_USER,
                    wren::TRegistryRoot::HKEY_LOCAL_MACHINE, wren::TRegistryRoot::HKEY_USERS})
    Walk(*registry, root, "", 0);
  return 0;
}
