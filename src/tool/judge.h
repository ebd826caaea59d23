// Puts tables to the checker.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "common/modify_table.h"
#include "report/result/report.h"
#include "tool/options.h"
#include "tool/selection.h"

namespace korvel::tool {

// What a table is called in either file; the same but for a destination under another name.
struct TableNames {
  std::string first;
  std::string second;
};

// Asks a fresh checker about one table of the first file; `ask` calls one operation of it and returns the result code.
TableResult Judge(const Pair& pair, const TableNames& table, const std::function<int(ModifyTable&)>& ask);

// The whole check of one table, with the settings given or found in the first file, and what changed about it, as far as the
// options want it.
TableResult JudgeChange(const Pair& pair, const std::string& table, const Settings& given, const Options& options,
                        LPVESKCATEGORYINST log);

// The result for a table that only the new file has.
TableResult NewTable(const Source& source, const std::string& table);

// Judges tables and adds the answers to the report in the order of the tables. On several threads where that pays, unless a log
// wants the tables one after the other.
void JudgeEach(Report& report, const Options& options, const std::vector<std::string>& tables,
               const std::function<TableResult(const std::string&)>& judge);

}  // namespace korvel::tool
