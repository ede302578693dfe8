// Host utilities the package uses: quoting, paths, name=value lists, text files, system folders.
#pragma once

#include <string>
#include <string_view>

#include "WrenTypes.h"

namespace wren {

/// The text enclosed in double quotes, without escaping. With skipIfQuoted, a text already
/// enclosed in double quotes is returned as it is.
std::string DoubleQuoteString(const std::string& text, bool skipIfQuoted = false);
/// The text without one pair of enclosing double or single quotes.
std::string StripQuotes(const std::string& text);

/// A relative path made absolute against baseDir; an absolute path is returned as it is.
std::string ExpandRelativePath(const std::string& baseDir, const std::string& path);
/// Loads a text file (UTF-8, 8-bit, or UTF-16 with a byte-order mark) into lines.
bool LoadUnicodeFile(const std::string& fileName, TStrings& lines);
/// The display text of a code page number ("65001 (UTF-8)" style name, or the number).
std::string CodePageToString(int codePage);
/// The Windows and system directories. On POSIX: MARROWBY_WINDIR / MARROWBY_SYSDIR, else empty.
std::string GetWinDirectory();
std::string GetSysDirectory();

bool WrenBrowseForFile(const std::string& title, const std::string& filter, std::string& fileName);
bool WrenBrowseForDirectory(const std::string& title, std::string& directory);

// Text helpers with the semantics Windows tools assume (ASCII case folding).
std::string UpperCase(const std::string& text);
std::string LowerCase(const std::string& text);
/// Equal but for ASCII case.
bool SameText(std::string_view a, std::string_view b);
std::string Trim(const std::string& text);
/// Trim without a copy: the part of text between its leading and trailing control characters
/// and spaces.
inline std::string_view TrimView(std::string_view text) {
  size_t begin = 0, end = text.size();
  while (end > 0 && static_cast<unsigned char>(text[end - 1]) <= ' ') --end;
  while (begin < end && static_cast<unsigned char>(text[begin]) <= ' ') ++begin;
  return text.substr(begin, end - begin);
}
std::string TrimLeft(const std::string& text);
std::string TrimRight(const std::string& text);
/// Position of needle in text, case-insensitive; npos when absent.
size_t FindText(const std::string& text, const std::string& needle);

// Paths. Both '/' and '\\' count as delimiters when taking paths apart.
std::string IncludeTrailingPathDelimiter(const std::string& path);
std::string ExcludeTrailingPathDelimiter(const std::string& path);
/// Everything up to and including the last delimiter ("" when none).
std::string ExtractFilePath(const std::string& path);
std::string ExtractFileName(const std::string& path);
/// The extension with its dot (".cs"), "" when none.
std::string ExtractFileExt(const std::string& path);
std::string ChangeFileExt(const std::string& path, const std::string& ext);

// name=value lines, looked up by name without regard to case.
std::string NameOfLine(const std::string& line);
std::string ValueOfLine(const std::string& line);
/// The value of the first line whose name is `name`; "" when none.
std::string ValueOfName(const TStrings& lines, const std::string& name);
/// Index of the first line whose name is `name`; -1 when none.
int IndexOfName(const TStrings& lines, const std::string& name);

/// Escapes text for XML: markup characters always; inside an attribute (quote set to the
/// enclosing quote) also that quote, and tabs and line breaks, which attribute-value normalisation
/// would otherwise turn into blanks.
std::string EscapeXml(const std::string& text, char quote = '\0');

}  // namespace wren
