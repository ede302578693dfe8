// Fuzzes the build-project loader and saver: any bytes give a project or an error, never a crash,
// and a loaded project saves again.
#include <cstddef>
#include <cstdint>
#include <string>

#include "WrenRegister.h"
#include "runtime/WrenActionRegistry.h"
#include "runtime/WrenProject.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool registered = (WrenRegister(false), true);
  (void)registered;
  const std::string text(reinterpret_cast<const char*>(data), size);
  wren::TWrenProject project;
  wren::TWrenProjectError error;
  if (project.LoadFromText(text, "fuzz.mbproj", wren::CreateRegisteredAction, error))
    (void)project.SaveToText();
  return 0;
}
