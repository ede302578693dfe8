// Fuzzes the Windows command-line splitter: any text splits without a crash, and arguments quoted
// back the way the command-line builder quotes them split to themselves.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "WrenCommandLine.h"
#include "WrenProcess.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::vector<std::string> argv = wren::SplitCommandLine(text);
  // Rebuild the arguments with the always-quote mode; a non-empty text without a double quote, NUL
  // or line break must come back as it was.
  auto builder = wren::CreateCommandLineBuilder();
  std::vector<std::string> expected;
  for (const auto& arg : argv) {
    if (arg.empty() || arg.find_first_of(std::string("\"\0\r\n", 4)) != std::string::npos) continue;
    builder->AddArgument("", arg, 1);
    expected.push_back(arg);
  }
  if (wren::SplitCommandLine(builder->GetCommandLineText()) != expected) std::abort();
  return 0;
}
