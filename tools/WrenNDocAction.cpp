#include "tools/WrenNDocAction.h"

#include <algorithm>

#include "WrenUtils.h"

namespace wren {

const TPropertyTable& TWrenNDocAction::ClassProperties() {
  using A = TWrenNDocAction;
  static const TPropertyTable table = ChainProperties(
      TWrenExecuteAbstractAction::ClassProperties(),
      {BoolProperty("UseProjectFile", &A::UseProjectFile),
       StringProperty("ProjectFile", &A::ProjectFile),
       StringListProperty("Assemblies", &A::Assemblies),
       StringListProperty("ReferencePaths", &A::ReferencePaths),
       StringProperty("NamespaceSummaries", &A::NamespaceSummaries),
       BoolProperty("Verbose", &A::Verbose), StringProperty("Documenter", &A::Documenter),
       StringListProperty("DocumenterProperties", &A::DocumenterProperties)});
  return table;
}

bool TWrenNDocAction::GetCommandLine(ICommandLineBuilder& builder) {
  std::string value;
  // NDoc rejects a documenter named after the project or a property, so it goes first.
  if (!TryExpandExpression("Documenter", Documenter, false, value)) return false;
  value = Trim(value);
  std::replace(value.begin(), value.end(), ' ', '_');
  if (!value.empty()) builder.AddArgument("-documenter=", value, 2);

  if (UseProjectFile) {
    if (!TryExpandExpression("Project File", ProjectFile, false, value)) return false;
    builder.AddArgument("-project=", value, 2);
  } else {
    for (const std::string& line : Assemblies) {
      if (Trim(line).empty()) continue;
      if (!TryExpandExpression("Assembly", Trim(line), false, value)) return false;
      // NDoc silently skips an argument that does not split into assembly and one XML file.
      if (std::count(value.begin(), value.end(), ',') > 1) {
        SendMessage("An assembly line takes one assembly and at most one XML file: " + value);
        return false;
      }
      builder.AddArgument("", value, 2);
    }
    if (!AddEachLine(*this, builder, ReferencePaths, "Reference Path", "-referencepath="))
      return false;
    if (!TryExpandExpression("Namespace Summaries", NamespaceSummaries, false, value)) return false;
    if (!value.empty()) builder.AddArgument("-namespacesummaries=", value, 2);
  }

  for (const std::string& line : DocumenterProperties) {
    const size_t eq = line.find('=');
    if (eq == std::string::npos || Trim(line.substr(0, eq)).empty()) continue;
    std::string name, propertyValue;
    if (!TryExpandExpression("Documenter Property", Trim(line.substr(0, eq)), false, name) ||
        !TryExpandExpression("Value", line.substr(eq + 1), false, propertyValue))
      return false;
    // NDoc drops a -name=value that does not split into exactly two parts at '='.
    if (propertyValue.find('=') != std::string::npos) {
      SendMessage("NDoc cannot take a property value containing '=': " + name);
      return false;
    }
    builder.AddArgument("-" + name + "=", propertyValue, 2);
  }
  if (Verbose) builder.AddArgument("-verbose", "", 2);
  SendMessage("Command Line: " + builder.GetCommandLineText());
  return true;
}

std::string TWrenNDocAction::GetStartingDir(const std::string& fileName) {
  if (UseProjectFile) return FirstPathDir(*this, {ProjectFile}, fileName);
  TStrings assemblies;  // without the ",xmldoc" part
  for (const std::string& line : Assemblies) assemblies.push_back(line.substr(0, line.find(',')));
  return FirstPathDir(*this, assemblies, fileName);
}

bool TWrenNDocAction::InterpretResult(int32_t exitCode) {
  switch (exitCode) {
    case 0:
      return true;
    case 1:
      SendMessage(
          "NDoc found nothing to document (exit code 1): no assembly in the list or "
          "the project, or none with its XML file beside it");
      return false;
    case 2:
      SendMessage("NDoc failed (exit code 2); its error text is in the output above");
      return false;
    default:
      SendMessage("NDoc ended with exit code " + std::to_string(exitCode));
      return false;
  }
}

bool TWrenNDocAction::Validate(IWrenActionValidationError& errors) {
  bool ok = ValidateLocation(errors);
  auto report = [&](const char* field, const char* message) {
    errors.AddError(field, message);
    ok = false;
  };
  if (UseProjectFile && Trim(ProjectFile).empty())
    report("Project File", "Project file has not been set");
  if (!UseProjectFile && std::all_of(Assemblies.begin(), Assemblies.end(),
                                     [](const std::string& a) { return Trim(a).empty(); }))
    report("Assemblies", "Assemblies have not been set");
  if (Trim(Documenter).empty()) report("Documenter", "Documenter has not been set");
  return ok;
}

}  // namespace wren
