// Read operations over loaded schema libraries.
//
// The checker calls these operations (except qmx_get_meta_num and qmx_get_meta_by_index, which the tool needs) and reads some
// members of qmx_types.h; a store with its own library provides them instead of src/qmx. They throw nothing and change nothing. A
// handle must be null or point into a well-formed library that outlives the returned pointers; every returned pointer is borrowed
// from that library. All take constant time unless stated otherwise.
#pragma once

#include <cstddef>

#include "qmx/qmx_types.h"

extern "C" {

// Version number of the library; -1 for a null library.
int qmx_get_metalib_version(LPQMXMETALIB metalib);

// The meta with that name, the first one if several share it; null if there is none or an argument is null. Linear in the length
// of the name, independent of the number of metas.
LPQMXMETA qmx_get_meta_by_name(LPQMXMETALIB metalib, const char* name);

// Number of metas, and the meta at a 0-based position in declaration order; 0 and null out of range.
int qmx_get_meta_num(LPQMXMETALIB metalib);
LPQMXMETA qmx_get_meta_by_index(LPQMXMETALIB metalib, int index);

// Name of a meta; null for a null or nameless meta.
const char* qmx_get_meta_name(LPQMXMETA meta);

// Table attributes ("TableType=LIST;ListNum=1024") of a meta; null if it has none.
const char* qmx_get_meta_customattr(LPQMXMETA meta);

// Writes the names of the splittable key's entries, in order, joined by commas, into buffer[0, size) with a terminating zero.
// Returns 0 on success. Returns non-zero if the meta is null or has no splittable key, or if the text does not fit; then *error
// is set to a constant text, unless error is null, and buffer[0] is zero if size permits. Linear in the members of the key.
int qmx_get_meta_splittablekey(LPQMXMETA meta, char* buffer, std::size_t size, char** error);

// Number of entries of a meta, and the entry at a 0-based position in declaration order; 0 and null out of range.
int qmx_get_entry_num(LPQMXMETA meta);
LPQMXMETAENTRY qmx_get_entry_by_index(LPQMXMETA meta, int index);

// Name of an entry; null for a null or nameless entry.
const char* qmx_get_entry_name(LPQMXMETAENTRY entry);

// Id of an entry; -1 if the schema gives none.
int qmx_get_entry_id(LPQMXMETAENTRY entry);

// Version of the library in which the entry first appeared.
int qmx_get_entry_version(LPQMXMETAENTRY entry);

// Type code (enQMXType): 0 and 1 are composite. QMX_TYPE_NONE for a null entry.
int qmx_get_entry_type(LPQMXMETAENTRY entry);

// The meta that describes a composite entry's value; null for a simple or null entry. `metalib` owns the entry.
LPQMXMETA qmx_get_entry_type_meta(LPQMXMETALIB metalib, LPQMXMETAENTRY entry);

// Size of one element in bytes.
std::size_t qmx_get_entry_unitsize(LPQMXMETAENTRY entry);

// Number of elements.
int qmx_get_entry_count(LPQMXMETAENTRY entry);

// The entry that holds this entry's element count (its refer property); null if the count is fixed.
LPQMXMETAENTRY qmx_get_entry_refer(LPQMXMETAENTRY entry);

// Second custom attribute of an entry; null if it has none. `metalib` owns the entry.
const char* qmx_get_entry_customattr2(LPQMXMETALIB metalib, LPQMXMETAENTRY entry);

}  // extern "C"
