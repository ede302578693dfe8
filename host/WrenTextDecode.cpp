#include "WrenTextDecode.h"

#include <cstdint>

namespace wren {

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else if (cp < 0x10000) {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (cp >> 18));
    out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

namespace {

std::string FromUtf16(std::string_view bytes, bool bigEndian) {
  std::string out;
  out.reserve(bytes.size());
  auto unit = [&](size_t i) -> uint16_t {
    auto b0 = static_cast<uint8_t>(bytes[i]);
    auto b1 = static_cast<uint8_t>(bytes[i + 1]);
    return bigEndian ? static_cast<uint16_t>(b0 << 8 | b1) : static_cast<uint16_t>(b1 << 8 | b0);
  };
  const size_t n = bytes.size() & ~size_t{1};  // an odd last byte cannot form a unit
  for (size_t i = 0; i < n; i += 2) {
    char32_t u = unit(i);
    if (u >= 0xD800 && u <= 0xDBFF && i + 2 < n) {
      char32_t low = unit(i + 2);
      if (low >= 0xDC00 && low <= 0xDFFF) {
        AppendUtf8(out, 0x10000 + ((u - 0xD800) << 10) + (low - 0xDC00));
        i += 2;
        continue;
      }
    }
    AppendUtf8(out, (u >= 0xD800 && u <= 0xDFFF) ? char32_t{0xFFFD} : u);
  }
  return out;
}

}  // namespace

std::string DecodeTextBytes(std::string_view bytes) {
  if (bytes.substr(0, 3) == "\xEF\xBB\xBF") return std::string(bytes.substr(3));
  if (bytes.substr(0, 2) == "\xFF\xFE") return FromUtf16(bytes.substr(2), false);
  if (bytes.substr(0, 2) == "\xFE\xFF") return FromUtf16(bytes.substr(2), true);
  return std::string(bytes);
}

}  // namespace wren
