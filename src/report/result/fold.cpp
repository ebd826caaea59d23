// Merges findings with the same cause. Tested by tests/report/fold_test.cpp and shared_findings_test.cpp.
#include "report/result/fold.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <tuple>
#include <utility>

namespace korvel {

PathChange PathChangeOf(std::string_view path, std::string_view instead_of) {
  const auto rest = std::mismatch(path.rbegin(), path.rend(), instead_of.rbegin(), instead_of.rend());
  auto same = static_cast<std::size_t>(rest.first - path.rbegin());
  // Only whole names are the same: both rests begin with a dot, or are the whole path.
  if (same < path.size() || same < instead_of.size()) {
    const std::size_t dot = path.find('.', path.size() - same);
    same = dot == std::string_view::npos ? 0 : path.size() - dot;
  }
  return {std::string(path.substr(0, path.size() - same)), std::string(instead_of.substr(0, instead_of.size() - same))};
}

void AddShared(std::vector<SharedItems>& items, const TableResult& earlier, std::size_t position, PathChange change) {
  if (!items.empty()) {
    SharedItems& last = items.back();
    const bool is_next = last.table == &earlier && last.first + last.count == position && last.path == change.path &&
                         last.instead_of == change.instead_of;
    if (is_next) {
      ++last.count;
      return;
    }
  }
  items.push_back({&earlier, position, 1, std::move(change.path), std::move(change.instead_of)});
}

namespace {

using EditNames = std::vector<std::tuple<EditKind, std::string_view, std::string_view, std::string_view, std::string_view>>;
using WaiverText = std::optional<std::tuple<std::string_view, std::string_view, bool>>;

// Two findings are the same if all of this is: pair of sources, edits, path (only of a finding without edits, which belongs to
// its table alone), rule, code, waiver.
using MergeKey = std::tuple<const Source*, const Source*, EditNames, std::string_view, std::string_view, int, WaiverText>;

MergeKey MergeKeyOf(const TableResult& table, const Finding& finding) {
  EditNames edits;
  for (const std::size_t i : finding.edits) {
    const Edit& edit = table.EditsFor(finding)[i];
    edits.emplace_back(edit.kind, edit.meta, edit.item, edit.before, edit.after);
  }
  std::ranges::sort(edits);
  const std::string_view path = edits.empty() ? std::string_view(finding.path) : std::string_view();
  WaiverText waiver;
  if (finding.waiver) waiver.emplace(finding.waiver->reason, finding.waiver->until, finding.waiver->is_wide);
  return {table.first, table.second, std::move(edits), path, finding.verdict.rule, finding.verdict.code, waiver};
}

// The paths of a finding other than the one it is named by.
std::vector<std::string> OtherPaths(const TableResult& table, const Finding& finding) {
  if (finding.edits.empty()) return {};
  std::vector<std::string> paths = table.EditsFor(finding)[finding.edits.front()].paths;
  std::erase(paths, finding.path);
  return paths;
}

// The other tables and paths of all findings, in 8 bytes each: there may be many.
class Embeddings {
 public:
  explicit Embeddings(const Report& report) : report_(report) {}

  void Add(std::size_t finding, const TableResult& table, const PathChange& change) {
    const auto [known, is_new] = ids_.try_emplace({change.path, change.instead_of}, static_cast<std::uint32_t>(changes_.size()));
    if (is_new) changes_.push_back(&known->first);
    if (finding >= of_.size()) of_.resize(finding + 1);
    of_[finding].emplace_back(static_cast<std::uint32_t>(&table - report_.tables.data()), known->second);
  }

  void MoveTo(std::vector<FoldedFinding>& findings) {
    of_.resize(findings.size());
    std::map<std::pair<const TableResult*, std::vector<Embedding>>, std::size_t> leaders;
    for (std::size_t i = 0; i < findings.size(); ++i) {
      FoldedFinding& folded = findings[i];
      folded.also_count = of_[i].size();
      if (folded.also_count > kMaxAlso) {
        const auto [leader, leads] = leaders.try_emplace({folded.table, of_[i]}, i);
        if (!leads) folded.also_as = leader->second;
      }
      if (!folded.also_as) AddOthers(folded, of_[i]);
      of_[i] = {};
    }
  }

 private:
  using Change = std::pair<std::string, std::string>;         // the members of PathChange
  using Embedding = std::pair<std::uint32_t, std::uint32_t>;  // positions of the table and of the change

  void AddOthers(FoldedFinding& folded, const std::vector<Embedding>& others) const {
    for (const auto& [table, id] : others) {
      const auto& [path, instead_of] = *changes_[id];
      folded.also.push_back({&report_.tables[table], path + folded.finding->path.substr(instead_of.size())});
    }
  }

  const Report& report_;
  std::map<Change, std::uint32_t> ids_;
  std::vector<const Change*> changes_;
  std::vector<std::vector<Embedding>> of_;
};

constexpr std::size_t kLeftOut = std::numeric_limits<std::size_t>::max();

}  // namespace

// Lists the findings, one table after the other.
class FoldedReport::Folder {
 public:
  explicit Folder(FoldedReport& to) : to_(to), embeddings_(to.report_) {}

  void Add(const TableResult& table) {
    to_.tables_.push_back({.table = &table});
    begins_.push_back(to_.findings_.size());
    if (table.changes) {
      for (const Finding& finding : table.changes->findings) Add(table, finding);
    }
    for (const Finding& finding : table.advice.findings) {
      if (!table.IsHidden(finding)) Add(table, finding);
    }
  }

  void Finish() {
    embeddings_.MoveTo(to_.findings_);
    begins_.push_back(to_.findings_.size());
    const std::span<const FoldedFinding> all = to_.findings_;
    for (std::size_t i = 0; i < to_.tables_.size(); ++i) {
      to_.tables_[i].findings = all.subspan(begins_[i], begins_[i + 1] - begins_[i]);
    }
  }

 private:
  void Add(const TableResult& table, const Finding& finding) {
    std::size_t& listed = IsAdvice(finding) ? advice_ : refusals_;
    const std::size_t next = listed < to_.report_.max_findings ? to_.findings_.size() : kLeftOut;
    const auto [found, is_new] = known_.try_emplace(MergeKeyOf(table, finding), next);
    LevelCount& count = to_.counts_[static_cast<std::size_t>(finding.level)];
    if (is_new) ++count.all;
    if (is_new && finding.waiver) ++count.waived;
    if (is_new && next == kLeftOut) ++count.left_out;
    if (found->second == kLeftOut) {
      ++to_.tables_.back().left_out;
      return;
    }
    if (is_new) {
      to_.findings_.push_back({.table = &table, .finding = &finding});
      ++listed;
    } else {
      AddRepeated(table, finding, found->second);
    }
    for (const std::string& path : OtherPaths(table, finding)) AddEmbedding(table, path, found->second);
  }

  void AddRepeated(const TableResult& table, const Finding& finding, std::size_t listed) {
    const FoldedFinding& folded = to_.findings_[listed];
    AddEmbedding(table, finding.path, listed);
    // Refusals and advice are separate items, even if they follow each other.
    std::vector<SharedItems>& shared = to_.tables_.back().shared;
    const bool is_other = !shared.empty() && IsAdvice(*to_.findings_[shared.back().first].finding) != IsAdvice(finding);
    std::vector<SharedItems> own;
    AddShared(is_other ? own : shared, *folded.table, listed, PathChangeOf(finding.path, folded.finding->path));
    std::ranges::move(own, std::back_inserter(shared));
  }

  void AddEmbedding(const TableResult& table, const std::string& path, std::size_t listed) {
    embeddings_.Add(listed, table, PathChangeOf(path, to_.findings_[listed].finding->path));
  }

  FoldedReport& to_;
  std::size_t refusals_ = 0;               // that are listed
  std::size_t advice_ = 0;                 // likewise: warnings and notes
  std::map<MergeKey, std::size_t> known_;  // position of the finding, or kLeftOut
  Embeddings embeddings_;
  std::vector<std::size_t> begins_;  // of the findings of each table
};

FoldedReport::FoldedReport(const Report& report) : report_(report) {
  Folder folder(*this);
  for (const TableResult& table : report.tables) folder.Add(table);
  folder.Finish();
}

}  // namespace korvel
