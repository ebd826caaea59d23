// What the builder knows while it lays a library out, and the steps that do it.
//
// A meta goes into the block while it is declared: its record and entries at once, the rest when it is closed. Only what must
// wait for the whole library is kept beside the block: which meta an entry of a composite type means, and so the sizes that hang
// on it.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qmx/block.h"
#include "qmx/name_index.h"
#include "qmx/qmx_builder.h"

namespace qmx {

// No meta.
inline constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

// Position in a list of declarations. No library that fits the memory holds more.
inline std::uint32_t Position(std::size_t position) { return static_cast<std::uint32_t>(position); }

// Texts one after the other, each with a zero behind it, found by where they begin.
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

// What can be said of an entry only when all metas are known.
struct CompositeEntry {
  std::uint32_t meta;
  std::uint32_t entry;
  Texts::Place type;                // its name, in `types`
  std::uint32_t type_meta = kNone;  // set by ResolveTypes; kNone again if it closes a cycle
};

// The parts of the meta that is being declared that are not in the block yet.
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
  Texts texts;                      // for the block; ptrName and ptrCustomAttr count from their start until the meta is closed
  Texts words;                      // names of entries that something refers to
  NameIndex entry_names, index_names;
  std::vector<Refer> refers;
  std::vector<Texts::Place> primary_key, splittable_key;
  std::vector<Index> indexes;
  std::vector<Column> columns;
};

// Collects what cannot be laid out, at most kMaxErrors of it.
class BuildErrors {
 public:
  // Faults of one element are told in this order, whenever they are found.
  enum class Stage : std::uint8_t { kTypes, kNames, kSizes, kKeys };

  void Add(Stage stage, const ElementId& where, std::string_view attribute, std::string text);

  // Adds that the entry `where`, called `name`, cannot be counted by what it refers to.
  void AddRefer(const ElementId& where, std::string_view name, const std::string& refers_to);

  // Whether nothing more would be reported, so that the search for faults can end: it would only cost time.
  bool IsFull() const { return errors_.size() == kMaxErrors; }

  // In declaration order.
  std::vector<BuildError> Take();

 private:
  std::vector<std::pair<Stage, BuildError>> errors_;
};

// An entry whose elements a composite one before it shall count: a fault of its own only if the type of that one is known. Held
// as positions, for there may be as many as entries.
struct ReferToComposite {
  std::size_t composite;
  std::uint32_t entry;  // of the same meta
};

struct Library {
  std::string name;
  std::int32_t version = 0;
  Protocol protocol = Protocol::kUnset;
  Block block;
  std::vector<std::int64_t> metas;       // where their records lie
  std::vector<Texts::Place> meta_names;  // in `names`
  Texts names;
  NameIndex meta_index;
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
  // Of a closed meta.
  std::string_view EntryName(std::uint32_t meta, std::uint32_t entry) { return block.Text(Entry(meta, entry).ptrName); }
};

// Number of elements for sizes: a count below zero has no elements.
inline std::uint64_t Elements(const tagQMXMetaEntry& entry) {
  return entry.iCount < 0 ? 0 : static_cast<std::uint64_t>(entry.iCount);
}

// Closes the meta that was declared last, if one is open: resolves the names inside it and appends what the block lacks of it.
void CloseMeta(Library& library);

// Finds the metas of composite entries.
void ResolveTypes(Library& library);

// Sizes the metas that have composite entries and looks at their nesting. An entry without a type is passed over.
void SizeComposites(Library& library);

// Sums up the size of a meta and places its keys. REQUIRES: each of its entries has its size.
void SizeMeta(Library& library, std::uint32_t position);

}  // namespace qmx
