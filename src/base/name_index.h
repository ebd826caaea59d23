// Finds names of a growing list in constant time. Only hashes and positions are kept; the names stay where they are.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "base/keyed_hash.h"

namespace korvel {

// `name_at(position)` returns the name that was added at a position. Each operation takes it as an argument.
class NameIndex {
 public:
  NameIndex() { Clear(); }

  // The position of a name.
  template <class NameAt>
  std::optional<std::uint32_t> Find(std::string_view name, NameAt name_at) const {
    const Slot& slot = slots_[Probe(name, HashOf(name), name_at)];
    return slot.end == 0 ? std::nullopt : std::optional(slot.end - 1);
  }

  // Adds a name. Returns false if it is present already; it keeps its position. `name_at(position)` is not called.
  template <class NameAt>
  bool Add(std::string_view name, std::uint32_t position, NameAt name_at) {
    if (2 * (used_ + 1) > slots_.size()) Double();
    const std::uint32_t hash = HashOf(name);
    Slot& slot = slots_[Probe(name, hash, name_at)];
    if (slot.end != 0) return false;
    slot = {hash, position + 1};
    ++used_;
    return true;
  }

  // Removes all names, in time that does not depend on their number.
  void Clear() {
    slots_.assign(kFirstSlots, {});
    used_ = 0;
  }

 private:
  static constexpr std::size_t kFirstSlots = 256;

  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t end = 0;  // position + 1; 0 = free
  };

  // No file can be constructed whose names collide.
  static std::uint32_t HashOf(std::string_view name) { return static_cast<std::uint32_t>(KeyedHash(name)); }

  // The slot of the name, or the free one where it belongs.
  template <class NameAt>
  std::size_t Probe(std::string_view name, std::uint32_t hash, NameAt name_at) const {
    std::size_t at = hash & (slots_.size() - 1);
    while (slots_[at].end != 0 && !(slots_[at].hash == hash && name_at(slots_[at].end - 1) == name)) {
      at = (at + 1) & (slots_.size() - 1);
    }
    return at;
  }

  void Double();

  std::vector<Slot> slots_;  // a power of two, at most half of which is used
  std::size_t used_ = 0;
};

// The argument `name_at` of NameIndex for a list whose items have a member `name`. Borrows the list.
template <class Item>
auto NamesOf(const std::vector<Item>& items) {
  return [&items](std::uint32_t position) { return std::string_view(items[position].name); };
}

}  // namespace korvel
