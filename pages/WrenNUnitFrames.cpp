#include "pages/WrenNUnitFrames.h"

#include "WrenUtils.h"
#include "dotnet/WrenDotNetAction.h"
#include "tools/WrenNUnitAction.h"

namespace wren {

// A new action runs a list of assemblies, so the page starts on that choice.
TNUnitActionFrame::TNUnitActionFrame() { SetUseProjectFile(false); }

void TNUnitActionFrame::SetUseProjectFile(bool useProjectFile) {
  rbProjectFile.checked = useProjectFile;
  rbAssemblies.checked = !useProjectFile;
  edProjectFile.enabled = useProjectFile;
  edProjectConfig.enabled = useProjectFile;
  mmAssemblies.enabled = !useProjectFile;
}

void TNUnitActionFrame::ReadActionData(TWrenAction& action) {
  const auto* nunit = dynamic_cast<const TWrenNUnitAction*>(&action);
  if (!nunit) return;
  SetUseProjectFile(nunit->UseProjectFile);
  edProjectFile.text = nunit->ProjectFile;
  edProjectConfig.text = nunit->ProjectConfig;
  mmAssemblies.lines = nunit->Assemblies;
  edFixture.text = nunit->Fixture;
  edXMLOutputFile.text = nunit->XMLOutputFile;
  edTransformFile.text = nunit->TransformFile;
  cbNoLogo.checked = nunit->NoLogo;
  cbXMLToConsole.checked = nunit->XMLToConsole;
}

void TNUnitActionFrame::WriteActionData(TWrenAction& action) {
  auto* nunit = dynamic_cast<TWrenNUnitAction*>(&action);
  if (!nunit) return;
  nunit->UseProjectFile = rbProjectFile.checked;
  nunit->ProjectFile = edProjectFile.text;
  nunit->ProjectConfig = edProjectConfig.text;
  nunit->Assemblies = mmAssemblies.lines;
  nunit->Fixture = edFixture.text;
  nunit->XMLOutputFile = edXMLOutputFile.text;
  nunit->TransformFile = edTransformFile.text;
  nunit->NoLogo = cbNoLogo.checked;
  nunit->XMLToConsole = cbXMLToConsole.checked;
}

bool TNUnitActionFrame::CheckPage(std::string& message) {
  if (rbProjectFile.checked && Trim(edProjectFile.text).empty()) {
    message = "Project File is required.";
    return false;
  }
  if (!rbProjectFile.checked) {
    for (const std::string& line : mmAssemblies.lines)
      if (!Trim(line).empty()) return true;
    message = "At least one test assembly is required.";
    return false;
  }
  return true;
}

bool TNUnitActionFrame::BrowseProjectFile() { return GetFile(edProjectFile, kProjectFilter); }

bool TNUnitActionFrame::AddAssembly() {
  TEditModel chosen;
  if (!GetFile(chosen, kAssemblyFilter)) return false;
  mmAssemblies.lines.push_back(chosen.text);
  return true;
}

bool TNUnitActionFrame::BrowseXMLOutputFile() { return GetFile(edXMLOutputFile, kXMLFilter); }

bool TNUnitActionFrame::BrowseTransformFile() { return GetFile(edTransformFile, kTransformFilter); }

void TNUnitActionFrame::ListControls(TWrenPageControls& controls) {
  controls.RadioButton("rbProjectFile", "source", rbProjectFile,
                       [this] { SetUseProjectFile(true); });
  controls.Edit("edProjectFile", edProjectFile);
  controls.Button("btnProjectFile", "...", [this] { BrowseProjectFile(); },
                  edProjectFile.enabled);
  controls.Edit("edProjectConfig", edProjectConfig);
  controls.RadioButton("rbAssemblies", "source", rbAssemblies,
                       [this] { SetUseProjectFile(false); });
  controls.Memo("mmAssemblies", mmAssemblies);
  controls.Button("btnAddAssembly", "Add...", [this] { AddAssembly(); }, mmAssemblies.enabled);
  controls.Edit("edFixture", edFixture);
  controls.Edit("edXMLOutputFile", edXMLOutputFile);
  controls.Button("btnXMLOutputFile", "...", [this] { BrowseXMLOutputFile(); });
  controls.Edit("edTransformFile", edTransformFile);
  controls.Button("btnTransformFile", "...", [this] { BrowseTransformFile(); });
  controls.CheckBox("cbNoLogo", cbNoLogo);
  controls.CheckBox("cbXMLToConsole", cbXMLToConsole);
}

std::vector<TWrenPagePropertyInfo> TNUnitActionFrame::PropertyInfo() const {
  return {{"UseProjectFile", rbProjectFile.caption},
          {"ProjectFile", edProjectFile.caption, "", "", true},
          {"ProjectConfig", edProjectConfig.caption},
          {"Assemblies", mmAssemblies.caption, "", "", true},
          {"Fixture", edFixture.caption},
          {"XMLOutputFile", edXMLOutputFile.caption, "", "", true},
          {"TransformFile", edTransformFile.caption, "", "", true},
          {"NoLogo", cbNoLogo.caption},
          {"XMLToConsole", cbXMLToConsole.caption}};
}

}  // namespace wren
