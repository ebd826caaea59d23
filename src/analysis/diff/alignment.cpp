// Finds the fewest items to move. Tested by tests/report/alignment_test.cpp.
#include "analysis/diff/alignment.h"

#include <functional>
#include <utility>

#include "base/alignment.h"

namespace korvel {

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
