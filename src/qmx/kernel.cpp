// Read operations on schema libraries: only arithmetic on the offsets that qmx_types.h describes.
//
// Nothing is verified here: the builder, or the verifier of an untrusted library, guarantees valid offsets.
#include "qmx/qmx_metalib_kernel.h"

#include <cstring>
#include <string_view>

#include "qmx/meta_slots.h"

namespace {

char* DataOf(LPQMXMETALIB metalib) { return metalib->data; }
char* DataOf(LPQMXMETA meta) { return reinterpret_cast<char*>(meta) - meta->ptrMeta; }
char* DataOf(LPQMXMETAENTRY entry) { return reinterpret_cast<char*>(entry) - entry->ptrEntry; }

// The record or text at `base` + `offset`; null for QMX_NO_REF.
template <typename Record>
Record* Resolve(char* base, std::int64_t offset) {
  return offset == QMX_NO_REF ? nullptr : reinterpret_cast<Record*>(base + offset);
}

// Why the text of a splittable key cannot be written.
char no_meta[] = "no meta";
char no_key[] = "the meta has no splittable key";
char no_name[] = "a member of the splittable key has no name";
char no_room[] = "the buffer is too small for the text of the splittable key";

// Appends to a buffer of fixed size; always leaves room for the terminating zero.
class BufferWriter {
 public:
  BufferWriter(char* buffer, std::size_t size) : at_(buffer), left_(size) {}

  bool Append(std::string_view text) {
    if (text.size() >= left_) return false;
    std::memcpy(at_, text.data(), text.size());
    at_ += text.size();
    left_ -= text.size();
    *at_ = '\0';
    return true;
  }

 private:
  char* at_;
  std::size_t left_;
};

// Null on success, otherwise the reason.
char* WriteSplittableKey(LPQMXMETA meta, char* buffer, std::size_t size) {
  if (meta == nullptr) return no_meta;
  if (meta->stSplitTableKey.ptrEntry == QMX_NO_REF) return no_key;
  const auto* members = Resolve<tagQMXDBKeyInfo>(reinterpret_cast<char*>(meta), meta->ptrSplitTableKeyBase);
  if (members == nullptr) return no_key;
  BufferWriter writer(buffer, size);
  for (std::int32_t i = 0; i < meta->iSplitTableKeyMemberNum; ++i) {
    const char* name = qmx_get_entry_name(Resolve<tagQMXMetaEntry>(DataOf(meta), members[i].ptrEntry));
    if (name == nullptr) return no_name;
    if ((i > 0 && !writer.Append(",")) || !writer.Append(name)) return no_room;
  }
  return nullptr;
}

}  // namespace

int qmx_get_metalib_version(LPQMXMETALIB metalib) { return metalib == nullptr ? -1 : metalib->iVersion; }

LPQMXMETA qmx_get_meta_by_name(LPQMXMETALIB metalib, const char* name) {
  if (metalib == nullptr || name == nullptr || metalib->iMetaSlotNum == 0) return nullptr;
  const auto* slots = Resolve<tagQMXMetaSlot>(DataOf(metalib), metalib->ptrMetaSlots);
  if (slots == nullptr) return nullptr;
  const auto has_name = [&](std::int32_t meta) {
    const char* found = qmx_get_meta_name(qmx_get_meta_by_index(metalib, meta));
    return found != nullptr && std::strcmp(found, name) == 0;
  };
  const qmx::MetaHash hash(name, metalib->iMetaSlotSeed);
  const qmx::MetaProbe probe = qmx::FindMetaSlot(slots, static_cast<std::size_t>(metalib->iMetaSlotNum), hash, has_name);
  return qmx_get_meta_by_index(metalib, slots[probe.slot].iMeta);
}

int qmx_get_meta_num(LPQMXMETALIB metalib) { return metalib == nullptr ? 0 : metalib->iMetaNum; }

LPQMXMETA qmx_get_meta_by_index(LPQMXMETALIB metalib, int index) {
  if (metalib == nullptr || index < 0 || index >= metalib->iMetaNum) return nullptr;
  const auto* offsets = Resolve<std::int64_t>(DataOf(metalib), metalib->ptrMetas);
  return offsets == nullptr ? nullptr : Resolve<tagQMXMeta>(DataOf(metalib), offsets[index]);
}

const char* qmx_get_meta_name(LPQMXMETA meta) { return meta == nullptr ? nullptr : Resolve<char>(DataOf(meta), meta->ptrName); }

const char* qmx_get_meta_customattr(LPQMXMETA meta) {
  return meta == nullptr ? nullptr : Resolve<char>(DataOf(meta), meta->ptrCustomAttr);
}

int qmx_get_meta_splittablekey(LPQMXMETA meta, char* buffer, std::size_t size, char** error) {
  if (buffer == nullptr) size = 0;
  if (size > 0) buffer[0] = '\0';
  char* reason = WriteSplittableKey(meta, buffer, size);
  if (reason == nullptr) return 0;
  if (size > 0) buffer[0] = '\0';
  if (error != nullptr) *error = reason;
  return -1;
}

int qmx_get_entry_num(LPQMXMETA meta) { return meta == nullptr ? 0 : meta->iEntriesNum; }

LPQMXMETAENTRY qmx_get_entry_by_index(LPQMXMETA meta, int index) {
  if (meta == nullptr || index < 0 || index >= meta->iEntriesNum) return nullptr;
  auto* entries = Resolve<tagQMXMetaEntry>(reinterpret_cast<char*>(meta), meta->ptrEntries);
  return entries == nullptr ? nullptr : entries + index;
}

const char* qmx_get_entry_name(LPQMXMETAENTRY entry) {
  return entry == nullptr ? nullptr : Resolve<char>(DataOf(entry), entry->ptrName);
}

int qmx_get_entry_id(LPQMXMETAENTRY entry) { return entry == nullptr ? -1 : entry->iID; }

int qmx_get_entry_version(LPQMXMETAENTRY entry) { return entry == nullptr ? -1 : entry->iVersion; }

int qmx_get_entry_type(LPQMXMETAENTRY entry) { return entry == nullptr ? QMX_TYPE_NONE : entry->iType; }

LPQMXMETA qmx_get_entry_type_meta(LPQMXMETALIB metalib, LPQMXMETAENTRY entry) {
  if (metalib == nullptr || entry == nullptr) return nullptr;
  return Resolve<tagQMXMeta>(DataOf(metalib), entry->ptrTypeMeta);
}

std::size_t qmx_get_entry_unitsize(LPQMXMETAENTRY entry) { return entry == nullptr ? 0 : entry->iUnitSize; }

int qmx_get_entry_count(LPQMXMETAENTRY entry) { return entry == nullptr ? 0 : entry->iCount; }

LPQMXMETAENTRY qmx_get_entry_refer(LPQMXMETAENTRY entry) {
  return entry == nullptr ? nullptr : Resolve<tagQMXMetaEntry>(DataOf(entry), entry->ptrRefer);
}

const char* qmx_get_entry_customattr2(LPQMXMETALIB metalib, LPQMXMETAENTRY entry) {
  if (metalib == nullptr || entry == nullptr) return nullptr;
  return Resolve<char>(DataOf(metalib), entry->ptrCustomAttr2);
}
