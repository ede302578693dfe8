#include "compilers/WrenVBDotNetCompilerAction.h"

namespace wren {

const std::vector<std::string>& VBDotNetOptionCompareNames() {
  static const std::vector<std::string> names = {"OptCompareBinary", "OptCompareText"};
  return names;
}

TWrenCustomVBDotNetCompilerAction::TWrenCustomVBDotNetCompilerAction() {
  TWrenCustomVBDotNetCompilerAction::ResetOptions();
}

void TWrenCustomVBDotNetCompilerAction::ResetOptions() {
  TWrenManagedCompilerAction::ResetOptions();
  RootNameSpace.clear();
  Verbose = false;
  TargetCF = false;
  DelaySign = false;
  Imports.clear();
  KeyContainer.clear();
  KeyFile.clear();
  Quiet = false;
  RemoveIntChecks = false;
  OptionExplicit = false;
  OptionStrict = false;
  OptionCompare = TVBDotNetOptionCompare::OptCompareBinary;
}

bool TWrenCustomVBDotNetCompilerAction::GenerateResponseFile(const std::string& projectDir,
                                                             TStrings& lines) {
  if (TargetCF || IsCompactFramework()) lines.push_back("/netcf");
  if (Verbose) lines.push_back("/verbose");
  if (DelaySign) lines.push_back("/delaysign");
  if (!AddOptionToResponseFile("/imports", "Import namespace", "", "", lines, false, Imports) ||
      !AddOptionToResponseFile("/keycontainer", "Key Container", "", "", lines, false,
                               KeyContainer) ||
      !AddOptionToResponseFile("/keyfile", "Key File", "", "", lines, false, KeyFile))
    return false;
  if (Quiet) lines.push_back("/quiet");
  if (RemoveIntChecks) lines.push_back("/removeintchecks");
  // The off states are the compiler's defaults and are never written.
  if (OptionExplicit) lines.push_back("/optionexplicit");
  if (OptionStrict) lines.push_back("/optionstrict");
  if (OptionCompare == TVBDotNetOptionCompare::OptCompareText)
    lines.push_back("/optioncompare:text");
  if (!AddOptionToResponseFile("/sdkpath", "SDK Path", "", "", lines, false, SDKPath) ||
      !AddOptionToResponseFile("/rootnamespace", "Root NameSpace", "", "", lines, false,
                               RootNameSpace) ||
      !AddOptionToResponseFile("/libpath", "Library Locations", "", "", lines, false,
                               LibLocations))
    return false;
  if (!AddFileListLines("/win32icon:", "Icons", Icon, lines)) return false;
  if (!AddFileListLines("/win32resource:", "Win32 Resources", Win32Resources, lines))
    return false;
  return TWrenManagedCompilerAction::GenerateResponseFile(projectDir, lines);
}

const TPropertyTable& TWrenVBDotNetCompilerAction::ClassProperties() {
  using V = TWrenCustomVBDotNetCompilerAction;
  static const TPropertyTable table = CompilerProperties(
      {"NoLogo", "OutputInUTF8", "Optimize", "OutputFile", "Target", "Modules", "LibLocations",
       "References", "Debug", "SupressWarnings", "WarnAsError", "Defines", "LinkResources",
       "Resources", "Icon", "Win32Resources", "BaseAddress", "MainClass", "RecurseDir",
       "RecurseFiles", "Files", "ProjectDir", "RootNameSpace"},
      {BoolProperty("Verbose", &V::Verbose), BoolProperty("TargetCF", &V::TargetCF),
       BoolProperty("DelaySign", &V::DelaySign), StringProperty("Imports", &V::Imports),
       StringProperty("KeyContainer", &V::KeyContainer), StringProperty("KeyFile", &V::KeyFile),
       BoolProperty("Quiet", &V::Quiet), BoolProperty("RemoveIntChecks", &V::RemoveIntChecks),
       BoolProperty("OptionExplicit", &V::OptionExplicit),
       BoolProperty("OptionStrict", &V::OptionStrict),
       EnumProperty("OptionCompare", &V::OptionCompare, VBDotNetOptionCompareNames()),
       StringProperty("SDKPath", &V::SDKPath)});
  return table;
}

}  // namespace wren
