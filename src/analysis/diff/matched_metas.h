// A meta of both sides: how its entries and indexes match, and the meta that results from some of its edits.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "analysis/diff/alignment.h"
#include "analysis/diff/edit.h"
#include "schema/declaration.h"

namespace korvel {

// Edit kinds as bits.
using EditKinds = std::uint32_t;
constexpr EditKinds Bit(EditKind kind) { return EditKinds{1} << static_cast<unsigned>(kind); }

// A member of a key or a column of an index.
struct Member {
  Slot entry = kNoSlot;
  bool descending = false;

  bool operator==(const Member&) const = default;
};
using Members = std::vector<Member>;

// The references of one side as slots, because names may change and may be duplicates.
struct References {
  std::vector<Slot> refers;  // of each entry; kNoSlot = fixed count
  Members primary_key;
  Members splittable_key;
  std::vector<Members> columns;  // of each index
};

// The edits of a meta to apply.
struct ChosenEdits {
  EditKinds meta = 0;
  std::vector<EditKinds> entries;            // by slot
  std::vector<EditKinds> indexes;            // by slot
  std::vector<std::string_view> attributes;  // keys of customattr
};

// Some of the entries of two metas, both lists ascending. Has both sides of an entry that both sides have, or neither.
struct EntryPart {
  std::vector<Slot> old_slots;
  std::vector<Slot> new_positions;
};

// Borrows both metas. Immutable; threads may use one pair at the same time.
class MatchedMetas {
 public:
  // `id_first`: match entries by id before name. n log n.
  MatchedMetas(const MetaModel& old_meta, const MetaModel& new_meta, bool id_first);
  // The same metas with only some of their entries, matched as in `whole`: see Alignment::Part. References to other entries are
  // dropped.
  MatchedMetas(const MatchedMetas& whole, const EntryPart& part, const MetaModel& old_meta, const MetaModel& new_meta);

  const MetaModel& old_meta() const { return *old_; }
  const MetaModel& new_meta() const { return *new_; }
  const Alignment& entries() const { return entries_; }
  const Alignment& indexes() const { return indexes_; }
  const References& old_references() const { return old_references_; }
  const References& new_references() const { return new_references_; }

  const EntryModel& OldEntry(Slot slot) const { return old_->entries[slot]; }
  const EntryModel& NewEntry(Slot slot) const { return new_->entries[entries_.NewPosition(slot)]; }
  const IndexModel& OldIndex(Slot slot) const { return old_->indexes[slot]; }
  const IndexModel& NewIndex(Slot slot) const { return new_->indexes[indexes_.NewPosition(slot)]; }

  // A list of the old side without removed entries.
  Members WithoutRemoved(const Members& members) const;
  // A reference of the old side; kNoSlot if the entry is removed.
  Slot WithoutRemoved(Slot slot) const { return slot == kNoSlot || entries_.IsRemoved(slot) ? kNoSlot : slot; }

  // The old meta after the chosen edits. Borrows from both sides. Linear.
  MetaDecl Make(const ChosenEdits& chosen) const;

 private:
  class Maker;

  const MetaModel* old_;
  const MetaModel* new_;
  Alignment entries_;
  Alignment indexes_;
  References old_references_;
  References new_references_;
};

// The entries that keys and indexes of either side name, in no order; some of them several times.
std::vector<Slot> SlotsInKeys(const MatchedMetas& pair);

}  // namespace korvel
