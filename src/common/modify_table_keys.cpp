// Primary key and splittable key. Types and sizes of key fields are left to the field rules.
// Tested by tests/rules/primary_key_test.cpp and splittable_key_test.cpp.
#include "common/meta_view.h"
#include "common/run.h"

namespace korvel {
namespace {

constexpr std::size_t kSplittableKeySize = 1024;

constexpr TextFormat<CString> kNoSplittableKey("Table dose not have SplittableKey! table:'%s'");

bool ReadSplittableKey(LPQMXMETA meta, char (&text)[kSplittableKeySize]) {
  char* err_str = nullptr;
  return qmx_get_meta_splittablekey(meta, text, sizeof(text), &err_str) == 0;
}

}  // namespace

// Key order is not compared, nor whether a field is named twice.
int Run::ComparePrimaryKey(MetaPair metas) {
  if (metas.AnyNull()) return Refuse(HERE, kMetaNull);
  if (!HasPrimaryKey(metas.old_meta) || !HasPrimaryKey(metas.new_meta)) {
    return Refuse(HERE, kPrimaryKeyInvalid, qmx_get_meta_name(metas.new_meta));
  }
  if (metas.old_meta->nPrimayKeyMemberNum != metas.new_meta->nPrimayKeyMemberNum) {
    return Refuse(HERE, kPrimaryKeyCount, qmx_get_meta_name(metas.new_meta));
  }
  for (const auto* member : PrimaryKeyMembers(metas.new_meta)) {
    const char* name = MemberName(metas.new_meta, member);
    if (CheckWhetherPrimaryKey(name, metas.old_meta) != 0) {
      return Refuse(HERE, kPrimaryKeyField, name, qmx_get_meta_name(metas.old_meta));
    }
  }
  return CHECK_TABLE_SUCCESS;
}

int Run::CheckWhetherPrimaryKey(const char* entry_name, LPQMXMETA meta) {
  if (entry_name == nullptr || meta == nullptr) return Refuse(HERE, kNameOrMeta);
  if (!HasPrimaryKey(meta)) return Refuse(HERE, kNoPrimaryKey, qmx_get_meta_name(meta));
  if (lookup_.IsPrimaryKeyName(meta, entry_name)) return CHECK_TABLE_SUCCESS;
  return Refuse(HERE, kNotPrimaryKey, entry_name, qmx_get_meta_name(meta));
}

int Run::CompareSplittableKey(MetaPair metas) {
  if (metas.AnyNull()) return Refuse(HERE, kMetaNull);
  const char* old_name = qmx_get_meta_name(metas.old_meta);
  if (!HasSplittableKey(metas.old_meta) && !HasSplittableKey(metas.new_meta)) {
    LogOnly(HERE, VESK_PRIORITY_INFO, kNoSplittableKey, old_name);
    return CHECK_TABLE_SUCCESS;
  }
  if (HasSplittableKey(metas.old_meta) != HasSplittableKey(metas.new_meta)) return Refuse(HERE, kSplitKeyPresence, old_name);

  // The new side is read first: if neither can be read, the new one is reported.
  char new_text[kSplittableKeySize] = {};
  if (!ReadSplittableKey(metas.new_meta, new_text)) {
    return Refuse(HERE, kSplitKeyNewText, qmx_get_meta_name(metas.new_meta));
  }
  char old_text[kSplittableKeySize] = {};
  if (!ReadSplittableKey(metas.old_meta, old_text)) return Refuse(HERE, kSplitKeyOldText, old_name);
  if (!SameName(old_text, new_text)) {
    return Refuse(HERE, kSplitKeyChanged, old_text, old_name);
  }
  return CHECK_TABLE_SUCCESS;
}

}  // namespace korvel
