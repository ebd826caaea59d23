// Hashes of names and the growth of their table. Tested by tests/qmx/name_index_test.cpp.
#include "qmx/name_index.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <chrono>
#include <utility>

namespace qmx {
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

std::uint32_t NameIndex::HashOf(std::string_view name) {
  return static_cast<std::uint32_t>(XXH3_64bits_withSeed(name.data(), name.size(), Seed()));
}

void NameIndex::Double() {
  const std::vector<Slot> old = std::exchange(slots_, std::vector<Slot>(2 * slots_.size()));
  for (const Slot& slot : old) {
    if (slot.end == 0) continue;
    std::size_t at = slot.hash & (slots_.size() - 1);
    while (slots_[at].end != 0) at = (at + 1) & (slots_.size() - 1);
    slots_[at] = slot;
  }
}

}  // namespace qmx
