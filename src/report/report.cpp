// Counts. Nothing is judged or printed here. Held by tests/tool/check_test.cpp.
#include "report/report.h"

#include <algorithm>

namespace korvel::report {
namespace {

// Whether nothing but waived findings speaks against a refused table.
bool IsWaived(const TableResult& result) {
  return result.changes && !result.changes->stopped && !result.changes->findings.empty() &&
         std::ranges::all_of(result.changes->findings, [](const Finding& one) { return one.waiver.has_value(); });
}

}  // namespace

Summary Summarize(const Report& report) {
  Summary summary;
  summary.failing = report.project.size();
  for (const TableResult& result : report.tables) {
    if (result.status == Status::kNew) ++summary.added;
    if (result.status == Status::kAllowed) ++summary.allowed;
    if (result.status == Status::kRefused) ++summary.refused;
    if (result.status == Status::kRefused && !IsWaived(result)) ++summary.failing;
    if (result.gone) ++summary.gone;
  }
  summary.compared = summary.allowed + summary.refused;
  return summary;
}

}  // namespace korvel::report
