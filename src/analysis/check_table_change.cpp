// Runs the checker on one table and collects what the caller wants. No rule is decided here. Tested by tests/tool/check_test.cpp
// and tests/report.
#include "analysis/check_table_change.h"

#include <algorithm>
#include <cstddef>
#include <map>

#include "analysis/diff/same_table.h"
#include "analysis/findings/findings.h"
#include "analysis/findings/run_checker.h"
#include "analysis/findings/shared_searches.h"
#include "analysis/suggest/suggestions.h"
#include "analysis/warnings/new_table.h"
#include "analysis/warnings/warnings.h"

namespace korvel {

bool TableResult::IsHidden(const Finding& finding) const {
  return std::ranges::any_of(finding.refusals, [&](std::size_t refusal) { return !changes->findings[refusal].waiver; });
}

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

// The settings of a result: all are present.
Settings SettingsOf(const TableResult& result) {
  const PartialSettings& settings = result.settings;
  return {*settings.type, *settings.created_as, *settings.server_version, *settings.whitelist, *settings.list_num};
}

// Searches this table itself. The waivers stay.
void ReplaceBorrowedTexts(const TableContext& context, const Difference& difference, std::size_t max_findings,
                          TableResult& result) {
  std::map<std::string, Waiver> waivers;
  for (const Finding& finding : result.changes->findings) {
    if (finding.waiver) waivers.emplace(finding.fingerprint, *finding.waiver);
  }
  result.changes = FindChanges(context, difference, result.verdict, max_findings);
  for (Finding& finding : result.changes->findings) {
    if (const auto found = waivers.find(finding.fingerprint); found != waivers.end()) finding.waiver = found->second;
  }
}

}  // namespace

TableResult CheckTableChange(const TableCheck& check) {
  TableResult result = CheckVerdict(check);
  AddChanges(check, nullptr, result);
  SuggestionWork work;
  if (check.wants_suggestions) AddSuggestions(result, check.max_findings, check.wants_fixes, work);
  return result;
}

void AddChanges(const TableCheck& check, SharedSearches* shared, TableResult& result) {
  const bool wants_changes = result.status == Status::kRefused || check.wants_allowed_changes;
  const Settings settings = SettingsOf(result);
  const TableContext context{check.sources.first, check.sources.second, check.table, settings};
  if (!context.new_source.HasMeta(context.table)) {
    if (!wants_changes) return;
    result.changes = FindRemovedTable(context, result.verdict);
    SharedSearches alone;
    result.renamed_to = (shared == nullptr ? alone : *shared).NewNameOf(context.old_source, context.new_source, context.table);
    return;
  }
  if (wants_changes) {
    const Difference difference(context.old_source, context.new_source, context.table);
    result.changes = FindChanges(context, difference, result.verdict, check.max_findings, shared);
  }
  if (result.status == Status::kAllowed) {
    result.is_unchanged = result.changes
                              ? CountOwnEdits(result.changes->edits) == 0
                              : check.is_unchanged || IsUnchanged(context.old_source, context.new_source, context.table);
  }
  const AdviceSubject subject = check.is_alone ? AdviceSubject::kTable : AdviceSubject::kChange;
  result.advice = FindWarnings(context, result.changes ? &*result.changes : nullptr, subject);
}

void AddSuggestions(TableResult& result, std::size_t max_findings, bool with_fixes, SuggestionWork& work) {
  if (result.status != Status::kRefused || !result.changes) return;
  const Settings settings = SettingsOf(result);
  const TableContext context{*result.first, *result.second, result.table, settings};
  if (!context.new_source.HasMeta(context.table)) {
    FindSuggestionsForRemovedTable(context, result.renamed_to, *result.changes);
    return;
  }
  if (result.is_alone) {
    FindLintSuggestions(context, *result.changes);
    return;
  }
  const Difference difference(context.old_source, context.new_source, context.table);
  if (result.changes->borrows_texts) ReplaceBorrowedTexts(context, difference, max_findings, result);
  FindSuggestions(context, difference, *result.changes, with_fixes, work);
}

TableResult CheckVerdict(const TableCheck& check) {
  const Source& old_source = check.sources.first;
  const Source& new_source = check.sources.second;
  const Settings settings = ResolveSettings(check.given, old_source, check.table);
  TableResult result = CheckOperation(check.sources, {check.table, check.table}, [&](ModifyTable& checker) {
    return checker.KorvelModifyTable(old_source.Library(), new_source.Library(), check.table.c_str(), settings.type,
                                     settings.created_as, check.log, settings.server_version, settings.whitelist,
                                     settings.list_num);
  });
  result.is_alone = check.is_alone;
  result.settings = {settings.type, settings.created_as, settings.server_version, settings.whitelist, settings.list_num};
  return result;
}

TableResult NewTable(const Source& source, const std::string& table, const PartialSettings& given) {
  TableResult result;
  result.table = table;
  result.status = Status::kNew;
  result.second = &source;
  result.declared = DeclaredAt(source, table);
  const Settings settings = ResolveSettings(given, source, table);
  const TableContext context{source, source, result.table, settings};
  result.advice = FindNewTableWarning(context);
  if (result.advice.findings.empty()) result.advice = FindWarnings(context, nullptr, AdviceSubject::kNewTable);
  return result;
}

}  // namespace korvel
