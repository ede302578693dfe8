#include "cli/editor/WrenStepEdits.h"

#include <charconv>

#include "WrenUtils.h"
#include "cli/Commands.h"
#include "runtime/WrenSuggest.h"

namespace wren {

namespace {

bool ParseInteger(const std::string& text, int& number) {
  const char* end = text.data() + text.size();
  auto [ptr, ec] = std::from_chars(text.data(), end, number);
  return !text.empty() && ec == std::errc() && ptr == end;
}

}  // namespace

bool ValueFromText(const TPublishedProperty& prop, const std::string& text, TPropertyValue& value,
                   std::string& message) {
  switch (prop.kind) {
    case TPropertyKind::pkString:
      value = text;
      return true;
    case TPropertyKind::pkBoolean:
      if (text == "true" || text == "false") {
        value = text == "true";
        return true;
      }
      message = "'" + text + "' is not a boolean (true or false)";
      return false;
    case TPropertyKind::pkInteger: {
      int number = 0;
      if (ParseInteger(text, number)) {
        value = static_cast<int32_t>(number);
        return true;
      }
      message = "'" + text + "' is not a decimal integer";
      return false;
    }
    case TPropertyKind::pkEnumeration:
      for (size_t i = 0; i < prop.enumNames.size(); ++i)
        if (SameText(prop.enumNames[i], text)) {
          value = static_cast<int32_t>(i);
          return true;
        }
      message = "'" + text + "' is not one of " + JoinNames(prop.enumNames) +
                WithSuggestion(DidYouMean(text, prop.enumNames));
      return false;
    case TPropertyKind::pkStringList: {
      TStrings lines;
      size_t start = 0;
      while (start <= text.size()) {
        const size_t nl = text.find('\n', start);
        lines.push_back(text.substr(start, nl == std::string::npos ? nl : nl - start));
        if (nl == std::string::npos) break;
        start = nl + 1;
      }
      value = lines;
      return true;
    }
  }
  return false;
}

bool SetStepValue(TWrenProjectStep& step, const std::string& name, const std::string& text,
                  bool appendToList, std::string& error) {
  TCustomWrenAction& action = *step.action;
  if (name == "description") {
    action.SetDescription(text);
    return true;
  }
  if (name == "enabled") {
    if (text != "true" && text != "false") {
      error = "enabled is true or false, not '" + text + "'";
      return false;
    }
    step.enabled = text == "true";
    return true;
  }
  const TPropertyTable& table = action.GetPublishedProperties();
  const TPublishedProperty* prop = FindProperty(table, name);
  if (!prop) {
    std::vector<std::string> names;
    for (const TPublishedProperty& p : table) names.push_back(p.name);
    error = action.ClassName() + " has no property '" + name + "'" +
            WithSuggestion(DidYouMean(name, names)) + "\n  properties of " + action.ClassName() +
            ": " + JoinNames(names);
    return false;
  }
  TPropertyValue value;
  std::string message;
  if (!ValueFromText(*prop, text, value, message)) {
    error = action.ClassName() + "." + prop->name + ": " + message;
    return false;
  }
  if (appendToList && prop->kind == TPropertyKind::pkStringList) {
    TStrings lines = std::get<TStrings>(prop->get(action));
    const TStrings& more = std::get<TStrings>(value);
    lines.insert(lines.end(), more.begin(), more.end());
    value = lines;
  }
  prop->set(action, value);
  return true;
}

}  // namespace wren
