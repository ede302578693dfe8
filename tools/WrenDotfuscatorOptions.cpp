#include "tools/WrenDotfuscatorOptions.h"

namespace wren {

std::shared_ptr<IWrenToolOptions> DotfuscatorOptions() {
  return FindToolOptions(TWrenDotfuscatorOptions::kOptionsName,
                         TWrenDotfuscatorOptions::kOptionsCategory);
}

}  // namespace wren
