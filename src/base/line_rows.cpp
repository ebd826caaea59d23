// Aligns lines; line_changes.cpp finds the differences. Tested by tests/report/line_rows_test.cpp.
#include "base/line_rows.h"

#include <algorithm>

namespace korvel {
namespace {

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

}  // namespace korvel
