// The plain model of the checker: primary key, splittable key, indexes. Types and sizes of key fields are in rules_record.cpp and
// rules_tlv.cpp. Tested by model_test.cpp.
#include "model/rules.h"

namespace model {
namespace {

constexpr int kInfo = 600;

int CheckWhetherPrimaryKey(Checker& checker, const Name& entry, const PlainMeta* meta) {
  static constexpr char kMethod[] = "CheckWhetherPrimaryKey";
  if (!entry || meta == nullptr) return Fail(checker, -1, kMethod, TextId::kNameOrMeta, {});
  if (!meta->has_key) return Fail(checker, -4, kMethod, TextId::kNoKey, {{"table", Shown(meta->name)}});
  for (const Name& member : meta->key) {
    if (member == entry) return 0;
  }
  return Fail(checker, -7, kMethod, TextId::kNotInKey, {{"entry", Shown(entry)}, {"table", Shown(meta->name)}});
}

int CheckWhetherColumnField(Checker& checker, const Name& field, const PlainIndex& index, const PlainMeta& meta) {
  for (const Name& column : index.columns) {
    if (field && column == field) return 0;
  }
  return Fail(checker, -7, "CheckWhetherColumnField", TextId::kColumnSet, {{"table", Shown(meta.name)}});
}

int CompareIndexColumn(Checker& checker, const PlainIndex& old_index, const PlainIndex& new_index, const PlainMeta& old_meta) {
  static constexpr char kMethod[] = "CompareIndexColumn";
  if (old_index.columns.size() != new_index.columns.size()) {
    return Fail(checker, -7, kMethod, TextId::kColumnSet, {{"table", Shown(old_meta.name)}});
  }
  for (const Name& column : new_index.columns) {
    const int result = CheckWhetherColumnField(checker, column, old_index, old_meta);
    if (result == 0) continue;
    return Fail(checker, result, kMethod, TextId::kColumnField, {{"entry", Shown(column)}, {"table", Shown(old_meta.name)}});
  }
  return 0;
}

const PlainIndex* CheckWhetherIndexField(const PlainMeta& meta, const Name& name) {
  for (const PlainIndex& index : meta.indexes) {
    if (index.name == name) return &index;
  }
  return nullptr;
}

}  // namespace

int ComparePrimaryKey(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta) {
  static constexpr char kMethod[] = "ComparePrimaryKey";
  if (old_meta == nullptr || new_meta == nullptr) return Fail(checker, -1, kMethod, TextId::kMetaNull, {});
  if (!old_meta->has_key || !new_meta->has_key) {
    return Fail(checker, -4, kMethod, TextId::kKeyInvalid, {{"table", Shown(new_meta->name)}});
  }
  if (old_meta->key_count != new_meta->key_count) {
    return Fail(checker, -4, kMethod, TextId::kKeyNumber, {{"table", Shown(new_meta->name)}});
  }
  for (const Name& member : new_meta->key) {
    if (CheckWhetherPrimaryKey(checker, member, old_meta) == 0) continue;
    return Fail(checker, -4, kMethod, TextId::kKeyChanged, {{"entry", Shown(member)}, {"table", Shown(old_meta->name)}});
  }
  return 0;
}

int CompareSplittableKey(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta) {
  static constexpr char kMethod[] = "CompareSplittableKey";
  if (old_meta == nullptr || new_meta == nullptr) return Fail(checker, -1, kMethod, TextId::kMetaNull, {});
  const Values old_table = {{"table", Shown(old_meta->name)}};
  if (!old_meta->has_split && !new_meta->has_split) {
    LogOnly(checker, kInfo, kMethod, TextId::kNoSplit, old_table);
    return 0;
  }
  if (!old_meta->has_split || !new_meta->has_split) return Fail(checker, -5, kMethod, TextId::kSplitPresence, old_table);
  if (!new_meta->split_is_readable) {
    return Fail(checker, -5, kMethod, TextId::kNewSplitUnreadable, {{"table", Shown(new_meta->name)}});
  }
  if (!old_meta->split_is_readable) return Fail(checker, -5, kMethod, TextId::kOldSplitUnreadable, old_table);
  if (old_meta->split == new_meta->split) return 0;
  return Fail(checker, -5, kMethod, TextId::kSplitChanged, {{"key", old_meta->split}, {"table", Shown(old_meta->name)}});
}

int CompareIndex(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta, int table_type) {
  static constexpr char kMethod[] = "CompareIndex";
  if (old_meta == nullptr || new_meta == nullptr) return Fail(checker, -1, kMethod, TextId::kMetaNull, {});
  const std::string table = Shown(old_meta->name);
  if (table_type != 0 && table_type != 1) return Fail(checker, -6, kMethod, TextId::kIndexTableType, {{"table", table}});
  if (table_type == 1) {
    if (old_meta->indexes.empty() && new_meta->indexes.empty()) return 0;
    return Fail(checker, -6, kMethod, TextId::kIndexOnList, {{"table", table}});
  }
  if (old_meta->indexes.size() != new_meta->indexes.size()) {
    return Fail(checker, -6, kMethod, TextId::kIndexNumber, {{"table", table}});
  }
  for (const PlainIndex& new_index : new_meta->indexes) {
    const Values values = {{"index", Shown(new_index.name)}, {"table", table}};
    const PlainIndex* old_index = CheckWhetherIndexField(*old_meta, new_index.name);
    if (old_index == nullptr) return Fail(checker, -6, kMethod, TextId::kIndexName, values);
    if (CompareIndexColumn(checker, *old_index, new_index, *old_meta) != 0) {
      return Fail(checker, -6, kMethod, TextId::kIndexColumns, values);
    }
  }
  return 0;
}

}  // namespace model
