#include "dotnet/WrenDotNetFrameWorkImpl.h"

#include <algorithm>
#include <charconv>

#include "WrenFiles.h"
#include "WrenRegistry.h"
#include "WrenUtils.h"

namespace wren {

namespace {

/// A whole text as a 32-bit integer, or def when it is not one.
int32_t StrToIntDef(const std::string& text, int32_t def) {
  int32_t value = 0;
  const char* first = text.data();
  const char* last = first + text.size();
  if (first != last && *first == '+') ++first;
  const auto [end, ec] = std::from_chars(first, last, value);
  return (ec == std::errc() && end == last && first != last) ? value : def;
}

/// A framework directory name as a number for telling two builds of one SDK version apart:
/// "v1.1.4322" gives 114322.
int32_t BuildNumber(const std::string& frameWorkVersion, int32_t def) {
  std::string digits = frameWorkVersion.empty() ? "" : frameWorkVersion.substr(1);
  digits.erase(std::remove(digits.begin(), digits.end(), '.'), digits.end());
  return StrToIntDef(digits, def);
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

TWrenDotNetFrameWork::TWrenDotNetFrameWork(const std::string& frameWorkVersion,
                                           const std::string& sdkRoot,
                                           const std::string& sdkVersion,
                                           const std::string& frameWorkLocation)
    : frameWorkVersion_(frameWorkVersion),
      sdkVersion_(sdkVersion),
      frameWorkLocation_(frameWorkLocation),
      sdkLocation_(sdkRoot.empty() ? "" : sdkRoot + "Bin" + PathDelim) {}

TWrenDotNetInfo::TWrenDotNetInfo() { Refresh(); }

TWrenDotNetInfo::~TWrenDotNetInfo() {
  std::lock_guard<std::mutex> guard(lock_);
  list_.clear();
}

void TWrenDotNetInfo::Refresh() {
  std::lock_guard<std::mutex> guard(lock_);
  list_.clear();

  const std::unique_ptr<IWrenRegistryKey> key = WrenRegistry().OpenKey(
      TRegistryRoot::HKEY_LOCAL_MACHINE, "Software\\Microsoft\\.NETFramework", KEY_READ);
  if (!key) return;
  std::string installRoot = key->ValueExists("InstallRoot") ? key->ReadString("InstallRoot") : "";
  if (installRoot.empty()) return;
  installRoot = IncludeTrailingPathDelimiter(installRoot);
  const TStrings valueNames = key->GetValueNames();
  auto hasValue = [&valueNames](const std::string& name) {
    return std::any_of(valueNames.begin(), valueNames.end(),
                       [&name](const std::string& v) { return SameText(v, name); });
  };

  // Deliberately not reset per entry: a framework without its own SDK value takes the SDK root of
  // the entry before it.
  std::string sdkRoot;
  for (const TWrenFindData& entry : FindFiles(installRoot + "v*.*", true, true)) {
    const std::string& name = entry.name;
    if (name.size() < 2 || !IsDigit(name[1])) continue;
    const std::string location = installRoot + name;
    const std::string sdkVersion = name.substr(0, 4);
    const std::string sdkValueName =
        sdkVersion == "v1.0" ? "sdkInstallRoot" : "sdkInstallRoot" + sdkVersion;

    // A newer build of the same SDK version replaces an older one found earlier; an older one
    // found later is still added (lookups find the first).
    auto existing = std::find_if(list_.begin(), list_.end(), [&sdkVersion](const auto& f) {
      return SameText(f->GetSDKVersion(), sdkVersion);
    });
    if (existing != list_.end() &&
        BuildNumber((*existing)->GetFrameWorkVersion(), 0) < BuildNumber(name, 1))
      list_.erase(existing);

    if (hasValue(sdkValueName)) sdkRoot = key->ReadString(sdkValueName);
    list_.push_back(std::make_shared<TWrenDotNetFrameWork>(name, sdkRoot, sdkVersion, location));
  }
}

int32_t TWrenDotNetInfo::GetInstalledFrameWorkCount() const {
  std::lock_guard<std::mutex> guard(lock_);
  return static_cast<int32_t>(list_.size());
}

std::shared_ptr<IWrenDotNetFrameWork> TWrenDotNetInfo::GetFrameWork(int32_t index) const {
  std::lock_guard<std::mutex> guard(lock_);
  if (index < 0 || index >= static_cast<int32_t>(list_.size())) return nullptr;
  return list_[index];
}

std::shared_ptr<IWrenDotNetFrameWork> TWrenDotNetInfo::GetFrameWorkByVersion(
    const std::string& version) const {
  std::lock_guard<std::mutex> guard(lock_);
  for (const auto& f : list_)
    if (SameText(f->GetFrameWorkVersion(), version)) return f;
  return nullptr;
}

std::shared_ptr<IWrenDotNetFrameWork> TWrenDotNetInfo::GetFrameWorkBySDKVersion(
    const std::string& version) const {
  std::lock_guard<std::mutex> guard(lock_);
  for (const auto& f : list_)
    if (SameText(f->GetSDKVersion(), version)) return f;
  return nullptr;
}

}  // namespace wren
