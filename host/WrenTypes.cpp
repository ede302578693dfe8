#include "WrenTypes.h"

#include <cstdio>

namespace wren {

std::string VariantToString(const WrenVariant& value) {
  struct Visitor {
    std::string operator()(std::monostate) const { return ""; }
    std::string operator()(bool b) const { return b ? "true" : "false"; }
    std::string operator()(int64_t i) const { return std::to_string(i); }
    std::string operator()(double d) const {
      char buf[64];
      std::snprintf(buf, sizeof buf, "%.15g", d);
      return buf;
    }
    std::string operator()(const std::string& s) const { return s; }
  };
  return std::visit(Visitor{}, value);
}

}  // namespace wren
