// Counts tables and findings, and merges findings with the same cause. Tested by tests/report/fold_test.cpp and
// tests/tool/check_test.cpp.
#include "report/result/report.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace korvel {
namespace {

using EditNames = std::vector<std::tuple<EditKind, std::string, std::string>>;

// Two findings are the same if all of this is: pair of sources, edits, path (only of a finding without edits, which belongs to
// its table alone), rule, code.
using MergeKey = std::tuple<const Source*, const Source*, EditNames, std::string, std::string, int>;

MergeKey MergeKeyOf(const TableResult& table, const Finding& finding) {
  EditNames edits;
  for (const std::size_t i : finding.edits) {
    const Edit& edit = table.changes->edits[i];
    edits.emplace_back(edit.kind, edit.meta, edit.item);
  }
  std::ranges::sort(edits);
  const std::string path = edits.empty() ? finding.path : "";
  return {table.first, table.second, std::move(edits), path, finding.verdict.rule, finding.verdict.code};
}

// The paths of a finding other than the one it is named by.
std::vector<std::string> OtherPaths(const TableResult& table, const Finding& finding) {
  if (finding.edits.empty()) return {};
  std::vector<std::string> paths = table.changes->edits[finding.edits.front()].paths;
  std::erase(paths, finding.path);
  return paths;
}

// Whether every finding of a refused table is waived. Not if the search stopped: the next finding may not be waived.
bool IsWaived(const TableResult& result) {
  return result.changes && !result.changes->findings.empty() && !result.changes->stopped &&
         std::ranges::all_of(result.changes->findings, [](const Finding& one) { return one.waiver.has_value(); });
}

}  // namespace

std::vector<FoldedFinding> Fold(const Report& report) {
  std::vector<FoldedFinding> folded;
  std::map<MergeKey, std::size_t> known;  // position in `folded`
  for (const TableResult& table : report.tables) {
    if (!table.changes) continue;
    for (const Finding& finding : table.changes->findings) {
      const auto [found, is_new] = known.try_emplace(MergeKeyOf(table, finding), folded.size());
      if (is_new) folded.push_back({&table, &finding, {}});
      std::vector<FoldedFinding::Embedding>& also = folded[found->second].also;
      if (!is_new) also.push_back({&table, finding.path});
      for (std::string& path : OtherPaths(table, finding)) also.push_back({&table, std::move(path)});
    }
  }
  return folded;
}

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
