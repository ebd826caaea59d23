// What may be done instead of a refused change.
#pragma once

#include <cstddef>
#include <string>

#include "analysis/diff/diff.h"
#include "analysis/findings/finding.h"
#include "base/limits.h"
#include "schema/settings.h"

namespace korvel {

// The new schema with every allowed edit and, for each refused one, its nearest legal form (which may be to leave it out).
struct Suggestion {
  Model model;
  bool allowed = false;  // what the checker answered about it
};

// `changes` are those that FindChanges found for the same sources, table and settings, all members of which are set. A form is
// chosen only if the checker allows it together with all allowed edits and all other forms that are chosen. What would take more
// than kMaxWork is left out.
Suggestion Suggest(const Difference& difference, const Source& old_source, const std::string& table, const Settings& settings,
                   const Changes& changes);

// Finds the same forms and fills in suggestion, has_fix and, if wanted, fix of every finding. What a fix makes of the new
// file is that one form alone; when all fixes together take more than kMaxWork, the last ones are missing.
void FindSuggestions(const Difference& difference, const Source& old_source, const Source& new_source, const std::string& table,
                     const Settings& settings, Changes& changes, bool with_fixes);

// For a table that is gone from the new source: it is put back, with what it reaches.
Suggestion FindSuggestionsForRemovedTable(const Source& old_source, const Source& new_source, const std::string& table,
                                          const Settings& settings, Changes& changes);

}  // namespace korvel
