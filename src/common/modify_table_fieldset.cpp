// Do two structures have the same fields? No rule of a check asks it; it is offered to the store's other components.
// Held by tests/rules/fieldset_test.cpp.
#include "common/lookup.h"
#include "common/meta_view.h"
#include "common/modify_table.h"
#include "common/refuse.h"

using namespace korvel;

namespace {

constexpr Message<Text> kSameFields("CompareValueField between new and old table:%s successed");

// What of an entry has to be the same.
struct Shape {
  explicit Shape(LPQMXMETAENTRY entry)
      : type(qmx_get_entry_type(entry)), count(qmx_get_entry_count(entry)), size(qmx_get_entry_unitsize(entry)) {}
  bool operator==(const Shape&) const = default;

  int type;
  int count;
  std::size_t size;
};

}  // namespace

// Order is not compared, nor are ids, versions and keys. A grown unit size is a difference here.
int ModifyTable::CompareTableField(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) {
  if (old_meta == nullptr) return Refuse(HERE, kOldMetaNull);
  if (new_meta == nullptr) return Refuse(HERE, kNewMetaNull);
  const char* old_meta_name = qmx_get_meta_name(old_meta);
  const char* new_meta_name = qmx_get_meta_name(new_meta);
  const int old_value_field_num = EntryCount(old_meta);
  const int new_value_field_num = EntryCount(new_meta);
  if (old_value_field_num != new_value_field_num) {
    return Refuse(HERE, kFieldNum, old_meta_name, old_value_field_num, new_meta_name, new_value_field_num);
  }
  const CallMemory::Scope memory(this);
  for (const auto [index, old_entry] : Entries(old_meta, PrefixByName(old_meta, new_meta))) {
    const char* name = qmx_get_entry_name(old_entry);
    const int position = PositionByName(new_meta, new_value_field_num, name);
    if (position < 0) return Refuse(HERE, kFieldMissing, name, new_meta_name);
    const LPQMXMETAENTRY new_entry = qmx_get_entry_by_index(new_meta, position);
    const Shape old_shape(old_entry);
    const Shape new_shape(new_entry);
    if (old_shape != new_shape) {
      return Refuse(HERE, kFieldShape, old_meta_name, name, old_shape.type, new_meta_name, name, new_shape.type, old_shape.count,
                    new_shape.count, old_shape.size, new_shape.size);
    }
    if (!IsComposite(old_shape.type)) continue;
    const LPQMXMETA old_sub_meta = qmx_get_entry_type_meta(OwnerOf(old_meta), old_entry);
    const LPQMXMETA new_sub_meta = qmx_get_entry_type_meta(OwnerOf(new_meta), new_entry);
    const int ret = memory->Once(CallMemory::Rule::kFieldSet, old_sub_meta, new_sub_meta, m_szErrorType,
                                 [&] { return CompareTableField(old_sub_meta, new_sub_meta, log_handle); });
    if (ret != 0) return ret;
  }
  LogOnly(HERE, VESK_PRIORITY_INFO, kSameFields, old_meta_name);
  return CHECK_TABLE_SUCCESS;
}
