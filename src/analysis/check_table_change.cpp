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
  result.verdict = VerdictOf(run(checker), checker);
  result.status = result.verdict.Refused() ? Status::kRefused : Status::kAllowed;
  result.removed = result.verdict.Refused() && !in_second;
  return result;
}

namespace {

// Compares both sides of a checked table and finds what is refused.
void AddChanges(const TableCheck& check, const TableContext& context, TableResult& result) {
  if (!context.new_source.HasMeta(context.table)) {
    result.changes = FindRemovedTable(context, result.verdict);
    if (check.wants_suggestions) FindSuggestionsForRemovedTable(context, *result.changes);
    return;
  }
  const Difference difference(context.old_source, context.new_source, context.table);
  result.changes = FindChanges(context, difference, result.verdict, check.max_findings);
  if (result.verdict.Refused() && check.wants_suggestions) {
    FindSuggestions(context, difference, *result.changes, check.wants_fixes);
  }
}

}  // namespace

TableResult CheckTableChange(const TableCheck& check) {
  const Source& old_source = check.sources.first;
  const Source& new_source = check.sources.second;
  const Settings settings = ResolveSettings(check.given, old_source, check.table);
  const TableContext context{old_source, new_source, check.table, settings};
  TableResult result = CheckOperation(check.sources, {check.table, check.table}, [&](ModifyTable& checker) {
    return checker.KorvelModifyTable(old_source.Library(), new_source.Library(), check.table.c_str(), settings.type,
                                     settings.created_as, check.log, settings.server_version, settings.whitelist,
                                     settings.list_num);
  });
  result.settings = {settings.type, settings.created_as, settings.server_version, settings.whitelist, settings.list_num};
  if (result.status == Status::kRefused || check.wants_allowed_changes) AddChanges(check, context, result);
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
