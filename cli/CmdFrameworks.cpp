// `marrowby frameworks`: what the .NET package detected, through its script object.
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "WrenBuildReporters.h"
#include "runtime/WrenActionRegistry.h"

namespace wren {

namespace {

const TWrenScriptMethod* FindMethod(const TWrenScriptObject& object, const std::string& name) {
  for (const TWrenScriptMethod& m : object.methods)
    if (m.name == name) return &m;
  return nullptr;
}

WrenVariant Call(const TWrenScriptObject& object, const std::string& name,
                 std::vector<WrenVariant> args = {}) {
  const TWrenScriptMethod* method = FindMethod(object, name);
  return method ? method->call(args) : WrenVariant{};
}

std::string Field(const TWrenScriptObject& object, const std::string& name) {
  for (const auto& [fieldName, read] : object.fields)
    if (fieldName == name) return VariantToString(read());
  return "";
}

/// One detected framework as the script object describes it.
struct TFrameWorkRow {
  std::string frameWorkVersion, sdkVersion, frameWorkLocation, sdkLocation;
};

}  // namespace

int CmdFrameworks(TCliContext& ctx) {
  const std::shared_ptr<TWrenScriptObject> object = CreateScriptObject("DotNetOptionsObject");
  if (!object) {
    *ctx.err << "marrowby: no .NET options are registered (is the .NET package loaded?)\n";
    return kExitFailed;
  }

  std::vector<TFrameWorkRow> rows;
  const WrenVariant count = Call(*object, "GetInstalledFrameWorkCount");
  const int64_t n = std::holds_alternative<int64_t>(count) ? std::get<int64_t>(count) : 0;
  for (int64_t i = 0; i < n; ++i) {
    auto text = [&](const char* method) { return VariantToString(Call(*object, method, {i})); };
    rows.push_back({text("FrameWorkVersion"), text("SDKVersion"), text("FrameWorkLocation"),
                    text("SDKLocation")});
  }
  const std::string defaultSDKVersion = Field(*object, "DefaultSDKVersion");

  if (ctx.json) {
    nlohmann::json frameworks = nlohmann::json::array();
    for (const TFrameWorkRow& row : rows)
      frameworks.push_back({{"frameworkVersion", row.frameWorkVersion},
                            {"sdkVersion", row.sdkVersion},
                            {"frameworkLocation", row.frameWorkLocation},
                            {"sdkLocation", row.sdkLocation}});
    *ctx.out << JsonText(nlohmann::json{{"frameworks", frameworks}, {"defaultSdkVersion", defaultSDKVersion}},
                    -1)
             << "\n";
    return kExitOk;
  }

  if (rows.empty()) *ctx.out << "No .NET Framework found.\n";
  for (const TFrameWorkRow& row : rows) {
    *ctx.out << row.frameWorkVersion << " (SDK " << row.sdkVersion << ")\n"
             << "  Framework: " << row.frameWorkLocation << "\n"
             << "  SDK:       " << (row.sdkLocation.empty() ? "(none)" : row.sdkLocation) << "\n";
  }
  *ctx.out << "Default SDK version: " << (defaultSDKVersion.empty() ? "(none)" : defaultSDKVersion)
           << "\n";
  return kExitOk;
}

}  // namespace wren
