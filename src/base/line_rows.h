// Two texts side by side, row by row.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "base/line_changes.h"

namespace korvel {

// The lines of a text as locations count them: lines end in LF, CR LF or CR. Without line ends and byte order mark; borrowed.
Lines SourceLines(std::string_view text);

struct LineRow {
  std::size_t old_line = 0;  // 1-based; 0 = no line on that side
  std::size_t new_line = 0;
  bool same = false;  // both sides have the same text
};

// Every line of both texts once and in order. Equal lines share a row. So do `known` pairs of lines (1-based, in any order),
// unless their rows would cross others. n log n.
std::vector<LineRow> AlignLines(const Lines& old_lines, const Lines& new_lines, std::vector<LineMatch> known);

}  // namespace korvel
