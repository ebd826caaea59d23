// Runs the checker on one table and collects what the caller wants. No rule is decided here. Tested by tests/tool/check_test.cpp
// and tests/report.
#include "analysis/check_table_change.h"

#include "analysis/findings/findings.h"
#include "analysis/findings/run_checker.h"
#include "analysis/suggest/suggestions.h"

namespace korvel {

TableResult CheckOperation(const Pair& pair, const TableNames& table, const std::function<int(ModifyTable&)>& run) {
  TableResult result;
  result.table = table.first;
  result.first = &pair.first;
  result.second = &pair.second;
  const bool in_second = pair.second.HasMeta(table.second);
  result.declared = in_second ? DeclaredAt(pair.second, table.second) : DeclaredAt(pair.first, table.first);
  ModifyTable checker;
  const Verdict verdict = VerdictOf(run(checker), checker);
  result.status = verdict.Refused() ? Status::kRefused : Status::kAllowed;
  result.removed = verdict.Refused() && !in_second;
  result.code = verdict.code;
  result.rule = verdict.rule;
  result.text = verdict.text;
  return result;
}

namespace {

// Compares both sides of a checked table and finds what is refused.
void AddChanges(const TableCheck& check, TableResult& result) {
  const auto& [old_source, new_source] = check.sources;
  const Verdict whole{result.code, result.text, result.rule};
  if (!new_source.HasMeta(check.table)) {
    result.changes = FindRemovedTable(old_source, new_source, check.table, result.settings, whole);
    if (!check.wants_suggestions) return;
    FindSuggestionsForRemovedTable(old_source, new_source, check.table, result.settings, *result.changes);
    return;
  }
  const Difference difference(old_source, new_source, check.table);
  result.changes = FindChanges(difference, old_source, new_source, check.table, result.settings, whole, check.max_findings);
  if (!whole.Refused() || !check.wants_suggestions) return;
  FindSuggestions(difference, old_source, new_source, check.table, result.settings, *result.changes, check.wants_fixes);
}

}  // namespace

TableResult CheckTableChange(const TableCheck& check) {
  const Source& old_source = check.sources.first;
  const Source& new_source = check.sources.second;
  const std::string& table = check.table;
  const Settings settings = ResolveSettings(check.given, old_source, table);
  TableResult result = CheckOperation(check.sources, {table, table}, [&](ModifyTable& checker) {
    return checker.KorvelModifyTable(old_source.Library(), new_source.Library(), table.c_str(), *settings.type,
                                     *settings.created_as, check.log, *settings.server_version, *settings.whitelist,
                                     *settings.list_num);
  });
  result.settings = settings;
  if (result.status == Status::kRefused || check.wants_allowed_changes) AddChanges(check, result);
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

}  // namespace korvel
