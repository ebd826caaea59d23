// Pairs the items of two lists that probably are the same ones under another name.
#pragma once

#include <algorithm>
#include <cstddef>
#include <optional>
#include <tuple>
#include <vector>

namespace korvel {

// An item is compared with those at its place in the other list, counted from either end, and with this many on each side of it:
// others may have been added or removed.
inline constexpr std::size_t kReach = 8;

// Places in an old and a new list.
struct NearbyPair {
  std::size_t old_place;
  std::size_t new_place;
};

// Pairs items at about the same places, those with the smallest difference first; each item at most once. `difference(old_place,
// new_place)` is nullopt if the items are not the same. n log n, with at most 34 calls for each new item.
template <class Difference>
std::vector<NearbyPair> PairNearby(std::size_t old_count, std::size_t new_count, Difference difference) {
  struct Candidate {
    std::size_t difference;
    std::size_t shift;
    std::size_t new_place;
    std::size_t old_place;
  };
  std::vector<Candidate> candidates;
  const auto compare_around = [&](std::size_t new_place, std::size_t around) {
    const std::size_t end = std::min(old_count, around + kReach + 1);
    for (std::size_t place = around - std::min(around, kReach); place < end; ++place) {
      const std::optional<std::size_t> found = difference(place, new_place);
      if (found) candidates.push_back({*found, place > around ? place - around : around - place, new_place, place});
    }
  };
  for (std::size_t place = 0; place < new_count; ++place) {
    compare_around(place, place);
    if (old_count != new_count && place + old_count >= new_count) compare_around(place, place + old_count - new_count);
  }
  std::ranges::sort(candidates, {},
                    [](const Candidate& one) { return std::tuple(one.difference, one.shift, one.new_place, one.old_place); });
  std::vector<NearbyPair> pairs;
  std::vector<bool> old_taken(old_count);
  std::vector<bool> new_taken(new_count);
  for (const Candidate& one : candidates) {
    if (old_taken[one.old_place] || new_taken[one.new_place]) continue;
    old_taken[one.old_place] = new_taken[one.new_place] = true;
    pairs.push_back({one.old_place, one.new_place});
  }
  return pairs;
}

}  // namespace korvel
