// Finds suggestions for the refused changes of one table, verified by the checker.
//
// Functions here may run on several threads at once; sources are only read. They may throw std::bad_alloc.
#pragma once

#include <string>

#include "analysis/diff/diff.h"
#include "analysis/findings/finding.h"
#include "analysis/suggest/known_warnings.h"
#include "analysis/suggest/work_limit.h"
#include "schema/table_context.h"

namespace korvel {

// The new schema of a table with all allowed edits, and for each refused edit the alternative that was chosen, if any.
struct Suggestion {
  Model model;
  bool allowed = false;  // whether the checker allows the model, and it brings no new warnings
};

// The nearest allowed schema without warnings that are not `known`: usually those of the author's change. An alternative is
// chosen only if the checker allows it together with all allowed edits and all other chosen alternatives. An allowed edit that
// brings a new warning without the refused ones is replaced or left out, too. The search stops at the limit; edits without an
// alternative then are left out. REQUIRES: `changes` is the result of FindChanges for the same context and difference.
Suggestion Suggest(const TableContext& context, const Difference& difference, const Changes& changes, const KnownWarnings& known,
                   WorkLimit& work);

// Chooses the same alternatives, the warnings of the change being known, and sets suggestion, has_fix and, if `with_fixes` and
// the new source has a text, fix of every finding. A fix changes the new file only for its finding; above the limit it stays
// empty. REQUIRES: as Suggest.
void FindSuggestions(const TableContext& context, const Difference& difference, Changes& changes, bool with_fixes,
                     SuggestionWork& work);

// For a table that is compared with itself only to see whether it may stay as it is: sets the suggestion of each finding to what
// is allowed instead. REQUIRES: both sources of the context are the same.
void FindLintSuggestions(const TableContext& context, Changes& changes);

// For a table that the new source does not have (FindRemovedTable): sets the suggestion of each finding, and returns the table
// with all that it reaches, as the old source has it. `renamed_to` is the new table that it probably became, or empty.
Suggestion FindSuggestionsForRemovedTable(const TableContext& context, const std::string& renamed_to, Changes& changes);

}  // namespace korvel
