// Lines of text in columns.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

enum class Align { kLeft, kRight };

// The rows as lines, each cell padded with blanks to the width of its column, columns two blanks apart, no blanks at the end of
// a line. Cells hold no line breaks. REQUIRES: every row has a cell for each column.
std::string InColumns(const std::vector<Align>& columns, const std::vector<std::vector<std::string>>& rows);

}  // namespace korvel
