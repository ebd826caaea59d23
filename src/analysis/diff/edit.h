// A single change of a schema, as people make them: one attribute, one field, one key.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/limits.h"
#include "schema/source.h"

namespace korvel {

// Fingerprints are made of the names: an id never changes its meaning.
enum class EditKind : std::uint8_t {
  // Of the library.
  kLibraryName,
  kLibraryVersion,
  kLibraryProtocol,
  // Of a meta.
  kMetaKind,        // struct <-> union
  kTableAttribute,  // one key of customattr ("ListNum"); or all of it where it does not split into key=value pairs
  kPrimaryKey,      // its members, beyond what removed and renamed entries bring about
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

struct Edit {
  EditKind kind = EditKind::kLibraryVersion;
  std::string meta;  // structure whose declaration changes; empty for the library
  // What changes in it: the entry, the index, the key of customattr; empty for the others. The new name of what was added, the
  // old one of everything else.
  std::string item;
  // As schema files say it, "" where there is none, two quotes for an empty attribute: "uint32", "string(32)", "5", "uid zone".
  // Of what was added or removed its type or columns ("zone desc, uid"). Of what is moved the entry or index behind which it
  // stands, "" at the front.
  std::string before;
  std::string after;
  // The ways from the table to the place as the old side has them, in the order of the fields, at most kMaxPaths:
  // "orders.items[].price", "orders" for the table itself, its keys and indexes, "" for the library.
  std::vector<std::string> paths;
  std::size_t path_count = 0;  // of all ways; 1 unless the meta is embedded more than once. Counted up to 2^32
  Location old_location;       // nowhere for what was added
  Location new_location;       // for what was removed, the nearest element that encloses its place
};

// An attribute as `before` and `after` say it.
inline std::string ValueText(std::string_view text) { return text.empty() ? "\"\"" : std::string(text); }

// Whether the element that it is about is gone from the new side, whose place then is that of what encloses it.
bool TakesElementAway(const Edit& edit);

// One line: "type of uid: uint32 -> uint64", "field note added", "field zone moved behind n_items".
std::string Describe(const Edit& edit);

}  // namespace korvel
