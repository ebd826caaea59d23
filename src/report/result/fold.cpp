// Finds the findings of several tables that have one cause. Held by tests/report/fold_test.cpp.
#include "report/result/fold.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace korvel {
namespace {

using EditNames = std::vector<std::tuple<EditKind, std::string, std::string>>;

// What makes two findings the same one: the pair of sources, the edits, the path of a finding without any (such a one is its
// table's own), the rule and the code.
using Cause = std::tuple<const Source*, const Source*, EditNames, std::string, std::string, int>;

Cause CauseOf(const TableResult& table, const Finding& finding) {
  EditNames edits;
  for (const std::size_t i : finding.edits) {
    const Edit& edit = table.changes->edits[i];
    edits.emplace_back(edit.kind, edit.meta, edit.item);
  }
  std::ranges::sort(edits);
  const std::string path = edits.empty() ? finding.path : "";
  return {table.first, table.second, std::move(edits), path, finding.verdict.rule, finding.verdict.code};
}

// The ways to a finding but the one that it is named by.
std::vector<std::string> OtherPaths(const TableResult& table, const Finding& finding) {
  if (finding.edits.empty()) return {};
  std::vector<std::string> paths = table.changes->edits[finding.edits.front()].paths;
  std::erase(paths, finding.path);
  return paths;
}

}  // namespace

std::vector<FoldedFinding> Fold(const Report& report) {
  std::vector<FoldedFinding> folded;
  std::map<Cause, std::size_t> known;  // position in `folded`
  for (const TableResult& table : report.tables) {
    if (!table.changes) continue;
    for (const Finding& finding : table.changes->findings) {
      const auto [found, is_new] = known.try_emplace(CauseOf(table, finding), folded.size());
      if (is_new) folded.push_back({&table, &finding, {}});
      std::vector<FoldedFinding::Embedding>& also = folded[found->second].also;
      if (!is_new) also.push_back({&table, finding.path});
      for (std::string& path : OtherPaths(table, finding)) also.push_back({&table, std::move(path)});
    }
  }
  return folded;
}

}  // namespace korvel
