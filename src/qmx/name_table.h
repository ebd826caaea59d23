// Finds names by sorting them once. Unlike a hash table it has no bad inputs: a file cannot be made to collide.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace qmx {

class NameTable {
 public:
  // REQUIRES: the names' bytes outlive the table; fewer than 2^32 of them.
  explicit NameTable(const std::vector<std::string_view>& names);

  // Position of the first of that name; nullopt if there is none. Logarithmic.
  std::optional<std::uint32_t> Find(std::string_view name) const;

  // Positions in the order of the names (bytes), equal names by position.
  std::vector<std::uint32_t> Order() const;

  // Positions of all names that stood before, ascending.
  std::vector<std::uint32_t> Repeats() const;

 private:
  std::vector<std::pair<std::string_view, std::uint32_t>> sorted_;
};

}  // namespace qmx
