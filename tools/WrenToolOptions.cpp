#include "tools/WrenToolOptions.h"

#include <utility>

#include "WrenTypes.h"
#include "dotnet/WrenDotNetUtils.h"

namespace wren {

TWrenToolOptions::TWrenToolOptions(std::vector<std::string> installedFileNames)
    : installedFileNames_(std::move(installedFileNames)),
      location_(FindInstalledTool(installedFileNames_)) {}

void TWrenToolOptions::LoadOptions(IWrenOptionsReader& reader) {
  // The registry is searched only when nothing is stored: a stored empty value is the user's.
  const std::string kUnset = "\x01";
  location_ = reader.ReadString(LocationValueName(), kUnset);
  if (location_ == kUnset) location_ = FindInstalledTool(installedFileNames_);
}

void TWrenToolOptions::SaveOptions(IWrenOptionsWriter& writer) {
  writer.WriteString(LocationValueName(), location_);
}

void TWrenToolOptions::SetLocation(const std::string& location) {
  if (location == location_) return;
  location_ = location;
  SetModified(true);
}

std::string FindInstalledTool(const std::vector<std::string>& fileNames) {
  const std::pair<TRegistryRoot, const char*> places[] = {
      {TRegistryRoot::HKEY_LOCAL_MACHINE, "SOFTWARE\\Classes\\Installer\\Assemblies"},
      {TRegistryRoot::HKEY_CURRENT_USER, "Software\\Microsoft\\Installer\\Assemblies"}};
  for (const auto& [root, key] : places)
    for (const std::string& fileName : fileNames) {
      const std::string path = FindAssemblyPath(fileName, root, key);
      if (!path.empty()) return path;
    }
  return "";
}

std::shared_ptr<IWrenToolOptions> FindToolOptions(const std::string& name,
                                                  const std::string& category) {
  return std::dynamic_pointer_cast<TWrenToolOptions>(
      WrenOptionsServices().FindOptions(name, category));
}

std::shared_ptr<TWrenScriptObject> ToolOptionsScriptObject(const std::string& typeName,
                                                           const std::string& name,
                                                           const std::string& category) {
  auto object = std::make_shared<TWrenScriptObject>();
  object->typeName = typeName;
  object->fields.emplace_back("Location", [name, category]() -> WrenVariant {
    const std::shared_ptr<IWrenToolOptions> options = FindToolOptions(name, category);
    return options ? options->GetLocation() : std::string();
  });
  return object;
}

}  // namespace wren
