// The host's options services: one instance per registered options class, loaded from and saved
// to the process-wide options store.
#include <algorithm>

#include "runtime/WrenOptionsStore.h"
#include "WrenUtils.h"

namespace wren {

namespace {

TWrenRegisteredOptions* FindRecord(const std::string& className) {
  for (TWrenRegisteredOptions& record : RegisteredOptions())
    if (SameText(record.optionsClass.name, className)) return &record;
  return nullptr;
}

/// Keeps the registered options objects (global `WrenOptionsServices`).
class TOptionsServices : public IWrenOptionsServices {
 public:
  void RegisterOptions(const TWrenOptionsClass& optionsClass,
                       const std::string& iconResourceName) override {
    TWrenRegisteredOptions* record = FindRecord(optionsClass.name);
    if (!record) {
      RegisteredOptions().push_back({optionsClass, "", nullptr, {}, "", ""});
      record = &RegisteredOptions().back();
    }
    record->optionsClass = optionsClass;
    record->iconResourceName = UpperCase(iconResourceName);
    if (record->instance || !optionsClass.create) return;  // one instance per class
    std::shared_ptr<TWrenOptionsObject> instance = optionsClass.create();
    if (!instance) return;
    // Options never saved keep the values their object starts with (a default detected on this
    // machine, say); only a stored section is loaded over them.
    const std::vector<std::string> keys = WrenOptionsStore().Keys();
    const bool stored = std::any_of(keys.begin(), keys.end(), [&](const std::string& key) {
      return SameText(key, instance->GetOptionKey());
    });
    if (stored) instance->LoadOptions(*WrenOptionsStore().Reader(instance->GetOptionKey()));
    instance->SetModified(false);  // loading is not a change
    record->name = instance->GetOptionsName();
    record->category = instance->GetOptionsCategory();
    record->instance = std::move(instance);
  }

  void RegisterOptionsPages(const TWrenOptionsClass& optionsClass,
                            const std::vector<TWrenFrameClass>& frames) override {
    TWrenRegisteredOptions* record = FindRecord(optionsClass.name);
    if (!record) {
      // Pages may be registered before their class; the class fills in the instance later.
      RegisteredOptions().push_back({optionsClass, "", nullptr, {}, "", ""});
      record = &RegisteredOptions().back();
    }
    record->pages.insert(record->pages.end(), frames.begin(), frames.end());
  }

  std::shared_ptr<TWrenOptionsObject> FindOptions(const std::string& name,
                                                  const std::string& category) override {
    for (const TWrenRegisteredOptions& record : RegisteredOptions()) {
      if (record.instance && SameText(record.name, name) && SameText(record.category, category))
        return record.instance;
    }
    return nullptr;
  }
};

}  // namespace

IWrenOptionsServices& WrenOptionsServices() {
  static TOptionsServices services;
  return services;
}

std::vector<TWrenRegisteredOptions>& RegisteredOptions() {
  static std::vector<TWrenRegisteredOptions> registered;
  return registered;
}

bool SaveModifiedOptions(std::string& error) {
  std::vector<TWrenOptionsObject*> saved;
  for (const TWrenRegisteredOptions& record : RegisteredOptions()) {
    if (!record.instance || !record.instance->IsModified()) continue;
    std::unique_ptr<IWrenOptionsWriter> writer =
        WrenOptionsStore().Writer(record.instance->GetOptionKey());
    record.instance->SaveOptions(*writer);
    saved.push_back(record.instance.get());
  }
  if (!WrenOptionsStore().Save(error)) return false;
  // Cleared only once the file holds the values, so a failed save can be retried.
  for (TWrenOptionsObject* options : saved) options->SetModified(false);
  return true;
}

void ClearRegisteredOptions() { RegisteredOptions().clear(); }

}  // namespace wren
