// Fuzzes the AssemblyInfo rewriter in each language: the first byte picks the file's extension and
// whether only existing attributes are updated; the rest is the file, rewritten twice (the second
// time over what the first wrote).
#include <cstddef>
#include <cstdint>
#include <string>

#include "assemblyinfo/WrenAssemblyInfoUpdater.h"
#include "fuzz_temp.h"
#include "WrenFiles.h"

namespace {

std::string Rewrite(const std::string& path, bool updateOnly) {
  auto updater = wren::NewAssemblyInfoUpdater(updateOnly);
  updater->AddEntry("AssemblyVersion", "1.2.3.4", true);
  updater->AddEntry("AssemblyTitle", "Fuzz \"title\"", true);
  updater->AddEntry("CLSCompliant", "true", false);
  try {
    updater->ProcessFile(path, false);
  } catch (const std::exception&) {
    return "";  // reported to the user as a failed step
  }
  std::string bytes, error;
  wren::ReadFileBytes(path, bytes, error);
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  static const char* const extensions[] = {".pas", ".dpr", ".dpk", ".cs", ".vb", ".jsl", ".cpp", ".txt"};
  const std::string name = std::string("AssemblyInfo") + extensions[data[0] % 8];
  const bool updateOnly = (data[0] & 0x80) != 0;
  const std::string path =
      wren::fuzz::WriteScratch(name, std::string(reinterpret_cast<const char*>(data) + 1, size - 1));
  if (!Rewrite(path, updateOnly).empty()) (void)Rewrite(path, updateOnly);
  return 0;
}
