#include "WrenPluginAPI.h"

namespace wren {
namespace {

/// A host without a user interface: texts are left as they are and dialogs are never accepted.
class THeadlessDesignServices : public IWrenDesignApplicationServices {
 public:
  std::string ExpandText(const std::string& text) override { return text; }
  bool BrowseForFile(const std::string&, const std::string&, std::string&) override { return false; }
  bool BrowseForDirectory(const std::string&, std::string&) override { return false; }
};

IWrenDesignApplicationServices* installed = nullptr;

}  // namespace

IWrenDesignApplicationServices& WrenDesignApplicationServices() {
  static THeadlessDesignServices headless;
  return installed ? *installed : headless;
}

void SetWrenDesignApplicationServices(IWrenDesignApplicationServices* services) {
  installed = services;
}

}  // namespace wren
