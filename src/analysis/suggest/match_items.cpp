// Tested by tests/report/rewrite_test.cpp and fixes_test.cpp.
#include "analysis/suggest/match_items.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>

#include "base/name_finder.h"

namespace korvel {
namespace {

// For each wanted item the present one with its name, if it has the same shape.
template <class Item>
std::vector<Slot> MatchByName(const std::vector<Item>& present, const std::vector<Item>& wanted) {
  NameFinder positions(present);
  std::vector<Slot> partners;
  for (const Item& item : wanted) {
    const std::size_t found = positions.Find(item.name);
    const bool matches = found != kNowhere && HaveSameShape(present[found], item);
    partners.push_back(matches ? static_cast<Slot>(found) : kNoSlot);
  }
  return partners;
}

}  // namespace

std::vector<Slot> MatchItems(const std::vector<IndexModel>& present, const std::vector<IndexModel>& wanted) {
  return MatchByName(present, wanted);
}

// Also matches renamed entries.
std::vector<Slot> MatchItems(const std::vector<EntryModel>& present, const std::vector<EntryModel>& wanted) {
  std::vector<Slot> partners = MatchByName(present, wanted);
  std::vector<bool> taken(present.size());
  for (const Slot partner : partners) {
    if (partner != kNoSlot) taken[partner] = true;
  }
  std::map<std::int32_t, Slot> by_id;
  for (std::size_t i = 0; i < present.size(); ++i) {
    if (!taken[i] && present[i].id >= 0) by_id.emplace(present[i].id, static_cast<Slot>(i));
  }
  for (std::size_t i = 0; i < wanted.size(); ++i) {
    if (partners[i] != kNoSlot) continue;
    const auto same_id = by_id.find(wanted[i].id);
    const Slot next = i == 0 ? 0 : partners[i - 1] + (partners[i - 1] == kNoSlot ? 0 : 1);
    if (same_id != by_id.end() && !taken[same_id->second]) {
      partners[i] = same_id->second;
    } else if (next < present.size() && !taken[next] && present[next].id == wanted[i].id &&
               present[next].type == wanted[i].type) {
      partners[i] = next;
    }
    if (partners[i] != kNoSlot) taken[partners[i]] = true;
  }
  return partners;
}

bool TellsMoves(const Alignment& part) {
  std::vector<Slot> kept;  // in the new order
  Slot moved = kNoSlot;
  for (std::size_t i = 0; i < part.new_count(); ++i) {
    const Slot slot = part.OfNew(i);
    if (part.IsAdded(slot)) continue;
    kept.push_back(slot);
    if (!part.IsMoved(slot)) continue;
    if (moved != kNoSlot) return false;
    moved = slot;
  }
  if (moved == kNoSlot) return true;
  const auto at = std::ranges::find(kept, moved);
  const auto passed = std::count_if(kept.begin(), at, [&](Slot slot) { return slot > moved; }) +
                      std::count_if(at, kept.end(), [&](Slot slot) { return slot < moved; });
  return passed > 1;
}

}  // namespace korvel
