#include "pages/WrenProjectCompilerFrames.h"

#include <utility>
#include <variant>

#include "WrenUtils.h"

namespace wren {

namespace {

// The pages edit the published properties by name, so one page serves every project action.
void SetString(TWrenAction& action, const char* name, const std::string& value) {
  if (const TPublishedProperty* p = FindProperty(action.GetPublishedProperties(), name))
    p->set(action, value);
}
void SetBool(TWrenAction& action, const char* name, bool value) {
  if (const TPublishedProperty* p = FindProperty(action.GetPublishedProperties(), name))
    p->set(action, value);
}
std::string GetString(const TWrenAction& action, const char* name) {
  const TPublishedProperty* p = FindProperty(action.GetPublishedProperties(), name);
  return p ? std::get<std::string>(p->get(action)) : "";
}
bool GetBool(const TWrenAction& action, const char* name) {
  const TPublishedProperty* p = FindProperty(action.GetPublishedProperties(), name);
  return p && std::get<bool>(p->get(action));
}

}  // namespace

TProjectFilePageBase::TProjectFilePageBase(std::string projectFilter, bool configRequired)
    : projectFilter_(std::move(projectFilter)), configRequired_(configRequired) {
  lblHeading.caption = "Project";
  edProjectFile.caption = "Project File:";
  edConfigName.caption = "Configuration:";
  edOutputDir.caption = "Output Folder (overrides the project's):";
  edCFResGen.caption = "Compact Framework ResGen:";
}

void TProjectFilePageBase::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  edProjectFile.text = GetString(action, "ProjectFile");
  edConfigName.text = GetString(action, "ConfigName");
  edOutputDir.text = GetString(action, "OutputDir");
  edCFResGen.text = GetString(action, "CFResGen");
  cbCopyConfigFiles.checked = GetBool(action, "CopyConfigFiles");
  cbNoLogo.checked = GetBool(action, "NoLogo");
  cbOutputInUTF8.checked = GetBool(action, "OutputInUTF8");
}

void TProjectFilePageBase::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  SetString(action, "ProjectFile", edProjectFile.text);
  SetString(action, "ConfigName", edConfigName.text);
  SetString(action, "OutputDir", edOutputDir.text);
  SetString(action, "CFResGen", edCFResGen.text);
  SetBool(action, "CopyConfigFiles", cbCopyConfigFiles.checked);
  SetBool(action, "NoLogo", cbNoLogo.checked);
  SetBool(action, "OutputInUTF8", cbOutputInUTF8.checked);
}

bool TProjectFilePageBase::CheckPage(std::string& message) {
  if (Trim(edProjectFile.text).empty()) {
    message = "Project File is required.";
    return false;
  }
  if (configRequired_ && Trim(edConfigName.text).empty()) {
    message = "Configuration is required.";
    return false;
  }
  return true;
}

bool TProjectFilePageBase::BrowseOutputDir() {
  std::string dir = WrenDesignApplicationServices().ExpandText(edOutputDir.text);
  if (!WrenBrowseForDirectory("Select Output Folder", dir)) return false;
  edOutputDir.text = dir;
  return true;
}

void TProjectFilePageBase::ListControls(TWrenPageControls& controls) {
  TDotNetToolBaseFrame::ListControls(controls);
  controls.Edit("edProjectFile", edProjectFile);
  controls.Button("btnProjectFile", "...", [this] { BrowseProjectFile(); });
  controls.Edit("edConfigName", edConfigName);
  controls.Edit("edOutputDir", edOutputDir);
  controls.Button("btnOutputDir", "...", [this] { BrowseOutputDir(); });
  controls.Edit("edCFResGen", edCFResGen);
  controls.Button("btnCFResGen", "...", [this] { BrowseCFResGen(); });
  controls.CheckBox("cbCopyConfigFiles", cbCopyConfigFiles);
  controls.CheckBox("cbNoLogo", cbNoLogo);
  controls.CheckBox("cbOutputInUTF8", cbOutputInUTF8);
}

TProjectCompilerFrame::TProjectCompilerFrame()
    : TProjectFilePageBase("C# Projects (*.csproj;*.csdproj)|*.csproj;*.csdproj") {}

TVBProjPropertyPage::TVBProjPropertyPage()
    : TProjectFilePageBase("VB.NET Projects (*.vbproj;*.vbdproj)|*.vbproj;*.vbdproj") {}

TJSharpPropertyPage::TJSharpPropertyPage()
    : TProjectFilePageBase("J# Projects (*.vjsproj)|*.vjsproj") {}

TCSharpBuilderPropertyPage::TCSharpBuilderPropertyPage()
    : TProjectFilePageBase("C# Builder Projects (*.bdsproj)|*.bdsproj", false) {}

std::vector<TWrenPagePropertyInfo> TProjectFilePageBase::PropertyInfo() const {
  return {{"ProjectFile", edProjectFile.caption, "", "", true},
          {"ConfigName", edConfigName.caption},
          {"OutputDir", edOutputDir.caption},
          {"CFResGen", edCFResGen.caption},
          {"CopyConfigFiles", cbCopyConfigFiles.caption},
          {"NoLogo", cbNoLogo.caption},
          {"OutputInUTF8", cbOutputInUTF8.caption}};
}

}  // namespace wren
