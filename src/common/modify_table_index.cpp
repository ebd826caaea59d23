// Indexes: the same names, each with the same set of columns; none at all on a list table.
// Held by tests/rules/index_test.cpp.
#include "common/check_table.h"
#include "common/lookup.h"
#include "common/meta_view.h"
#include "common/modify_table.h"
#include "common/refuse.h"

using namespace korvel;

// The order of indexes is not compared. Every text names the old meta.
int ModifyTable::CompareIndex(LPQMXMETA old_meta, LPQMXMETA new_meta, int table_type, LPVESKCATEGORYINST log_handle) {
  if (old_meta == nullptr || new_meta == nullptr) return Refuse(HERE, kMetaNull);
  const char* old_name = qmx_get_meta_name(old_meta);
  if (table_type != TABLE_TYPE_GENERIC && table_type != TABLE_TYPE_LIST) return Refuse(HERE, kIndexTableType, old_name);
  if (table_type == TABLE_TYPE_LIST) {
    const bool none = IndexCount(old_meta) == 0 && IndexCount(new_meta) == 0;
    return none ? CHECK_TABLE_SUCCESS : Refuse(HERE, kIndexOnList, old_name);
  }
  if (IndexCount(old_meta) != IndexCount(new_meta)) return Refuse(HERE, kIndexCount, old_name);
  const CallMemory::Scope memory(this);
  for (auto* new_index : Indexes(new_meta)) {
    const char* name = IndexName(new_meta, new_index);
    const LPQMXMETAINDEX old_index = CheckWhetherIndexField(old_meta, name);
    if (old_index == nullptr) return Refuse(HERE, kIndexName, name, old_name);
    if (CompareIndexColumn(old_index, new_index, old_meta, new_meta, log_handle) != 0) {
      return Refuse(HERE, kIndexColumns, name, old_name);
    }
  }
  return CHECK_TABLE_SUCCESS;
}

LPQMXMETAINDEX ModifyTable::CheckWhetherIndexField(LPQMXMETA pstTabMeta, const char* szIndexName) {
  return IndexByName(pstTabMeta, szIndexName);
}

// Column order, directions and prefix lengths are not compared.
int ModifyTable::CompareIndexColumn(LPQMXMETAINDEX pstIndex_old, LPQMXMETAINDEX pstIndex_new, LPQMXMETA pstoldMeta,
                                    LPQMXMETA pstnewMeta, LPVESKCATEGORYINST log_handle) {
  if (pstIndex_old == nullptr || pstIndex_new == nullptr) return Refuse(HERE, kIndexNull);
  if (pstIndex_old->iColumnNum != pstIndex_new->iColumnNum) return Refuse(HERE, kColumnSet, qmx_get_meta_name(pstoldMeta));
  const CallMemory::Scope memory(this);
  for (const auto* column : Columns(pstnewMeta, pstIndex_new)) {
    const char* name = MemberName(pstnewMeta, column);
    if (const int ret = CheckWhetherColumnField(name, pstIndex_old, pstoldMeta, log_handle); ret != 0) {
      Report(HERE, kColumnField, name, qmx_get_meta_name(pstoldMeta));
      return ret;
    }
  }
  return CHECK_TABLE_SUCCESS;
}

int ModifyTable::CheckWhetherColumnField(const char* szFieldName, LPQMXMETAINDEX pstIndex_old, LPQMXMETA pstTabMeta,
                                         LPVESKCATEGORYINST log_handle) {
  if (szFieldName == nullptr || pstIndex_old == nullptr) return Refuse(HERE, kColumnSet, qmx_get_meta_name(pstTabMeta));
  if (IsColumnName(pstTabMeta, pstIndex_old, szFieldName)) return CHECK_TABLE_SUCCESS;
  return Refuse(HERE, kColumnSet, qmx_get_meta_name(pstTabMeta));
}
