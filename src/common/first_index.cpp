// The number that hashes are mixed with. Held by tests/linear/linear_test.cpp.
#include "common/first_index.h"

#include <chrono>

namespace korvel {

// Where the program was loaded and when it first asked: enough that no file can know it, from sources that cannot fail.
std::uint64_t HashSeed() noexcept {
  static const std::uint64_t seed = [] {
    const auto place = reinterpret_cast<std::uintptr_t>(&HashSeed);
    const auto time = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    return FoldedProduct(place ^ kMix, time ^ kMix) | 1;
  }();
  return seed;
}

}  // namespace korvel
