// Locations of elements; lines and columns of bytes.
#include "qmx/qmx_source_map.h"

#include <algorithm>

#include "qmx/tag_scanner.h"

namespace qmx {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// Whether the byte continues a UTF-8 character that began before it.
bool Continues(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

std::uint32_t Size(const auto& list) { return static_cast<std::uint32_t>(list.size()); }

}  // namespace

LineColumn LineCounter::At(std::size_t offset) {
  offset = std::min(offset, text_.size());
  for (int i = 0; i < 3 && offset > 0 && offset < text_.size() && Continues(text_[offset]); ++i) --offset;
  PassLines(offset);
  for (; at_ < offset; ++at_) Pass(text_[at_]);
  return location_;
}

void LineCounter::PassLines(std::size_t offset) {
  const std::string_view passed = text_.substr(0, offset);
  if (passed.find('\r', at_) != std::string_view::npos) return;
  for (std::size_t end = passed.find('\n', at_); end != std::string_view::npos; end = passed.find('\n', at_)) {
    at_ = end + 1;
    location_ = {location_.line + 1, 1};
  }
}

void LineCounter::Pass(char byte) {
  const bool ends_line = byte == '\n' || (byte == '\r' && (at_ + 1 == text_.size() || text_[at_ + 1] != '\n'));
  if (ends_line) {
    location_ = {location_.line + 1, 1};
  } else if (!Continues(byte) && !(at_ == 0 && text_.starts_with(kByteOrderMark))) {
    ++location_.column;
  }
}

LineColumn Locate(std::string_view text, std::size_t offset) { return LineCounter(text).At(offset); }

std::optional<Span> FindAttributeValue(std::string_view text, std::size_t element, std::string_view attribute) {
  TagScanner scanner(text, element);
  while (const auto found = scanner.Next()) {
    if (text.substr(found->name.begin, found->name.end - found->name.begin) == attribute) return found->value;
  }
  return std::nullopt;
}

void SourceMap::Add(const ElementId& id, std::size_t offset) {
  const auto at = static_cast<Offset>(offset);
  switch (id.kind) {
    case ElementId::Kind::kMetalib:
      metalib_ = offset;
      break;
    case ElementId::Kind::kMeta:
      metas_.push_back({at, kNowhere, kNowhere, Size(entries_), Size(indexes_)});
      break;
    case ElementId::Kind::kEntry:
      entries_.push_back(at);
      break;
    case ElementId::Kind::kPrimaryKey:
      metas_.back().primary_key = at;
      break;
    case ElementId::Kind::kSplittableKey:
      metas_.back().splittable_key = at;
      break;
    case ElementId::Kind::kIndex:
      indexes_.push_back({at, Size(columns_)});
      break;
    case ElementId::Kind::kColumn:
      columns_.push_back(at);
      break;
  }
}

std::optional<std::size_t> SourceMap::Find(const ElementId& id) const {
  if (id.kind == ElementId::Kind::kMetalib) return metalib_;
  if (id.meta >= metas_.size()) return std::nullopt;
  const MetaOffsets& offsets = metas_[id.meta];
  const bool is_last = id.meta + 1 == metas_.size();
  const std::uint32_t entries = (is_last ? Size(entries_) : metas_[id.meta + 1].first_entry) - offsets.first_entry;
  const std::uint32_t indexes = (is_last ? Size(indexes_) : metas_[id.meta + 1].first_index) - offsets.first_index;
  const auto key = [](Offset offset) { return offset == kNowhere ? std::nullopt : std::optional<std::size_t>(offset); };
  switch (id.kind) {
    case ElementId::Kind::kMetalib:
      break;
    case ElementId::Kind::kMeta:
      return offsets.meta;
    case ElementId::Kind::kEntry:
      if (id.item < entries) return entries_[offsets.first_entry + id.item];
      break;
    case ElementId::Kind::kPrimaryKey:
      return key(offsets.primary_key);
    case ElementId::Kind::kSplittableKey:
      return key(offsets.splittable_key);
    case ElementId::Kind::kIndex:
      if (id.item < indexes) return indexes_[offsets.first_index + id.item].index;
      break;
    case ElementId::Kind::kColumn:
      if (id.item < indexes) return FindColumn(offsets.first_index + id.item, id.column);
      break;
  }
  return std::nullopt;
}

std::optional<std::size_t> SourceMap::FindColumn(std::uint32_t index, std::uint32_t column) const {
  const bool is_last = index + 1 == indexes_.size();
  const std::uint32_t first = indexes_[index].first_column;
  const std::uint32_t count = (is_last ? Size(columns_) : indexes_[index + 1].first_column) - first;
  return column < count ? std::optional<std::size_t>(columns_[first + column]) : std::nullopt;
}

}  // namespace qmx
