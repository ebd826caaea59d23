// Declares a schema library piece by piece and lays it into one block.
//
// The builder refuses only what cannot be laid out: names that refer to nothing, counts held by what cannot hold a count,
// structures that contain themselves, sizes that do not fit, names of metas made to collide. Whether names are unique or legal,
// ids present and keys sensible is the reader's and the rules' business, so tests and other loaders can build odd libraries on
// purpose.
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
};

// All simple types, and the one of a name or code (null if there is none).
const std::array<SimpleType, 14>& SimpleTypes();
const SimpleType* FindSimpleType(std::string_view name);
const SimpleType* FindSimpleType(int code);

// Whether the code is one of the signed or unsigned integer types.
bool IsIntegerType(int code);

enum class Protocol { kUnset, kQmx, kTlv };

// One library and what keeps its block alive: memory of its own or a mapped file. Copies share the block; the handle stays valid
// while one of them lives.
class Metalib {
 public:
  // REQUIRES: a well-formed library of `size` bytes (header included) stands at `library`, aligned to 8 bytes, as long as `owner`
  // lives.
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
  std::string_view refer = {};  // an integer entry with count 1 declared earlier in the same meta; empty = fixed count
  std::optional<std::string_view> customattr2 = std::nullopt;
};

struct ColumnDecl {
  std::string_view entry;
  bool descending = false;
};

// Something that cannot be laid out.
struct BuildError {
  ElementId where;
  std::string_view attribute;  // of schema files: "type", "refer", "entries", "entry", "count", "size"; empty: the element
  std::string text;            // one line, without a place
};

struct BuildResult {
  std::optional<Metalib> metalib;  // set if and only if `errors` is empty
  std::vector<BuildError> errors;  // in declaration order, at most kMaxErrors
};

// Declarations go into the block as they come; beside it stand a few bytes for each name. Every text is copied; nothing is
// borrowed after a call returns. Names may be any bytes but zero. A name that stands twice means the first of its kind. What is
// added before the first meta is dropped.
class MetalibBuilder {
 public:
  MetalibBuilder(std::string_view name, std::int32_t version, Protocol protocol);
  ~MetalibBuilder();
  MetalibBuilder(const MetalibBuilder&) = delete;
  MetalibBuilder& operator=(const MetalibBuilder&) = delete;

  // Begins a meta; the calls below add to the meta begun last. `kind` is QMX_TYPE_STRUCT or QMX_TYPE_UNION.
  // False if a meta of that name stood before.
  bool AddMeta(std::string_view name, enQMXType kind = QMX_TYPE_STRUCT,
               std::optional<std::string_view> customattr = std::nullopt);

  // False if an entry of that name stood before in the meta.
  bool AddEntry(const EntryDecl& decl);

  // Key members and columns name entries of the meta, which may be added before or after; the first of a name is meant.
  // Members of the primary key get QMX_DBFLAG_PRIMARY_KEY. A member may stand twice. No members, no key; a second call replaces
  // the key.
  void SetPrimaryKey(const std::vector<std::string_view>& entries);
  void SetSplittableKey(const std::vector<std::string_view>& entries);
  // False if an index of that name stood before in the meta.
  bool AddIndex(std::string_view name, const std::vector<ColumnDecl>& columns);

  // Resolves what is open and gives the library away. Linear in what was declared. The builder is spent afterwards: only its
  // destruction is left.
  BuildResult Finish();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace qmx
