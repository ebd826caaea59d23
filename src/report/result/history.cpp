// Verdict and causes of a history. Tested by tests/tool/history_test.cpp.
#include "report/result/history.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <string_view>

#include "base/text.h"
#include "report/result/fold.h"
#include "report/result/summary.h"
#include "report/result/words.h"
#include "rule_docs/advice.h"

namespace korvel {
namespace {

bool FailsForWarnings(const Report& warned) {
  return std::ranges::any_of(warned.tables, [&](const TableResult& table) {
    return std::ranges::any_of(table.advice.findings, [&](const Finding& finding) { return Fails(warned, finding); });
  });
}

bool IsRefused(const TableResult& table) { return table.status == Status::kRefused; }

// Whether the limit on findings has dropped the changes. Otherwise findings have fingerprints.
bool IsUnlisted(const Changes& changes) { return !changes.findings.empty() && changes.findings.front().fingerprint.empty(); }

std::vector<const Finding*> Select(const std::vector<const Finding*>& findings, auto condition) {
  std::vector<const Finding*> selected;
  std::ranges::copy_if(findings, std::back_inserter(selected), [&](const Finding* finding) { return condition(*finding); });
  return selected;
}

// Those without a waiver; all if each has one.
std::vector<const Finding*> OpenFindings(const std::vector<Finding>& findings) {
  std::vector<const Finding*> all(findings.size());
  std::ranges::transform(findings, all.begin(), [](const Finding& finding) { return &finding; });
  std::vector<const Finding*> open = Select(all, [](const Finding& one) { return !one.waiver; });
  return open.empty() ? all : open;
}

// The findings about the refusal that the checker reports for the whole change. It stops at the first refusal, so other findings
// have other texts. If the text of no finding is the same, because several changes add to it, those of the same rule; if other
// rules refuse the changes alone, those of the same code, else all. Waived findings count only if all are waived.
std::vector<const Finding*> FindCauses(const TableResult& result) {
  if (!result.changes || IsUnlisted(*result.changes)) return {};
  std::vector<const Finding*> findings = OpenFindings(result.changes->findings);
  const Verdict& whole = result.verdict;
  const auto has_code = [&](const Finding& one) { return one.verdict.code == whole.code; };
  const auto has_rule = [&](const Finding& one) { return has_code(one) && one.verdict.rule == whole.rule; };
  const auto has_text = [&](const Finding& one) { return has_rule(one) && one.verdict.text == whole.text; };
  if (auto same_text = Select(findings, has_text); !same_text.empty()) return {same_text.front()};
  if (auto same_rule = Select(findings, has_rule); !same_rule.empty()) return same_rule;
  if (auto same_code = Select(findings, has_code); !same_code.empty()) return same_code;
  return findings;
}

std::string CauseText(const TableResult& result, const std::vector<const Finding*>& findings) {
  if (result.removed) return "the table was removed";
  std::string text;
  for (const Finding* finding : findings) {
    for (const std::string& edit : EditsOf(result, *finding)) AppendPart(text, "; ", edit);
  }
  if (!text.empty()) return text;
  return result.verdict.text.empty() ? "(no text)" : OneLine(result.verdict.text);
}

}  // namespace

std::vector<RefusalCause> CausesOf(const std::vector<TableResult>& tables) {
  std::vector<RefusalCause> causes(tables.size());
  std::vector<Location> locations;
  for (std::size_t i = 0; i < tables.size(); ++i) {
    const TableResult& table = tables[i];
    Location old_location;
    Location new_location;
    const std::vector<const Finding*> findings = FindCauses(table);
    if (!findings.empty()) {
      const Finding& first = *findings.front();
      causes[i] = {CauseText(table, findings), first.path, "", "", first.fingerprint, first.verdict.rule};
      old_location = first.old_location;
      new_location = first.new_location;
    } else if (IsRefused(table) && !table.changes) {
      causes[i] = {CauseText(table, findings), table.table, "", "", "", table.verdict.rule};
      (table.removed ? old_location : new_location) = table.declared;
    }
    locations.push_back(old_location);
    locations.push_back(new_location);
  }
  const std::vector<std::optional<TextRange>> ranges = FindTextRanges(locations);
  for (std::size_t i = 0; i < tables.size(); ++i) {
    if (ranges[2 * i]) causes[i].old_location = ToText(*ranges[2 * i]);
    if (ranges[2 * i + 1]) causes[i].new_location = ToText(*ranges[2 * i + 1]);
  }
  return causes;
}

bool VersionStep::Refused() const { return std::ranges::any_of(report.tables, IsRefused); }

bool History::Refused() const {
  return std::ranges::any_of(steps, &VersionStep::Refused) || std::ranges::any_of(against_newest, &NewestCheck::Refused);
}

bool History::IsComplete() const {
  return std::ranges::all_of(versions, [](const VersionInfo& version) { return version.faults.empty(); });
}

bool Histories::Refused() const { return std::ranges::any_of(files, &History::Refused); }

bool Fails(const VersionStep& step) { return CountFailing(step.report) > 0; }

bool Fails(const NewestCheck& check) {
  const auto is_open = [](const NewestRefusal& refusal) { return !refusal.is_waived; };
  return check.left_out_fails || std::ranges::any_of(check.refused, is_open) || FailsForWarnings(check.warned);
}

bool Histories::Fails(const History& history) const {
  const auto is_open_reuse = [](const ReusedId& reused) { return !reused.waiver; };
  const auto fails = [](const auto& part) { return korvel::Fails(part); };
  return std::ranges::any_of(history.steps, fails) || std::ranges::any_of(history.against_newest, fails) ||
         (fails_on_warnings && std::ranges::any_of(history.reused_ids, is_open_reuse));
}

bool Histories::Fails() const {
  return CountErrors(project) > 0 || std::ranges::any_of(files, [&](const History& history) { return Fails(history); });
}

std::vector<InputFault> Histories::Faults() const {
  std::vector<InputFault> all = faults;
  for (const History& history : files) {
    for (const VersionInfo& version : history.versions) std::ranges::copy(version.faults, std::back_inserter(all));
  }
  return all;
}

std::string DescriptionOf(const History& history, const ReusedId& reused) {
  const auto use = [&](const ReusedId::Use& one) {
    return one.field + ", " + one.type + ", in " + history.versions[one.version].name;
  };
  return std::string(kIdReusedAdvice.row.summary) + ": id " + std::to_string(reused.id) + " of " + reused.meta + ": " +
         use(reused.after) + "; was: " + use(reused.before);
}

const char* VerdictText(bool refused) { return refused ? "refused" : "allowed"; }

OverallVerdict VerdictOf(const History& history) {
  if (!history.IsComplete()) return OverallVerdict::kIncomplete;
  if (history.steps.empty()) return OverallVerdict::kNothingCompared;
  return history.Refused() ? OverallVerdict::kRefused : OverallVerdict::kAllowed;
}

OverallVerdict VerdictOf(const Histories& histories) {
  const auto is_complete = [](const History& history) { return history.IsComplete(); };
  const auto is_compared = [](const History& history) { return !history.steps.empty(); };
  if (!histories.faults.empty() || !std::ranges::all_of(histories.files, is_complete)) return OverallVerdict::kIncomplete;
  if (std::ranges::none_of(histories.files, is_compared)) return OverallVerdict::kNothingCompared;
  return histories.Refused() ? OverallVerdict::kRefused : OverallVerdict::kAllowed;
}

std::string RemarkOn(const Histories& histories) {
  std::size_t unreadable = 0;
  for (const History& history : histories.files) {
    unreadable += static_cast<std::size_t>(
        std::ranges::count_if(history.versions, [](const VersionInfo& version) { return !version.faults.empty(); }));
  }
  if (unreadable > 0) return " (" + Counted(unreadable, "version") + " cannot be read)";
  if (!histories.faults.empty()) return " (the check failed)";
  if (histories.Refused()) return histories.Fails() ? "" : " (all waived)";
  if (CountErrors(histories.project) > 0) return " (but the project file has an error)";
  return histories.Fails() ? " (warnings fail this call)" : "";
}

std::size_t NumberOf(const History& history, const VersionStep& step) {
  return static_cast<std::size_t>(&step - history.steps.data()) + 1;
}

std::size_t CountAdvice(const History& history, Level level) {
  std::size_t count = level == kIdReusedAdvice.level ? history.reused_ids.size() : 0;
  for (const VersionStep& step : history.steps) count += FoldedReport(step.report).Count(level).all;
  for (const NewestCheck& check : history.against_newest) count += FoldedReport(check.warned).Count(level).all;
  return count;
}

namespace {

ProjectFinding ToProjectFinding(const History& history, const ReusedId& reused, bool fails) {
  return {.rule = kIdReusedAdvice.row.id,
          .file = history.versions[reused.after.version].name,
          .position = reused.after.position,
          .text = DescriptionOf(history, reused),
          .suggestion = reused.suggestion,
          .level = fails && !reused.waiver ? ProjectFinding::Level::kError : ProjectFinding::Level::kWarning,
          .files = {reused.file},
          .fingerprint = reused.fingerprint,
          .waiver = reused.waiver};
}

// Whether its step lists a refusal of the table that is not waived.
bool FailsInStep(const History& history, const NewestRefusal& refusal) {
  if (!refusal.step) return false;
  const auto is_it = [&](const TableResult& table) { return table.table == refusal.result.table && !IsWaived(table); };
  return std::ranges::any_of(history.steps[*refusal.step].report.tables, is_it);
}

// What no step has: refused tables, and those with warnings. A refusal that a step lists is not repeated with the warnings.
void AddAgainstNewest(const History& history, const NewestCheck& check, std::vector<TableResult>& tables) {
  std::set<std::string_view> refused;
  for (const NewestRefusal& refusal : check.refused) {
    const auto is_it = [&](const TableResult& table) { return table.table == refusal.result.table; };
    const bool is_warned = std::ranges::any_of(check.warned.tables, is_it);
    if (refusal.is_waived || FailsInStep(history, refusal)) continue;
    refused.insert(refusal.result.table);
    if (!is_warned) tables.push_back(refusal.result);
  }
  for (const TableResult& table : check.warned.tables) {
    TableResult& added = tables.emplace_back(table);
    added.baseline = history.versions[check.from].name;
    if (IsWaived(added) || refused.contains(table.table)) continue;
    added.status = Status::kAllowed;
    added.verdict = {};
  }
}

}  // namespace

Report ReportOf(const Histories& histories) {
  Report report;
  report.command = "history";
  report.project = histories.project;
  report.projects = histories.projects;
  report.faults = histories.Faults();
  report.max_findings = histories.max_findings;
  report.fails_on_warnings = histories.fails_on_warnings;
  for (const History& history : histories.files) {
    if (history.IsRemoved()) report.files.push_back({FileNote::Kind::kDeleted, history.file, ""});
    for (const ReusedId& reused : history.reused_ids) {
      report.project.push_back(ToProjectFinding(history, reused, report.fails_on_warnings));
    }
    for (const VersionStep& step : history.steps) {
      for (const TableResult& table : step.report.tables) {
        report.tables.push_back(table);
        report.tables.back().baseline = history.versions[step.from].name;
      }
    }
    for (const NewestCheck& check : history.against_newest) AddAgainstNewest(history, check, report.tables);
  }
  return report;
}

}  // namespace korvel
