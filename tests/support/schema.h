// Schema libraries as values: declared, changed and copied freely, built when a test needs them. Pokes then set what no builder
// would: missing names and structures, counts without lists, odd flag words.
//
// The usual names are "mall%s", "shop%s" (tables) and "box%s", "bag%s" (structures inside them): a name that is wrongly used as a
// format becomes visible. LongNames makes exactly these four too long for the checker's buffer.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "qmx/qmx_builder.h"
#include "qmx/qmx_types.h"

namespace support {

struct Field {
  std::string name = {};
  std::string type = "uint32";
  std::uint64_t size = 0;  // of "string" and "bytes"
  std::int32_t id = -1;
  std::int32_t version = 1;
  std::int32_t count = 1;
  std::string refer = {};
  std::optional<std::string> attr2 = std::nullopt;
};

struct Column {
  Column(const char* column_entry, bool is_descending = false) : entry(column_entry), descending(is_descending) {}
  std::string entry;
  bool descending;
};

struct Index {
  std::string name;
  std::vector<Column> columns;
};

struct Table {
  std::string name = "mall%s";
  std::vector<Field> fields = {};
  std::vector<std::string> key = {};
  std::vector<std::string> split = {};
  std::vector<Index> indexes = {};
  std::optional<std::string> attr = std::nullopt;
  enQMXType kind = QMX_TYPE_STRUCT;
};

class Schema;
using Poke = std::function<void(const Schema&)>;

struct Library {
  int version = 5;
  qmx::Protocol protocol = qmx::Protocol::kQmx;
  std::vector<Table> tables = {};
  std::vector<Poke> pokes = {};
  bool absent = false;  // a null library

  // If the builder refuses the library, the test program ends with its errors.
  Schema Build() const;

  // This library with one more poke.
  Library With(Poke poke) const;
};

// A library of these tables, version 5, in the record format.
Library Of(std::vector<Table> tables);

// No library: every handle is null.
Library Absent();

// A library in memory. Tables and entries are found by their declared names, even if a poke changed them.
class Schema {
 public:
  Schema(Library declared, std::optional<qmx::Metalib> block) : declared_(std::move(declared)), block_(std::move(block)) {}

  LPQMXMETALIB Lib() const { return block_ ? block_->get() : nullptr; }
  LPQMXMETA Meta() const;  // of the first table; null for an absent library
  LPQMXMETA Meta(const std::string& table) const;
  LPQMXMETAENTRY Entry(const std::string& table, const std::string& field) const;
  LPQMXMETAINDEX IndexAt(const std::string& table, int position) const;
  LPQMXDBKEYINFO KeyMember(const std::string& table, int position) const;
  LPQMXCOLUMNINFO ColumnAt(const std::string& table, int index, int position) const;

  // The whole block, for tests that nothing writes to it.
  std::string Bytes() const;

 private:
  std::size_t Position(const std::string& table) const;

  Library declared_;
  std::optional<qmx::Metalib> block_;
};

Poke NoTableName(const std::string& table);
Poke NoName(const std::string& table, const std::string& field);
Poke NoStructure(const std::string& table, const std::string& field);  // a composite entry without its meta
Poke KeyList(const std::string& table, std::int64_t reference, std::int16_t count);
Poke Flag(std::int64_t word);
Poke DBFlag(const std::string& table, const std::string& field, std::uint8_t flags);
Poke UnitSize(const std::string& table, const std::string& field, std::uint64_t bytes);
Poke Count(const std::string& table, const std::string& field, std::int32_t count);
Poke EntryNumber(const std::string& table, std::int32_t count);

// During its lifetime, every library is built with the four usual names extended by 1,100 bytes.
class LongNames {
 public:
  LongNames();
  ~LongNames();
  LongNames(const LongNames&) = delete;
  LongNames& operator=(const LongNames&) = delete;
};

// The name with which a table is built now.
std::string TableName(const std::string& name);

// `text` with every usual table name replaced by its long form.
std::string Lengthened(std::string text);

}  // namespace support
