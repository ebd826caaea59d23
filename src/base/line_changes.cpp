// Compares two texts line by line. Tested by tests/report/unified_diff_test.cpp and tests/report/line_rows_test.cpp.
#include "base/line_changes.h"

#include <unordered_map>

#include "base/longest_increasing.h"

namespace korvel {
namespace {

constexpr int kMaxDepth = 16;  // of nested gaps; each level takes a pass over all lines

// Lines that occur exactly once on each side of a gap.
std::vector<LineMatch> UniqueMatches(const Lines& old_lines, const Lines& new_lines, const LineChange& gap) {
  struct Seen {
    std::size_t old_count = 0, new_count = 0, new_line = 0;
  };
  std::unordered_map<std::string_view, Seen> seen;
  for (std::size_t i = gap.old_begin; i < gap.old_end; ++i) ++seen[old_lines[i]].old_count;
  for (std::size_t i = gap.new_begin; i < gap.new_end; ++i) {
    Seen& line = seen[new_lines[i]];
    ++line.new_count;
    line.new_line = i;
  }
  std::vector<LineMatch> matches;
  for (std::size_t i = gap.old_begin; i < gap.old_end; ++i) {
    const Seen& line = seen[old_lines[i]];
    if (line.old_count == 1 && line.new_count == 1) matches.push_back({i, line.new_line});
  }
  return matches;
}

// Adds the changes within a gap. Equal lines at its ends are cut off; matches of unique lines split the rest into smaller gaps.
void FindChanges(const Lines& old_lines, const Lines& new_lines, LineChange gap, int depth, std::vector<LineChange>& changes) {
  const auto has_both = [&] { return gap.old_begin < gap.old_end && gap.new_begin < gap.new_end; };
  while (has_both() && old_lines[gap.old_begin] == new_lines[gap.new_begin]) ++gap.old_begin, ++gap.new_begin;
  while (has_both() && old_lines[gap.old_end - 1] == new_lines[gap.new_end - 1]) --gap.old_end, --gap.new_end;
  if (gap.old_begin == gap.old_end && gap.new_begin == gap.new_end) return;
  std::vector<LineMatch> anchors;
  if (has_both() && depth < kMaxDepth) anchors = LongestAscending(UniqueMatches(old_lines, new_lines, gap));
  if (anchors.empty()) return changes.push_back(gap);
  anchors.push_back({gap.old_end, gap.new_end});
  LineChange inner{gap.old_begin, 0, gap.new_begin, 0};
  for (const LineMatch& anchor : anchors) {
    inner.old_end = anchor.old_line;
    inner.new_end = anchor.new_line;
    FindChanges(old_lines, new_lines, inner, depth + 1, changes);
    inner.old_begin = anchor.old_line + 1;
    inner.new_begin = anchor.new_line + 1;
  }
}

}  // namespace

std::vector<LineMatch> LongestAscending(const std::vector<LineMatch>& matches) {
  std::vector<LineMatch> run;
  for (const std::size_t i : LongestIncreasing(matches, [](const LineMatch& match) { return match.new_line; })) {
    run.push_back(matches[i]);
  }
  return run;
}

std::vector<LineChange> FindLineChanges(const Lines& old_lines, const Lines& new_lines) {
  std::vector<LineChange> changes;
  FindChanges(old_lines, new_lines, {0, old_lines.size(), 0, new_lines.size()}, 0, changes);
  return changes;
}

}  // namespace korvel
