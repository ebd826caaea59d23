// Verifies the record, lists, texts, entries, keys and columns of one meta. Tested by tests/qmx/image_verify_test.cpp.
#include "qmx/image_verify_meta.h"

#include <cstring>

namespace qmx {

bool MetaVerifier::Check(std::int64_t begin, std::int64_t end) {
  meta_ = state_.At<tagQMXMeta>(begin);
  begin_ = begin;
  end_ = end;
  if (meta_->ptrMeta != begin_) return state_.Refuse(Part(), "ptrMeta", meta_->ptrMeta, std::to_string(begin_));
  if (meta_->iType != QMX_TYPE_STRUCT && meta_->iType != QMX_TYPE_UNION) {
    return state_.Refuse(Part(), "iType", meta_->iType, "0 for a union, 1 for a structure");
  }
  return CheckLists() && CheckTexts() && CheckEntries() && CheckKeys() && CheckColumns();
}

std::string MetaVerifier::Part(const char* list, std::int64_t item) const {
  return Part() + ", " + list + " " + std::to_string(item);
}

template <class Record>
std::span<const Record> MetaVerifier::List(std::int64_t list, std::int32_t count) const {
  return {state_.At<Record>(count == 0 ? 0 : begin_ + list), static_cast<std::size_t>(count)};
}

std::span<const tagQMXMetaIndex> MetaVerifier::Indexes() const {
  return List<tagQMXMetaIndex>(meta_->ptrIndexes, meta_->iIndexesNum);
}

bool MetaVerifier::IsEntry(std::int64_t offset) const {
  const std::int64_t first = begin_ + kMetaSize;
  return offset >= first && offset < first + meta_->iEntriesNum * kEntrySize && (offset - first) % kEntrySize == 0;
}

// A list of the meta begins at the end of the previous one.
template <class Record, class Count>
bool MetaVerifier::CheckList(const char* field, const std::int64_t& list, const char* count_field, const Count& count) {
  constexpr std::int64_t kSize = sizeof(Record);
  if (count < 0 || count * kSize > end_ - texts_) {
    return state_.Refuse(Part(), count_field, count, "0 to " + std::to_string((end_ - texts_) / kSize) + ", as many as fit");
  }
  const std::int64_t allowed = count == 0 ? QMX_NO_REF : texts_ - begin_;
  if (list != allowed) return state_.Refuse(Part(), field, list, std::to_string(allowed));
  texts_ += count * kSize;
  return true;
}

bool MetaVerifier::CheckLists() {
  const tagQMXMeta& meta = *meta_;
  texts_ = begin_ + kMetaSize;
  // The checker logs each visit to a structure without entries, and with a log it visits a structure once for each path to it.
  if (meta.iEntriesNum < 1 || meta.iEntriesNum > static_cast<std::int64_t>(kMaxEntries)) {
    return state_.Refuse(Part(), "iEntriesNum", meta.iEntriesNum, "1 to " + std::to_string(kMaxEntries));
  }
  return CheckList<tagQMXMetaEntry>("ptrEntries", meta.ptrEntries, "iEntriesNum", meta.iEntriesNum) &&
         CheckList<tagQMXDBKeyInfo>("ptrPrimayKeyBase", meta.ptrPrimayKeyBase, "nPrimayKeyMemberNum", meta.nPrimayKeyMemberNum) &&
         CheckList<tagQMXDBKeyInfo>("ptrSplitTableKeyBase", meta.ptrSplitTableKeyBase, "iSplitTableKeyMemberNum",
                                    meta.iSplitTableKeyMemberNum) &&
         CheckList<tagQMXMetaIndex>("ptrIndexes", meta.ptrIndexes, "iIndexesNum", meta.iIndexesNum) && CheckColumnLists() &&
         (meta.stSortKey.ptrSortKeyBase == QMX_NO_REF ||
          state_.Refuse(Part(), "ptrSortKeyBase", meta.stSortKey.ptrSortKeyBase, "-1")) &&
         (meta.stSortKey.iSortKeyMemberNum == 0 ||
          state_.Refuse(Part(), "iSortKeyMemberNum", meta.stSortKey.iSortKeyMemberNum, "0"));
}

// The lists of all indexes are contiguous.
bool MetaVerifier::CheckColumnLists() {
  for (const tagQMXMetaIndex& index : Indexes()) {
    if (!CheckList<tagQMXColumnInfo>("ptrColumnBase", index.ptrColumnBase, "iColumnNum", index.iColumnNum)) return false;
  }
  return true;
}

bool MetaVerifier::RefuseText(const std::string& part, const char* field, const std::int64_t& offset) {
  return state_.Refuse(part, field, offset,
                       "a text of the meta, from " + std::to_string(texts_) + " to " + std::to_string(end_) +
                           ", directly after another one, in the order of the records");
}

// From here on, [texts_, end_) contains only texts.
bool MetaVerifier::CheckTexts() {
  const tagQMXMeta& meta = *meta_;
  const bool ends = texts_ < end_ && state_.data[end_ - 1] == 0;
  if (!ends || !Texts().Has(meta.ptrName)) return RefuseText(Part(), "ptrName", meta.ptrName);
  return meta.ptrCustomAttr == QMX_NO_REF || Texts().Has(meta.ptrCustomAttr) ||
         RefuseText(Part(), "ptrCustomAttr", meta.ptrCustomAttr);
}

bool MetaVerifier::CheckEntries() {
  EntryWalk walk(Texts(), begin_ + kMetaSize, state_.table, type_sizes_, meta_->iType == QMX_TYPE_UNION);
  for (const tagQMXMetaEntry& entry : List<tagQMXMetaEntry>(meta_->ptrEntries, meta_->iEntriesNum)) {
    if (const EntryWalk::Fault fault = walk.Next(entry); fault != EntryWalk::kNone) return RefuseEntry(entry, fault);
  }
  if (!walk.is_nested()) state_.table.Levels(begin_) = 1;
  return meta_->iUnitSize == walk.size() || state_.Refuse(Part(), "iUnitSize", meta_->iUnitSize, std::to_string(walk.size()));
}

bool MetaVerifier::RefuseEntry(const tagQMXMetaEntry& entry, EntryWalk::Fault fault) {
  const std::int64_t offset = state_.OffsetOf(&entry);
  const std::string part = Part("entry", (offset - begin_ - kMetaSize) / kEntrySize);
  switch (fault) {
    case EntryWalk::kNone:
      break;
    case EntryWalk::kSelf:
      return state_.Refuse(part, "ptrEntry", entry.ptrEntry, std::to_string(offset));
    case EntryWalk::kName:
      return RefuseText(part, "ptrName", entry.ptrName);
    case EntryWalk::kCustomAttr2:
      return RefuseText(part, "ptrCustomAttr2", entry.ptrCustomAttr2);
    case EntryWalk::kRefer:
      return state_.Refuse(part, "ptrRefer", entry.ptrRefer, "-1 or an earlier entry of the same meta");
    case EntryWalk::kType:
      return state_.Refuse(part, "iType", entry.iType, "0 to " + std::to_string(QMX_TYPE_BYTES));
    case EntryWalk::kTypeMeta:
      return state_.Refuse(part, "ptrTypeMeta", entry.ptrTypeMeta,
                           entry.iType > QMX_TYPE_STRUCT ? "-1 for a simple type" : "a meta of the kind given by iType");
    case EntryWalk::kUnitSize:
      return state_.Refuse(part, "iUnitSize", entry.iUnitSize, "the size of its type");
    case EntryWalk::kSize:
      return state_.Refuse(part, "iUnitSize", entry.iUnitSize, "a size with which that of the meta fits in 64 bits");
  }
  return true;
}

template <class Record>
bool MetaVerifier::CheckMembers(const char* list, std::span<const Record> members) {
  for (const Record& member : members) {
    const auto refuse = [&](const char* allowed) {
      return state_.Refuse(Part(list, &member - members.data()), "ptrEntry", member.ptrEntry, allowed);
    };
    if (!IsEntry(member.ptrEntry)) return refuse("an entry of the same meta");
    const char* const name = state_.data + state_.At<tagQMXMetaEntry>(member.ptrEntry)->ptrName;
    const std::size_t length = ::strnlen(name, repeats_left_);
    if (length == repeats_left_) return refuse("fewer repetitions of long names");
    repeats_left_ -= length;
  }
  return true;
}

bool MetaVerifier::CheckKeys() {
  const auto splittable = List<tagQMXDBKeyInfo>(meta_->ptrSplitTableKeyBase, meta_->iSplitTableKeyMemberNum);
  if (!CheckMembers("primary key member", List<tagQMXDBKeyInfo>(meta_->ptrPrimayKeyBase, meta_->nPrimayKeyMemberNum)) ||
      !CheckMembers("splittable key member", splittable)) {
    return false;
  }
  const tagQMXDBKeyInfo first = splittable.empty() ? tagQMXDBKeyInfo{0, QMX_NO_REF} : splittable.front();
  const tagQMXDBKeyInfo& found = meta_->stSplitTableKey;
  if (found.iHOff != first.iHOff) return state_.Refuse(Part(), "stSplitTableKey.iHOff", found.iHOff, std::to_string(first.iHOff));
  return found.ptrEntry == first.ptrEntry ||
         state_.Refuse(Part(), "stSplitTableKey.ptrEntry", found.ptrEntry, std::to_string(first.ptrEntry));
}

bool MetaVerifier::CheckColumns() {
  std::int64_t last_name = texts_ - 1;
  for (const tagQMXMetaIndex& index : Indexes()) {
    if (index.ptrName <= last_name || !Texts().Has(index.ptrName)) {
      return RefuseText(Part("index", &index - Indexes().data()), "ptrName", index.ptrName);
    }
    last_name = index.ptrName;
    if (!CheckMembers("column", List<tagQMXColumnInfo>(index.ptrColumnBase, index.iColumnNum))) return false;
  }
  return true;
}

}  // namespace qmx
