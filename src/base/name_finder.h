// Finds items of a list by name.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>
#include <string_view>
#include <utility>
#include <vector>

namespace korvel {

inline constexpr std::size_t kNowhere = std::numeric_limits<std::size_t>::max();

// The first kMaxScans searches scan the list, which is cheapest for few searches; then the names are sorted once (n log n) and
// each search takes log n. Hashing would be faster, but an input could choose names that collide. Not for several threads at
// once.
template <class Item>
class NameFinder {
 public:
  // Borrows the items, which must not change while the finder is used. Each item has a member `name`.
  explicit NameFinder(const std::vector<Item>& items) : items_(items) {}

  // The position of the first item with that name; kNowhere if there is none.
  std::size_t Find(std::string_view name) {
    if (++searches_ <= kMaxScans) return Scan(name);
    if (sorted_.empty()) Sort();
    const auto found = std::ranges::lower_bound(sorted_, name, {}, [this](std::size_t i) { return NameAt(i); });
    return found == sorted_.end() || NameAt(*found) != name ? kNowhere : *found;
  }

 private:
  static constexpr int kMaxScans = 4;

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
