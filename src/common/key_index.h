// An index of a list: finds the first item with a key in constant time, as a walk from the first item would find it.
//
// Keys are not stored. An index holds positions, and asks for the key at a position again to tell equal hashes apart, so the list
// must not change while its index is used. Only for class Lookup. Tested by tests/rules/lookup_test.cpp.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory_resource>
#include <string_view>
#include <vector>

namespace korvel {

// Multiplies to 128 bits and folds them: the mixing step of all hashes here.
inline std::uint64_t FoldedProduct(std::uint64_t a, std::uint64_t b) noexcept {
  __extension__ using Wide = unsigned __int128;
  const Wide product = static_cast<Wide>(a) * b;
  return static_cast<std::uint64_t>(product) ^ static_cast<std::uint64_t>(product >> 64);
}

inline constexpr std::uint64_t kMix = 0x9e3779b97f4a7c15;  // the golden ratio in 64 bits: odd, and without a pattern

template <class Word>
Word WordAt(const char* bytes) noexcept {
  Word word = 0;
  std::memcpy(&word, bytes, sizeof(word));
  return word;
}

// The last 8 bytes of a text, or all of a shorter one.
inline std::uint64_t TailOf(std::string_view text) noexcept {
  const char* end = text.data() + text.size();
  if (text.size() >= 8) return WordAt<std::uint64_t>(end - 8);
  if (text.size() >= 4) return (std::uint64_t{WordAt<std::uint32_t>(text.data())} << 32) | WordAt<std::uint32_t>(end - 4);
  std::uint64_t tail = 0;
  for (const char c : text) tail = (tail << 8) | static_cast<unsigned char>(c);
  return tail;
}

inline std::uint64_t HashOf(std::string_view text, std::uint64_t seed) noexcept {
  std::uint64_t hash = seed ^ text.size();
  for (; text.size() > 8; text.remove_prefix(8)) {
    hash = FoldedProduct(hash ^ WordAt<std::uint64_t>(text.data()), seed + kMix);
  }
  return FoldedProduct(hash ^ TailOf(text), kMix ^ seed);
}

// Keys. One whose item or name is missing converts to false and equals nothing; a key that is searched is never missing. Each key
// hashes with a seed that differs from run to run, so that no schema file can be written whose keys collide.
struct NameKey {
  const char* name;
  explicit operator bool() const noexcept { return name != nullptr; }
  bool operator==(const NameKey& wanted) const noexcept { return name != nullptr && std::strcmp(name, wanted.name) == 0; }
  std::uint64_t Hash(std::uint64_t seed) const noexcept { return HashOf(name, seed); }
};

struct IdKey {
  int id;
  bool exists = true;
  explicit operator bool() const noexcept { return exists; }
  bool operator==(const IdKey& wanted) const noexcept { return exists && id == wanted.id; }
  std::uint64_t Hash(std::uint64_t seed) const noexcept { return FoldedProduct(seed ^ static_cast<std::uint32_t>(id), kMix); }
};

struct IdAndNameKey {
  int id;
  NameKey name;
  explicit operator bool() const noexcept { return static_cast<bool>(name); }
  bool operator==(const IdAndNameKey& wanted) const noexcept { return id == wanted.id && name == wanted.name; }
  std::uint64_t Hash(std::uint64_t seed) const noexcept { return name.Hash(seed) ^ (IdKey{id}.Hash(seed) << 1); }
};

// A hash table from keys to positions, with linear probing. Of equal keys it holds the first.
class KeyIndex {
 public:
  // Of the items from `begin` to `end`. `key_at(i)` is the key of item i: the same in every call of this and of Find.
  // Allocates 16 to 32 bytes an item from `memory`.
  template <class KeyAt>
  KeyIndex(std::pmr::memory_resource* memory, std::uint64_t seed, int begin, int end, KeyAt key_at)
      : seed_(seed), slots_(SlotCount(end - begin), memory) {
    Fill(begin, end, key_at);
  }

  // Position of the first item with the key, if it is before `end`; -1 if there is none. Calls `key_at` only for items before
  // `end`.
  template <class Key, class KeyAt>
  int Find(const Key& wanted, int end, KeyAt key_at) const {
    const std::uint64_t hash = wanted.Hash(seed_) | kHasKey;
    return slots_[Probe(hash, [&](int i) { return i < end && key_at(i) == wanted; })].position;
  }

  // Whether no two items have the same key. Items without a key do not count.
  bool AllDiffer() const { return all_differ_; }

 private:
  struct Slot {
    std::uint32_t tag = 0;
    std::int32_t position = kFree;
  };
  static constexpr std::int32_t kFree = -1;
  static constexpr std::uint64_t kHasKey = std::uint64_t{1} << 63;  // set in every hash: 0 stands for no key

  // The least power of two that is at most half filled.
  static std::size_t SlotCount(int count) {
    std::size_t slots = 4;
    while (slots < 2 * static_cast<std::size_t>(count)) slots *= 2;
    return slots;
  }

  // Takes the items in blocks: hashes a block, so that its slots are on their way from memory when they are needed. In a list of
  // a million items each slot is far from the others.
  template <class KeyAt>
  [[gnu::flatten]] void Fill(int begin, int end, KeyAt key_at) {
    constexpr int kBlock = 16;
    std::array<std::uint64_t, kBlock> hashes;
    for (int block = begin; block < end; block += kBlock) {
      const int size = std::min(kBlock, end - block);
      for (int i = 0; i < size; ++i) {
        const auto key = key_at(block + i);
        hashes[static_cast<std::size_t>(i)] = key ? key.Hash(seed_) | kHasKey : 0;
        __builtin_prefetch(slots_.data() + (hashes[static_cast<std::size_t>(i)] & (slots_.size() - 1)), 1);
      }
      for (int i = 0; i < size; ++i) {
        if (hashes[static_cast<std::size_t>(i)] != 0) Add(block + i, hashes[static_cast<std::size_t>(i)], key_at);
      }
    }
  }

  template <class KeyAt>
  void Add(int added, std::uint64_t hash, KeyAt key_at) {
    Slot& slot = slots_[Probe(hash, [&](int i) { return key_at(i) == key_at(added); })];
    if (slot.position == kFree) {
      slot = {Tag(hash), added};
    } else {
      all_differ_ = false;
    }
  }

  // The slot of the key, or the free one where it belongs.
  template <class HasKey>
  std::size_t Probe(std::uint64_t hash, HasKey has_key) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].position != kFree && !(slots_[at].tag == Tag(hash) && has_key(slots_[at].position))) at = (at + 1) & mask;
    return at;
  }

  static std::uint32_t Tag(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32); }

  std::uint64_t seed_;
  bool all_differ_ = true;
  std::pmr::vector<Slot> slots_;
};

}  // namespace korvel
