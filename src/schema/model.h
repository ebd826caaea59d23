// A library as far as one table reaches, as plain values: what edits are made on.
//
// Holds what schema files can say, and that alone. The checker never sees a model: Build makes a library of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "schema/source.h"

namespace korvel {

struct EntryModel {
  std::string name;
  std::string type;        // of schema files: a simple type or the name of a meta
  std::uint64_t size = 0;  // bytes of one element; of "string" and "bytes" only, else 0
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
  std::uint32_t position = 0;  // in the library it was read from; no part of what it is

  bool operator==(const MetaModel& other) const;
};

struct Model {
  std::string name;
  std::int32_t version = 0;
  qmx::Protocol protocol = qmx::Protocol::kUnset;
  std::vector<MetaModel> metas;  // the table first, then those it reaches, in the order in which a walk meets them

  bool operator==(const Model&) const = default;
};

// How much there is to look at: structures, entries, key members, indexes and columns.
std::size_t PartsOf(const Model& model);

// A library without its metas.
Model HeadOf(LPQMXMETALIB library);

// A meta as it stands in its library, references that no schema file could say and all. Its position is not looked for.
MetaModel MetaOf(LPQMXMETALIB library, LPQMXMETA meta);

// The model of one table of a library. REQUIRES: the source has the meta. Linear in what the table reaches.
Model ModelOf(const Source& source, const std::string& table);

// The library that a model describes; nullopt if none can be laid out: a structure that contains itself, a size that does not
// fit. What refers to a field that is not there or can hold no count, loses the reference: a key member or column of no entry is
// left out, a refer property dropped. So a model in which only some of several related changes are made still is a schema.
std::optional<qmx::Metalib> Build(const Model& model);

}  // namespace korvel
