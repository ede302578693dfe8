#include "tools/WrenNUnitOptions.h"

namespace wren {

void TWrenNUnitOptions::LoadOptions(IWrenOptionsReader& reader) {
  location_ = reader.ReadString(kLocationValue, "");
}

void TWrenNUnitOptions::SaveOptions(IWrenOptionsWriter& writer) {
  writer.WriteString(kLocationValue, location_);
}

void TWrenNUnitOptions::SetNUnitLocation(const std::string& location) {
  if (location == location_) return;
  location_ = location;
  SetModified(true);
}

std::shared_ptr<IWrenNUnitOptions> NUnitOptions() {
  return std::dynamic_pointer_cast<TWrenNUnitOptions>(WrenOptionsServices().FindOptions(
      TWrenNUnitOptions::kOptionsName, TWrenNUnitOptions::kOptionsCategory));
}

}  // namespace wren
