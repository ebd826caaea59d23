// Positions of entries, key members, indexes and columns by name or id: always the first that matches, -1 if none does. A missing
// name matches nothing, and what cannot be had is passed over.
#pragma once

#include "common/call_memory.h"
#include "qmx/qmx_types.h"

namespace korvel {

// `count` is the meta's number of entries, asked for once by the caller.
int PositionByName(LPQMXMETA meta, int count, const char* name);
int PositionById(LPQMXMETA meta, int count, int id);
int PositionByIdAndName(LPQMXMETA meta, int count, int id, const char* name);

// By name among the entries before the first that cannot be had.
int PositionUpToMissing(LPQMXMETA meta, const char* name);

// What two metas begin with, where fields are matched by name, or by id: see common_prefix.h. Belongs to the running call.
// REQUIRES: no null.
const CommonPrefix* PrefixByName(LPQMXMETA old_meta, LPQMXMETA new_meta);
const CommonPrefix* PrefixById(LPQMXMETA old_meta, LPQMXMETA new_meta);

// Whether an entry of that name forms a member of the primary key. REQUIRES: the meta has one.
bool IsPrimaryKeyName(LPQMXMETA meta, const char* name);

// The first index of that name; null if there is none.
LPQMXMETAINDEX IndexByName(LPQMXMETA meta, const char* name);

// Whether an entry of that name forms a column of the index.
bool IsColumnName(LPQMXMETA meta, LPQMXMETAINDEX index, const char* name);

}  // namespace korvel
