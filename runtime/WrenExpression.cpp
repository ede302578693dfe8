#include "WrenExpression.h"

namespace wren {
namespace {

constexpr int kMaxDepth = 32;

bool Expand(const std::string& text, const TVariableLookup& lookup, int depth, std::string& out,
            std::string& error) {
  if (depth > kMaxDepth) {
    error = "variables nest too deeply (does one refer to itself?)";
    return false;
  }
  size_t i = 0;
  while (i < text.size()) {
    const size_t open = text.find('%', i);
    if (open == std::string::npos) {
      out.append(text, i, std::string::npos);
      break;
    }
    out.append(text, i, open - i);
    if (open + 1 < text.size() && text[open + 1] == '%') {
      out += '%';
      i = open + 2;
      continue;
    }
    const size_t close = text.find('%', open + 1);
    if (close == std::string::npos) {
      out.append(text, open, std::string::npos);
      break;
    }
    const std::string name = text.substr(open + 1, close - open - 1);
    std::string value;
    if (!lookup(name, value)) {
      error = "variable %" + name + "% is not defined";
      return false;
    }
    if (!Expand(value, lookup, depth + 1, out, error)) return false;
    i = close + 1;
  }
  return true;
}

}  // namespace

bool ExpandVariables(const std::string& text, const TVariableLookup& lookup, std::string& result,
                     std::string& error) {
  std::string out;
  if (!Expand(text, lookup, 0, out, error)) return false;
  result = std::move(out);
  return true;
}

}  // namespace wren
