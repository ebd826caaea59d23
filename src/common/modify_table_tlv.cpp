// Field rules of the TLV protocol: fields are matched by id, and sub-structures follow a looser set of rules than tables.
// Held by tests/rules/tlv_test.cpp and tlv_structure_test.cpp.
#include "common/lookup.h"
#include "common/meta_view.h"
#include "common/modify_table.h"
#include "common/refuse.h"

using namespace korvel;

namespace {

constexpr Message<> kNothingToFind("needCheckPstEntry or new_meta can't be null");

}  // namespace

// Structure names, custom attributes, positions and added entries are not looked at.
int ModifyTable::CompareEntryValueFieldTLV(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const {
  if (old_meta == nullptr) return Refuse(HERE, kMetaNull);
  const char* old_meta_name = qmx_get_meta_name(old_meta);
  if (new_meta == nullptr) return Refuse(HERE, kStructMissing, old_meta_name);
  const CallMemory::Scope memory(this);
  const CommonPrefix* prefix = PrefixById(old_meta, new_meta);
  const int old_entry_num = EntryCount(old_meta);
  for (int i = prefix->Next(0); i < old_entry_num; i = prefix->Next(i + 1)) {
    // An entry that cannot be had did not survive either.
    const LPQMXMETAENTRY pstOldEntry = qmx_get_entry_by_index(old_meta, i);
    const char* name = EntryName(pstOldEntry);
    if (!CheckWhetherExistEntryOfTLV(pstOldEntry, new_meta, log_handle)) return Refuse(HERE, kTlvEntryMissing, name);
    // The first entry of that id, which need not be the one that survived.
    const int id = qmx_get_entry_id(pstOldEntry);
    const LPQMXMETAENTRY pstNewEntry = CheckWhetherExistEntryById(id, new_meta, log_handle);
    if (pstNewEntry == nullptr) return Refuse(HERE, kTlvEntryId, id, old_meta_name);

    const std::size_t old_size = qmx_get_entry_unitsize(pstOldEntry);
    const std::size_t new_size = qmx_get_entry_unitsize(pstNewEntry);
    if (IsPrimaryKeyMember(pstOldEntry)) {
      if (!SameName(name, qmx_get_entry_name(pstNewEntry))) return Refuse(HERE, kTlvKeyName, id, old_meta_name);
      if (old_size != new_size) return Refuse(HERE, kTlvKeySize, name, old_meta_name);
    } else if (old_size > new_size) {
      return Refuse(HERE, kEntrySize, name, old_meta_name);
    }
    const int old_type = qmx_get_entry_type(pstOldEntry);
    if (old_type != qmx_get_entry_type(pstNewEntry)) return Refuse(HERE, kEntryType, name, old_meta_name);
    const int old_count = qmx_get_entry_count(pstOldEntry);
    const int new_count = qmx_get_entry_count(pstNewEntry);
    if (HasRefer(pstOldEntry)) {
      if (new_count < old_count) return Refuse(HERE, kReferCount, name, old_meta_name);
    } else if (new_count != old_count) {
      return Refuse(HERE, kFixedCount, name, old_meta_name);
    }

    if (!IsComposite(old_type)) continue;
    const LPQMXMETA old_meta1 = qmx_get_entry_type_meta(OwnerOf(old_meta), pstOldEntry);
    const LPQMXMETA new_meta1 = qmx_get_entry_type_meta(OwnerOf(new_meta), pstNewEntry);
    const int ret = memory->Once(CallMemory::Rule::kTlv, old_meta1, new_meta1, m_szErrorType,
                                 [&] { return CompareEntrySubMetaFieldTLV(old_meta1, new_meta1, log_handle); });
    if (ret != 0) return ERROR_VALUE_FIELD;
  }
  return CHECK_TABLE_SUCCESS;
}

bool ModifyTable::CheckWhetherExistEntryOfTLV(LPQMXMETAENTRY needCheckPstEntry, LPQMXMETA new_meta,
                                              LPVESKCATEGORYINST log_handle) const {
  if (needCheckPstEntry == nullptr || new_meta == nullptr) {
    Report(HERE, kNothingToFind);
    return false;
  }
  const int entry_num = EntryCount(new_meta);
  if (entry_num <= 0) Report(HERE, kNoEntries, qmx_get_meta_name(new_meta));
  return PositionByIdAndName(new_meta, entry_num, qmx_get_entry_id(needCheckPstEntry), qmx_get_entry_name(needCheckPstEntry)) >=
         0;
}

// Names, keys and refer properties are not looked at; an entry whose id is gone is passed over.
int ModifyTable::CompareEntrySubMetaFieldTLV(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const {
  if (old_meta == nullptr || new_meta == nullptr) return Refuse(HERE, kMetaNull);
  const char* old_meta_name = qmx_get_meta_name(old_meta);
  const CallMemory::Scope memory(this);
  for (const auto [index, pstOldEntry] : Entries(old_meta, PrefixById(old_meta, new_meta))) {
    const int id = qmx_get_entry_id(pstOldEntry);
    const LPQMXMETAENTRY pstNewEntry = CheckWhetherExistEntryById(id, new_meta, log_handle);
    if (pstNewEntry == nullptr) continue;
    const char* name = qmx_get_entry_name(pstOldEntry);
    const int old_type = qmx_get_entry_type(pstOldEntry);
    if (old_type != qmx_get_entry_type(pstNewEntry)) return Refuse(HERE, kSubEntryType, id, old_meta_name);
    if (qmx_get_entry_unitsize(pstOldEntry) > qmx_get_entry_unitsize(pstNewEntry)) {
      return Refuse(HERE, kEntrySize, name, old_meta_name);
    }
    if (qmx_get_entry_count(pstOldEntry) > qmx_get_entry_count(pstNewEntry)) {
      return Refuse(HERE, kSubEntryCount, name, old_meta_name);
    }
    if (!IsComposite(old_type)) continue;
    const LPQMXMETA old_meta1 = qmx_get_entry_type_meta(OwnerOf(old_meta), pstOldEntry);
    const LPQMXMETA new_meta1 = qmx_get_entry_type_meta(OwnerOf(new_meta), pstNewEntry);
    const int ret = memory->Once(CallMemory::Rule::kTlv, old_meta1, new_meta1, m_szErrorType,
                                 [&] { return CompareEntrySubMetaFieldTLV(old_meta1, new_meta1, log_handle); });
    if (ret != 0) return ERROR_VALUE_FIELD;
  }
  return CHECK_TABLE_SUCCESS;
}
