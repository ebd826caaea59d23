// Selects the tables of two files that a command compares.
#pragma once

#include <string>
#include <vector>

#include "schema/source.h"

namespace korvel {

// Two schemas to compare: old and new, or source and destination. The same twice to check one schema alone. Borrows both.
struct Pair {
  const Source& first;
  const Source& second;
};

struct Selection {
  std::vector<std::string> compared;  // at least one; all in the first file
  std::vector<std::string> added;     // only in the second file
};

// The requested tables, each once; all tables of both files if none is requested. A request may name any meta. Throws InputError
// with one line for each name that is in neither file, or one line if there is nothing to compare.
Selection SelectTables(const Pair& pair, const std::vector<std::string>& requested);

// The same from the first file alone: requests for tables that only the second file has are errors, too.
std::vector<std::string> SelectFromFirst(const Pair& pair, const std::vector<std::string>& requested);

// The same from both files: throws InputError as well if the second file lacks one of the tables.
std::vector<std::string> SelectFromBoth(const Pair& pair, const std::vector<std::string>& requested);

// Throws InputError if neither schema has a meta of one of these names, for which there are settings, with one line for each.
void RequireTablesOfSettings(const Pair& pair, const std::vector<std::string>& names);

// Throws InputError if `input` has no meta of one of the names, with one line for each.
void RequireTables(const Source& input, const std::vector<std::string>& names);

}  // namespace korvel
