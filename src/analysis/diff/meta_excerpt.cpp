// Decides which entries of a meta an excerpt contains. excerpts.cpp combines metas to libraries. Tested by
// tests/report/excerpts_test.cpp.
#include "analysis/diff/meta_excerpt.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "analysis/diff/entry_attributes.h"
#include "base/name_index.h"
#include "common/meta_view.h"

namespace korvel {
namespace {

// Bytes of a filler, unless a single entry has more: less than any limit on the length of a field.
constexpr std::uint64_t kMaxFiller = std::uint64_t{64} << 10;

}  // namespace

MetaModel HeadOf(const MetaModel& meta) {
  return {.name = meta.name,
          .kind = meta.kind,
          .customattr = meta.customattr,
          .primary_key = meta.primary_key,
          .splittable_key = meta.splittable_key,
          .indexes = meta.indexes,
          .position = meta.position};
}

MetaOutline::MetaOutline(const MetaNode& node, LPQMXMETA meta)
    : old_meta_(*node.old_meta),
      own_pair_(node.pair ? std::nullopt : std::optional<MatchedMetas>(std::in_place, old_meta_, old_meta_, false)),
      pair_(node.pair ? *node.pair : *own_pair_),
      old_head_(HeadOf(pair_.old_meta())),
      new_head_(HeadOf(pair_.new_meta())) {
  std::uint64_t end = 0;
  for (const auto [index, entry] : Entries(meta)) {
    if (entry->iCount > 0) end += entry->iUnitSize * static_cast<std::uint64_t>(entry->iCount);
    ends_.push_back(end);
  }
  LinkEqualNames();
  LinkEqualIds();
  LinkCounters(pair_.old_references(), false);
  LinkCounters(pair_.new_references(), true);
  const std::vector<Slot> anchors = pair_.entries().Anchors();
  for (Slot j = 0; j < anchors.size(); ++j) {
    const Slot slot = pair_.entries().OfNew(j);
    if (pair_.entries().IsAdded(slot) && anchors[j] != kNoSlot) linked_[slot].push_back(anchors[j]);
  }
  ListFixed();
}

bool MetaOutline::HasStructure(Slot slot) const {
  const Alignment& entries = pair_.entries();
  return (!entries.IsAdded(slot) && IsCompositeType(pair_.OldEntry(slot).type)) ||
         (!entries.IsRemoved(slot) && IsCompositeType(pair_.NewEntry(slot).type));
}

// Calls `take` with the key and the slot of each entry of either side; once if both sides have the same key.
template <class Key, class Take>
void MetaOutline::ForEachKey(Key EntryModel::*key, Take take) const {
  for (Slot i = 0; i < pair_.old_meta().entries.size(); ++i) take(pair_.OldEntry(i).*key, i);
  for (Slot j = 0; j < pair_.new_meta().entries.size(); ++j) {
    const Slot slot = pair_.entries().OfNew(j);
    const bool is_same = !pair_.entries().IsAdded(slot) && pair_.OldEntry(slot).*key == pair_.NewEntry(slot).*key;
    if (!is_same) take(pair_.NewEntry(slot).*key, slot);
  }
}

void MetaOutline::LinkEqualNames() {
  struct Named {
    std::string_view name;
    Slot slot;
  };
  std::vector<Named> items;
  ForEachKey(&EntryModel::name, [&](const std::string& name, Slot slot) { items.push_back({name, slot}); });
  NameIndex index;
  for (std::uint32_t i = 0; i < items.size(); ++i) {
    if (index.Add(items[i].name, i, NamesOf(items))) continue;
    LinkEqual(items[*index.Find(items[i].name, NamesOf(items))].slot, items[i].slot);
  }
}

void MetaOutline::LinkEqualIds() {
  std::vector<std::pair<std::int32_t, Slot>> items;
  ForEachKey(&EntryModel::id, [&](std::int32_t id, Slot slot) {
    if (id >= 0) items.emplace_back(id, slot);
  });
  std::ranges::sort(items);
  for (std::size_t i = 1; i < items.size(); ++i) {
    if (items[i - 1].first == items[i].first) LinkEqual(items[i - 1].second, items[i].second);
  }
}

// Links entries that have the same name or id on any side, so that a search finds the same entry as in the whole meta.
void MetaOutline::LinkEqual(Slot a, Slot b) {
  linked_[a].push_back(b);
  linked_[b].push_back(a);
  has_ambiguous_structure_ = has_ambiguous_structure_ || HasStructure(a) || HasStructure(b);
}

void MetaOutline::LinkCounters(const References& references, bool is_new) {
  for (Slot position = 0; position < references.refers.size(); ++position) {
    const Slot counter = references.refers[position];
    if (counter == kNoSlot) continue;
    const Slot slot = is_new ? pair_.entries().OfNew(position) : position;
    linked_[slot].push_back(counter);
    referrers_[counter].push_back(slot);
  }
}

void MetaOutline::ListFixed() {
  const Alignment& entries = pair_.entries();
  fixed_ = SlotsInKeys(pair_);
  for (Slot slot = 0; slot < entries.old_count(); ++slot) {
    const bool is_marked = IsSortMark(pair_.OldEntry(slot)) || (!entries.IsRemoved(slot) && IsSortMark(pair_.NewEntry(slot)));
    if (is_marked) fixed_.push_back(slot);
  }
  AddLinked(fixed_);
}

// Adds all that the slots are linked to, directly or through others. Leaves the slots sorted.
void MetaOutline::AddLinked(std::vector<Slot>& slots) const {
  std::unordered_set<Slot> visited(slots.begin(), slots.end());
  for (std::size_t i = 0; i < slots.size(); ++i) {
    const auto found = linked_.find(slots[i]);
    if (found == linked_.end()) continue;
    for (const Slot other : found->second) {
      if (visited.insert(other).second) slots.push_back(other);
    }
  }
  std::ranges::sort(slots);
  slots.erase(std::unique(slots.begin(), slots.end()), slots.end());
}

EntryPart MetaOutline::PartWith(const std::vector<Slot>& changed, const std::vector<Slot>& with_changed_structure) const {
  std::vector<Slot> kept = changed;
  kept.insert(kept.end(), with_changed_structure.begin(), with_changed_structure.end());
  for (const Slot slot : changed) {
    if (const auto found = referrers_.find(slot); found != referrers_.end()) {
      kept.insert(kept.end(), found->second.begin(), found->second.end());
    }
  }
  AddLinked(kept);
  std::vector<Slot> slots;
  std::ranges::set_union(kept, fixed_, std::back_inserter(slots));

  EntryPart part;
  const auto old_count = static_cast<Slot>(pair_.entries().old_count());
  const auto first_added = std::ranges::lower_bound(slots, old_count);
  Slot next = 0;
  for (auto slot = slots.begin(); slot != first_added; ++slot) {
    AddRun(next, *slot, part.old_slots);
    part.old_slots.push_back(*slot);
    next = *slot + 1;
  }
  AddRun(next, old_count, part.old_slots);
  for (const Slot slot : part.old_slots) {
    if (!pair_.entries().IsRemoved(slot)) part.new_positions.push_back(static_cast<Slot>(pair_.entries().NewPosition(slot)));
  }
  for (auto slot = first_added; slot != slots.end(); ++slot) {
    part.new_positions.push_back(static_cast<Slot>(pair_.entries().NewPosition(*slot)));
  }
  std::ranges::sort(part.new_positions);
  return part;
}

// Adds what stands for the unchanged entries [begin, end): the first one, and the first of each filler. The members of a union
// all stay, because its size is that of the largest.
void MetaOutline::AddRun(Slot begin, Slot end, std::vector<Slot>& slots) const {
  for (Slot slot = begin; slot < end;) {
    slots.push_back(slot);
    const std::uint64_t start = slot == 0 ? 0 : ends_[slot - 1];
    const bool is_alone = slot == begin || old_meta_.kind == QMX_TYPE_UNION;
    const auto next = std::ranges::partition_point(ends_.begin() + slot + 1, ends_.begin() + end,
                                                   [&](std::uint64_t bytes) { return bytes - start <= kMaxFiller; });
    slot = is_alone ? slot + 1 : static_cast<Slot>(next - ends_.begin());
  }
}

// The entry at a slot, or the filler that stands for it and all entries before `next`.
EntryModel MetaOutline::EntryFor(const EntryModel& entry, Slot slot, Slot next) const {
  if (next == slot + 1) return entry;
  EntryModel filler{.name = entry.name, .type = "bytes", .size = ends_[next - 1] - (slot == 0 ? 0 : ends_[slot - 1])};
  filler.id = entry.id;
  filler.version = entry.version;
  return filler;
}

std::unique_ptr<MetaExcerpt> MetaOutline::Cut(const EntryPart& part) const {
  auto excerpt = std::make_unique<MetaExcerpt>();
  excerpt->old_meta = old_head_;
  excerpt->new_meta = new_head_;
  for (std::size_t i = 0; i < part.old_slots.size(); ++i) {
    const bool is_last = i + 1 == part.old_slots.size();
    const Slot next = is_last ? static_cast<Slot>(pair_.entries().old_count()) : part.old_slots[i + 1];
    excerpt->old_meta.entries.push_back(EntryFor(pair_.OldEntry(part.old_slots[i]), part.old_slots[i], next));
  }
  for (const Slot position : part.new_positions) excerpt->new_meta.entries.push_back(pair_.new_meta().entries[position]);
  excerpt->pair.emplace(pair_, part, excerpt->old_meta, excerpt->new_meta);
  return excerpt;
}

}  // namespace korvel
