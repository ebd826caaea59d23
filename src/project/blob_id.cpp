// SHA-1 (FIPS 180-4), and the header that git puts before the bytes. Tested by tests/tool/blob_id_test.cpp.
#include "project/blob_id.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace korvel {
namespace {

class Sha1 {
 public:
  void Add(std::string_view bytes) {
    size_ += bytes.size();
    while (!bytes.empty()) {
      const std::size_t taken = bytes.copy(block_.data() + used_, block_.size() - used_);
      bytes.remove_prefix(taken);
      used_ += taken;
      if (used_ == block_.size()) AddBlock();
    }
  }

  // Call once, at the end.
  std::string Digits() {
    constexpr std::size_t kSizeAt = 56;  // in the last block
    const std::uint64_t bits = std::uint64_t{size_} * 8;
    Add("\x80");
    if (used_ > kSizeAt) Pad(block_.size());
    Pad(kSizeAt);
    for (unsigned shift = 64; shift > 0; shift -= 8) block_[used_++] = static_cast<char>(bits >> (shift - 8));
    AddBlock();
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint32_t word : {state_.a, state_.b, state_.c, state_.d, state_.e}) {
      for (unsigned shift = 32; shift > 0; shift -= 4) text += kDigits[word >> (shift - 4) & 0xfU];
    }
    return text;
  }

 private:
  struct State {
    std::uint32_t a, b, c, d, e;
  };

  static void Step(State& state, std::uint32_t mixed, std::uint32_t added) {
    const std::uint32_t first = std::rotl(state.a, 5) + mixed + state.e + added;
    state = {first, state.a, std::rotl(state.b, 30), state.c, state.d};
  }

  // Fills the block with zeros up to `end`.
  void Pad(std::size_t end) {
    std::fill(block_.begin() + static_cast<std::ptrdiff_t>(used_), block_.begin() + static_cast<std::ptrdiff_t>(end), '\0');
    used_ = end;
    if (used_ == block_.size()) AddBlock();
  }

  std::uint32_t WordAt(std::size_t at) const {
    const auto byte = [&](std::size_t i) { return std::uint32_t{static_cast<unsigned char>(block_[at + i])}; };
    return byte(0) << 24U | byte(1) << 16U | byte(2) << 8U | byte(3);
  }

  void AddBlock() {
    std::array<std::uint32_t, 80> words;
    for (std::size_t i = 0; i < 16; ++i) words[i] = WordAt(i * 4);
    for (std::size_t i = 16; i < words.size(); ++i) {
      words[i] = std::rotl(words[i - 3] ^ words[i - 8] ^ words[i - 14] ^ words[i - 16], 1);
    }
    State next = state_;
    for (std::size_t i = 0; i < 20; ++i) Step(next, (next.b & next.c) | (~next.b & next.d), 0x5a827999 + words[i]);
    for (std::size_t i = 20; i < 40; ++i) Step(next, next.b ^ next.c ^ next.d, 0x6ed9eba1 + words[i]);
    for (std::size_t i = 40; i < 60; ++i) Step(next, (next.b & next.c) | ((next.b | next.c) & next.d), 0x8f1bbcdc + words[i]);
    for (std::size_t i = 60; i < 80; ++i) Step(next, next.b ^ next.c ^ next.d, 0xca62c1d6 + words[i]);
    state_ = {state_.a + next.a, state_.b + next.b, state_.c + next.c, state_.d + next.d, state_.e + next.e};
    used_ = 0;
  }

  State state_ = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};
  std::array<char, 64> block_ = {};
  std::size_t used_ = 0;  // bytes of the block
  std::uint64_t size_ = 0;
};

}  // namespace

std::string BlobId(std::string_view bytes) {
  Sha1 sum;
  sum.Add("blob " + std::to_string(bytes.size()));
  sum.Add({"\0", 1});
  sum.Add(bytes);
  return sum.Digits();
}

}  // namespace korvel
