// Finds the fewest things to move. Held by tests/report/alignment_test.cpp.
#include "report/edit/alignment.h"

#include <algorithm>
#include <utility>

namespace korvel::report {
namespace {

// A longest increasing subsequence, as positions in `values`, which differ. n log n.
std::vector<std::size_t> LongestIncreasing(const std::vector<Slot>& values) {
  constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
  std::vector<std::size_t> ends;                          // of the best subsequence of each length
  std::vector<std::size_t> before(values.size(), kNone);  // in the best subsequence that ends here
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto place = std::ranges::lower_bound(ends, values[i], {}, [&](std::size_t end) { return values[end]; });
    if (place != ends.begin()) before[i] = *(place - 1);
    place == ends.end() ? ends.push_back(i) : static_cast<void>(*place = i);
  }
  std::vector<std::size_t> positions;
  for (std::size_t i = ends.empty() ? kNone : ends.back(); i != kNone; i = before[i]) positions.push_back(i);
  return positions;
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
  for (const std::size_t i : LongestIncreasing(kept)) is_still_[kept[i]] = true;
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

}  // namespace korvel::report
