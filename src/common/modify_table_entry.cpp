// Lookups of entries by name and id, and the rules on versions and order of entries.
// Held by tests/rules/entry_lookup_test.cpp, entry_version_test.cpp and entry_order_test.cpp.
#include "common/lookup.h"
#include "common/meta_view.h"
#include "common/modify_table.h"
#include "common/refuse.h"

using namespace korvel;

// The first entry of that name. A missing name is silent and leaves `entry_offset`; bad arguments and a meta without entries are
// reported, yet the caller goes on as if the name were missing.
LPQMXMETAENTRY ModifyTable::CheckWhetherExistEntry(const char* entry_name, LPQMXMETA meta, int& entry_offset,
                                                   LPVESKCATEGORYINST log_handle) const {
  if (entry_name == nullptr || meta == nullptr) {
    Report(HERE, kNameOrMeta);
    return nullptr;
  }
  const int count = EntryCount(meta);
  if (count <= 0) Report(HERE, kNoEntries, qmx_get_meta_name(meta));
  const int position = PositionByName(meta, count, entry_name);
  if (position < 0) return nullptr;
  entry_offset = position;
  return qmx_get_entry_by_index(meta, position);
}

// The first entry of that id, on the same terms. 0 is an id; a negative one is a bad argument.
LPQMXMETAENTRY ModifyTable::CheckWhetherExistEntryById(int entry_id, LPQMXMETA meta, LPVESKCATEGORYINST log_handle) const {
  if (entry_id < 0 || meta == nullptr) {
    Report(HERE, kNameOrMeta);
    return nullptr;
  }
  const int count = EntryCount(meta);
  if (count <= 0) Report(HERE, kNoEntries, qmx_get_meta_name(meta));
  const int position = PositionById(meta, count, entry_id);
  return position < 0 ? nullptr : qmx_get_entry_by_index(meta, position);
}

// A kept entry keeps its version; an added one is above the old library's. Removed entries are not looked at.
int ModifyTable::CompareVersion(LPQMXMETA old_meta, LPQMXMETA new_meta, int old_metalib_version,
                                LPVESKCATEGORYINST log_handle) const {
  if (old_meta == nullptr || new_meta == nullptr) return Refuse(HERE, kMetaNull);
  const CallMemory::Scope memory(this);
  for (const auto [index, pstNewEntry] : Entries(new_meta, PrefixByName(old_meta, new_meta))) {
    int unused{};  // a position
    const char* name = qmx_get_entry_name(pstNewEntry);
    const LPQMXMETAENTRY pstOldEntry = CheckWhetherExistEntry(name, old_meta, unused, log_handle);
    const int version = qmx_get_entry_version(pstNewEntry);
    if (pstOldEntry != nullptr && version != qmx_get_entry_version(pstOldEntry)) {
      return Refuse(HERE, kEntryVersion, qmx_get_entry_name(pstOldEntry), qmx_get_meta_name(old_meta));
    }
    if (pstOldEntry == nullptr && version <= old_metalib_version) {
      return Refuse(HERE, kNewEntryVersion, name, qmx_get_meta_name(new_meta));
    }
    // The old entry alone decides whether to descend, also where there is none.
    if (!IsComposite(qmx_get_entry_type(pstOldEntry))) continue;
    const LPQMXMETA old_meta1 = qmx_get_entry_type_meta(OwnerOf(old_meta), pstOldEntry);
    const LPQMXMETA new_meta1 = qmx_get_entry_type_meta(OwnerOf(new_meta), pstNewEntry);
    const int ret = memory->Once(CallMemory::Rule::kVersion, old_meta1, new_meta1, m_szErrorType,
                                 [&] { return CompareVersion(old_meta1, new_meta1, old_metalib_version, log_handle); });
    if (ret != 0) return ret;
  }
  return CHECK_TABLE_SUCCESS;
}

// Kept entries keep their order; each added one shifts those behind it by one. Trailing entries may go unnoticed.
int ModifyTable::CompareOrder(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const {
  if (old_meta == nullptr || new_meta == nullptr) return Refuse(HERE, kMetaNull);
  const CallMemory::Scope memory(this);
  int curr_num_of_new_entry = 0;
  for (const auto [index, pstNewEntry] : Entries(new_meta, PrefixByName(old_meta, new_meta))) {
    int entry_offset{};
    const LPQMXMETAENTRY pstEntry = CheckWhetherExistEntry(qmx_get_entry_name(pstNewEntry), old_meta, entry_offset, log_handle);
    if (pstEntry == nullptr) {
      ++curr_num_of_new_entry;
      continue;
    }
    if (entry_offset + curr_num_of_new_entry != index) {
      return Refuse(HERE, kEntryOrder, qmx_get_entry_name(pstEntry), qmx_get_meta_name(old_meta));
    }
    if (!IsComposite(qmx_get_entry_type(pstEntry))) continue;
    const LPQMXMETA old_meta1 = qmx_get_entry_type_meta(OwnerOf(old_meta), pstEntry);
    const LPQMXMETA new_meta1 = qmx_get_entry_type_meta(OwnerOf(new_meta), pstNewEntry);
    const int ret = memory->Once(CallMemory::Rule::kOrder, old_meta1, new_meta1, m_szErrorType,
                                 [&] { return CompareOrder(old_meta1, new_meta1, log_handle); });
    if (ret != 0) return ret;
  }
  return CHECK_TABLE_SUCCESS;
}
