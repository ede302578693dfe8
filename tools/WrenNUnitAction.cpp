#include "tools/WrenNUnitAction.h"

#include "WrenFiles.h"
#include "WrenUtils.h"
#include "tools/WrenNUnitOptions.h"

namespace wren {

namespace {

std::string NUnitLocation() {
  const std::shared_ptr<IWrenNUnitOptions> options = NUnitOptions();
  return options ? options->GetNUnitLocation() : "";
}

}  // namespace

TWrenNUnitAction::TWrenNUnitAction() {
  // Relative assembly and config paths in an NUnit run are relative to the tests' folder.
  UseStartingDir = true;
}

const TPropertyTable& TWrenNUnitAction::ClassProperties() {
  using A = TWrenNUnitAction;
  static const TPropertyTable table = ChainProperties(
      TWrenExecuteAbstractAction::ClassProperties(),
      {BoolProperty("UseProjectFile", &A::UseProjectFile),
       StringProperty("ProjectFile", &A::ProjectFile),
       StringListProperty("Assemblies", &A::Assemblies), StringProperty("Fixture", &A::Fixture),
       StringProperty("XMLOutputFile", &A::XMLOutputFile),
       StringProperty("TransformFile", &A::TransformFile), BoolProperty("NoLogo", &A::NoLogo),
       BoolProperty("XMLToConsole", &A::XMLToConsole),
       StringProperty("ProjectConfig", &A::ProjectConfig)});
  return table;
}

std::string TWrenNUnitAction::GetExecutable() { return NUnitLocation(); }

bool TWrenNUnitAction::GetCommandLine(ICommandLineBuilder& builder) {
  std::string value;
  if (UseProjectFile) {
    if (!TryExpandExpression("Project File", ProjectFile, false, value)) return false;
    builder.AddArgument("", value, 2);
  } else {
    for (const std::string& assembly : Assemblies) {
      if (!TryExpandExpression("Assembly", assembly, false, value)) return false;
      builder.AddArgument("", value, 2);
    }
  }
  const struct {
    const char* caption;
    const std::string& property;
    const char* switchText;
  } valued[] = {{"Fixture", Fixture, "/fixture="},
                {"XMLOutputFile", XMLOutputFile, "/xml="},
                {"TransformFile", TransformFile, "/transform="},
                {"ProjectConfig", ProjectConfig, "/config="}};
  for (const auto& v : valued) {
    if (v.property.empty()) continue;
    if (!TryExpandExpression(v.caption, v.property, false, value)) return false;
    builder.AddArgument(v.switchText, value, 2);
  }
  if (NoLogo) builder.AddArgument("/nologo", "", 2);
  if (XMLToConsole) builder.AddArgument("/xmlConsole", "", 2);
  SendMessage("Command Line: " + builder.GetCommandLineText());
  return true;
}

std::string TWrenNUnitAction::GetStartingDir(const std::string& fileName) {
  std::string first;
  if (UseProjectFile)
    first = ExpandExpression(ProjectFile);
  else if (!Assemblies.empty())
    first = ExpandExpression(Assemblies.front());
  const std::string dir = ExtractFilePath(first);
  return dir.empty() ? ExtractFilePath(fileName) : dir;
}

bool TWrenNUnitAction::Validate(IWrenActionValidationError& errors) {
  bool ok = true;
  auto report = [&](const char* field, const char* message) {
    errors.AddError(field, message);
    ok = false;
  };
  const std::string location = NUnitLocation();
  if (location.empty())
    report("NUnit Options", "Path to nunit-console.exe not defined, please check Tools->Options");
  else if (!FileExists(location))
    report("Options", "Path to nunit-console.exe not correct, please check Tools->Options");
  if (UseProjectFile && ProjectFile.empty())
    report("Project File", "Project file has not been set");
  if (!UseProjectFile && Assemblies.empty())
    report("Assemblies", "No assemblies have been specified");
  return ok;
}

}  // namespace wren
