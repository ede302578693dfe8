#include "dotnet/WrenDotNetUtils.h"

#include <algorithm>
#include <cstdio>
#include <initializer_list>

#include "WrenFiles.h"
#include "WrenUtils.h"

namespace wren {

namespace {

/// Hexadecimal as type-library keys are named: upper case, no leading zeros ("A", "409", "0").
std::string TypLibHex(int32_t value) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%05X", static_cast<uint32_t>(value));
  std::string text = buffer;
  while (text.size() > 1 && text[0] == '0') text.erase(0, 1);
  return text;
}

/// Reads the default value of a key; false when the key cannot be opened.
bool ReadDefault(TRegistryRoot root, const std::string& path, std::string& value) {
  const std::unique_ptr<IWrenRegistryKey> key = WrenRegistry().OpenKey(root, path, KEY_READ);
  if (!key) return false;
  value = key->ReadString("");
  return true;
}

/// The drive of a path ("C:", "\\server\share"); "" on paths without one (POSIX).
std::string ExtractFileDrive(const std::string& path) {
  if (path.size() >= 2 && path[1] == ':') return path.substr(0, 2);
  if (path.size() >= 2 && path[0] == '\\' && path[1] == '\\') {
    size_t server = path.find('\\', 2);
    if (server == std::string::npos) return path;
    size_t share = path.find('\\', server + 1);
    return share == std::string::npos ? path : path.substr(0, share);
  }
  return "";
}

std::string Delimited(std::initializer_list<const char*> parts) {
  std::string path;
  for (const char* part : parts) path += std::string(1, PathDelim) + part;
  return path + PathDelim;
}

}  // namespace

std::string FindTypLib(const std::string& guid, int32_t major, int32_t minor, int32_t localeId) {
  const std::string tail = "\\" + TypLibHex(localeId) + "\\win32";
  std::string value;
  if (ReadDefault(TRegistryRoot::HKEY_CLASSES_ROOT,
                  "TypeLib\\" + guid + "\\" + TypLibHex(major) + "." + TypLibHex(minor) + tail,
                  value))
    return value;
  if (ReadDefault(
          TRegistryRoot::HKEY_CLASSES_ROOT,
          "TypeLib\\" + guid + "\\" + std::to_string(major) + "." + std::to_string(minor) + tail,
          value))
    return value;
  return "";
}

std::string GetGACFolder() {
  const std::unique_ptr<IWrenRegistryKey> fusion = WrenRegistry().OpenKey(
      TRegistryRoot::HKEY_LOCAL_MACHINE, "Software\\Microsoft\\Fusion", KEY_READ);
  if (fusion && fusion->ValueExists("CacheLocation")) {
    const std::string cache = fusion->ReadString("CacheLocation");
    if (!cache.empty()) return cache;
  }
  // Without a Windows directory (POSIX hosts) there is no default cache.
  const std::string winDir = GetWinDirectory();
  if (winDir.empty()) return "";
  const std::string folder =
      IncludeTrailingPathDelimiter(winDir) + "assembly" + PathDelim + "GAC" + PathDelim;
  return DirectoryExists(folder) ? folder : "";
}

std::string FindAssemblyKeyFolder(const std::string& referenceFolder) {
  const std::string keyName = ExtractFileName(referenceFolder);
  if (SameText(keyName, "primary interop assemblies"))
    return ExtractFileDrive(GetSysDirectory()) +
           Delimited({"Program Files", "Microsoft.NET", "Primary Interop Assemblies"});
  std::string value;
  ReadDefault(TRegistryRoot::HKEY_LOCAL_MACHINE,
              "SOFTWARE\\Microsoft\\.NETFramework\\AssemblyFolders\\" + keyName, value);
  return value;
}

std::string FindAssemblyPath(const std::string& assemblyName, TRegistryRoot root,
                             const std::string& keyPath) {
  const std::unique_ptr<IWrenRegistryKey> key = WrenRegistry().OpenKey(root, keyPath, KEY_READ);
  if (!key) return "";
  const std::string wanted = UpperCase(assemblyName);
  for (std::string name : key->GetKeyNames()) {
    if (UpperCase(name).find(wanted) == std::string::npos) continue;
    std::replace(name.begin(), name.end(), '|', PathDelim);
    return name;
  }
  return "";
}

}  // namespace wren
