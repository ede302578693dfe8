#include "tools/WrenDemeanorAction.h"

#include "WrenUtils.h"

namespace wren {

std::string TWrenDemeanorAction::GetNotes() const {
  return "Obfuscates an assembly with Demeanor.exe. Its command line is not "
         "publicly documented: only the input assembly and /out: are properties; "
         "other switches go in ExtraSwitches as written";
}

const TPropertyTable& TWrenDemeanorAction::ClassProperties() {
  using A = TWrenDemeanorAction;
  static const TPropertyTable table =
      ChainProperties(TWrenExecuteAbstractAction::ClassProperties(),
                      {StringProperty("InputAssembly", &A::InputAssembly),
                       StringProperty("OutputDirectory", &A::OutputDirectory),
                       StringListProperty("ExtraSwitches", &A::ExtraSwitches)});
  return table;
}

bool TWrenDemeanorAction::GetCommandLine(ICommandLineBuilder& builder) {
  std::string output, input;
  if (!TryExpandExpression("Output Directory", OutputDirectory, false, output) ||
      !TryExpandExpression("Input Assembly", InputAssembly, false, input))
    return false;
  if (!output.empty()) builder.AddArgument("/out:", output, 2);
  if (!AddExtraSwitches(*this, builder, ExtraSwitches)) return false;
  builder.AddArgument("", input, 2);
  SendMessage("Command Line: " + builder.GetCommandLineText());
  return true;
}

std::string TWrenDemeanorAction::GetStartingDir(const std::string& fileName) {
  return FirstPathDir(*this, {InputAssembly}, fileName);
}

bool TWrenDemeanorAction::Validate(IWrenActionValidationError& errors) {
  bool ok = ValidateLocation(errors);
  if (Trim(InputAssembly).empty()) {
    errors.AddError("Input Assembly", "Input assembly has not been set");
    ok = false;
  }
  return ok;
}

}  // namespace wren
