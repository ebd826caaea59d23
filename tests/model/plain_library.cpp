// Reads a library into plain values: through the read operations and, where none exists, from the records. Contains no rule. Does
// not use the checker's own traversal (src/common/meta_view.h), so that its faults are detected. Tested by model_test.cpp.
#include "model/plain_library.h"

#include <unordered_map>

#include "qmx/qmx_metalib_kernel.h"

namespace model {
namespace {

using Positions = std::unordered_map<const tagQMXMeta*, std::size_t>;

constexpr std::uint8_t kKeyBit = 0x10;
constexpr std::size_t kSplitTextSize = 1024;

Name NameOf(const char* text) { return text == nullptr ? Name() : Name(text); }

const char* DataArea(LPQMXMETA meta) { return reinterpret_cast<const char*>(meta) - meta->ptrMeta; }

Name NameAt(LPQMXMETA meta, std::int64_t entry) {
  if (entry == -1) return std::nullopt;
  return NameOf(qmx_get_entry_name(reinterpret_cast<LPQMXMETAENTRY>(const_cast<char*>(DataArea(meta) + entry))));
}

void ReadKey(LPQMXMETA meta, PlainMeta& plain) {
  plain.key_count = meta->nPrimayKeyMemberNum;
  plain.has_key = plain.key_count >= 1 && meta->ptrPrimayKeyBase != -1;
  if (!plain.has_key) return;
  const auto* members = reinterpret_cast<const tagQMXDBKeyInfo*>(reinterpret_cast<const char*>(meta) + meta->ptrPrimayKeyBase);
  for (int i = 0; i < plain.key_count; ++i) plain.key.push_back(NameAt(meta, members[i].ptrEntry));
}

void ReadSplit(LPQMXMETA meta, PlainMeta& plain) {
  plain.has_split = meta->stSplitTableKey.ptrEntry != -1;
  if (!plain.has_split) return;
  char text[kSplitTextSize] = {};
  char* error = nullptr;
  plain.split_is_readable = qmx_get_meta_splittablekey(meta, text, sizeof text, &error) == 0;
  plain.split = text;
}

void ReadIndexes(LPQMXMETA meta, PlainMeta& plain) {
  if (meta->iIndexesNum < 1) return;
  const char* const base = reinterpret_cast<const char*>(meta);
  const auto* indexes = reinterpret_cast<const tagQMXMetaIndex*>(base + meta->ptrIndexes);
  for (int i = 0; i < meta->iIndexesNum; ++i) {
    PlainIndex index{NameOf(DataArea(meta) + indexes[i].ptrName), {}};
    const auto* columns = reinterpret_cast<const tagQMXColumnInfo*>(base + indexes[i].ptrColumnBase);
    for (int j = 0; j < indexes[i].iColumnNum; ++j) index.columns.push_back(NameAt(meta, columns[j].ptrEntry));
    plain.indexes.push_back(std::move(index));
  }
}

PlainEntry ReadEntry(LPQMXMETALIB library, LPQMXMETAENTRY entry, const Positions& positions, const PlainMeta* metas) {
  PlainEntry plain;
  plain.name = NameOf(qmx_get_entry_name(entry));
  plain.id = qmx_get_entry_id(entry);
  plain.version = qmx_get_entry_version(entry);
  plain.type = qmx_get_entry_type(entry);
  const LPQMXMETA structure = qmx_get_entry_type_meta(library, entry);
  if (structure != nullptr) plain.structure = metas + positions.at(structure);
  plain.unit_size = qmx_get_entry_unitsize(entry);
  plain.count = qmx_get_entry_count(entry);
  plain.has_refer = qmx_get_entry_refer(entry) != nullptr;
  plain.attr2 = NameOf(qmx_get_entry_customattr2(library, entry));
  plain.is_key = (entry->chDBFlag & kKeyBit) != 0;
  return plain;
}

}  // namespace

PlainLibrary::PlainLibrary(LPQMXMETALIB library)
    : version(qmx_get_metalib_version(library)), is_tlv(library->iFlag != -1 && (library->iFlag & 1) == 1) {
  metas.resize(static_cast<std::size_t>(qmx_get_meta_num(library)));
  Positions positions;
  for (std::size_t i = 0; i < metas.size(); ++i) positions[qmx_get_meta_by_index(library, static_cast<int>(i))] = i;
  for (const auto& [meta, position] : positions) {
    const LPQMXMETA handle = const_cast<LPQMXMETA>(meta);
    PlainMeta& plain = metas[position];
    plain.name = NameOf(qmx_get_meta_name(handle));
    plain.attr = NameOf(qmx_get_meta_customattr(handle));
    plain.is_tlv = is_tlv;
    for (int i = 0; i < qmx_get_entry_num(handle); ++i) {
      plain.entries.push_back(ReadEntry(library, qmx_get_entry_by_index(handle, i), positions, metas.data()));
    }
    ReadKey(handle, plain);
    ReadSplit(handle, plain);
    ReadIndexes(handle, plain);
  }
}

const PlainMeta* PlainLibrary::Find(const Name& name) const {
  for (const PlainMeta& meta : metas) {
    if (name && meta.name == name) return &meta;
  }
  return nullptr;
}

}  // namespace model
