#include "WrenUnifiedDiff.h"

#include <algorithm>
#include <vector>

namespace wren {
namespace {

/// Lines with their line ends, so a changed line end shows as a change.
std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    const size_t end = text.find('\n', start);
    const size_t stop = end == std::string::npos ? text.size() : end + 1;
    lines.push_back(text.substr(start, stop - start));
    start = stop;
  }
  return lines;
}

enum class TOp { Keep, Remove, Add };

/// The edit script by longest common subsequence; very large inputs fall back to replacing all.
std::vector<std::pair<TOp, size_t>> EditScript(const std::vector<std::string>& a,
                                               const std::vector<std::string>& b) {
  // Common head and tail cost nothing: AssemblyInfo and project rewrites change a few lines.
  size_t head = 0;
  while (head < a.size() && head < b.size() && a[head] == b[head]) ++head;
  size_t tail = 0;
  while (tail < a.size() - head && tail < b.size() - head &&
         a[a.size() - 1 - tail] == b[b.size() - 1 - tail])
    ++tail;
  const size_t n = a.size() - head - tail, m = b.size() - head - tail;
  std::vector<std::pair<TOp, size_t>> script;
  for (size_t i = 0; i < head; ++i) script.push_back({TOp::Keep, i});
  if (n * m > 16'000'000) {
    for (size_t i = 0; i < n; ++i) script.push_back({TOp::Remove, head + i});
    for (size_t j = 0; j < m; ++j) script.push_back({TOp::Add, head + j});
  } else {
    std::vector<std::vector<unsigned>> lcs(n + 1, std::vector<unsigned>(m + 1, 0));
    for (size_t i = n; i-- > 0;)
      for (size_t j = m; j-- > 0;)
        lcs[i][j] = a[head + i] == b[head + j] ? lcs[i + 1][j + 1] + 1
                                               : std::max(lcs[i + 1][j], lcs[i][j + 1]);
    size_t i = 0, j = 0;
    while (i < n || j < m) {
      if (i < n && j < m && a[head + i] == b[head + j]) {
        script.push_back({TOp::Keep, head + i});
        ++i, ++j;
      } else if (i < n && (j == m || lcs[i + 1][j] >= lcs[i][j + 1])) {
        // Removals before additions, as diff prints them.
        script.push_back({TOp::Remove, head + i++});
      } else {
        script.push_back({TOp::Add, head + j++});
      }
    }
  }
  for (size_t k = 0; k < tail; ++k) script.push_back({TOp::Keep, a.size() - tail + k});
  return script;
}

std::string Range(size_t start, size_t count) {
  // A hunk with no lines on a side names the line before it.
  const size_t first = count == 0 ? start : start + 1;
  return std::to_string(first) + (count == 1 ? "" : "," + std::to_string(count));
}

std::string WithEnd(const std::string& line) {
  return line.empty() || line.back() != '\n' ? line + "\n\\ No newline at end of file\n" : line;
}

}  // namespace

std::string UnifiedDiff(const std::string& name, const std::string& before,
                        const std::string& after, bool beforeExists, bool afterExists) {
  if (before == after && beforeExists == afterExists) return "";
  const std::vector<std::string> a = Lines(before), b = Lines(after);
  const std::vector<std::pair<TOp, size_t>> script = EditScript(a, b);
  std::string out = std::string("--- ") + (beforeExists ? "a/" + name : "/dev/null") + "\n" +
                    "+++ " + (afterExists ? "b/" + name : "/dev/null") + "\n";
  const size_t context = 3;
  size_t k = 0;
  while (k < script.size()) {
    if (script[k].first == TOp::Keep) {
      ++k;
      continue;
    }
    // A hunk: from context lines before this change to context lines after the last change
    // that is within 2*context of the next.
    size_t start = k >= context ? k - context : 0;
    size_t end = k;
    for (size_t keeps = 0; end < script.size(); ++end) {
      if (script[end].first == TOp::Keep) {
        if (++keeps > 2 * context) break;
      } else {
        keeps = 0;
      }
    }
    // Trim trailing context to three lines.
    size_t last = end;
    while (last > k && script[last - 1].first == TOp::Keep) --last;
    end = std::min(script.size(), last + context);
    size_t aStart = 0, bStart = 0, aCount = 0, bCount = 0;
    // Line numbers before the hunk.
    for (size_t i = 0; i < start; ++i) {
      if (script[i].first != TOp::Add) ++aStart;
      if (script[i].first != TOp::Remove) ++bStart;
    }
    std::string body;
    for (size_t i = start; i < end; ++i) {
      const auto [op, index] = script[i];
      if (op == TOp::Keep) {
        body += " " + WithEnd(a[index]);
        ++aCount, ++bCount;
      } else if (op == TOp::Remove) {
        body += "-" + WithEnd(a[index]);
        ++aCount;
      } else {
        body += "+" + WithEnd(b[index]);
        ++bCount;
      }
    }
    out += "@@ -" + Range(aStart, aCount) + " +" + Range(bStart, bCount) + " @@\n" + body;
    k = end;
  }
  return out;
}

}  // namespace wren
