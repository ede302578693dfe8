// Test ground of the NUnit and NAnt actions: settings applied through the published properties,
// options registered against a temporary store, and one in-process run of an action through the
// real process runner with the argv recorder standing in for the tool.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "TestProperties.h"
#include "TestSupport.h"
#include "WrenActionAPI.h"
#include "runtime/WrenOptionsStore.h"
#include "runtime/WrenStepHost.h"

namespace wren::test {

/// Property name and value text, as SetPublishedProperty reads it.
using TSettings = std::vector<std::pair<std::string, std::string>>;

inline void ApplyProperties(TCustomWrenAction& action, const TSettings& settings) {
  for (const auto& [name, text] : settings) SetPublishedProperty(action, name, text);
}

/// Collects what Validate reports.
class TReportCollector : public IWrenActionValidationError {
 public:
  void AddError(const std::string& field, const std::string& message) override {
    reports.emplace_back(field, message);
  }
  std::vector<std::pair<std::string, std::string>> reports;
};

/// What one run of an action left behind.
struct TToolRun {
  bool success = false;
  std::vector<std::string> log;  // every line, whatever the stream
  nlohmann::json call;           // the recorder's record; null when no process started

  bool Logged(const std::string& fragment) const {
    return std::any_of(log.begin(), log.end(), [&](const std::string& line) {
      return line.find(fragment) != std::string::npos;
    });
  }
  /// argv[1..] as the tool received them.
  std::vector<std::string> Args() const {
    std::vector<std::string> args;
    if (call.is_null()) return args;
    for (size_t i = 1; i < call["argv"].size(); ++i) args.push_back(call["argv"][i]);
    return args;
  }
};

/// Runs the action in process with a step host holding the variables; toolPath, when not empty,
/// is the recorder whose record is read back (a stale record is removed first).
inline TToolRun RunAction(TCustomWrenAction& action, const std::string& toolPath,
                          const std::map<std::string, std::string>& variables = {}) {
  if (!toolPath.empty()) std::remove((toolPath + ".argv.json").c_str());
  TToolRun run;
  TWrenStepHost host;
  host.SetVariables(variables);
  host.SetLogSink([&](TWrenLogStream, const std::string& text) { run.log.push_back(text); });
  action.SetHost(&host);
  run.success = action.Execute();
  action.SetHost(nullptr);
  if (!toolPath.empty()) run.call = RecordedCall(toolPath);
  return run;
}

/// The value stored under key and name once the modified options are saved to optionsFile and
/// read back into a store of its own; what went wrong instead when saving or reading fails.
inline std::string SavedOption(const std::string& optionsFile, const std::string& key,
                               const std::string& name) {
  std::string error;
  TWrenOptionsStore reread;
  if (!SaveModifiedOptions(error) || !reread.Load(optionsFile, error)) return "not saved: " + error;
  return reread.Get(key, name, "?");
}

/// Options registered for one test against an options file in a temporary folder; the
/// registrations and the store are emptied again at the end.
class TOptionsScope {
 public:
  explicit TOptionsScope(const std::string& optionsFile) {
    ClearRegisteredOptions();
    std::string error;
    EXPECT_TRUE(WrenOptionsStore().Load(optionsFile, error)) << error;
  }
  ~TOptionsScope() {
    ClearRegisteredOptions();
    std::string error;
    WrenOptionsStore().Load("", error);
  }
  TOptionsScope(const TOptionsScope&) = delete;
  TOptionsScope& operator=(const TOptionsScope&) = delete;
};

}  // namespace wren::test
