// The hash and the hash table by which entries are found. Answers of the checker do not depend on the quality of the hash, so it
// is tested here.
#include "common/key_index.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <random>
#include <set>
#include <string>
#include <string_view>

namespace {

using korvel::HashOf;
using korvel::IdAndNameKey;
using korvel::IdKey;
using korvel::NameKey;

constexpr std::uint64_t kSeed = 20261122;

std::string RandomText(std::size_t size, std::mt19937_64& random) {
  std::string text(size, ' ');
  for (char& c : text) c = static_cast<char>(random());
  return text;
}

// Every bit of a text counts, whatever its length.
TEST(HashOf, DiffersForTextsThatDifferInOneBit) {
  std::printf("seed %llu\n", static_cast<unsigned long long>(kSeed));
  std::mt19937_64 random(kSeed);
  for (std::size_t size = 0; size <= 40; ++size) {
    const std::string text = RandomText(size, random);
    std::set<std::uint64_t> hashes = {HashOf(text, kSeed)};
    for (std::size_t bit = 0; bit < 8 * size; ++bit) {
      std::string changed = text;
      changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ (1 << bit % 8));
      EXPECT_TRUE(hashes.insert(HashOf(changed, kSeed)).second) << size << " bytes, bit " << bit;
    }
  }
}

// What lies around a text does not count.
TEST(HashOf, ReadsNothingOutsideOfTheText) {
  std::mt19937_64 random(kSeed);
  for (std::size_t size = 0; size <= 40; ++size) {
    const std::string text = RandomText(size, random);
    const std::string embedded = RandomText(16, random) + text + RandomText(16, random);
    EXPECT_EQ(HashOf(std::string_view(embedded).substr(16, size), kSeed), HashOf(text, kSeed)) << size;
  }
}

TEST(HashOf, DependsOnLength) {
  std::set<std::uint64_t> hashes;
  for (std::size_t size = 0; size <= 40; ++size)
    EXPECT_TRUE(hashes.insert(HashOf(std::string(size, '\0'), kSeed)).second) << size;
}

TEST(HashOf, DependsOnSeed) {
  std::mt19937_64 random(kSeed);
  for (std::size_t size = 0; size <= 40; ++size) {
    const std::string text = RandomText(size, random);
    EXPECT_NE(HashOf(text, kSeed), HashOf(text, kSeed + 1)) << size;
  }
}

TEST(Keys, HashWithAllTheirMembers) {
  EXPECT_NE(IdKey{1}.Hash(kSeed), IdKey{2}.Hash(kSeed));
  EXPECT_NE(IdKey{1}.Hash(kSeed), IdKey{1}.Hash(kSeed + 1));
  EXPECT_NE((IdAndNameKey{1, {"a"}}.Hash(kSeed)), (IdAndNameKey{2, {"a"}}.Hash(kSeed)));
  EXPECT_NE((IdAndNameKey{1, {"a"}}.Hash(kSeed)), (IdAndNameKey{1, {"b"}}.Hash(kSeed)));
  EXPECT_EQ((IdAndNameKey{1, {"a"}}.Hash(kSeed)), (IdAndNameKey{1, {"a"}}.Hash(kSeed)));
}

TEST(Keys, MissingOnesEqualNothing) {
  EXPECT_FALSE(static_cast<bool>(NameKey{nullptr}));
  EXPECT_FALSE(NameKey{nullptr} == NameKey{"a"});
  EXPECT_FALSE(static_cast<bool>(IdKey{1, false}));
  EXPECT_FALSE((IdKey{1, false} == IdKey{1}));
  EXPECT_FALSE(static_cast<bool>(IdAndNameKey{1, {nullptr}}));
  EXPECT_FALSE((IdAndNameKey{1, {nullptr}} == IdAndNameKey{1, {"a"}}));
}

}  // namespace
