// The checksum is the same with and without AVX2, whatever the size and alignment of the bytes.
#include "qmx/checksum.h"

#include <gtest/gtest.h>

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <random>
#include <vector>

#ifdef __x86_64__
#include "qmx/checksum_avx2.h"
#endif

namespace {

// Published test value of the hash; images store it.
TEST(Checksum, OfNoBytes) { EXPECT_EQ(qmx::Checksum("", 0), 0x2d06800538d394c2u); }

TEST(Checksum, IsTheSameForEveryInstructionSet) {
  constexpr std::size_t kSeed = 20261122;
  std::printf("seed %zu\n", kSeed);
  std::mt19937_64 random(kSeed);
  std::vector<unsigned char> bytes(70'000);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
  const auto expect_same = [&](std::size_t begin, std::size_t size) {
    const unsigned char* const data = bytes.data() + begin;
    const std::uint64_t portable = XXH3_64bits(data, size);
    EXPECT_EQ(qmx::Checksum(data, size), portable) << size << " bytes at " << begin;
#ifdef __x86_64__
    if (__builtin_cpu_supports("avx2")) {
      EXPECT_EQ(qmx::ChecksumAvx2(data, size), portable) << size << " bytes at " << begin;
    }
#endif
  };
  // The hash treats up to 16, 128 and 240 bytes in ways of their own, and the rest in blocks of 1024.
  for (std::size_t size = 0; size < 1100; ++size) expect_same(size % 32, size);
  for (int i = 0; i < 200; ++i) {
    const std::size_t begin = random() % 64;
    expect_same(begin, random() % (bytes.size() - begin));
  }
}

}  // namespace
