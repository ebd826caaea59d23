// Aligns two lists of items, such as the entries of a meta: which are added, removed, moved or in place. Knows nothing about what
// the items are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace korvel {

// An item of either side: an old item by its position, an added one by the number of old items plus its new position.
using Slot = std::uint32_t;
inline constexpr Slot kNoSlot = std::numeric_limits<Slot>::max();

// A value; reading it from several threads is safe.
class Alignment {
 public:
  // `partners[j]` is the old position of the new item at `j`; kNoSlot if the item is added. n log n.
  // REQUIRES: no two new items have the same partner.
  Alignment(std::size_t old_count, std::vector<Slot> partners);
  Alignment() = default;

  // Only some of the items: old ones, and positions on the new side, both ascending. What is still remains so. REQUIRES: of an
  // item that both sides have, both sides are kept, or neither.
  Alignment Part(const std::vector<Slot>& old_slots, const std::vector<Slot>& new_positions) const;

  std::size_t old_count() const { return new_position_.size(); }
  std::size_t new_count() const { return slots_.size(); }
  std::size_t slot_count() const { return old_count() + new_count(); }

  Slot OfNew(std::size_t position) const { return slots_[position]; }
  bool IsAdded(Slot slot) const { return slot >= old_count(); }
  bool IsRemoved(Slot slot) const { return !IsAdded(slot) && new_position_[slot] == kNoSlot; }
  // Whether an item that both sides have is moved. As few as possible are; the others are still.
  bool IsMoved(Slot slot) const { return !IsAdded(slot) && !IsRemoved(slot) && !is_still_[slot]; }
  bool IsStill(Slot slot) const { return !IsAdded(slot) && is_still_[slot]; }
  // REQUIRES: the slot is on that side.
  std::size_t NewPosition(Slot slot) const { return IsAdded(slot) ? slot - old_count() : new_position_[slot]; }

  // The slot of each kept item (see Part) among the kept ones; kNoSlot if the item is not kept.
  Slot SlotInPart(const std::vector<Slot>& old_slots, const std::vector<Slot>& new_positions, Slot slot) const;

  // For each new position, the slot in front of which an added or moved item is put: the next still item in the new order,
  // kNoSlot for the end. A still item is its own anchor. Linear, for all positions together.
  std::vector<Slot> Anchors() const;

  // The old order after the chosen additions, removals and moves; `is_chosen(slot)` is called for added, removed and moved slots.
  // With all chosen, the new order; with none, the old one. Added and moved items come directly before their anchor. Linear.
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
