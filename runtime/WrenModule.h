// Loading a package module and calling its registration entry.
#pragma once

#include <string>
#include <vector>

#include "WrenRegister.h"

namespace wren {

/// A loaded package module. Unloading forgets what it registered first, since the host's records
/// point into the module's code.
class TWrenModule {
 public:
  TWrenModule() = default;
  ~TWrenModule();
  TWrenModule(const TWrenModule&) = delete;
  TWrenModule& operator=(const TWrenModule&) = delete;

  /// Loads the module and finds WrenRegister; false with error naming the file and the cause.
  bool Load(const std::string& path, std::string& error);
  /// Calls WrenRegister(designTime) once.
  void Register(bool designTime);
  void Unload();
  bool Loaded() const { return handle_ != nullptr; }
  const std::string& Path() const { return path_; }

 private:
  void* handle_ = nullptr;
  TWrenRegisterProc entry_ = nullptr;
  std::string path_;
};

/// The libraries a module file names as needed (ELF DT_NEEDED), read from the file without loading
/// it; empty when it names none or is not a file of this platform's format.
std::vector<std::string> ModuleNeededLibraries(const std::string& path);

/// Whether loading the module would bring in the system's shared C++ run-time (libstdc++.so).
bool ModuleNeedsSharedCxxRunTime(const std::string& path);

/// The file name a package module has on this platform ("Wren30DotNetFrameWork.so").
std::string ModuleFileName(const std::string& moduleName);

}  // namespace wren
