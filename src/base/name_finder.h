// Finds items of a list by name.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

#include "base/name_index.h"

namespace korvel {

inline constexpr std::size_t kNowhere = std::numeric_limits<std::size_t>::max();

// The first kMaxScans searches scan the list, which is cheapest for few searches; then the names are indexed once, and each
// search takes constant time. Not for several threads at once.
template <class Item>
class NameFinder {
 public:
  // Borrows the items, which must not change while the finder is used. Each item has a member `name`.
  explicit NameFinder(const std::vector<Item>& items) : items_(&items) {}

  // The position of the first item with that name; kNowhere if there is none.
  std::size_t Find(std::string_view name) {
    if (++searches_ <= kMaxScans) return Scan(name);
    if (!index_) AddAll(index_.emplace());
    const std::optional<std::uint32_t> found = index_->Find(name, NamesOf(*items_));
    return found ? *found : kNowhere;
  }

 private:
  static constexpr std::size_t kMaxScans = 4;

  std::size_t Scan(std::string_view name) const {
    const auto found = std::ranges::find_if(*items_, [&](const Item& item) { return item.name == name; });
    return found == items_->end() ? kNowhere : static_cast<std::size_t>(found - items_->begin());
  }

  void AddAll(NameIndex& index) const {
    for (std::size_t i = 0; i < items_->size(); ++i)
      index.Add((*items_)[i].name, static_cast<std::uint32_t>(i), NamesOf(*items_));
  }

  const std::vector<Item>* items_;
  std::optional<NameIndex> index_;
  std::size_t searches_ = 0;
};

// Whether no two items have the same name.
template <class Item>
bool HaveUniqueNames(const std::vector<Item>& items) {
  NameIndex index;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!index.Add(items[i].name, static_cast<std::uint32_t>(i), NamesOf(items))) return false;
  }
  return true;
}

}  // namespace korvel
