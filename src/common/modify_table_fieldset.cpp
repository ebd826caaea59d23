// Whether two structures have the same fields. No check runs this rule; it is offered to the store's other components.
// Tested by tests/rules/fieldset_test.cpp.
#include "common/meta_view.h"
#include "common/run.h"

namespace korvel {
namespace {

constexpr TextFormat<CString> kSameFields("CompareValueField between new and old table:%s successed");

// What must be the same in two entries.
struct Shape {
  explicit Shape(LPQMXMETAENTRY entry)
      : type(qmx_get_entry_type(entry)), count(qmx_get_entry_count(entry)), size(qmx_get_entry_unitsize(entry)) {}
  bool operator==(const Shape&) const = default;

  int type;
  int count;
  std::size_t size;
};

}  // namespace

// Order, ids, versions and keys are not compared. A grown unit size is a difference here.
int Run::CompareTableField(MetaPair metas) {
  const auto [old_meta, new_meta] = metas;
  if (old_meta == nullptr) return Refuse(HERE, kOldMetaNull);
  if (new_meta == nullptr) return Refuse(HERE, kNewMetaNull);
  const char* old_name = qmx_get_meta_name(old_meta);
  const char* new_name = qmx_get_meta_name(new_meta);
  const int old_count = EntryCount(old_meta);
  const int new_count = EntryCount(new_meta);
  if (old_count != new_count) return Refuse(HERE, kFieldNum, old_name, old_count, new_name, new_count);
  for (const auto [index, old_entry] : ChangedOldEntries(metas, MatchBy::kName)) {
    const char* name = qmx_get_entry_name(old_entry);
    const int position = lookup_.PositionByName(new_meta, new_count, name);
    if (position < 0) return Refuse(HERE, kFieldMissing, name, new_name);
    const LPQMXMETAENTRY new_entry = qmx_get_entry_by_index(new_meta, position);
    const Shape old_shape(old_entry);
    const Shape new_shape(new_entry);
    if (old_shape != new_shape) {
      return Refuse(HERE, kFieldShape, old_name, name, old_shape.type, new_name, name, new_shape.type, old_shape.count,
                    new_shape.count, old_shape.size, new_shape.size);
    }
    if (!IsComposite(old_shape.type)) continue;
    if (const int ret = Descend<&Run::CompareTableField>(metas, {old_entry, new_entry}); ret != 0) return ret;
  }
  LogOnly(HERE, VESK_PRIORITY_INFO, kSameFields, old_name);
  return CHECK_TABLE_SUCCESS;
}

}  // namespace korvel
