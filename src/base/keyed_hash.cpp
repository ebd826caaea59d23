// Tested by tests/qmx/name_index_test.cpp.
#include "base/keyed_hash.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <chrono>

namespace korvel {
namespace {

// The load address of the program and the time of the first call: no file can know them, and reading them cannot fail.
std::uint64_t Seed() {
  static const std::uint64_t seed = [] {
    const auto place = reinterpret_cast<std::uintptr_t>(&Seed);
    const auto time = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    return XXH64(&time, sizeof time, place);
  }();
  return seed;
}

}  // namespace

std::uint64_t HashWithSeed(std::string_view text, std::uint64_t seed) {
  return XXH3_64bits_withSeed(text.data(), text.size(), seed);
}

std::uint64_t KeyedHash(std::string_view text) { return XXH3_64bits_withSeed(text.data(), text.size(), Seed()); }

}  // namespace korvel
