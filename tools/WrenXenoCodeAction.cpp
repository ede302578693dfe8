#include "tools/WrenXenoCodeAction.h"

#include "WrenUtils.h"

namespace wren {

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

bool TWrenXenoCodeAction::Validate(IWrenActionValidationError& errors) {
  bool ok = ValidateLocation(errors);
  if (Trim(ProjectFile).empty()) {
    errors.AddError("Project File", "Project file has not been set");
    ok = false;
  }
  return ok;
}

}  // namespace wren
