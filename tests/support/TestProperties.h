// Setting an action's published properties from text, as the unit tests' case tables write them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "WrenActionAPI.h"

namespace wren::test {

/// Sets one published property from text: booleans "true"/"false", enumerations by value name,
/// string lists as lines separated by '\n' (kept exactly, empty lines included). An unknown name
/// or value fails the test.
inline void SetPublishedProperty(TCustomWrenAction& action, const std::string& name,
                                 const std::string& text) {
  const TPublishedProperty* prop = FindProperty(action.GetPublishedProperties(), name);
  ASSERT_NE(prop, nullptr) << action.ClassName() << " publishes no " << name;
  if (prop->kind == TPropertyKind::pkBoolean) {
    ASSERT_TRUE(text == "true" || text == "false") << name << "=" << text;
    prop->set(action, text == "true");
  } else if (prop->kind == TPropertyKind::pkEnumeration) {
    const auto it = std::find(prop->enumNames.begin(), prop->enumNames.end(), text);
    ASSERT_NE(it, prop->enumNames.end()) << name << " has no value " << text;
    prop->set(action, static_cast<int32_t>(it - prop->enumNames.begin()));
  } else if (prop->kind == TPropertyKind::pkStringList) {
    TStrings lines(1);
    for (char c : text) {
      if (c == '\n')
        lines.emplace_back();
      else
        lines.back().push_back(c);
    }
    prop->set(action, lines);
  } else {
    ASSERT_EQ(prop->kind, TPropertyKind::pkString) << name << " is of a kind not handled here";
    prop->set(action, text);
  }
}

}  // namespace wren::test
