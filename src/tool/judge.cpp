// Asks the checker and notes its answer. No rule is decided here. Held by tests/tool/check_test.cpp.
#include "tool/judge.h"

#include <thread>

#include "report/finding/findings.h"
#include "report/finding/parallel.h"
#include "report/way_out/ways_out.h"

namespace korvel::tool {

TableResult Judge(const Pair& pair, const TableNames& table, const std::function<int(ModifyTable&)>& ask) {
  TableResult result;
  result.table = table.first;
  result.first = &pair.first;
  result.second = &pair.second;
  const bool in_second = pair.second.HasMeta(table.second);
  result.declared = in_second ? DeclaredAt(pair.second, table.second) : DeclaredAt(pair.first, table.first);
  ModifyTable checker;
  const Verdict verdict = VerdictOf(ask(checker), checker);
  result.status = verdict.Refused() ? Status::kRefused : Status::kAllowed;
  result.gone = verdict.Refused() && !in_second;
  result.code = verdict.code;
  result.rule = verdict.rule;
  result.text = verdict.text;
  return result;
}

TableResult JudgeChange(const Pair& pair, const std::string& table, const Settings& given, const Options& options,
                        LPVESKCATEGORYINST log) {
  const Settings settings = ResolveSettings(given, pair.first, table);
  TableResult result = Judge(pair, {table, table}, [&](ModifyTable& checker) {
    return checker.KorvelModifyTable(pair.first.Library(), pair.second.Library(), table.c_str(), *settings.type,
                                     *settings.created_as, log, *settings.server_version, *settings.whitelist,
                                     *settings.list_num);
  });
  result.settings = settings;
  const Verdict whole{result.code, result.text, result.rule};
  if (pair.first.HasMeta(table) && pair.second.HasMeta(table)) {
    const Difference difference(pair.first, pair.second, table);
    result.changes = FindChanges(difference, pair.first, pair.second, table, settings, whole, options.max_findings);
    const bool with_fixes = options.format->shows_fixes;
    if (whole.Refused()) FindWaysOut(difference, pair.first, pair.second, table, settings, *result.changes, with_fixes);
  } else {
    result.changes = FindGone(pair.first, pair.second, table, settings, whole);
    FindWaysOutOfGone(pair.first, pair.second, table, settings, *result.changes);
  }
  return result;
}

TableResult NewTable(const Source& source, const std::string& table) {
  TableResult result;
  result.table = table;
  result.status = Status::kNew;
  result.second = &source;
  result.declared = DeclaredAt(source, table);
  return result;
}

void JudgeEach(Report& report, const Options& options, const std::vector<std::string>& tables,
               const std::function<TableResult(const std::string&)>& judge) {
  const std::size_t first = report.tables.size();
  report.tables.resize(first + tables.size());
  const bool is_worth_threads = !options.log && report.inputs.front().source->metalib.size() >= kWorthAThread;
  ForEach(tables.size(), is_worth_threads ? std::thread::hardware_concurrency() : 1,
          [&](std::size_t i) { report.tables[first + i] = judge(tables[i]); });
}

}  // namespace korvel::tool
