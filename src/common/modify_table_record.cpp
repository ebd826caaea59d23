// Field rules of the record format: fields are matched by name.
// Held by tests/rules/record_test.cpp.
#include "common/lookup.h"
#include "common/meta_view.h"
#include "common/modify_table.h"
#include "common/refuse.h"

using namespace korvel;

// Positions, versions and added entries are not looked at. Whether a field is a key field or has
// a refer property is asked of the old entry alone.
int ModifyTable::CompareEntryValueField(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const {
  if (old_meta == nullptr) return Refuse(HERE, kMetaNull);
  const char* meta_name = qmx_get_meta_name(old_meta);
  if (new_meta == nullptr) return Refuse(HERE, kStructMissing, meta_name);
  const char* other_name = qmx_get_meta_name(new_meta);
  if (!SameName(meta_name, other_name)) return Refuse(HERE, kStructName, meta_name, other_name);

  const CallMemory::Scope memory(this);
  const LPQMXMETALIB ptrOldMetalib = OwnerOf(old_meta);
  const LPQMXMETALIB ptrNewMetalib = OwnerOf(new_meta);
  const bool ids_are_kept = IsTlv(ptrOldMetalib) && IsTlv(ptrNewMetalib);
  for (const auto [index, pstOldEntry] : Entries(old_meta, PrefixByName(old_meta, new_meta))) {
    int unused{};  // a position
    const char* name = qmx_get_entry_name(pstOldEntry);
    const LPQMXMETAENTRY pstNewEntry = CheckWhetherExistEntry(name, new_meta, unused, log_handle);
    if (pstNewEntry == nullptr) return Refuse(HERE, kEntryMissing, name, meta_name);
    const int old_id = qmx_get_entry_id(pstOldEntry);
    if (ids_are_kept && old_id != qmx_get_entry_id(pstNewEntry)) return Refuse(HERE, kEntryId, old_id, meta_name);

    const std::size_t old_size = qmx_get_entry_unitsize(pstOldEntry);
    const std::size_t new_size = qmx_get_entry_unitsize(pstNewEntry);
    if (IsPrimaryKeyMember(pstOldEntry)) {
      if (old_size != new_size) return Refuse(HERE, kPrimaryKeySize, name, meta_name);
    } else if (old_size > new_size) {
      return Refuse(HERE, kEntrySize, name, meta_name);
    }
    const int old_type = qmx_get_entry_type(pstOldEntry);
    if (old_type != qmx_get_entry_type(pstNewEntry)) return Refuse(HERE, kEntryType, name, meta_name);
    const int old_count = qmx_get_entry_count(pstOldEntry);
    const int new_count = qmx_get_entry_count(pstNewEntry);
    if (HasRefer(pstOldEntry)) {
      if (new_count < old_count) return Refuse(HERE, kReferCount, name, meta_name);
    } else if (new_count != old_count) {
      return Refuse(HERE, kFixedCount, name, meta_name);
    }

    if (IsComposite(old_type)) {
      const LPQMXMETA old_meta1 = qmx_get_entry_type_meta(ptrOldMetalib, pstOldEntry);
      const LPQMXMETA new_meta1 = qmx_get_entry_type_meta(ptrNewMetalib, pstNewEntry);
      // The inner text stays; every inner code becomes this one.
      const int ret = memory->Once(CallMemory::Rule::kRecord, old_meta1, new_meta1, m_szErrorType,
                                   [&] { return CompareEntryValueField(old_meta1, new_meta1, log_handle); });
      if (ret != 0) return ERROR_VALUE_FIELD;
    }
    if (!SameCustomAttr2(ptrOldMetalib, pstOldEntry, ptrNewMetalib, pstNewEntry)) {
      return Refuse(HERE, kCustomAttr2, name, meta_name);
    }
  }
  return CHECK_TABLE_SUCCESS;
}
