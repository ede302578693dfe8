// Fuzzes the COM reference fix over a project file: the first byte picks the project type, the
// rest is the file. The registry knows the class the step looks for, so a file with the reference
// goes all the way to the rewrite; any other file ends the step with a message, never a crash.
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz_temp.h"
#include "runtime/WrenRegistryHive.h"
#include "runtime/WrenStepHost.h"
#include "sdktools/WrenDotNetComRefAction.h"

namespace {

const char kRegistry[] = R"(Windows Registry Editor Version 5.00

[HKEY_CLASSES_ROOT\Fuzz.Sheet\Clsid]
@="{6B7E3A10-4C2D-4F1E-9A55-0C3D2E1F4A01}"

[HKEY_CLASSES_ROOT\CLSID\{6B7E3A10-4C2D-4F1E-9A55-0C3D2E1F4A01}\TypeLib]
@="{A1B2C3D4-1111-4E5F-8A9B-00C04FB1E2D3}"

[HKEY_CLASSES_ROOT\TypeLib\{A1B2C3D4-1111-4E5F-8A9B-00C04FB1E2D3}\2.b]
@="Fuzz Sheet Library"
)";

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  static const bool registry = [] {
    std::string error;
    wren::SetWrenRegistry(wren::ParseRegistryText(kRegistry, "fuzz.reg", error));
    return true;
  }();
  (void)registry;
  static const char* const extensions[] = {".csproj", ".vbproj", ".vjsproj", ".CSPROJ"};
  const std::string path = wren::fuzz::WriteScratch(
      std::string("Fuzz") + extensions[data[0] % 4],
      std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
  wren::TWrenStepHost host;
  host.SetLogSink([](wren::TWrenLogStream, const std::string&) {});
  wren::TWrenDotNetComReferenceFixAction action;
  action.ProgID = "Fuzz.Sheet";
  action.ReferenceName = "FuzzSheet";
  action.ProjectFile = path;
  action.SetHost(&host);
  try {
    (void)action.Execute();
  } catch (const wren::EConvertError&) {
    // a version key that is not hexadecimal: the host ends the step with the message
  }
  return 0;
}
