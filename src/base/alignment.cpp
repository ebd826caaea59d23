// Compares two texts line by line: equal lines at both ends, then lines that occur once on each side.
#include "base/alignment.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <vector>

namespace korvel {
namespace {

// --- Changes ---

constexpr int kMaxDepth = 16;  // of nested gaps; each level takes a pass over all lines

// Lines [old_begin, old_end) became [new_begin, new_end). Line numbers are 0-based here.
struct LineChange {
  std::size_t old_begin, old_end, new_begin, new_end;
};

// A longest sequence of matches that ascends on both sides. n log n. REQUIRES: the matches are sorted by the old line.
std::vector<LineMatch> LongestAscending(const std::vector<LineMatch>& matches) {
  std::vector<LineMatch> run;
  for (const std::size_t i : LongestIncreasing(matches, [](const LineMatch& match) { return match.new_line; })) {
    run.push_back(matches[i]);
  }
  return run;
}

// Lines that occur exactly once on each side of a gap.
std::vector<LineMatch> UniqueMatches(const Lines& old_lines, const Lines& new_lines, const LineChange& gap) {
  struct Seen {
    std::size_t old_count = 0, new_count = 0, new_line = 0;
  };
  std::map<std::string_view, Seen> seen;
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
void FindChangedLines(const Lines& old_lines, const Lines& new_lines, LineChange gap, int depth,
                      std::vector<LineChange>& changes) {
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
    FindChangedLines(old_lines, new_lines, inner, depth + 1, changes);
    inner.old_begin = anchor.old_line + 1;
    inner.new_begin = anchor.new_line + 1;
  }
}

// The changes between two texts, in order, separated by equal lines. n log n.
std::vector<LineChange> FindLineChanges(const Lines& old_lines, const Lines& new_lines) {
  std::vector<LineChange> changes;
  FindChangedLines(old_lines, new_lines, {0, old_lines.size(), 0, new_lines.size()}, 0, changes);
  return changes;
}

// --- Rows ---

class Rows {
 public:
  void Same(std::size_t number) {
    for (; number > 0; --number) AddRow(true, true, true);
  }

  // Lines of either side, each in its own row.
  void Apart(std::size_t old_number, std::size_t new_number) {
    for (; old_number > 0; --old_number) AddRow(true, false, false);
    for (; new_number > 0; --new_number) AddRow(false, true, false);
  }

  void Changed() { AddRow(true, true, false); }

  std::size_t old_line() const { return old_line_; }
  std::size_t new_line() const { return new_line_; }
  std::vector<LineRow> Take() { return std::move(rows_); }

 private:
  void AddRow(bool on_old, bool on_new, bool same) {
    rows_.push_back({on_old ? ++old_line_ : 0, on_new ? ++new_line_ : 0, same});
  }

  std::vector<LineRow> rows_;
  std::size_t old_line_ = 0;  // added last
  std::size_t new_line_ = 0;
};

// --- Patches ---

constexpr std::size_t kContext = 3;  // lines around a change

// With their line ends.
Lines SplitLines(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return lines;
}

void WriteLines(std::string& text, char mark, const Lines& lines, std::size_t begin, std::size_t end) {
  for (std::size_t i = begin; i < end; ++i) {
    text.append(1, mark).append(lines[i]);
    if (!lines[i].ends_with('\n')) text += "\n\\ No newline at end of file\n";
  }
}

// "3,4"; the line before for an empty range.
std::string Range(std::size_t begin, std::size_t end) {
  if (end - begin == 1) return std::to_string(begin + 1);
  return std::to_string(begin + (begin < end ? 1 : 0)) + "," + std::to_string(end - begin);
}

// Changes [first, last), which are so close that they share their context.
void WriteHunk(std::string& text, const Lines& old_lines, const Lines& new_lines, const LineChange* first,
               const LineChange* last) {
  const std::size_t above = std::min(first->old_begin, kContext);
  const std::size_t below = std::min(old_lines.size() - last[-1].old_end, kContext);
  text += "@@ -" + Range(first->old_begin - above, last[-1].old_end + below) + " +" +
          Range(first->new_begin - above, last[-1].new_end + below) + " @@\n";
  std::size_t at = first->old_begin - above;
  for (const LineChange* change = first; change != last; ++change) {
    WriteLines(text, ' ', old_lines, at, change->old_begin);
    WriteLines(text, '-', old_lines, change->old_begin, change->old_end);
    WriteLines(text, '+', new_lines, change->new_begin, change->new_end);
    at = change->old_end;
  }
  WriteLines(text, ' ', old_lines, at, at + below);
}

// A tab marks the end of a name that contains blanks.
std::string Header(const char* mark, std::string_view name) {
  const bool has_blank = name.find(' ') != std::string_view::npos;
  return std::string(mark) + std::string(name) + (has_blank ? "\t\n" : "\n");
}

}  // namespace

Lines SourceLines(std::string_view text) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end);
    text.remove_prefix(text.starts_with("\r\n") ? 2 : std::min<std::size_t>(text.size(), 1));
  }
  return lines;
}

std::vector<LineRow> AlignLines(const Lines& old_lines, const Lines& new_lines, std::vector<LineMatch> known) {
  std::ranges::sort(known, {}, [](const LineMatch& match) { return std::pair(match.old_line, match.new_line); });
  const auto is_again = [](const LineMatch& a, const LineMatch& b) { return a.old_line == b.old_line; };
  known.erase(std::unique(known.begin(), known.end(), is_again), known.end());
  Rows rows;
  auto next = known.cbegin();
  for (const LineChange& change : FindLineChanges(old_lines, new_lines)) {
    rows.Same(change.old_begin - rows.old_line());
    std::vector<LineMatch> inside;
    for (; next != known.cend() && next->old_line <= change.old_end; ++next) {
      const bool fits =
          next->old_line > change.old_begin && next->new_line > change.new_begin && next->new_line <= change.new_end;
      if (fits) inside.push_back(*next);
    }
    for (const LineMatch& match : LongestAscending(inside)) {
      rows.Apart(match.old_line - 1 - rows.old_line(), match.new_line - 1 - rows.new_line());
      rows.Changed();
    }
    rows.Apart(change.old_end - rows.old_line(), change.new_end - rows.new_line());
  }
  rows.Same(old_lines.size() - rows.old_line());
  return rows.Take();
}

std::string UnifiedDiff(std::string_view old_name, std::string_view old_text, std::string_view new_name,
                        std::string_view new_text) {
  if (old_text == new_text) return "";
  const Lines old_lines = SplitLines(old_text);
  const Lines new_lines = SplitLines(new_text);
  const std::vector<LineChange> changes = FindLineChanges(old_lines, new_lines);
  std::string text = Header("--- ", old_name) + Header("+++ ", new_name);
  const LineChange* const end = changes.data() + changes.size();
  for (const LineChange* first = changes.data(); first != end;) {
    const LineChange* last = first + 1;
    while (last != end && last->old_begin - last[-1].old_end <= 2 * kContext) ++last;
    WriteHunk(text, old_lines, new_lines, first, last);
    first = last;
  }
  return text;
}

}  // namespace korvel
