// Which entries and indexes of two metas are the same.
#pragma once

#include <vector>

#include "analysis/diff/alignment.h"
#include "schema/model.h"

namespace korvel {

// For each new entry the position of the old one that it is, kNoSlot if it is none. Those of the same name and id first; then by
// name and then by id, or the other way round. Where a name or id stands several times, in order. n log n.
std::vector<Slot> MatchEntries(const MetaModel& old_meta, const MetaModel& new_meta, bool id_first);

// The same for indexes, by name.
std::vector<Slot> MatchIndexes(const MetaModel& old_meta, const MetaModel& new_meta);

}  // namespace korvel
