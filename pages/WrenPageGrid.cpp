#include "pages/WrenPageGrid.h"

namespace wren {

void NameValueGrid(TWrenPageControls& controls, const std::string& name,
                   const std::string& caption, const std::vector<std::string>& titles,
                   TNameValueRows& rows) {
  TWrenPageControl grid;
  grid.name = name;
  grid.kind = TWrenControlKind::Grid;
  grid.caption = caption;
  controls.Custom(
      grid,
      [&titles, &rows](TWrenPageControl& c) {
        c.items = titles;
        c.rows.clear();
        for (const auto& [key, value] : rows) c.rows.push_back({key, value});
      },
      [&rows](const TWrenPageEvent& e) {
        rows.clear();
        for (const std::vector<std::string>& cells : e.rows)
          rows.emplace_back(cells.empty() ? "" : cells[0], cells.size() < 2 ? "" : cells[1]);
      });
}

}  // namespace wren
