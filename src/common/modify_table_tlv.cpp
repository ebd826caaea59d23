// Field rules of the TLV protocol: fields are matched by id, and the rules inside sub-structures are looser than those of tables.
// Tested by tests/rules/tlv_test.cpp and tlv_structure_test.cpp.
#include "common/meta_view.h"
#include "common/run.h"

namespace korvel {
namespace {

constexpr TextFormat<> kNothingToFind("needCheckPstEntry or new_meta can't be null");

}  // namespace

// Structure names, custom attributes, positions and added entries are not compared.
int Run::CompareEntryValueFieldTLV(MetaPair metas) {
  const auto [old_meta, new_meta] = metas;
  if (old_meta == nullptr) return Refuse(HERE, kMetaNull);
  const char* meta_name = qmx_get_meta_name(old_meta);
  if (new_meta == nullptr) return Refuse(HERE, kStructMissing, meta_name);
  const CommonPrefix& prefix = lookup_.Prefix(old_meta, new_meta, MatchBy::kId);
  const int old_entry_num = EntryCount(old_meta);
  for (int i = prefix.Next(0); i < old_entry_num; i = prefix.Next(i + 1)) {
    // Not skipped if it is null: an entry that cannot be read did not survive either.
    const LPQMXMETAENTRY old_entry = qmx_get_entry_by_index(old_meta, i);
    const char* name = EntryName(old_entry);
    if (!CheckWhetherExistEntryOfTLV(old_entry, new_meta)) return Refuse(HERE, kTlvEntryMissing, name);
    // The first entry of that id, which need not be the one that survived.
    const int id = qmx_get_entry_id(old_entry);
    const LPQMXMETAENTRY new_entry = CheckWhetherExistEntryById(id, new_meta);
    if (new_entry == nullptr) return Refuse(HERE, kTlvEntryId, id, meta_name);
    if (IsPrimaryKeyMember(old_entry) && !SameName(name, qmx_get_entry_name(new_entry))) {
      return Refuse(HERE, kTlvKeyName, id, meta_name);
    }
    if (const int ret = CompareShape(HERE, old_meta, {old_entry, new_entry}, {.key_size = kTlvKeySize}); ret != 0) return ret;
    if (!IsComposite(qmx_get_entry_type(old_entry))) continue;
    if (Descend<&Run::CompareEntrySubMetaFieldTLV>(metas, {old_entry, new_entry}) != 0) return ERROR_VALUE_FIELD;
  }
  return CHECK_TABLE_SUCCESS;
}

bool Run::CheckWhetherExistEntryOfTLV(LPQMXMETAENTRY needCheckPstEntry, LPQMXMETA new_meta) {
  if (needCheckPstEntry == nullptr || new_meta == nullptr) {
    LogError(HERE, kNothingToFind);
    return false;
  }
  const int entry_num = EntryCount(new_meta);
  if (entry_num <= 0) LogError(HERE, kNoEntries, qmx_get_meta_name(new_meta));
  const int id = qmx_get_entry_id(needCheckPstEntry);
  return lookup_.PositionByIdAndName(new_meta, entry_num, id, qmx_get_entry_name(needCheckPstEntry)) >= 0;
}

// Names, keys and refer properties are not compared; an entry whose id is gone is skipped.
int Run::CompareEntrySubMetaFieldTLV(MetaPair metas) {
  if (metas.AnyNull()) return Refuse(HERE, kMetaNull);
  const char* meta_name = qmx_get_meta_name(metas.old_meta);
  for (const auto [index, old_entry] : ChangedOldEntries(metas, MatchBy::kId)) {
    const int id = qmx_get_entry_id(old_entry);
    const LPQMXMETAENTRY new_entry = CheckWhetherExistEntryById(id, metas.new_meta);
    if (new_entry == nullptr) continue;
    const char* name = qmx_get_entry_name(old_entry);
    const int old_type = qmx_get_entry_type(old_entry);
    if (old_type != qmx_get_entry_type(new_entry)) return Refuse(HERE, kSubEntryType, id, meta_name);
    if (qmx_get_entry_unitsize(old_entry) > qmx_get_entry_unitsize(new_entry)) return Refuse(HERE, kEntrySize, name, meta_name);
    if (qmx_get_entry_count(old_entry) > qmx_get_entry_count(new_entry)) return Refuse(HERE, kSubEntryCount, name, meta_name);
    if (!IsComposite(old_type)) continue;
    if (Descend<&Run::CompareEntrySubMetaFieldTLV>(metas, {old_entry, new_entry}) != 0) return ERROR_VALUE_FIELD;
  }
  return CHECK_TABLE_SUCCESS;
}

}  // namespace korvel
