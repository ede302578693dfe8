#include "compilers/WrenCSharpCompilerAction.h"

#include "WrenUtils.h"

namespace wren {

const std::vector<std::string>& CSharpFileAlignNames() {
  static const std::vector<std::string> names = {"faDefault", "fa512",  "fa1024",
                                                 "fa2048",    "fa4096", "fa8192"};
  return names;
}

TWrenCustomCSharpCompilerAction::TWrenCustomCSharpCompilerAction() {
  TWrenCustomCSharpCompilerAction::ResetOptions();
}

void TWrenCustomCSharpCompilerAction::ResetOptions() {
  TWrenManagedCompilerAction::ResetOptions();
  FileAlign = TCSharpFileAlign::faDefault;
  DocFile.clear();
  NoSTDLib = false;
  Checked = false;
  FullPaths = false;
  Incremental = false;
  NoConfig = false;
  CompileUnsafe = false;
  WarningLevel = TDotNetWarningLevels::WarnLevel4;
}

bool TWrenCustomCSharpCompilerAction::GenerateResponseFile(const std::string& projectDir,
                                                           TStrings& lines) {
  static const char* const kAlignments[] = {"", "512", "1024", "2048", "4096", "8192"};
  if (FileAlign != TCSharpFileAlign::faDefault)
    lines.push_back(std::string("/filealign:") + kAlignments[static_cast<int>(FileAlign)]);
  // An incremental build never asks for the documentation file.
  if (!Incremental &&
      !AddOptionToResponseFile("/doc", "Doc to XML File", "", "", lines, false, DocFile))
    return false;
  lines.push_back(Checked ? "/checked+" : "/checked-");
  if (FullPaths) lines.push_back("/fullpaths");
  if (Incremental) lines.push_back("/incremental+");
  if (NoConfig) lines.push_back("/noconfig");
  if (CompileUnsafe) lines.push_back("/unsafe");
  lines.push_back(WarningLevelSwitch(WarningLevel));
  if (!Trim(LibLocations).empty()) {
    std::string expanded;
    if (!ExpandResponseValue("Library Locations", LibLocations, expanded)) return false;
    // csc takes the whole switch quoted, so the list may hold blanks and semicolons.
    lines.push_back(DoubleQuoteString("/lib:" + expanded));
  }
  if (!AddFileListLines("/win32icon:", "Icons", Icon, lines)) return false;
  if (!AddFileListLines("/win32res:", "Win32 Resources", Win32Resources, lines)) return false;
  if (NoSTDLib || IsCompactFramework()) lines.push_back("/nostdlib");
  return TWrenManagedCompilerAction::GenerateResponseFile(projectDir, lines);
}

const TPropertyTable& TWrenCSharpCompilerAction::ClassProperties() {
  using C = TWrenCustomCSharpCompilerAction;
  static const TPropertyTable table = CompilerProperties(
      {"NoLogo", "OutputInUTF8", "Optimize", "OutputFile", "Target", "Modules", "LibLocations",
       "References", "Debug", "SupressWarnings", "WarnAsError", "Defines", "LinkResources",
       "Resources", "Icon", "Win32Resources", "BaseAddress", "CodePage", "MainClass", "RecurseDir",
       "RecurseFiles", "Files", "ProjectDir"},
      {EnumProperty("FileAlign", &C::FileAlign, CSharpFileAlignNames()),
       StringProperty("DocFile", &C::DocFile), BoolProperty("NoSTDLib", &C::NoSTDLib),
       BoolProperty("Checked", &C::Checked), BoolProperty("FullPaths", &C::FullPaths),
       BoolProperty("Incremental", &C::Incremental), BoolProperty("NoConfig", &C::NoConfig),
       BoolProperty("CompileUnsafe", &C::CompileUnsafe),
       EnumProperty("WarningLevel", &C::WarningLevel, DotNetWarningLevelNames())});
  return table;
}

}  // namespace wren
