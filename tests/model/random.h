// Random numbers, the same on every machine for the same seed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace model {

class Random {
 public:
  explicit Random(std::uint64_t seed) : engine_(seed) {}

  // From 0 to `bound` - 1. REQUIRES: bound > 0.
  std::size_t Below(std::size_t bound) { return static_cast<std::size_t>(engine_() % bound); }
  bool OneIn(std::size_t number) { return Below(number) == 0; }

  template <typename Item>
  Item Of(const std::vector<Item>& items) {
    return items[Below(items.size())];
  }

 private:
  std::mt19937_64 engine_;
};

}  // namespace model
