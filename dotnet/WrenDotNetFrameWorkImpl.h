// The detection of installed .NET Frameworks and their SDKs from the registry and the file system.
#pragma once

#include <mutex>
#include <vector>

#include "dotnet/WrenDotNetFrameWorkAPI.h"

namespace wren {

/// One installed framework, fixed at construction.
class TWrenDotNetFrameWork : public IWrenDotNetFrameWork {
 public:
  /// sdkRoot gets "Bin" and a delimiter appended unless it is empty.
  TWrenDotNetFrameWork(const std::string& frameWorkVersion, const std::string& sdkRoot,
                       const std::string& sdkVersion, const std::string& frameWorkLocation);

  std::string GetFrameWorkVersion() const override { return frameWorkVersion_; }
  std::string GetSDKVersion() const override { return sdkVersion_; }
  std::string GetFrameWorkLocation() const override { return frameWorkLocation_; }
  std::string GetSDKLocation() const override { return sdkLocation_; }

 private:
  std::string frameWorkVersion_;
  std::string sdkVersion_;
  std::string frameWorkLocation_;
  std::string sdkLocation_;
};

/// The list of installed frameworks, detected by Refresh (which the constructor runs) from the
/// registry the host has configured. Safe to read from several threads.
class TWrenDotNetInfo : public IWrenDotNetInfo {
 public:
  TWrenDotNetInfo();
  ~TWrenDotNetInfo() override;

  /// Detects the frameworks anew; a missing key or InstallRoot leaves the list empty.
  void Refresh();

  int32_t GetInstalledFrameWorkCount() const override;
  std::shared_ptr<IWrenDotNetFrameWork> GetFrameWork(int32_t index) const override;
  std::shared_ptr<IWrenDotNetFrameWork> GetFrameWorkByVersion(
      const std::string& version) const override;
  std::shared_ptr<IWrenDotNetFrameWork> GetFrameWorkBySDKVersion(
      const std::string& version) const override;

 private:
  mutable std::mutex lock_;
  std::vector<std::shared_ptr<IWrenDotNetFrameWork>> list_;
};

}  // namespace wren
