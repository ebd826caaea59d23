// Verdict and causes of a history. Tested by tests/tool/history_test.cpp.
#include "report/result/history.h"

#include <algorithm>

#include "base/text.h"

namespace korvel {
namespace {

bool IsRefused(const TableResult& result) { return result.status == Status::kRefused; }

}  // namespace

bool VersionStep::Refused() const { return std::ranges::any_of(tables, IsRefused); }

bool History::Refused() const {
  const auto refused = [](const VersionStep& step) { return step.Refused(); };
  return std::ranges::any_of(steps, refused) || std::ranges::any_of(against_newest, refused);
}

const VersionStep* FirstRefusedStep(const History& history, std::size_t from, const std::string& table) {
  for (std::size_t i = from; i < history.steps.size(); ++i) {
    const VersionStep& step = history.steps[i];
    const auto is_it = [&](const TableResult& result) { return IsRefused(result) && result.table == table; };
    if (std::ranges::any_of(step.tables, is_it)) return &step;
  }
  return nullptr;
}

std::string CauseOf(const TableResult& result) {
  if (result.removed) return "the table was removed";
  if (result.changes) {
    for (const Finding& finding : result.changes->findings) {
      if (!finding.edits.empty()) return OneLine(Describe(result.changes->edits[finding.edits.front()]));
    }
  }
  return result.verdict.text.empty() ? "(no text)" : OneLine(result.verdict.text);
}

}  // namespace korvel
