// Fills the hash table by which a library finds its metas. Tested by tests/qmx/meta_slots_test.cpp.
#include "qmx/meta_slots.h"

#include <algorithm>
#include <bit>

namespace qmx {
namespace {

// Random names need one seed. A file can contain names that collide under any number of seeds, a few hundred for each seed, so
// names that collide under all of these are refused.
constexpr std::uint32_t kMaxSeeds = 16;

// Whether an unsuccessful search may visit more than that many slots: it continues to the next free slot.
bool HasLongRun(const std::vector<tagQMXMetaSlot>& slots, std::size_t max_probes) {
  std::size_t run = 0;
  for (std::size_t i = 0; i < slots.size() + std::min(max_probes, slots.size()); ++i) {
    run = slots[i % slots.size()].iMeta < 0 ? 0 : run + 1;
    if (run >= max_probes) return true;
  }
  return false;
}

}  // namespace

bool FillMetaSlots(MetaSlots& table, const std::vector<std::string_view>& names, std::size_t max_probes) {
  table.slots.assign(MetaSlotNum(names.size()), {0, -1});
  for (std::size_t i = 0; i < names.size(); ++i) {
    const MetaHash hash(names[i], table.seed);
    const auto has_name = [&](std::int32_t meta) { return names[static_cast<std::size_t>(meta)] == names[i]; };
    const MetaProbe probe = FindMetaSlot(table.slots.data(), table.slots.size(), hash, has_name);
    if (probe.probes > max_probes) return false;
    tagQMXMetaSlot& slot = table.slots[probe.slot];
    if (slot.iMeta < 0) slot = {hash.tag, static_cast<std::int32_t>(i)};
  }
  return !HasLongRun(table.slots, max_probes);
}

std::size_t MetaSlotNum(std::size_t metas) { return metas == 0 ? 0 : std::bit_ceil(2 * metas); }

std::optional<MetaSlots> MakeMetaSlots(const std::vector<std::string_view>& names) {
  MetaSlots table;
  for (; table.seed < kMaxSeeds; ++table.seed) {
    if (FillMetaSlots(table, names, kMaxProbes)) return table;
  }
  return std::nullopt;
}

}  // namespace qmx
