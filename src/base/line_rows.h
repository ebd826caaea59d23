// Two texts side by side, row by row.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "base/line_changes.h"

namespace korvel {

// The lines of a text as places count them: they end in LF, CR LF or CR; without their ends and a byte order mark.
Lines SourceLines(std::string_view text);

struct LineRow {
  std::size_t old_line = 0;  // from 1; 0 = nothing on that side
  std::size_t new_line = 0;
  bool same = false;  // both sides, the same text
};

// Every line of both texts once and in order. Lines that are `known` to belong together (numbers from 1; in any order) share a
// row where that is possible without crossing others, as equal lines do. n log n.
std::vector<LineRow> AlignLines(const Lines& old_lines, const Lines& new_lines, std::vector<LineMatch> known);

}  // namespace korvel
