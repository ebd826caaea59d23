// Which entries and indexes of a file are those of a model.
#pragma once

#include <vector>

#include "analysis/diff/alignment.h"
#include "schema/model.h"

namespace korvel {

// Whether an element can become another one without adding or removing children.
inline bool HaveSameShape(const EntryModel&, const EntryModel&) { return true; }
inline bool HaveSameShape(const IndexModel& was, const IndexModel& wanted) { return was.columns.size() == wanted.columns.size(); }

// For each wanted item the present one that can become it, kNoSlot for none. Entries match by name, else by id.
std::vector<Slot> MatchItems(const std::vector<IndexModel>& present, const std::vector<IndexModel>& wanted);
std::vector<Slot> MatchItems(const std::vector<EntryModel>& present, const std::vector<EntryModel>& wanted);

// Whether a part of the entries tells which of the whole list are moved. If one entry passes only one other, either of them may
// count as moved; if several entries pass others, it depends on how many others there are.
bool TellsMoves(const Alignment& part);

}  // namespace korvel
