// Combines the excerpts of metas. Tested by tests/report/excerpts_test.cpp, which compares the answers of the checker with those
// about whole tables.
#include "analysis/diff/excerpts.h"

#include <algorithm>
#include <memory>
#include <span>
#include <tuple>
#include <unordered_set>
#include <utility>

#include "common/entry_match.h"
#include "common/meta_view.h"
#include "qmx/qmx_limits.h"

namespace korvel {
namespace {

bool NeedsWholeTable(EditKind kind) {
  return kind == EditKind::kMetaRenamed || kind == EditKind::kMetaKind || kind == EditKind::kEntryMoved ||
         kind == EditKind::kEntryMeta;
}

// Whether a meta of two libraries is the same for the checker.
bool IsSame(LPQMXMETALIB library, LPQMXMETALIB other, const char* name) {
  const LPQMXMETA meta = qmx_get_meta_by_name(library, name);
  const LPQMXMETA other_meta = qmx_get_meta_by_name(other, name);
  if (MetaOf(library, meta) != MetaOf(other, other_meta)) return false;
  for (const auto [index, entry] : Entries(meta)) {
    const LPQMXMETAENTRY other_entry = qmx_get_entry_by_index(other_meta, index);
    if (MatchEntries(library, entry, other, other_entry) == EntryMatch::kDifferent) return false;
    // Of several metas with one name the first counts.
    const LPQMXMETA type = qmx_get_entry_type_meta(library, entry);
    if (type != nullptr && type != qmx_get_meta_by_name(library, qmx_get_meta_name(type))) return false;
  }
  return true;
}

// Whether the models contain all that the checker reads. Images may contain more than schema files can express.
bool IsComplete(const Model& model, LPQMXMETALIB library) {
  const std::optional<qmx::Metalib> built = Build(model);
  return built && std::ranges::all_of(model.metas,
                                      [&](const MetaModel& meta) { return IsSame(library, built->get(), meta.name.c_str()); });
}

}  // namespace

std::optional<Excerpts> Excerpts::Of(const Difference& difference, LPQMXMETALIB old_library) {
  if (difference.parts().nodes.size() > qmx::kMaxNesting || !IsComplete(difference.old_model(), old_library)) return std::nullopt;
  Excerpts excerpts(difference, old_library);
  const auto is_ambiguous = [](const auto& outline) { return outline && outline->has_ambiguous_structure(); };
  if (std::ranges::any_of(excerpts.outlines_, is_ambiguous)) return std::nullopt;
  return excerpts;
}

Excerpts::Excerpts(const Difference& difference, LPQMXMETALIB old_library)
    : difference_(difference), embeddings_(difference.parts().nodes.size()) {
  const std::vector<MetaNode>& nodes = difference_.parts().nodes;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    nodes_.emplace(nodes[i].name, i);
    std::unique_ptr<MetaOutline>& outline = outlines_.emplace_back();
    if (nodes[i].old_meta == nullptr) continue;
    outline = std::make_unique<MetaOutline>(nodes[i], qmx_get_meta_by_name(old_library, nodes[i].old_meta->name.c_str()));
  }
  ListEmbeddings();
  const std::vector<Edit>& edits = difference_.edits();
  for (std::size_t i = 0; i < edits.size(); ++i) {
    if (NeedsWholeTable(edits[i].kind)) without_excerpt_.push_back(i);
  }
}

void Excerpts::ListEmbeddings() {
  const std::vector<MetaNode>& nodes = difference_.parts().nodes;
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    if (nodes[i].old_meta == nullptr) continue;
    const std::vector<EntryModel>& entries = nodes[i].old_meta->entries;
    for (Slot slot = 0; slot < entries.size(); ++slot) {
      if (const auto inner = nodes_.find(entries[slot].type); inner != nodes_.end() && IsCompositeType(entries[slot].type)) {
        embeddings_[inner->second].push_back({i, slot});
      }
    }
  }
}

bool Excerpts::Has(const std::vector<bool>& chosen) const {
  return std::ranges::none_of(without_excerpt_, [&](std::size_t edit) { return chosen[edit]; });
}

// Makes one excerpt: a difference that contains nothing but the chosen edits.
class Excerpts::Builder {
 public:
  Builder(const Excerpts& excerpts, const std::vector<bool>& chosen)
      : excerpts_(excerpts), whole_(excerpts.difference_.parts()), embedding_(whole_.nodes.size()) {
    for (std::size_t i = 0; i < chosen.size(); ++i) {
      if (chosen[i]) chosen_.push_back(i);
    }
    FindEmbedding();
  }

  std::optional<LibraryPair> Build() {
    AddHeads();
    Reach(0);
    while (!waiting_.empty()) {
      const std::size_t node = waiting_.back();
      waiting_.pop_back();
      AddNode(node);
    }
    std::optional<qmx::Metalib> new_library = BuildLibrary(parts_, std::vector<bool>(parts_.edits.size(), true));
    std::optional<qmx::Metalib> old_library = BuildLibrary(parts_, std::vector<bool>(parts_.edits.size(), false));
    if (!old_library || !new_library) return std::nullopt;
    return LibraryPair{*std::move(old_library), *std::move(new_library)};
  }

 private:
  std::span<const std::size_t> ChosenIn(std::size_t first, std::size_t end) const {
    const auto begin = std::ranges::lower_bound(chosen_, first);
    return {begin, std::ranges::lower_bound(begin, chosen_.end(), end)};
  }
  std::span<const std::size_t> ChosenOf(const MetaNode& node) const { return ChosenIn(node.first_edit, node.end_edit); }

  // Finds the entries whose structures change, directly or inside.
  void FindEmbedding() {
    std::vector<bool> changes(whole_.nodes.size());
    std::vector<std::size_t> waiting;
    for (std::size_t i = 0; i < whole_.nodes.size(); ++i) {
      changes[i] = !ChosenOf(whole_.nodes[i]).empty();
      if (changes[i]) waiting.push_back(i);
    }
    while (!waiting.empty()) {
      const std::size_t inner = waiting.back();
      waiting.pop_back();
      for (const auto& [node, slot] : excerpts_.embeddings_[inner]) {
        embedding_[node].push_back(slot);
        if (!changes[node]) waiting.push_back(node);
        changes[node] = true;
      }
    }
  }

  void AddHeads() {
    const auto copy = [](const Model& from, Model& to) {
      std::tie(to.name, to.version, to.protocol) = std::tie(from.name, from.version, from.protocol);
    };
    copy(whole_.old_model, parts_.old_model);
    copy(whole_.new_model, parts_.new_model);
    for (const std::size_t edit : ChosenIn(0, whole_.nodes.front().first_edit)) AddEdit(edit, 0);
  }

  void AddEdit(std::size_t edit, Slot slot) {
    Edit& added = parts_.edits.emplace_back();
    added.kind = whole_.edits[edit].kind;
    added.item = whole_.edits[edit].item;
    parts_.slots.push_back(slot);
  }

  void Reach(std::size_t node) {
    if (reached_.insert(node).second) waiting_.push_back(node);
  }

  void ReachTypes(const MetaModel& meta) {
    for (const EntryModel& entry : meta.entries) {
      if (!IsCompositeType(entry.type)) continue;
      if (const auto inner = excerpts_.nodes_.find(entry.type); inner != excerpts_.nodes_.end()) Reach(inner->second);
    }
  }

  // A meta that only the new side has is embedded by a chosen edit, and compared with nothing.
  void AddNode(std::size_t position) {
    const MetaNode& node = whole_.nodes[position];
    const MetaOutline* const outline = excerpts_.outlines_[position].get();
    MetaNode added{.name = node.name, .new_meta = node.new_meta};
    if (outline == nullptr) {
      ReachTypes(*node.new_meta);
    } else {
      added = Cut(node, *outline, embedding_[position]);
    }
    parts_.nodes.push_back(std::move(added));
  }

  MetaNode Cut(const MetaNode& node, const MetaOutline& outline, const std::vector<Slot>& embedding) {
    std::vector<Slot> changed;
    for (const std::size_t edit : ChosenOf(node)) {
      if (IsOfEntry(whole_.edits[edit].kind)) changed.push_back(whole_.slots[edit]);
    }
    const EntryPart part = outline.PartWith(changed, embedding);
    MetaExcerpt& excerpt = *metas_.emplace_back(outline.Cut(part));
    ReachTypes(excerpt.old_meta);
    ReachTypes(excerpt.new_meta);
    MetaNode cut{
        .name = node.name, .old_meta = &excerpt.old_meta, .new_meta = &excerpt.new_meta, .pair = std::move(excerpt.pair)};
    cut.first_edit = parts_.edits.size();
    for (const std::size_t edit : ChosenOf(node)) {
      const Slot slot = whole_.slots[edit];
      const bool is_entry = IsOfEntry(whole_.edits[edit].kind);
      AddEdit(edit, is_entry ? node.pair->entries().SlotInPart(part.old_slots, part.new_positions, slot) : slot);
    }
    cut.end_edit = parts_.edits.size();
    return cut;
  }

  const Excerpts& excerpts_;
  const DifferenceParts& whole_;
  std::vector<std::size_t> chosen_;           // edits, ascending
  std::vector<std::vector<Slot>> embedding_;  // of each node: old entries whose structures change
  std::unordered_set<std::size_t> reached_;
  std::vector<std::size_t> waiting_;
  std::vector<std::unique_ptr<MetaExcerpt>> metas_;
  DifferenceParts parts_;
};

std::optional<LibraryPair> Excerpts::Build(const std::vector<bool>& chosen) const { return Builder(*this, chosen).Build(); }

}  // namespace korvel
