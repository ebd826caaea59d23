// Counts tables, findings and files. Tested by tests/tool/check_test.cpp and waiver_test.cpp.
#include "report/result/summary.h"

#include <algorithm>
#include <set>
#include <string_view>
#include <utility>

#include "rule_docs/project_rules.h"

namespace korvel {

namespace {

// Whether nobody notices changes of some file because of it.
bool HidesFiles(const ProjectFinding& finding) {
  return finding.rule == kNoLongerCheckedRule.row.id || finding.rule == kUnreadableProjectRule.row.id;
}

bool ChangesSettings(const ProjectFinding& finding) { return finding.rule == kSettingsChangedRule.row.id; }

}  // namespace

bool IsWaived(const TableResult& result) {
  return result.changes && !result.changes->findings.empty() && !result.changes->stopped &&
         std::ranges::all_of(result.changes->findings, [](const Finding& one) { return one.waiver.has_value(); });
}

std::size_t CountErrors(const std::vector<ProjectFinding>& findings) {
  const auto is_error = [](const ProjectFinding& one) { return one.level == ProjectFinding::Level::kError && !one.waiver; };
  return static_cast<std::size_t>(std::ranges::count_if(findings, is_error));
}

bool Fails(const Report& report, const Finding& finding) {
  const bool counts = finding.level == Level::kRefused || (finding.level == Level::kWarning && report.fails_on_warnings);
  return counts && !finding.waiver;
}

namespace {

bool FailsByRefusal(const TableResult& result) { return result.status == Status::kRefused && !IsWaived(result); }

bool FailsForWarning(const Report& report, const TableResult& result) {
  const auto fails = [&](const Finding& finding) { return Fails(report, finding); };
  return !FailsByRefusal(result) && std::ranges::any_of(result.advice.findings, fails);
}

// A file with faults on both sides counts once.
std::size_t CountFilesNotChecked(const std::vector<InputFault>& faults) {
  std::set<std::string_view> files;
  for (const InputFault& fault : faults) {
    const std::string& file = fault.needed_by.empty() ? fault.file : fault.needed_by;
    if (!file.empty()) files.insert(file);
  }
  return files.size();
}

// A file that several baselines select counts once.
std::size_t CountDropped(const std::vector<ProjectFinding>& findings) {
  std::set<std::pair<std::size_t, std::string_view>> files;
  for (const ProjectFinding& finding : findings) {
    if (finding.rule != kNoLongerCheckedRule.row.id) continue;
    for (const std::string& file : finding.files) files.emplace(finding.project, file);
  }
  return files.size();
}

std::size_t CountFailingForWarnings(const Report& report) {
  const auto fails = [&](const TableResult& result) { return FailsForWarning(report, result); };
  return static_cast<std::size_t>(std::ranges::count_if(report.tables, fails)) + CountFailingProject(report) -
         CountErrors(report.project);
}

// Absent without an allowed table, and if it is not known whether each of them changed: a table alone is not compared.
std::optional<std::size_t> CountUnchanged(const std::vector<TableResult>& tables) {
  std::optional<std::size_t> count;
  for (const TableResult& table : tables) {
    if (table.status != Status::kAllowed) continue;
    if (!table.is_unchanged || table.is_alone) return std::nullopt;
    count = count.value_or(0) + (*table.is_unchanged ? 1 : 0);
  }
  return count;
}

}  // namespace

bool Fails(const Report& report, const TableResult& table) { return FailsByRefusal(table) || FailsForWarning(report, table); }

std::size_t CountFailing(const Report& report) {
  const auto fails = [&](const TableResult& result) { return Fails(report, result); };
  return report.faults.size() + CountFailingProject(report) +
         static_cast<std::size_t>(std::ranges::count_if(report.tables, fails));
}

bool Fails(const Report& report, const ProjectFinding& finding) {
  if (finding.waiver) return false;
  return finding.level == ProjectFinding::Level::kError || (report.fails_on_warnings && ChangesSettings(finding));
}

std::size_t CountFailingProject(const Report& report) {
  const auto fails = [&](const ProjectFinding& finding) { return Fails(report, finding); };
  return static_cast<std::size_t>(std::ranges::count_if(report.project, fails));
}

int ExitCodeOf(const Report& report) {
  const auto hides_files = [](const ProjectFinding& one) { return HidesFiles(one) && !one.waiver; };
  if (!report.faults.empty() || std::ranges::any_of(report.project, hides_files)) return 2;
  return CountFailing(report) == 0 ? 0 : 1;
}

Summary Summarize(const FoldedReport& folded) {
  const Report& report = folded.report();
  Summary summary;
  summary.failing = CountFailing(report);
  for (const TableResult& result : report.tables) {
    if (result.status == Status::kNew) ++summary.added;
    if (result.status == Status::kAllowed) ++summary.allowed;
    if (result.status == Status::kRefused) ++summary.refused;
    if (result.removed) ++summary.removed;
  }
  summary.compared = summary.allowed + summary.refused;
  summary.unchanged = CountUnchanged(report.tables);
  summary.failing_for_warnings = CountFailingForWarnings(report);
  summary.faults = report.faults.size();
  summary.files_dropped = CountDropped(report.project);
  for (const ProjectFinding& finding : report.project) {
    if (finding.rule == kUnreadableProjectRule.row.id) ++summary.projects_unreadable;
    if (HidesFiles(finding) && !finding.waiver) ++summary.hiding;
    if (ChangesSettings(finding) && !finding.waiver) ++summary.settings_changed;
    LevelCount& level = finding.level == ProjectFinding::Level::kError ? summary.project_errors : summary.project_warnings;
    ++level.all;
    if (finding.waiver) ++level.waived;
  }
  summary.is_unchanged = !report.baselines.empty() && std::ranges::all_of(report.baselines, &ReportBaseline::is_same);
  summary.files_not_checked = CountFilesNotChecked(report.faults);
  const LevelCount& refusals = folded.Count(Level::kRefused);
  summary.findings = refusals.all;
  summary.left_out = refusals.left_out;
  summary.waived = refusals.waived;
  summary.warnings = folded.Count(Level::kWarning);
  summary.notes = folded.Count(Level::kNote);
  for (const FileNote& note : report.files) {
    if (note.kind == FileNote::Kind::kAdded) ++summary.files_added;
    if (note.kind == FileNote::Kind::kDeleted) ++summary.files_deleted;
    if (note.kind == FileNote::Kind::kMoved) ++summary.files_moved;
  }
  return summary;
}

}  // namespace korvel
