// Finds the lines in which two texts differ. Line numbers are 0-based.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace korvel {

using Lines = std::vector<std::string_view>;  // borrowed from their text

// Lines [old_begin, old_end) became [new_begin, new_end).
struct LineChange {
  std::size_t old_begin, old_end, new_begin, new_end;
};

struct LineMatch {
  std::size_t old_line, new_line;
};

// A longest sequence of matches that ascends on both sides. n log n. REQUIRES: the matches are sorted by the old line.
std::vector<LineMatch> LongestAscending(const std::vector<LineMatch>& matches);

// The changes between two texts, in order, separated by equal lines. Not always the fewest: a line that occurs more than once is
// matched only next to other matches. n log n.
std::vector<LineChange> FindLineChanges(const Lines& old_lines, const Lines& new_lines);

}  // namespace korvel
