// Finds tables that several schema files of a project declare.
#pragma once

#include <vector>

#include "report/result/report.h"

namespace korvel {

// A warning for each table that a second file of the same project file declares, at its declaration there, in the order of the
// tables. An error if warnings fail the call.
std::vector<ProjectFinding> FindRepeatedTables(const std::vector<TableResult>& tables, bool fails_on_warnings);

}  // namespace korvel
