// Finds entries that have probably been renamed, among those that match neither by name nor by id.
#pragma once

#include <vector>

#include "analysis/diff/alignment.h"
#include "schema/model.h"

namespace korvel {

// Whether two entries differ only by their names, and by those of their counters.
bool DifferOnlyByName(const EntryModel& a, const EntryModel& b);

// Gives new entries without a partner the old one under whose name they probably were: both follow the same entry or are followed
// by the same one, differ only by their names, and the names are similar (SpellingDistance). Of several such entries, the most
// similar ones are partners. As for Alignment, `partners` has an old position for each new entry. n log n.
void PairRenamed(const std::vector<EntryModel>& old_entries, const std::vector<EntryModel>& new_entries,
                 std::vector<Slot>& partners);

}  // namespace korvel
