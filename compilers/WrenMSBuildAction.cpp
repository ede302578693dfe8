#include "compilers/WrenMSBuildAction.h"

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

const std::vector<std::string>& MSLogLevelNames() {
  static const std::vector<std::string> names = {"llQuiet", "llMinimal", "llNormal", "llDetailed",
                                                 "llDiagnostic"};
  return names;
}

TMSBuildAction::TMSBuildAction() {
  MinimumSDKVersion = "1.2";
  SetDefaultSDKVersion("1.2");
  OverrideSDKDefault = false;
}

bool TMSBuildAction::Validate(IWrenActionValidationError& errors) {
  if (!BuildFile.empty()) return true;
  errors.AddError("Project File", "Project file has not been set");
  return false;
}

bool TMSBuildAction::GetCommandLine(ICommandLineBuilder& builder) {
  static const char* const kVerbosity[] = {"quiet", "minimal", "normal", "detailed",
                                           "diagnostic"};
  builder.Clear();
  builder.AddArgument(std::string("/v:") + kVerbosity[static_cast<int>(LogLevel)], "", 2);

  // All properties travel in one switch; the quotes keep blanks and semicolons in a value.
  std::string accumulated;
  for (const std::string& line : Properties) {
    const size_t eq = line.find('=');
    if (eq == std::string::npos) continue;  // no name at all
    const std::string name = Trim(line.substr(0, eq));
    if (name.empty()) continue;
    std::string expandedName, expandedValue;
    if (!TryExpandExpression("Property", name, false, expandedName) ||
        !TryExpandExpression("Value", line.substr(eq + 1), false, expandedValue))
      return false;
    if (!accumulated.empty()) accumulated += ";";
    accumulated += expandedName + "=\"" + expandedValue + "\"";
  }
  if (!accumulated.empty()) builder.AddArgument("/property:" + accumulated, "", 2);

  if (NoLogo) builder.AddArgument("/nologo", "", 2);
  if (Restricted) builder.AddArgument("/restricted", "", 2);

  std::string targets;
  if (!TryExpandExpression("Targets", Targets, false, targets)) return false;
  if (!targets.empty()) builder.AddArgument("/target:", targets, 2);

  std::string buildFile;
  if (!TryExpandExpression("Project File", BuildFile, false, buildFile)) return false;
  if (!FileExists(buildFile)) {
    SendMessage("Project file does not exist : " + buildFile);
    return false;
  }
  builder.AddArgument("", buildFile, 2);
  return true;
}

const TPropertyTable& TMSBuildAction::ClassProperties() {
  using B = TMSBuildAction;
  static const TPropertyTable table =
      ChainProperties(TWrenDotNetAction::ClassProperties(),
                      {StringProperty("BuildFile", &B::BuildFile),
                       StringListProperty("Properties", &B::Properties),
                       EnumProperty("LogLevel", &B::LogLevel, MSLogLevelNames()),
                       BoolProperty("OutputToLog", &B::OutputToLog),
                       StringProperty("Targets", &B::Targets), BoolProperty("NoLogo", &B::NoLogo),
                       BoolProperty("Restricted", &B::Restricted)});
  return table;
}

}  // namespace wren
