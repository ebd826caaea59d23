// What the builder has collected, and the steps that turn it into a block: names, sizes, keys, layout.
#pragma once

#include <cstdint>
#include <limits>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qmx/qmx_builder.h"

namespace qmx {

// No meta, no entry.
inline constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

struct DeclaredEntry {
  EntryDecl decl;  // its texts lie in the library's arena
  // Set by ResolveNames:
  std::int32_t type = QMX_TYPE_NONE;
  std::uint32_t type_meta = kNone;  // of a composite entry
  std::uint32_t refer = kNone;      // entry of the same meta
  bool in_primary_key = false;
  // Set by ResolveNames for simple types, by ResolveSizes for composite ones:
  std::uint64_t unit_size = 0;
};

struct DeclaredKey {
  std::vector<std::string_view> names;
  std::vector<std::uint32_t> entries;  // set by ResolveNames
};

struct DeclaredIndex {
  std::string_view name;
  std::vector<ColumnDecl> columns;
  std::vector<std::uint32_t> entries;  // set by ResolveNames
};

struct DeclaredMeta {
  std::string_view name;
  enQMXType kind = QMX_TYPE_STRUCT;
  std::optional<std::string_view> customattr;
  std::vector<DeclaredEntry> entries;
  DeclaredKey primary_key;
  DeclaredKey splittable_key;
  std::vector<DeclaredIndex> indexes;
  // Set by ResolveSizes:
  std::uint64_t unit_size = 0;
  int levels = 0;  // 1 if no entry is composite
};

struct DeclaredLibrary {
  std::pmr::monotonic_buffer_resource arena;  // all texts
  std::string_view name;
  std::int32_t version = 0;
  Protocol protocol = Protocol::kUnset;
  std::vector<DeclaredMeta> metas;
};

// Collects what cannot be laid out, at most kMaxErrors of it.
class BuildErrors {
 public:
  void Add(const ElementId& where, std::string_view attribute, std::string text);

  // Whether nothing more would be reported, so that the search for faults can end: it would only cost time.
  bool IsFull() const { return errors_.size() == kMaxErrors; }

  // In declaration order.
  std::vector<BuildError> Take();

 private:
  std::vector<BuildError> errors_;
};

// Number of elements for sizes: a count below zero has no elements.
inline std::uint64_t Elements(const DeclaredEntry& entry) {
  return entry.decl.count < 0 ? 0 : static_cast<std::uint64_t>(entry.decl.count);
}

// The steps. Each stops where the errors are full.
//
// Finds types, counts and members by name.
void ResolveNames(DeclaredLibrary& library, BuildErrors& errors);

// Sizes every meta and looks at its nesting. A composite entry without a type is passed over.
void ResolveSizes(DeclaredLibrary& library, BuildErrors& errors);

// Refuses what has no place in the records: too many key members, members too far inside a record.
void CheckKeys(const DeclaredLibrary& library, BuildErrors& errors);

// REQUIRES: all of the above found no error.
Metalib LayOut(const DeclaredLibrary& library);

}  // namespace qmx
