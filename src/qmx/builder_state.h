// State and steps of the builder while it lays out a library.
//
// A meta is written to the block while it is declared: its record and entries immediately, the rest when it is closed. Only what
// depends on the whole library is kept separately: the meta of each composite entry, and the sizes that depend on it.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/name_index.h"
#include "qmx/block.h"
#include "qmx/qmx_builder.h"

namespace qmx {

// No meta.
inline constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

// Position in a list of declarations. 32 bits are enough for every library that fits in memory.
inline std::uint32_t Position(std::size_t position) { return static_cast<std::uint32_t>(position); }

// Texts, each followed by a zero, found by their start.
class Texts {
 public:
  using Place = std::int64_t;

  Place Add(std::string_view text) {
    const auto place = static_cast<Place>(bytes_.size());
    bytes_.append(text).push_back('\0');
    return place;
  }

  std::string_view At(Place place) const { return bytes_.data() + place; }
  std::string_view bytes() const { return bytes_; }
  void Clear() { bytes_.clear(); }

 private:
  std::string bytes_;
};

// What is known of an entry only after all metas are known.
struct CompositeEntry {
  std::uint32_t meta;
  std::uint32_t entry;
  Texts::Place type;                // its name, in `types`
  std::uint32_t type_meta = kNone;  // set by ResolveTypes; kNone again if it closes a cycle
};

// The parts of the meta being declared that are not in the block yet.
struct OpenMeta {
  struct Refer {
    std::uint32_t entry;
    Texts::Place name;
  };
  struct Index {
    Texts::Place name;  // in `texts`
    std::size_t first_column;
  };
  struct Column {
    Texts::Place entry;
    bool descending;
  };

  bool is_open = false;
  std::size_t first_composite = 0;  // of this meta, in Library::composites
  Texts texts;  // for the block; ptrName and ptrCustomAttr are relative to their start until the meta is closed
  Texts words;  // names of entries that something refers to
  korvel::NameIndex entry_names, index_names;
  std::vector<Refer> refers;
  std::vector<Texts::Place> primary_key, splittable_key;
  std::vector<Index> indexes;
  std::vector<Column> columns;
};

// Collects what cannot be laid out, at most kMaxErrors faults.
class BuildErrors {
 public:
  // Faults of one element are reported in this order, no matter when they are found.
  enum class Stage : std::uint8_t { kTypes, kNames, kSizes, kKeys };

  void Add(Stage stage, const ElementId& where, std::string_view attribute, std::string text);

  // Adds a fault: entry `where`, named `name`, cannot be counted by the entry that it refers to.
  void AddRefer(const ElementId& where, std::string_view name, const std::string& refers_to);

  // Whether nothing more would be reported, so that the search for faults can stop early.
  bool IsFull() const { return errors_.size() == kMaxErrors; }

  // In declaration order.
  std::vector<BuildError> Take();

 private:
  std::vector<std::pair<Stage, BuildError>> errors_;
};

// An entry whose elements are to be counted by an earlier composite entry: a separate fault only if the type of that entry is
// known. Stored as positions because there may be as many as entries.
struct ReferToComposite {
  std::size_t composite;
  std::uint32_t entry;  // of the same meta
};

struct Library {
  std::string name;
  std::int32_t version = 0;
  Protocol protocol = Protocol::kUnset;
  Block block;
  std::vector<std::int64_t> metas;       // offsets of their records
  std::vector<Texts::Place> meta_names;  // in `names`
  Texts names;
  korvel::NameIndex meta_index;
  std::vector<CompositeEntry> composites;  // in declaration order
  Texts types;
  OpenMeta open;
  std::vector<ReferToComposite> refers_to_composites;
  BuildErrors errors;

  tagQMXMeta& Meta(std::uint32_t meta) { return block.At<tagQMXMeta>(metas[meta]); }
  tagQMXMetaEntry& Entry(std::uint32_t meta, std::uint32_t entry) {
    return block.At<tagQMXMetaEntry>(metas[meta] + static_cast<std::int64_t>(sizeof(tagQMXMeta)), entry);
  }
  std::uint32_t EntryNum(std::uint32_t meta) { return static_cast<std::uint32_t>(Meta(meta).iEntriesNum); }
  std::string_view MetaName(std::uint32_t meta) const { return names.At(meta_names[meta]); }
  // The record of a closed meta.
  std::string_view EntryName(std::uint32_t meta, std::uint32_t entry) { return block.Text(Entry(meta, entry).ptrName); }
};

// Number of elements for computing sizes: 0 for a negative count.
inline std::uint64_t Elements(const tagQMXMetaEntry& entry) {
  return entry.iCount < 0 ? 0 : static_cast<std::uint64_t>(entry.iCount);
}

// Closes the last declared meta, if it is open: resolves the names inside it and appends its remaining parts to the block.
void CloseMeta(Library& library);

// Finds the metas of composite entries.
void ResolveTypes(Library& library);

// Computes sizes and nesting of the metas that have composite entries. Skips entries without a type.
void SizeComposites(Library& library);

// Sums up the size of a meta and places its keys. REQUIRES: each of its entries has its size.
void SizeMeta(Library& library, std::uint32_t position);

}  // namespace qmx
