// `marrowby setup-mono`: a framework, an SDK and a registry hive made from the local Mono.
#include <nlohmann/json.hpp>

#include "Commands.h"
#include "WrenBuildReporters.h"
#include "runtime/WrenMonoSetup.h"
#include "runtime/WrenOptionsStore.h"

namespace wren {

int CmdSetupMono(TCliContext& ctx, const std::string& dir) {
  const std::string target = dir.empty() ? DefaultMonoSetupDir() : dir;
  TMonoSetupResult result;
  std::string error;
  if (!SetupMono(target, "", result, error)) {
    *ctx.err << "marrowby: setup-mono: " << error << "\n";
    return kExitFailed;
  }
  // The NUnit action finds the console runner through the NUnit options.
  if (!result.nunitConsole.empty()) {
    TWrenOptionsStore& store = WrenOptionsStore();
    bool saved =
        store.Load(ctx.optionsFile.empty() ? DefaultOptionsPath() : ctx.optionsFile, error);
    if (saved) {
      store.Set("NUnit", "NUnitLocation", result.nunitConsole);
      saved = store.Save(error);
    }
    if (!saved) {
      *ctx.err << "marrowby: setup-mono: " << error << "\n";
      return kExitFailed;
    }
  }

  if (ctx.json) {
    *ctx.out << JsonText(nlohmann::json{{"hiveFile", result.hiveFile},
                               {"frameworkRoot", result.frameworkRoot},
                               {"sdkRoot", result.sdkRoot},
                               {"nunitConsole", result.nunitConsole},
                               {"notes", result.notes}},
                    -1)
             << "\n";
    return kExitOk;
  }
  *ctx.out << "Registry hive: " << result.hiveFile << "\n"
           << "Framework:     " << result.frameworkRoot << "v4.0.30319\n"
           << "SDK:           " << result.sdkRoot << "Bin\n"
           << "NUnit console: "
           << (result.nunitConsole.empty() ? "(not found)" : result.nunitConsole) << "\n";
  for (const std::string& note : result.notes) *ctx.out << "Note: " << note << "\n";
  *ctx.out << "Use it with: marrowby --registry " << result.hiveFile << " ...\n";
  return kExitOk;
}

}  // namespace wren
