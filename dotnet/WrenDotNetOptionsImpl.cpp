#include "dotnet/WrenDotNetOptionsImpl.h"

#include <cstdint>
#include <mutex>
#include <variant>

#include "WrenPluginAPI.h"
#include "dotnet/WrenDotNetFrameWorkAPI.h"
#include "pages/WrenDotNetOptionsFrame.h"

namespace wren {

namespace {

/// The framework at a script's index argument; nullptr for a bad index.
std::shared_ptr<IWrenDotNetFrameWork> FrameWorkAt(const std::vector<WrenVariant>& args) {
  if (args.empty()) return nullptr;
  int64_t index = -1;
  if (const int64_t* i = std::get_if<int64_t>(&args[0]))
    index = *i;
  else if (const double* d = std::get_if<double>(&args[0]))
    index = *d == static_cast<double>(static_cast<int64_t>(*d)) ? static_cast<int64_t>(*d) : -1;
  if (index < 0 || index > INT32_MAX) return nullptr;
  return WrenDotNetInfo()->GetFrameWork(static_cast<int32_t>(index));
}

/// A script method giving one field of the framework at an index; nil when there is none.
TWrenScriptMethod FrameWorkField(const std::string& name,
                                 std::string (IWrenDotNetFrameWork::*field)() const) {
  return {name, [field](const std::vector<WrenVariant>& args) -> WrenVariant {
            const std::shared_ptr<IWrenDotNetFrameWork> f = FrameWorkAt(args);
            if (!f) return std::monostate{};
            return ((*f).*field)();
          }};
}

/// The object scripts see as DotNetOptionsObject: the current default SDK version and the
/// installed frameworks.
std::shared_ptr<TWrenScriptObject> CreateDotNetOptionsScriptObject() {
  auto object = std::make_shared<TWrenScriptObject>();
  object->typeName = TWrenDotNetOptions::StaticClassName();
  object->fields.emplace_back("DefaultSDKVersion", []() -> WrenVariant {
    const std::shared_ptr<IWrenDotNetOptions> options = DotNetOptions();
    return options ? options->GetDefaultSDKVersion() : std::string();
  });
  object->methods.push_back(
      {"GetInstalledFrameWorkCount", [](const std::vector<WrenVariant>&) -> WrenVariant {
         return static_cast<int64_t>(WrenDotNetInfo()->GetInstalledFrameWorkCount());
       }});
  object->methods.push_back(
      FrameWorkField("FrameWorkVersion", &IWrenDotNetFrameWork::GetFrameWorkVersion));
  object->methods.push_back(FrameWorkField("SDKVersion", &IWrenDotNetFrameWork::GetSDKVersion));
  object->methods.push_back(
      FrameWorkField("FrameWorkLocation", &IWrenDotNetFrameWork::GetFrameWorkLocation));
  object->methods.push_back(FrameWorkField("SDKLocation", &IWrenDotNetFrameWork::GetSDKLocation));
  return object;
}

}  // namespace

TWrenDotNetOptions::TWrenDotNetOptions() {
  const std::shared_ptr<IWrenDotNetInfo> info = WrenDotNetInfo();
  const int32_t count = info->GetInstalledFrameWorkCount();
  if (count > 0) defaultSDKVersion_ = info->GetFrameWork(count - 1)->GetSDKVersion();
}

void TWrenDotNetOptions::LoadOptions(IWrenOptionsReader& reader) {
  defaultSDKVersion_ = reader.ReadString("DefaultSDKVersion", "");
}

void TWrenDotNetOptions::SaveOptions(IWrenOptionsWriter& writer) {
  writer.WriteString("DefaultSDKVersion", defaultSDKVersion_);
}

void TWrenDotNetOptions::SetDefaultSDKVersion(const std::string& version) {
  if (version == defaultSDKVersion_) return;
  defaultSDKVersion_ = version;
  SetModified(true);
}

void RegisterOptions(bool designTime) {
  const TWrenOptionsClass optionsClass = OptionsClassOf<TWrenDotNetOptions>();
  WrenOptionsServices().RegisterOptions(optionsClass, "DOTNETOPT");
  WrenScriptingServices().RegisterObject("DotNetOptionsObject", CreateDotNetOptionsScriptObject);
  if (designTime)
    WrenOptionsServices().RegisterOptionsPages(optionsClass, {FrameClassOf<TDotNetOptionsFrame>()});
}

std::shared_ptr<IWrenDotNetOptions> DotNetOptions() {
  // Every .NET action asks when it is made, thousands of times for a big project: the host's
  // instance is looked up once and remembered for as long as the host keeps it. Options
  // registered anew are a new instance, looked up again once the old one is gone.
  static std::mutex mutex;  // actions may be made on the editor's threads
  static std::weak_ptr<TWrenDotNetOptions> known;
  const std::lock_guard<std::mutex> lock(mutex);
  if (std::shared_ptr<TWrenDotNetOptions> options = known.lock()) return options;
  std::shared_ptr<TWrenDotNetOptions> options =
      std::dynamic_pointer_cast<TWrenDotNetOptions>(WrenOptionsServices().FindOptions(
          TWrenDotNetOptions::kOptionsName, TWrenDotNetOptions::kOptionsCategory));
  known = options;
  return options;
}

}  // namespace wren
