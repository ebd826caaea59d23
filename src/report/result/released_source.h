// What is left of a source about which a report shows nothing but its name and where tables of it are declared.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "report/result/text_ranges.h"
#include "schema/source.h"

namespace korvel {

// Where a meta was declared in the text that its source had.
struct MetaRange {
  std::uint32_t meta = 0;  // its position in the library
  qmx::TagRange tag;
};

// A location in the text that its source had, with the line in which it begins.
struct KeptRange {
  qmx::ElementId element;
  std::string_view attribute;  // as in Location
  qmx::Span part;              // likewise
  qmx::TagRange tag;
  std::string line;
  std::size_t line_begin = 0;  // as in TextRange
};

// A source without its library and its list of tables: Library() is null. Its text, if it was kept, has no source map. Locations
// in it are found only if they were kept.
struct ReleasedSource : Source {
  std::vector<MetaRange> kept;         // ascending in the position; of an image without a text, none
  std::vector<KeptRange> ranges = {};  // of ReleaseExcept, ordered; of an image without a text, none
};

// A small replacement for a source. `locations` are metas of it, as a whole; they are kept. With `keeps_text` the bytes of its
// text are, too. Linear in the text before the last location.
std::shared_ptr<const ReleasedSource> Release(const Source& source, const std::vector<Location>& locations, bool keeps_text);

// A small replacement that keeps all of these locations of the source, with their lines. Throws as FindTextRanges.
std::shared_ptr<const ReleasedSource> ReleaseExcept(const Source& source, const std::vector<Location>& locations);

// Whether a source is a ReleasedSource; null if not.
const ReleasedSource* FindReleased(const Source& source);

// Fills in all members of `range` but the file, and the line only if it was kept. Leaves it as it is if the location was not
// kept.
void FillIn(const ReleasedSource& source, const Location& location, TextRange& range);

}  // namespace korvel
