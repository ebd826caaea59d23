// Lays a resolved library into one block: the header, the two lists of metas, the library's name, then meta after meta. The parts
// of a meta stand in this order: the meta, its entries, members of the primary key and of the splittable key, indexes, columns,
// texts. Every part starts at a multiple of 8 bytes.
#include <cstring>
#include <new>

#include "qmx/builder_state.h"
#include "qmx/meta_slots.h"
#include "qmx/quote.h"

namespace qmx {
namespace {

constexpr std::size_t kHeaderSize = offsetof(tagQMXMetaLib, data);

// Hands out room in the data area, part after part.
class Cursor {
 public:
  std::int64_t Take(std::size_t bytes) {
    const std::size_t at = at_;
    at_ += (bytes + 7) / 8 * 8;
    return static_cast<std::int64_t>(at);
  }

  template <typename Record>
  std::int64_t TakeList(std::size_t count) {
    return count == 0 ? QMX_NO_REF : Take(count * sizeof(Record));
  }

 private:
  std::size_t at_ = 0;
};

std::size_t TextBytes(std::string_view text) { return text.size() + 1; }
std::size_t TextBytes(const std::optional<std::string_view>& text) { return text ? TextBytes(*text) : 0; }

// Where the parts of a meta lie, from the start of the data area.
struct MetaPlan {
  std::int64_t meta, entries, primary_key, splittable_key, indexes, columns, texts;

  // Offset of a part from the meta; a part that is not there has none.
  std::int64_t FromMeta(std::int64_t part) const { return part == QMX_NO_REF ? QMX_NO_REF : part - meta; }

  std::int64_t Entry(std::size_t position) const {
    return entries + static_cast<std::int64_t>(position * sizeof(tagQMXMetaEntry));
  }
};

MetaPlan PlanMeta(const DeclaredMeta& meta, Cursor& cursor) {
  std::size_t columns = 0;
  std::size_t texts = TextBytes(meta.name) + TextBytes(meta.customattr);
  for (const DeclaredEntry& entry : meta.entries) texts += TextBytes(entry.decl.name) + TextBytes(entry.decl.customattr2);
  for (const DeclaredIndex& index : meta.indexes) {
    columns += index.columns.size();
    texts += TextBytes(index.name);
  }
  MetaPlan plan{};
  plan.meta = cursor.Take(sizeof(tagQMXMeta));
  plan.entries = cursor.TakeList<tagQMXMetaEntry>(meta.entries.size());
  plan.primary_key = cursor.TakeList<tagQMXDBKeyInfo>(meta.primary_key.entries.size());
  plan.splittable_key = cursor.TakeList<tagQMXDBKeyInfo>(meta.splittable_key.entries.size());
  plan.indexes = cursor.TakeList<tagQMXMetaIndex>(meta.indexes.size());
  plan.columns = cursor.TakeList<tagQMXColumnInfo>(columns);
  plan.texts = cursor.Take(texts);
  return plan;
}

// Places of the entries in a packed record, in bytes; all zero in a union.
std::vector<std::uint64_t> RecordOffsets(const DeclaredMeta& meta) {
  std::vector<std::uint64_t> offsets;
  std::uint64_t offset = 0;
  for (const DeclaredEntry& entry : meta.entries) {
    offsets.push_back(offset);
    if (meta.kind != QMX_TYPE_UNION) offset += entry.unit_size * Elements(entry);
  }
  return offsets;
}

// Makes records and texts in the data area. Its memory is zero before, which is what the unused bytes stay.
class Writer {
 public:
  explicit Writer(char* data) : data_(data) {}

  template <typename Record>
  Record& At(std::int64_t offset, std::size_t position = 0) {
    return *new (data_ + offset + static_cast<std::int64_t>(position * sizeof(Record))) Record{};
  }

  void TextsAt(std::int64_t offset) { text_ = offset; }

  std::int64_t Text(std::string_view text) {
    const std::int64_t at = text_;
    std::memcpy(data_ + at, text.data(), text.size());
    text_ += static_cast<std::int64_t>(TextBytes(text));
    return at;
  }

  std::int64_t Text(const std::optional<std::string_view>& text) { return text ? Text(*text) : QMX_NO_REF; }

 private:
  char* data_;
  std::int64_t text_ = 0;
};

class MetaWriter {
 public:
  MetaWriter(const DeclaredMeta& meta, const std::vector<MetaPlan>& plans, std::size_t position, Writer& out)
      : meta_(meta), plans_(plans), plan_(plans[position]), out_(out) {}

  void Run() {
    out_.TextsAt(plan_.texts);
    WriteMeta();
    for (std::size_t i = 0; i < meta_.entries.size(); ++i) WriteEntry(i);
    if (!meta_.primary_key.entries.empty() || !meta_.splittable_key.entries.empty()) WriteKeys();
    WriteIndexes();
  }

 private:
  void WriteMeta() {
    record_ = &out_.At<tagQMXMeta>(plan_.meta);
    record_->ptrMeta = plan_.meta;
    record_->ptrName = out_.Text(meta_.name);
    record_->ptrCustomAttr = out_.Text(meta_.customattr);
    record_->ptrEntries = plan_.FromMeta(plan_.entries);
    record_->ptrPrimayKeyBase = plan_.FromMeta(plan_.primary_key);
    record_->ptrIndexes = plan_.FromMeta(plan_.indexes);
    record_->ptrSplitTableKeyBase = plan_.FromMeta(plan_.splittable_key);
    record_->stSplitTableKey.ptrEntry = QMX_NO_REF;
    record_->stSortKey.ptrSortKeyBase = QMX_NO_REF;
    record_->iUnitSize = meta_.unit_size;
    record_->iType = meta_.kind;
    record_->iEntriesNum = static_cast<std::int32_t>(meta_.entries.size());
    record_->iIndexesNum = static_cast<std::int32_t>(meta_.indexes.size());
    record_->iSplitTableKeyMemberNum = static_cast<std::int32_t>(meta_.splittable_key.entries.size());
    record_->nPrimayKeyMemberNum = static_cast<std::int16_t>(meta_.primary_key.entries.size());
  }

  void WriteEntry(std::size_t position) {
    const DeclaredEntry& entry = meta_.entries[position];
    auto& record = out_.At<tagQMXMetaEntry>(plan_.entries, position);
    record.ptrEntry = plan_.Entry(position);
    record.ptrName = out_.Text(entry.decl.name);
    record.ptrCustomAttr2 = out_.Text(entry.decl.customattr2);
    record.ptrTypeMeta = entry.type_meta == kNone ? QMX_NO_REF : plans_[entry.type_meta].meta;
    record.ptrRefer = entry.refer == kNone ? QMX_NO_REF : plan_.Entry(entry.refer);
    record.iUnitSize = entry.unit_size;
    record.iID = entry.decl.id;
    record.iVersion = entry.decl.version;
    record.iType = entry.type;
    record.iCount = entry.decl.count;
    record.chDBFlag = entry.in_primary_key ? QMX_DBFLAG_PRIMARY_KEY : std::uint8_t{0};
  }

  void WriteKeys() {
    const std::vector<std::uint64_t> offsets = RecordOffsets(meta_);
    const auto write = [&](const DeclaredKey& key, std::int64_t list) {
      for (std::size_t i = 0; i < key.entries.size(); ++i) {
        auto& member = out_.At<tagQMXDBKeyInfo>(list, i);
        member.iHOff = static_cast<std::int64_t>(offsets[key.entries[i]]);
        member.ptrEntry = plan_.Entry(key.entries[i]);
        if (i == 0 && &key == &meta_.splittable_key) record_->stSplitTableKey = member;
      }
    };
    write(meta_.primary_key, plan_.primary_key);
    write(meta_.splittable_key, plan_.splittable_key);
  }

  void WriteIndexes() {
    std::size_t next_column = 0;
    for (std::size_t i = 0; i < meta_.indexes.size(); ++i) {
      const DeclaredIndex& index = meta_.indexes[i];
      auto& record = out_.At<tagQMXMetaIndex>(plan_.indexes, i);
      record.ptrName = out_.Text(index.name);
      record.iColumnNum = static_cast<std::int32_t>(index.columns.size());
      record.ptrColumnBase = QMX_NO_REF;
      if (!index.columns.empty()) {
        const std::int64_t first = plan_.columns + static_cast<std::int64_t>(next_column * sizeof(tagQMXColumnInfo));
        record.ptrColumnBase = plan_.FromMeta(first);
      }
      for (std::size_t c = 0; c < index.columns.size(); ++c) {
        auto& column = out_.At<tagQMXColumnInfo>(plan_.columns, next_column++);
        column.ptrEntry = plan_.Entry(index.entries[c]);
        column.iIsDesc = index.columns[c].descending ? 1 : 0;
      }
    }
  }

  const DeclaredMeta& meta_;
  const std::vector<MetaPlan>& plans_;
  const MetaPlan& plan_;
  Writer& out_;
  tagQMXMeta* record_ = nullptr;
};

std::int64_t FlagWord(Protocol protocol) {
  switch (protocol) {
    case Protocol::kQmx:
      return 0;
    case Protocol::kTlv:
      return QMX_FLAG_TLV;
    case Protocol::kUnset:
      break;
  }
  return QMX_FLAG_UNSET;
}

std::vector<std::string_view> MetaNames(const DeclaredLibrary& library) {
  std::vector<std::string_view> names;
  names.reserve(library.metas.size());
  for (const DeclaredMeta& meta : library.metas) names.push_back(meta.name);
  return names;
}

}  // namespace

void CheckKeys(const DeclaredLibrary& library, BuildErrors& errors) {
  constexpr auto kFarthest = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
  for (std::uint32_t m = 0; m < library.metas.size() && !errors.IsFull(); ++m) {
    const DeclaredMeta& meta = library.metas[m];
    if (meta.primary_key.names.size() > kMaxPrimaryKeyMembers) {
      errors.Add({ElementId::Kind::kPrimaryKey, m}, "entries",
                 "the primary key has " + std::to_string(meta.primary_key.names.size()) + " members; allowed: at most " +
                     std::to_string(kMaxPrimaryKeyMembers));
    }
    if (meta.unit_size <= kFarthest) continue;
    const std::vector<std::uint64_t> offsets = RecordOffsets(meta);
    const auto check = [&](const DeclaredKey& key, ElementId::Kind kind) {
      for (const std::uint32_t entry : key.entries) {
        if (offsets[entry] <= kFarthest) continue;
        errors.Add({kind, m}, "entries",
                   "key member " + Quote(meta.entries[entry].decl.name) + " stands at byte " + std::to_string(offsets[entry]) +
                       " of the record; allowed: at most byte " + std::to_string(kFarthest));
      }
    };
    check(meta.primary_key, ElementId::Kind::kPrimaryKey);
    check(meta.splittable_key, ElementId::Kind::kSplittableKey);
  }
}

Metalib LayOut(const DeclaredLibrary& library) {
  const std::size_t metas = library.metas.size();
  Cursor cursor;
  const std::int64_t list = cursor.TakeList<std::int64_t>(metas);
  const MetaSlots slots = MakeMetaSlots(MetaNames(library));
  const std::int64_t slot_list = cursor.TakeList<tagQMXMetaSlot>(slots.slots.size());
  const std::int64_t name = cursor.Take(TextBytes(library.name));
  std::vector<MetaPlan> plans;
  plans.reserve(metas);
  for (const DeclaredMeta& meta : library.metas) plans.push_back(PlanMeta(meta, cursor));

  const std::int64_t data_size = cursor.Take(0);
  const std::size_t size = kHeaderSize + static_cast<std::size_t>(data_size);
  auto block = std::make_shared<std::uint64_t[]>(size / 8);
  auto* header = new (block.get()) tagQMXMetaLib{};
  header->iFlag = FlagWord(library.protocol);
  header->iDataSize = data_size;
  header->ptrMetas = list;
  header->ptrMetaSlots = slot_list;
  header->iMetaSlotNum = static_cast<std::int32_t>(slots.slots.size());
  header->iMetaSlotSeed = slots.seed;
  header->iVersion = library.version;
  header->iMetaNum = static_cast<std::int32_t>(metas);

  Writer out(reinterpret_cast<char*>(block.get()) + kHeaderSize);
  out.TextsAt(name);
  header->ptrName = out.Text(library.name);
  for (std::size_t i = 0; i < metas; ++i) out.At<std::int64_t>(list, i) = plans[i].meta;
  for (std::size_t i = 0; i < slots.slots.size(); ++i) out.At<tagQMXMetaSlot>(slot_list, i) = slots.slots[i];
  for (std::size_t i = 0; i < metas; ++i) MetaWriter(library.metas[i], plans, i, out).Run();
  return Metalib(std::move(block), header, size);
}

}  // namespace qmx
