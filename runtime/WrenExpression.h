// %NAME% expansion of property values.
#pragma once

#include <functional>
#include <string>

namespace wren {

/// Looks a variable up by name; false when it is not defined.
using TVariableLookup = std::function<bool(const std::string& name, std::string& value)>;

/// Replaces every %NAME% by its value, expanded again in turn (nesting up to a depth limit, so a
/// variable that refers to itself is an error, not a hang). "%%" is a literal percent; a lone "%"
/// with no closing partner stays as it is. False with error set when a variable is undefined.
bool ExpandVariables(const std::string& text, const TVariableLookup& lookup, std::string& result,
                     std::string& error);

}  // namespace wren
