#include "pages/WrenDotNetFreeCommandLineFrame.h"

namespace wren {

namespace {

std::string ReadText(const TWrenAction& action, const std::string& name) {
  const TPublishedProperty* prop = FindProperty(action.GetPublishedProperties(), name);
  return prop ? std::get<std::string>(prop->get(action)) : std::string();
}

void WriteText(TWrenAction& action, const std::string& name, const std::string& text) {
  if (const TPublishedProperty* prop = FindProperty(action.GetPublishedProperties(), name))
    prop->set(action, text);
}

}  // namespace

void TFreeCommandLineFrame::ReadActionData(TWrenAction& action) {
  edOptions.text = ReadText(action, "Options");
  edWorkingFolder.text = ReadText(action, "StartDir");
}

void TFreeCommandLineFrame::WriteActionData(TWrenAction& action) {
  WriteText(action, "Options", edOptions.text);
  WriteText(action, "StartDir", edWorkingFolder.text);
}

bool TFreeCommandLineFrame::BrowseWorkingFolder() {
  std::string folder = WrenDesignApplicationServices().ExpandText(edWorkingFolder.text);
  if (!WrenDesignApplicationServices().BrowseForDirectory("Select the working folder", folder))
    return false;
  edWorkingFolder.text = folder;
  return true;
}

void TFreeCommandLineFrame::ListControls(TWrenPageControls& controls) {
  controls.Edit("edOptions", edOptions);
  controls.Edit("edWorkingFolder", edWorkingFolder);
  controls.Button("btnWorkingFolder", "...", [this] { BrowseWorkingFolder(); });
}

std::vector<TWrenPagePropertyInfo> TFreeCommandLineFrame::PropertyInfo() const {
  return {{"Options", edOptions.caption},
          {"StartDir", edWorkingFolder.caption, "", "", true}};
}

}  // namespace wren
