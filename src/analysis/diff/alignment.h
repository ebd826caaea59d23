// Two orders of the same kind of things side by side: entries of a meta, or its indexes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace korvel {

// A thing that one side or both have: the position of an old one, or the number of the old ones and the position of a new one
// that is no old one.
using Slot = std::uint32_t;
inline constexpr Slot kNoSlot = std::numeric_limits<Slot>::max();

class Alignment {
 public:
  // `partners[j]` is the position of the old thing that the new one at `j` is, kNoSlot if it is none. No two have the same
  // partner. n log n.
  Alignment(std::size_t old_count, std::vector<Slot> partners);
  Alignment() = default;

  std::size_t old_count() const { return new_position_.size(); }
  std::size_t new_count() const { return slots_.size(); }
  std::size_t slot_count() const { return old_count() + new_count(); }

  Slot OfNew(std::size_t position) const { return slots_[position]; }
  bool IsAdded(Slot slot) const { return slot >= old_count(); }
  bool IsRemoved(Slot slot) const { return !IsAdded(slot) && new_position_[slot] == kNoSlot; }
  // Whether a kept thing changes its place. As few of them do as possible.
  bool IsMoved(Slot slot) const { return !IsAdded(slot) && !IsRemoved(slot) && !is_still_[slot]; }
  bool IsStill(Slot slot) const { return !IsAdded(slot) && is_still_[slot]; }
  // REQUIRES: the slot is on that side.
  std::size_t NewPosition(Slot slot) const { return IsAdded(slot) ? slot - old_count() : new_position_[slot]; }

  // The slot in front of which an added or moved one is put: the next one in the new order that stands still; kNoSlot for the
  // end. Those that stand still count themselves. Linear, for all new positions at once.
  std::vector<Slot> Anchors() const;

  // The old order with the chosen additions, removals and moves made: `is_chosen(slot)` tells for each added, removed or moved
  // slot. All chosen, it is the new order; none, the old one. What is added or moved stands in front of its anchor.
  template <class IsChosen>
  std::vector<Slot> Order(IsChosen is_chosen) const {
    std::vector<Slot> order;
    order.reserve(slot_count());
    std::size_t next = 0;  // position in the new order
    const auto take_until = [&](std::size_t end) {
      for (; next < end; ++next) {
        if (!IsStill(slots_[next]) && is_chosen(slots_[next])) order.push_back(slots_[next]);
      }
    };
    for (Slot slot = 0; slot < old_count(); ++slot) {
      if (is_still_[slot]) {
        take_until(new_position_[slot]);
        ++next;
        order.push_back(slot);
      } else if (!is_chosen(slot)) {
        order.push_back(slot);
      }
    }
    take_until(new_count());
    return order;
  }

 private:
  std::vector<Slot> slots_;         // of the new side
  std::vector<Slot> new_position_;  // of the old side; kNoSlot = removed
  std::vector<bool> is_still_;      // of the old side
};

}  // namespace korvel
