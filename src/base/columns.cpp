// Puts cells into columns. Held by tests/report/layout_test.cpp.
#include "base/columns.h"

#include <algorithm>

#include "base/characters.h"

namespace korvel {

std::string InColumns(const std::vector<Align>& columns, const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths(columns.size());
  for (const auto& row : rows) {
    for (std::size_t i = 0; i < columns.size(); ++i) widths[i] = std::max(widths[i], CharacterCount(row[i]));
  }
  std::string text;
  for (const auto& row : rows) {
    std::string line;
    for (std::size_t i = 0; i < columns.size(); ++i) {
      const std::string padding(widths[i] - CharacterCount(row[i]), ' ');
      line += columns[i] == Align::kLeft ? row[i] + padding : padding + row[i];
      line += "  ";
    }
    text += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
  return text;
}

}  // namespace korvel
