// Whether a table keeps its kind: table type, list length, sort settings and data protocol, as CheckTable derives them.
// Tested by tests/rules: list_test, sortlist_test and standalone/.
#include <cstring>

#include "common/check_table.h"
#include "common/meta_view.h"
#include "common/run.h"

namespace korvel {
namespace {

constexpr TextFormat<CString, int, int> kTypesTrace("CheckListMetaInfo(%s) old_table_type:%d,new_table_type:%d");

// One side's kind of table.
struct TableKind {
  // Anything but success and "no attributes" is CheckTable's failure.
  bool Failed() const { return ret != CHECK_TABLE_SUCCESS && !IsOldKind(); }
  bool IsOldKind() const { return ret == ERROR_OLD_TABLE_DEFINE; }
  // A sorted list is a list in every comparison.
  int FoldedType() const { return table_type == TABLE_TYPE_SORTLIST ? TABLE_TYPE_LIST : table_type; }

  int ret{};
  int table_type = 0;
  int list_num = 0;
  int sort_field_num = 0;
  int sort_rule = 0;
  char data_protocol[8] = {};
};

TableKind DeriveKind(CheckTable& check, LPQMXMETALIB metalib, const char* metaname, LPVESKCATEGORYINST log) {
  TableKind kind;
  kind.ret = check.CheckTableTypeByCustomAttr(metalib, metaname, kind.table_type, kind.list_num, kind.sort_field_num,
                                              kind.sort_rule, kind.data_protocol, false, log);
  return kind;
}

// The entries of a meta that carry a second custom attribute. A search ends at the first entry that is missing, or that carries
// the attribute and has no name; entries without the attribute are skipped before their names are read.
class AttributedEntries {
 public:
  AttributedEntries(LPQMXMETALIB metalib, LPQMXMETA meta, Lookup& lookup)
      : metalib_(metalib), meta_(meta), lookup_(lookup), count_(EntryCount(meta)), end_(count_) {}

  // The attribute of the first of that name; null if the search found none.
  const char* Find(const char* name) {
    const int position = lookup_.FindFirst(IndexKind::kAttributedEntries, meta_, count_, NameKey{name},
                                           [this](int i) noexcept { return KeyAt(i); });
    // A search that finds an item reads its key last.
    return position < 0 ? nullptr : attribute_;
  }

  // Where and why a search that found nothing ended early.
  bool EndsEarly() const { return end_ < count_; }
  bool EndsAtMissingEntry() const { return qmx_get_entry_by_index(meta_, end_) == nullptr; }
  int end() const { return end_; }

 private:
  NameKey KeyAt(int i) {
    if (i >= end_) return {nullptr};
    const LPQMXMETAENTRY entry = qmx_get_entry_by_index(meta_, i);
    attribute_ = entry == nullptr ? nullptr : qmx_get_entry_customattr2(metalib_, entry);
    if (entry != nullptr && IsEmpty(attribute_)) return {nullptr};
    const char* name = EntryName(entry);
    if (name == nullptr) end_ = i;
    return {name};
  }

  LPQMXMETALIB metalib_;
  LPQMXMETA meta_;
  Lookup& lookup_;
  int count_;
  int end_;                          // the entry that ends every search, as far as it was reached
  const char* attribute_ = nullptr;  // of the entry whose key was read last
};

}  // namespace

const char* TableTypeText(int table_type) { return table_type == TABLE_TYPE_GENERIC ? "GENERIC" : "LIST"; }

// "INSC" is part of the interface.
const char* SortRuleText(int sort_rule) { return sort_rule == SORT_RULE_INSC ? "INSC" : "DESC"; }

int Run::CheckListMetaInfo(const char* metaname, LPQMXMETALIB oldPstMetaLib, LPQMXMETALIB newPstMetaLib, int maybe_table_type,
                           int maybe_list_num) {
  CheckTable pCheck(object_.m_svr_ver);
  const TableKind old_kind = DeriveKind(pCheck, oldPstMetaLib, metaname, log_);
  if (old_kind.Failed()) return RefuseWithFormat(HERE, CHECK_TABLE_ERROR_INVALID_PARAMETER, pCheck.m_szErrorType, old_kind.ret);
  const TableKind new_kind = DeriveKind(pCheck, newPstMetaLib, metaname, log_);
  if (new_kind.Failed()) return RefuseWithFormat(HERE, CHECK_TABLE_ERROR_SYSTEM_ERROR, pCheck.m_szErrorType, new_kind.ret);

  if (old_kind.IsOldKind() && new_kind.IsOldKind()) return CHECK_TABLE_SUCCESS;
  const int old_type = old_kind.FoldedType();
  const int new_type = new_kind.FoldedType();
  if (old_kind.IsOldKind()) {
    // The attributes must describe what the server holds. Its type is not folded.
    if (new_kind.sort_field_num > 0) return Refuse(HERE, kToSortList, metaname);
    if (new_type != maybe_table_type) {
      return Refuse(HERE, kDeclaredType, metaname, TableTypeText(maybe_table_type), TableTypeText(new_type));
    }
    if (maybe_table_type == TABLE_TYPE_LIST && new_kind.list_num != maybe_list_num) {
      return Refuse(HERE, kDeclaredListNum, metaname, maybe_list_num, new_kind.list_num);
    }
    return CHECK_TABLE_SUCCESS;
  }
  if (new_kind.IsOldKind()) return Refuse(HERE, kToOldFormat, metaname);

  LogOnly(HERE, VESK_PRIORITY_INFO, kTypesTrace, metaname, old_kind.table_type, new_kind.table_type);
  if (old_type != new_type) return Refuse(HERE, kKind, TableTypeText(old_type), TableTypeText(new_type));
  if (old_kind.list_num > new_kind.list_num) return Refuse(HERE, kListNum, old_kind.list_num, new_kind.list_num);
  if (old_kind.sort_field_num != new_kind.sort_field_num) {
    return Refuse(HERE, kSortFieldNum, old_kind.sort_field_num, new_kind.sort_field_num);
  }
  if (old_kind.sort_rule != new_kind.sort_rule) {
    return Refuse(HERE, kSortRule, SortRuleText(old_kind.sort_rule), SortRuleText(new_kind.sort_rule));
  }
  if (!IsEmpty(old_kind.data_protocol) && std::strcmp(old_kind.data_protocol, new_kind.data_protocol) != 0) {
    return Refuse(HERE, kDataProtocol, old_kind.data_protocol, new_kind.data_protocol);
  }
  if (old_kind.sort_field_num == 0) return CHECK_TABLE_SUCCESS;

  // A sorted list: a field that carried the attribute before must carry the same one; others may gain it.
  const LPQMXMETA newPstMeta = qmx_get_meta_by_name(newPstMetaLib, metaname);
  const LPQMXMETA oldPstMeta = qmx_get_meta_by_name(oldPstMetaLib, metaname);
  AttributedEntries old_entries(oldPstMetaLib, oldPstMeta, lookup_);
  const int new_entry_num = EntryCount(newPstMeta);
  for (int i = 0; i < new_entry_num; ++i) {
    const LPQMXMETAENTRY pstEntry = qmx_get_entry_by_index(newPstMeta, i);
    if (pstEntry == nullptr) return Refuse(HERE, kNewEntryNull, i);
    const char* new_cus = qmx_get_entry_customattr2(newPstMetaLib, pstEntry);
    if (IsEmpty(new_cus)) continue;
    const char* new_name = qmx_get_entry_name(pstEntry);
    if (new_name == nullptr) return Refuse(HERE, kNewEntryName, i);
    const char* old_cus = old_entries.Find(new_name);
    if (old_cus == nullptr && old_entries.EndsEarly()) {
      return Refuse(HERE, old_entries.EndsAtMissingEntry() ? kOldEntryNull : kOldEntryName, old_entries.end());
    }
    if (old_cus != nullptr && std::strcmp(old_cus, new_cus) != 0) return Refuse(HERE, kSortAttribute, old_cus, new_cus);
  }
  return CHECK_TABLE_SUCCESS;
}

// Only the sort fields are compared: not type, list length, sort rule and protocol.
int Run::CompareSortListInfo(const char* srcMetaname, const char* dstMetaname, LPQMXMETALIB srcPstMetaLib,
                             LPQMXMETALIB dstPstMetaLib) {
  CheckTable pCheck;
  const TableKind source = DeriveKind(pCheck, srcPstMetaLib, srcMetaname, log_);
  if (source.Failed()) return RefuseWithFormat(HERE, CHECK_TABLE_ERROR_INVALID_PARAMETER, pCheck.m_szErrorType, source.ret);
  const TableKind destination = DeriveKind(pCheck, dstPstMetaLib, dstMetaname, log_);
  if (destination.Failed()) {
    return RefuseWithFormat(HERE, CHECK_TABLE_ERROR_SYSTEM_ERROR, pCheck.m_szErrorType, destination.ret);
  }

  if (source.IsOldKind()) {
    const bool becomes_sorted = !destination.IsOldKind() && destination.sort_field_num > 0;
    return becomes_sorted ? Refuse(HERE, kToSortList, dstMetaname) : CHECK_TABLE_SUCCESS;
  }
  if (destination.IsOldKind()) return Refuse(HERE, kToOldFormat, srcMetaname);
  if (source.sort_field_num > destination.sort_field_num) {
    return Refuse(HERE, kSortFieldNum, source.sort_field_num, destination.sort_field_num);
  }
  return CHECK_TABLE_SUCCESS;
}

}  // namespace korvel
