// User scripts attached to actions, and the objects and values scripts see.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "WrenTypes.h"

namespace wren {

/// A method a script may call on an object: arguments in, one value out.
struct TWrenScriptMethod {
  std::string name;
  std::function<WrenVariant(const std::vector<WrenVariant>& args)> call;
};

/// An object handed to a script: callable methods and readable fields (`obj:Method(...)`, `obj.Field`).
struct TWrenScriptObject {
  std::string typeName;
  std::vector<TWrenScriptMethod> methods;
  std::vector<std::pair<std::string, std::function<WrenVariant()>>> fields;
};

/// One named parameter of a script: a plain value, or an object.
class IWrenActionScriptParameter {
 public:
  std::string name;
  std::string typeName;  // for the script editor ("string", "IWrenAssemblyInfoUpdater", ...)
  WrenVariant value;
  std::shared_ptr<TWrenScriptObject> object;  // set for object parameters
};

/// The parameters of one script, in declaration order. Names compare without regard to case.
class IWrenActionScriptParams {
 public:
  IWrenActionScriptParameter& Add(const std::string& name, const std::string& typeName);
  IWrenActionScriptParameter* Find(const std::string& name);
  const IWrenActionScriptParameter* Find(const std::string& name) const;
  void Clear() { items.clear(); }
  std::vector<IWrenActionScriptParameter> items;
};

/// A named user script of an action (an event such as "OnProcessFile").
struct TWrenActionScript {
  std::string name;
  std::string language = "lua";
  std::string text;
  IWrenActionScriptParams params;
};

}  // namespace wren
