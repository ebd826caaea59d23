// The plain model of the checker: fields of tag-length-value records. Inside structures the rules are less strict than for the
// table itself. Does not compare added fields and attributes. Tested by model_test.cpp.
#include "model/rules.h"

namespace model {
namespace {

const PlainEntry* CheckWhetherExistEntryById(Checker& checker, int id, const PlainMeta* meta) {
  static constexpr char kMethod[] = "CheckWhetherExistEntryById";
  if (id < 0 || meta == nullptr) return Fail(checker, 0, kMethod, TextId::kNameOrMeta, {}), nullptr;
  if (meta->entries.empty()) return Fail(checker, 0, kMethod, TextId::kNoEntries, {{"table", Shown(meta->name)}}), nullptr;
  for (const PlainEntry& entry : meta->entries) {
    if (entry.id == id) return &entry;
  }
  return nullptr;
}

bool CheckWhetherExistEntryOfTLV(Checker& checker, const PlainEntry& needed, const PlainMeta& new_meta) {
  if (new_meta.entries.empty()) {
    Fail(checker, 0, "CheckWhetherExistEntryOfTLV", TextId::kNoEntries, {{"table", Shown(new_meta.name)}});
    return false;
  }
  for (const PlainEntry& entry : new_meta.entries) {
    if (needed.name && entry.id == needed.id && entry.name == needed.name) return true;
  }
  return false;
}

int CompareEntrySubMetaFieldTLV(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta) {
  static constexpr char kMethod[] = "CompareEntrySubMetaFieldTLV";
  if (old_meta == nullptr || new_meta == nullptr) return Fail(checker, -1, kMethod, TextId::kMetaNull, {});
  for (const PlainEntry& old_entry : old_meta->entries) {
    const Values values = {{"entry", Shown(old_entry.name)}, {"table", Shown(old_meta->name)}};
    const PlainEntry* new_entry = CheckWhetherExistEntryById(checker, old_entry.id, new_meta);
    if (new_entry == nullptr) continue;
    if (old_entry.type != new_entry->type) {
      return Fail(checker, -3, kMethod, TextId::kTypeChangedTlv,
                  {{"id", std::to_string(old_entry.id)}, {"table", Shown(old_meta->name)}});
    }
    if (old_entry.unit_size > new_entry->unit_size) return Fail(checker, -3, kMethod, TextId::kSizeReduced, values);
    if (old_entry.count > new_entry->count) return Fail(checker, -3, kMethod, TextId::kCountReducedTlv, values);
    if (old_entry.type != 0 && old_entry.type != 1) continue;
    if (CompareEntrySubMetaFieldTLV(checker, old_entry.structure, new_entry->structure) != 0) return -3;
  }
  return 0;
}

// A field of the table itself, found by its id.
int CompareFound(Checker& checker, const PlainEntry& old_entry, const PlainEntry& new_entry, const PlainMeta& old_meta) {
  static constexpr char kMethod[] = "CompareEntryValueFieldTLV";
  const Values values = {{"entry", Shown(old_entry.name)}, {"table", Shown(old_meta.name)}};
  if (old_entry.is_key) {
    if (old_entry.name != new_entry.name) {
      return Fail(checker, -3, kMethod, TextId::kKeyNameTlv,
                  {{"id", std::to_string(old_entry.id)}, {"table", Shown(old_meta.name)}});
    }
    if (old_entry.unit_size != new_entry.unit_size) return Fail(checker, -3, kMethod, TextId::kKeySizeTlv, values);
  } else if (old_entry.unit_size > new_entry.unit_size) {
    return Fail(checker, -3, kMethod, TextId::kSizeReduced, values);
  }
  if (old_entry.type != new_entry.type) return Fail(checker, -3, kMethod, TextId::kTypeChanged, values);
  if (old_entry.has_refer && new_entry.count < old_entry.count) return Fail(checker, -3, kMethod, TextId::kCountReduced, values);
  if (!old_entry.has_refer && new_entry.count != old_entry.count)
    return Fail(checker, -3, kMethod, TextId::kCountChanged, values);
  if (old_entry.type != 0 && old_entry.type != 1) return 0;
  return CompareEntrySubMetaFieldTLV(checker, old_entry.structure, new_entry.structure) == 0 ? 0 : -3;
}

}  // namespace

int CompareEntryValueFieldTLV(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta) {
  static constexpr char kMethod[] = "CompareEntryValueFieldTLV";
  if (old_meta == nullptr) return Fail(checker, -1, kMethod, TextId::kMetaNull, {});
  if (new_meta == nullptr) return Fail(checker, -3, kMethod, TextId::kStructureMissing, {{"table", Shown(old_meta->name)}});
  for (const PlainEntry& old_entry : old_meta->entries) {
    if (!CheckWhetherExistEntryOfTLV(checker, old_entry, *new_meta)) {
      return Fail(checker, -3, kMethod, TextId::kEntryRemovedTlv, {{"entry", Shown(old_entry.name)}});
    }
    const PlainEntry* new_entry = CheckWhetherExistEntryById(checker, old_entry.id, new_meta);
    if (new_entry == nullptr) {
      return Fail(checker, -3, kMethod, TextId::kIdRemovedTlv,
                  {{"id", std::to_string(old_entry.id)}, {"table", Shown(old_meta->name)}});
    }
    if (CompareFound(checker, old_entry, *new_entry, *old_meta) != 0) return -3;
  }
  return 0;
}

}  // namespace model
