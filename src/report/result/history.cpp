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

StepTable StepTableOf(const TableResult& result) {
  StepTable table{result.table, result.status, result.verdict, {}, {}, result.removed};
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

const VersionStep* FirstRefusedStep(const History& history, std::size_t from, const std::string& table) {
  for (std::size_t i = from; i < history.steps.size(); ++i) {
    const VersionStep& step = history.steps[i];
    const auto is_it = [&](const StepTable& of_step) { return IsRefused(of_step) && of_step.table == table; };
    if (std::ranges::any_of(step.tables, is_it)) return &step;
  }
  return nullptr;
}

}  // namespace korvel
