// Replaces sources by small ones. Tested by tests/report/released_source_test.cpp.
#include "report/result/released_source.h"

#include <algorithm>
#include <string>
#include <utility>

namespace korvel {
namespace {

// The bytes of a text, without the parser that owns them.
SchemaText CopyOf(const SchemaText& text) {
  SchemaText copy = KeptText(std::string(text.Bytes()), {});
  copy.is_dump = text.is_dump;
  return copy;
}

std::vector<MetaRange> RangesOf(const std::vector<Location>& locations) {
  std::vector<MetaRange> kept;
  const std::vector<std::optional<TextRange>> ranges = FindTextRanges(locations);
  for (std::size_t i = 0; i < locations.size(); ++i) {
    const TextRange& range = *ranges[i];
    if (range.begin) kept.push_back({locations[i].element.meta, {range.span, *range.begin, range.end}});
  }
  std::ranges::sort(kept, {}, &MetaRange::meta);
  return kept;
}

}  // namespace

std::shared_ptr<const ReleasedSource> Release(const Source& source, const std::vector<Location>& locations, bool keeps_text) {
  std::optional<SchemaText> text;
  if (keeps_text && source.text) text = CopyOf(*source.text);
  const qmx::Metalib none(nullptr, nullptr, 0);
  return std::make_shared<ReleasedSource>(ReleasedSource{{source.name, none, std::move(text), {}}, RangesOf(locations)});
}

const ReleasedSource* FindReleased(const Source& source) {
  return source.Library() == nullptr ? static_cast<const ReleasedSource*>(&source) : nullptr;
}

void FillIn(const ReleasedSource& source, std::uint32_t meta, TextRange& range) {
  const auto found = std::ranges::lower_bound(source.kept, meta, {}, &MetaRange::meta);
  if (found != source.kept.end() && found->meta == meta) FillIn(found->tag, range);
}

}  // namespace korvel
