// The line of a range, cut to a readable length, and the caret below it. Tested by tests/report/snippet_test.cpp.
#include <algorithm>

#include "base/characters.h"
#include "report/result/text_ranges.h"

namespace korvel {
namespace {

// The offset `count` characters after `at`, or the end.
std::size_t Forward(std::string_view text, std::size_t at, std::size_t count) {
  for (; count > 0 && at < text.size(); --count) at += CharacterLength(text.substr(at));
  return at;
}

// The offset `count` characters before `at`, or the start.
std::size_t Back(std::string_view text, std::size_t at, std::size_t count) {
  for (; count > 0 && at > 0; --count) {
    std::size_t length = std::min<std::size_t>(at, 4);
    while (length > 1 && CharacterLength(text.substr(at - length, length)) != length) --length;
    at -= length;
  }
  return at;
}

// The part of a line to show: the marked part, and as much around it as fits.
qmx::Span Window(std::string_view line, qmx::Span marked) {
  const std::size_t stop = std::min(marked.end, Forward(line, marked.begin, kMaxSnippet));
  const std::size_t left = kMaxSnippet - CharacterCount(line.substr(marked.begin, stop - marked.begin));
  const std::size_t first = Back(line, marked.begin, left);
  const std::size_t before = CharacterCount(line.substr(first, marked.begin - first));
  const std::size_t after = CharacterCount(line.substr(stop, Forward(line, stop, left) - stop));
  const std::size_t taken = std::min(before, std::max(left / 2, left - after));
  return {Back(line, marked.begin, taken), Forward(line, stop, left - taken)};
}

// Builds the line and the caret below it, character by character.
class SnippetBuilder {
 public:
  SnippetBuilder(Snippet& snippet, qmx::Span marked) : snippet_(snippet), marked_(marked) {}

  // `rest` begins with the character.
  void Add(std::string_view character, std::string_view rest, std::size_t at) {
    const std::string shown = character == "\t" ? "\t" : VisibleCharacter(rest);
    snippet_.text += shown;
    AddUnder(at, shown, shown == character ? CellsOf(character) : shown.size());
  }

 private:
  void AddUnder(std::size_t at, const std::string& shown, std::size_t cells) {
    if (at < marked_.begin) {
      snippet_.caret += shown == "\t" ? shown : std::string(cells, ' ');
    } else if (at == marked_.begin) {
      snippet_.caret += "^" + std::string(std::max<std::size_t>(cells, 1) - 1, '~');
    } else if (at < marked_.end) {
      snippet_.caret += std::string(cells, '~');
    }
  }

  Snippet& snippet_;
  qmx::Span marked_;
};

}  // namespace

std::optional<Snippet> SnippetOf(const TextRange& range) {
  if (!range.begin) return std::nullopt;
  const std::string_view line = range.line;
  const auto in_line = [&](std::size_t offset) { return std::min(offset - std::min(offset, range.line_begin), line.size()); };
  const qmx::Span marked{in_line(range.span.begin), in_line(range.span.end)};
  const qmx::Span window = Window(line, marked);
  constexpr char kCut[] = "\xE2\x80\xA6";  // U+2026
  Snippet snippet{range.begin->line, window.begin == 0 ? "" : kCut, window.begin == 0 ? "" : " "};
  SnippetBuilder builder(snippet, marked);
  for (std::size_t at = window.begin; at < window.end;) {
    const std::string_view character = line.substr(at, CharacterLength(line.substr(at)));
    builder.Add(character, line.substr(at), at);
    at += character.size();
  }
  if (window.end < line.size()) snippet.text += kCut;
  if (marked.begin >= window.end) snippet.caret += "^";  // the marked part is empty or after the window
  return snippet;
}

}  // namespace korvel
