// Lists the problems of a report. Tested by tests/report/formats_test.cpp.
#include "report/result/issues.h"

#include <algorithm>
#include <iterator>
#include <map>

#include "analysis/findings/finding.h"
#include "base/text.h"
#include "rule_docs/fault_rules.h"

namespace korvel {
namespace {

// A fingerprint for issues that have none: of rule and name, without line and file, so that it stays when the schema moves.
std::string NameFingerprint(const std::string& rule, const std::string& name) { return FingerprintOf(rule + '\0' + name); }

// The level of a table with findings that a limit left out: it fails, or does not fail, like these findings.
Level LimitLevelOf(const TableResult& table) {
  if (table.status == Status::kRefused) return Level::kRefused;
  const auto is_open_warning = [](const Finding& one) { return one.level == Level::kWarning && !one.waiver; };
  return std::ranges::any_of(table.advice.findings, is_open_warning) ? Level::kWarning : Level::kNote;
}

}  // namespace

Issues::Issues(const FoldedReport& folded)
    : folded_(folded), paths_(folded.report().path_prefix), ranges_(LocationsOf(folded), Dumps::kHidden) {
  for (const InputFault& fault : folded.report().faults) AddFault(fault);
  for (const FoldedTable& table : folded.tables()) {
    const TableResult& result = *table.table;
    if (result.status == Status::kRefused && (!result.changes || result.changes->findings.empty())) AddTable(result);
    for (const FoldedFinding& finding : table.findings) AddFinding(finding);
    AddLimit(table);
  }
  for (const ProjectFinding& finding : folded.report().project) AddProjectFinding(finding);
  MakeFingerprintsUnique();
}

void Issues::AddFault(const InputFault& fault) {
  Issue issue;
  issue.rule = RuleOf(fault.kind).id;
  issue.summary = OneLine(fault.text);
  issue.fingerprint = NameFingerprint(issue.rule, fault.file + '\0' + fault.text);
  // Services show the new files: a fault of an old one has no line there.
  if (fault.needed_by.empty()) {
    issue.location = LocationOf(fault);
  } else {
    issue.location.file = fault.needed_by;
    issue.summary = ToText(LocationOf(fault), &paths_) + ": " + issue.summary;
  }
  issue.fault = &fault;
  issues_.push_back(std::move(issue));
}

void Issues::AddTable(const TableResult& table) {
  Issue issue;
  issue.rule = RuleIdOf(table.verdict);
  issue.summary = SummaryOf(table) + ": " + OneLine(table.table);
  issue.fingerprint = NameFingerprint(issue.rule, table.table);
  issue.location = *ranges_.Find(table.declared);
  issue.table = &table;
  issues_.push_back(std::move(issue));
}

void Issues::AddLimit(const FoldedTable& table) {
  const std::vector<std::string> limits = LimitsOf(table);
  if (limits.empty()) return;
  Issue issue;
  issue.rule = kLimitRule;
  issue.summary = "table " + OneLine(table.table->table) + ": " + Join(limits, "; ");
  issue.level = LimitLevelOf(*table.table);
  issue.waived = IsWaived(*table.table);
  issue.fingerprint = NameFingerprint(issue.rule, table.table->table);
  issue.location = *ranges_.Find(table.table->declared);
  issue.table = table.table;
  issues_.push_back(std::move(issue));
}

void Issues::AddFinding(const FoldedFinding& folded) {
  const Finding& finding = *folded.finding;
  Issue issue;
  issue.rule = RuleIdOf(finding.verdict);
  issue.summary = SummaryOf(finding.verdict) + (finding.path.empty() ? "" : ": " + OneLine(finding.path));
  issue.level = finding.level;
  issue.waived = finding.waiver.has_value();
  issue.fingerprint = finding.fingerprint.empty() ? NameFingerprint(issue.rule, finding.path) : finding.fingerprint;
  issue.suggestion = finding.suggestion;
  issue.also = AlsoOf(folded_, folded);
  issue.table = folded.table;
  issue.folded = &folded;
  const TextRange* const new_location = ranges_.Find(finding.new_location ? finding.new_location : finding.old_location);
  const TextRange* const old_location = ranges_.Find(finding.old_location);
  issue.location = new_location == nullptr ? *ranges_.Find(folded.table->declared) : *new_location;
  if (old_location != nullptr && !BeginAlike(*old_location, issue.location)) issue.old_location = *old_location;
  issues_.push_back(std::move(issue));
}

void Issues::AddProjectFinding(const ProjectFinding& finding) {
  Issue issue;
  issue.rule = finding.rule;
  issue.summary = OneLine(finding.text);
  issue.fingerprint = finding.fingerprint.empty() ? NameFingerprint(finding.rule, finding.text) : finding.fingerprint;
  issue.waived = finding.waiver.has_value();
  issue.project = &finding;
  issue.location.file = finding.file;
  issue.location.begin = finding.position;
  issue.location.end = finding.position;
  issue.suggestion = finding.suggestion;
  issue.level = finding.level == ProjectFinding::Level::kError ? Level::kRefused : Level::kWarning;
  issues_.push_back(std::move(issue));
}

// The same library may occur twice in a report, in two files.
void Issues::MakeFingerprintsUnique() {
  std::map<std::string, int> seen;
  for (Issue& issue : issues_) {
    const int times = ++seen[issue.fingerprint];
    if (times > 1) issue.fingerprint += "-" + std::to_string(times);
  }
}

namespace {

void AddFindingTo(std::vector<std::string>& lines, const Issue& issue) {
  const Finding& finding = *issue.folded->finding;
  const TableResult& table = *issue.folded->table;
  if (!IsAdvice(finding) && table.verdict.text != finding.verdict.text)
    lines.push_back("whole check: " + SummaryOf(table) + " (" + CheckerLine(table.verdict.text) + ")");
  const std::vector<std::string> edits = EditsOf(table, finding);
  if (edits.empty() && IsPreexisting(table)) lines.emplace_back(kPreexisting);
  for (const std::string& edit : edits) lines.push_back((edits.size() == 1 ? "change: " : "refused in combination: ") + edit);
  for (const std::string& also : issue.also) lines.push_back("also affected: " + also);
  if (finding.waiver) lines.push_back(ToText(*finding.waiver));
}

}  // namespace

std::vector<std::string> DetailsOf(const Issue& issue, const ServicePaths& paths) {
  if (issue.fault != nullptr) return DetailsOf(*issue.fault, &paths);
  std::vector<std::string> lines;
  if (issue.table != nullptr) {
    const TableResult& table = *issue.table;
    const bool is_whole = issue.folded == nullptr;
    const Verdict& verdict = is_whole ? table.verdict : issue.folded->finding->verdict;
    const bool is_advice = issue.level != Level::kRefused;
    if (!is_advice) lines.push_back(CheckerLine(verdict.text));
    const std::string result = is_advice ? WordOf(table.status) : std::to_string(verdict.code) + " " + CodeNameOf(verdict.code);
    lines.push_back(TableAndBaseline(table) + ": " + result + (table.removed ? " (removed)" : ""));
  }
  if (issue.folded != nullptr) AddFindingTo(lines, issue);
  if (issue.project != nullptr && issue.project->waiver) lines.push_back(ToText(*issue.project->waiver));
  if (issue.old_location) lines.push_back("was: " + ToText(*issue.old_location, &paths));
  if (!issue.suggestion.empty()) {
    const std::size_t first = lines.size();
    std::ranges::move(SuggestionLines(issue.suggestion), std::back_inserter(lines));
    lines[first].insert(0, "suggestion: ");
  }
  return lines;
}

std::string RuleIdOf(const Verdict& verdict) { return verdict.rule.empty() ? "refused" : verdict.rule; }

}  // namespace korvel
