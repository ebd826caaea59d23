// Which tables of two files a command compares.
#pragma once

#include <string>
#include <vector>

#include "report/result/report.h"
#include "tool/input.h"

namespace korvel::tool {

// Two schemas to compare: old and new, or source and destination. For a schema against itself both are the same.
struct Pair {
  const Source& first;
  const Source& second;
};

// The two inputs of a report, which must outlive the pair.
Pair PairOf(const Report& report);

struct Selection {
  std::vector<std::string> compared;  // at least one; all in the first file
  std::vector<std::string> added;     // only in the second file
};

// The asked tables, each once, or, if none is asked, all tables of both files. An asked name may be that of any meta. Throws
// CannotAsk for a name that is in neither file, and when nothing is left to compare.
Selection SelectTables(const Pair& pair, const std::vector<std::string>& asked);

// The same from the first file alone: an asked name that is only in the second one is thrown, too.
std::vector<std::string> SelectFromFirst(const Pair& pair, const std::vector<std::string>& asked);

// Throws CannotAsk if `input` has no meta of one of the names, with one line for each.
void RequireTables(const Source& input, const std::vector<std::string>& names);

}  // namespace korvel::tool
