// One meta of both sides: which entries lie around an edit, and what some of the edits make of these entries.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "analysis/diff/diff_parts.h"
#include "analysis/diff/matched_metas.h"
#include "base/name_finder.h"

namespace korvel {

// A part of one meta, and what becomes of it. All other entries are as on the new side.
struct AppliedPart {
  MetaModel present;             // the new meta with only some of its entries
  std::vector<Slot> positions;   // their positions in the new meta, ascending
  MetaModel made;                // these entries and others after the edits
  std::vector<MetaModel> added;  // metas that only the old side has, and that `made` embeds; in the order of Difference::Apply
};

// Borrows both arguments. Not for several threads at once: FindName builds an index.
class MetaSurroundings {
 public:
  // Linear in the meta.
  MetaSurroundings(const DifferenceParts& parts, const MetaNode& node);

  // The position on the new side, or kNoSlot.
  Slot FindName(const std::string& name);
  Slot FindId(std::int32_t id) const;

  // All edits of the meta but `left_out`, for the entries around these and `touched`; without `added`. REQUIRES: all of these
  // edits are of this meta. Linear in the part, in keys and indexes.
  AppliedPart Apply(const std::vector<std::size_t>& left_out, const std::vector<std::size_t>& touched);

 private:
  EditKinds* KindsOf(ChosenEdits& chosen, std::size_t edit) const;
  void ListReferrers(const References& references, bool is_new);
  void ListStill();
  void ListFixed();
  std::vector<Slot> SlotsOf(const std::vector<std::size_t>& left_out, const std::vector<std::size_t>& touched);
  EntryPart PartAround(const std::vector<Slot>& changed) const;
  bool IsNew(Slot slot) const;
  std::vector<Slot> NeighboursOf(Slot slot) const;
  EntryPart PartOf(std::vector<Slot> slots) const;
  ChosenEdits ChosenIn(const EntryPart& part, const std::vector<std::size_t>& left_out) const;

  const DifferenceParts& parts_;
  const MetaNode& node_;
  const MatchedMetas& pair_;
  MetaModel old_head_;  // the metas without entries
  MetaModel new_head_;
  std::vector<Slot> anchors_;                              // of each new position
  std::vector<Slot> still_before_;                         // of each old slot
  ChosenEdits all_;                                        // without attributes
  NameFinder<EntryModel> names_;                           // of the new side
  std::vector<std::pair<std::int32_t, Slot>> ids_;         // likewise, with positions, ascending
  std::unordered_map<Slot, std::vector<Slot>> counters_;   // of each entry
  std::unordered_map<Slot, std::vector<Slot>> referrers_;  // of each counter
  std::vector<Slot> fixed_;                                // what every part contains
};

}  // namespace korvel
