#include "compilers/WrenMSBuildAction.h"

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

const std::vector<std::string>& MSLogLevelNames() {
  static const std::vector<std::string> names = {"llQuiet", "llMinimal", "llNormal", "llDetailed",
                                                 "llDiagnostic"};
  return names;
}

std::string EscapeQuotedPropertySeparators(const std::string& commandLine) {
  static const std::string kSwitch = "/property:";
  std::string text;
  bool quoted = false;
  bool inProperties = false;
  bool argumentStart = true;
  for (size_t i = 0; i < commandLine.size(); ++i) {
    const char c = commandLine[i];
    if (argumentStart && c != ' ' && c != '\t') {
      inProperties = SameText(commandLine.substr(i, kSwitch.size()), kSwitch);
      argumentStart = false;
    }
    if (c == '\\') {
      // Backslashes escape a quote only in runs that end at one, as the C runtime reads them.
      size_t end = i;
      while (end < commandLine.size() && commandLine[end] == '\\') ++end;
      const size_t count = end - i;
      text.append(commandLine, i, count);
      i = end - 1;
      if (end < commandLine.size() && commandLine[end] == '"' && count % 2 == 1) {
        text += '"';
        ++i;
      }
      continue;
    }
    if (c == '"') {
      if (quoted && i + 1 < commandLine.size() && commandLine[i + 1] == '"') {
        text += "\"\"";
        ++i;
        continue;
      }
      quoted = !quoted;
    } else if (!quoted && (c == ' ' || c == '\t')) {
      argumentStart = true;
    } else if (quoted && inProperties && c == ';') {
      text += "%3B";
      continue;
    }
    text += c;
  }
  return text;
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

std::string TMSBuildAction::GetProcessCommandLine(const std::string& commandLine) {
#ifdef _WIN32
  return commandLine;
#else
  return EscapeQuotedPropertySeparators(commandLine);
#endif
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
