// Merges edits that several tables share. Tested by tests/report/shared_findings_test.cpp.
#include "report/result/fold_edits.h"

#include <map>
#include <string_view>
#include <tuple>

namespace korvel {
namespace {

using EditKey = std::tuple<const Source*, const Source*, EditKind, std::string_view, std::string_view, std::string_view,
                           std::string_view, EditStatus>;

EditKey KeyOf(const TableResult& table, std::size_t i) {
  const Edit& edit = table.changes->edits[i];
  return {table.first, table.second, edit.kind, edit.meta, edit.item, edit.before, edit.after, table.changes->status[i]};
}

std::string_view PathOf(const Edit& edit) { return edit.paths.empty() ? std::string_view() : edit.paths.front(); }

struct ListedEdit {
  const TableResult* table;
  const Edit* edit;
  std::size_t position;  // in FoldedEdits::listed
};

// Whether each edit is part of a finding that is listed with the table.
std::vector<bool> InFindings(const FoldedTable& table) {
  std::vector<bool> in(table.table->changes->edits.size());
  for (const FoldedFinding& folded : table.findings) {
    if (IsAdvice(*folded.finding)) continue;
    for (const std::size_t edit : folded.finding->edits) in[edit] = true;
  }
  return in;
}

FoldedEdits FoldTable(const FoldedTable& folded, std::map<EditKey, ListedEdit>& known) {
  FoldedEdits edits;
  const TableResult& table = *folded.table;
  if (!table.changes) return edits;
  const std::vector<bool> in_findings = InFindings(folded);
  for (std::size_t i = 0; i < table.changes->edits.size(); ++i) {
    const Edit& edit = table.changes->edits[i];
    const auto [found, is_new] = known.try_emplace(KeyOf(table, i), ListedEdit{&table, &edit, edits.listed.size()});
    if (is_new || in_findings[i] || edit.meta.empty()) {
      edits.listed.push_back(i);
    } else {
      const ListedEdit& earlier = found->second;
      AddShared(edits.shared, *earlier.table, earlier.position, PathChangeOf(PathOf(edit), PathOf(*earlier.edit)));
    }
  }
  return edits;
}

}  // namespace

std::vector<FoldedEdits> FoldEdits(const FoldedReport& folded) {
  std::map<EditKey, ListedEdit> known;
  std::vector<FoldedEdits> edits;
  edits.reserve(folded.tables().size());
  for (const FoldedTable& table : folded.tables()) edits.push_back(FoldTable(table, known));
  return edits;
}

}  // namespace korvel
