// Tested by tests/tool/check_test.cpp.
#include "tool/commands/check_tables.h"

#include <thread>

#include "base/parallel.h"

namespace korvel::tool {

Pair PairOf(const Report& report) { return {*report.inputs[0].source, *report.inputs[1].source}; }

TableCheck CheckFor(const Pair& pair, const std::string& table, const Options& options, LPVESKCATEGORYINST log) {
  return {.sources = pair,
          .table = table,
          .given = GivenFor(options, table),
          .max_findings = options.max_findings,
          .wants_allowed_changes = options.format->shows_allowed_changes,
          .wants_fixes = options.format->shows_fixes,
          .log = log};
}

void CheckEachTable(Report& report, const Options& options, const std::vector<std::string>& tables,
                    const std::function<TableResult(const std::string&)>& check) {
  const std::size_t first = report.tables.size();
  report.tables.resize(first + tables.size());
  const bool is_worth_threads = !options.log && report.inputs.front().source->metalib.size() >= kWorthAThread;
  ForEach(tables.size(), is_worth_threads ? std::thread::hardware_concurrency() : 1,
          [&](std::size_t i) { report.tables[first + i] = check(tables[i]); });
}

}  // namespace korvel::tool
