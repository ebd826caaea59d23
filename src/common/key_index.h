// Finds the first of many items by its key in constant time, as a walk from the first item would find it.
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

// Multiplies to 128 bits and folds them.
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

// Keys. One that is missing is false, and equals nothing; what is wanted is never missing.
struct NameKey {
  const char* name;
  explicit operator bool() const noexcept { return name != nullptr; }
  bool operator==(const NameKey& wanted) const noexcept { return name != nullptr && std::strcmp(name, wanted.name) == 0; }
  std::uint64_t Hash(std::uint64_t seed) const noexcept { return HashOf(name, seed); }
};

struct IdKey {
  int id;
  bool is_there = true;
  explicit operator bool() const noexcept { return is_there; }
  bool operator==(const IdKey& wanted) const noexcept { return is_there && id == wanted.id; }
  std::uint64_t Hash(std::uint64_t seed) const noexcept { return FoldedProduct(seed ^ static_cast<std::uint32_t>(id), kMix); }
};

struct IdAndNameKey {
  int id;
  NameKey name;
  explicit operator bool() const noexcept { return static_cast<bool>(name); }
  bool operator==(const IdAndNameKey& wanted) const noexcept { return id == wanted.id && name == wanted.name; }
  std::uint64_t Hash(std::uint64_t seed) const noexcept { return name.Hash(seed) ^ (IdKey{id}.Hash(seed) << 1); }
};

// A hash table from keys to positions, filled no further than it was asked for. Keys are not kept: they are asked for again to
// tell equal hashes apart. `key_at(i)` below is the key of item i, 0 <= i < count, the same in every call.
class KeyIndex {
 public:
  KeyIndex(std::pmr::memory_resource* memory, std::uint64_t seed, int count) : seed_(seed), count_(count), slots_(memory) {}

  // Of a list whose first `shared` items have the keys of those of `base`, each a key of its own.
  // REQUIRES: `base` is longer lived, shares nothing itself and has been asked for these items.
  KeyIndex(std::pmr::memory_resource* memory, int count, const KeyIndex& base, int shared) : KeyIndex(memory, base.seed_, count) {
    base_ = &base;
    shared_ = indexed_ = announced_ = shared;
  }

  bool SharesKeys() const { return base_ != nullptr; }

  // Position of the first item with the key; -1 if there is none. Fastest where items are asked for in their order.
  template <class Key, class KeyAt>
  int Find(const Key& wanted, KeyAt key_at) {
    const int position = next_ < count_ && IsExpected(wanted, key_at) ? TakeExpected(key_at) : Search(wanted, key_at);
    if (position >= 0) next_ = position + 1;
    return position;
  }

  // Whether item i is the first with its key. REQUIRES: it has one.
  template <class KeyAt>
  bool IsFirst(int i, KeyAt key_at) {
    return indexed_ == i ? Add(key_at) == i : Find(key_at(i), key_at) == i;
  }

 private:
  struct Slot {
    std::uint32_t tag = 0;
    std::uint32_t place = 0;  // position + 1; 0 = free
  };

  // Whether the item behind the one found last has the key, and is at once known to be the first, or about to be indexed.
  template <class Key, class KeyAt>
  bool IsExpected(const Key& wanted, KeyAt key_at) const {
    return (all_differ_ || next_ == indexed_) && key_at(next_) == wanted;
  }

  template <class KeyAt>
  int TakeExpected(KeyAt key_at) {
    return next_ < indexed_ ? next_ : Add(key_at);
  }

  template <class Key, class KeyAt>
  int Search(const Key& wanted, KeyAt key_at) {
    int position = Known(wanted, key_at);
    while (position < 0 && indexed_ < count_) {
      const int added = indexed_;
      if (Add(key_at) == added && key_at(added) == wanted) position = added;
    }
    return position;
  }

  // Indexes the next item. Position of the first item with its key: its own, unless the key was met before; -1 without a key.
  template <class KeyAt>
  int Add(KeyAt key_at) {
    if (indexed_ == announced_) Announce(key_at);
    const int added = indexed_++;
    const std::uint64_t hash = HashAhead(added);
    if (hash == kNoKey) return -1;
    const auto has_key = [&](int position) { return key_at(position) == key_at(added); };
    int first = base_ == nullptr ? -1 : base_->PositionOf(hash, shared_, has_key);
    if (first < 0) {
      Slot& slot = slots_[Probe(hash, count_, has_key)];
      if (slot.place == 0) slot = {Tag(hash), static_cast<std::uint32_t>(added) + 1};
      first = Position(slot);
    }
    all_differ_ = all_differ_ && first == added;
    return first;
  }

  // Hashes the next items ahead of their turn, so that their slots are on the way when they are added: in a long list, each is
  // far from the others. Flattened, so that keys are had without a call where they can be.
  template <class KeyAt>
  [[gnu::flatten]] void Announce(KeyAt key_at) {
    if (slots_.empty()) slots_.resize(SlotCount());
    const Slot* slots = slots_.data();
    const std::size_t mask = slots_.size() - 1;
    const int end = std::min(indexed_ + kAhead, count_);
    for (int i = indexed_; i < end; ++i) {
      const auto key = key_at(i);
      const std::uint64_t hash = key ? HashWithMark(key) : kNoKey;
      HashAhead(i) = hash;
      __builtin_prefetch(slots + (hash & mask), 1);
    }
    announced_ = end;
  }

  std::uint64_t& HashAhead(int i) { return ahead_[static_cast<std::size_t>(i) % kAhead]; }

  template <class Key>
  std::uint64_t HashWithMark(const Key& key) const {
    return key.Hash(seed_) | (std::uint64_t{1} << 63);
  }

  // Position of the first indexed item with the key; -1 if there is none.
  template <class Key, class KeyAt>
  int Known(const Key& key, KeyAt key_at) const {
    const std::uint64_t hash = HashWithMark(key);
    const auto has_key = [&](int position) { return key_at(position) == key; };
    const int shared = base_ == nullptr ? -1 : base_->PositionOf(hash, shared_, has_key);
    return shared >= 0 ? shared : PositionOf(hash, count_, has_key);
  }

  // The same among the items before `end`, which alone `has_key` may be asked for.
  template <class HasKey>
  int PositionOf(std::uint64_t hash, int end, HasKey has_key) const {
    return slots_.empty() ? -1 : Position(slots_[Probe(hash, end, has_key)]);
  }

  // The slot of the key, or the free one where it belongs.
  template <class HasKey>
  std::size_t Probe(std::uint64_t hash, int end, HasKey has_key) const {
    const std::size_t mask = slots_.size() - 1;
    const auto holds = [&](const Slot& slot) { return slot.tag == Tag(hash) && Position(slot) < end && has_key(Position(slot)); };
    std::size_t at = hash & mask;
    while (slots_[at].place != 0 && !holds(slots_[at])) at = (at + 1) & mask;
    return at;
  }

  static int Position(const Slot& slot) { return static_cast<int>(slot.place) - 1; }
  static std::uint32_t Tag(std::uint64_t hash) { return static_cast<std::uint32_t>(hash >> 32); }

  // A power of two, at most half of which is filled.
  std::size_t SlotCount() const {
    std::size_t slots = 4;
    while (slots < 2 * static_cast<std::size_t>(count_ - shared_)) slots *= 2;
    return slots;
  }

  static constexpr int kAhead = 16;
  static constexpr std::uint64_t kNoKey = 0;  // every hash has its highest bit set

  std::uint64_t seed_;
  int count_;
  int shared_ = 0;
  int indexed_ = 0;         // the items before this one are in the table, or in that of the base
  int announced_ = 0;       // the items before this one have been hashed
  int next_ = 0;            // behind the one found last; never past `indexed_`
  bool all_differ_ = true;  // every key met so far is a key of its own
  const KeyIndex* base_ = nullptr;
  std::array<std::uint64_t, kAhead> ahead_{};
  std::pmr::vector<Slot> slots_;
};

}  // namespace korvel
