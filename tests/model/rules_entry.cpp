// The plain model of the checker: versions, order, names and set of fields. Types and sizes of fields depend on the protocol and
// are in rules_record.cpp and rules_tlv.cpp. Tested by model_test.cpp.
#include "model/rules.h"
#include "model/rules_lookup.h"

namespace model {
namespace {

constexpr int kInfo = 600;
constexpr std::size_t kLongestName = 31;

bool IsComposite(int type) { return type == 0 || type == 1; }

bool IsDigit(char byte) { return byte >= '0' && byte <= '9'; }

bool IsNameByte(char byte) {
  return IsDigit(byte) || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') || byte == '_';
}

bool AreNameBytes(const std::string& name) {
  for (const char byte : name) {
    if (!IsNameByte(byte)) return false;
  }
  return true;
}

const PlainEntry* FindByName(const PlainMeta& meta, const Name& name) {
  for (const PlainEntry& entry : meta.entries) {
    if (name && entry.name == name) return &entry;
  }
  return nullptr;
}

bool HaveOneShape(const PlainEntry& one, const PlainEntry& other) {
  return one.type == other.type && one.count == other.count && one.unit_size == other.unit_size;
}

Values Shapes(const PlainMeta& old_meta, const PlainEntry& old_entry, const PlainMeta& new_meta, const PlainEntry& new_entry) {
  return {{"old", Shown(old_meta.name)},
          {"old_entry", Shown(old_entry.name)},
          {"old_type", std::to_string(old_entry.type)},
          {"new", Shown(new_meta.name)},
          {"new_entry", Shown(new_entry.name)},
          {"new_type", std::to_string(new_entry.type)},
          {"old_count", std::to_string(old_entry.count)},
          {"new_count", std::to_string(new_entry.count)},
          {"old_size", std::to_string(old_entry.unit_size)},
          {"new_size", std::to_string(new_entry.unit_size)}};
}

}  // namespace

const PlainEntry* CheckWhetherExistEntry(Checker& checker, const Name& name, const PlainMeta* meta, int& offset) {
  static constexpr char kMethod[] = "CheckWhetherExistEntry";
  if (!name || meta == nullptr) return Fail(checker, 0, kMethod, TextId::kNameOrMeta, {}), nullptr;
  if (meta->entries.empty()) return Fail(checker, 0, kMethod, TextId::kNoEntries, {{"table", Shown(meta->name)}}), nullptr;
  for (std::size_t i = 0; i < meta->entries.size(); ++i) {
    if (meta->entries[i].name != name) continue;
    offset = static_cast<int>(i);
    return &meta->entries[i];
  }
  return nullptr;
}

int CompareVersion(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta, int old_metalib_version) {
  static constexpr char kMethod[] = "CompareVersion";
  if (old_meta == nullptr || new_meta == nullptr) return Fail(checker, -1, kMethod, TextId::kMetaNull, {});
  for (const PlainEntry& new_entry : new_meta->entries) {
    int offset = 0;
    const PlainEntry* old_entry = CheckWhetherExistEntry(checker, new_entry.name, old_meta, offset);
    if (old_entry != nullptr && new_entry.version != old_entry->version) {
      return Fail(checker, -8, kMethod, TextId::kVersionChanged,
                  {{"entry", Shown(old_entry->name)}, {"table", Shown(old_meta->name)}});
    }
    if (old_entry == nullptr && new_entry.version <= old_metalib_version) {
      return Fail(checker, -8, kMethod, TextId::kNewVersionLow,
                  {{"entry", Shown(new_entry.name)}, {"table", Shown(new_meta->name)}});
    }
    if (old_entry == nullptr || !IsComposite(old_entry->type)) continue;
    const int result = CompareVersion(checker, old_entry->structure, new_entry.structure, old_metalib_version);
    if (result != 0) return result;
  }
  return 0;
}

int CompareOrder(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta) {
  static constexpr char kMethod[] = "CompareOrder";
  if (old_meta == nullptr || new_meta == nullptr) return Fail(checker, -1, kMethod, TextId::kMetaNull, {});
  int added = 0;
  for (int i = 0; i < static_cast<int>(new_meta->entries.size()); ++i) {
    const PlainEntry& new_entry = new_meta->entries[static_cast<std::size_t>(i)];
    int offset = 0;
    const PlainEntry* old_entry = CheckWhetherExistEntry(checker, new_entry.name, old_meta, offset);
    if (old_entry == nullptr) {
      ++added;
      continue;
    }
    if (offset + added != i) {
      return Fail(checker, -8, kMethod, TextId::kOrder, {{"entry", Shown(old_entry->name)}, {"table", Shown(old_meta->name)}});
    }
    if (!IsComposite(old_entry->type)) continue;
    const int result = CompareOrder(checker, old_entry->structure, new_entry.structure);
    if (result != 0) return result;
  }
  return 0;
}

int CheckFieldNameValidate(Checker& checker, const PlainMeta* meta) {
  static constexpr char kMethod[] = "CheckFieldNameValidate";
  Write(checker, Fill(TextId::kNamePreset, {}));
  for (const PlainEntry& entry : meta->entries) {
    const std::string name = entry.name.value_or("");  // a missing name is refused like an empty one
    LogOnly(checker, kInfo, kMethod, TextId::kNameLength, {{"entry", name}, {"length", std::to_string(name.size())}});
    if (name.empty()) return Fail(checker, -19, kMethod, TextId::kNameEmpty, {});
    if (IsDigit(name[0])) return Fail(checker, -17, kMethod, TextId::kNameDigit, {{"entry", name}});
    if (!AreNameBytes(name)) return Fail(checker, -18, kMethod, TextId::kNameCharacter, {{"entry", name}});
    if (name.size() > kLongestName) return Fail(checker, -9, kMethod, TextId::kNameTooLong, {{"entry", name}});
  }
  return 0;
}

int CompareTableField(Checker& checker, const PlainMeta* old_meta, const PlainMeta* new_meta) {
  static constexpr char kMethod[] = "CompareTableField";
  if (old_meta == nullptr) return Fail(checker, -1, kMethod, TextId::kOldMetaNull, {});
  if (new_meta == nullptr) return Fail(checker, -1, kMethod, TextId::kNewMetaNull, {});
  if (old_meta->entries.size() != new_meta->entries.size()) {
    return Fail(checker, -33, kMethod, TextId::kFieldNumber,
                {{"old", Shown(old_meta->name)},
                 {"old_number", std::to_string(old_meta->entries.size())},
                 {"new", Shown(new_meta->name)},
                 {"new_number", std::to_string(new_meta->entries.size())}});
  }
  for (const PlainEntry& old_entry : old_meta->entries) {
    const PlainEntry* new_entry = FindByName(*new_meta, old_entry.name);
    if (new_entry == nullptr) {
      return Fail(checker, -34, kMethod, TextId::kFieldAbsent,
                  {{"entry", Shown(old_entry.name)}, {"table", Shown(new_meta->name)}});
    }
    if (!HaveOneShape(old_entry, *new_entry)) {
      return Fail(checker, -34, kMethod, TextId::kFieldShape, Shapes(*old_meta, old_entry, *new_meta, *new_entry));
    }
    if (!IsComposite(old_entry.type)) continue;
    const int result = CompareTableField(checker, old_entry.structure, new_entry->structure);
    if (result != 0) return result;
  }
  LogOnly(checker, kInfo, kMethod, TextId::kFieldsSame, {{"table", Shown(old_meta->name)}});
  return 0;
}

}  // namespace model
