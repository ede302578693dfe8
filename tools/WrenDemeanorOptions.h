// The user-wide Demeanor options: where Demeanor.exe is installed.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/WrenToolOptions.h"

namespace wren {

/// Holds DemeanorLocation, the full path of Demeanor.exe. Defaults to a registered Demeanor.exe.
class TWrenDemeanorOptions : public TWrenToolOptions {
 public:
  TWrenDemeanorOptions() : TWrenToolOptions({"Demeanor.exe"}) {}
  static constexpr const char* kOptionKey = "Demeanor";
  static constexpr const char* kOptionsName = "Demeanor";
  static constexpr const char* kOptionsCategory = ".Net Tools";
  static constexpr const char* kLocationValue = "DemeanorLocation";

  static std::string StaticClassName() { return "TWrenDemeanorOptions"; }
  std::string GetOptionKey() const override { return kOptionKey; }
  std::string GetOptionsName() const override { return kOptionsName; }
  std::string GetOptionsCategory() const override { return kOptionsCategory; }

 protected:
  std::string LocationValueName() const override { return kLocationValue; }
};

/// The Demeanor options the host's options services hold; nullptr when none is registered.
std::shared_ptr<IWrenToolOptions> DemeanorOptions();

}  // namespace wren
