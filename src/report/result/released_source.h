// What is left of a source about which a report shows nothing but its name and where tables of it are declared.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "report/result/text_ranges.h"
#include "schema/source.h"

namespace korvel {

// Where a meta was declared in the text that its source had.
struct MetaRange {
  std::uint32_t meta = 0;  // its position in the library
  qmx::TagRange tag;
};

// A source without its library and its list of tables: Library() is null. Its text, if it was kept, has no source map. Locations
// in it are found only if they were kept.
struct ReleasedSource : Source {
  std::vector<MetaRange> kept;  // ascending in the position; of an image without a text, none
};

// A small replacement for a source. `locations` are metas of it, as a whole; they are kept. With `keeps_text` the bytes of its
// text are, too. Linear in the text before the last location.
std::shared_ptr<const ReleasedSource> Release(const Source& source, const std::vector<Location>& locations, bool keeps_text);

// Whether a source is a ReleasedSource; null if not.
const ReleasedSource* FindReleased(const Source& source);

// Fills in all members of `range` but the file and the line. Leaves it as it is if the meta was not kept.
void FillIn(const ReleasedSource& source, std::uint32_t meta, TextRange& range);

}  // namespace korvel
