// Finds the nearest schema file that the checker allows, for several tables at once.
#pragma once

#include <string>
#include <vector>

#include "analysis/findings/finding.h"
#include "analysis/suggest/work_limit.h"
#include "schema/reserved_fields.h"
#include "schema/settings.h"

namespace korvel {

// A table to check.
struct TableQuestion {
  std::string table;
  Settings settings;
};

struct TableRefusal {
  std::string table;
  Verdict verdict;
  std::vector<std::string> suggestions;  // for each finding that remains
};

struct SchemaSuggestion {
  std::string text;                   // a whole file: the text of the new source with the necessary changes
  std::vector<TableRefusal> refused;  // tables that the checker refuses in that file; empty: all are allowed
  bool is_changed = false;            // whether the text differs from that of the new source
  bool reached_work_limit = false;    // a table may stay refused only because the search for its suggestion ended early
  bool is_rewritten = true;           // false: a change could not be written into this text, and the search ended
};

// Changes the new file so that the checker allows it after the old one, with no warnings that the new file does not have: allowed
// changes stay, refused ones are replaced by their nearest allowed alternative or left out. Tables that share structures may need
// several rounds, at most eight; the verdicts are about the final text, read again. Linear in the files for each round, plus the
// cost of FindSuggestions for each refused table. Only reads the sources. `work` limits all rounds together. No new field gets a
// reserved name or id. REQUIRES: the new source has a text; the old source has every table.
SchemaSuggestion SuggestSchema(const Source& old_source, const Source& new_source, const std::vector<TableQuestion>& questions,
                               SuggestionWork work = {}, const ReservedFields& reserved = {});

}  // namespace korvel
