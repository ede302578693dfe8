#include "WrenProject.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "WrenActionRegistry.h"
#include "WrenFiles.h"
#include "WrenSuggest.h"
#include "WrenUtils.h"
#include "WrenXmlDocument.h"

namespace wren {

namespace {

constexpr char kUtf8Bom[] = "\xEF\xBB\xBF";

const char kNewProjectText[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<MarrowbyProject version=\"1\">\n"
    "</MarrowbyProject>\n";

/// Booleans are written "true" or "false" exactly, for properties and for enabled= alike.
bool ParseBoolean(const std::string& text, bool& value, std::string& message) {
  if (text != "true" && text != "false") {
    message = "'" + text + "' is not a boolean (true or false)";
    return false;
  }
  value = text == "true";
  return true;
}

bool ParseScalar(const TPublishedProperty& prop, std::string text, TPropertyValue& value,
                 std::string& message) {
  switch (prop.kind) {
    case TPropertyKind::pkString:
      value = std::move(text);
      return true;
    case TPropertyKind::pkBoolean: {
      bool flag = false;
      if (!ParseBoolean(text, flag, message)) return false;
      value = flag;
      return true;
    }
    case TPropertyKind::pkInteger: {
      int32_t number = 0;
      const char* end = text.data() + text.size();
      auto [ptr, ec] = std::from_chars(text.data(), end, number);
      if (!text.empty() && ec == std::errc() && ptr == end) {
        value = number;
        return true;
      }
      message = "'" + text + "' is not a decimal integer";
      return false;
    }
    case TPropertyKind::pkEnumeration: {
      for (size_t i = 0; i < prop.enumNames.size(); ++i) {
        if (SameText(prop.enumNames[i], text)) {
          value = static_cast<int32_t>(i);
          return true;
        }
      }
      std::string allowed;
      for (const std::string& name : prop.enumNames)
        allowed += (allowed.empty() ? "" : ", ") + name;
      message = "'" + text + "' is not one of " + allowed;
      return false;
    }
    case TPropertyKind::pkStringList:
      break;
  }
  message = "not a single value";
  return false;
}

/// Reads a <Property> element's value; on failure names the message and the node at fault.
bool ReadPropertyValue(pugi::xml_node element, const TPublishedProperty& prop,
                       TPropertyValue& value, std::string& message, pugi::xml_node& at) {
  at = element;
  if (prop.kind == TPropertyKind::pkStringList) {
    TStrings lines;
    for (pugi::xml_node child : element.children()) {
      if (child.type() == pugi::node_element) {
        if (std::strcmp(child.name(), "Item") != 0) {
          at = child;
          message = std::string("unexpected element <") + child.name() + "> in a string list";
          return false;
        }
        lines.push_back(ElementText(child));
      } else if ((child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) &&
                 !IsBlank(child.value())) {
        at = child;
        message = "a string list holds one <Item> per line, not text";
        return false;
      }
    }
    value = std::move(lines);
    return true;
  }
  for (pugi::xml_node child : element.children()) {
    if (child.type() == pugi::node_element) {
      at = child;
      message = std::string("unexpected element <") + child.name() + "> in a single value";
      return false;
    }
  }
  return ParseScalar(prop, ElementText(element), value, message);
}

}  // namespace

std::string TWrenProjectError::ToString() const {
  std::string location = file;
  if (line > 0) location += ":" + std::to_string(line);
  std::string context;
  if (!action.empty()) context = "action '" + action + "'";
  if (!property.empty()) context += (context.empty() ? "" : ", ") + ("property '" + property + "'");
  std::string text;
  const std::string* parts[] = {&location, &context, &message};
  for (const std::string* part : parts) {
    if (part->empty()) continue;
    text += (text.empty() ? "" : ": ") + *part;
  }
  return text;
}

/// The document a project was read from and the operations that bring it in line with the
/// project's current state. Loading keeps only the bytes; the byte-faithful document is built
/// from them when the project is first saved, so running and validating never pay for it.
struct TWrenProject::TDocument {
  std::string source;                                   // what was loaded, until built
  std::vector<const TCustomWrenAction*> loadedActions;  // one per <Action>, in file order
  bool built = false;
  TWrenXmlDocument document;
  TWrenActionFactory factory;
  std::unordered_map<const TCustomWrenAction*, pugi::xml_node> actionElements;

  /// The document, built from the loaded bytes on first use.
  TWrenXmlDocument& Document();

  void SyncVariables(pugi::xml_node root, const std::vector<TWrenProjectVariable>& variables);
  void SyncSteps(pugi::xml_node root, const std::vector<TWrenProjectStep>& steps);
  void SyncAction(pugi::xml_node element, const std::string& className,
                  const TWrenProjectStep& step);
  void SyncProperty(pugi::xml_node element, const TPublishedProperty& prop,
                    const TPropertyValue& value);
  void WritePropertyValue(pugi::xml_node element, const TPublishedProperty& prop,
                          const TPropertyValue& value);
};

TWrenXmlDocument& TWrenProject::TDocument::Document() {
  if (built) return document;
  built = true;
  TXmlParseError parsed;
  // The bytes parsed once already; a failure here would mean the parser changed its mind.
  if (!document.Parse(source, parsed)) {
    document = TWrenXmlDocument();
    document.Parse(kNewProjectText, parsed);
  }
  // The reader made one step of each <Action> of the one <Actions>, in order.
  size_t index = 0;
  for (pugi::xml_node e : document.xml.document_element().child("Actions").children("Action")) {
    if (index == loadedActions.size()) break;
    actionElements[loadedActions[index++]] = e;
  }
  std::string().swap(source);
  std::vector<const TCustomWrenAction*>().swap(loadedActions);
  return document;
}

void TWrenProject::TDocument::SyncVariables(pugi::xml_node root,
                                            const std::vector<TWrenProjectVariable>& variables) {
  pugi::xml_node container = root.child("Variables");
  std::vector<pugi::xml_node> elements;
  if (container)
    for (pugi::xml_node e : container.children("Variable")) elements.push_back(e);
  std::vector<bool> used(elements.size(), false);

  for (const TWrenProjectVariable& variable : variables) {
    size_t found = elements.size();
    for (size_t i = 0; i < elements.size() && found == elements.size(); ++i)
      if (!used[i] && SameText(elements[i].attribute("name").value(), variable.name)) found = i;
    if (found < elements.size()) {
      used[found] = true;
      pugi::xml_node e = elements[found];
      if (variable.name != e.attribute("name").value())
        e.attribute("name").set_value(variable.name.c_str());
      if (ElementText(e) != variable.value) document.SetElementText(e, variable.value);
      continue;
    }
    if (!container) {
      pugi::xml_node actions = root.child("Actions");
      container = actions ? document.InsertElementBefore(actions, "Variables")
                          : document.AppendChildElement(root, "Variables");
    }
    pugi::xml_node e = document.AppendChildElement(container, "Variable");
    e.append_attribute("name").set_value(variable.name.c_str());
    if (!variable.value.empty())
      e.append_child(pugi::node_pcdata).set_value(variable.value.c_str());
  }
  for (size_t i = 0; i < elements.size(); ++i)
    if (!used[i]) document.RemoveElement(elements[i]);
}

void TWrenProject::TDocument::SyncSteps(pugi::xml_node root,
                                        const std::vector<TWrenProjectStep>& steps) {
  pugi::xml_node container = root.child("Actions");
  if (!container && steps.empty()) return;
  if (!container) container = document.AppendChildElement(root, "Actions");

  std::vector<pugi::xml_node> wanted;
  std::unordered_set<const void*> taken;  // the elements in wanted, found without a search
  std::unordered_map<const TCustomWrenAction*, pugi::xml_node> placed;
  for (const TWrenProjectStep& step : steps) {
    if (!step.action) continue;
    const std::string className =
        step.className.empty() ? step.action->ClassName() : step.className;
    pugi::xml_node element;
    auto it = actionElements.find(step.action.get());
    if (it != actionElements.end() && it->second.parent() == container &&
        SameText(it->second.attribute("class").value(), className))
      element = it->second;
    if (!element || taken.count(element.internal_object())) {
      element = document.AppendChildElement(container, "Action");
      element.append_attribute("class").set_value(className.c_str());
    }
    SyncAction(element, className, step);
    wanted.push_back(element);
    taken.insert(element.internal_object());
    placed[step.action.get()] = element;
  }

  // Action elements of steps that are gone.
  std::vector<pugi::xml_node> stale;
  for (pugi::xml_node e : container.children("Action"))
    if (!taken.count(e.internal_object())) stale.push_back(e);
  for (pugi::xml_node e : stale) document.RemoveElement(e);

  // Put the elements in the order of the steps, each moving with its indentation.
  pugi::xml_node previous;
  for (pugi::xml_node e : wanted) {
    pugi::xml_node expected =
        previous ? previous.next_sibling("Action") : container.child("Action");
    if (expected != e) {
      pugi::xml_node ws = e.previous_sibling();
      if (!IsBlankText(ws)) ws = pugi::xml_node();
      container.insert_move_before(e, expected);
      if (ws) container.insert_move_after(ws, e);
    }
    previous = e;
  }
  actionElements = std::move(placed);
}

void TWrenProject::TDocument::SyncAction(pugi::xml_node element, const std::string& className,
                                         const TWrenProjectStep& step) {
  const TCustomWrenAction& action = *step.action;

  pugi::xml_attribute enabled = element.attribute("enabled");
  if (enabled) {
    if ((std::strcmp(enabled.value(), "false") != 0) != step.enabled)
      enabled.set_value(step.enabled ? "true" : "false");
  } else if (!step.enabled) {
    element.append_attribute("enabled").set_value("false");
  }

  // Values at creation: what the file does not name is written only when it differs. This also
  // holds for a description an action gives itself in its constructor.
  std::unique_ptr<TCustomWrenAction> fresh;
  if (factory)
    fresh = factory(className);
  else
    fresh = CreateRegisteredAction(className);

  const std::string description = action.GetDescription();
  const std::string initialDescription = fresh ? fresh->GetDescription() : "";
  pugi::xml_attribute stored = element.attribute("description");
  if (stored) {
    if (description == stored.value()) {
      // unchanged, also when written as description=""
    } else if (description.empty() && initialDescription.empty()) {
      element.remove_attribute(stored);
    } else {
      stored.set_value(description.c_str());
    }
  } else if (description != initialDescription) {
    element.append_attribute("description").set_value(description.c_str());
  }

  const TPropertyTable& table = action.GetPublishedProperties();
  std::vector<pugi::xml_node> found(table.size());
  pugi::xml_node lastProperty;
  for (pugi::xml_node p : element.children("Property")) {
    lastProperty = p;
    const TPublishedProperty* prop = FindProperty(table, p.attribute("name").value());
    if (!prop) continue;
    const size_t index = static_cast<size_t>(prop - table.data());
    if (!found[index]) found[index] = p;
  }
  for (size_t i = 0; i < table.size(); ++i) {
    const TPropertyValue value = table[i].get(action);
    if (found[i]) {
      SyncProperty(found[i], table[i], value);
      continue;
    }
    if (fresh && table[i].get(*fresh) == value) continue;
    pugi::xml_node script = element.child("Script");
    pugi::xml_node p = lastProperty ? document.InsertElementAfter(lastProperty, "Property")
                       : script     ? document.InsertElementBefore(script, "Property")
                                    : document.AppendChildElement(element, "Property");
    p.append_attribute("name").set_value(table[i].name.c_str());
    WritePropertyValue(p, table[i], value);
    lastProperty = p;
  }

  for (const TWrenActionScript& script : action.Scripts()) {
    pugi::xml_node e;
    for (pugi::xml_node s : element.children("Script"))
      if (!e && SameText(s.attribute("name").value(), script.name)) e = s;
    if (!e) {
      const TWrenActionScript* initial = fresh ? fresh->GetScriptByName(script.name) : nullptr;
      const std::string initialText = initial ? initial->text : "";
      if (script.text == initialText) continue;
      e = document.AppendChildElement(element, "Script");
      e.append_attribute("name").set_value(script.name.c_str());
      e.append_attribute("language").set_value(script.language.c_str());
      if (!script.text.empty()) e.append_child(pugi::node_pcdata).set_value(script.text.c_str());
      continue;
    }
    if (ElementText(e) != script.text) document.SetElementText(e, script.text);
    pugi::xml_attribute language = e.attribute("language");
    if (!SameText(language ? language.value() : "lua", script.language)) {
      if (!language) language = e.append_attribute("language");
      language.set_value(script.language.c_str());
    }
  }
}

// Brings an existing <Property> element in line with the value, touching only what differs.
void TWrenProject::TDocument::SyncProperty(pugi::xml_node element, const TPublishedProperty& prop,
                                           const TPropertyValue& value) {
  if (prop.kind != TPropertyKind::pkStringList) {
    TPropertyValue stored;
    std::string message;
    pugi::xml_node at;
    if (ReadPropertyValue(element, prop, stored, message, at) && stored == value) return;
    document.SetElementText(element, PropertyValueToString(prop, value));
    return;
  }
  const TStrings& lines = std::get<TStrings>(value);
  std::vector<pugi::xml_node> items;
  for (pugi::xml_node item : element.children("Item")) items.push_back(item);
  for (size_t i = 0; i < std::min(items.size(), lines.size()); ++i)
    if (ElementText(items[i]) != lines[i]) document.SetElementText(items[i], lines[i]);
  for (size_t i = items.size(); i < lines.size(); ++i) {
    pugi::xml_node item = document.AppendChildElement(element, "Item");
    if (!lines[i].empty()) item.append_child(pugi::node_pcdata).set_value(lines[i].c_str());
  }
  for (size_t i = lines.size(); i < items.size(); ++i) document.RemoveElement(items[i]);
}

void TWrenProject::TDocument::WritePropertyValue(pugi::xml_node element,
                                                 const TPublishedProperty& prop,
                                                 const TPropertyValue& value) {
  if (prop.kind == TPropertyKind::pkStringList) {
    SyncProperty(element, prop, value);
    return;
  }
  const std::string text = PropertyValueToString(prop, value);
  if (!text.empty()) element.append_child(pugi::node_pcdata).set_value(text.c_str());
}

namespace {

/// "a", "a or b", "a, b or c".
std::string OneOf(const std::vector<std::string>& names) {
  std::string text;
  for (size_t i = 0; i < names.size(); ++i)
    text += (i == 0 ? "" : i + 1 == names.size() ? " or " : ", ") + names[i];
  return text;
}

/// "; did you mean X?" when a candidate is near the word. Long words are not compared: no
/// one mistypes a name that long, and the distance is quadratic in it.
std::string Suggestion(const std::string& word, const std::vector<std::string>& candidates) {
  if (word.size() > 64) return "";
  const std::string hint = DidYouMean(word, candidates);
  return hint.empty() ? "" : "; " + hint;
}

/// What an element of the project may hold.
struct TShape {
  std::vector<std::string> attributes;
  std::vector<std::string> children;  // element names
  bool text = false;                  // text (or CDATA) beyond whitespace
};

/// Compared as views: every node of a project is checked, and a C string compared with a
/// std::string is measured again for each candidate.
bool Contains(const std::vector<std::string>& names, std::string_view name) {
  for (const std::string& n : names)
    if (n == name) return true;
  return false;
}

/// An attribute the shape does not allow; false with the message.
bool CheckAttributes(pugi::xml_node element, const TShape& shape, std::string& message) {
  for (pugi::xml_attribute a : element.attributes()) {
    if (Contains(shape.attributes, a.name())) continue;
    message = std::string("unknown attribute '") + a.name() + "' in <" + element.name() + "> (" +
              (shape.attributes.empty() ? "it takes none"
                                        : "expected " + OneOf(shape.attributes)) +
              ")" + Suggestion(a.name(), shape.attributes);
    return false;
  }
  return true;
}

/// The first child the shape does not allow: the node at fault and why.
bool CheckChildren(pugi::xml_node element, const TShape& shape, std::string& message,
                   pugi::xml_node& at) {
  at = element;
  for (pugi::xml_node child = element.first_child(); child; child = child.next_sibling()) {
    at = child;
    if (child.type() == pugi::node_element) {
      if (Contains(shape.children, child.name())) continue;
      std::vector<std::string> expected;
      for (const std::string& c : shape.children) expected.push_back("<" + c + ">");
      message = std::string("unexpected element <") + child.name() + "> in <" +
                element.name() + "> (" +
                (shape.children.empty() ? "it holds text only" : "expected " + OneOf(expected)) +
                ")" + Suggestion(child.name(), shape.children);
      return false;
    }
    if ((child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) && !shape.text &&
        !IsBlank(child.value())) {
      message = std::string("unexpected text in <") + element.name() + ">";
      return false;
    }
  }
  return true;
}

/// The first attribute or child the shape does not allow: the node at fault and why.
bool CheckShape(pugi::xml_node element, const TShape& shape, std::string& message,
                pugi::xml_node& at) {
  at = element;
  return CheckAttributes(element, shape, message) && CheckChildren(element, shape, message, at);
}

const TShape kRootShape{{"version"}, {"Variables", "Actions"}};
const TShape kVariablesShape{{}, {"Variable"}};
const TShape kVariableShape{{"name"}, {}, true};
const TShape kActionsShape{{}, {"Action"}};
const TShape kActionShape{{"class", "enabled", "description"}, {"Property", "Script"}};
const TShape kScalarPropertyShape{{"name"}, {}, true};
const TShape kListPropertyShape{{"name"}, {"Item"}};
const TShape kItemShape{{}, {}, true};
const TShape kScriptShape{{"name", "language"}, {}, true};

/// Reads the document into variables and steps; fills the error and answers false on bad input.
/// Anything the file format does not know is an error, so that a typo never passes unnoticed.
class TProjectReader {
 public:
  TProjectReader(std::string_view text, const std::string& file,
                 const TWrenActionFactory& factory, TWrenProjectError& error)
      : lines_(text), file_(file), factory_(factory), error_(error) {}

  /// Reads the tree and empties <Actions> as it goes: each action's nodes are freed once read,
  /// so a big project never holds its whole tree beside its actions.
  bool Read(pugi::xml_node root, std::vector<TWrenProjectVariable>& variables,
            std::vector<TWrenProjectStep>& steps,
            std::vector<const TCustomWrenAction*>& loadedActions) {
    if (!root || std::strcmp(root.name(), "MarrowbyProject") != 0)
      return Fail(root, "", "", "the root element must be <MarrowbyProject>");
    if (!Check(root, kRootShape, "")) return false;
    const std::string version = root.attribute("version").value();
    if (version != "1")
      return Fail(root, "", "",
                  version.empty() ? "the project has no version (expected version=\"1\")"
                                  : "unsupported project version '" + version + "' (expected 1)");
    pugi::xml_node variablesSeen, actionsSeen;
    for (pugi::xml_node child : root.children()) {
      if (child.type() != pugi::node_element) continue;
      const bool isVariables = std::strcmp(child.name(), "Variables") == 0;
      pugi::xml_node& seen = isVariables ? variablesSeen : actionsSeen;
      if (seen)
        return Fail(child, "", "",
                    std::string("<") + child.name() + "> is given twice (first on line " +
                        std::to_string(LineOf(seen)) + ")");
      seen = child;
      if (isVariables) {
        if (!ReadVariables(child, variables)) return false;
        continue;
      }
      if (!Check(child, kActionsShape, "")) return false;
      for (pugi::xml_node e = child.child("Action"); e;) {
        TWrenProjectStep step;
        if (!ReadAction(e, step)) return false;
        loadedActions.push_back(step.action.get());
        steps.push_back(std::move(step));
        const pugi::xml_node next = e.next_sibling("Action");
        while (child.first_child() != next) child.remove_child(child.first_child());
        e = next;
      }
    }
    return true;
  }

  /// Reads one <Action> element parsed on its own from the text at `begin` of the project.
  bool ReadCutAction(pugi::xml_node e, size_t begin, TWrenProjectStep& step) {
    base_ = static_cast<ptrdiff_t>(begin);
    const bool read = ReadAction(e, step);
    base_ = 0;
    return read;
  }

  bool Fail(pugi::xml_node at, const std::string& action, const std::string& property,
            const std::string& message) {
    error_.file = file_;
    error_.line = LineOf(at);
    error_.action = action;
    error_.property = property;
    error_.message = message;
    return false;
  }

 private:
  /// The line of a node; for text, of its first visible character.
  int LineOf(pugi::xml_node node) {
    if (!node) return lines_.LineOf(0);
    ptrdiff_t offset = base_ + node.offset_debug();
    if (node.type() == pugi::node_pcdata) {
      const std::string value = node.value();
      offset += static_cast<ptrdiff_t>(std::min(value.find_first_not_of(" \t\r\n"), value.size()));
    }
    return lines_.LineOf(offset);
  }

  bool Check(pugi::xml_node element, const TShape& shape, const std::string& action,
             const std::string& property = kNone) {
    std::string message;
    pugi::xml_node at;
    return CheckShape(element, shape, message, at) || Fail(at, action, property, message);
  }

  /// Check for an element whose attributes passed already.
  bool CheckContent(pugi::xml_node element, const TShape& shape, const std::string& action,
                    const std::string& property) {
    std::string message;
    pugi::xml_node at;
    return CheckChildren(element, shape, message, at) || Fail(at, action, property, message);
  }

  bool ReadVariables(pugi::xml_node container, std::vector<TWrenProjectVariable>& variables) {
    if (!Check(container, kVariablesShape, "")) return false;
    std::unordered_map<std::string, pugi::xml_node> seen;  // by name without regard to case
    for (pugi::xml_node e : container.children("Variable")) {
      if (!Check(e, kVariableShape, "")) return false;
      const std::string name = e.attribute("name").value();
      if (name.empty()) return Fail(e, "", "", "<Variable> has no name");
      const auto [first, added] = seen.emplace(LowerCase(name), e);
      if (!added)
        return Fail(e, "", "",
                    "variable '" + name + "' is given twice (first on line " +
                        std::to_string(LineOf(first->second)) + ")");
      variables.push_back({name, ElementText(e)});
    }
    return true;
  }

  bool ReadAction(pugi::xml_node e, TWrenProjectStep& step) {
    const std::string className = e.attribute("class").value();
    if (!Check(e, kActionShape, className)) return false;
    if (className.empty()) return Fail(e, "", "", "<Action> has no class");
    std::unique_ptr<TCustomWrenAction> action = factory_ ? factory_(className) : nullptr;
    if (!action) return Fail(e, className, "", "unknown action class '" + className + "'");

    bool enabled = true;
    if (pugi::xml_attribute a = e.attribute("enabled")) {
      std::string message;
      if (!ParseBoolean(a.value(), enabled, message))
        return Fail(e, className, "", "enabled: " + message);
    }
    if (pugi::xml_attribute a = e.attribute("description")) action->SetDescription(a.value());

    const TPropertyTable& table = action->GetPublishedProperties();
    // Kept between actions, so that reading one allocates nothing for them.
    std::vector<std::optional<TPropertyValue>>& values = values_;
    std::vector<pugi::xml_node>& where = where_;
    values.assign(table.size(), std::nullopt);
    where.assign(table.size(), pugi::xml_node());
    std::unordered_set<TWrenActionScript*> scriptsSeen;
    for (pugi::xml_node child : e.children()) {
      if (child.type() != pugi::node_element) continue;
      if (std::strcmp(child.name(), "Property") == 0) {
        if (!ReadProperty(child, className, table, values, where)) return false;
        continue;
      }
      // A <Script>: the shape check above allows nothing else.
      const std::string name = child.attribute("name").value();
      if (!Check(child, kScriptShape, className, name)) return false;
      if (name.empty()) return Fail(child, className, "", "<Script> has no name");
      TWrenActionScript* script = action->GetScriptByName(name);
      if (!script) {
        std::vector<std::string> names;
        for (const TWrenActionScript& s : action->Scripts()) names.push_back(s.name);
        return Fail(child, className, name,
                    "the action has no script of that name" + Suggestion(name, names));
      }
      const pugi::xml_attribute language = child.attribute("language");
      if (language && !SameText(language.value(), "lua"))
        return Fail(child, className, name,
                    std::string("unsupported script language '") + language.value() +
                        "' (scripts are lua)");
      if (!scriptsSeen.insert(script).second)
        return Fail(child, className, name, "the script is given twice");
      script->text = ElementText(child);
      script->language = "lua";
    }

    // Declaration order, whatever the file's order: a setter may depend on an earlier property.
    for (size_t i = 0; i < table.size(); ++i) {
      if (!values[i]) continue;
      try {
        table[i].set(*action, *values[i]);
      } catch (const std::exception& ex) {
        return Fail(where[i], className, table[i].name, ex.what());
      }
    }
    try {
      action->Loaded();
    } catch (const std::exception& ex) {
      return Fail(e, className, "", ex.what());
    }
    step.className = action->ClassName();
    step.action = std::move(action);
    step.enabled = enabled;
    step.line = LineOf(e);
    return true;
  }

  bool ReadProperty(pugi::xml_node child, const std::string& className,
                    const TPropertyTable& table, std::vector<std::optional<TPropertyValue>>& values,
                    std::vector<pugi::xml_node>& where) {
    const std::string name = child.attribute("name").value();
    std::string message;
    pugi::xml_node at;
    if (!CheckAttributes(child, kListPropertyShape, message))  // the same for every kind
      return Fail(child, className, name, message);
    if (name.empty()) return Fail(child, className, "", "<Property> has no name");
    const TPublishedProperty* prop = FindProperty(table, name);
    if (!prop) {
      std::vector<std::string> names;
      for (const TPublishedProperty& p : table) names.push_back(p.name);
      return Fail(child, className, name, "unknown property" + Suggestion(name, names));
    }
    const size_t index = static_cast<size_t>(prop - table.data());
    if (values[index])
      return Fail(child, className, prop->name,
                  "the property is given twice (first on line " +
                      std::to_string(LineOf(where[index])) + ")");
    if (prop->kind == TPropertyKind::pkStringList) {
      if (!CheckChildren(child, kListPropertyShape, message, at)) {
        // Text beside the items most likely means a value written the single-value way.
        if (at.type() != pugi::node_element && at != child)
          message = "a string list holds one <Item> per line, not text";
        return Fail(at, className, prop->name, message);
      }
      for (pugi::xml_node item : child.children("Item"))
        if (!Check(item, kItemShape, className, prop->name)) return false;
    } else if (!CheckContent(child, kScalarPropertyShape, className, prop->name)) {
      return false;
    }
    TPropertyValue value;
    if (!ReadPropertyValue(child, *prop, value, message, at))
      return Fail(at, className, prop->name, message);
    values[index] = std::move(value);
    where[index] = child;
    return true;
  }

  static inline const std::string kNone;

  std::vector<std::optional<TPropertyValue>> values_;  // of the action being read
  std::vector<pugi::xml_node> where_;

  TLineCounter lines_;
  ptrdiff_t base_ = 0;  // where the tree read from begins in the project's text
  std::string file_;
  const TWrenActionFactory& factory_;
  TWrenProjectError& error_;
};

/// What a project's text holds, as far as reading it one action at a time needs.
struct TProjectContent {
  std::vector<TWrenProjectVariable> variables;
  std::vector<TWrenProjectStep> steps;
  std::vector<const TCustomWrenAction*> loadedActions;  // one per <Action>, in file order
};

/// Reads the whole document as one tree: the reading every other one is measured against.
bool ReadWholeTree(std::string_view content, const std::string& file,
                   const TWrenActionFactory& factory, TProjectContent& read,
                   TWrenProjectError& error) {
  pugi::xml_document xml;
  TXmlParseError parsed;
  if (!ParseXml(content, xml, parsed)) {
    TLineCounter lines(content);
    error = TWrenProjectError{file, lines.LineOf(parsed.offset), "", "", parsed.message};
    return false;
  }
  TProjectReader reader(content, file, factory, error);
  return reader.Read(xml.document_element(), read.variables, read.steps, read.loadedActions);
}

/// Where the actions stand in a project's text: the <Actions> element under the root and each
/// <Action> element in it, found by a quick look at the markup that knows only what projects
/// usually hold. The parser still checks every byte of each part the look cuts out.
struct TActionsCut {
  bool found = false;       // an <Actions> element with an end tag under the root
  size_t open = 0;          // the '<' of <Actions>
  size_t contentBegin = 0;  // after its start tag
  size_t contentEnd = 0;    // the '<' of its end tag
  std::vector<std::pair<size_t, size_t>> actions;  // [begin, end) of each <Action>
};

enum class TMarkup { Start, Empty, End, Other };

/// The bytes the look stops at, by byte: the look reads every byte of every tag.
struct TTagBytes {
  bool nameEnd[256] = {};  // whitespace, '>' and '/' end a tag's name
  bool mark[256] = {};     // quotes, '<' and '>' matter in the rest of a tag
  constexpr TTagBytes() {
    for (const unsigned char c : {' ', '\t', '\r', '\n', '>', '/'}) nameEnd[c] = true;
    for (const unsigned char c : {'"', '\'', '<', '>'}) mark[c] = true;
  }
};
constexpr TTagBytes kTagBytes;

/// Looks at the markup beginning with the '<' at p: what it is, a tag's name, and one past its
/// end; npos when the quick look cannot tell (the parser will).
size_t ScanMarkup(std::string_view s, size_t p, TMarkup& kind, std::string_view& name) {
  constexpr size_t npos = std::string_view::npos;
  const auto past = [&s](size_t from, std::string_view close) {
    const size_t at = s.find(close, from);
    return at == npos ? at : at + close.size();
  };
  kind = TMarkup::Other;
  const char second = p + 1 < s.size() ? s[p + 1] : '\0';
  if (second == '!') {
    if (s.compare(p, 4, "<!--") == 0) return past(p + 4, "-->");
    if (s.compare(p, 9, "<![CDATA[") == 0) return past(p + 9, "]]>");
    return npos;  // a doctype
  }
  if (second == '?') return past(p + 2, "?>");
  const bool end = second == '/';
  size_t q = p + (end ? 2 : 1);
  const size_t nameBegin = q;
  while (q < s.size() && !kTagBytes.nameEnd[static_cast<unsigned char>(s[q])]) ++q;
  name = s.substr(nameBegin, q - nameBegin);
  if (name.empty()) return npos;
  for (const char* c = s.data() + q; c < s.data() + s.size(); ++c) {
    if (!kTagBytes.mark[static_cast<unsigned char>(*c)]) continue;
    if (*c == '"' || *c == '\'') {
      c = static_cast<const char*>(std::memchr(c + 1, *c, s.data() + s.size() - (c + 1)));
      if (!c) return npos;
    } else if (*c == '<') {
      return npos;
    } else if (*c == '>') {
      kind = end ? TMarkup::End : c[-1] == '/' ? TMarkup::Empty : TMarkup::Start;
      return static_cast<size_t>(c + 1 - s.data());
    }
  }
  return npos;
}

/// One past the end of the element whose start tag ends before p; npos when the look cannot
/// tell.
size_t ElementEnd(std::string_view s, size_t p) {
  int depth = 1;
  while (p < s.size()) {
    if (s[p] != '<') {
      p = s.find('<', p);
      continue;
    }
    TMarkup kind;
    std::string_view name;
    p = ScanMarkup(s, p, kind, name);
    if (kind == TMarkup::Start) ++depth;
    if (kind == TMarkup::End && --depth == 0) return p;
  }
  return std::string_view::npos;
}

/// The <Action> elements from the start tag of <Actions> on, with only whitespace and comments
/// between them.
bool CutActionList(std::string_view s, TActionsCut& cut) {
  size_t p = cut.contentBegin;
  while (true) {
    while (p < s.size() && IsXmlSpace(s[p])) ++p;
    if (p >= s.size() || s[p] != '<') return false;
    TMarkup kind;
    std::string_view name;
    const size_t after = ScanMarkup(s, p, kind, name);
    if (after == std::string_view::npos) return false;
    if (kind == TMarkup::End) {
      cut.contentEnd = p;
      cut.found = name == "Actions";
      return cut.found;
    }
    if (kind == TMarkup::Other) {
      // A comment, left out of every tree: the reader ignores comments, and the parser would
      // have looked for nothing but its end and a NUL byte.
      if (s.compare(p, 4, "<!--") != 0 || s.substr(p, after - p).find('\0') != s.npos)
        return false;
      p = after;
      continue;
    }
    if (name != "Action" || (kind != TMarkup::Start && kind != TMarkup::Empty)) return false;
    const size_t end = kind == TMarkup::Empty ? after : ElementEnd(s, after);
    if (end == std::string_view::npos) return false;
    cut.actions.emplace_back(p, end);
    p = end;
  }
}

/// Finds the first <Actions> element one level under the root. True with nothing found when
/// there is none; false when the look cannot tell.
bool CutActions(std::string_view s, TActionsCut& cut) {
  int depth = 0;
  for (size_t p = 0; (p = s.find('<', p)) != std::string_view::npos;) {
    TMarkup kind;
    std::string_view name;
    const size_t after = ScanMarkup(s, p, kind, name);
    if (after == std::string_view::npos) return false;
    if (kind == TMarkup::Start && depth == 1 && name == "Actions") {
      cut.open = p;
      cut.contentBegin = after;
      return CutActionList(s, cut);
    }
    if (kind == TMarkup::Start) ++depth;
    if (kind == TMarkup::End) --depth;
    p = after;
  }
  return true;
}

/// Reads the project one action at a time, so that a big one never has its whole tree in
/// memory: the text without the actions' bytes as one small tree, then each <Action> parsed on
/// its own, freed before the next. Valid pieces joined by whitespace make a valid whole, so a
/// project read this way reads the same as whole. False when the quick look cannot cut the
/// text, and whenever anything fails to parse or load: the whole-tree reading then says why.
bool ReadStreamed(std::string_view content, const std::string& file,
                  const TWrenActionFactory& factory, TProjectContent& read) {
  TActionsCut cut;
  if (!CutActions(content, cut)) return false;
  std::string outline;
  std::string_view rest = content;
  if (cut.found) {
    outline.reserve(cut.contentBegin + content.size() - cut.contentEnd);
    outline.append(content.substr(0, cut.contentBegin)).append(content.substr(cut.contentEnd));
    rest = outline;
  }
  TWrenProjectError error;
  TProjectReader reader(content, file, factory, error);
  pugi::xml_document xml;
  TXmlParseError parsed;
  if (!ParseXml(rest, xml, parsed)) return false;
  const pugi::xml_node root = xml.document_element();
  // The cut must have emptied the <Actions> the reader reads, not some other element.
  if (cut.found &&
      root.child("Actions").offset_debug() != static_cast<ptrdiff_t>(cut.open + 1))
    return false;
  if (!reader.Read(root, read.variables, read.steps, read.loadedActions)) return false;

  read.steps.reserve(read.steps.size() + cut.actions.size());
  read.loadedActions.reserve(read.loadedActions.size() + cut.actions.size());
  constexpr unsigned kActionDepth = 2;  // <MarrowbyProject><Actions><Action>
  std::string scratch;
  for (const auto& [begin, end] : cut.actions) {
    if (!ParseXml(content.substr(begin, end - begin), xml, parsed, kActionDepth, &scratch))
      return false;
    TWrenProjectStep step;
    if (!reader.ReadCutAction(xml.document_element(), begin, step)) return false;
    read.loadedActions.push_back(step.action.get());
    read.steps.push_back(std::move(step));
  }
  return true;
}

}  // namespace

TWrenProject::TWrenProject() = default;
TWrenProject::~TWrenProject() = default;
TWrenProject::TWrenProject(TWrenProject&&) noexcept = default;
TWrenProject& TWrenProject::operator=(TWrenProject&&) noexcept = default;

bool TWrenProject::Load(const std::string& path, const TWrenActionFactory& factory,
                        TWrenProjectError& error) {
  std::string text;
  std::string readError;
  // Read by its size: a read to the end grows the buffer by doubling, and a project just past
  // a power of two would hold twice its bytes, zero-filled, for as long as it is loaded.
  if (!ReadFileBytes(path, FileStatus(path), text, readError)) {
    *this = TWrenProject();
    error =
        TWrenProjectError{path, 0, "", "", readError.empty() ? "cannot read the file" : readError};
    return false;
  }
  return LoadBytes(std::move(text), path, factory, error, TWrenProjectReading::Streamed);
}

bool TWrenProject::LoadFromText(const std::string& text, const std::string& file,
                                const TWrenActionFactory& factory, TWrenProjectError& error,
                                TWrenProjectReading reading) {
  return LoadBytes(text, file, factory, error, reading);
}

bool TWrenProject::LoadBytes(std::string text, const std::string& file,
                             const TWrenActionFactory& factory, TWrenProjectError& error,
                             TWrenProjectReading reading) {
  *this = TWrenProject();
  const std::string_view content =
      std::string_view(text).substr(text.compare(0, 3, kUtf8Bom) == 0 ? 3 : 0);
  TProjectContent read;
  bool loaded = false;
  if (reading != TWrenProjectReading::WholeTree) {
    loaded = ReadStreamed(content, file, factory, read);
    if (!loaded && reading == TWrenProjectReading::StreamedOnly) {
      error = TWrenProjectError{file, 0, "", "", "not read one action at a time"};
      return false;
    }
  }
  if (!loaded) {
    read = TProjectContent();
    if (!ReadWholeTree(content, file, factory, read, error)) return false;
  }
  auto doc = std::make_unique<TDocument>();
  doc->source = std::move(text);
  doc->loadedActions = std::move(read.loadedActions);
  doc->factory = factory;
  fileName = file;
  variables = std::move(read.variables);
  steps = std::move(read.steps);
  doc_ = std::move(doc);
  return true;
}

std::string TWrenProject::SaveToText() {
  if (!doc_) {
    doc_ = std::make_unique<TDocument>();
    doc_->source = kNewProjectText;
  }
  TWrenXmlDocument& document = doc_->Document();
  pugi::xml_node root = document.xml.document_element();
  doc_->SyncVariables(root, variables);
  doc_->SyncSteps(root, steps);
  return document.Write();
}

bool TWrenProject::Save(const std::string& path, std::string& error) {
  return WriteFileAtomic(path, SaveToText(), error);
}

}  // namespace wren