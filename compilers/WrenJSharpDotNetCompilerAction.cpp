#include "compilers/WrenJSharpDotNetCompilerAction.h"

#include "WrenUtils.h"

namespace wren {

TWrenCustomJSharpCompilerAction::TWrenCustomJSharpCompilerAction() {
  TWrenCustomJSharpCompilerAction::ResetOptions();
}

void TWrenCustomJSharpCompilerAction::ResetOptions() {
  TWrenManagedCompilerAction::ResetOptions();
  WarningLevel = TDotNetWarningLevels::WarnLevel4;
  SecureScoping = false;
  DisableLangExt = false;
  JCPA.clear();
}

bool TWrenCustomJSharpCompilerAction::GenerateResponseFile(const std::string& projectDir,
                                                           TStrings& lines) {
  lines.push_back(WarningLevelSwitch(WarningLevel));
  // Both switches go through with an empty value and add-if-empty off, so they add no line: the
  // settings are kept with the action but have never reached the compiler, and must not start to.
  if (SecureScoping &&
      !AddOptionToResponseFile("/securescoping", "SecureScoping", "", "", lines, false, ""))
    return false;
  if (DisableLangExt &&
      !AddOptionToResponseFile("/x", "DisableLangExt", "", "", lines, false, ""))
    return false;

  if (!JCPA.empty()) {
    std::string dir;
    if (!TryExpandExpression("Project Directory", ProjectDir, false, dir)) return false;
    const std::string path = IncludeTrailingPathDelimiter(dir) + kJCPAFileName;
    for (const std::string& line : JCPA)
      if (!CheckSingleLine("JCPA", line)) return false;
    std::string reason;
    if (!SaveLinesToFile(path, JCPA, reason)) {
      SendMessage("Could not create the jcpa file: " + path);
      SendMessage(reason);
      return false;
    }
    // The value holds quotes, so it is not quoted again.
    if (!AddOptionToResponseFile("/jcpa", "JCPA", "", "", lines, false, "@\"" + path + "\""))
      return false;
  }

  if (!AddOptionToResponseFile("/lib", "Library Locations", "", "", lines, false, LibLocations))
    return false;
  if (!AddFileListLines("/win32res:", "Win32 Resources", Win32Resources, lines)) return false;
  return TWrenManagedCompilerAction::GenerateResponseFile(projectDir, lines);
}

const TPropertyTable& TWrenJSharpCompilerAction::ClassProperties() {
  using J = TWrenCustomJSharpCompilerAction;
  static const TPropertyTable table = CompilerProperties(
      {"NoLogo", "OutputInUTF8", "Optimize", "OutputFile", "Target", "Modules", "LibLocations",
       "References", "Debug", "SupressWarnings", "WarnAsError", "Defines", "LinkResources",
       "Resources", "Win32Resources", "BaseAddress", "CodePage", "MainClass", "RecurseDir",
       "RecurseFiles", "Files", "ProjectDir"},
      {EnumProperty("WarningLevel", &J::WarningLevel, DotNetWarningLevelNames()),
       BoolProperty("SecureScoping", &J::SecureScoping),
       BoolProperty("DisableLangExt", &J::DisableLangExt),
       StringListProperty("JCPA", &J::JCPA)});
  return table;
}

}  // namespace wren
