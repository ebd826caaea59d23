// Lookups of entries by name and id, and the rules on versions and order of entries.
// Tested by tests/rules/entry_lookup_test.cpp, entry_version_test.cpp and entry_order_test.cpp.
#include "common/meta_view.h"
#include "common/run.h"

namespace korvel {

// The first entry of that name. A missing name is silent and leaves `entry_offset`; bad arguments and a meta without entries are
// logged as errors, yet the caller goes on as if the name were missing.
LPQMXMETAENTRY Run::CheckWhetherExistEntry(const char* entry_name, LPQMXMETA meta, int& entry_offset) {
  if (entry_name == nullptr || meta == nullptr) {
    LogError(HERE, kNameOrMeta);
    return nullptr;
  }
  const int count = EntryCount(meta);
  if (count <= 0) LogError(HERE, kNoEntries, qmx_get_meta_name(meta));
  const int position = lookup_.PositionByName(meta, count, entry_name);
  if (position < 0) return nullptr;
  entry_offset = position;
  return qmx_get_entry_by_index(meta, position);
}

// The first entry of that id, on the same terms. 0 is an id; a negative one is a bad argument.
LPQMXMETAENTRY Run::CheckWhetherExistEntryById(int entry_id, LPQMXMETA meta) {
  if (entry_id < 0 || meta == nullptr) {
    LogError(HERE, kNameOrMeta);
    return nullptr;
  }
  const int count = EntryCount(meta);
  if (count <= 0) LogError(HERE, kNoEntries, qmx_get_meta_name(meta));
  const int position = lookup_.PositionById(meta, count, entry_id);
  return position < 0 ? nullptr : qmx_get_entry_by_index(meta, position);
}

// A kept entry keeps its version; the version of an added one is above the old library's. Removed entries are not compared.
int Run::CompareVersion(MetaPair metas, int old_metalib_version) {
  if (metas.AnyNull()) return Refuse(HERE, kMetaNull);
  for (const auto [index, new_entry] : ChangedNewEntries(metas, MatchBy::kName)) {
    int unused{};  // a position
    const char* name = qmx_get_entry_name(new_entry);
    const LPQMXMETAENTRY old_entry = CheckWhetherExistEntry(name, metas.old_meta, unused);
    const int version = qmx_get_entry_version(new_entry);
    if (old_entry != nullptr && version != qmx_get_entry_version(old_entry)) {
      return Refuse(HERE, kEntryVersion, qmx_get_entry_name(old_entry), qmx_get_meta_name(metas.old_meta));
    }
    if (old_entry == nullptr && version <= old_metalib_version) {
      return Refuse(HERE, kNewEntryVersion, name, qmx_get_meta_name(metas.new_meta));
    }
    // The old entry alone decides whether to descend, even if there is none.
    if (!IsComposite(qmx_get_entry_type(old_entry))) continue;
    if (const int ret = Descend<&Run::CompareVersion>(metas, {old_entry, new_entry}, old_metalib_version); ret != 0) return ret;
  }
  return CHECK_TABLE_SUCCESS;
}

// Kept entries keep their order; each added one shifts those behind it by one. Removed entries at the end are not noticed.
int Run::CompareOrder(MetaPair metas) {
  if (metas.AnyNull()) return Refuse(HERE, kMetaNull);
  int added = 0;
  for (const auto [index, new_entry] : ChangedNewEntries(metas, MatchBy::kName)) {
    int old_position{};
    const LPQMXMETAENTRY old_entry = CheckWhetherExistEntry(qmx_get_entry_name(new_entry), metas.old_meta, old_position);
    if (old_entry == nullptr) {
      ++added;
      continue;
    }
    if (old_position + added != index) {
      return Refuse(HERE, kEntryOrder, qmx_get_entry_name(old_entry), qmx_get_meta_name(metas.old_meta));
    }
    if (!IsComposite(qmx_get_entry_type(old_entry))) continue;
    if (const int ret = Descend<&Run::CompareOrder>(metas, {old_entry, new_entry}); ret != 0) return ret;
  }
  return CHECK_TABLE_SUCCESS;
}

}  // namespace korvel
