// Unified diffs of text files, for showing what a rewrite would change.
#pragma once

#include <string>

namespace wren {

/// The unified diff (3 lines of context) that turns before into after, with "--- a/NAME" and
/// "+++ b/NAME" headers; "" when the texts are equal. A missing side is shown as /dev/null.
std::string UnifiedDiff(const std::string& name, const std::string& before,
                        const std::string& after, bool beforeExists = true,
                        bool afterExists = true);

}  // namespace wren
