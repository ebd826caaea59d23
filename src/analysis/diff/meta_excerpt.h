// Cuts a meta down to the entries that some edits concern.
//
// Nothing can be refused about an entry that is the same on both sides, except in relation to an entry that changes. So a run of
// unchanged entries is replaced by its first entry and a filler, which has the name and id of the next entry and as many bytes as
// the rest of the run. Sizes and offsets stay exact. The first entry stays because it is the one that is reported as displaced
// if an entry before it is removed.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "analysis/diff/diff_parts.h"
#include "qmx/qmx_types.h"

namespace korvel {

// Both sides of a meta with only some of their entries. Neither movable nor copyable, because `pair` borrows the metas.
struct MetaExcerpt {
  MetaExcerpt() = default;
  MetaExcerpt(const MetaExcerpt&) = delete;
  MetaExcerpt& operator=(const MetaExcerpt&) = delete;

  MetaModel old_meta;
  MetaModel new_meta;
  std::optional<MatchedMetas> pair;  // set by MetaOutline::Cut
};

// What cannot be left out of a meta. Borrows the node. Immutable; threads may use one outline at the same time.
class MetaOutline {
 public:
  // `meta` is the old meta, laid out. REQUIRES: the old side has it. n log n.
  MetaOutline(const MetaNode& node, LPQMXMETA meta);
  MetaOutline(const MetaOutline&) = delete;
  MetaOutline& operator=(const MetaOutline&) = delete;

  // Whether an entry with a structure shares its name or id with another entry: then rules may compare different structures.
  bool has_ambiguous_structure() const { return has_ambiguous_structure_; }

  // The entries that an excerpt contains because of these: the changed entries, the old entries whose structures change, all that
  // they depend on, keys, columns, sort fields, and the entries that stand for runs. Logarithmic in the number of others.
  EntryPart PartWith(const std::vector<Slot>& changed, const std::vector<Slot>& with_changed_structure) const;

  // The meta with the entries of a part.
  std::unique_ptr<MetaExcerpt> Cut(const EntryPart& part) const;

 private:
  bool HasStructure(Slot slot) const;
  template <class Key, class Take>
  void ForEachKey(Key EntryModel::*key, Take take) const;
  void LinkEqualNames();
  void LinkEqualIds();
  void LinkEqual(Slot a, Slot b);
  void LinkCounters(const References& references, bool is_new);
  void ListFixed();
  void AddLinked(std::vector<Slot>& slots) const;
  void AddRun(Slot begin, Slot end, std::vector<Slot>& slots) const;
  EntryModel EntryFor(const EntryModel& entry, Slot slot, Slot next) const;

  const MetaModel& old_meta_;
  std::optional<MatchedMetas> own_pair_;  // with itself, if the node has no pair
  const MatchedMetas& pair_;
  MetaModel old_head_;  // the metas without entries
  MetaModel new_head_;
  std::vector<std::uint64_t> ends_;                        // of each old entry: bytes up to its end
  std::unordered_map<Slot, std::vector<Slot>> linked_;     // entries without which an entry would mean something else
  std::unordered_map<Slot, std::vector<Slot>> referrers_;  // of each counter
  std::vector<Slot> fixed_;                                // old entries that every excerpt contains
  bool has_ambiguous_structure_ = false;
};

}  // namespace korvel
