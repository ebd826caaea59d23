// Views over the records of a schema library: the owner of a meta, and walks over entries, key members, indexes and columns.
// The only place of the checker that does offset arithmetic.
//
// A null meta has no entries and no indexes; the other views need a meta. Where a meta counts key members, indexes or columns but
// refers to no list of them, every record of the walk is null.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

#include "common/common_prefix.h"
#include "qmx/qmx_metalib_kernel.h"
#include "qmx/qmx_types.h"

namespace korvel {

// --- Libraries ---

// A missing library is in no protocol.
inline bool IsTlv(LPQMXMETALIB metalib) {
  return metalib != nullptr && metalib->iFlag != QMX_FLAG_UNSET && (metalib->iFlag & QMX_FLAG_TLV) != 0;
}

inline char* DataOf(LPQMXMETA meta) { return reinterpret_cast<char*>(meta) - meta->ptrMeta; }

// The library that holds a meta.
inline LPQMXMETALIB OwnerOf(LPQMXMETA meta) {
  return reinterpret_cast<LPQMXMETALIB>(DataOf(meta) - offsetof(tagQMXMetaLib, data));
}

// --- Names ---

// Whether two names are the same bytes. A missing name equals nothing, not even a missing one.
inline bool SameName(const char* a, const char* b) { return a != nullptr && b != nullptr && std::strcmp(a, b) == 0; }

inline bool IsEmpty(const char* text) { return text == nullptr || *text == '\0'; }

// --- Entries ---

inline bool IsComposite(int type_code) { return type_code == QMX_TYPE_STRUCT || type_code == QMX_TYPE_UNION; }

inline bool IsPrimaryKeyMember(LPQMXMETAENTRY entry) { return (entry->chDBFlag & QMX_DBFLAG_PRIMARY_KEY) != 0; }

// Whether the element count of an entry is given by another field.
inline bool HasRefer(LPQMXMETAENTRY entry) { return qmx_get_entry_refer(entry) != nullptr; }

inline int EntryCount(LPQMXMETA meta) { return meta == nullptr ? 0 : qmx_get_entry_num(meta); }

inline const char* EntryName(LPQMXMETAENTRY entry) { return entry == nullptr ? nullptr : qmx_get_entry_name(entry); }

// Size of all elements of an entry in bytes.
inline std::size_t EntrySize(LPQMXMETAENTRY entry) {
  return qmx_get_entry_unitsize(entry) * static_cast<std::size_t>(qmx_get_entry_count(entry));
}

// Whether an entry's second custom attribute is this text, of which the caller makes a copy: a library may return the texts of
// two entries from one place. Out of line, for most entries have none.
[[gnu::noinline]] inline bool HasCustomAttr2(LPQMXMETALIB metalib, LPQMXMETAENTRY entry, const std::string& copy) {
  const char* text = qmx_get_entry_customattr2(metalib, entry);
  return text != nullptr && copy == text;
}

// Whether the second custom attributes of two entries are the same; a missing one is empty.
inline bool SameCustomAttr2(LPQMXMETALIB old_metalib, LPQMXMETAENTRY old_entry, LPQMXMETALIB new_metalib,
                            LPQMXMETAENTRY new_entry) {
  const char* old_text = qmx_get_entry_customattr2(old_metalib, old_entry);
  return IsEmpty(old_text) ? IsEmpty(qmx_get_entry_customattr2(new_metalib, new_entry))
                           : HasCustomAttr2(new_metalib, new_entry, old_text);
}

// The entries of a meta by index. Skips missing ones, and of a common prefix all but the composite ones:
//   for (const auto [index, entry] : Entries(meta))
class Entries {
 public:
  struct Item {
    int index;
    LPQMXMETAENTRY entry;
  };

  class Iterator {
   public:
    Iterator(LPQMXMETA meta, const CommonPrefix* prefix, int index, int count)
        : meta_(meta), prefix_(prefix), count_(count), item_{index, nullptr} {
      PassOver();
    }
    Item operator*() const { return item_; }
    Iterator& operator++() {
      ++item_.index;
      PassOver();
      return *this;
    }
    bool operator!=(const Iterator& other) const { return item_.index != other.item_.index; }

   private:
    void PassOver() {
      for (; item_.index < count_; ++item_.index) {
        if (prefix_ != nullptr) item_.index = prefix_->Next(item_.index);
        if (item_.index < count_ && (item_.entry = qmx_get_entry_by_index(meta_, item_.index)) != nullptr) return;
      }
      item_.index = count_;
    }

    LPQMXMETA meta_;
    const CommonPrefix* prefix_;
    int count_;
    Item item_;
  };

  explicit Entries(LPQMXMETA meta, const CommonPrefix* prefix = nullptr)
      : meta_(meta), prefix_(prefix), count_(std::max(EntryCount(meta), 0)) {}
  Iterator begin() const { return {meta_, prefix_, 0, count_}; }
  Iterator end() const { return {meta_, prefix_, count_, count_}; }

 private:
  LPQMXMETA meta_;
  const CommonPrefix* prefix_;
  int count_;
};

// --- Lists inside a meta ---

// `count` consecutive records, as handles.
template <class Record>
class RecordList {
 public:
  class Iterator {
   public:
    Iterator(Record* first, int index) : first_(first), index_(index) {}
    Record* operator*() const { return At(first_, index_); }
    Iterator& operator++() {
      ++index_;
      return *this;
    }
    bool operator!=(const Iterator& other) const { return index_ != other.index_; }

   private:
    Record* first_;
    int index_;
  };

  // The list at `base` bytes behind `meta`; all records null if the meta or the list is missing.
  RecordList(LPQMXMETA meta, std::int64_t base, int count) : first_(nullptr), count_(count < 0 ? 0 : count) {
    if (meta != nullptr && base != QMX_NO_REF) first_ = reinterpret_cast<Record*>(reinterpret_cast<char*>(meta) + base);
  }
  Iterator begin() const { return {first_, 0}; }
  Iterator end() const { return {first_, count_}; }
  int size() const { return count_; }
  Record* operator[](int index) const { return At(first_, index); }

 private:
  static Record* At(Record* first, int index) { return first == nullptr ? nullptr : first + index; }

  Record* first_;
  int count_;
};

inline bool HasPrimaryKey(LPQMXMETA meta) { return meta->nPrimayKeyMemberNum >= 1 && meta->ptrPrimayKeyBase != QMX_NO_REF; }

inline RecordList<tagQMXDBKeyInfo> PrimaryKeyMembers(LPQMXMETA meta) {
  return {meta, meta->ptrPrimayKeyBase, meta->nPrimayKeyMemberNum};
}

inline bool HasSplittableKey(LPQMXMETA meta) { return meta->stSplitTableKey.ptrEntry != QMX_NO_REF; }

inline int IndexCount(LPQMXMETA meta) { return meta == nullptr ? 0 : meta->iIndexesNum; }

inline RecordList<tagQMXMetaIndex> Indexes(LPQMXMETA meta) {
  return {meta, meta == nullptr ? QMX_NO_REF : meta->ptrIndexes, IndexCount(meta)};
}

inline RecordList<tagQMXColumnInfo> Columns(LPQMXMETA meta, LPQMXMETAINDEX index) {
  return {meta, index->ptrColumnBase, index->iColumnNum};
}

// Name of the entry that forms a key member or column of `meta`; null if there is none.
template <class Member>
const char* MemberName(LPQMXMETA meta, const Member* member) {
  if (member == nullptr || member->ptrEntry == QMX_NO_REF) return nullptr;
  return qmx_get_entry_name(reinterpret_cast<LPQMXMETAENTRY>(DataOf(meta) + member->ptrEntry));
}

// Name of an index of `meta`; null if there is none.
inline const char* IndexName(LPQMXMETA meta, const tagQMXMetaIndex* index) {
  return index == nullptr || index->ptrName == QMX_NO_REF ? nullptr : DataOf(meta) + index->ptrName;
}

}  // namespace korvel
