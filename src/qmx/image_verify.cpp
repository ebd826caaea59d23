// Verifies an untrusted block in one pass. Accepts what the builder produces. Tested by tests/qmx/image_verify_test.cpp.
#include <algorithm>
#include <cstring>
#include <span>
#include <vector>

#include "qmx/image_walk.h"
#include "qmx/meta_slots.h"
#include "qmx/qmx_image.h"

namespace qmx {
namespace {

constexpr std::size_t kBlockHeaderSize = offsetof(tagQMXMetaLib, data);

// Verifies the parts in order and stops at the first fault. Each check is `condition || Refuse(...)`, which is false.
class Verifier {
 public:
  Verifier(const void* block, std::size_t size, const Limits& limits)
      : block_(static_cast<const char*>(block)),
        size_(size),
        max_depth_(std::min(limits.max_depth, kMaxNesting)),
        repeats_left_(size * kMaxRepeatedNames) {}

  std::optional<VerifyError> Run() {
    if (CheckHeader() && CheckList() && CheckMetas() && CheckNesting() && CheckSlots()) return std::nullopt;
    return std::move(error_);
  }

 private:
  template <class Record>
  const Record* At(std::int64_t offset) const {
    return reinterpret_cast<const Record*>(data_ + offset);
  }

  // REQUIRES: `record` lies in the data area.
  std::int64_t OffsetOf(const void* record) const { return static_cast<const char*>(record) - data_; }

  // REQUIRES: `found` lies in the block.
  template <class Number>
  bool Refuse(const std::string& part, const char* field, const Number& found, const std::string& allowed) {
    const auto offset = static_cast<std::uint64_t>(reinterpret_cast<const char*>(&found) - block_);
    error_ = VerifyError{part + ": " + field, offset, "is " + std::to_string(found) + "; allowed: " + allowed};
    return false;
  }

  // --- The library ---

  bool CheckHeader() {
    if (size_ < kBlockHeaderSize || reinterpret_cast<std::uintptr_t>(block_) % 8 != 0) {
      error_ = {"block", 0,
                "has " + std::to_string(size_) + " bytes; allowed: at least " + std::to_string(kBlockHeaderSize) +
                    ", at an address that is a multiple of 8"};
      return false;
    }
    library_ = reinterpret_cast<const tagQMXMetaLib*>(block_);
    data_ = block_ + kBlockHeaderSize;
    data_size_ = static_cast<std::int64_t>(size_ - kBlockHeaderSize);
    if (library_->iDataSize != data_size_ || data_size_ % 8 != 0) {
      return Refuse("library", "iDataSize", library_->iDataSize,
                    "the number of bytes after the header, here " + std::to_string(data_size_) + ", and a multiple of 8");
    }
    const std::int64_t& name = library_->ptrName;
    const bool ends =
        name >= 0 && name < data_size_ && std::memchr(data_ + name, 0, static_cast<std::size_t>(data_size_ - name)) != nullptr;
    return ends || Refuse("library", "ptrName", name, "a terminated text");
  }

  // A list of the library may be anywhere: only the order of its items matters, which is checked with them.
  bool CheckLibraryList(const char* field, const std::int64_t& list, std::int64_t count, std::int64_t record_size) {
    if (count == 0) return list == QMX_NO_REF || Refuse("library", field, list, "-1 for an empty list");
    const bool fits = list >= 0 && list % 8 == 0 && list <= data_size_ && count <= (data_size_ - list) / record_size;
    return fits || Refuse("library", field, list, "a multiple of 8 with room for " + std::to_string(count) + " records");
  }

  bool CheckList() {
    const std::int32_t& count = library_->iMetaNum;
    if (count < 0 || static_cast<std::size_t>(count) > kMaxMetas) {
      return Refuse("library", "iMetaNum", count, "0 to " + std::to_string(kMaxMetas));
    }
    if (!CheckLibraryList("ptrMetas", library_->ptrMetas, count, sizeof(std::int64_t))) return false;
    metas_ = {At<std::int64_t>(count == 0 ? 0 : library_->ptrMetas), static_cast<std::size_t>(count)};
    table_ = MetaTable(data_size_);
    std::int64_t next = 0;
    for (const std::int64_t& meta : metas_) {
      const bool fits = meta >= next && meta % 8 == 0 && meta <= data_size_ - kMetaSize;
      if (!fits) {
        return Refuse("library", "list of metas", meta,
                      "a multiple of 8, at least " + std::to_string(next) + ", with room for a meta");
      }
      table_.Add(meta);
      next = meta + kMetaSize;
    }
    return true;
  }

  // The end of a meta: the next meta; for the last one, the first part of the library after it.
  std::int64_t EndOf(std::size_t position) const {
    if (position + 1 < metas_.size()) return metas_[position + 1];
    std::int64_t end = data_size_;
    for (const std::int64_t part : {library_->ptrMetas, library_->ptrMetaSlots, library_->ptrName}) {
      if (part >= metas_[position] + kMetaSize) end = std::min(end, part);
    }
    return end;
  }

  bool CheckMetas() {
    names_.reserve(metas_.size());
    for (std::size_t i = 0; i < metas_.size(); ++i) {
      meta_ = At<tagQMXMeta>(metas_[i]);
      begin_ = metas_[i];
      end_ = EndOf(i);
      if (!CheckMeta()) return false;
      names_.emplace_back(data_ + meta_->ptrName);
    }
    return true;
  }

  // The table must equal the one that the builder makes of the names: then every name is found in few steps.
  bool CheckSlots() {
    const std::int32_t& count = library_->iMetaSlotNum;
    const std::size_t allowed = MetaSlotNum(names_.size());
    if (count < 0 || static_cast<std::size_t>(count) != allowed) {
      return Refuse("library", "iMetaSlotNum", count, std::to_string(allowed));
    }
    if (!CheckLibraryList("ptrMetaSlots", library_->ptrMetaSlots, count, sizeof(tagQMXMetaSlot))) return false;
    MetaSlots made{{}, library_->iMetaSlotSeed};
    if (!FillMetaSlots(made, names_, kMaxProbes)) {
      return Refuse("library", "iMetaSlotSeed", library_->iMetaSlotSeed, "a seed under which every name is found in few steps");
    }
    for (std::size_t i = 0; i < allowed; ++i) {
      const tagQMXMetaSlot& slot = At<tagQMXMetaSlot>(library_->ptrMetaSlots)[i];
      if (slot.iHash == made.slots[i].iHash && slot.iMeta == made.slots[i].iMeta) continue;
      const std::string part = "slot " + std::to_string(i);
      if (slot.iHash != made.slots[i].iHash) return Refuse(part, "iHash", slot.iHash, std::to_string(made.slots[i].iHash));
      return Refuse(part, "iMeta", slot.iMeta, std::to_string(made.slots[i].iMeta));
    }
    return true;
  }

  // --- One meta: meta_, which lies in [begin_, end_) of the data area ---

  bool CheckMeta() {
    if (meta_->ptrMeta != begin_) return Refuse(Meta(), "ptrMeta", meta_->ptrMeta, std::to_string(begin_));
    if (meta_->iType != QMX_TYPE_STRUCT && meta_->iType != QMX_TYPE_UNION) {
      return Refuse(Meta(), "iType", meta_->iType, "0 for a union, 1 for a structure");
    }
    return CheckParts() && CheckTexts() && CheckEntries() && CheckKeys() && CheckColumns();
  }

  std::string Meta() const { return Meta(begin_); }
  std::string Meta(std::int64_t offset) const {
    return "meta " + std::to_string(std::ranges::lower_bound(metas_, offset) - metas_.begin());
  }
  std::string Meta(const char* list, std::int64_t item) const { return Meta() + ", " + list + " " + std::to_string(item); }

  // A list of the meta begins at the end of the previous part.
  template <class Record>
  bool CheckPart(const char* field, const std::int64_t& list, const char* count_field, const auto& count) {
    constexpr std::int64_t kSize = sizeof(Record);
    if (count < 0 || count * kSize > end_ - texts_) {
      return Refuse(Meta(), count_field, count, "0 to " + std::to_string((end_ - texts_) / kSize) + ", as many as fit");
    }
    const std::int64_t allowed = count == 0 ? QMX_NO_REF : texts_ - begin_;
    if (list != allowed) return Refuse(Meta(), field, list, std::to_string(allowed));
    texts_ += count * kSize;
    return true;
  }

  bool CheckParts() {
    const tagQMXMeta& meta = *meta_;
    texts_ = begin_ + kMetaSize;
    if (meta.iEntriesNum > static_cast<std::int64_t>(kMaxEntries)) {
      return Refuse(Meta(), "iEntriesNum", meta.iEntriesNum, "0 to " + std::to_string(kMaxEntries));
    }
    return CheckPart<tagQMXMetaEntry>("ptrEntries", meta.ptrEntries, "iEntriesNum", meta.iEntriesNum) &&
           CheckPart<tagQMXDBKeyInfo>("ptrPrimayKeyBase", meta.ptrPrimayKeyBase, "nPrimayKeyMemberNum",
                                      meta.nPrimayKeyMemberNum) &&
           CheckPart<tagQMXDBKeyInfo>("ptrSplitTableKeyBase", meta.ptrSplitTableKeyBase, "iSplitTableKeyMemberNum",
                                      meta.iSplitTableKeyMemberNum) &&
           CheckPart<tagQMXMetaIndex>("ptrIndexes", meta.ptrIndexes, "iIndexesNum", meta.iIndexesNum) && CheckColumnLists() &&
           (meta.stSortKey.ptrSortKeyBase == QMX_NO_REF ||
            Refuse(Meta(), "ptrSortKeyBase", meta.stSortKey.ptrSortKeyBase, "-1")) &&
           (meta.stSortKey.iSortKeyMemberNum == 0 || Refuse(Meta(), "iSortKeyMemberNum", meta.stSortKey.iSortKeyMemberNum, "0"));
  }

  // The lists of all indexes are contiguous.
  bool CheckColumnLists() {
    for (const tagQMXMetaIndex& index : Indexes()) {
      if (!CheckPart<tagQMXColumnInfo>("ptrColumnBase", index.ptrColumnBase, "iColumnNum", index.iColumnNum)) return false;
    }
    return true;
  }

  // REQUIRES: the part was checked.
  template <class Record>
  std::span<const Record> List(std::int64_t list, std::int32_t count) const {
    return {At<Record>(count == 0 ? 0 : begin_ + list), static_cast<std::size_t>(count)};
  }

  std::span<const tagQMXMetaIndex> Indexes() const { return List<tagQMXMetaIndex>(meta_->ptrIndexes, meta_->iIndexesNum); }

  TextRange Texts() const { return {data_, texts_, end_}; }

  bool RefuseText(const std::string& part, const char* field, const std::int64_t& offset) {
    return Refuse(part, field, offset,
                  "a text of the meta, from " + std::to_string(texts_) + " to " + std::to_string(end_) +
                      ", directly after another one, in the order of the records");
  }

  // From here on, [texts_, end_) contains only texts.
  bool CheckTexts() {
    const tagQMXMeta& meta = *meta_;
    const bool ends = texts_ < end_ && data_[end_ - 1] == 0;
    if (!ends || !Texts().Has(meta.ptrName)) return RefuseText(Meta(), "ptrName", meta.ptrName);
    return meta.ptrCustomAttr == QMX_NO_REF || Texts().Has(meta.ptrCustomAttr) ||
           RefuseText(Meta(), "ptrCustomAttr", meta.ptrCustomAttr);
  }

  bool CheckEntries() {
    EntryWalk walk(Texts(), begin_ + kMetaSize, table_, type_sizes_, meta_->iType == QMX_TYPE_UNION);
    for (const tagQMXMetaEntry& entry : List<tagQMXMetaEntry>(meta_->ptrEntries, meta_->iEntriesNum)) {
      if (const EntryWalk::Fault fault = walk.Next(entry); fault != EntryWalk::kNone) return RefuseEntry(entry, fault);
    }
    if (!walk.is_nested()) table_.Levels(begin_) = 1;
    return meta_->iUnitSize == walk.size() || Refuse(Meta(), "iUnitSize", meta_->iUnitSize, std::to_string(walk.size()));
  }

  bool RefuseEntry(const tagQMXMetaEntry& entry, EntryWalk::Fault fault) {
    const std::int64_t offset = OffsetOf(&entry);
    const std::string part = Meta("entry", (offset - begin_ - kMetaSize) / kEntrySize);
    switch (fault) {
      case EntryWalk::kNone:
        break;
      case EntryWalk::kSelf:
        return Refuse(part, "ptrEntry", entry.ptrEntry, std::to_string(offset));
      case EntryWalk::kName:
        return RefuseText(part, "ptrName", entry.ptrName);
      case EntryWalk::kCustomAttr2:
        return RefuseText(part, "ptrCustomAttr2", entry.ptrCustomAttr2);
      case EntryWalk::kRefer:
        return Refuse(part, "ptrRefer", entry.ptrRefer, "-1 or an earlier entry of the same meta");
      case EntryWalk::kType:
        return Refuse(part, "iType", entry.iType, "0 to " + std::to_string(QMX_TYPE_BYTES));
      case EntryWalk::kTypeMeta:
        return Refuse(part, "ptrTypeMeta", entry.ptrTypeMeta,
                      entry.iType > QMX_TYPE_STRUCT ? "-1 for a simple type" : "a meta of the kind given by iType");
      case EntryWalk::kUnitSize:
        return Refuse(part, "iUnitSize", entry.iUnitSize, "the size of its type");
      case EntryWalk::kSize:
        return Refuse(part, "iUnitSize", entry.iUnitSize, "a size with which that of the meta fits in 64 bits");
    }
    return true;
  }

  bool IsEntry(std::int64_t offset) const {
    const std::int64_t first = begin_ + kMetaSize;
    return offset >= first && offset < first + meta_->iEntriesNum * kEntrySize && (offset - first) % kEntrySize == 0;
  }

  template <class Record>
  bool CheckMembers(const char* list, std::span<const Record> members) {
    for (const Record& member : members) {
      const auto refuse = [&](const char* allowed) {
        return Refuse(Meta(list, &member - members.data()), "ptrEntry", member.ptrEntry, allowed);
      };
      if (!IsEntry(member.ptrEntry)) return refuse("an entry of the same meta");
      const char* const name = data_ + At<tagQMXMetaEntry>(member.ptrEntry)->ptrName;
      const std::size_t length = ::strnlen(name, repeats_left_);
      if (length == repeats_left_) return refuse("fewer repetitions of long names");
      repeats_left_ -= length;
    }
    return true;
  }

  bool CheckKeys() {
    const auto splittable = List<tagQMXDBKeyInfo>(meta_->ptrSplitTableKeyBase, meta_->iSplitTableKeyMemberNum);
    if (!CheckMembers("primary key member", List<tagQMXDBKeyInfo>(meta_->ptrPrimayKeyBase, meta_->nPrimayKeyMemberNum)) ||
        !CheckMembers("splittable key member", splittable)) {
      return false;
    }
    const tagQMXDBKeyInfo first = splittable.empty() ? tagQMXDBKeyInfo{0, QMX_NO_REF} : splittable.front();
    const tagQMXDBKeyInfo& found = meta_->stSplitTableKey;
    if (found.iHOff != first.iHOff) return Refuse(Meta(), "stSplitTableKey.iHOff", found.iHOff, std::to_string(first.iHOff));
    return found.ptrEntry == first.ptrEntry ||
           Refuse(Meta(), "stSplitTableKey.ptrEntry", found.ptrEntry, std::to_string(first.ptrEntry));
  }

  bool CheckColumns() {
    std::int64_t last_name = texts_ - 1;
    for (const tagQMXMetaIndex& index : Indexes()) {
      if (index.ptrName <= last_name || !Texts().Has(index.ptrName)) {
        return RefuseText(Meta("index", &index - Indexes().data()), "ptrName", index.ptrName);
      }
      last_name = index.ptrName;
      if (!CheckMembers("column", List<tagQMXColumnInfo>(index.ptrColumnBase, index.iColumnNum))) return false;
    }
    return true;
  }

  // --- Structures inside structures ---

  bool CheckNesting() {
    for (const std::int64_t meta : metas_) {
      if (table_.Levels(meta) == MetaTable::kUnknown && !FindLevels(meta, 1)) return false;
    }
    return true;
  }

  // Visits each meta once. `depth` is the level of its entries, at most max_depth_.
  bool FindLevels(std::int64_t offset, int depth) {
    table_.Levels(offset) = MetaTable::kOpen;
    int inner = 0;
    const tagQMXMeta& meta = *At<tagQMXMeta>(offset);
    const std::span entries(At<tagQMXMetaEntry>(offset + kMetaSize), static_cast<std::size_t>(meta.iEntriesNum));
    for (const tagQMXMetaEntry& entry : entries) {
      if (entry.ptrTypeMeta == QMX_NO_REF) continue;
      const std::uint8_t& levels = table_.Levels(entry.ptrTypeMeta);
      const auto refuse = [&](const std::string& allowed) {
        return Refuse(Meta(offset) + ", entry " + std::to_string(&entry - entries.data()), "ptrTypeMeta", entry.ptrTypeMeta,
                      allowed);
      };
      if (levels == MetaTable::kOpen) return refuse("structures that do not contain themselves");
      if (levels == MetaTable::kUnknown && depth < max_depth_ && !FindLevels(entry.ptrTypeMeta, depth + 1)) return false;
      if (levels == MetaTable::kUnknown || levels >= max_depth_) {
        return refuse("structures nested up to " + std::to_string(max_depth_) + " levels deep");
      }
      inner = std::max<int>(inner, levels);
    }
    table_.Levels(offset) = static_cast<std::uint8_t>(inner + 1);
    return true;
  }

  const char* block_;
  std::size_t size_;
  int max_depth_;
  std::size_t repeats_left_;  // bytes of entry names that key members and columns may still repeat
  TypeSizes type_sizes_;

  const tagQMXMetaLib* library_ = nullptr;
  const char* data_ = nullptr;
  std::int64_t data_size_ = 0;
  std::span<const std::int64_t> metas_;
  MetaTable table_;
  std::vector<std::string_view> names_;  // names of the metas

  const tagQMXMeta* meta_ = nullptr;
  std::int64_t begin_ = 0;
  std::int64_t end_ = 0;
  std::int64_t texts_ = 0;  // where the records of the meta end and its texts begin

  std::optional<VerifyError> error_;
};

}  // namespace

std::optional<VerifyError> Verify(const void* block, std::size_t size, const Limits& limits) {
  return Verifier(block, size, limits).Run();
}

}  // namespace qmx
