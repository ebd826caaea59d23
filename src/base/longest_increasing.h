// Longest increasing subsequence. Tested by tests/report/alignment_test.cpp and unified_diff_test.cpp.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

namespace korvel {

// Positions of a longest subsequence whose keys increase strictly, ascending. n log n.
template <class Item, class KeyOf>
std::vector<std::size_t> LongestIncreasing(const std::vector<Item>& items, KeyOf key_of) {
  constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
  std::vector<std::size_t> ends;                         // of the best subsequence of each length
  std::vector<std::size_t> before(items.size(), kNone);  // in the best subsequence that ends here
  for (std::size_t i = 0; i < items.size(); ++i) {
    const auto end = std::ranges::lower_bound(ends, key_of(items[i]), {}, [&](std::size_t j) { return key_of(items[j]); });
    if (end != ends.begin()) before[i] = *(end - 1);
    end == ends.end() ? ends.push_back(i) : static_cast<void>(*end = i);
  }
  std::vector<std::size_t> positions;
  for (std::size_t i = ends.empty() ? kNone : ends.back(); i != kNone; i = before[i]) positions.push_back(i);
  std::ranges::reverse(positions);
  return positions;
}

}  // namespace korvel
