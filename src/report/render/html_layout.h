// The part of an HTML report that draws a record before and after.
#pragma once

#include <cstddef>
#include <string>

#include "report/result/report.h"

namespace korvel {

// Patterns and their meaning, once for all pictures of a page.
std::string LayoutPatterns();
std::string LayoutLegend();

// A picture of the record's own fields on both sides, to scale, and a table of what moved. `id` makes ids of the page unique.
// Says so in a sentence where there is nothing to draw. REQUIRES: both sources have the table.
std::string LayoutSection(const TableResult& table, const std::string& id);

}  // namespace korvel
