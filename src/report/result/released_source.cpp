// Replaces sources by small ones. Tested by tests/report/released_source_test.cpp.
#include "report/result/released_source.h"

#include <algorithm>
#include <functional>
#include <string>
#include <tuple>
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

auto KeptKeyOf(const auto& kept) {
  const qmx::ElementId& id = kept.element;
  return std::tuple(id.kind, id.meta, id.item, id.column, kept.attribute, kept.part.begin, kept.part.end);
}

std::vector<KeptRange> ShownRanges(const std::vector<Location>& locations) {
  std::vector<KeptRange> kept;
  const std::vector<std::optional<TextRange>> ranges = FindTextRanges(locations);
  for (std::size_t i = 0; i < locations.size(); ++i) {
    const TextRange& range = *ranges[i];
    if (!range.begin) continue;
    kept.push_back({locations[i].element,
                    locations[i].attribute,
                    locations[i].part,
                    {range.span, *range.begin, range.end},
                    std::string(range.line),
                    range.line_begin});
  }
  const auto key = [](const KeptRange& one) { return KeptKeyOf(one); };
  std::ranges::sort(kept, std::less<>(), key);
  const auto is_same = [&](const KeptRange& a, const KeptRange& b) { return key(a) == key(b); };
  kept.erase(std::unique(kept.begin(), kept.end(), is_same), kept.end());
  kept.shrink_to_fit();
  return kept;
}

qmx::Metalib NoLibrary() { return {nullptr, nullptr, 0}; }

}  // namespace

std::shared_ptr<const ReleasedSource> ReleaseExcept(const Source& source, const std::vector<Location>& locations) {
  return std::make_shared<ReleasedSource>(
      ReleasedSource{{source.name, NoLibrary(), std::nullopt, {}}, {}, ShownRanges(locations)});
}

std::shared_ptr<const ReleasedSource> Release(const Source& source, const std::vector<Location>& locations, bool keeps_text) {
  std::optional<SchemaText> text;
  if (keeps_text && source.text) text = CopyOf(*source.text);
  return std::make_shared<ReleasedSource>(ReleasedSource{{source.name, NoLibrary(), std::move(text), {}}, RangesOf(locations)});
}

const ReleasedSource* FindReleased(const Source& source) {
  return source.Library() == nullptr ? static_cast<const ReleasedSource*>(&source) : nullptr;
}

namespace {

bool FillInMeta(const ReleasedSource& source, std::uint32_t meta, TextRange& range) {
  const auto found = std::ranges::lower_bound(source.kept, meta, {}, &MetaRange::meta);
  if (found == source.kept.end() || found->meta != meta) return false;
  FillIn(found->tag, range);
  return true;
}

}  // namespace

void FillIn(const ReleasedSource& source, const Location& location, TextRange& range) {
  if (!source.kept.empty() && FillInMeta(source, location.element.meta, range)) return;
  const auto key = [](const KeptRange& one) { return KeptKeyOf(one); };
  const auto found = std::ranges::lower_bound(source.ranges, KeptKeyOf(location), std::less<>(), key);
  if (found == source.ranges.end() || KeptKeyOf(*found) != KeptKeyOf(location)) return;
  FillIn(found->tag, range);
  range.line = found->line;
  range.line_begin = found->line_begin;
}

}  // namespace korvel
