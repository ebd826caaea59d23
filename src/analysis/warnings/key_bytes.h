// Finds changes of structures in keys that give the keys of old records other bytes. The checker compares only their sizes.
#pragma once

#include <vector>

#include "analysis/diff/edit.h"
#include "analysis/warnings/entry_finder.h"

namespace korvel {

// The first change of a structure in a key; members as those of AdviceMatch.
struct KeyDifference {
  EditKind kind;
  LPQMXMETA old_meta;
  LPQMXMETA new_meta;
  LPQMXMETAENTRY old_entry;
  LPQMXMETAENTRY new_entry;
};

// At most one difference for each member of the table's keys. The bytes of a key are those of its fields in order: numbers, texts
// in their length, the elements of fields, and in a union the name of the field that it contains. Which fields a key has is not
// compared, nor which field counts elements.
std::vector<KeyDifference> CompareKeyStructures(RecordForm form, LPQMXMETA old_table, LPQMXMETA new_table);

}  // namespace korvel
