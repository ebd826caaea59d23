// Cuts a meta down to the entries around some edits, and applies the others. Tested by tests/report/fixes_test.cpp, which
// compares fixes with those of whole models.
#include "analysis/diff/meta_surroundings.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

namespace korvel {
namespace {

// The ids of entries with their positions, ascending.
std::vector<std::pair<std::int32_t, Slot>> IdsOf(const std::vector<EntryModel>& entries) {
  std::vector<std::pair<std::int32_t, Slot>> ids;
  for (Slot position = 0; position < entries.size(); ++position) {
    if (entries[position].id >= 0) ids.emplace_back(entries[position].id, position);
  }
  std::ranges::sort(ids);
  return ids;
}

}  // namespace

MetaSurroundings::MetaSurroundings(const DifferenceParts& parts, const MetaNode& node)
    : parts_(parts),
      node_(node),
      pair_(*node.pair),
      old_head_(HeadOf(pair_.old_meta())),
      new_head_(HeadOf(pair_.new_meta())),
      anchors_(pair_.entries().Anchors()),
      still_before_(pair_.entries().old_count(), kNoSlot),
      names_(pair_.new_meta().entries),
      ids_(IdsOf(pair_.new_meta().entries)) {
  all_.entries.resize(pair_.entries().slot_count());
  all_.indexes.resize(pair_.indexes().slot_count());
  for (std::size_t edit = node.first_edit; edit < node.end_edit; ++edit) {
    const EditKinds kind = Bit(parts.edits[edit].kind);
    if (parts.edits[edit].kind != EditKind::kTableAttribute) *KindsOf(all_, edit) |= kind;
  }
  ListReferrers(pair_.old_references(), false);
  ListReferrers(pair_.new_references(), true);
  ListStill();
  ListFixed();
}

Slot MetaSurroundings::FindName(const std::string& name) {
  const std::size_t position = names_.Find(name);
  return position == kNowhere ? kNoSlot : static_cast<Slot>(position);
}

Slot MetaSurroundings::FindId(std::int32_t id) const {
  const auto found = std::ranges::lower_bound(ids_, std::pair(id, Slot{0}));
  return found == ids_.end() || found->first != id ? kNoSlot : found->second;
}

AppliedPart MetaSurroundings::Apply(const std::vector<std::size_t>& left_out, const std::vector<std::size_t>& touched) {
  const EntryPart part = PartAround(SlotsOf(left_out, touched));
  MetaModel old_meta = old_head_;
  AppliedPart applied{new_head_, part.new_positions, {}, {}};
  for (const Slot slot : part.old_slots) old_meta.entries.push_back(pair_.OldEntry(slot));
  for (const Slot position : part.new_positions) applied.present.entries.push_back(pair_.new_meta().entries[position]);
  const MatchedMetas cut(pair_, part, old_meta, applied.present);
  applied.made = ModelOf(cut.Make(ChosenIn(part, left_out)));
  return applied;
}

// Where the kind of an edit is noted. REQUIRES: the edit is not of an attribute.
EditKinds* MetaSurroundings::KindsOf(ChosenEdits& chosen, std::size_t edit) const {
  const EditKind kind = parts_.edits[edit].kind;
  if (IsOfEntry(kind)) return &chosen.entries[parts_.slots[edit]];
  return (Bit(kind) & kIndexKinds) != 0 ? &chosen.indexes[parts_.slots[edit]] : &chosen.meta;
}

void MetaSurroundings::ListReferrers(const References& references, bool is_new) {
  for (Slot position = 0; position < references.refers.size(); ++position) {
    const Slot counter = references.refers[position];
    if (counter == kNoSlot) continue;
    const Slot slot = is_new ? pair_.entries().OfNew(position) : position;
    counters_[slot].push_back(counter);
    referrers_[counter].push_back(slot);
  }
}

void MetaSurroundings::ListStill() {
  Slot still = kNoSlot;
  for (Slot slot = 0; slot < still_before_.size(); ++slot) {
    still_before_[slot] = still;
    if (pair_.entries().IsStill(slot)) still = slot;
  }
}

// Members of keys and indexes, and both ends of the new meta.
void MetaSurroundings::ListFixed() {
  fixed_ = SlotsInKeys(pair_);
  const std::size_t count = pair_.entries().new_count();
  if (count > 0) fixed_.insert(fixed_.end(), {pair_.entries().OfNew(0), pair_.entries().OfNew(count - 1)});
  std::ranges::sort(fixed_);
  fixed_.erase(std::unique(fixed_.begin(), fixed_.end()), fixed_.end());
}

// The entries of the edits, and those that an alternative finds by the names of these entries.
std::vector<Slot> MetaSurroundings::SlotsOf(const std::vector<std::size_t>& left_out, const std::vector<std::size_t>& touched) {
  std::vector<Slot> slots;
  for (const std::vector<std::size_t>* edits : {&left_out, &touched}) {
    for (const std::size_t edit : *edits) {
      if (!IsOfEntry(parts_.edits[edit].kind)) continue;
      slots.push_back(parts_.slots[edit]);
      const Slot position = FindName(parts_.edits[edit].item);
      if (position != kNoSlot) slots.push_back(pair_.entries().OfNew(position));
    }
  }
  return slots;
}

EntryPart MetaSurroundings::PartAround(const std::vector<Slot>& changed) const {
  std::vector<Slot> kept;
  std::unordered_set<Slot> visited;
  const auto add = [&](Slot slot) {
    if (slot != kNoSlot && visited.insert(slot).second) kept.push_back(slot);
  };
  for (const Slot slot : fixed_) add(slot);
  for (const Slot slot : changed) {
    add(slot);
    for (const Slot neighbour : NeighboursOf(slot)) add(neighbour);
    if (const auto found = referrers_.find(slot); found != referrers_.end()) std::ranges::for_each(found->second, add);
  }
  for (std::size_t next = 0; next < kept.size();) {  // `add` makes the list longer
    const Slot slot = kept[next++];
    if (const auto found = counters_.find(slot); found != counters_.end()) std::ranges::for_each(found->second, add);
    if (!pair_.entries().IsStill(slot) && IsNew(slot)) add(anchors_[pair_.entries().NewPosition(slot)]);
  }
  return PartOf(std::move(kept));
}

bool MetaSurroundings::IsNew(Slot slot) const { return !pair_.entries().IsRemoved(slot); }

// The entries next to one on the new side; for one that may come back, those between which it does.
std::vector<Slot> MetaSurroundings::NeighboursOf(Slot slot) const {
  std::vector<Slot> neighbours;
  const Alignment& entries = pair_.entries();
  const auto add_next = [&](std::size_t position) {
    if (position + 1 < entries.new_count()) neighbours.push_back(entries.OfNew(position + 1));
  };
  if (IsNew(slot)) {
    const std::size_t position = entries.NewPosition(slot);
    if (position > 0) neighbours.push_back(entries.OfNew(position - 1));
    add_next(position);
  }
  if (entries.IsAdded(slot) || still_before_[slot] == kNoSlot) return neighbours;
  neighbours.push_back(still_before_[slot]);
  add_next(entries.NewPosition(still_before_[slot]));
  return neighbours;
}

EntryPart MetaSurroundings::PartOf(std::vector<Slot> slots) const {
  std::ranges::sort(slots);
  EntryPart part;
  for (const Slot slot : slots) {
    if (!pair_.entries().IsAdded(slot)) part.old_slots.push_back(slot);
    if (IsNew(slot)) part.new_positions.push_back(static_cast<Slot>(pair_.entries().NewPosition(slot)));
  }
  std::ranges::sort(part.new_positions);
  return part;
}

// All edits of the entries of the part, keys and indexes, but those left out.
ChosenEdits MetaSurroundings::ChosenIn(const EntryPart& part, const std::vector<std::size_t>& left_out) const {
  ChosenEdits chosen;
  chosen.meta = all_.meta;
  chosen.indexes = all_.indexes;
  chosen.entries.resize(part.old_slots.size() + part.new_positions.size());
  const auto slot_in_part = [&](Slot slot) { return pair_.entries().SlotInPart(part.old_slots, part.new_positions, slot); };
  for (const Slot slot : part.old_slots) chosen.entries[slot_in_part(slot)] = all_.entries[slot];
  for (const Slot position : part.new_positions) {
    const Slot slot = pair_.entries().OfNew(position);
    chosen.entries[slot_in_part(slot)] = all_.entries[slot];
  }
  for (const std::size_t edit : left_out) {
    const EditKind kind = parts_.edits[edit].kind;
    if (kind == EditKind::kTableAttribute) continue;
    EditKinds& kinds = IsOfEntry(kind) ? chosen.entries[slot_in_part(parts_.slots[edit])] : *KindsOf(chosen, edit);
    kinds &= ~Bit(kind);
  }
  // Attributes are edits of the meta, and come first.
  for (std::size_t edit = node_.first_edit; edit < node_.end_edit; ++edit) {
    const EditKind kind = parts_.edits[edit].kind;
    if (kind != EditKind::kTableAttribute && kind != EditKind::kMetaKind) break;
    const bool is_left_out = std::ranges::find(left_out, edit) != left_out.end();
    if (kind == EditKind::kTableAttribute && !is_left_out) chosen.attributes.push_back(parts_.edits[edit].item);
  }
  return chosen;
}

}  // namespace korvel
