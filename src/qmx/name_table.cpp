// Finds names by sorting them once.
#include "qmx/name_table.h"

#include <algorithm>

namespace qmx {

NameTable::NameTable(const std::vector<std::string_view>& names) {
  sorted_.reserve(names.size());
  for (const std::string_view name : names) sorted_.emplace_back(name, static_cast<std::uint32_t>(sorted_.size()));
  std::ranges::sort(sorted_);
}

std::optional<std::uint32_t> NameTable::Find(std::string_view name) const {
  const auto found = std::ranges::lower_bound(sorted_, std::pair(name, std::uint32_t{0}));
  if (found == sorted_.end() || found->first != name) return std::nullopt;
  return found->second;
}

std::vector<std::uint32_t> NameTable::Order() const {
  std::vector<std::uint32_t> order;
  order.reserve(sorted_.size());
  for (const auto& [name, position] : sorted_) order.push_back(position);
  return order;
}

std::vector<std::uint32_t> NameTable::Repeats() const {
  std::vector<std::uint32_t> repeats;
  for (std::size_t i = 1; i < sorted_.size(); ++i) {
    if (sorted_[i].first == sorted_[i - 1].first) repeats.push_back(sorted_[i].second);
  }
  std::ranges::sort(repeats);
  return repeats;
}

}  // namespace qmx
