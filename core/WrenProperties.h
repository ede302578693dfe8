// Published properties: the reflection the host uses to store, list and edit an action's settings.
#pragma once

#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "WrenTypes.h"

namespace wren {

class TCustomWrenAction;

enum class TPropertyKind { pkString, pkBoolean, pkInteger, pkEnumeration, pkStringList };

/// A property value; enumerations travel as their ordinal.
using TPropertyValue = std::variant<std::string, bool, int32_t, TStrings>;

/// One published property of an action class.
struct TPublishedProperty {
  std::string name;
  TPropertyKind kind = TPropertyKind::pkString;
  std::vector<std::string> enumNames;  // value names of an enumeration, by ordinal
  std::function<TPropertyValue(const TCustomWrenAction&)> get;
  std::function<void(TCustomWrenAction&, const TPropertyValue&)> set;
};

/// The published properties of a class in declaration order, base class first.
using TPropertyTable = std::vector<TPublishedProperty>;

/// The base table followed by a class's own properties.
inline TPropertyTable ChainProperties(const TPropertyTable& base, TPropertyTable own) {
  TPropertyTable all = base;
  all.insert(all.end(), own.begin(), own.end());
  return all;
}

/// Finds a property by name, ignoring case; nullptr when the class has none of that name.
const TPublishedProperty* FindProperty(const TPropertyTable& table, const std::string& name);

/// Text form of a value for display ("true", an enumeration name, lines joined by "\n").
std::string PropertyValueToString(const TPublishedProperty& prop, const TPropertyValue& value);

// Builders for table rows. A field pointer gives plain storage; getter/setter pairs give behaviour.

template <class A>
TPublishedProperty StringProperty(std::string name, std::string A::*field) {
  return {std::move(name), TPropertyKind::pkString, {},
          [field](const TCustomWrenAction& a) -> TPropertyValue {
            return static_cast<const A&>(a).*field;
          },
          [field](TCustomWrenAction& a, const TPropertyValue& v) {
            static_cast<A&>(a).*field = std::get<std::string>(v);
          }};
}

template <class A>
TPublishedProperty StringProperty(std::string name, std::string (A::*getter)() const,
                                  void (A::*setter)(const std::string&)) {
  return {std::move(name), TPropertyKind::pkString, {},
          [getter](const TCustomWrenAction& a) -> TPropertyValue {
            return (static_cast<const A&>(a).*getter)();
          },
          [setter](TCustomWrenAction& a, const TPropertyValue& v) {
            (static_cast<A&>(a).*setter)(std::get<std::string>(v));
          }};
}

template <class A>
TPublishedProperty BoolProperty(std::string name, bool A::*field) {
  return {std::move(name), TPropertyKind::pkBoolean, {},
          [field](const TCustomWrenAction& a) -> TPropertyValue {
            return static_cast<const A&>(a).*field;
          },
          [field](TCustomWrenAction& a, const TPropertyValue& v) {
            static_cast<A&>(a).*field = std::get<bool>(v);
          }};
}

template <class A>
TPublishedProperty BoolProperty(std::string name, bool (A::*getter)() const,
                                void (A::*setter)(bool)) {
  return {std::move(name), TPropertyKind::pkBoolean, {},
          [getter](const TCustomWrenAction& a) -> TPropertyValue {
            return (static_cast<const A&>(a).*getter)();
          },
          [setter](TCustomWrenAction& a, const TPropertyValue& v) {
            (static_cast<A&>(a).*setter)(std::get<bool>(v));
          }};
}

template <class A>
TPublishedProperty IntProperty(std::string name, int32_t A::*field) {
  return {std::move(name), TPropertyKind::pkInteger, {},
          [field](const TCustomWrenAction& a) -> TPropertyValue {
            return static_cast<const A&>(a).*field;
          },
          [field](TCustomWrenAction& a, const TPropertyValue& v) {
            static_cast<A&>(a).*field = std::get<int32_t>(v);
          }};
}

template <class A>
TPublishedProperty StringListProperty(std::string name, TStrings A::*field) {
  return {std::move(name), TPropertyKind::pkStringList, {},
          [field](const TCustomWrenAction& a) -> TPropertyValue {
            return static_cast<const A&>(a).*field;
          },
          [field](TCustomWrenAction& a, const TPropertyValue& v) {
            static_cast<A&>(a).*field = std::get<TStrings>(v);
          }};
}

/// An enumeration stored in a field of enum type E; names are the value names by ordinal.
template <class A, class E>
TPublishedProperty EnumProperty(std::string name, E A::*field, std::vector<std::string> names) {
  return {std::move(name), TPropertyKind::pkEnumeration, std::move(names),
          [field](const TCustomWrenAction& a) -> TPropertyValue {
            return static_cast<int32_t>(static_cast<const A&>(a).*field);
          },
          [field](TCustomWrenAction& a, const TPropertyValue& v) {
            static_cast<A&>(a).*field = static_cast<E>(std::get<int32_t>(v));
          }};
}

}  // namespace wren
