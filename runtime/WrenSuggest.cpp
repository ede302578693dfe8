#include "WrenSuggest.h"

#include <algorithm>
#include <cctype>

namespace wren {
namespace {

char Lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

// Optimal string alignment distance: a swapped pair of letters counts as one edit, the most common
// typo in names ("descripton", "enalbed").
size_t Distance(const std::string& a, const std::string& b) {
  const size_t n = a.size(), m = b.size();
  std::vector<std::vector<size_t>> d(n + 1, std::vector<size_t>(m + 1));
  for (size_t i = 0; i <= n; ++i) d[i][0] = i;
  for (size_t j = 0; j <= m; ++j) d[0][j] = j;
  for (size_t i = 1; i <= n; ++i)
    for (size_t j = 1; j <= m; ++j) {
      const size_t cost = Lower(a[i - 1]) == Lower(b[j - 1]) ? 0 : 1;
      d[i][j] = std::min({d[i - 1][j] + 1, d[i][j - 1] + 1, d[i - 1][j - 1] + cost});
      if (i > 1 && j > 1 && Lower(a[i - 1]) == Lower(b[j - 2]) && Lower(a[i - 2]) == Lower(b[j - 1]))
        d[i][j] = std::min(d[i][j], d[i - 2][j - 2] + 1);
    }
  return d[n][m];
}

}  // namespace

std::vector<std::string> NearestNames(const std::string& word,
                                      const std::vector<std::string>& candidates, size_t max) {
  const size_t limit = std::max<size_t>(1, (word.size() + 2) / 3);
  std::vector<std::pair<size_t, std::string>> near;
  for (const auto& candidate : candidates) {
    const size_t distance = Distance(word, candidate);
    if (distance <= limit) near.emplace_back(distance, candidate);
  }
  std::stable_sort(near.begin(), near.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  // Only the nearest are worth naming: "ProjectDri" means ProjectDir, not ProjectName too.
  std::vector<std::string> names;
  for (const auto& [distance, name] : near) {
    if (names.size() == max || distance > near.front().first) break;
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
  }
  return names;
}

std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates,
                       size_t max) {
  const auto names = NearestNames(word, candidates, max);
  if (names.empty()) return "";
  std::string text = "did you mean " + names[0];
  for (size_t i = 1; i < names.size(); ++i)
    text += (i + 1 == names.size() ? " or " : ", ") + names[i];
  return text + "?";
}

}  // namespace wren
