// The installed .NET Frameworks as the package sees them, and the process-wide detection object.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace wren {

/// One installed framework directory with the SDK that belongs to it. Immutable.
class IWrenDotNetFrameWork {
 public:
  static constexpr const char* GUID = "{925dd296-9951-4ccb-a63e-ede55ac0fbc9}";
  virtual ~IWrenDotNetFrameWork() = default;
  /// The directory name as found on disk ("v1.1.4322").
  virtual std::string GetFrameWorkVersion() const = 0;
  /// The first four characters of the directory name ("v1.1").
  virtual std::string GetSDKVersion() const = 0;
  /// Install root joined with the directory name, no trailing delimiter.
  virtual std::string GetFrameWorkLocation() const = 0;
  /// The SDK root with "Bin" and a delimiter appended; "" when no SDK root is known.
  virtual std::string GetSDKLocation() const = 0;
};

/// The frameworks found on this machine, in detection order.
class IWrenDotNetInfo {
 public:
  static constexpr const char* GUID = "{ed783b2f-6159-4293-b587-c14bbd4f05f9}";
  virtual ~IWrenDotNetInfo() = default;
  virtual int32_t GetInstalledFrameWorkCount() const = 0;
  /// The framework at a 0-based index; nullptr out of range.
  virtual std::shared_ptr<IWrenDotNetFrameWork> GetFrameWork(int32_t index) const = 0;
  /// The first framework whose FrameWorkVersion equals version (case-insensitive); nullptr if none.
  virtual std::shared_ptr<IWrenDotNetFrameWork> GetFrameWorkByVersion(
      const std::string& version) const = 0;
  /// The first framework whose SDKVersion equals version (case-insensitive); nullptr if none.
  virtual std::shared_ptr<IWrenDotNetFrameWork> GetFrameWorkBySDKVersion(
      const std::string& version) const = 0;
};

/// Marks the managed compiler actions; the compiler room gives it its operations.
class IWrenManagedCompiler {
 public:
  static constexpr const char* GUID = "{e1e619d3-3232-463c-807b-e51f0f3de83c}";
  virtual ~IWrenManagedCompiler() = default;
};

/// The process-wide detection object, made (and detected) on first use. Never refreshed again
/// until ReleaseWrenDotNetInfo drops it.
std::shared_ptr<IWrenDotNetInfo> WrenDotNetInfo();

/// Drops the process-wide detection object (module unload); the next WrenDotNetInfo() detects anew.
void ReleaseWrenDotNetInfo();

}  // namespace wren
