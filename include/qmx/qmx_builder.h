// Declares a schema library element by element and lays it out in one block.
//
// The builder refuses only what cannot be laid out: references to unknown names, counters that cannot hold a count, structures
// that contain themselves, sizes that overflow, names of metas constructed to collide. It does not check that names are unique or
// legal, that ids are present or that keys make sense; the reader and the rules do that. Tests and other loaders can therefore
// build invalid libraries.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "qmx/qmx_limits.h"
#include "qmx/qmx_source_map.h"
#include "qmx/qmx_types.h"

namespace qmx {

// A simple type of schema files.
struct SimpleType {
  std::string_view name;  // "int32"
  enQMXType code;
  std::uint64_t unit_size;  // bytes; 0 = each entry gives its own ("string", "bytes")
  std::string_view doc;     // one sentence without markup, for editors
};

// All simple types; the type with a given name or code (null if there is none).
const std::array<SimpleType, 14>& SimpleTypes();
const SimpleType* FindSimpleType(std::string_view name);
const SimpleType* FindSimpleType(int code);

// Whether the code is one of the signed or unsigned integer types.
bool IsIntegerType(int code);

enum class Protocol { kUnset, kQmx, kTlv };

// A library and the owner of its block: heap memory or a mapped file. Copies share the block; the handle is valid as long as one
// of them lives.
class Metalib {
 public:
  // REQUIRES: `library` points to a well-formed library of `size` bytes (header included), aligned to 8 bytes, which lives as
  // long as `owner`.
  Metalib(std::shared_ptr<void> owner, LPQMXMETALIB library, std::size_t size)
      : owner_(std::move(owner)), library_(library), size_(size) {}

  LPQMXMETALIB get() const { return library_; }
  std::size_t size() const { return size_; }  // bytes, header included

 private:
  std::shared_ptr<void> owner_;
  LPQMXMETALIB library_;
  std::size_t size_;
};

struct EntryDecl {
  std::string_view name;
  std::string_view type;   // a simple type or, if there is none of that name, a meta of this library
  std::uint64_t size = 0;  // bytes of one element; read for "string" and "bytes" only
  std::int32_t id = -1;    // -1 = none
  std::int32_t version = 1;
  std::int32_t count = 1;
  std::string_view refer = {};  // an integer entry with count 1, declared earlier in the same meta; empty = fixed count
  std::optional<std::string_view> customattr2 = std::nullopt;
};

struct ColumnDecl {
  std::string_view entry;
  bool descending = false;
};

// A declaration that cannot be laid out.
struct BuildError {
  ElementId where;
  std::string_view attribute;  // of schema files: "type", "refer", "entries", "entry", "count", "size"; empty: the element
  std::string text;            // one line, without a location
};

struct BuildResult {
  std::optional<Metalib> metalib;  // set if and only if `errors` is empty
  std::vector<BuildError> errors;  // in declaration order, at most kMaxErrors
};

// Writes declarations into the block immediately; in addition it keeps a few bytes for each name. Copies all texts and borrows
// nothing after a call returns. Names may contain any byte except zero. If a name is declared twice, references mean the first
// one of its kind. Declarations before the first meta are dropped.
class MetalibBuilder {
 public:
  MetalibBuilder(std::string_view name, std::int32_t version, Protocol protocol);
  ~MetalibBuilder();
  MetalibBuilder(const MetalibBuilder&) = delete;
  MetalibBuilder& operator=(const MetalibBuilder&) = delete;

  // Begins a meta; the calls below add to the most recent one. `kind` is QMX_TYPE_STRUCT or QMX_TYPE_UNION. Returns false if
  // there is already a meta with that name.
  bool AddMeta(std::string_view name, enQMXType kind = QMX_TYPE_STRUCT,
               std::optional<std::string_view> customattr = std::nullopt);

  // Returns false if the meta already has an entry with that name.
  bool AddEntry(const EntryDecl& decl);

  // Key members and columns name entries of the meta, which may be added before or afterwards; of several with one name, the
  // first is used. Members of the primary key get QMX_DBFLAG_PRIMARY_KEY. A member may be repeated. Without members there is no
  // key; a second call replaces the key.
  void SetPrimaryKey(const std::vector<std::string_view>& entries);
  void SetSplittableKey(const std::vector<std::string_view>& entries);
  // Returns false if the meta already has an index with that name.
  bool AddIndex(std::string_view name, const std::vector<ColumnDecl>& columns);

  // Resolves all references and returns the library. Linear in the declarations. Afterwards the builder can only be destroyed.
  BuildResult Finish();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace qmx
