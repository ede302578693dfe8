// A name/value grid as a page lists it: columns and cells for the renderer, edits taken back.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "WrenPluginAPI.h"

namespace wren {

using TNameValueRows = std::vector<std::pair<std::string, std::string>>;

/// Lists a two-column grid: `items` carries the column titles, `rows` the cells. A change
/// replaces every row with the event's rows (so added, edited and removed rows all arrive the
/// same way); a row's missing cells are empty and cells beyond the second are dropped.
void NameValueGrid(TWrenPageControls& controls, const std::string& name,
                   const std::string& caption, const std::vector<std::string>& titles,
                   TNameValueRows& rows);

}  // namespace wren
