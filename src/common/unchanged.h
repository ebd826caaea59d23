// The leading entries of two metas that are the same on both sides: nearly all of them, in nearly every check.
#pragma once

#include <algorithm>
#include <cstdint>
#include <memory_resource>
#include <vector>

namespace korvel {

// How two entries at one place compare.
enum class Likeness : std::uint8_t { kNone, kSame, kComposite };

// The entries before `end` stand on both sides at the same place with the same members, and are the first of their key there. No
// rule has anything to say about them, unless they are composite: their structures may differ.
struct Unchanged {
  // The first position from `index` on that a rule has to look at.
  int Next(int index) const {
    if (index >= end) return index;
    const auto composite = std::lower_bound(composites.begin(), composites.end(), index);
    return composite == composites.end() ? end : *composite;
  }

  int end = 0;
  std::pmr::vector<int> composites = {};  // positions before `end`, in order
};

}  // namespace korvel
