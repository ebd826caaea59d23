// One operation of a ModifyTable while it runs. Private to src/common: the operations of ModifyTable are thin entry points to it.
//
// A Run lives on the stack of whoever called the operation and ends with it. It carries everything that the rules share: the
// error buffer and the log category they write to, the indexes of long lists (lookup.h), and the pairs of structures that have
// been checked. Nothing of that is static or thread-local. So a log callback may start another run, of the same object or another
// one, on this stack or another; and a callback that never returns leaves nothing behind that a later run could find.
//
// The rules are member functions, one file a family (modify_table_*.cpp). They read as their contract:
//   - `return Refuse(HERE, kRow, arguments...)` writes the text of a row into the buffer, logs it, and returns the row's code.
//   - `Changed...(metas, MatchBy::kName)` visits the entries that a rule has to look at.
//   - `Descend<&Run::Rule>(...)` applies a rule to the structures of two entries, once for each pair of structures.
// A rule has the name of the operation that it implements, because log records carry it.
//
// That nothing remembered here can be observed is tested by tests/model; what callbacks may do, by tests/rules/callback_test.cpp.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "common/error_text.h"
#include "common/lookup.h"
#include "common/meta_view.h"
#include "common/modify_table.h"
#include "common/refusals.h"
#include "common/text_format.h"
#include "qmx/qmx_types.h"
#include "vesk/vesk_category.h"

// The place that a log record names: this line of this function.
#define HERE (vesk_loc_info_t{__FILE__, __LINE__, static_cast<const char*>(__func__), nullptr})

namespace korvel {

struct MetaPair {
  bool AnyNull() const { return old_meta == nullptr || new_meta == nullptr; }

  LPQMXMETA old_meta;
  LPQMXMETA new_meta;
};

// An entry that the old and the new meta have in common.
struct EntryPair {
  LPQMXMETAENTRY old_entry;
  LPQMXMETAENTRY new_entry;
};

// What the rule on field lengths leaves in the object.
struct WhitelistMembers {
  std::set<std::string>& names;   // whiteVec
  std::vector<PrintNode>& grown;  // printVec
};

// What texts call a table type ("GENERIC" or "LIST") and a sort rule ("INSC" or "DESC"); constant.
const char* TableTypeText(int table_type);
const char* SortRuleText(int sort_rule);

class Run {
 public:
  // Of an operation of `object`, which must outlive the run. A null category logs nothing.
  Run(const ModifyTable& object, LPVESKCATEGORYINST log_handle);
  // Leaves the row of the refusal, if there was one, in the object.
  ~Run();
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  // --- Checks that run other rules: modify_table.cpp ---

  int KorvelModifyTable(LPQMXMETALIB old_metalib, LPQMXMETALIB new_metalib, const char* metaname, int table_type,
                        int init_qmx_version, const std::string& svrMinVersion, const std::string& whiteliststr,
                        int maybe_list_num, WhitelistMembers whitelist);
  int CheckTableMetaCompatible(LPQMXMETALIB old_metalib, LPQMXMETALIB new_metalib, const char* metaname);
  int CompareValue(MetaPair metas, LPQMXMETALIB src_metalib, LPQMXMETALIB dst_metalib, int init_qmx_version);

  // --- Rules, and the lookups that are operations ---

  int ComparePrimaryKey(MetaPair metas);
  int CheckWhetherPrimaryKey(const char* entry_name, LPQMXMETA meta);
  int CompareSplittableKey(MetaPair metas);

  int CompareIndex(MetaPair metas, int table_type);
  int CompareIndexColumn(LPQMXMETAINDEX old_index, LPQMXMETAINDEX new_index, MetaPair metas);
  int CheckWhetherColumnField(const char* szFieldName, LPQMXMETAINDEX old_index, LPQMXMETA old_meta);
  LPQMXMETAINDEX CheckWhetherIndexField(LPQMXMETA meta, const char* szIndexName);

  LPQMXMETAENTRY CheckWhetherExistEntry(const char* entry_name, LPQMXMETA meta, int& entry_offset);
  LPQMXMETAENTRY CheckWhetherExistEntryById(int entry_id, LPQMXMETA meta);
  int CompareVersion(MetaPair metas, int old_metalib_version);
  int CompareOrder(MetaPair metas);

  int CompareEntryValueField(MetaPair metas);
  int CompareEntryValueFieldTLV(MetaPair metas);
  int CompareEntrySubMetaFieldTLV(MetaPair metas);
  bool CheckWhetherExistEntryOfTLV(LPQMXMETAENTRY needCheckPstEntry, LPQMXMETA new_meta);
  int CompareTableField(MetaPair metas);
  int CheckFieldNameValidate(LPQMXMETA meta);

  int CheckListMetaInfo(const char* metaname, LPQMXMETALIB oldPstMetaLib, LPQMXMETALIB newPstMetaLib, int maybe_table_type,
                        int maybe_list_num);
  int CompareSortListInfo(const char* srcMetaname, const char* dstMetaname, LPQMXMETALIB srcPstMetaLib,
                          LPQMXMETALIB dstPstMetaLib);

  int CheckWhiteListFieldLen(const char* metaname, LPQMXMETALIB oldPstMetaLib, LPQMXMETALIB newPstMetaLib,
                             const std::string& svrMinVersion, const std::string& whiteliststr, WhitelistMembers whitelist);
  bool CheckWhiteFieldIsModify(LPQMXMETA oldPstMeta, std::size_t new_len, const char* entry_name, std::size_t& old_len);

 private:
  using Here = vesk_loc_info_t;

  // --- Refusing and logging: run.cpp ---

  // Writes a row's text into the buffer and logs it as an error; returns the row's code. Ends the rule:
  //   return Refuse(HERE, kRow, ...);
  template <class... Args>
  int Refuse(const Here& here, const Refusal<Args...>& row, Exactly<Args>... args) {
    return RefuseWithCode<Args...>(here, row.code, row, args...);
  }

  // The same with another code, that of the rule whose refusal this one reports.
  template <class... Args>
  int RefuseWithCode(const Here& here, int code, const Refusal<Args...>& row, Exactly<Args>... args) {
    LogError<Args...>(here, row, args...);
    Refused(row);
    return code;
  }

  // Notes the row of a refusal whose text is in the buffer; returns its code.
  int Refused(const RefusalRow& row) {
    refusal_ = &row;
    return row.code;
  }

  // Refuses with CheckTable's own text, which is used as a format without arguments. `check_result` is what CheckTable returned.
  int RefuseWithFormat(const Here& here, int code, const char* format, int check_result);

  // Logs a row's text and leaves the buffer as it is; returns the row's code.
  template <class... Args>
  int RefuseInLog(const Here& here, const Refusal<Args...>& row, Exactly<Args>... args) {
    LogOnly<Args...>(here, VESK_PRIORITY_ERROR, row, args...);
    return row.code;
  }

  // Writes a text into the buffer and logs it as an error; the rule goes on.
  template <class... Args>
  void LogError(const Here& here, const TextFormat<Args...>& format, Exactly<Args>... args) {
    WriteText<Args...>(format, args...);
    LogBuffer(here, VESK_PRIORITY_ERROR);
  }

  // Writes a text into the buffer without logging it.
  template <class... Args>
  void WriteText(const TextFormat<Args...>& format, Exactly<Args>... args) {
    ++texts_;
    if constexpr (sizeof...(Args) == 0) {
      CopyFormat(buffer_, format.text);
    } else {
      FormatText(buffer_, format.text, args...);
    }
  }

  // Logs a text, uncut, without writing it into the buffer.
  template <class... Args>
  void LogOnly(const Here& here, int priority, const TextFormat<Args...>& format, Exactly<Args>... args) {
    if (MayLog(priority)) WriteRecord<Args...>(here, priority, format, args...);
  }

  // Logs what the buffer holds.
  void LogBuffer(const Here& here, int priority) {
    if (MayLog(priority)) PassToLog(here, priority, "%s", buffer_);
  }

  // Whether the category and its bounds let the priority through. Asked once for each record, before it is written; a closed log
  // costs a few comparisons.
  bool MayLog(int priority) {
    if (log_ == nullptr) return false;
    if (log_->piPriorityLow != nullptr && *log_->piPriorityLow != -1 && *log_->piPriorityLow < priority) return false;
    if (log_->piPriorityHigh != nullptr && *log_->piPriorityHigh > priority) return false;
    ++records_;
    return vesk_category_can_write(log_, priority, 0, 0) != 0;
  }

  // Writes a record. REQUIRES: MayLog has just returned true.
  template <class... Args>
  void WriteRecord(const Here& here, int priority, const TextFormat<Args...>& format, Exactly<Args>... args) {
    PassToLog(here, priority, format.text, args...);
  }
  void PassToLog(const Here& here, int priority, const char* format, ...);

  // --- What rules visit ---

  // The entries of the old, the new meta that a rule has to look at: all but those that both metas begin with and that are the
  // same. REQUIRES: no null.
  Entries ChangedOldEntries(MetaPair metas, MatchBy match_by) {
    return Entries(metas.old_meta, &lookup_.Prefix(metas.old_meta, metas.new_meta, match_by));
  }
  Entries ChangedNewEntries(MetaPair metas, MatchBy match_by) {
    return Entries(metas.new_meta, &lookup_.Prefix(metas.old_meta, metas.new_meta, match_by));
  }

  // Applies a rule to the structures of two composite entries of `metas`, unless this run has applied it to that pair of
  // structures before and it passed. Returns the rule's result.
  //   if (const int ret = Descend<&Run::CompareOrder>(metas, entries); ret != 0) return ret;
  template <auto rule, class... Args>
  int Descend(MetaPair metas, EntryPair entries, Args... args) {
    const MetaPair structures{qmx_get_entry_type_meta(OwnerOf(metas.old_meta), entries.old_entry),
                              qmx_get_entry_type_meta(OwnerOf(metas.new_meta), entries.new_entry)};
    return CheckPairOnce(&kRuleId<rule>, structures, [&] { return (this->*rule)(structures, args...); });
  }

  // Calls `check`, which returns a result code, unless the pair is known to pass: then the buffer gets the text that the check
  // left there, if it left one. A pair whose check reached the log is checked every time, so that the log stays the same.
  template <class Check>
  int CheckPairOnce(const void* rule_id, MetaPair metas, Check check) {
    const RecordKey key{rule_id, metas.old_meta, metas.new_meta};
    if (const auto found = passed_.find(key); found != passed_.end()) {
      if (found->second) {
        ++texts_;  // the structure around this one leaves the text, too
        FormatText(buffer_, "%s", found->second->c_str());
      }
      return CHECK_TABLE_SUCCESS;
    }
    const std::uint64_t texts_before = texts_;
    const std::uint64_t records_before = records_;
    const int ret = check();
    if (ret == CHECK_TABLE_SUCCESS && records_ == records_before) {
      passed_.emplace(key, texts_ == texts_before ? std::nullopt : std::optional<std::string>(buffer_));
    }
    return ret;
  }

  // Tells rules apart in `passed_` by its address.
  template <auto rule>
  static constexpr char kRuleId = 0;

  // --- What rules share ---

  // What the record format and TLV have in common: unit size, type and count of a field of a table.
  struct ShapeRule {
    const Refusal<CString, CString>& key_size;  // refuses another unit size of a key field
  };
  // Logs as the rule that calls it. `old_meta` is named in the texts.
  int CompareShape(const Here& here, LPQMXMETA old_meta, EntryPair entries, const ShapeRule& rule);

  const ModifyTable& object_;
  char* const buffer_;  // kErrorTextSize bytes
  const LPVESKCATEGORYINST log_;
  const RefusalRow* refusal_ = nullptr;

  // How many texts were written and how many records were let through by their bounds so far.
  std::uint64_t texts_ = 0;
  std::uint64_t records_ = 0;

  // Enough for a table of a hundred fields; what does not fit comes from the heap, and is freed when the run ends.
  alignas(std::max_align_t) std::array<std::byte, 4096> first_piece_;
  std::pmr::monotonic_buffer_resource arena_{first_piece_.data(), first_piece_.size()};
  Lookup lookup_{&arena_};
  RecordMap<std::optional<std::string>> passed_{&arena_};  // pairs that passed, and the text that they left in the buffer
};

}  // namespace korvel
