#include "WrenActionRegistry.h"

#include "WrenUtils.h"

namespace wren {
namespace {

/// Records action registrations for the host.
class TActionServices : public IWrenActionServices {
 public:
  void RegisterAction(const std::string& displayName, const std::string& category,
                      const TWrenActionClass& actionClass,
                      const std::string& iconResourceName) override {
    WrenRegistrations().actions.push_back(
        {displayName, category, actionClass, UpperCase(iconResourceName), {}});
  }

  void RegisterPropertyPages(const TWrenActionClass& actionClass,
                             const std::vector<TWrenFrameClass>& frames) override {
    // Pages attach to the latest registration of the class (a class is registered once).
    auto& actions = WrenRegistrations().actions;
    for (auto it = actions.rbegin(); it != actions.rend(); ++it) {
      if (SameText(it->actionClass.name, actionClass.name)) {
        it->pages.insert(it->pages.end(), frames.begin(), frames.end());
        return;
      }
    }
  }

  void RegisterPropertyEditor(const std::string& propertyType, const TWrenActionClass& actionClass,
                              const std::string& propertyName,
                              const TWrenPropertyEditorClass& editorClass) override {
    WrenRegistrations().editors.push_back(
        {propertyType, actionClass.name, propertyName, editorClass});
  }
};

/// Records what scripts may call.
class TScriptingServices : public IWrenScriptingServices {
 public:
  void RegisterMethod(const TWrenScriptMethodInfo& method) override {
    WrenRegistrations().scriptMethods.push_back(method);
  }
  void RegisterObject(const std::string& name,
                      std::function<std::shared_ptr<TWrenScriptObject>()> factory) override {
    WrenRegistrations().scriptObjects.emplace_back(name, std::move(factory));
  }
};

}  // namespace

TWrenRegistrations& WrenRegistrations() {
  static TWrenRegistrations registrations;
  return registrations;
}

IWrenActionServices& WrenActionServices() {
  static TActionServices services;
  return services;
}

IWrenScriptingServices& WrenScriptingServices() {
  static TScriptingServices services;
  return services;
}

const TWrenRegisteredAction* FindRegisteredAction(const std::string& className) {
  for (const TWrenRegisteredAction& a : WrenRegistrations().actions)
    if (SameText(a.actionClass.name, className)) return &a;
  return nullptr;
}

std::unique_ptr<TCustomWrenAction> CreateRegisteredAction(const std::string& className) {
  const TWrenRegisteredAction* registered = FindRegisteredAction(className);
  return registered ? registered->actionClass.create() : nullptr;
}

std::shared_ptr<TWrenScriptObject> CreateScriptObject(const std::string& name) {
  for (auto& [objectName, factory] : WrenRegistrations().scriptObjects)
    if (SameText(objectName, name)) return factory();
  return nullptr;
}

void ClearRegistrations() { WrenRegistrations() = TWrenRegistrations{}; }

}  // namespace wren
