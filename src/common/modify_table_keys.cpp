// Primary key and splittable key. Types and sizes of key fields are the field rules' concern.
// Held by tests/rules/primary_key_test.cpp and splittable_key_test.cpp.
#include "common/lookup.h"
#include "common/meta_view.h"
#include "common/modify_table.h"
#include "common/refuse.h"

using namespace korvel;

namespace {

constexpr std::size_t kSplittableKeySize = 1024;

constexpr Message<Text> kNoSplittableKey("Table dose not have SplittableKey! table:'%s'");

bool ReadSplittableKey(LPQMXMETA meta, char (&text)[kSplittableKeySize]) {
  char* err_str = nullptr;
  return qmx_get_meta_splittablekey(meta, text, sizeof(text), &err_str) == 0;
}

}  // namespace

// Key order is not compared, nor is a field that stands twice.
int ModifyTable::ComparePrimaryKey(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) {
  if (old_meta == nullptr || new_meta == nullptr) return Refuse(HERE, kMetaNull);
  if (!HasPrimaryKey(old_meta) || !HasPrimaryKey(new_meta)) {
    return Refuse(HERE, kPrimaryKeyInvalid, qmx_get_meta_name(new_meta));
  }
  if (old_meta->nPrimayKeyMemberNum != new_meta->nPrimayKeyMemberNum) {
    return Refuse(HERE, kPrimaryKeyCount, qmx_get_meta_name(new_meta));
  }
  const CallMemory::Scope memory(this);
  for (const auto* member : PrimaryKeyMembers(new_meta)) {
    const char* name = MemberName(new_meta, member);
    if (CheckWhetherPrimaryKey(name, old_meta, log_handle) != 0) {
      return Refuse(HERE, kPrimaryKeyField, name, qmx_get_meta_name(old_meta));
    }
  }
  return CHECK_TABLE_SUCCESS;
}

int ModifyTable::CheckWhetherPrimaryKey(const char* entry_name, LPQMXMETA meta, LPVESKCATEGORYINST log_handle) {
  if (entry_name == nullptr || meta == nullptr) return Refuse(HERE, kNameOrMeta);
  if (!HasPrimaryKey(meta)) return Refuse(HERE, kNoPrimaryKey, qmx_get_meta_name(meta));
  if (IsPrimaryKeyName(meta, entry_name)) return CHECK_TABLE_SUCCESS;
  return Refuse(HERE, kNotPrimaryKey, entry_name, qmx_get_meta_name(meta));
}

int ModifyTable::CompareSplittableKey(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) {
  if (old_meta == nullptr || new_meta == nullptr) return Refuse(HERE, kMetaNull);
  const char* old_name = qmx_get_meta_name(old_meta);
  if (!HasSplittableKey(old_meta) && !HasSplittableKey(new_meta)) {
    LogOnly(HERE, VESK_PRIORITY_INFO, kNoSplittableKey, old_name);
    return CHECK_TABLE_SUCCESS;
  }
  if (HasSplittableKey(old_meta) != HasSplittableKey(new_meta)) return Refuse(HERE, kSplitKeyPresence, old_name);

  // The new side is read first: where neither can be read, the new one is reported.
  char splittablekey_name_new[kSplittableKeySize] = {};
  if (!ReadSplittableKey(new_meta, splittablekey_name_new)) {
    return Refuse(HERE, kSplitKeyNewText, qmx_get_meta_name(new_meta));
  }
  char splittablekey_name_old[kSplittableKeySize] = {};
  if (!ReadSplittableKey(old_meta, splittablekey_name_old)) return Refuse(HERE, kSplitKeyOldText, old_name);
  if (!SameName(splittablekey_name_old, splittablekey_name_new)) {
    return Refuse(HERE, kSplitKeyChanged, splittablekey_name_old, old_name);
  }
  return CHECK_TABLE_SUCCESS;
}
