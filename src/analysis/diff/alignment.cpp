// Finds the fewest items to move. Tested by tests/report/alignment_test.cpp.
#include "analysis/diff/alignment.h"

#include <algorithm>
#include <functional>
#include <utility>

#include "base/alignment.h"

namespace korvel {
namespace {

// The position of a value in an ascending list; kNoSlot if the list does not contain it.
Slot PositionIn(const std::vector<Slot>& list, Slot value) {
  const auto found = std::ranges::lower_bound(list, value);
  return found == list.end() || *found != value ? kNoSlot : static_cast<Slot>(found - list.begin());
}

}  // namespace

Alignment::Alignment(std::size_t old_count, std::vector<Slot> partners)
    : slots_(std::move(partners)), new_position_(old_count, kNoSlot), is_still_(old_count, false) {
  std::vector<Slot> kept;  // in the new order
  for (std::size_t j = 0; j < slots_.size(); ++j) {
    if (slots_[j] == kNoSlot) {
      slots_[j] = static_cast<Slot>(old_count + j);
    } else {
      new_position_[slots_[j]] = static_cast<Slot>(j);
      kept.push_back(slots_[j]);
    }
  }
  for (const std::size_t i : LongestIncreasing(kept, std::identity())) is_still_[kept[i]] = true;
}

Alignment Alignment::Part(const std::vector<Slot>& old_slots, const std::vector<Slot>& new_positions) const {
  Alignment part;
  part.new_position_.assign(old_slots.size(), kNoSlot);
  for (const Slot slot : old_slots) part.is_still_.push_back(is_still_[slot]);
  for (const Slot position : new_positions) {
    const Slot slot = SlotInPart(old_slots, new_positions, slots_[position]);
    if (slot < old_slots.size()) part.new_position_[slot] = static_cast<Slot>(part.slots_.size());
    part.slots_.push_back(slot);
  }
  return part;
}

Slot Alignment::SlotInPart(const std::vector<Slot>& old_slots, const std::vector<Slot>& new_positions, Slot slot) const {
  if (slot == kNoSlot || !IsAdded(slot)) return PositionIn(old_slots, slot);
  const Slot position = PositionIn(new_positions, static_cast<Slot>(NewPosition(slot)));
  return position == kNoSlot ? kNoSlot : static_cast<Slot>(old_slots.size()) + position;
}

std::vector<Slot> Alignment::Anchors() const {
  std::vector<Slot> anchors(new_count(), kNoSlot);
  Slot anchor = kNoSlot;
  for (std::size_t j = new_count(); j-- > 0;) {
    if (IsStill(slots_[j])) anchor = slots_[j];
    anchors[j] = anchor;
  }
  return anchors;
}

}  // namespace korvel
