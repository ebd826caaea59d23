// Field rules of the record format: fields are matched by name. Also what they share with TLV.
// Tested by tests/rules/record_test.cpp.
#include "common/meta_view.h"
#include "common/run.h"

namespace korvel {

// The old entry alone decides whether a field is a key field and whether it has a refer property.
int Run::CompareShape(const Here& here, LPQMXMETA old_meta, EntryPair entries, const ShapeRule& rule) {
  const auto [old_entry, new_entry] = entries;
  const char* name = qmx_get_entry_name(old_entry);
  const char* meta_name = qmx_get_meta_name(old_meta);
  const std::size_t old_size = qmx_get_entry_unitsize(old_entry);
  const std::size_t new_size = qmx_get_entry_unitsize(new_entry);
  if (IsPrimaryKeyMember(old_entry)) {
    if (old_size != new_size) return Refuse(here, rule.key_size, name, meta_name);
  } else if (old_size > new_size) {
    return Refuse(here, kEntrySize, name, meta_name);
  }
  if (qmx_get_entry_type(old_entry) != qmx_get_entry_type(new_entry)) return Refuse(here, kEntryType, name, meta_name);
  const int old_count = qmx_get_entry_count(old_entry);
  const int new_count = qmx_get_entry_count(new_entry);
  if (HasRefer(old_entry)) {
    if (new_count < old_count) return Refuse(here, kReferCount, name, meta_name);
  } else if (new_count != old_count) {
    return Refuse(here, kFixedCount, name, meta_name);
  }
  return CHECK_TABLE_SUCCESS;
}

// Positions, versions and added entries are not compared.
int Run::CompareEntryValueField(MetaPair metas) {
  const auto [old_meta, new_meta] = metas;
  if (old_meta == nullptr) return Refuse(HERE, kMetaNull);
  const char* meta_name = qmx_get_meta_name(old_meta);
  if (new_meta == nullptr) return Refuse(HERE, kStructMissing, meta_name);
  const char* other_name = qmx_get_meta_name(new_meta);
  if (!SameName(meta_name, other_name)) return Refuse(HERE, kStructName, meta_name, other_name);

  const LPQMXMETALIB old_metalib = OwnerOf(old_meta);
  const LPQMXMETALIB new_metalib = OwnerOf(new_meta);
  const bool ids_are_kept = IsTlv(old_metalib) && IsTlv(new_metalib);
  for (const auto [index, old_entry] : ChangedOldEntries(metas, MatchBy::kName)) {
    int unused{};  // a position
    const char* name = qmx_get_entry_name(old_entry);
    const LPQMXMETAENTRY new_entry = CheckWhetherExistEntry(name, new_meta, unused);
    if (new_entry == nullptr) return Refuse(HERE, kEntryMissing, name, meta_name);
    const int old_id = qmx_get_entry_id(old_entry);
    if (ids_are_kept && old_id != qmx_get_entry_id(new_entry)) return Refuse(HERE, kEntryId, old_id, meta_name);
    if (const int ret = CompareShape(HERE, old_meta, {old_entry, new_entry}, {.key_size = kPrimaryKeySize}); ret != 0) return ret;
    // The text of the inner refusal stays; every inner code becomes this one.
    if (IsComposite(qmx_get_entry_type(old_entry)) && Descend<&Run::CompareEntryValueField>(metas, {old_entry, new_entry}) != 0) {
      return ERROR_VALUE_FIELD;
    }
    if (!SameCustomAttr2(old_metalib, old_entry, new_metalib, new_entry)) return Refuse(HERE, kCustomAttr2, name, meta_name);
  }
  return CHECK_TABLE_SUCCESS;
}

}  // namespace korvel
