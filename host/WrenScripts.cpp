#include "WrenScripts.h"

#include "WrenUtils.h"

namespace wren {

IWrenActionScriptParameter& IWrenActionScriptParams::Add(const std::string& name,
                                                         const std::string& typeName) {
  if (IWrenActionScriptParameter* existing = Find(name)) {
    existing->typeName = typeName;
    return *existing;
  }
  items.push_back({name, typeName, {}, nullptr});
  return items.back();
}

IWrenActionScriptParameter* IWrenActionScriptParams::Find(const std::string& name) {
  for (IWrenActionScriptParameter& p : items)
    if (SameText(p.name, name)) return &p;
  return nullptr;
}

const IWrenActionScriptParameter* IWrenActionScriptParams::Find(const std::string& name) const {
  for (const IWrenActionScriptParameter& p : items)
    if (SameText(p.name, name)) return &p;
  return nullptr;
}

}  // namespace wren
