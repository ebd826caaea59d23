// Lines, columns and pieces of source text for what reports point at.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/limits.h"
#include "schema/source.h"

namespace korvel {

// A location in a file. Lines and columns as qmx::LineColumn. Borrows from the source.
struct TextRange {
  std::string file;
  // None of these for a location in an image.
  std::optional<qmx::LineColumn> begin;
  qmx::LineColumn end;         // behind the last character
  qmx::Span span;              // the value of the attribute (between its quotes); else the start tag of the element
  std::string_view line;       // the text of the line in which it begins, without its end and a byte order mark
  std::size_t line_begin = 0;  // offset of `line` in the file
};

// The marks of locations, in their order; nullopt for one that is nowhere. One pass over each file, whatever their number.
std::vector<std::optional<TextRange>> FindTextRanges(const std::vector<Location>& locations);

// The marks of many locations, found at once and looked up one by one.
class TextRanges {
 public:
  explicit TextRanges(std::vector<Location> locations);

  // Null for a location that is nowhere. REQUIRES: it was among the locations. Logarithmic.
  const TextRange* Find(const Location& location) const;

 private:
  std::vector<Location> locations_;  // sorted, each once
  std::vector<std::optional<TextRange>> marks_;
};

// Lines and columns of offsets of one text, in their order. One pass over the text.
std::vector<qmx::LineColumn> FindPositions(std::string_view text, const std::vector<std::size_t>& offsets);

// A piece of source as people look at it. Tabs stay, in both texts; what would break or colour a line is escaped.
struct Snippet {
  std::size_t line = 0;  // its number
  std::string text;   // the line; of one that is longer than kMaxSnippet, what stands around the mark, with … where it is cut
  std::string caret;  // "     ^~~~", to stand under the text in a font whose wide characters take two cells
};

// Nullopt for a mark in an image. Of a mark that goes over several lines the first is shown.
std::optional<Snippet> SnippetOf(const TextRange& mark);

}  // namespace korvel
