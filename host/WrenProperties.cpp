#include "WrenProperties.h"

#include "WrenUtils.h"

namespace wren {

const TPublishedProperty* FindProperty(const TPropertyTable& table, const std::string& name) {
  // Lengths first: names of another length never match, and most do differ in length.
  for (const TPublishedProperty& p : table)
    if (p.name.size() == name.size() && SameText(p.name, name)) return &p;
  return nullptr;
}

std::string PropertyValueToString(const TPublishedProperty& prop, const TPropertyValue& value) {
  switch (prop.kind) {
    case TPropertyKind::pkString:
      return std::get<std::string>(value);
    case TPropertyKind::pkBoolean:
      return std::get<bool>(value) ? "true" : "false";
    case TPropertyKind::pkInteger:
      return std::to_string(std::get<int32_t>(value));
    case TPropertyKind::pkEnumeration: {
      int32_t ordinal = std::get<int32_t>(value);
      if (ordinal >= 0 && ordinal < static_cast<int32_t>(prop.enumNames.size()))
        return prop.enumNames[ordinal];
      return std::to_string(ordinal);
    }
    case TPropertyKind::pkStringList: {
      std::string text;
      const TStrings& lines = std::get<TStrings>(value);
      for (size_t i = 0; i < lines.size(); ++i) text += (i ? "\n" : "") + lines[i];
      return text;
    }
  }
  return "";
}

}  // namespace wren
