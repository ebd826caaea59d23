// Places of elements, and of bytes as lines and columns.
#include "qmx/qmx_source_map.h"

#include <algorithm>

#include "qmx/tag_scanner.h"

namespace qmx {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Whether the byte continues a UTF-8 character that began before it.
bool Continues(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

template <typename List>
bool Holds(const List& list, std::uint32_t position) {
  return position < list.size();
}

}  // namespace

LineColumn PlaceCounter::At(std::size_t offset) {
  offset = std::min(offset, text_.size());
  for (int i = 0; i < 3 && offset > 0 && offset < text_.size() && Continues(text_[offset]); ++i) --offset;
  for (; at_ < offset; ++at_) Pass(text_[at_]);
  return place_;
}

void PlaceCounter::Pass(char byte) {
  const bool ends_line = byte == '\n' || (byte == '\r' && (at_ + 1 == text_.size() || text_[at_ + 1] != '\n'));
  if (ends_line) {
    place_ = {place_.line + 1, 1};
  } else if (!Continues(byte) && !(at_ == 0 && text_.starts_with(kByteOrderMark))) {
    ++place_.column;
  }
}

LineColumn Locate(std::string_view text, std::size_t offset) { return PlaceCounter(text).At(offset); }

std::optional<Span> FindAttributeValue(std::string_view text, std::size_t element, std::string_view attribute) {
  TagScanner scanner(text, element);
  while (const auto found = scanner.Next()) {
    if (text.substr(found->name.begin, found->name.end - found->name.begin) == attribute) return found->value;
  }
  return std::nullopt;
}

void SourceMap::Add(const ElementId& id, std::size_t offset) {
  switch (id.kind) {
    case ElementId::Kind::kMetalib:
      metalib_ = offset;
      break;
    case ElementId::Kind::kMeta:
      metas_.emplace_back().meta = offset;
      break;
    case ElementId::Kind::kEntry:
      metas_.back().entries.push_back(offset);
      break;
    case ElementId::Kind::kPrimaryKey:
      metas_.back().primary_key = offset;
      break;
    case ElementId::Kind::kSplittableKey:
      metas_.back().splittable_key = offset;
      break;
    case ElementId::Kind::kIndex:
      metas_.back().indexes.push_back({offset});
      break;
    case ElementId::Kind::kColumn:
      metas_.back().indexes.back().push_back(offset);
      break;
  }
}

std::optional<std::size_t> SourceMap::Find(const ElementId& id) const {
  if (id.kind == ElementId::Kind::kMetalib) return metalib_;
  if (!Holds(metas_, id.meta)) return std::nullopt;
  const MetaPlaces& places = metas_[id.meta];
  const auto index_part = [&](std::size_t part) -> std::optional<std::size_t> {
    if (!Holds(places.indexes, id.item) || part >= places.indexes[id.item].size()) return std::nullopt;
    return places.indexes[id.item][part];
  };
  switch (id.kind) {
    case ElementId::Kind::kMetalib:
      break;
    case ElementId::Kind::kMeta:
      return places.meta;
    case ElementId::Kind::kEntry:
      return Holds(places.entries, id.item) ? std::optional(places.entries[id.item]) : std::nullopt;
    case ElementId::Kind::kPrimaryKey:
      return places.primary_key;
    case ElementId::Kind::kSplittableKey:
      return places.splittable_key;
    case ElementId::Kind::kIndex:
      return index_part(0);
    case ElementId::Kind::kColumn:
      return index_part(std::size_t{id.column} + 1);
  }
  return std::nullopt;
}

}  // namespace qmx
