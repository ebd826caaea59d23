// Checks the tables of a report, several at a time.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "analysis/check_table_change.h"
#include "report/result/report.h"
#include "tool/cli/options.h"

namespace korvel::tool {

// The two inputs of a report, which must outlive the pair.
Pair PairOf(const Report& report);

// What the options say about the check of one table.
TableCheck CheckFor(const Pair& pair, const std::string& table, const Options& options, LPVESKCATEGORYINST log);

// Checks tables and adds the results to the report in the order of the tables. Runs on several threads where that pays, unless
// a log is open, whose records must come in the order of the tables.
void CheckEachTable(Report& report, const Options& options, const std::vector<std::string>& tables,
                    const std::function<TableResult(const std::string&)>& check);

}  // namespace korvel::tool
