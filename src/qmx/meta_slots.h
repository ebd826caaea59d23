// The hash table by which a library finds its metas: open addressing, linear probing, at most half full.
//
// The table is part of the block, so its seed cannot be secret. Instead the builder tries seeds until every search ends within
// kMaxProbes slots: names that collide under one seed are hashed with the next. Names that collide under many consecutive seeds
// were constructed to collide, and are refused.
#pragma once

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "qmx/qmx_types.h"

namespace qmx {

// Stored in images: do not change. Maximum number of slots that a search visits; a million random names need about 40.
inline constexpr std::size_t kMaxProbes = 256;

// Stored in images: do not change. The hash of a name: 64-bit XXH3.
struct MetaHash {
  MetaHash(std::string_view name, std::uint32_t seed)
      : place(XXH3_64bits_withSeed(name.data(), name.size(), seed)), tag(static_cast<std::uint32_t>(place >> 32)) {}

  std::uint64_t place;  // its low bits are the slot where the search begins
  std::uint32_t tag;    // tagQMXMetaSlot::iHash
};

struct MetaProbe {
  std::size_t slot;    // of the name, or the free slot where it belongs
  std::size_t probes;  // number of visited slots
};

// Searches for a name. `has_name(meta)` returns whether the meta at that position has the name. REQUIRES: a slot is free.
template <class HasName>
MetaProbe FindMetaSlot(const tagQMXMetaSlot* slots, std::size_t slot_num, const MetaHash& hash, HasName has_name) {
  MetaProbe probe{hash.place & (slot_num - 1), 1};
  while (slots[probe.slot].iMeta >= 0 && !(slots[probe.slot].iHash == hash.tag && has_name(slots[probe.slot].iMeta))) {
    probe.slot = (probe.slot + 1) & (slot_num - 1);
    ++probe.probes;
  }
  return probe;
}

struct MetaSlots {
  std::vector<tagQMXMetaSlot> slots;
  std::uint32_t seed = 0;
};

// The number of slots for that many metas: the value of tagQMXMetaLib::iMetaSlotNum.
std::size_t MetaSlotNum(std::size_t metas);

// Fills the table using its seed. Returns false if a search visits more than `max_probes` slots, successful or not.
bool FillMetaSlots(MetaSlots& table, const std::vector<std::string_view>& names, std::size_t max_probes);

// The table of these names in declaration order. Equal names give equal tables. Nullopt if the names collide under every seed
// that is tried.
std::optional<MetaSlots> MakeMetaSlots(const std::vector<std::string_view>& names);

}  // namespace qmx
