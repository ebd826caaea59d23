// Finds attributes that look as if they were meant for the checker, but that it ignores.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "analysis/warnings/advice_matches.h"

namespace korvel {

// The attributes of a table without TableType, and in a sorted list misspelled marks of sort fields ("Sort=1"). Of a changed
// table only those that the old meta does not have. Of a table that is checked alone (both metas are the same) or is new (the old
// one is null) all of them. In the matches of a new table, the old side is null.
std::vector<AdviceMatch> FindIgnoredAttributes(LPQMXMETA old_meta, LPQMXMETA new_meta);

// "sort=1" for " Sort = 1"; "" for a text that does not look like a mark of a sort field.
std::string SortMarkLike(std::string_view text);

}  // namespace korvel
