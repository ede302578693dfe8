// "Did you mean ...?": the nearest valid names to a word the user mistyped.
#pragma once

#include <string>
#include <vector>

namespace wren {

/// The candidates nearest to word by edit distance (case-insensitive), all at the same smallest
/// distance, at most max of them; only those close enough to be a plausible typo (about a third
/// of the word's length).
std::vector<std::string> NearestNames(const std::string& word,
                                      const std::vector<std::string>& candidates, size_t max = 3);

/// "did you mean X?" / "did you mean X or Y?" / "did you mean X, Y or Z?"; "" when nothing is near.
std::string DidYouMean(const std::string& word, const std::vector<std::string>& candidates,
                       size_t max = 3);

}  // namespace wren
