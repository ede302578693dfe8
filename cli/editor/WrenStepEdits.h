// Edits of one step that the command line (`marrowby add/set`) and the editor share, so both
// accept the same texts and refuse them with the same messages.
#pragma once

#include <string>

#include "WrenProperties.h"
#include "runtime/WrenProject.h"

namespace wren {

/// Turns the text into the property's value (a list: one item per line); on failure the message
/// says what is allowed.
bool ValueFromText(const TPublishedProperty& prop, const std::string& text, TPropertyValue& value,
                   std::string& message);

/// Sets a published property of the step's action, or the step's `description` or `enabled`.
/// appendToList adds the lines to a list property instead of replacing it. False with the reason
/// (one or more lines, without a trailing newline) when the name or the text is refused.
bool SetStepValue(TWrenProjectStep& step, const std::string& name, const std::string& text,
                  bool appendToList, std::string& error);

}  // namespace wren
