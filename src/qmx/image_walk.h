// State of the verifier of images, and its innermost loop.
//
// The lengths of texts are not computed, except for names of metas: if the last byte of a meta is zero, every text that begins
// inside it ends there, and texts that begin at ascending offsets, each after a zero byte, do not overlap.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "qmx/qmx_builder.h"
#include "qmx/qmx_types.h"

namespace qmx {

inline constexpr std::int64_t kMetaSize = sizeof(tagQMXMeta);
inline constexpr std::int64_t kEntrySize = sizeof(tagQMXMetaEntry);

// Metas by offset. They do not overlap, so at most one begins in each range of the size of a meta record.
class MetaTable {
 public:
  // Nesting levels: 1 for a meta without inner structures.
  enum : std::uint8_t { kUnknown = 0, kOpen = 255 };

  explicit MetaTable(std::int64_t data_size = 0)
      : begins_(static_cast<std::size_t>(data_size / kMetaSize + 1)), levels_(begins_.size(), kUnknown) {}

  void Add(std::int64_t offset) { begins_[StretchOf(offset)] = BeginOf(offset); }

  // Whether a meta begins there.
  bool Has(std::int64_t offset) const {
    return StretchOf(offset) < begins_.size() && offset % 8 == 0 && begins_[StretchOf(offset)] == BeginOf(offset);
  }

  // REQUIRES: a meta begins there.
  std::uint8_t& Levels(std::int64_t offset) { return levels_[StretchOf(offset)]; }

 private:
  static std::size_t StretchOf(std::int64_t offset) { return static_cast<std::size_t>(offset) / kMetaSize; }
  static std::uint8_t BeginOf(std::int64_t offset) { return static_cast<std::uint8_t>(offset % kMetaSize / 8 + 1); }

  std::vector<std::uint8_t> begins_;  // offset of the meta that begins in a range, in units of 8 bytes, plus 1; 0 = none
  std::vector<std::uint8_t> levels_;
};

// Size of an element by type code, in bytes; 0 if each entry gives its own.
struct TypeSizes {
  TypeSizes() {
    for (const SimpleType& type : SimpleTypes()) bytes[type.code] = type.unit_size;
  }
  std::uint64_t bytes[QMX_TYPE_BYTES + 1] = {};
};

// The range of a meta's texts: they fill [begin, end) of the data area, and the last byte is zero.
struct TextRange {
  // Whether a text begins there.
  bool Has(std::int64_t offset) const { return offset >= begin && offset < end && (data[offset - 1] == 0 || offset == begin); }

  const char* data;
  std::int64_t begin;
  std::int64_t end;
};

// Iterates over the entries of a meta. The verifier spends most of its time here, so all data is at hand, and error texts are
// made in another file.
class EntryWalk {
 public:
  enum Fault { kNone, kSelf, kName, kCustomAttr2, kRefer, kType, kTypeMeta, kUnitSize, kSize };

  EntryWalk(const TextRange& texts, std::int64_t first, const MetaTable& table, const TypeSizes& sizes, bool is_union)
      : texts_(texts),
        first_(first),
        next_(first),
        last_text_(texts.begin - 1),
        table_(table),
        sizes_(sizes),
        is_union_(is_union) {}

  // The fault of the next entry.
  Fault Next(const tagQMXMetaEntry& entry) {
    if (entry.ptrEntry != next_) return kSelf;
    if (!TakeText(entry.ptrName)) return kName;
    if (entry.ptrCustomAttr2 != QMX_NO_REF && !TakeText(entry.ptrCustomAttr2)) return kCustomAttr2;
    if (entry.ptrRefer != QMX_NO_REF && !IsEarlier(entry.ptrRefer)) return kRefer;
    const auto type = static_cast<std::uint32_t>(entry.iType);
    if (type > QMX_TYPE_BYTES) return kType;
    std::uint64_t unit_size = sizes_.bytes[type];
    if (type > QMX_TYPE_STRUCT) {
      if (entry.ptrTypeMeta != QMX_NO_REF) return kTypeMeta;
    } else {
      if (!table_.Has(entry.ptrTypeMeta)) return kTypeMeta;
      const auto& meta = *reinterpret_cast<const tagQMXMeta*>(texts_.data + entry.ptrTypeMeta);
      if (meta.iType != entry.iType) return kTypeMeta;
      is_nested_ = true;
      unit_size = meta.iUnitSize;
    }
    if (entry.iUnitSize != unit_size && type < QMX_TYPE_STRING) return kUnitSize;
    next_ += kEntrySize;
    return AddSize(entry) ? kNone : kSize;
  }

  // Of the accepted entries: whether one is composite, and the sum of their sizes in bytes.
  bool is_nested() const { return is_nested_; }
  std::uint64_t size() const { return size_; }

 private:
  // Entries refer to their texts in ascending order, so texts do not overlap.
  bool TakeText(std::int64_t offset) {
    if (offset <= last_text_ || !texts_.Has(offset)) return false;
    last_text_ = offset;
    return true;
  }

  bool IsEarlier(std::int64_t entry) const { return entry >= first_ && entry < next_ && (entry - first_) % kEntrySize == 0; }

  // False if the sum overflows. A negative count means no elements.
  bool AddSize(const tagQMXMetaEntry& entry) {
    const std::uint64_t elements = entry.iCount < 0 ? 0 : static_cast<std::uint64_t>(entry.iCount);
    std::uint64_t bytes = 0;
    if (__builtin_mul_overflow(entry.iUnitSize, elements, &bytes)) return false;
    if (!is_union_) return !__builtin_add_overflow(size_, bytes, &size_);
    size_ = std::max(size_, bytes);
    return true;
  }

  const TextRange texts_;
  const std::int64_t first_;  // entry of the meta
  std::int64_t next_;
  std::int64_t last_text_;  // where the last text begins
  const MetaTable& table_;
  const TypeSizes& sizes_;
  const bool is_union_;
  bool is_nested_ = false;
  std::uint64_t size_ = 0;
};

}  // namespace qmx
