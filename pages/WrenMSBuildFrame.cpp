#include "pages/WrenMSBuildFrame.h"

#include "WrenUtils.h"
#include "compilers/WrenMSBuildAction.h"
#include "pages/WrenPageGrid.h"

namespace wren {

namespace {

TMSBuildAction& MSBuild(TWrenAction& action) { return dynamic_cast<TMSBuildAction&>(action); }

}  // namespace

TMSBuildFrame::TMSBuildFrame() {
  lblHeading.caption = "MSBuild Project";
  Properties.titles = {"Property", "Value"};
  LogLevel.caption = "Logging Level :";
}

void TMSBuildFrame::InitPage(TWrenAction& action) {
  TDotNetToolBaseFrame::InitPage(action);
  // This page names the version an SDK version although msbuild lives in the framework folder.
  lblVersion.caption = "SDK Version";
  rbDefaultVersion.caption = "Use Default SDK Version";
}

void TMSBuildFrame::ReadActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::ReadActionData(action);
  const TMSBuildAction& a = MSBuild(action);
  BuildFile.text = a.BuildFile;
  Properties.rows.clear();
  for (const std::string& line : a.Properties) {
    const size_t eq = line.find('=');
    if (eq == std::string::npos)
      Properties.rows.emplace_back(line, "");
    else
      Properties.rows.emplace_back(line.substr(0, eq), line.substr(eq + 1));
  }
  Targets.text = a.Targets;
  LogLevel.items = {"Quiet", "Minimal", "Normal", "Detailed", "Diagnostic"};
  LogLevel.itemIndex = static_cast<int>(a.LogLevel);
  NoLogo.checked = a.NoLogo;
  Restricted.checked = a.Restricted;
}

void TMSBuildFrame::WriteActionData(TWrenAction& action) {
  TDotNetToolBaseFrame::WriteActionData(action);
  TMSBuildAction& a = MSBuild(action);
  a.BuildFile = BuildFile.text;
  a.Properties.clear();
  for (const auto& [name, value] : Properties.rows)
    if (!Trim(name).empty()) a.Properties.push_back(name + "=" + value);
  a.Targets = Targets.text;
  if (LogLevel.itemIndex >= 0 && LogLevel.itemIndex < static_cast<int>(LogLevel.items.size()))
    a.LogLevel = static_cast<TMSLogLevel>(LogLevel.itemIndex);
  a.NoLogo = NoLogo.checked;
  a.Restricted = Restricted.checked;
}

bool TMSBuildFrame::CheckPage(std::string& message) {
  if (!Trim(BuildFile.text).empty()) return true;
  message = "Project File is required.";
  return false;
}

bool TMSBuildFrame::BrowseBuildFile() {
  return GetFile(BuildFile,
                 "MSBuild Projects (*.proj;*.csproj;*.vbproj)|*.proj;*.csproj;*.vbproj|"
                 "All Files (*.*)|*.*");
}

void TMSBuildFrame::ListControls(TWrenPageControls& controls) {
  controls.Label("lblHeading", lblHeading);
  controls.Label("grpProjectFile", grpProjectFile);
  controls.Edit("BuildFile", BuildFile);
  controls.Button("btnBuildFile", "...", [this] { BrowseBuildFile(); });
  controls.Label("grpProperties", grpProperties);
  NameValueGrid(controls, "Properties", grpProperties.caption, Properties.titles,
                Properties.rows);
  controls.Label("grpTargets", grpTargets);
  controls.Edit("Targets", Targets);
  controls.Label("TargetsHint", TargetsHint);
  controls.Label("grpLogOptions", grpLogOptions);
  controls.ComboBox("LogLevel", LogLevel);
  controls.Label("grpOtherOptions", grpOtherOptions);
  controls.CheckBox("NoLogo", NoLogo);
  controls.CheckBox("Restricted", Restricted);
  ListVersionPanel(controls);
}

std::vector<TWrenPagePropertyInfo> TMSBuildFrame::PropertyInfo() const {
  // The project file and targets edits are labelled by the groups around them.
  return {{"BuildFile", grpProjectFile.caption, "", "", true},
          {"Properties", grpProperties.caption},
          {"Targets", grpTargets.caption, TargetsHint.caption, ";"},
          {"LogLevel", LogLevel.caption},
          {"NoLogo", NoLogo.caption},
          {"Restricted", Restricted.caption}};
}

}  // namespace wren
