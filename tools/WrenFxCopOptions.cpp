#include "tools/WrenFxCopOptions.h"

namespace wren {

std::shared_ptr<IWrenToolOptions> FxCopOptions() {
  return FindToolOptions(TWrenFxCopOptions::kOptionsName, TWrenFxCopOptions::kOptionsCategory);
}

}  // namespace wren
