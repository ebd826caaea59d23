// Which tables of two files a command compares.
#pragma once

#include <string>
#include <vector>

#include "schema/source.h"

namespace korvel {

// Two schemas to compare: old and new, or source and destination. For a schema against itself both are the same.
struct Pair {
  const Source& first;
  const Source& second;
};

struct Selection {
  std::vector<std::string> compared;  // at least one; all in the first file
  std::vector<std::string> added;     // only in the second file
};

// The asked tables, each once, or, if none is asked, all tables of both files. An asked name may be that of any meta. Throws
// InputError for a name that is in neither file, and when nothing is left to compare.
Selection SelectTables(const Pair& pair, const std::vector<std::string>& asked);

// The same from the first file alone: an asked name that is only in the second one is thrown, too.
std::vector<std::string> SelectFromFirst(const Pair& pair, const std::vector<std::string>& asked);

// Throws InputError if `input` has no meta of one of the names, with one line for each.
void RequireTables(const Source& input, const std::vector<std::string>& names);

}  // namespace korvel
