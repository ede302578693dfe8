#include "WrenFiles.h"

#include <cctype>
#include <cstdlib>
#include <string_view>

namespace wren {

namespace {

// The length of the UTF-8 character at i: its lead byte and the continuation bytes after it, so
// that '?' in a mask stands for one character, not one byte.
size_t CharLength(std::string_view text, size_t i) {
  size_t n = 1;
  while (i + n < text.size() && (static_cast<unsigned char>(text[i + n]) & 0xC0) == 0x80) ++n;
  return n;
}

char Fold(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool SameChar(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (Fold(a[i]) != Fold(b[i])) return false;
  return true;
}

// The mask character at m is the single byte c (not the lead of a longer sequence).
bool IsMaskChar(std::string_view mask, size_t m, size_t length, char c) {
  return length == 1 && mask[m] == c;
}

// Plain wildcard match, character by character in place; on a mismatch after a '*' the star takes
// one more character.
bool Match(std::string_view name, std::string_view mask) {
  size_t n = 0, m = 0;
  size_t starMask = std::string_view::npos, starName = 0;
  while (n < name.size()) {
    const size_t maskLength = m < mask.size() ? CharLength(mask, m) : 0;
    if (m < mask.size() && IsMaskChar(mask, m, maskLength, '*')) {
      starMask = m++;
      starName = n;
      continue;
    }
    const size_t nameLength = CharLength(name, n);
    if (m < mask.size() && (IsMaskChar(mask, m, maskLength, '?') ||
                            SameChar(mask.substr(m, maskLength), name.substr(n, nameLength)))) {
      m += maskLength;
      n += nameLength;
    } else if (starMask != std::string_view::npos) {
      m = starMask + 1;
      starName += CharLength(name, starName);
      n = starName;
    } else {
      return false;
    }
  }
  while (m < mask.size() && IsMaskChar(mask, m, CharLength(mask, m), '*')) ++m;
  return m == mask.size();
}

}  // namespace

namespace {

// A mask of one star and plain text after it ("*.cs"), the text starting with an ASCII
// character: it matches the names that end with that text, case aside.
bool IsStarSuffix(std::string_view mask) {
  if (mask.size() < 2 || mask[0] != '*' || static_cast<unsigned char>(mask[1]) >= 0x80)
    return false;
  return mask.find_first_of("*?", 1) == std::string_view::npos;
}

bool EndsWithFolded(std::string_view name, std::string_view suffix) {
  if (name.size() < suffix.size()) return false;
  const size_t at = name.size() - suffix.size();
  for (size_t i = 0; i < suffix.size(); ++i)
    if (Fold(name[at + i]) != Fold(suffix[i])) return false;
  return true;
}

}  // namespace

bool MatchesMask(std::string_view name, std::string_view mask) {
  // The masks of a plain listing take every name ("*.*" too: names without a dot count).
  if (mask == "*" || mask == "*.*") return true;
  // The usual selection: no backtracking needed, the suffix starts on a character boundary.
  if (IsStarSuffix(mask)) return EndsWithFolded(name, mask.substr(1));
  if (Match(name, mask)) return true;
  // As on Windows, "x.*" also stands for names that have no extension at all ("v*.*" finds "v4").
  if (mask.size() >= 2 && mask.substr(mask.size() - 2) == ".*" &&
      name.find('.') == std::string_view::npos)
    return Match(name, mask.substr(0, mask.size() - 2));
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
