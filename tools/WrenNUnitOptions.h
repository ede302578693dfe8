// The user-wide NUnit options: where the NUnit console runner is installed.
#pragma once

#include <memory>
#include <string>

#include "WrenOptionsAPI.h"

namespace wren {

/// What the NUnit action asks of its options.
class IWrenNUnitOptions {
 public:
  virtual ~IWrenNUnitOptions() = default;
  virtual std::string GetNUnitLocation() const = 0;
  virtual void SetNUnitLocation(const std::string& location) = 0;
};

/// Holds NUnitLocation, the full path of the console runner ("nunit-console.exe").
class TWrenNUnitOptions : public TWrenOptionsObject, public IWrenNUnitOptions {
 public:
  static constexpr const char* kOptionKey = "NUnit";
  static constexpr const char* kOptionsName = "NUnit";
  static constexpr const char* kOptionsCategory = "Other";
  static constexpr const char* kLocationValue = "NUnitLocation";

  static std::string StaticClassName() { return "TWrenNUnitOptions"; }
  std::string GetOptionKey() const override { return kOptionKey; }
  std::string GetOptionsName() const override { return kOptionsName; }
  std::string GetOptionsCategory() const override { return kOptionsCategory; }
  void LoadOptions(IWrenOptionsReader& reader) override;
  void SaveOptions(IWrenOptionsWriter& writer) override;

  std::string GetNUnitLocation() const override { return location_; }
  void SetNUnitLocation(const std::string& location) override;

 private:
  std::string location_;
};

/// The NUnit options the host's options services hold; nullptr when none is registered.
std::shared_ptr<IWrenNUnitOptions> NUnitOptions();

}  // namespace wren
