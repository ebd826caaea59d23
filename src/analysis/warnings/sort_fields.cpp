// Tested by tests/cases/warnings.
#include "analysis/warnings/sort_fields.h"

#include <cstring>
#include <string_view>

#include "common/check_table.h"

namespace korvel {
namespace {

bool IsSortedList(LPQMXMETA table) {
  const char* const attributes = qmx_get_meta_customattr(table);
  if (attributes == nullptr || std::strstr(attributes, "SORTLIST") == nullptr) return false;  // nearly all tables
  int type = TABLE_TYPE_GENERIC;
  int list_num = 0;
  int sort_field_num = 0;
  int sort_rule = 0;
  char protocol[8] = "";
  // Every result except 0 leaves these values unchanged.
  CheckTable().CheckTableTypeByCustomAttr(OwnerOf(table), qmx_get_meta_name(table), type, list_num, sort_field_num, sort_rule,
                                          protocol, false, nullptr);
  return type == TABLE_TYPE_SORTLIST;
}

bool IsSortField(LPQMXMETALIB library, LPQMXMETAENTRY entry) {
  const char* const attribute = qmx_get_entry_customattr2(library, entry);
  return attribute != nullptr && std::string_view(attribute).starts_with("sort=");
}

}  // namespace

std::vector<std::pair<LPQMXMETAENTRY, LPQMXMETAENTRY>> LostSortFields(RecordForm form, LPQMXMETA old_table, LPQMXMETA new_table) {
  std::vector<std::pair<LPQMXMETAENTRY, LPQMXMETAENTRY>> lost;
  if (!IsSortedList(old_table) || !IsSortedList(new_table)) return lost;
  EntryFinder in_new(form, new_table);
  for (const auto [index, old_entry] : Entries(old_table)) {
    if (!IsSortField(OwnerOf(old_table), old_entry)) continue;
    const LPQMXMETAENTRY new_entry = in_new.Find(old_entry, index);
    if (new_entry != nullptr && !IsSortField(OwnerOf(new_table), new_entry)) lost.emplace_back(old_entry, new_entry);
  }
  return lost;
}

}  // namespace korvel
