// The nearest schema file that the checker allows.
#pragma once

#include <string>
#include <vector>

#include "analysis/findings/finding.h"
#include "schema/settings.h"

namespace korvel {

// A table to be compared; all members of the settings are set.
struct TableQuestion {
  std::string table;
  Settings settings;
};

struct TableRefusal {
  std::string table;
  Verdict verdict;
  std::vector<std::string> suggestions;  // of what is refused still
};

struct SchemaSuggestion {
  std::string text;                   // a whole file: that of the new source, changed where it must be
  std::vector<TableRefusal> refused;  // what the checker says about that file, read again; empty: it allows every table
  bool is_rewritten = true;           // false: a change could not be written into this text, and was given up
};

// Turns the new file into one that may follow the old one: all allowed changes stay, each refused one gets its nearest legal
// form. REQUIRES: the new source has a text; the old one has every table.
//
// Structures may be shared by tables that want different things of them: what one table needs is asked about for the others
// again, in a few rounds.
SchemaSuggestion SuggestSchema(const Source& old_source, const Source& new_source, const std::vector<TableQuestion>& questions);

}  // namespace korvel
