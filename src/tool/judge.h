// Puts tables to the checker.
#pragma once

#include <functional>
#include <string>

#include "common/modify_table.h"
#include "tool/report.h"
#include "tool/selection.h"

namespace korvel::tool {

// What a table is called in either file; the same but for a destination under another name.
struct TableNames {
  std::string first;
  std::string second;
};

// Asks a fresh checker about one table of the first file; `ask` calls one operation of it and returns the result code.
TableResult Judge(const Pair& pair, const TableNames& table, const std::function<int(ModifyTable&)>& ask);

// The whole check of one table, with the settings given or found in the first file.
TableResult JudgeChange(const Pair& pair, const std::string& table, const Settings& given, LPVESKCATEGORYINST log);

}  // namespace korvel::tool
