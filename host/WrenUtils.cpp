#include "WrenUtils.h"

#include <cctype>
#include <cstdlib>
#include <vector>

#include "WrenFiles.h"
#include "WrenPluginAPI.h"
#include "WrenTextDecode.h"

namespace wren {

namespace {

char FoldChar(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool IsDelimiter(char c) { return c == '/' || c == '\\'; }

// Index of the last '/' or '\\', npos when none.
size_t LastDelimiter(const std::string& path) { return path.find_last_of("/\\"); }

bool IsBlank(char c) { return static_cast<unsigned char>(c) <= ' '; }

}  // namespace

std::string DoubleQuoteString(const std::string& text, bool skipIfQuoted) {
  if (skipIfQuoted && text.size() >= 2 && text.front() == '"' && text.back() == '"') return text;
  return '"' + text + '"';
}

std::string StripQuotes(const std::string& text) {
  if (text.size() >= 2 && (text.front() == '"' || text.front() == '\'') && text.back() == text.front())
    return text.substr(1, text.size() - 2);
  return text;
}

std::string ExpandRelativePath(const std::string& baseDir, const std::string& path) {
  // Absolute: rooted ("/x", "\\server\share") or a drive path ("C:\x", "C:/x").
  auto isAbsolute = [](const std::string& p) {
    if (!p.empty() && IsDelimiter(p[0])) return true;
    return p.size() >= 3 && std::isalpha(static_cast<unsigned char>(p[0])) && p[1] == ':' &&
           IsDelimiter(p[2]);
  };
  if (isAbsolute(path)) return path;

  std::string joined = baseDir;
  if (!joined.empty() && !path.empty() && !IsDelimiter(joined.back())) joined += PathDelim;
  joined += path;

  // Keep the root as written; normalise the segments after it.
  std::string root;
  size_t start = 0;
  if (joined.size() >= 2 && std::isalpha(static_cast<unsigned char>(joined[0])) && joined[1] == ':') {
    root = joined.substr(0, 2);
    start = 2;
  }
  while (start < joined.size() && IsDelimiter(joined[start])) root += joined[start++];
  const bool rooted = !root.empty();

  std::vector<std::string> segments;
  size_t pos = start;
  while (pos <= joined.size()) {
    size_t end = joined.find_first_of("/\\", pos);
    if (end == std::string::npos) end = joined.size();
    std::string segment = joined.substr(pos, end - pos);
    if (segment == "..") {
      if (!segments.empty() && segments.back() != "..")
        segments.pop_back();
      else if (!rooted)
        segments.push_back(segment);  // a relative base cannot climb further; keep it
    } else if (!segment.empty() && segment != ".") {
      segments.push_back(segment);
    }
    pos = end + 1;
  }

  std::string result = root;
  for (size_t i = 0; i < segments.size(); ++i) {
    if (i > 0) result += PathDelim;
    result += segments[i];
  }
  if (!segments.empty() && !path.empty() && IsDelimiter(path.back())) result += PathDelim;
  return result;
}

bool LoadUnicodeFile(const std::string& fileName, TStrings& lines) {
  std::string bytes, error;
  if (!ReadFileBytes(fileName, bytes, error)) return false;
  const std::string text = DecodeTextBytes(bytes);
  lines.clear();
  size_t start = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\r' && text[i] != '\n') continue;
    lines.push_back(text.substr(start, i - start));
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    start = i + 1;
  }
  if (start < text.size()) lines.push_back(text.substr(start));
  return true;
}

std::string CodePageToString(int codePage) {
  struct Name {
    int codePage;
    const char* name;
  };
  static const Name kNames[] = {
      {37, "IBM EBCDIC US-Canada"},
      {437, "OEM United States"},
      {500, "IBM EBCDIC International"},
      {708, "Arabic ASMO-708"},
      {720, "Arabic DOS"},
      {737, "OEM Greek"},
      {775, "OEM Baltic"},
      {850, "OEM Multilingual Latin 1"},
      {852, "OEM Latin 2"},
      {855, "OEM Cyrillic"},
      {857, "OEM Turkish"},
      {858, "OEM Multilingual Latin 1 + Euro"},
      {860, "OEM Portuguese"},
      {861, "OEM Icelandic"},
      {862, "OEM Hebrew"},
      {863, "OEM French Canadian"},
      {864, "OEM Arabic"},
      {865, "OEM Nordic"},
      {866, "OEM Russian"},
      {869, "OEM Modern Greek"},
      {874, "ANSI/OEM Thai"},
      {932, "ANSI/OEM Japanese Shift-JIS"},
      {936, "ANSI/OEM Simplified Chinese GBK"},
      {949, "ANSI/OEM Korean"},
      {950, "ANSI/OEM Traditional Chinese Big5"},
      {1200, "Unicode UTF-16LE"},
      {1201, "Unicode UTF-16BE"},
      {1250, "ANSI Central European"},
      {1251, "ANSI Cyrillic"},
      {1252, "ANSI Latin 1"},
      {1253, "ANSI Greek"},
      {1254, "ANSI Turkish"},
      {1255, "ANSI Hebrew"},
      {1256, "ANSI Arabic"},
      {1257, "ANSI Baltic"},
      {1258, "ANSI/OEM Vietnamese"},
      {10000, "MAC Roman"},
      {12000, "Unicode UTF-32LE"},
      {12001, "Unicode UTF-32BE"},
      {20127, "US-ASCII"},
      {20866, "Russian KOI8-R"},
      {21866, "Ukrainian KOI8-U"},
      {28591, "ISO 8859-1 Latin 1"},
      {28592, "ISO 8859-2 Central European"},
      {28595, "ISO 8859-5 Cyrillic"},
      {28597, "ISO 8859-7 Greek"},
      {28599, "ISO 8859-9 Turkish"},
      {28605, "ISO 8859-15 Latin 9"},
      {50220, "ISO 2022 Japanese"},
      {51932, "EUC Japanese"},
      {51949, "EUC Korean"},
      {54936, "GB18030 Simplified Chinese"},
      {65000, "UTF-7"},
      {65001, "UTF-8"},
  };
  for (const Name& n : kNames)
    if (n.codePage == codePage) return std::to_string(codePage) + " (" + n.name + ")";
  return std::to_string(codePage);
}

std::string GetWinDirectory() {
  const char* dir = std::getenv("MARROWBY_WINDIR");
  return dir ? dir : "";
}

std::string GetSysDirectory() {
  const char* dir = std::getenv("MARROWBY_SYSDIR");
  return dir ? dir : "";
}

bool WrenBrowseForFile(const std::string& title, const std::string& filter, std::string& fileName) {
  return WrenDesignApplicationServices().BrowseForFile(title, filter, fileName);
}

bool WrenBrowseForDirectory(const std::string& title, std::string& directory) {
  return WrenDesignApplicationServices().BrowseForDirectory(title, directory);
}

std::string UpperCase(const std::string& text) {
  std::string out = text;
  for (char& c : out)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return out;
}

std::string LowerCase(const std::string& text) {
  std::string out = text;
  for (char& c : out) c = FoldChar(c);
  return out;
}

bool SameText(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  // Most names compared differ early or are spelt alike: a byte is folded only where they differ.
  for (size_t i = 0; i < a.size(); ++i)
    if (a[i] != b[i] && FoldChar(a[i]) != FoldChar(b[i])) return false;
  return true;
}

std::string Trim(const std::string& text) { return std::string(TrimView(text)); }

std::string TrimLeft(const std::string& text) {
  size_t i = 0;
  while (i < text.size() && IsBlank(text[i])) ++i;
  return text.substr(i);
}

std::string TrimRight(const std::string& text) {
  size_t n = text.size();
  while (n > 0 && IsBlank(text[n - 1])) --n;
  return text.substr(0, n);
}

size_t FindText(const std::string& text, const std::string& needle) {
  if (needle.size() > text.size()) return std::string::npos;
  for (size_t i = 0; i + needle.size() <= text.size(); ++i) {
    size_t j = 0;
    while (j < needle.size() && FoldChar(text[i + j]) == FoldChar(needle[j])) ++j;
    if (j == needle.size()) return i;
  }
  return std::string::npos;
}

// An empty path gives the delimiter alone, as the classic run-time library does.
std::string IncludeTrailingPathDelimiter(const std::string& path) {
  if (!path.empty() && IsDelimiter(path.back())) return path;
  return path + PathDelim;
}

std::string ExcludeTrailingPathDelimiter(const std::string& path) {
  if (!path.empty() && IsDelimiter(path.back())) return path.substr(0, path.size() - 1);
  return path;
}

std::string ExtractFilePath(const std::string& path) {
  size_t d = LastDelimiter(path);
  return d == std::string::npos ? "" : path.substr(0, d + 1);
}

std::string ExtractFileName(const std::string& path) {
  size_t d = LastDelimiter(path);
  return d == std::string::npos ? path : path.substr(d + 1);
}

std::string ExtractFileExt(const std::string& path) {
  size_t dot = path.find_last_of("./\\");
  if (dot == std::string::npos || path[dot] != '.') return "";
  return path.substr(dot);
}

std::string ChangeFileExt(const std::string& path, const std::string& ext) {
  size_t dot = path.find_last_of("./\\");
  if (dot == std::string::npos || path[dot] != '.') return path + ext;
  return path.substr(0, dot) + ext;
}

std::string NameOfLine(const std::string& line) { return line.substr(0, line.find('=')); }

std::string ValueOfLine(const std::string& line) {
  size_t eq = line.find('=');
  return eq == std::string::npos ? "" : line.substr(eq + 1);
}

std::string ValueOfName(const TStrings& lines, const std::string& name) {
  int i = IndexOfName(lines, name);
  return i < 0 ? "" : ValueOfLine(lines[i]);
}

int IndexOfName(const TStrings& lines, const std::string& name) {
  for (size_t i = 0; i < lines.size(); ++i)
    if (SameText(NameOfLine(lines[i]), name)) return static_cast<int>(i);
  return -1;
}

std::string EscapeXml(const std::string& text, char quote) {
  const bool attribute = quote != '\0';
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    switch (c) {
      case '&': out += "&amp;"; break;
      case '<': out += "&lt;"; break;
      case '>': out += "&gt;"; break;
      case '\t': out += attribute ? "&#9;" : "\t"; break;
      case '\n': out += attribute ? "&#10;" : "\n"; break;
      case '\r': out += attribute ? "&#13;" : "\r"; break;
      case '"': out += quote == '"' ? "&quot;" : "\""; break;
      case '\'': out += quote == '\'' ? "&apos;" : "'"; break;
      default: out += c;
    }
  }
  return out;
}

}  // namespace wren
