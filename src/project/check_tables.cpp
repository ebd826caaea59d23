// Tested by tests/tool/check_test.cpp.
#include "project/check_tables.h"

#include <algorithm>
#include <iterator>
#include <thread>
#include <unordered_set>

#include "base/parallel.h"

namespace korvel {

bool IsWanted(const CheckOptions& options, std::string_view table) {
  return options.tables.empty() || std::ranges::find(options.tables, table) != options.tables.end();
}

TableCheck CheckFor(const Pair& pair, const std::string& table, const CheckOptions& options) {
  return {.sources = pair,
          .table = table,
          .given = GivenFor(options.given, options.project, table),
          .max_findings = options.max_findings,
          .wants_allowed_changes = options.wants_allowed_changes,
          .wants_suggestions = options.wants_suggestions,
          .wants_fixes = options.wants_fixes,
          .log = options.log};
}

std::vector<TableResult> CheckTables(const Pair& pair, const CheckOptions& options) {
  std::vector<TableResult> results;
  for (const std::string_view table : pair.first.tables) {
    if (IsWanted(options, table)) results.push_back(CheckTableChange(CheckFor(pair, std::string(table), options)));
  }
  std::ranges::move(NewTables(pair.second, pair.first.tables, options), std::back_inserter(results));
  return results;
}

std::vector<TableResult> NewTables(const Source& source, const std::vector<std::string_view>& old_tables,
                                   const CheckOptions& options) {
  const std::unordered_set<std::string_view> known(old_tables.begin(), old_tables.end());
  std::vector<TableResult> results;
  for (const std::string_view table : source.tables) {
    if (IsWanted(options, table) && !known.contains(table)) results.push_back(NewTable(source, std::string(table)));
  }
  return results;
}

Pair PairOf(const Report& report) { return {*report.inputs[0].source, *report.inputs[1].source}; }

void CheckEachTable(Report& report, const std::vector<std::string>& tables, bool in_order,
                    const std::function<TableResult(const std::string&)>& check) {
  const std::size_t first = report.tables.size();
  report.tables.resize(first + tables.size());
  const bool is_worth_threads = !in_order && report.inputs.front().source->metalib.size() >= kWorthAThread;
  ForEach(tables.size(), is_worth_threads ? std::thread::hardware_concurrency() : 1,
          [&](std::size_t i) { report.tables[first + i] = check(tables[i]); });
}

}  // namespace korvel
