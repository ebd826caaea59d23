// Counts. Nothing is judged or printed here. Held by tests/tool/check_test.cpp.
#include "report/result/report.h"

#include <algorithm>

#include "report/result/fold.h"

namespace korvel {
namespace {

// Whether nothing but waived findings speaks against a refused table. Not where the search for them stopped: the next may be
// none.
bool IsWaived(const TableResult& result) {
  return result.changes && !result.changes->findings.empty() && !result.changes->stopped &&
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
    if (result.removed) ++summary.removed;
  }
  summary.compared = summary.allowed + summary.refused;
  for (const FoldedFinding& folded : Fold(report)) {
    ++summary.findings;
    if (folded.finding->waiver) ++summary.waived;
  }
  for (const FileNote& note : report.files) {
    if (note.kind == FileNote::Kind::kAdded) ++summary.files_added;
    if (note.kind == FileNote::Kind::kDeleted) ++summary.files_deleted;
    if (note.kind == FileNote::Kind::kMoved) ++summary.files_moved;
  }
  return summary;
}

}  // namespace korvel
