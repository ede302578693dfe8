#include "tools/WrenNDocOptions.h"

namespace wren {

std::shared_ptr<IWrenToolOptions> NDocOptions() {
  return FindToolOptions(TWrenNDocOptions::kOptionsName, TWrenNDocOptions::kOptionsCategory);
}

}  // namespace wren
