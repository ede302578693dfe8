// The user-wide NAnt options: where NAnt is installed.
#pragma once

#include <memory>
#include <string>

#include "WrenOptionsAPI.h"

namespace wren {

/// What the NAnt action asks of its options.
class IWrenNAntOptions {
 public:
  virtual ~IWrenNAntOptions() = default;
  virtual std::string GetNAntLocation() const = 0;
  virtual void SetNAntLocation(const std::string& location) = 0;
};

/// Holds NAntLocation, the full path of "nant.exe".
class TWrenNAntOptions : public TWrenOptionsObject, public IWrenNAntOptions {
 public:
  static constexpr const char* kOptionKey = "NAnt";
  static constexpr const char* kOptionsName = "NAnt";
  static constexpr const char* kOptionsCategory = "Build Tools";
  static constexpr const char* kLocationValue = "NAntLocation";

  static std::string StaticClassName() { return "TWrenNAntOptions"; }
  std::string GetOptionKey() const override { return kOptionKey; }
  std::string GetOptionsName() const override { return kOptionsName; }
  std::string GetOptionsCategory() const override { return kOptionsCategory; }
  void LoadOptions(IWrenOptionsReader& reader) override;
  void SaveOptions(IWrenOptionsWriter& writer) override;

  std::string GetNAntLocation() const override { return location_; }
  void SetNAntLocation(const std::string& location) override;

 private:
  std::string location_;
};

/// The NAnt options the host's options services hold; nullptr when none is registered.
std::shared_ptr<IWrenNAntOptions> NAntOptions();

}  // namespace wren
