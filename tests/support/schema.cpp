#include "support/schema.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "qmx/qmx_metalib_kernel.h"

namespace support {
namespace {

const std::vector<std::string>& UsualNames() {
  static const std::vector<std::string> names = {"mall%s", "shop%s", "box%s", "bag%s"};
  return names;
}

const std::string& LongTail() {
  static const std::string tail(1100, 'x');
  return tail;
}

bool names_are_long = false;

std::vector<std::string_view> Views(const std::vector<std::string>& texts) { return {texts.begin(), texts.end()}; }

void AddFields(qmx::MetalibBuilder& builder, const Table& table) {
  for (const Field& field : table.fields) {
    const std::string type = TableName(field.type);
    qmx::EntryDecl entry;
    entry.name = field.name;
    entry.type = type;
    entry.size = field.size;
    entry.id = field.id;
    entry.version = field.version;
    entry.count = field.count;
    entry.refer = field.refer;
    if (field.attr2) entry.customattr2 = *field.attr2;
    builder.AddEntry(entry);
  }
}

void AddTable(qmx::MetalibBuilder& builder, const Table& table) {
  builder.AddMeta(TableName(table.name), table.kind, table.attr ? std::optional<std::string_view>(*table.attr) : std::nullopt);
  AddFields(builder, table);
  if (!table.key.empty()) builder.SetPrimaryKey(Views(table.key));
  if (!table.split.empty()) builder.SetSplittableKey(Views(table.split));
  for (const Index& index : table.indexes) {
    std::vector<qmx::ColumnDecl> columns;
    for (const Column& column : index.columns) columns.push_back({column.entry, column.descending});
    builder.AddIndex(index.name, columns);
  }
}

qmx::Metalib BuildLibrary(const Library& library) {
  qmx::MetalibBuilder builder("lib", library.version, library.protocol);
  for (const Table& table : library.tables) AddTable(builder, table);
  qmx::BuildResult result = builder.Finish();
  if (result.metalib) return std::move(*result.metalib);
  for (const qmx::BuildError& error : result.errors) std::fprintf(stderr, "test schema: %s\n", error.text.c_str());
  std::abort();
}

template <typename Record>
Record* At(void* base, std::int64_t offset, int position) {
  return reinterpret_cast<Record*>(static_cast<char*>(base) + offset) + position;
}

}  // namespace

Schema Library::Build() const {
  if (absent) return Schema(*this, std::nullopt);
  Schema schema(*this, BuildLibrary(*this));
  for (const Poke& poke : pokes) poke(schema);
  return schema;
}

Library Library::With(Poke poke) const {
  Library copy = *this;
  copy.pokes.push_back(std::move(poke));
  return copy;
}

Library Of(std::vector<Table> tables) { return Library{.tables = std::move(tables)}; }

Library Absent() { return Library{.absent = true}; }

std::size_t Schema::Position(const std::string& table) const {
  const auto has_name = [&table](const Table& candidate) { return candidate.name == table; };
  return static_cast<std::size_t>(std::ranges::find_if(declared_.tables, has_name) - declared_.tables.begin());
}

LPQMXMETA Schema::Meta() const { return block_ ? qmx_get_meta_by_index(Lib(), 0) : nullptr; }

LPQMXMETA Schema::Meta(const std::string& table) const { return qmx_get_meta_by_index(Lib(), static_cast<int>(Position(table))); }

LPQMXMETAENTRY Schema::Entry(const std::string& table, const std::string& field) const {
  const std::vector<Field>& fields = declared_.tables.at(Position(table)).fields;
  const auto has_name = [&field](const Field& candidate) { return candidate.name == field; };
  return qmx_get_entry_by_index(Meta(table), static_cast<int>(std::ranges::find_if(fields, has_name) - fields.begin()));
}

LPQMXMETAINDEX Schema::IndexAt(const std::string& table, int position) const {
  return At<tagQMXMetaIndex>(Meta(table), Meta(table)->ptrIndexes, position);
}

LPQMXDBKEYINFO Schema::KeyMember(const std::string& table, int position) const {
  return At<tagQMXDBKeyInfo>(Meta(table), Meta(table)->ptrPrimayKeyBase, position);
}

LPQMXCOLUMNINFO Schema::ColumnAt(const std::string& table, int index, int position) const {
  return At<tagQMXColumnInfo>(Meta(table), IndexAt(table, index)->ptrColumnBase, position);
}

std::string Schema::Bytes() const {
  return block_ ? std::string(reinterpret_cast<const char*>(block_->get()), block_->size()) : std::string();
}

Poke NoTableName(const std::string& table) {
  return [=](const Schema& schema) { schema.Meta(table)->ptrName = QMX_NO_REF; };
}

Poke NoName(const std::string& table, const std::string& field) {
  return [=](const Schema& schema) { schema.Entry(table, field)->ptrName = QMX_NO_REF; };
}

Poke NoStructure(const std::string& table, const std::string& field) {
  return [=](const Schema& schema) { schema.Entry(table, field)->ptrTypeMeta = QMX_NO_REF; };
}

Poke KeyList(const std::string& table, std::int64_t reference, std::int16_t count) {
  return [=](const Schema& schema) {
    schema.Meta(table)->ptrPrimayKeyBase = reference;
    schema.Meta(table)->nPrimayKeyMemberNum = count;
  };
}

Poke Flag(std::int64_t word) {
  return [=](const Schema& schema) { schema.Lib()->iFlag = word; };
}

Poke DBFlag(const std::string& table, const std::string& field, std::uint8_t flags) {
  return [=](const Schema& schema) { schema.Entry(table, field)->chDBFlag = flags; };
}

Poke UnitSize(const std::string& table, const std::string& field, std::uint64_t bytes) {
  return [=](const Schema& schema) { schema.Entry(table, field)->iUnitSize = bytes; };
}

Poke Count(const std::string& table, const std::string& field, std::int32_t count) {
  return [=](const Schema& schema) { schema.Entry(table, field)->iCount = count; };
}

Poke EntryNumber(const std::string& table, std::int32_t count) {
  return [=](const Schema& schema) { schema.Meta(table)->iEntriesNum = count; };
}

LongNames::LongNames() { names_are_long = true; }
LongNames::~LongNames() { names_are_long = false; }

std::string TableName(const std::string& name) {
  const bool is_usual = std::ranges::find(UsualNames(), name) != UsualNames().end();
  return names_are_long && is_usual ? name + LongTail() : name;
}

std::string Lengthened(std::string text) {
  for (const std::string& name : UsualNames()) {
    for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at + name.size())) {
      text.insert(at + name.size(), LongTail());
    }
  }
  return text;
}

}  // namespace support
