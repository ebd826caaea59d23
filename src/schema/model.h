// A table and the structures that it reaches, as plain values that can be edited.
//
// Contains only what schema files can express. The checker is not run on models: Build makes a library of a model.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "schema/source.h"

namespace korvel {

struct EntryModel {
  std::string name;
  std::string type;        // of schema files: a simple type or the name of a meta
  std::uint64_t size = 0;  // bytes of one element for "string" and "bytes"; else 0
  std::int32_t id = -1;    // -1 = none
  std::int32_t version = 1;
  std::int32_t count = 1;
  std::string refer = {};  // empty = fixed count
  std::optional<std::string> customattr2 = {};

  bool operator==(const EntryModel&) const = default;
};

struct ColumnModel {
  std::string entry;
  bool descending = false;

  bool operator==(const ColumnModel&) const = default;
};

struct IndexModel {
  std::string name;
  std::vector<ColumnModel> columns;

  bool operator==(const IndexModel&) const = default;
};

struct MetaModel {
  std::string name;
  enQMXType kind = QMX_TYPE_STRUCT;
  std::optional<std::string> customattr = {};
  std::vector<EntryModel> entries = {};
  std::vector<std::string> primary_key = {};
  std::vector<std::string> splittable_key = {};
  std::vector<IndexModel> indexes = {};
  std::uint32_t position = 0;  // in the library that it was read from; not compared

  bool operator==(const MetaModel& other) const;
};

struct Model {
  std::string name;
  std::int32_t version = 0;
  qmx::Protocol protocol = qmx::Protocol::kUnset;
  std::vector<MetaModel> metas;  // the table first, then those that it reaches, depth first in field order

  bool operator==(const Model&) const = default;
};

// The size of a model: the number of its structures, entries, key members, indexes and columns.
std::size_t PartsOf(const Model& model);

// Name, version and protocol of a library, without metas. Constant time.
Model HeadOf(LPQMXMETALIB library);

// A meta exactly as in its library, including references that no schema file could express. `position` stays 0. Linear.
MetaModel MetaOf(LPQMXMETALIB library, LPQMXMETA meta);

// The model of one table of a library. REQUIRES: the source has the meta. Linear in what the table reaches.
Model ModelOf(const Source& source, const std::string& table);

// The library that a model describes; nullopt if it cannot be laid out: a structure contains itself, or a size is too large. Key
// members and columns without entry are left out, and so are refer properties without a valid counter: a model with only some of
// several related edits still makes a library. n log n.
std::optional<qmx::Metalib> Build(const Model& model);

// The metas of a source as models, each read when it is needed first. Borrows the source. Not for several threads at once.
class MetaCache {
 public:
  explicit MetaCache(const Source& source) : source_(source), head_(HeadOf(source.Library())) {}

  // Null if the source has no meta of the name. Valid as long as the cache.
  const MetaModel* Find(const std::string& name);

  // The library without its metas.
  const Model& head() const { return head_; }

 private:
  const Source& source_;
  Model head_;
  std::map<std::string, std::optional<MetaModel>> metas_;
};

}  // namespace korvel
