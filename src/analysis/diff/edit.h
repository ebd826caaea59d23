// A single change of a schema: of one attribute, one field, one key. Plain data; diff.h finds edits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/limits.h"
#include "schema/source.h"

namespace korvel {

// The names (NameOf) are part of fingerprints: do not change what a name means.
enum class EditKind : std::uint8_t {
  // Of the library.
  kLibraryName,
  kLibraryVersion,
  kLibraryProtocol,
  // Of a meta.
  kTableAdded,      // only in advice: a difference is that of a table which both schemas have
  kMetaRenamed,     // of a structure, also in the types of entries
  kMetaKind,        // struct <-> union
  kTableAttribute,  // one key of customattr ("ListNum"); or all of it where it does not split into key=value pairs
  kPrimaryKey,      // its members, except for consequences of removed and renamed entries
  kSplittableKey,   // likewise
  kIndexAdded,
  kIndexRemoved,
  kIndexColumns,  // columns, their order and directions
  kIndexMoved,
  // Of an entry.
  kEntryAdded,
  kEntryRemoved,
  kEntryRenamed,
  kEntryMoved,
  kEntryId,
  kEntryVersion,
  kEntryType,  // simple type to another, simple to composite or back
  kEntrySize,  // of "string" and "bytes"
  kEntryCount,
  kEntryRefer,
  kEntryCustomAttr2,
  kEntryMeta,  // a composite entry has another meta
};

// "entry-added"
std::string_view NameOf(EditKind kind);

// Whether an edit changes an entry: adds, removes, renames or moves it, or changes one of its attributes.
constexpr bool IsOfEntry(EditKind kind) { return kind >= EditKind::kEntryAdded; }

struct Edit {
  EditKind kind = EditKind::kLibraryVersion;
  std::string meta;  // structure whose declaration changes; empty for the library
  // What changes in the structure: the entry, the index, the key of customattr; else empty. The new name of an added item, the
  // old name of every other item.
  std::string item;
  // Values as in schema files, "" for an absent value, two quotes for an empty attribute: "uint32", "string(32)", "5", "uid
  // zone". For an added or removed item its type or columns ("zone desc, uid"). For a moved item the entry or index before it, ""
  // at the front.
  std::string before;
  std::string after;
  // The first kMaxPaths paths from the table to the changed item on the old side, in field order: "orders.items[].price",
  // "orders" for the table itself, its keys and indexes, "" for the library.
  std::vector<std::string> paths;
  std::size_t path_count = 0;  // of all paths; 1 unless the meta is embedded more than once. Counted up to 2^32
  Location old_location;       // nowhere for an added item
  Location new_location;       // for a removed item, the element that contained it
  std::string reuse = {};      // of an entry whose id another field has taken: see IdReuse
};

// An attribute in the form of `before` and `after`.
inline std::string ValueText(std::string_view text) { return text.empty() ? "\"\"" : std::string(text); }

// Whether the new side has no such element any more; then `new_location` is the element that contained it.
bool RemovesElement(const Edit& edit);

// One line: "type of uid: uint32 -> uint64", "field note added", "field zone moved after n_items", "field guild removed; its id 3
// is reused by clan (uint32)". Advice about a table that is
// checked alone has edits of attributes with one value on both sides: "attribute ListNum of orders: 5".
std::string Describe(const Edit& edit);

// The same in a list about `table`. An item of another structure has its name in front: "type of item.price: int32 -> int64".
std::string DescribeIn(const std::string& table, const Edit& edit);

}  // namespace korvel
