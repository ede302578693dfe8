#include "tools/WrenDemeanorOptions.h"

namespace wren {

std::shared_ptr<IWrenToolOptions> DemeanorOptions() {
  return FindToolOptions(TWrenDemeanorOptions::kOptionsName,
                         TWrenDemeanorOptions::kOptionsCategory);
}

}  // namespace wren
