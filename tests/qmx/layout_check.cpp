#include "qmx/layout_check.h"

#include <cstring>
#include <set>

#include "qmx/qmx_metalib_kernel.h"

namespace layout {
namespace {

constexpr std::int64_t kListItem = sizeof(std::int64_t);
constexpr std::int64_t kEntry = sizeof(tagQMXMetaEntry);

class Checker {
 public:
  explicit Checker(const qmx::Metalib& metalib) : lib_(metalib.get()), size_(lib_->iDataSize) {
    Expect(metalib.size() == offsetof(tagQMXMetaLib, data) + static_cast<std::size_t>(size_), "block size");
    Expect(size_ % 8 == 0, "size of the data area");
  }

  std::vector<std::string> Run() {
    ListOfMetas(lib_->ptrMetas, "ptrMetas");
    Text(lib_->ptrName, "library name");
    std::int64_t end = 0;
    for (int i = 0; i < lib_->iMetaNum; ++i) Collect(qmx_get_meta_by_index(lib_, i));
    for (int i = 0; i < lib_->iMetaNum; ++i) {
      LPQMXMETA meta = qmx_get_meta_by_index(lib_, i);
      Expect(meta->ptrMeta >= end, "metas in order");
      end = Meta(meta);
    }
    ByName();
    return faults_;
  }

 private:
  void Expect(bool holds, const std::string& what) {
    if (!holds) faults_.push_back(what);
  }

  bool Range(std::int64_t offset, std::int64_t bytes, const std::string& what) {
    const bool holds = offset >= 0 && offset % 8 == 0 && bytes <= size_ - offset;
    Expect(holds, what + " is outside or not aligned");
    return holds;
  }

  void Text(std::int64_t offset, const std::string& what) {
    if (offset < 0 || offset >= size_) return Expect(false, what + " is outside");
    Expect(std::memchr(lib_->data + offset, 0, static_cast<std::size_t>(size_ - offset)) != nullptr, what + " is not terminated");
  }

  void OptionalText(std::int64_t offset, const std::string& what) {
    if (offset != QMX_NO_REF) Text(offset, what);
  }

  void ListOfMetas(std::int64_t offset, const std::string& what) {
    if (lib_->iMetaNum == 0) return Expect(offset == QMX_NO_REF, what + " of no metas");
    if (!Range(offset, kListItem * lib_->iMetaNum, what)) return;
    for (int i = 0; i < lib_->iMetaNum; ++i) {
      std::int64_t meta = 0;
      std::memcpy(&meta, lib_->data + offset + kListItem * i, sizeof meta);
      Range(meta, sizeof(tagQMXMeta), what + " item");
    }
  }

  void ByName() {
    for (int i = 0; i < lib_->iMetaNum; ++i) {
      LPQMXMETA meta = qmx_get_meta_by_index(lib_, i);
      LPQMXMETA found = qmx_get_meta_by_name(lib_, qmx_get_meta_name(meta));
      Expect(found != nullptr && found <= meta && std::strcmp(qmx_get_meta_name(found), qmx_get_meta_name(meta)) == 0,
             "meta by name");
    }
  }

  void Collect(LPQMXMETA meta) {
    metas_.insert(meta->ptrMeta);
    for (int i = 0; i < meta->iEntriesNum; ++i) entries_.insert(meta->ptrMeta + meta->ptrEntries + kEntry * i);
  }

  // The parts of a meta follow each other without gaps. Returns the offset of its texts.
  std::int64_t Meta(LPQMXMETA meta) {
    const std::string what = std::string("meta ") + qmx_get_meta_name(meta) + ": ";
    std::int64_t next = sizeof(tagQMXMeta);
    const auto part = [&](std::int64_t list, std::int64_t count, std::int64_t record_size, const char* name) {
      if (count == 0) return Expect(list == QMX_NO_REF, what + name + " without records");
      Expect(list == next, what + name + " does not follow the part before");
      Range(meta->ptrMeta + list, count * record_size, what + name);
      next += count * record_size;
    };
    part(meta->ptrEntries, meta->iEntriesNum, sizeof(tagQMXMetaEntry), "entries");
    part(meta->ptrPrimayKeyBase, meta->nPrimayKeyMemberNum, sizeof(tagQMXDBKeyInfo), "primary key");
    part(meta->ptrSplitTableKeyBase, meta->iSplitTableKeyMemberNum, sizeof(tagQMXDBKeyInfo), "splittable key");
    part(meta->ptrIndexes, meta->iIndexesNum, sizeof(tagQMXMetaIndex), "indexes");
    Text(meta->ptrName, what + "name");
    OptionalText(meta->ptrCustomAttr, what + "customattr");
    Expect(meta->stSortKey.ptrSortKeyBase == QMX_NO_REF && meta->stSortKey.iSortKeyMemberNum == 0, what + "sort key");
    for (int i = 0; i < meta->iEntriesNum; ++i) Entry(meta, i, what);
    Keys(meta, what);
    Indexes(meta, next, what);
    Expect(meta->ptrName >= meta->ptrMeta + next, what + "texts after the records");
    return meta->ptrName;
  }

  void Entry(LPQMXMETA meta, int position, const std::string& what) {
    LPQMXMETAENTRY entry = qmx_get_entry_by_index(meta, position);
    Expect(entry->ptrEntry == meta->ptrMeta + meta->ptrEntries + kEntry * position, what + "ptrEntry");
    Text(entry->ptrName, what + "entry name");
    OptionalText(entry->ptrCustomAttr2, what + "customattr2");
    const bool is_composite = entry->iType == QMX_TYPE_STRUCT || entry->iType == QMX_TYPE_UNION;
    Expect(is_composite ? metas_.contains(entry->ptrTypeMeta) : entry->ptrTypeMeta == QMX_NO_REF, what + "ptrTypeMeta");
    Expect(entry->ptrRefer == QMX_NO_REF || entries_.contains(entry->ptrRefer), what + "ptrRefer");
  }

  void Keys(LPQMXMETA meta, const std::string& what) {
    const auto members = [&](std::int64_t list, int count) {
      auto* keys = reinterpret_cast<LPQMXDBKEYINFO>(reinterpret_cast<char*>(meta) + list);
      for (int i = 0; i < count; ++i) Expect(entries_.contains(keys[i].ptrEntry), what + "key member");
    };
    members(meta->ptrPrimayKeyBase, meta->nPrimayKeyMemberNum);
    members(meta->ptrSplitTableKeyBase, meta->iSplitTableKeyMemberNum);
    if (meta->iSplitTableKeyMemberNum == 0) {
      Expect(meta->stSplitTableKey.ptrEntry == QMX_NO_REF, what + "stSplitTableKey of no key");
    } else {
      const char* first = reinterpret_cast<char*>(meta) + meta->ptrSplitTableKeyBase;
      Expect(std::memcmp(first, &meta->stSplitTableKey, sizeof meta->stSplitTableKey) == 0, what + "stSplitTableKey");
    }
  }

  void Indexes(LPQMXMETA meta, std::int64_t& next, const std::string& what) {
    auto* indexes = reinterpret_cast<LPQMXMETAINDEX>(reinterpret_cast<char*>(meta) + meta->ptrIndexes);
    for (int i = 0; i < meta->iIndexesNum; ++i) {
      Text(indexes[i].ptrName, what + "index name");
      if (indexes[i].iColumnNum == 0) continue;
      Expect(indexes[i].ptrColumnBase == next, what + "columns do not follow the part before");
      auto* columns = reinterpret_cast<LPQMXCOLUMNINFO>(reinterpret_cast<char*>(meta) + indexes[i].ptrColumnBase);
      for (int c = 0; c < indexes[i].iColumnNum; ++c) Expect(entries_.contains(columns[c].ptrEntry), what + "column");
      next += static_cast<std::int64_t>(sizeof(tagQMXColumnInfo)) * indexes[i].iColumnNum;
    }
  }

  LPQMXMETALIB lib_;
  std::int64_t size_;
  std::set<std::int64_t> metas_, entries_;
  std::vector<std::string> faults_;
};

}  // namespace

std::vector<std::string> Faults(const qmx::Metalib& metalib) { return Checker(metalib).Run(); }

}  // namespace layout
