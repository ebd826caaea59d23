// Extracts the keys of a record. Tested by codec_test.cpp.
#include "codec/key.h"

#include <algorithm>

#include "codec/packed.h"
#include "common/meta_view.h"

namespace codec {
namespace {

std::string KeyOf(const Value& record, LPQMXMETA meta, const korvel::RecordList<tagQMXDBKeyInfo>& members) {
  std::string key;
  for (const tagQMXDBKeyInfo* member : members) {
    const auto entry = reinterpret_cast<LPQMXMETAENTRY>(korvel::DataOf(meta) + member->ptrEntry);
    key += PackElements(*std::ranges::find(record.fields, entry, &FieldValue::entry));
  }
  return key;
}

}  // namespace

Keys KeysOf(const Value& record, LPQMXMETA meta) {
  return {KeyOf(record, meta, korvel::PrimaryKeyMembers(meta)),
          KeyOf(record, meta, {meta, meta->ptrSplitTableKeyBase, meta->iSplitTableKeyMemberNum})};
}

}  // namespace codec
