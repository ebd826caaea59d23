#include "metadata.h"

#include <utility>

#include "qmx/qmx_metalib_kernel.h"

namespace store {

Field::Field(std::string field_name, enQMXType field_type, std::size_t field_size, int added_in)
    : tagQMXMetaEntry{}, name(std::move(field_name)), type(field_type), size(field_size), version(added_in) {}

Library::Library(int library_version) : tagQMXMetaLib{}, version(library_version) {}

// Offsets count from the data area of the header, wherever the record lies.
std::int64_t Library::OffsetOf(const void* record) const { return static_cast<const char*>(record) - data; }

void Library::AddTable(std::string name, std::deque<Field> fields) {
  Table& table = tables.emplace_back(Table{{}, std::move(name), std::move(fields), {}});
  Field& key_field = table.fields.front();
  key_field.chDBFlag = QMX_DBFLAG_PRIMARY_KEY;
  table.key.ptrEntry = OffsetOf(&key_field);
  table.ptrMeta = OffsetOf(static_cast<tagQMXMeta*>(&table));
  table.ptrPrimayKeyBase = OffsetOf(&table.key) - table.ptrMeta;
  table.nPrimayKeyMemberNum = 1;
  table.ptrIndexes = QMX_NO_REF;
  table.stSplitTableKey.ptrEntry = QMX_NO_REF;
}

namespace {

const Library* LibraryOf(LPQMXMETALIB metalib) { return static_cast<const Library*>(metalib); }
Table* TableOf(LPQMXMETA meta) { return static_cast<Table*>(meta); }
const Field* FieldOf(LPQMXMETAENTRY entry) { return static_cast<const Field*>(entry); }

}  // namespace
}  // namespace store

using store::FieldOf;
using store::LibraryOf;
using store::TableOf;

extern "C" {

int qmx_get_metalib_version(LPQMXMETALIB metalib) { return metalib == nullptr ? -1 : LibraryOf(metalib)->version; }

LPQMXMETA qmx_get_meta_by_name(LPQMXMETALIB metalib, const char* name) {
  if (metalib == nullptr || name == nullptr) return nullptr;
  for (store::Table& table : static_cast<store::Library*>(metalib)->tables) {
    if (table.name == name) return &table;
  }
  return nullptr;
}

const char* qmx_get_meta_name(LPQMXMETA meta) { return meta == nullptr ? nullptr : TableOf(meta)->name.c_str(); }

const char* qmx_get_meta_customattr(LPQMXMETA /*meta*/) { return nullptr; }

int qmx_get_meta_splittablekey(LPQMXMETA /*meta*/, char* /*buffer*/, std::size_t /*size*/, char** /*error*/) { return -1; }

int qmx_get_entry_num(LPQMXMETA meta) { return meta == nullptr ? 0 : static_cast<int>(TableOf(meta)->fields.size()); }

LPQMXMETAENTRY qmx_get_entry_by_index(LPQMXMETA meta, int index) {
  if (index < 0 || index >= qmx_get_entry_num(meta)) return nullptr;
  return &TableOf(meta)->fields[static_cast<std::size_t>(index)];
}

const char* qmx_get_entry_name(LPQMXMETAENTRY entry) { return entry == nullptr ? nullptr : FieldOf(entry)->name.c_str(); }

int qmx_get_entry_id(LPQMXMETAENTRY /*entry*/) { return -1; }

int qmx_get_entry_version(LPQMXMETAENTRY entry) { return FieldOf(entry)->version; }

int qmx_get_entry_type(LPQMXMETAENTRY entry) { return entry == nullptr ? QMX_TYPE_NONE : FieldOf(entry)->type; }

LPQMXMETA qmx_get_entry_type_meta(LPQMXMETALIB /*metalib*/, LPQMXMETAENTRY /*entry*/) { return nullptr; }

std::size_t qmx_get_entry_unitsize(LPQMXMETAENTRY entry) { return FieldOf(entry)->size; }

int qmx_get_entry_count(LPQMXMETAENTRY /*entry*/) { return 1; }

LPQMXMETAENTRY qmx_get_entry_refer(LPQMXMETAENTRY /*entry*/) { return nullptr; }

const char* qmx_get_entry_customattr2(LPQMXMETALIB /*metalib*/, LPQMXMETAENTRY /*entry*/) { return nullptr; }

}  // extern "C"
