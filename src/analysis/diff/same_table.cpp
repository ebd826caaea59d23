// Compares the records of both libraries. Tested by tests/report/same_table_test.cpp.
#include "analysis/diff/same_table.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <set>
#include <span>

#include "common/meta_view.h"
#include "schema/model.h"

namespace korvel {
namespace {

// A missing text is the same as another missing one only.
bool IsSameText(const char* a, const char* b) { return a == nullptr || b == nullptr ? a == b : SameName(a, b); }

// Whether two lists have the same length and pairwise the same items.
template <class List, class Same>
bool IsSameList(const List& old_list, const List& new_list, Same same) {
  if (old_list.size() != new_list.size()) return false;
  for (int i = 0; i < old_list.size(); ++i) {
    if (!same(old_list[i], new_list[i])) return false;
  }
  return true;
}

RecordList<tagQMXMetaEntry> EntriesOf(LPQMXMETA meta) { return {meta, meta->ptrEntries, EntryCount(meta)}; }

// Whether both sides have the same records of simple fields without attributes, and the same bytes from their first name to their
// last one. So it is for most tables, and then no name has to be compared. False if this is not known.
bool HasSameBytes(LPQMXMETA old_meta, LPQMXMETA new_meta) {
  const RecordList<tagQMXMetaEntry> old_list = EntriesOf(old_meta);
  const RecordList<tagQMXMetaEntry> new_list = EntriesOf(new_meta);
  if (old_list.size() == 0 || old_list.size() != new_list.size()) return false;
  if (old_list[0] == nullptr || new_list[0] == nullptr) return false;
  const std::span<const tagQMXMetaEntry> records(old_list[0], static_cast<std::size_t>(old_list.size()));
  if (std::memcmp(records.data(), new_list[0], records.size_bytes()) != 0) return false;
  std::int64_t first = records[0].ptrName;
  std::int64_t last = first;
  for (const tagQMXMetaEntry& record : records) {
    if (record.ptrCustomAttr2 != QMX_NO_REF || record.ptrTypeMeta != QMX_NO_REF) return false;
    first = std::min(first, record.ptrName);
    last = std::max(last, record.ptrName);
  }
  const char* const old_data = DataOf(old_meta);
  const char* const new_data = DataOf(new_meta);
  return std::memcmp(old_data + first, new_data + first, static_cast<std::size_t>(last - first)) == 0 &&
         SameName(old_data + last, new_data + last);
}

class Comparison {
 public:
  Comparison(LPQMXMETALIB old_lib, LPQMXMETALIB new_lib) : old_lib_(old_lib), new_lib_(new_lib) {}

  // Each pair is compared once. Recursion is limited because readers limit the nesting of libraries.
  bool IsSame(const char* name) {
    const LPQMXMETA old_meta = qmx_get_meta_by_name(old_lib_, name);
    const LPQMXMETA new_meta = qmx_get_meta_by_name(new_lib_, name);
    if (old_meta == nullptr || new_meta == nullptr) return false;
    if (!known_.insert(old_meta).second) return true;
    return old_meta->iType == new_meta->iType &&
           IsSameText(qmx_get_meta_customattr(old_meta), qmx_get_meta_customattr(new_meta)) &&
           HasSameEntries(old_meta, new_meta) && HasSameKeys(old_meta, new_meta) && HasSameIndexes(old_meta, new_meta);
  }

 private:
  bool HasSameEntries(LPQMXMETA old_meta, LPQMXMETA new_meta) {
    return HasSameBytes(old_meta, new_meta) || IsSameList(EntriesOf(old_meta), EntriesOf(new_meta),
                                                          [&](LPQMXMETAENTRY a, LPQMXMETAENTRY b) { return IsSameEntry(a, b); });
  }

  // The size of a composite entry is that of its structure.
  bool IsSameEntry(LPQMXMETAENTRY a, LPQMXMETAENTRY b) {
    if (a == nullptr || b == nullptr) return a == b;
    const bool has_same_values = a->iID == b->iID && a->iVersion == b->iVersion && a->iType == b->iType &&
                                 a->iUnitSize == b->iUnitSize && a->iCount == b->iCount &&
                                 IsSameText(qmx_get_entry_name(a), qmx_get_entry_name(b));
    if (!has_same_values || !HasSameTexts(a, b)) return false;
    const LPQMXMETA old_inner = qmx_get_entry_type_meta(old_lib_, a);
    const LPQMXMETA new_inner = qmx_get_entry_type_meta(new_lib_, b);
    if (old_inner == nullptr || new_inner == nullptr) return old_inner == new_inner;
    const char* const name = qmx_get_meta_name(old_inner);
    return IsSameText(name, qmx_get_meta_name(new_inner)) && IsSame(name);
  }

  // Most entries have neither.
  bool HasSameTexts(LPQMXMETAENTRY a, LPQMXMETAENTRY b) const {
    const auto is_plain = [](LPQMXMETAENTRY entry) {
      return entry->ptrRefer == QMX_NO_REF && entry->ptrCustomAttr2 == QMX_NO_REF;
    };
    if (is_plain(a) && is_plain(b)) return true;
    return IsSameText(EntryName(qmx_get_entry_refer(a)), EntryName(qmx_get_entry_refer(b))) &&
           IsSameText(qmx_get_entry_customattr2(old_lib_, a), qmx_get_entry_customattr2(new_lib_, b));
  }

  static bool HasSameKeys(LPQMXMETA old_meta, LPQMXMETA new_meta) {
    const auto is_same = [&](const tagQMXDBKeyInfo* a, const tagQMXDBKeyInfo* b) {
      return IsSameText(MemberName(old_meta, a), MemberName(new_meta, b));
    };
    const auto splittable = [](LPQMXMETA meta) {
      return RecordList<tagQMXDBKeyInfo>(meta, meta->ptrSplitTableKeyBase, meta->iSplitTableKeyMemberNum);
    };
    return IsSameList(PrimaryKeyMembers(old_meta), PrimaryKeyMembers(new_meta), is_same) &&
           IsSameList(splittable(old_meta), splittable(new_meta), is_same);
  }

  static bool HasSameIndexes(LPQMXMETA old_meta, LPQMXMETA new_meta) {
    const auto is_same_column = [&](const tagQMXColumnInfo* a, const tagQMXColumnInfo* b) {
      return IsSameText(MemberName(old_meta, a), MemberName(new_meta, b)) &&
             (a == nullptr || b == nullptr ? a == b : a->iIsDesc == b->iIsDesc);
    };
    return IsSameList(Indexes(old_meta), Indexes(new_meta), [&](LPQMXMETAINDEX a, LPQMXMETAINDEX b) {
      if (a == nullptr || b == nullptr) return a == b;
      return IsSameText(IndexName(old_meta, a), IndexName(new_meta, b)) &&
             IsSameList(Columns(old_meta, a), Columns(new_meta, b), is_same_column);
    });
  }

  LPQMXMETALIB old_lib_;
  LPQMXMETALIB new_lib_;
  std::set<LPQMXMETA> known_;
};

}  // namespace

bool IsUnchanged(const Source& old_source, const Source& new_source, const std::string& table) {
  if (&old_source == &new_source) return true;
  const Model old_head = HeadOf(old_source.Library());
  const Model new_head = HeadOf(new_source.Library());
  return old_head.name == new_head.name && old_head.protocol == new_head.protocol &&
         Comparison(old_source.Library(), new_source.Library()).IsSame(table.c_str());
}

bool AreAllUnchanged(const Source& old_source, const Source& new_source) {
  const tagQMXMetaLib& a = *old_source.Library();
  const tagQMXMetaLib& b = *new_source.Library();
  return a.iFlag == b.iFlag && a.iDataSize == b.iDataSize && a.ptrName == b.ptrName && a.ptrMetas == b.ptrMetas &&
         a.ptrMetaSlots == b.ptrMetaSlots && a.iMetaNum == b.iMetaNum && a.iMetaSlotNum == b.iMetaSlotNum &&
         a.iMetaSlotSeed == b.iMetaSlotSeed && std::memcmp(a.data, b.data, static_cast<std::size_t>(a.iDataSize)) == 0;
}

std::size_t CountOwnEdits(const std::vector<Edit>& edits) {
  return static_cast<std::size_t>(
      std::ranges::count_if(edits, [](const Edit& edit) { return edit.kind != EditKind::kLibraryVersion; }));
}

}  // namespace korvel
