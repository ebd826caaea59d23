// Finds sort fields of a sorted list that are none in the new schema. The checker compares the attributes of a field only if both
// schemas have one.
#pragma once

#include <utility>
#include <vector>

#include "analysis/warnings/entry_finder.h"

namespace korvel {

// The old and the new entry of each field that was a sort field. None unless both tables are sorted lists.
std::vector<std::pair<LPQMXMETAENTRY, LPQMXMETAENTRY>> LostSortFields(RecordForm form, LPQMXMETA old_table, LPQMXMETA new_table);

}  // namespace korvel
