#include "tools/WrenXenoCodeAction.h"

#include "WrenUtils.h"
#include "tools/WrenToolActionSupport.h"
#include "tools/WrenXenoCodeOptions.h"

namespace wren {

namespace {

std::string XenoCodeLocation() {
  const std::shared_ptr<IWrenToolOptions> options = XenoCodeOptions();
  return options ? options->GetLocation() : "";
}

}  // namespace

TWrenXenoCodeAction::TWrenXenoCodeAction() { UseStartingDir = true; }

std::string TWrenXenoCodeAction::GetNotes() const {
  return "Runs Xenocode's command-line program on a Xenocode project. Its switches "
                       "are not publicly documented: put them in ExtraSwitches as written";
}

const TPropertyTable& TWrenXenoCodeAction::ClassProperties() {
  using A = TWrenXenoCodeAction;
  static const TPropertyTable table =
      ChainProperties(TWrenExecuteAbstractAction::ClassProperties(),
                      {StringProperty("ProjectFile", &A::ProjectFile),
                       StringListProperty("ExtraSwitches", &A::ExtraSwitches)});
  return table;
}

std::string TWrenXenoCodeAction::GetExecutable() { return XenoCodeLocation(); }

bool TWrenXenoCodeAction::GetCommandLine(ICommandLineBuilder& builder) {
  std::string project;
  if (!TryExpandExpression("Project File", ProjectFile, false, project)) return false;
  if (!AddExtraSwitches(*this, builder, ExtraSwitches)) return false;
  builder.AddArgument("", project, 2);
  SendMessage("Command Line: " + builder.GetCommandLineText());
  return true;
}

std::string TWrenXenoCodeAction::GetStartingDir(const std::string& fileName) {
  return FirstPathDir(*this, {ProjectFile}, fileName);
}

bool TWrenXenoCodeAction::InterpretResult(int32_t exitCode) {
  if (exitCode == 0) return true;
  SendMessage("XenoCode failed with exit code " + std::to_string(exitCode));
  return false;
}

bool TWrenXenoCodeAction::Validate(IWrenActionValidationError& errors) {
  bool ok =
      ValidateToolLocation(errors, XenoCodeLocation(), "Xenocode's program", "XenoCode Options");
  if (Trim(ProjectFile).empty()) {
    errors.AddError("Project File", "Project file has not been set");
    ok = false;
  }
  return ok;
}

}  // namespace wren
