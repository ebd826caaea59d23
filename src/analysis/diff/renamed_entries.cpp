// Compares the entries between matched ones. Tested by tests/report/renamed_entries_test.cpp.
#include "analysis/diff/renamed_entries.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>

#include "analysis/diff/nearby_pairs.h"
#include "base/similar_names.h"

namespace korvel {
namespace {

// The unmatched entries of both sides between two matched ones.
struct Gap {
  std::vector<Slot> old_slots;
  std::vector<Slot> new_positions;
};

class RenameFinder {
 public:
  RenameFinder(const std::vector<EntryModel>& old_entries, const std::vector<EntryModel>& new_entries,
               std::vector<Slot>& partners)
      : old_(old_entries), new_(new_entries), partners_(partners), is_taken_(old_entries.size(), false) {
    for (const Slot partner : partners) {
      if (partner != kNoSlot) is_taken_[partner] = true;
    }
  }

  // Whether both sides have unmatched entries.
  bool HasUnmatched() const {
    return std::ranges::find(is_taken_, false) != is_taken_.end() && std::ranges::find(partners_, kNoSlot) != partners_.end();
  }

  void Find() {
    for (const auto& [anchor, gap] : GapsBehindMatched()) PairIn(gap);
    for (const auto& [anchor, gap] : GapsBeforeMatched()) PairIn(gap);
  }

 private:
  // By the old position of the matched entry; kNoSlot for the front.
  std::map<Slot, Gap> GapsBehindMatched() const {
    std::map<Slot, Gap> gaps;
    Slot anchor = kNoSlot;
    for (Slot i = 0; i < old_.size(); ++i) is_taken_[i] ? void(anchor = i) : gaps[anchor].old_slots.push_back(i);
    anchor = kNoSlot;
    for (Slot j = 0; j < new_.size(); ++j) {
      partners_[j] != kNoSlot ? void(anchor = partners_[j]) : gaps[anchor].new_positions.push_back(j);
    }
    return gaps;
  }

  // The same with the entry behind the gap; kNoSlot for the end. Entries are listed from the end.
  std::map<Slot, Gap> GapsBeforeMatched() const {
    std::map<Slot, Gap> gaps;
    Slot anchor = kNoSlot;
    for (auto i = static_cast<Slot>(old_.size()); i-- > 0;) {
      is_taken_[i] ? void(anchor = i) : gaps[anchor].old_slots.push_back(i);
    }
    anchor = kNoSlot;
    for (auto j = static_cast<Slot>(new_.size()); j-- > 0;) {
      partners_[j] != kNoSlot ? void(anchor = partners_[j]) : gaps[anchor].new_positions.push_back(j);
    }
    return gaps;
  }

  void PairIn(const Gap& gap) {
    const auto difference = [&](std::size_t old_place, std::size_t new_place) {
      const EntryModel& old_entry = old_[gap.old_slots[old_place]];
      const EntryModel& new_entry = new_[gap.new_positions[new_place]];
      return DifferOnlyByName(old_entry, new_entry) ? SpellingDistance(old_entry.name, new_entry.name) : std::nullopt;
    };
    for (const NearbyPair& pair : PairNearby(gap.old_slots.size(), gap.new_positions.size(), difference)) {
      partners_[gap.new_positions[pair.new_place]] = gap.old_slots[pair.old_place];
      is_taken_[gap.old_slots[pair.old_place]] = true;
    }
  }

  const std::vector<EntryModel>& old_;
  const std::vector<EntryModel>& new_;
  std::vector<Slot>& partners_;
  std::vector<bool> is_taken_;  // of the old side
};

}  // namespace

bool DifferOnlyByName(const EntryModel& a, const EntryModel& b) {
  return a.type == b.type && a.size == b.size && a.id == b.id && a.version == b.version && a.count == b.count &&
         a.refer.empty() == b.refer.empty() && a.customattr2 == b.customattr2;
}

void PairRenamed(const std::vector<EntryModel>& old_entries, const std::vector<EntryModel>& new_entries,
                 std::vector<Slot>& partners) {
  RenameFinder finder(old_entries, new_entries, partners);
  if (finder.HasUnmatched()) finder.Find();
}

}  // namespace korvel
