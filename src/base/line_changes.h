// Which lines of two texts differ.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace korvel {

using Lines = std::vector<std::string_view>;

// Lines [old_begin, old_end) became [new_begin, new_end).
struct LineChange {
  std::size_t old_begin, old_end, new_begin, new_end;
};

struct LineMatch {
  std::size_t old_line, new_line;
};

// The longest run of matches that ascends on both sides. REQUIRES: they come ascending in the old line. n log n.
std::vector<LineMatch> LongestAscending(const std::vector<LineMatch>& matches);

// The changes between two texts, in order, with equal lines between them. Not always the fewest: of lines that stand more than
// once in a text those beside others that match are matched. n log n.
std::vector<LineChange> FindLineChanges(const Lines& old_lines, const Lines& new_lines);

}  // namespace korvel
