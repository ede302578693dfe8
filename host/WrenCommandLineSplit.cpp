// Turning a Windows command-line text into the argv a program started from it would see.
#include "WrenProcess.h"

#include <fstream>

namespace wren {

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

}  // namespace

// The rules are those of the C runtime's startup code for the arguments after the program name,
// so a tool started on POSIX gets exactly what it would get on Windows.
std::vector<std::string> SplitCommandLine(const std::string& text) {
  std::vector<std::string> args;
  const size_t size = text.size();
  size_t i = 0;
  for (;;) {
    while (i < size && IsBlank(text[i])) ++i;
    if (i >= size) break;

    std::string arg;
    bool quoted = false;
    for (;;) {
      size_t backslashes = 0;
      while (i < size && text[i] == '\\') {
        ++backslashes;
        ++i;
      }
      if (i < size && text[i] == '"') {
        arg.append(backslashes / 2, '\\');
        if (backslashes % 2 == 1) {
          arg += '"';  // an escaped quote
        } else if (quoted && i + 1 < size && text[i + 1] == '"') {
          arg += '"';  // "" inside quotes: a literal quote, and the quoted part goes on
          ++i;
        } else {
          quoted = !quoted;
        }
        ++i;
        continue;
      }
      // Backslashes not followed by a quote are plain characters.
      arg.append(backslashes, '\\');
      if (i >= size || (!quoted && IsBlank(text[i]))) break;
      // The plain characters up to the next one that matters, in one go.
      size_t end = i + 1;
      while (end < size && text[end] != '\\' && text[end] != '"' && (quoted || !IsBlank(text[end])))
        ++end;
      arg.append(text, i, end - i);
      i = end;
    }
    args.push_back(std::move(arg));
  }
  return args;
}

bool IsManagedExecutable(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  char head[2] = {};
  if (!in.read(head, 2)) return false;
  return head[0] == 'M' && head[1] == 'Z';
}

}  // namespace wren
