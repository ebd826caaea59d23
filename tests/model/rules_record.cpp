// The plain model of the checker: fields of records in the packed format. Does not compare added fields and positions. Tested by
// model_test.cpp.
#include "model/rules.h"
#include "model/rules_lookup.h"

namespace model {
namespace {

constexpr char kMethod[] = "CompareEntryValueField";

// The checks of a field after its presence and before the structure inside it.
int CompareShape(Checker& checker, const PlainEntry& old_entry, const PlainEntry& new_entry, const PlainMeta& old_meta,
                 const PlainMeta& new_meta) {
  const Values values = {{"entry", Shown(old_entry.name)}, {"table", Shown(old_meta.name)}};
  if (old_meta.is_tlv && new_meta.is_tlv && old_entry.id != new_entry.id) {
    return Fail(checker, -3, kMethod, TextId::kIdChanged,
                {{"id", std::to_string(old_entry.id)}, {"table", Shown(old_meta.name)}});
  }
  if (old_entry.is_key && old_entry.unit_size != new_entry.unit_size) return Fail(checker, -3, kMethod, TextId::kKeySize, values);
  if (!old_entry.is_key && old_entry.unit_size > new_entry.unit_size) {
    return Fail(checker, -3, kMethod, TextId::kSizeReduced, values);
  }
  if (old_entry.type != new_entry.type) return Fail(checker, -3, kMethod, TextId::kTypeChanged, values);
  if (old_entry.has_refer && new_entry.count < old_entry.count) return Fail(checker, -3, kMethod, TextId::kCountReduced, values);
  if (!old_entry.has_refer && new_entry.count != old_entry.count)
    return Fail(checker, -3, kMethod, TextId::kCountChanged, values);
  return 0;
}

}  // namespace

int CompareEntryValueField(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta) {
  if (old_meta == nullptr) return Fail(checker, -1, kMethod, TextId::kMetaNull, {});
  if (new_meta == nullptr) return Fail(checker, -3, kMethod, TextId::kStructureMissing, {{"table", Shown(old_meta->name)}});
  if (old_meta->name != new_meta->name) {
    return Fail(checker, -3, kMethod, TextId::kStructureChanged,
                {{"old", Shown(old_meta->name)}, {"new", Shown(new_meta->name)}});
  }
  for (const PlainEntry& old_entry : old_meta->entries) {
    const Values values = {{"entry", Shown(old_entry.name)}, {"table", Shown(old_meta->name)}};
    int offset = 0;
    const PlainEntry* new_entry = CheckWhetherExistEntry(checker, old_entry.name, new_meta, offset);
    if (new_entry == nullptr) return Fail(checker, -3, kMethod, TextId::kEntryRemoved, values);
    const int shape = CompareShape(checker, old_entry, *new_entry, *old_meta, *new_meta);
    if (shape != 0) return shape;
    if (old_entry.type == 0 || old_entry.type == 1) {
      if (CompareEntryValueField(checker, old_entry.structure, new_entry->structure) != 0) return -3;
    }
    if (old_entry.attr2.value_or("") != new_entry->attr2.value_or("")) {
      return Fail(checker, -3, kMethod, TextId::kAttributeChanged, values);
    }
  }
  return 0;
}

}  // namespace model
