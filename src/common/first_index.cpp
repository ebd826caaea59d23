// The hash of names and ids: each 8 bytes are multiplied to 128 bits and folded. Held by tests/linear/linear_test.cpp.
#include "common/first_index.h"

#include <chrono>
#include <cstring>

namespace korvel {
namespace {

constexpr std::uint64_t kMix = 0x9e3779b97f4a7c15;  // the golden ratio in 64 bits: odd, and without a pattern

std::uint64_t Fold(std::uint64_t a, std::uint64_t b) {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

// Where the program was loaded and when it first asked: enough that no file can know it, from sources that cannot fail.
std::uint64_t Seed() {
  static const std::uint64_t seed = [] {
    const auto place = reinterpret_cast<std::uintptr_t>(&Seed);
    const auto time = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    return Fold(place ^ kMix, time ^ kMix) | 1;
  }();
  return seed;
}

}  // namespace

std::uint64_t HashOf(std::string_view key) {
  std::uint64_t hash = Seed() ^ key.size();
  while (key.size() >= sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, key.data(), sizeof(word));
    hash = Fold(hash ^ word, Seed() + kMix);
    key.remove_prefix(sizeof(word));
  }
  std::uint64_t rest = 0;
  std::memcpy(&rest, key.data(), key.size());
  return Fold(hash ^ rest, kMix ^ Seed());
}

std::uint64_t HashOf(int key) { return Fold(Seed() ^ static_cast<std::uint32_t>(key), kMix); }

}  // namespace korvel
