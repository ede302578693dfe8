#include "sdktools/WrenResgenAction.h"

#include "WrenUtils.h"

namespace wren {

TWrenResGenAction::TWrenResGenAction() {
  MinimumSDKVersion = "1.0";
  SetDefaultSDKVersion("1.0");
}

const TPropertyTable& TWrenResGenAction::ClassProperties() {
  static const TPropertyTable table =
      ChainProperties(TWrenDotNetAction::ClassProperties(),
                      {StringProperty("InputFiles", &TWrenResGenAction::InputFiles),
                       StringProperty("OutputFile", &TWrenResGenAction::OutputFile)});
  return table;
}

bool TWrenResGenAction::GetCommandLine(ICommandLineBuilder& builder) {
  std::string input, output;
  if (!TryExpandExpression("InputFiles", InputFiles, true, input)) return false;
  if (!TryExpandExpression("OutputFile", OutputFile, false, output)) return false;
  // The input text is quoted as a whole: several names in it reach the tool as one argument.
  builder.AddArgument("", DoubleQuoteString(input, true), 2);
  if (!output.empty()) builder.AddArgument("", DoubleQuoteString(output, true), 2);
  return true;
}

bool TWrenResGenAction::Validate(IWrenActionValidationError& errors) {
  if (InputFiles.empty()) {
    errors.AddError("Input files", "Input file(s) has not been set");
    return false;
  }
  return true;
}

}  // namespace wren
