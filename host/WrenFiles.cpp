#include "WrenFiles.h"

#include <cctype>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace wren {

namespace {

// The characters of UTF-8 text: each a lead byte with its continuation bytes, so that '?' in a
// mask stands for one character, not one byte.
std::vector<std::string_view> Characters(std::string_view text) {
  std::vector<std::string_view> chars;
  size_t i = 0;
  while (i < text.size()) {
    size_t n = 1;
    while (i + n < text.size() && (static_cast<unsigned char>(text[i + n]) & 0xC0) == 0x80) ++n;
    chars.push_back(text.substr(i, n));
    i += n;
  }
  return chars;
}

char Fold(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool SameChar(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (Fold(a[i]) != Fold(b[i])) return false;
  return true;
}

// Plain wildcard match; on a mismatch after a '*' the star takes one more character.
bool Match(std::string_view nameText, std::string_view maskText) {
  const auto name = Characters(nameText);
  const auto mask = Characters(maskText);
  size_t n = 0, m = 0;
  size_t starMask = std::string_view::npos, starName = 0;
  while (n < name.size()) {
    if (m < mask.size() && mask[m] == "*") {
      starMask = m++;
      starName = n;
    } else if (m < mask.size() && (mask[m] == "?" || SameChar(mask[m], name[n]))) {
      ++m;
      ++n;
    } else if (starMask != std::string_view::npos) {
      m = starMask + 1;
      n = ++starName;
    } else {
      return false;
    }
  }
  while (m < mask.size() && mask[m] == "*") ++m;
  return m == mask.size();
}

}  // namespace

bool MatchesMask(const std::string& name, const std::string& mask) {
  if (Match(name, mask)) return true;
  // As on Windows, "x.*" also stands for names that have no extension at all ("v*.*" finds "v4").
  const std::string_view m(mask);
  if (m.size() >= 2 && m.substr(m.size() - 2) == ".*" && name.find('.') == std::string::npos)
    return Match(name, m.substr(0, m.size() - 2));
  return false;
}

namespace {

bool AllDigits(std::string_view text) {
  if (text.empty() || text.size() > 18) return false;
  for (char c : text)
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
  return true;
}

}  // namespace

std::optional<TWrenScratchName> ParseScratchFileName(const std::string& name) {
  if (name.size() < 2 || name[0] != '.') return std::nullopt;
  // Tail: "<pid>-<n>-<r>", read from the end.
  const std::string_view text(name);
  const size_t dash2 = text.rfind('-');
  if (dash2 == std::string_view::npos || !AllDigits(text.substr(dash2 + 1))) return std::nullopt;
  const size_t dash1 = text.rfind('-', dash2 - 1);
  if (dash1 == std::string_view::npos || !AllDigits(text.substr(dash1 + 1, dash2 - dash1 - 1)))
    return std::nullopt;
  const size_t tag = text.rfind('.', dash1);
  if (tag == std::string_view::npos || tag == 0 || dash1 < tag + 4) return std::nullopt;
  const std::string_view kind = text.substr(tag + 1, 3);
  const std::string_view pid = text.substr(tag + 4, dash1 - tag - 4);
  if ((kind != "tmp" && kind != "jrn") || !AllDigits(pid)) return std::nullopt;
  TWrenScratchName parsed;
  parsed.journal = kind == "jrn";
  parsed.pid = std::strtol(std::string(pid).c_str(), nullptr, 10);
  return parsed;
}

}  // namespace wren
