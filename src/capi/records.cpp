// Tested by tests/capi/check_test.cpp.
#include "capi/records.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "report/result/words.h"

namespace korvel::capi {
namespace {

std::int32_t StatusOf(const TableResult& table) {
  switch (table.status) {
    case Status::kAllowed:
      return KC_TABLE_ALLOWED;
    case Status::kRefused:
      return KC_TABLE_REFUSED;
    case Status::kNew:
      return KC_TABLE_NEW;
  }
  return 0;
}

std::int32_t LevelOf(const Finding& finding) {
  switch (finding.level) {
    case Level::kRefused:
      return KC_LEVEL_REFUSED;
    case Level::kWarning:
      return KC_LEVEL_WARNING;
    case Level::kNote:
      return KC_LEVEL_NOTE;
  }
  return 0;
}

std::vector<kc_fix> FixesOf(const Finding& finding) {
  std::vector<kc_fix> fixes;
  for (const auto& [span, text] : finding.fix) fixes.push_back({span.begin, span.end - span.begin, text.c_str()});
  return fixes;
}

// The path that corresponds to `path` as `other` does to `known`: "b.x.two" for "a.x.one", "b.x.one" and "a.x.two".
std::string InOther(const std::string& known, const std::string& other, const std::string& path) {
  const auto differ = std::mismatch(known.rbegin(), known.rend(), other.rbegin(), other.rend());
  return std::string(other.begin(), differ.second.base()) + path.substr(static_cast<std::size_t>(known.rend() - differ.first));
}

}  // namespace

Records::Records(const Report& report) : report_(report), ranges_(LocationsOf(FoldedReport(report)), Dumps::kHidden) {
  const FoldedReport folded(report);
  info_ = InfoOf(folded);
  for (const TableResult& table : report.tables) tables_.push_back(TableOf(table));
  for (const FoldedFinding& one : folded.findings()) findings_.push_back(FindingOf(one, folded));
}

kc_report_info Records::InfoOf(const FoldedReport& folded) {
  const Summary summary = Summarize(folded);
  const OverallVerdict verdict = VerdictOf(summary);
  return {.verdict = verdict == OverallVerdict::kAllowed   ? KC_VERDICT_ALLOWED
                     : verdict == OverallVerdict::kRefused ? KC_VERDICT_REFUSED
                                                           : 0,
          .passes = ExitCodeOf(report_) == 0 ? 1 : 0,
          .table_count = report_.tables.size(),
          .finding_count = folded.findings().size(),
          .left_out_count = summary.left_out + summary.warnings.left_out + summary.notes.left_out,
          .summary = Keep(ToText(summary))};
}

kc_table Records::TableOf(const TableResult& table) {
  const bool is_refused = table.status == Status::kRefused;
  return {.name = table.table.c_str(),
          .status = StatusOf(table),
          .code = table.verdict.code,
          .code_name = Keep(CodeNameOf(table.verdict.code)),
          .rule = table.verdict.rule.c_str(),
          .summary = is_refused ? Keep(SummaryOf(table)) : "",
          .text = table.verdict.text.c_str(),
          .is_removed = table.removed ? 1 : 0,
          .location = ToLocation(table.declared)};
}

FindingRecord Records::FindingOf(const FoldedFinding& one, const FoldedReport& folded) {
  const Finding& finding = *one.finding;
  FindingRecord record{.finding = {}, .affected = AffectedOf(one, folded), .fixes = FixesOf(finding)};
  record.finding = {.level = LevelOf(finding),
                    .code = finding.verdict.code,
                    .table = PositionOf(one.table),
                    .rule = finding.verdict.rule.c_str(),
                    .summary = Keep(SummaryOf(finding.verdict)),
                    .text = finding.verdict.text.c_str(),
                    .change = Keep(Join(korvel::EditsOf(*one.table, finding), "\n")),
                    .path = finding.path.c_str(),
                    .suggestion = finding.suggestion.c_str(),
                    .fingerprint = finding.fingerprint.c_str(),
                    .has_alternative = finding.has_fix ? 1 : 0,
                    .fix_count = record.fixes.size(),
                    .affected_count = record.affected.size(),
                    .location = ToLocation(LeadOf(*one.table, finding)),
                    .old_location = ToLocation(finding.old_location),
                    .new_location = ToLocation(finding.new_location)};
  return record;
}

// A finding may refer to an earlier one of its table, the leader, whose other paths differ from its own path in the same way.
std::vector<kc_affected> Records::AffectedOf(const FoldedFinding& one, const FoldedReport& folded) {
  std::vector<kc_affected> affected;
  const FoldedFinding& leader = one.also_as ? folded.findings()[*one.also_as] : one;
  for (const auto& [table, path] : leader.also) {
    affected.push_back({PositionOf(table), Keep(InOther(leader.finding->path, path, one.finding->path))});
  }
  return affected;
}

kc_location Records::ToLocation(const Location& location) {
  const TextRange* const range = ranges_.Find(location);
  if (range == nullptr) return {"", 0, 0, 0, 0};
  const char* const file = location.source->name.c_str();
  if (!range->begin) return {file, 0, 0, 0, 0};
  return {file, range->begin->line, range->begin->column, range->end.line, range->end.column};
}

std::uint64_t Records::PositionOf(const TableResult* table) const {
  return static_cast<std::uint64_t>(table - report_.tables.data());
}

}  // namespace korvel::capi
