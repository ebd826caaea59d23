// Writes hunks; line_changes.cpp compares. Tested by tests/report/unified_diff_test.cpp.
#include "base/unified_diff.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "base/line_changes.h"

namespace korvel {
namespace {

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
