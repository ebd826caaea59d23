// The entries that two metas begin with and that are the same on both sides: nearly all of them, in nearly every check.
#pragma once

#include <algorithm>
#include <memory_resource>
#include <vector>

namespace korvel {

// The entries before `end` are at the same position on both sides, match (entry_match.h), and are the first of their key there.
// No rule refuses any of them, unless it is composite: its structures may differ.
struct CommonPrefix {
  // The first position from `index` on that a rule has to look at.
  int Next(int index) const {
    if (index >= end) return index;
    const auto composite = std::lower_bound(composites.begin(), composites.end(), index);
    return composite == composites.end() ? end : *composite;
  }

  int end = 0;
  std::pmr::vector<int> composites = {};  // positions before `end`, ascending
};

}  // namespace korvel
