// Numbers the findings and changes of a page and marks their lines. Renders nothing. Tested by tests/report/html_test.cpp.
#include "report/render/html_page.h"

#include <algorithm>
#include <tuple>

#include "report/result/words.h"

namespace korvel {

const StatusText& TextOf(StatusStyle style) {
  static constexpr StatusText kWords[] = {
      {"refused", "\u2717", "refused"}, {"warning", "!", "warning"},      {"note", "i", "note"},
      {"waived", "~", "waived"},        {"blocked", "\u2026", "blocked"}, {"not-checked", "?", "not checked"},
      {"allowed", "\u2713", "allowed"}};
  return kWords[static_cast<std::size_t>(style)];
}

StatusStyle StyleOf(EditStatus status) {
  constexpr StatusStyle kStyles[] = {StatusStyle::kAllowed, StatusStyle::kRefused, StatusStyle::kBlocked,
                                     StatusStyle::kNotChecked};
  return kStyles[static_cast<std::size_t>(status)];
}

StatusStyle StyleOf(const Finding& finding) {
  constexpr StatusStyle kStyles[] = {StatusStyle::kRefused, StatusStyle::kWarning, StatusStyle::kNote};
  return finding.waiver ? StatusStyle::kWaived : kStyles[static_cast<std::size_t>(finding.level)];
}

std::string LabelOf(const std::string& id) {
  std::string label = id;
  label.front() = static_cast<char>(label.front() - 'a' + 'A');
  return label;
}

Page::Page(const Report& report, const HtmlLimits& limits)
    : report_(report), folded_(report), limits_(limits), ranges_(LocationsOf(folded_, FoldEdits(folded_))) {
  for (const TableResult& table : report.tables) {
    const auto [found, is_new] = pair_of_.try_emplace({table.first, table.second}, pairs_.size());
    if (is_new) pairs_.push_back({table.first, table.second, {}, {}, {}});
  }
  ListFindings();
  ListChanges();
  for (PagePair& pair : pairs_) {
    std::ranges::stable_sort(pair.old_marks, {}, &LineMark::line);
    std::ranges::stable_sort(pair.new_marks, {}, &LineMark::line);
  }
}

void Page::ListFindings() {
  for (const FoldedFinding& folded : folded_.findings()) {
    if (findings_.size() == limits_.findings) {
      ++findings_left_out_;
      continue;
    }
    findings_.push_back({folded, "f" + std::to_string(findings_.size() + 1)});
    const PageFinding& listed = findings_.back();
    const TableResult& table = *listed.folded.table;
    const Finding& finding = *listed.folded.finding;
    for (std::size_t i = 0; i < finding.edits.size(); ++i) AddMarks(table, listed.EditAt(i), listed.Style(), listed.id);
    if (!finding.edits.empty()) continue;
    PagePair& pair = pairs_[PairOf(table)];
    if (!pair.IsOne()) AddMark(pair.old_marks, finding.old_location, listed.Style(), listed.id);
    if (!table.removed) AddMark(pair.new_marks, finding.new_location, listed.Style(), listed.id);
  }
}

std::span<const PageFinding> Page::FindingsOf(const FoldedTable& table) const {
  if (table.findings.empty()) return {};
  const auto first = static_cast<std::size_t>(table.findings.data() - folded_.findings().data());
  const std::size_t begin = std::min(first, findings_.size());
  return std::span(findings_).subspan(begin, std::min(table.findings.size(), findings_.size() - begin));
}

void Page::ListChanges() {
  using Key = std::tuple<std::size_t, EditKind, std::string, std::string, EditStatus>;
  std::map<Key, std::size_t> known;  // tables of a pair share changes of the library and of shared structures
  for (const TableResult& table : report_.tables) {
    if (!table.changes) continue;
    for (std::size_t i = 0; i < table.changes->edits.size(); ++i) {
      const Edit& edit = table.changes->edits[i];
      const EditStatus status = table.changes->status[i];
      if (status == EditStatus::kRefused) continue;
      const auto [found, is_new] = known.try_emplace({PairOf(table), edit.kind, edit.meta, edit.item, status}, changes_.size());
      if (!is_new) {
        if (found->second < changes_.size()) ++changes_[found->second].also;
        continue;
      }
      if (changes_.size() == limits_.changes) {
        ++changes_left_out_;
        continue;
      }
      const StatusStyle style = StyleOf(status);
      changes_.push_back({&table, &edit, style, "c" + std::to_string(changes_.size() + 1)});
      if (!changes_.back().OfLibrary()) listing_.insert(&table);
      AddMarks(table, edit, style, changes_.back().id);
    }
  }
}

void Page::AddMarks(const TableResult& table, const Edit& edit, StatusStyle style, const std::string& id) {
  PagePair& pair = pairs_[PairOf(table)];
  AddMark(pair.old_marks, edit.old_location, style, id);
  if (!RemovesElement(edit)) AddMark(pair.new_marks, edit.new_location, style, id);
  const TextRange* const old_range = ranges_.Find(edit.old_location);
  const TextRange* const new_range = ranges_.Find(edit.new_location);
  const bool both = old_range != nullptr && new_range != nullptr && old_range->begin && new_range->begin;
  if (both && !RemovesElement(edit)) pair.known.push_back({old_range->begin->line, new_range->begin->line});
}

void Page::AddMark(std::vector<LineMark>& marks, const Location& location, StatusStyle style, const std::string& id) const {
  const TextRange* const range = ranges_.Find(location);
  if (range == nullptr || !range->begin) return;
  LineMark line{range->begin->line, {}, style, id};
  if (!location.attribute.empty()) {
    line.span.begin = range->span.begin - range->line_begin;
    line.span.end = std::min(range->span.end - range->line_begin, range->line.size());
  }
  marks.push_back(line);
}

}  // namespace korvel
