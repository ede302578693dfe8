#include "dotnet/WrenDotNetFrameWorkAPI.h"

#include <mutex>

#include "dotnet/WrenDotNetFrameWorkImpl.h"

namespace wren {
namespace {

std::mutex singletonLock;
std::shared_ptr<IWrenDotNetInfo> singleton;

}  // namespace

std::shared_ptr<IWrenDotNetInfo> WrenDotNetInfo() {
  std::lock_guard<std::mutex> guard(singletonLock);
  if (!singleton) singleton = std::make_shared<TWrenDotNetInfo>();
  return singleton;
}

void ReleaseWrenDotNetInfo() {
  std::lock_guard<std::mutex> guard(singletonLock);
  singleton.reset();
}

}  // namespace wren
