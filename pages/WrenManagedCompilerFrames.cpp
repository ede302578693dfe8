#include "pages/WrenManagedCompilerFrames.h"

#include "WrenUtils.h"
#include "dotnet/WrenDotNetAction.h"

namespace wren {

namespace {

// Pages are only ever given the actions they were registered for.
TWrenManagedCompilerAction& Compiler(TWrenAction& action) {
  return dynamic_cast<TWrenManagedCompilerAction&>(action);
}

const char kAssemblyFilter[] =
    "Assemblies (*.exe;*.dll;*.netmodule)|*.exe;*.dll;*.netmodule|All Files (*.*)|*.*";
const char kResourceFilter[] =
    "Resources (*.resources;*.resx)|*.resources;*.resx|All Files (*.*)|*.*";

}  // namespace

TStrings ListToLines(const std::string& text, const std::string& separators) {
  return SplitToLines(text, separators);
}

std::string LinesToList(const TStrings& lines, const std::string& separator) {
  std::string text;
  for (const std::string& line : lines) {
    if (Trim(line).empty()) continue;
    if (!text.empty()) text += separator;
    text += line;
  }
  return text;
}

void SetChoice(TComboBoxModel& combo, std::vector<std::string> items, int ordinal) {
  combo.items = std::move(items);
  combo.itemIndex = ordinal >= 0 && ordinal < static_cast<int>(combo.items.size()) ? ordinal : -1;
}

int ChoiceOrdinal(const TComboBoxModel& combo, int fallback) {
  return combo.itemIndex >= 0 && combo.itemIndex < static_cast<int>(combo.items.size())
             ? combo.itemIndex
             : fallback;
}

void FillWarningLevels(TComboBoxModel& combo, TDotNetWarningLevels level) {
  SetChoice(combo, {"0 - Off", "1 - Severe warnings", "2", "3", "4 - All warnings"},
            static_cast<int>(level));
}

// Main page.

TManagedCompilerMainFrame::TManagedCompilerMainFrame(const std::string& heading,
                                                     const std::string& filesHint) {
  lblHeading.caption = heading;
  FilesHint.caption = filesHint;
  TargetType.caption = "Target type:";
}

void TManagedCompilerMainFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  const TWrenManagedCompilerAction& a = Compiler(action);
  ProjectDirectory.text = a.ProjectDir;
  FilesToCompile.text = a.Files;
  OutputFile.text = a.OutputFile;
  SetChoice(TargetType,
            {"Console Application (exe)", "Class Library (dll)", "Module (netmodule)",
             "Windows Application (exe)"},
            static_cast<int>(a.Target));
}

void TManagedCompilerMainFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  TWrenManagedCompilerAction& a = Compiler(action);
  a.ProjectDir = ProjectDirectory.text;
  a.Files = FilesToCompile.text;
  a.OutputFile = OutputFile.text;
  a.Target = static_cast<TDotNetTarget>(ChoiceOrdinal(TargetType, static_cast<int>(a.Target)));
}

bool TManagedCompilerMainFrame::CheckPage(std::string& message) {
  if (Trim(ProjectDirectory.text).empty()) {
    message = "Project Directory is required.";
    return false;
  }
  if (Trim(FilesToCompile.text).empty()) {
    message = "File(s) to compile is required.";
    return false;
  }
  return true;
}

bool TManagedCompilerMainFrame::BrowseProjectDir() {
  std::string dir = WrenDesignApplicationServices().ExpandText(ProjectDirectory.text);
  if (!WrenBrowseForDirectory("Select Project Directory", dir)) return false;
  ProjectDirectory.text = dir;
  return true;
}

bool TManagedCompilerMainFrame::BrowseOutputFile() { return GetFile(OutputFile, kAssemblyFilter); }

void TManagedCompilerMainFrame::ListSourceControls(TWrenPageControls& controls) {
  controls.Edit("ProjectDirectory", ProjectDirectory);
  controls.Button("btnProjectDirectory", "...", [this] { BrowseProjectDir(); });
  controls.Edit("FilesToCompile", FilesToCompile);
  controls.Label("FilesHint", FilesHint);
}

void TManagedCompilerMainFrame::ListOutputControls(TWrenPageControls& controls) {
  controls.Edit("OutputFile", OutputFile);
  controls.Button("btnOutputFile", "...", [this] { BrowseOutputFile(); });
  controls.ComboBox("TargetType", TargetType);
}

void TManagedCompilerMainFrame::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  ListSourceControls(controls);
  ListOutputControls(controls);
}

// Options page.

TManagedCompilerOptionsFrame::TManagedCompilerOptionsFrame() = default;

void TManagedCompilerOptionsFrame::ReadActionData(TWrenAction& action) {
  const TWrenManagedCompilerAction& a = Compiler(action);
  Optimize.checked = a.Optimize;
  NoLogo.checked = a.NoLogo;
  OutputInUTF8.checked = a.OutputInUTF8;
  BaseAddress.text = a.BaseAddress;
  MainClass.text = a.MainClass;
  CodePage.text = a.CodePage;
  RecurseDir.text = a.RecurseDir;
  RecurseFiles.text = a.RecurseFiles;
}

void TManagedCompilerOptionsFrame::WriteActionData(TWrenAction& action) {
  TWrenManagedCompilerAction& a = Compiler(action);
  a.Optimize = Optimize.checked;
  a.NoLogo = NoLogo.checked;
  a.OutputInUTF8 = OutputInUTF8.checked;
  a.BaseAddress = BaseAddress.text;
  a.MainClass = MainClass.text;
  if (CodePage.enabled) a.CodePage = CodePage.text;
  a.RecurseDir = RecurseDir.text;
  a.RecurseFiles = RecurseFiles.text;
}

void TManagedCompilerOptionsFrame::ApplyCodePage(const TCodePageForm& form) {
  if (form.modalResult != TCodePageForm::TModalResult::mrOk) return;
  const int codePage = form.GetCodePage();
  if (codePage > 0) CodePage.text = std::to_string(codePage);
}

void TManagedCompilerOptionsFrame::ChooseCodePage() {
  TCodePageForm form;
  form.ShowModal();
  ApplyCodePage(form);
}

void TManagedCompilerOptionsFrame::ListControls(TWrenPageControls& controls) {
  controls.CheckBox("Optimize", Optimize);
  controls.CheckBox("NoLogo", NoLogo);
  controls.CheckBox("OutputInUTF8", OutputInUTF8);
  controls.Edit("BaseAddress", BaseAddress);
  controls.Edit("MainClass", MainClass);
  controls.Edit("CodePage", CodePage);
  // A language without the switch keeps its edit disabled, and the picker with it.
  controls.Button("btnCodePage", "...", [this] { ChooseCodePage(); }, CodePage.enabled);
  controls.Edit("RecurseDir", RecurseDir);
  controls.Edit("RecurseFiles", RecurseFiles);
}

// Debugging page.

TManagedCompilerDebuggingFrame::TManagedCompilerDebuggingFrame() {
  DebugInfo.caption = "Debug information:";
}

void TManagedCompilerDebuggingFrame::ReadActionData(TWrenAction& action) {
  const TWrenManagedCompilerAction& a = Compiler(action);
  SetChoice(DebugInfo, {"None", "Full", "PDB only"}, static_cast<int>(a.Debug));
  Defines.text = a.Defines;
  WarnAsError.checked = a.WarnAsError;
  SupressWarnings.text = a.SupressWarnings;
}

void TManagedCompilerDebuggingFrame::WriteActionData(TWrenAction& action) {
  TWrenManagedCompilerAction& a = Compiler(action);
  a.Debug = static_cast<TDotNetDebugOptions>(ChoiceOrdinal(DebugInfo, static_cast<int>(a.Debug)));
  a.Defines = Defines.text;
  a.WarnAsError = WarnAsError.checked;
  a.SupressWarnings = SupressWarnings.text;
}

void TManagedCompilerDebuggingFrame::ListControls(TWrenPageControls& controls) {
  controls.ComboBox("DebugInfo", DebugInfo);
  controls.Edit("Defines", Defines);
  controls.CheckBox("WarnAsError", WarnAsError);
  controls.Edit("SupressWarnings", SupressWarnings);
}

// Assemblies page.

TManagedCompilerAssembliesFrame::TManagedCompilerAssembliesFrame() = default;

void TManagedCompilerAssembliesFrame::ReadActionData(TWrenAction& action) {
  const TWrenManagedCompilerAction& a = Compiler(action);
  References.lines = ListToLines(a.References, ",");
  LibLocations.lines = ListToLines(a.LibLocations, ";");
  Modules.lines = ListToLines(a.Modules, ",");
}

void TManagedCompilerAssembliesFrame::WriteActionData(TWrenAction& action) {
  TWrenManagedCompilerAction& a = Compiler(action);
  a.References = LinesToList(References.lines, ",");
  a.LibLocations = LinesToList(LibLocations.lines, ";");
  a.Modules = LinesToList(Modules.lines, ",");
}

void TManagedCompilerAssembliesFrame::ListControls(TWrenPageControls& controls) {
  controls.Memo("References", References);
  controls.Memo("LibLocations", LibLocations);
  controls.Memo("Modules", Modules);
}

// Resources page.

TManagedCompilerResourcesFrame::TManagedCompilerResourcesFrame() = default;

void TManagedCompilerResourcesFrame::ReadActionData(TWrenAction& action) {
  const TWrenManagedCompilerAction& a = Compiler(action);
  Resources.lines = ListToLines(a.Resources, ",");
  LinkResources.lines = ListToLines(a.LinkResources, ",");
  Win32Resources.lines = ListToLines(a.Win32Resources, ";,");
  Icons.lines = ListToLines(a.Icon, ";,");
}

void TManagedCompilerResourcesFrame::WriteActionData(TWrenAction& action) {
  TWrenManagedCompilerAction& a = Compiler(action);
  a.Resources = LinesToList(Resources.lines, ",");
  a.LinkResources = LinesToList(LinkResources.lines, ",");
  a.Win32Resources = LinesToList(Win32Resources.lines, ";");
  if (Icons.enabled) a.Icon = LinesToList(Icons.lines, ";");
}

void TManagedCompilerResourcesFrame::AddResource(const std::string& fileName,
                                                 const std::string& manifestName) {
  if (Trim(fileName).empty()) return;
  Resources.lines.push_back(Trim(manifestName).empty() ? fileName
                                                       : fileName + "=" + Trim(manifestName));
}

void TManagedCompilerResourcesFrame::AddEnteredResource() {
  AddResource(ResourceFile.text, ResourceName.text);
  ResourceFile.text.clear();
  ResourceName.text.clear();
}

bool TManagedCompilerResourcesFrame::BrowseResourceFile() {
  return GetFile(ResourceFile, kResourceFilter);
}

void TManagedCompilerResourcesFrame::ListControls(TWrenPageControls& controls) {
  controls.Memo("Resources", Resources);
  controls.Edit("ResourceFile", ResourceFile);
  controls.Button("btnResourceFile", "...", [this] { BrowseResourceFile(); });
  controls.Edit("ResourceName", ResourceName);
  controls.Button("btnAddResource", "Add", [this] { AddEnteredResource(); },
                  !Trim(ResourceFile.text).empty());
  controls.Memo("LinkResources", LinkResources);
  controls.Memo("Win32Resources", Win32Resources);
  controls.Memo("Icons", Icons);
}

std::vector<TWrenPagePropertyInfo> TManagedCompilerMainFrame::PropertyInfo() const {
  // The files edit is split on semicolons, as its hint tells.
  return {{"ProjectDir", ProjectDirectory.caption, "", "", true},
          {"Files", FilesToCompile.caption, FilesHint.caption, ";", false},
          {"OutputFile", OutputFile.caption, "", "", true},
          {"Target", TargetType.caption}};
}

std::vector<TWrenPagePropertyInfo> TManagedCompilerOptionsFrame::PropertyInfo() const {
  std::vector<TWrenPagePropertyInfo> info{{"Optimize", Optimize.caption},
                                           {"NoLogo", NoLogo.caption},
                                           {"OutputInUTF8", OutputInUTF8.caption},
                                           {"BaseAddress", BaseAddress.caption},
                                           {"MainClass", MainClass.caption},
                                           {"RecurseDir", RecurseDir.caption},
                                           {"RecurseFiles", RecurseFiles.caption}};
  // A language without the switch disables the edit; its action has no such property.
  if (CodePage.enabled) info.insert(info.begin() + 5, {"CodePage", CodePage.caption});
  return info;
}

std::vector<TWrenPagePropertyInfo> TManagedCompilerDebuggingFrame::PropertyInfo() const {
  return {{"Debug", DebugInfo.caption},
          {"Defines", Defines.caption},
          {"WarnAsError", WarnAsError.caption},
          {"SupressWarnings", SupressWarnings.caption}};
}

std::vector<TWrenPagePropertyInfo> TManagedCompilerAssembliesFrame::PropertyInfo() const {
  // Each memo line is one item; the stored value joins them with the separator written here.
  return {{"References", References.caption, "", ","},
          {"LibLocations", LibLocations.caption, "", ";"},
          {"Modules", Modules.caption, "", ","}};
}

std::vector<TWrenPagePropertyInfo> TManagedCompilerResourcesFrame::PropertyInfo() const {
  std::vector<TWrenPagePropertyInfo> info{{"Resources", Resources.caption, "", ","},
                                           {"LinkResources", LinkResources.caption, "", ","},
                                           {"Win32Resources", Win32Resources.caption, "", ";"}};
  if (Icons.enabled) info.push_back({"Icon", Icons.caption, "", ";"});
  return info;
}

}  // namespace wren
