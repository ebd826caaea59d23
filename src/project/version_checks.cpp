// Tested by tests/tool/history_test.cpp.
#include "project/version_checks.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "project/check_tables.h"
#include "project/waivers.h"
#include "report/result/released_tables.h"
#include "report/result/summary.h"
#include "report/result/words.h"

namespace korvel {
namespace {

// REQUIRES: the sources of the result are in memory.
WarningKeys WarningKeysOf(const TableResult& table) {
  WarningKeys keys;
  for (const Finding& finding : table.advice.findings) {
    if (table.IsHidden(finding)) continue;
    keys.push_back(table.table + '\0' + FingerprintOf("", "", finding, table.advice.edits));
  }
  return keys;
}

}  // namespace

Report VersionChecks::ReportFor(const LoadedVersion& from, const LoadedVersion& to) const {
  Report report;
  report.command = "history";
  report.max_findings = options_.max_findings;
  report.fails_on_warnings = check_.fails_on_warnings;
  report.tables = CheckTables({from.input, to.input}, options_);
  if (options_.project == nullptr) return report;
  const std::vector<WaiverUse> uses = ApplyWaivers(*options_.project, 0, report);
  ReportWaivers(*options_.project, uses, {.all_compared = false, .is_strict = check_.strict_waivers}, report);
  return report;
}

CheckedStep VersionChecks::CheckStep(const LoadedVersion& from, const LoadedVersion& to, bool lists_findings) const {
  CheckedStep checked{{from.position, to.position, ReportFor(from, to)}, {}, {}};
  Report& report = checked.step.report;
  if (lists_findings) AddSuggestions(report, false);
  checked.refusals = StepIndex::KeysOf(report.tables);
  for (const TableResult& table : report.tables) std::ranges::move(WarningKeysOf(table), std::back_inserter(checked.warnings));
  return checked;
}

CheckedVersion VersionChecks::CheckAgainstNewest(const LoadedVersion& from, const LoadedVersion& newest) const {
  CheckedVersion checked{{from.position}, {}};
  NewestCheck& check = checked.check;
  check.warned = ReportFor(from, newest);
  std::vector<TableResult> tables = std::exchange(check.warned.tables, {});
  const std::vector<RefusalCause> causes = CausesOf(tables);
  for (std::size_t i = 0; i < tables.size(); ++i) {
    TableResult& table = tables[i];
    const auto is_left_out = [&](const Finding& one) { return one.level != Level::kWarning || table.IsHidden(one); };
    std::erase_if(table.advice.findings, is_left_out);
    for (Finding& finding : table.advice.findings) finding.refusals.clear();  // all are waived
    const bool is_waived = IsWaived(table);
    if (!is_waived) table.changes.reset();
    if (!table.advice.findings.empty()) {
      check.warned.tables.push_back(table);
      checked.warnings.push_back(WarningKeysOf(table));
    }
    if (table.status != Status::kRefused) continue;
    table.changes.reset();
    table.advice = {};
    table.baseline = from.input.name;
    std::string summary = SummaryOf(table);
    check.refused.push_back({std::move(table), std::move(summary), causes[i], is_waived});
  }
  return checked;
}

void Release(VersionStep& step) {
  std::vector<RefusalCause> causes = CausesOf(step.report.tables);
  for (std::size_t i = 0; i < causes.size(); ++i) {
    if (!causes[i].change.empty()) step.causes.push_back({i, std::move(causes[i])});
  }
  step.sources = ReleaseSources(step.report.tables);
}

void Release(NewestCheck& check) {
  std::vector<TableResult> tables;
  for (NewestRefusal& refusal : check.refused) tables.push_back(std::move(refusal.result));
  std::ranges::move(check.warned.tables, std::back_inserter(tables));
  check.sources = ReleaseSources(tables);
  const auto warned = tables.begin() + static_cast<std::ptrdiff_t>(check.refused.size());
  for (std::size_t i = 0; i < check.refused.size(); ++i) check.refused[i].result = std::move(tables[i]);
  check.warned.tables.assign(std::make_move_iterator(warned), std::make_move_iterator(tables.end()));
}

}  // namespace korvel
