// The faults of a report, one by one. Held by tests/report/issues_test.cpp.
#include "report/result/issues.h"

#include <algorithm>
#include <filesystem>
#include <map>

#include "analysis/findings/finding.h"
#include "base/one_line.h"

namespace korvel {
namespace {

constexpr char kNoRule[] = "refused";

// A fingerprint for what has none of its own: rule and name, no line and no file, so that it stays while the schema moves.
std::string FaultFingerprint(const std::string& rule, const std::string& name) { return FingerprintOf(rule + '\0' + name); }

bool IsSameLocation(const TextRange& a, const TextRange& b) { return a.file == b.file && a.span.begin == b.span.begin; }

std::string RuleOf(const std::string& rule) { return rule.empty() ? kNoRule : rule; }

// Each finding of each table, as if no other had it.
std::vector<FoldedFinding> Unfolded(const Report& report) {
  std::vector<FoldedFinding> findings;
  for (const TableResult& table : report.tables) {
    if (!table.changes) continue;
    for (const Finding& finding : table.changes->findings) findings.push_back({&table, &finding, {}});
  }
  return findings;
}

}  // namespace

Issues::Issues(const Report& report, Repeats repeats)
    : marks_(LocationsOf(report, false)), folded_(repeats == Repeats::kFolded ? Fold(report) : Unfolded(report)) {
  auto next = folded_.cbegin();
  for (const TableResult& table : report.tables) {
    if (table.status == Status::kRefused && (!table.changes || table.changes->findings.empty())) AddTable(table);
    for (; next != folded_.cend() && next->table == &table; ++next) AddFinding(*next);
  }
  for (const ProjectFinding& finding : report.project) AddProjectFinding(finding);
  MakeFingerprintsUnique();
}

void Issues::AddTable(const TableResult& table) {
  Issue issue;
  issue.rule = RuleOf(table.rule);
  issue.text = TextOf(table.text);
  issue.fingerprint = FaultFingerprint(issue.rule, table.table);
  issue.place = *marks_.Find(table.declared);
  issue.table = &table;
  issues_.push_back(std::move(issue));
}

void Issues::AddFinding(const FoldedFinding& folded) {
  const Finding& finding = *folded.finding;
  Issue issue;
  issue.rule = RuleOf(finding.verdict.rule);
  issue.text = TextOf(finding.verdict.text);
  issue.waived = finding.waiver.has_value();
  issue.fingerprint = finding.fingerprint.empty() ? FaultFingerprint(issue.rule, finding.path) : finding.fingerprint;
  issue.suggestion = finding.suggestion;
  issue.table = folded.table;
  issue.folded = &folded;
  const TextRange* const place = marks_.Find(finding.new_location ? finding.new_location : finding.old_location);
  const TextRange* const old_location = marks_.Find(finding.old_location);
  issue.place = place == nullptr ? *marks_.Find(folded.table->declared) : *place;
  if (old_location != nullptr && !IsSameLocation(*old_location, issue.place)) issue.old_location = *old_location;
  issues_.push_back(std::move(issue));
}

void Issues::AddProjectFinding(const ProjectFinding& finding) {
  Issue issue;
  issue.rule = finding.rule;
  issue.text = OneLine(finding.text);
  issue.fingerprint = FaultFingerprint(finding.rule, finding.text);
  issue.place.file = finding.file;
  issue.place.begin = finding.position;
  issue.place.end = finding.position;
  issue.suggestion = finding.suggestion;
  issues_.push_back(std::move(issue));
}

// The same library may stand in a report twice, in two files.
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
  const std::string whole = TextOf(table.text);
  if (whole != issue.text) lines.push_back("the whole check says: " + whole);
  const std::vector<std::string> edits = EditsOf(table, finding);
  if (edits.empty() && WasRefusedBefore(table)) lines.emplace_back("the schema is refused as it already was");
  for (const std::string& edit : edits) lines.push_back((edits.size() == 1 ? "change: " : "only together: ") + edit);
  if (!finding.path.empty()) lines.push_back("path: " + OneLine(finding.path));
  for (const std::string& also : AlsoOf(*issue.folded)) lines.push_back("also: " + also);
  if (finding.waiver) lines.push_back("waived until " + OneLine(finding.waiver->until) + ": " + OneLine(finding.waiver->reason));
}

}  // namespace

std::vector<std::string> DetailsOf(const Issue& issue) {
  std::vector<std::string> lines;
  if (issue.table != nullptr) {
    const int code = issue.folded == nullptr ? issue.table->code : issue.folded->finding->verdict.code;
    lines.push_back("table " + OneLine(issue.table->table) + ": " + std::to_string(code) + " " + CodeNameOf(code) +
                    (issue.table->removed ? " (gone)" : ""));
  }
  if (issue.folded != nullptr) AddFindingTo(lines, issue);
  if (issue.old_location) lines.push_back("was: " + ToText(*issue.old_location));
  if (!issue.suggestion.empty()) lines.push_back("way out: " + OneLine(issue.suggestion));
  return lines;
}

std::string ServicePath(const std::string& file) {
  if (file == "<stdin>") return "";
  std::string path = file;
  constexpr std::string_view kGit = "git:";
  if (const std::size_t colon = path.find(':', kGit.size()); path.starts_with(kGit) && colon != std::string::npos) {
    path.erase(0, colon + 1);
  }
  namespace fs = std::filesystem;
  const fs::path normal = fs::path(path).lexically_normal();
  if (!normal.is_absolute()) return normal.generic_string();
  std::error_code failed;
  const fs::path relative = normal.lexically_relative(fs::current_path(failed));
  const bool is_below = !failed && !relative.empty() && *relative.begin() != "..";
  return is_below ? relative.generic_string() : normal.generic_string();
}

}  // namespace korvel
