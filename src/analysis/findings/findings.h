// Finds the edits of a table that the checker refuses. No rule is decided here: the checker is run on sets of edits.
//
// Functions here may run on several threads at once; sources are only read.
#pragma once

#include <cstddef>

#include "analysis/diff/diff.h"
#include "analysis/findings/finding.h"
#include "analysis/findings/shared_searches.h"
#include "base/limits.h"
#include "schema/table_context.h"

namespace korvel {

// Divides the change of a table into allowed, refused and blocked edits. `whole` is the verdict about the whole change; if it
// allows the change, all edits are allowed and the checker is not run. Suggestions, fixes and waivers are left empty. Stops after
// `max_findings`, at least 1; what is left then is kNotChecked. Runs the checker about (findings) x log(edits) times, in parallel
// for large schemas. REQUIRES: both sources have the table; the difference is theirs.
//
// The verdict of a finding is the checker's verdict about the old schema with its edits and what they need, and no others. One
// exception: if another rule hides a bad field name, its verdict is about a table with only such a field (FindBadNames).
//
// With `shared`, the search is left to the first table that embeds the same structures in the same way; the checker confirms the
// result with a few checks of this table. Then only the texts of the verdicts may be those of the other table
// (Changes::borrows_texts).
Changes FindChanges(const TableContext& context, const Difference& difference, const Verdict& whole, std::size_t max_findings,
                    SharedSearches* shared = nullptr);

// The same for a table that the new source does not have: one finding without edits.
Changes FindRemovedTable(const TableContext& context, const Verdict& whole);

}  // namespace korvel
