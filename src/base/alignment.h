// Aligns two lists, and the lines of two texts: side by side, row by row, or as a patch. Tested by tests/report: alignment_test,
// line_rows_test and unified_diff_test.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace korvel {

// --- Any items ---

// Positions of a longest subsequence whose keys increase strictly, ascending. n log n.
template <class Item, class KeyOf>
std::vector<std::size_t> LongestIncreasing(const std::vector<Item>& items, KeyOf key_of) {
  constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
  std::vector<std::size_t> ends;                         // of the best subsequence of each length
  std::vector<std::size_t> before(items.size(), kNone);  // in the best subsequence that ends here
  for (std::size_t i = 0; i < items.size(); ++i) {
    const auto end = std::ranges::lower_bound(ends, key_of(items[i]), {}, [&](std::size_t j) { return key_of(items[j]); });
    if (end != ends.begin()) before[i] = *(end - 1);
    end == ends.end() ? ends.push_back(i) : static_cast<void>(*end = i);
  }
  std::vector<std::size_t> positions;
  for (std::size_t i = ends.empty() ? kNone : ends.back(); i != kNone; i = before[i]) positions.push_back(i);
  std::ranges::reverse(positions);
  return positions;
}

// --- Lines of two texts ---

using Lines = std::vector<std::string_view>;  // borrowed from their text

// The lines of a text as locations count them: lines end in LF, CR LF or CR. Without line ends and byte order mark; borrowed.
Lines SourceLines(std::string_view text);

struct LineMatch {
  std::size_t old_line, new_line;
};

struct LineRow {
  std::size_t old_line = 0;  // 1-based; 0 = no line on that side
  std::size_t new_line = 0;
  bool same = false;  // both sides have the same text
};

// Every line of both texts once and in order. Equal lines share a row. So do `known` pairs of lines (1-based, in any order),
// unless their rows would cross others. n log n.
std::vector<LineRow> AlignLines(const Lines& old_lines, const Lines& new_lines, std::vector<LineMatch> known);

// A unified diff with three lines of context; "" for equal texts. Lines end in LF; a last line without LF is marked. Not always
// the shortest diff: a line that occurs more than once is matched only next to other matches. n log n. Names are written as they
// are: REQUIRES: they are on one line.
std::string UnifiedDiff(std::string_view old_name, std::string_view old_text, std::string_view new_name,
                        std::string_view new_text);

}  // namespace korvel
