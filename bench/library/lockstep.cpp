// Reads the records directly, without calling an operation.
#include "library/lockstep.h"

#include <algorithm>
#include <cstring>

namespace bench {
namespace {

template <class Record>
const Record* At(const char* base, std::int64_t offset) {
  return reinterpret_cast<const Record*>(base + offset);
}

bool Differ(const char* old_data, const tagQMXMetaEntry& a, const char* new_data, const tagQMXMetaEntry& b) {
  return std::strcmp(old_data + a.ptrName, new_data + b.ptrName) != 0 || a.iID != b.iID || a.iVersion != b.iVersion ||
         a.iType != b.iType || a.iUnitSize != b.iUnitSize || a.iCount != b.iCount || a.chDBFlag != b.chDBFlag;
}

}  // namespace

std::int64_t Lockstep(LPQMXMETALIB old_lib, LPQMXMETALIB new_lib) {
  const char* old_data = old_lib->data;
  const char* new_data = new_lib->data;
  const auto* old_metas = At<std::int64_t>(old_data, old_lib->ptrMetas);
  const auto* new_metas = At<std::int64_t>(new_data, new_lib->ptrMetas);
  std::int64_t differences = 0;
  for (int m = 0; m < std::min(old_lib->iMetaNum, new_lib->iMetaNum); ++m) {
    const auto* old_meta = At<tagQMXMeta>(old_data, old_metas[m]);
    const auto* new_meta = At<tagQMXMeta>(new_data, new_metas[m]);
    const auto* old_entries = At<tagQMXMetaEntry>(reinterpret_cast<const char*>(old_meta), old_meta->ptrEntries);
    const auto* new_entries = At<tagQMXMetaEntry>(reinterpret_cast<const char*>(new_meta), new_meta->ptrEntries);
    for (int i = 0; i < std::min(old_meta->iEntriesNum, new_meta->iEntriesNum); ++i) {
      differences += Differ(old_data, old_entries[i], new_data, new_entries[i]);
    }
  }
  return differences;
}

}  // namespace bench
