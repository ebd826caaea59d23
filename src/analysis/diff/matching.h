// Matches the entries and indexes of two metas.
#pragma once

#include <vector>

#include "analysis/diff/alignment.h"
#include "schema/model.h"

namespace korvel {

// For each new entry the position of the matching old one, kNoSlot if there is none. Entries match by name and id; the others by
// name, then by id, or by id first. Entries with the same name or id match in order. n log n.
std::vector<Slot> MatchEntries(const MetaModel& old_meta, const MetaModel& new_meta, bool id_first);

// The same for indexes, which match by name.
std::vector<Slot> MatchIndexes(const MetaModel& old_meta, const MetaModel& new_meta);

}  // namespace korvel
