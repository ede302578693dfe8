// The host's record of what packages registered: action types, pages, editors, script methods.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "WrenPluginAPI.h"

namespace wren {

/// A registered property editor, with the action class and property it edits.
struct TWrenRegisteredEditor {
  std::string propertyType;
  std::string actionClass;
  std::string propertyName;
  TWrenPropertyEditorClass editor;
};

/// Everything registered so far, in registration order.
struct TWrenRegistrations {
  std::vector<TWrenRegisteredAction> actions;
  std::vector<TWrenRegisteredEditor> editors;
  std::vector<TWrenScriptMethodInfo> scriptMethods;
  std::vector<std::pair<std::string, std::function<std::shared_ptr<TWrenScriptObject>()>>>
      scriptObjects;
};

TWrenRegistrations& WrenRegistrations();

/// The registered action of that class name (case-insensitive); nullptr when none.
const TWrenRegisteredAction* FindRegisteredAction(const std::string& className);
/// Makes an action of a registered class; nullptr for an unknown name.
std::unique_ptr<TCustomWrenAction> CreateRegisteredAction(const std::string& className);
/// The script object registered under the name, made afresh; nullptr when none.
std::shared_ptr<TWrenScriptObject> CreateScriptObject(const std::string& name);
/// Forgets every registration (module unload, tests).
void ClearRegistrations();

}  // namespace wren
