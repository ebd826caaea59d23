// Indexes: the same names, each with the same set of columns; none at all on a list table.
// Tested by tests/rules/index_test.cpp.
#include "common/check_table.h"
#include "common/meta_view.h"
#include "common/run.h"

namespace korvel {

// The order of indexes is not compared. Every text names the old meta.
int Run::CompareIndex(MetaPair metas, int table_type) {
  if (metas.AnyNull()) return Refuse(HERE, kMetaNull);
  const auto [old_meta, new_meta] = metas;
  const char* old_name = qmx_get_meta_name(old_meta);
  if (table_type != TABLE_TYPE_GENERIC && table_type != TABLE_TYPE_LIST) return Refuse(HERE, kIndexTableType, old_name);
  if (table_type == TABLE_TYPE_LIST) {
    const bool none = IndexCount(old_meta) == 0 && IndexCount(new_meta) == 0;
    return none ? CHECK_TABLE_SUCCESS : Refuse(HERE, kIndexOnList, old_name);
  }
  if (IndexCount(old_meta) != IndexCount(new_meta)) return Refuse(HERE, kIndexCount, old_name);
  for (auto* new_index : Indexes(new_meta)) {
    const char* name = IndexName(new_meta, new_index);
    const LPQMXMETAINDEX old_index = CheckWhetherIndexField(old_meta, name);
    if (old_index == nullptr) return Refuse(HERE, kIndexName, name, old_name);
    if (CompareIndexColumn(old_index, new_index, metas) != 0) return Refuse(HERE, kIndexColumns, name, old_name);
  }
  return CHECK_TABLE_SUCCESS;
}

LPQMXMETAINDEX Run::CheckWhetherIndexField(LPQMXMETA meta, const char* szIndexName) {
  return lookup_.IndexByName(meta, szIndexName);
}

// Column order, directions and prefix lengths are not compared.
int Run::CompareIndexColumn(LPQMXMETAINDEX old_index, LPQMXMETAINDEX new_index, MetaPair metas) {
  if (old_index == nullptr || new_index == nullptr) return Refuse(HERE, kIndexNull);
  const auto [old_meta, new_meta] = metas;
  if (old_index->iColumnNum != new_index->iColumnNum) return Refuse(HERE, kColumnSet, qmx_get_meta_name(old_meta));
  for (const auto* column : Columns(new_meta, new_index)) {
    const char* name = MemberName(new_meta, column);
    if (const int ret = CheckWhetherColumnField(name, old_index, old_meta); ret != 0) {
      // The text says "index" where it names the column's field; part of the interface.
      return RefuseWithCode(HERE, ret, kColumnField, name, qmx_get_meta_name(old_meta));
    }
  }
  return CHECK_TABLE_SUCCESS;
}

int Run::CheckWhetherColumnField(const char* szFieldName, LPQMXMETAINDEX old_index, LPQMXMETA old_meta) {
  if (szFieldName == nullptr || old_index == nullptr) return Refuse(HERE, kColumnSet, qmx_get_meta_name(old_meta));
  if (lookup_.IsColumnName(old_meta, old_index, szFieldName)) return CHECK_TABLE_SUCCESS;
  return Refuse(HERE, kColumnSet, qmx_get_meta_name(old_meta));
}

}  // namespace korvel
