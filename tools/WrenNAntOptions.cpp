#include "tools/WrenNAntOptions.h"

namespace wren {

void TWrenNAntOptions::LoadOptions(IWrenOptionsReader& reader) {
  location_ = reader.ReadString(kLocationValue, "");
}

void TWrenNAntOptions::SaveOptions(IWrenOptionsWriter& writer) {
  writer.WriteString(kLocationValue, location_);
}

void TWrenNAntOptions::SetNAntLocation(const std::string& location) {
  if (location == location_) return;
  location_ = location;
  SetModified(true);
}

std::shared_ptr<IWrenNAntOptions> NAntOptions() {
  return std::dynamic_pointer_cast<TWrenNAntOptions>(WrenOptionsServices().FindOptions(
      TWrenNAntOptions::kOptionsName, TWrenNAntOptions::kOptionsCategory));
}

}  // namespace wren
