#include "tools/WrenXenoCodeOptions.h"

namespace wren {

std::shared_ptr<IWrenToolOptions> XenoCodeOptions() {
  return FindToolOptions(TWrenXenoCodeOptions::kOptionsName,
                         TWrenXenoCodeOptions::kOptionsCategory);
}

}  // namespace wren
