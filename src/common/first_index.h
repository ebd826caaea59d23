// Finds the first of many items by its key in constant time, as a walk from the first item would find it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace korvel {

// Hashes of keys. They are mixed with a number that differs from run to run, so that no file can be written to collide.
std::uint64_t HashOf(std::string_view key);
std::uint64_t HashOf(int key);
inline std::uint64_t HashOf(const std::pair<int, std::string_view>& key) { return HashOf(key.second) ^ (HashOf(key.first) << 1); }

// A hash table from keys to positions. Keys are not kept: they are asked for again to tell equal hashes apart.
class FirstIndex {
 public:
  // `key_at(i)` is the key of item i, 0 <= i < count, or nullopt for an item without one.
  template <class KeyAt>
  FirstIndex(int count, KeyAt key_at) : slots_(SlotCount(count)) {
    for (int i = 0; i < count; ++i) {
      const auto key = key_at(i);
      if (!key) continue;
      Slot& slot = Probe(*key, key_at);
      if (slot.position < 0) slot = {Tag(HashOf(*key)), i};
    }
  }

  // Position of the first item with the key; -1 if there is none. `key_at` as above.
  template <class Key, class KeyAt>
  int Find(const Key& key, KeyAt key_at) {
    return Probe(key, key_at).position;
  }

 private:
  struct Slot {
    std::uint32_t tag = 0;
    std::int32_t position = -1;
  };

  static std::uint32_t Tag(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32); }

  // A power of two, at most half of which is filled.
  static std::size_t SlotCount(int count) {
    std::size_t slots = 2;
    while (slots < 2 * static_cast<std::size_t>(count)) slots *= 2;
    return slots;
  }

  // The slot of the key, or the free one where it belongs.
  template <class Key, class KeyAt>
  Slot& Probe(const Key& key, KeyAt key_at) {
    const std::uint64_t hash = HashOf(key);
    std::size_t at = hash & (slots_.size() - 1);
    while (slots_[at].position >= 0 && !(slots_[at].tag == Tag(hash) && key_at(slots_[at].position) == key)) {
      at = (at + 1) & (slots_.size() - 1);
    }
    return slots_[at];
  }

  std::vector<Slot> slots_;
};

}  // namespace korvel
