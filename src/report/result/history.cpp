// Verdict and causes of a history. Tested by tests/tool/history_test.cpp.
#include "report/result/history.h"

#include <algorithm>

#include "base/text.h"
#include "report/result/words.h"

namespace korvel {
namespace {

bool IsRefused(const StepTable& table) { return table.status == Status::kRefused; }

std::string CauseOf(const TableResult& result) {
  if (result.removed) return "the table was removed";
  if (result.changes) {
    for (const Finding& finding : result.changes->findings) {
      if (!finding.edits.empty()) return OneLine(Describe(result.changes->edits[finding.edits.front()]));
    }
  }
  return result.verdict.text.empty() ? "(no text)" : OneLine(result.verdict.text);
}

}  // namespace

namespace {

std::vector<StepAdvice> AdviceOf(const TableResult& result) {
  std::vector<Location> locations;
  for (const Finding& finding : result.advice.findings) {
    locations.push_back(finding.old_location);
    locations.push_back(finding.new_location);
  }
  const std::vector<std::optional<TextRange>> ranges = FindTextRanges(locations);
  const auto text = [&](std::size_t i) { return ranges[i] ? ToText(*ranges[i]) : std::string(); };
  std::vector<StepAdvice> advice;
  for (std::size_t i = 0; i < result.advice.findings.size(); ++i) {
    const Finding& finding = result.advice.findings[i];
    advice.push_back({finding.level, finding.verdict.rule, SummaryOf(finding.verdict), EditsOf(result, finding).front(),
                      finding.path, text(2 * i), text(2 * i + 1), finding.suggestion, finding.fingerprint});
  }
  return advice;
}

}  // namespace

StepTable StepTableOf(const TableResult& result) {
  StepTable table{result.table, result.status, result.verdict, {}, {}, result.removed, AdviceOf(result)};
  if (!IsRefused(table)) return table;
  table.summary = SummaryOf(result);
  table.cause = CauseOf(result);
  return table;
}

bool VersionStep::Refused() const { return std::ranges::any_of(tables, IsRefused); }

bool History::Refused() const {
  const auto refused = [](const VersionStep& step) { return step.Refused(); };
  return std::ranges::any_of(steps, refused) || std::ranges::any_of(against_newest, refused);
}

std::size_t History::Count(Level level) const {
  std::size_t count = level == Level::kWarning ? reused_ids.size() : 0;
  for (const VersionStep& step : steps) {
    for (const StepTable& table : step.tables) {
      count += static_cast<std::size_t>(std::ranges::count(table.advice, level, &StepAdvice::level));
    }
  }
  return count;
}

const VersionStep* FirstRefusedStep(const History& history, std::size_t from, const std::string& table) {
  for (std::size_t i = from; i < history.steps.size(); ++i) {
    const VersionStep& step = history.steps[i];
    const auto is_it = [&](const StepTable& of_step) { return IsRefused(of_step) && of_step.table == table; };
    if (std::ranges::any_of(step.tables, is_it)) return &step;
  }
  return nullptr;
}

}  // namespace korvel
