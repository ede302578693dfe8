#include <dlfcn.h>

#include "runtime/WrenActionRegistry.h"
#include "runtime/WrenModule.h"
#include "runtime/WrenOptionsStore.h"

namespace wren {

TWrenModule::~TWrenModule() { Unload(); }

bool TWrenModule::Load(const std::string& path, std::string& error) {
  Unload();
  handle_ = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle_) {
    const char* why = dlerror();
    error = "cannot load package " + path + ": " + (why ? why : "unknown error");
    return false;
  }
  entry_ = reinterpret_cast<TWrenRegisterProc>(dlsym(handle_, "WrenRegister"));
  if (!entry_) {
    error = "package " + path + " does not export WrenRegister";
    dlclose(handle_);
    handle_ = nullptr;
    return false;
  }
  path_ = path;
  return true;
}

void TWrenModule::Register(bool designTime) {
  if (entry_) entry_(designTime);
}

void TWrenModule::Unload() {
  if (!handle_) return;
  ClearRegistrations();
  ClearRegisteredOptions();
  dlclose(handle_);
  handle_ = nullptr;
  entry_ = nullptr;
}

std::string ModuleFileName(const std::string& moduleName) { return moduleName + ".so"; }

}  // namespace wren
