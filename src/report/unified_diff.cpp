// Compares two texts line by line and writes hunks. Held by tests/report/unified_diff_test.cpp.
#include "report/unified_diff.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <vector>

namespace korvel::report {
namespace {

constexpr std::size_t kContext = 3;
constexpr int kMaxDepth = 16;  // of gaps within gaps, each a pass over all lines
constexpr std::size_t kNone = static_cast<std::size_t>(-1);

using Lines = std::vector<std::string_view>;  // each with its line end

Lines SplitLines(std::string_view text) {
  Lines lines;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    lines.push_back(text.substr(0, end));
    text.remove_prefix(end);
  }
  return lines;
}

// Lines [old_begin, old_end) became [new_begin, new_end).
struct Change {
  std::size_t old_begin, old_end, new_begin, new_end;
};

struct Match {
  std::size_t old_line, new_line;
};

// The longest run of matches that ascends on both sides; they come ascending in the old line.
std::vector<Match> LongestAscending(const std::vector<Match>& matches) {
  std::vector<std::size_t> tails;  // of the shortest ends of runs of each length, the match
  std::vector<std::size_t> before(matches.size(), kNone);
  for (std::size_t i = 0; i < matches.size(); ++i) {
    const auto place =
        std::ranges::lower_bound(tails, matches[i].new_line, {}, [&](std::size_t tail) { return matches[tail].new_line; });
    if (place != tails.begin()) before[i] = *(place - 1);
    place == tails.end() ? tails.push_back(i) : void(*place = i);
  }
  std::vector<Match> run;
  for (std::size_t i = tails.empty() ? kNone : tails.back(); i != kNone; i = before[i]) run.push_back(matches[i]);
  std::ranges::reverse(run);
  return run;
}

// Lines that stand once on either side of a gap.
std::vector<Match> UniqueMatches(const Lines& old_lines, const Lines& new_lines, const Change& gap) {
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
  std::vector<Match> matches;
  for (std::size_t i = gap.old_begin; i < gap.old_end; ++i) {
    const Seen& line = seen[old_lines[i]];
    if (line.old_count == 1 && line.new_count == 1) matches.push_back({i, line.new_line});
  }
  return matches;
}

// Adds what differs in a gap: what lies between two matches is a smaller gap, less the lines at its ends that are the same.
void FindChanges(const Lines& old_lines, const Lines& new_lines, Change gap, int depth, std::vector<Change>& changes) {
  const auto has_both = [&] { return gap.old_begin < gap.old_end && gap.new_begin < gap.new_end; };
  while (has_both() && old_lines[gap.old_begin] == new_lines[gap.new_begin]) ++gap.old_begin, ++gap.new_begin;
  while (has_both() && old_lines[gap.old_end - 1] == new_lines[gap.new_end - 1]) --gap.old_end, --gap.new_end;
  if (gap.old_begin == gap.old_end && gap.new_begin == gap.new_end) return;
  std::vector<Match> anchors;
  if (has_both() && depth < kMaxDepth) anchors = LongestAscending(UniqueMatches(old_lines, new_lines, gap));
  if (anchors.empty()) return changes.push_back(gap);
  anchors.push_back({gap.old_end, gap.new_end});
  Change inner{gap.old_begin, 0, gap.new_begin, 0};
  for (const Match& anchor : anchors) {
    inner.old_end = anchor.old_line;
    inner.new_end = anchor.new_line;
    FindChanges(old_lines, new_lines, inner, depth + 1, changes);
    inner.old_begin = anchor.old_line + 1;
    inner.new_begin = anchor.new_line + 1;
  }
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

// Changes [first, last), which stand so close that they share their context.
void WriteHunk(std::string& text, const Lines& old_lines, const Lines& new_lines, const Change* first, const Change* last) {
  const std::size_t above = std::min(first->old_begin, kContext);
  const std::size_t below = std::min(old_lines.size() - last[-1].old_end, kContext);
  text += "@@ -" + Range(first->old_begin - above, last[-1].old_end + below) + " +" +
          Range(first->new_begin - above, last[-1].new_end + below) + " @@\n";
  std::size_t at = first->old_begin - above;
  for (const Change* change = first; change != last; ++change) {
    WriteLines(text, ' ', old_lines, at, change->old_begin);
    WriteLines(text, '-', old_lines, change->old_begin, change->old_end);
    WriteLines(text, '+', new_lines, change->new_begin, change->new_end);
    at = change->old_end;
  }
  WriteLines(text, ' ', old_lines, at, at + below);
}

// A name with blanks ends in a tab: those who read it know then where.
std::string Header(const char* mark, std::string_view name) {
  const bool has_blank = name.find(' ') != std::string_view::npos;
  return std::string(mark) + std::string(name) + (has_blank ? "\t\n" : "\n");
}

}  // namespace

std::string UnifiedDiff(std::string_view old_name, std::string_view old_text, std::string_view new_name,
                        std::string_view new_text) {
  if (old_text == new_text) return "";
  const Lines old_lines = SplitLines(old_text);
  const Lines new_lines = SplitLines(new_text);
  std::vector<Change> changes;
  FindChanges(old_lines, new_lines, {0, old_lines.size(), 0, new_lines.size()}, 0, changes);
  std::string text = Header("--- ", old_name) + Header("+++ ", new_name);
  const Change* const end = changes.data() + changes.size();
  for (const Change* first = changes.data(); first != end;) {
    const Change* last = first + 1;
    while (last != end && last->old_begin - last[-1].old_end <= 2 * kContext) ++last;
    WriteHunk(text, old_lines, new_lines, first, last);
    first = last;
  }
  return text;
}

}  // namespace korvel::report
