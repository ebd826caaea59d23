// Tested by tests/tool/history_limit_test.cpp.
#include "project/history_limit.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "report/result/fold.h"

namespace korvel {
namespace {

// That are listed.
std::size_t CountRefusals(const FoldedReport& folded) {
  const auto is_refusal = [](const FoldedFinding& one) { return !IsAdvice(*one.finding); };
  return static_cast<std::size_t>(std::ranges::count_if(folded.findings(), is_refusal));
}

// Whether a table shows a refusal, its own or one of an earlier table.
bool ListsRefusal(const FoldedReport& folded, const FoldedTable& table) {
  return std::ranges::any_of(table.findings, [](const FoldedFinding& one) { return !IsAdvice(*one.finding); }) ||
         std::ranges::any_of(table.shared,
                             [&](const SharedItems& one) { return !IsAdvice(*folded.findings()[one.first].finding); });
}

bool HasWaiver(const Changes& changes) {
  return std::ranges::any_of(changes.findings, [](const Finding& one) { return one.waiver.has_value(); });
}

// Leaves what is true of the table as a whole, and of each finding what FoldedReport counts: findings of several tables with the
// same cause have the same fingerprint.
void Drop(Changes& changes) {
  Changes rest;
  rest.allowed_together = std::move(changes.allowed_together);
  rest.stopped = changes.stopped;
  for (Finding& finding : changes.findings) {
    Finding& kept = rest.findings.emplace_back();
    kept.verdict.rule = std::move(finding.verdict.rule);
    kept.verdict.code = finding.verdict.code;
    kept.path = std::move(finding.fingerprint);
  }
  rest.findings.shrink_to_fit();
  changes = std::move(rest);
}

}  // namespace

void HistoryLimit::Apply(Report& report) {
  report.max_findings = findings_;
  std::vector<Changes*> unlisted;
  {
    const FoldedReport folded(report);
    for (std::size_t i = 0; i < report.tables.size(); ++i) {
      std::optional<Changes>& changes = report.tables[i].changes;
      if (!changes || changes->findings.empty()) continue;  // of an allowed table, its number of changes is shown
      if (!ListsRefusal(folded, folded.tables()[i]) && !HasWaiver(*changes)) unlisted.push_back(&*changes);
    }
    findings_ -= CountRefusals(folded);
  }
  for (Changes* const changes : unlisted) Drop(*changes);
}

void HistoryLimit::Apply(const StepIndex& steps, NewestCheck& check) {
  std::vector<NewestRefusal> kept;
  for (NewestRefusal& refusal : check.refused) {
    if (newest_ == 0 && steps.Refuses(check.from, refusal.result.table, refusal.is_waived)) {
      ++check.left_out;
      check.left_out_fails = check.left_out_fails || !refusal.is_waived;
      continue;
    }
    if (newest_ > 0) --newest_;
    kept.push_back(std::move(refusal));
  }
  check.refused = std::move(kept);
}

}  // namespace korvel
