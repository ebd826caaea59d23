// Resolves locations into lines, columns and pieces of source text.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/limits.h"
#include "schema/source.h"

namespace korvel {

// A location in a file: lines and columns as qmx::LineColumn, and the bytes. Borrows from the source.
struct TextRange {
  std::string file;
  // Unset for a location in an image, which has no text. Then the other members mean nothing.
  std::optional<qmx::LineColumn> begin;
  qmx::LineColumn end;         // after the last character
  qmx::Span span;              // the value of the attribute (between its quotes) or its part; else the element's start tag
  std::string_view line;       // the text of the line in which it begins, without its end and a byte order mark
  std::size_t line_begin = 0;  // offset of `line` in the file
};

// Fills in all members of `range` but the file and the line.
inline void FillIn(const qmx::TagRange& tag, TextRange& range) {
  range.begin = tag.begin;
  range.end = tag.end;
  range.span = tag.span;
}

// Whether two ranges begin at the same place.
inline bool BeginAlike(const TextRange& a, const TextRange& b) { return a.file == b.file && a.span.begin == b.span.begin; }

// Whether images have the text that was written for them (SchemaText::is_dump).
enum class Dumps { kShown, kHidden };

// The ranges of locations, in the same order; nullopt for a location without a source. Linear in the sizes of the files, plus
// sorting the locations. Reads a text that was not kept if a location is not a meta as a whole; then the call throws as
// FileText::Bytes. Otherwise the text is left alone, and the lines of the ranges are empty.
std::vector<std::optional<TextRange>> FindTextRanges(const std::vector<Location>& locations, Dumps dumps = Dumps::kShown);

// The ranges of many locations: resolved together, looked up one by one.
class TextRanges {
 public:
  explicit TextRanges(std::vector<Location> locations, Dumps dumps = Dumps::kShown);

  // Null for a location without a source. REQUIRES: the location was passed to the constructor. Logarithmic.
  const TextRange* Find(const Location& location) const;

 private:
  std::vector<Location> locations_;  // sorted, each once
  std::vector<std::optional<TextRange>> ranges_;
};

// Lines and columns of offsets of one text, in their order. One pass over the text.
std::vector<qmx::LineColumn> FindPositions(std::string_view text, const std::vector<std::size_t>& offsets);

// A line of source for people. Tabs stay, in both texts; characters that would break or color the line are escaped.
struct Snippet {
  std::size_t line = 0;  // its number
  std::string text;      // the line; of a line longer than kMaxSnippet, the part around the range, with … at each cut
  std::string caret;     // "     ^~~~", to print below the text in a font whose wide characters take two cells
};

// Nullopt for a range in an image. Of a range over several lines the first line is shown.
std::optional<Snippet> SnippetOf(const TextRange& range);

}  // namespace korvel
