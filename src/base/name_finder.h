// Finds the first thing of a name in a list that does not change meanwhile.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

namespace korvel {

inline constexpr std::size_t kNowhere = std::numeric_limits<std::size_t>::max();

// Few searches pass over the list; before many the names are sorted. Hashing would be quicker for names that nobody chose to
// collide.
template <class Item>
class NameFinder {
 public:
  // REQUIRES: the items outlive the finder. Each has a member `name`.
  explicit NameFinder(const std::vector<Item>& items) : items_(items) {}

  // The position of the first one of that name, kNowhere if there is none.
  std::size_t Find(std::string_view name) {
    if (++searches_ <= kFewSearches) return Scan(name);
    if (sorted_.empty()) Sort();
    const auto found = std::ranges::lower_bound(sorted_, name, {}, [this](std::size_t i) { return NameAt(i); });
    return found == sorted_.end() || NameAt(*found) != name ? kNowhere : *found;
  }

 private:
  static constexpr int kFewSearches = 4;

  std::string_view NameAt(std::size_t i) const { return items_[i].name; }

  std::size_t Scan(std::string_view name) const {
    const auto found = std::ranges::find_if(items_, [&](const Item& item) { return item.name == name; });
    return found == items_.end() ? kNowhere : static_cast<std::size_t>(found - items_.begin());
  }

  void Sort() {
    for (std::size_t i = 0; i < items_.size(); ++i) sorted_.push_back(i);
    std::ranges::sort(sorted_, {}, [this](std::size_t i) { return std::pair(NameAt(i), i); });
  }

  const std::vector<Item>& items_;
  std::vector<std::size_t> sorted_;  // by name, then position
  int searches_ = 0;
};

}  // namespace korvel
