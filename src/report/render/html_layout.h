// The part of an HTML report that draws the old and the new record.
#pragma once

#include <cstddef>
#include <string>

#include "report/result/report.h"

namespace korvel {

// The fill patterns of all pictures of a page, and their legend.
std::string LayoutPatterns();
std::string LayoutLegend();

// A picture of both records, to scale, with the fields of the table itself, and a list of fields that moved or changed. One
// sentence if the layout did not change. `id` is a prefix for element ids. REQUIRES: both sources have the table.
std::string LayoutSection(const TableResult& table, const std::string& id);

}  // namespace korvel
