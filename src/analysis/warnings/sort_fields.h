// Finds sort fields of a sorted list that lost or changed their place in the order. The checker compares their attributes only
// where both schemas have one.
#pragma once

#include <utility>
#include <vector>

#include "analysis/warnings/entry_finder.h"

namespace korvel {

// The old and the new entry of each sort field whose second custom attribute changed. Empty unless both tables are sorted lists.
std::vector<std::pair<LPQMXMETAENTRY, LPQMXMETAENTRY>> ChangedSortFields(RecordForm form, LPQMXMETA old_table,
                                                                         LPQMXMETA new_table);

}  // namespace korvel
