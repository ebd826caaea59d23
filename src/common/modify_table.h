// The schema-change checker: checks whether a table may change from its old schema to a new one.
//
// Construct a ModifyTable, call one public operation, read the result code and, on failure, GetErrType() and GetRefusal(). An
// object is used by one thread at a time; separate objects share nothing. The checker reads the libraries that it is given and
// changes nothing in them, throws nothing but std::bad_alloc, and does no input or output but logging.
//
// Common to all operations:
//   - Old comes before new, and the log category last. Everything passed in is borrowed for the call.
//   - 0 is success; a failure is a negative code of enCheckModifyTableError. The first rule that refuses ends the check.
//   - A refusing rule formats one line into the error buffer (cut at 1023 bytes) and logs the same text at ERROR (300); of field
//     lengths, the list of oversized fields is not logged, and the list of whitelisted ones that grew is logged at WARN (400).
//     Texts are part of the interface, misspellings included. A null category logs nothing.
//   - A refusal that is named below as without a text leaves the buffer as it was.
//   - A null pointer for which an operation names no result matches nothing and is skipped. So a field without a name is found by
//     no other; the check of field names treats it as one with an empty name (ERROR_FIELD_NAME_EMPTY).
//   - The libraries stay unchanged during a call, and each qmx_get_... operation returns the same result for the same arguments:
//     the checker calls it again for what it has seen before. Otherwise, behavior is undefined.
//   - A pair of structures is checked once for each rule, so the cost is linear in the number of fields. But a pair whose check
//     comes to a record that the bounds of the log category let through is checked again for each path to it. So with a category
//     that lets records through, structures that contain each other several times may cost a time exponential in the depth of
//     their nesting. Bounds are read before each record: a category that closes them (low bound 0) ends this.
//
// What a log category may do while it writes a record, or says whether it would:
//   - Use another ModifyTable, on the same libraries or others. Neither check affects the other.
//   - Use the same ModifyTable. The outer operation goes on with what the buffer, printVec and whiteVec then hold. Its result is
//     not affected; its text is in the buffer afterwards only if it was written after the record.
//   - Switch to another stack and come back, in any order, also to one on which another check is under way.
//   - Change its bounds. Neither result codes nor texts in the buffer depend on them.
//   - Throw, or leave by longjmp, or never come back. The object can be used again, and holds what the operation had written.
//     Except after an exception, the memory that the operation had allocated is leaked; nothing else.
//   - Not: change the libraries of a check that is under way, or use one object on two threads at the same time.
#pragma once

#include <cstddef>
#include <set>
#include <string>
#include <vector>

#include "common/result_codes.h"
#include "qmx/qmx_types.h"
#include "vesk/vesk_category.h"

namespace korvel {
class Run;
struct RefusalRow;
}  // namespace korvel

// A whitelisted field whose size grew. Sizes in bytes, all elements together.
struct PrintNode {
  std::string entry_name;
  std::size_t before_sz;
  std::size_t after_sz;
};

class ModifyTable {
 public:
  ModifyTable();
  ~ModifyTable();

  // Checks whether table `metaname` may change from the old library to the new one: keys, indexes, kind of table, fields by
  // protocol, field names and, when `svrMinVersion` is not empty, field lengths.
  //
  //   table_type        0 generic, 1 list
  //   init_qmx_version  protocol the table was created with: 1 record format, 2 TLV
  //   svrMinVersion     oldest server that will run the table ("3.29.0"); empty = field lengths are not checked.
  //                     Field lengths need a log category: with a null one the check returns -1 without a text.
  //   whiteliststr      fields that may exceed the length limit, joined by ';'
  //   maybe_list_num    list length the table has on the server; read when the old schema has no table attributes
  //
  //    0   allowed. GetErrType() then holds what the last rules left there, not a failure
  //   -1   CHECK_TABLE_ERROR_INVALID_PARAMETER: bad argument, TLV to record format, older library version, kind of table changed
  //   -2   CHECK_TABLE_ERROR_SYSTEM_ERROR: no such table, protocols that cannot be compared, oversized fields, old library
  //        without a version (without a text)
  //   -35  ERROR_ENTRY_LENGTH_NOT_LEGAL: whitelisted fields grew; GetErrType() lists them
  //   any other code comes from the rule that refused
  //
  // printVec and whiteVec are not cleared between calls on one object: use a fresh one for each check.
  int KorvelModifyTable(LPQMXMETALIB old_metalib, LPQMXMETALIB new_metalib, const char* metaname, const int table_type,
                        const int init_qmx_version, LPVESKCATEGORYINST log_handle, const std::string& svrMinVersion,
                        const std::string& whiteliststr, const int maybe_list_num);

  // Checks whether records of table `metaname` written under the old library can be read under the new one: primary key and
  // fields, always by the rules of the record format. Not compared: protocols, library versions, indexes, splittable key, names.
  //
  //    0   readable; -1 a null library, a null or empty name; -2 no such table, or the old library has no version
  //   any other code comes from the rule that refused; GetErrType() holds that rule's text. This operation's own texts are only
  //   logged, never put into the buffer.
  int CheckTableMetaCompatible(LPQMXMETALIB old_metalib, LPQMXMETALIB new_metalib, const char* metaname,
                               LPVESKCATEGORYINST log_handle);

  // Text of the last failure, or of what was written last; "" for a new object. Borrowed from the object.
  const char* GetErrType() const;

  // The row of the catalog of refusals (refusals.h) whose text the last operation left in the buffer when it refused. Where an
  // operation writes its own text over that of a rule, the row is that of its own text.
  // Null for a new object, after success, after a refusal without a text in the buffer, while an operation runs, after one that
  // did not return, and where the text is not in the catalog (that of a store's own CheckTable, or of a table that it cannot
  // find). Where a log category has used the same object, it is the outer operation's row that remains. The row is constant and
  // lives as long as the program.
  const korvel::RefusalRow* GetRefusal() const;

  // Checks whether the indexes are the same by name and each has the same set of columns by name.
  // Not compared: the order of indexes and of columns, directions, prefix lengths.
  //    0 they are; -1 a meta is null; -6 ERROR_INDEX_FIELD: they differ, a list table (table_type 1) has an index, or table_type
  //   is neither 0 nor 1
  int CompareIndex(LPQMXMETA old_meta, LPQMXMETA new_meta, int table_type, LPVESKCATEGORYINST log_handle);

  // Checks whether the new meta has as many primary-key fields as the old one, each of them an old one.
  // Names only, byte for byte. Not compared: key order, repeats ((id, zone) -> (id, id) passes), types and sizes.
  //    0 it has; -1 a meta is null
  //   -4 ERROR_PRIMARYKEY_FIELD: no key on a side, another number of key fields, or a field that was no key field
  int ComparePrimaryKey(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle);

  // Checks whether the splittable key has the same text on both sides, or is absent on both (logged at INFO).
  //    0 it has; -1 a meta is null; -5 ERROR_SPLITTABLE_FIELD: added, removed, changed, or its text cannot be read
  int CompareSplittableKey(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle);

  // Checks whether two metas have the same entries by name, with the same type, count and unit size, at every depth.
  // Not compared: order, ids, versions, keys. Each depth that passes is logged at INFO, inner ones first.
  //    0 they have; -1 a meta is null; -33 ERROR_VALUE_NUM_NOT_EQUAL: another number of entries
  //   -34 ERROR_VALUE_ENTRY_NOT_EQUAL: an old entry is missing or has another shape
  int CompareTableField(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle);

  // Checks whether the table keeps its kind (table type, list length, sort settings, data protocol), as CheckTable derives it
  // from each library. `maybe_table_type` and `maybe_list_num` are what the server holds; they are read only when the old schema
  // carries no table attributes and the new one does.
  //    0 it does
  //   -1, -2 CheckTable failed on the old, the new side (its text)      -3  table without attributes to sorted list
  //   -4  table type changed        -5  list length reduced or not the server's        -6  another number of sort fields
  //   -7, -8 a new entry, its name cannot be read      -9, -10 an old entry, its name      -11 a sort field's attribute changed
  //   -15 attributes removed, or sort rule changed     -16 data protocol changed
  int CheckListMetaInfo(const char* metaname, LPQMXMETALIB oldPstMetaLib, LPQMXMETALIB newPstMetaLib,
                        LPVESKCATEGORYINST log_handle, int maybe_table_type, int maybe_list_num) const;

  // Checks whether the destination table keeps the sort fields of the source; the tables may have different names.
  // Not compared: table type, list length, sort rule, protocol, attributes of the fields. More sort fields pass.
  //    0 it does; -1, -2 CheckTable failed on the source, the destination (its text)
  //   -3 source without attributes, destination a sorted list; -6 fewer sort fields; -15 attributes removed
  int CompareSortListInfo(const char* srcMetaname, const char* dstMetaname, LPQMXMETALIB srcPstMetaLib,
                          LPQMXMETALIB dstPstMetaLib, LPVESKCATEGORYINST log_handle) const;

  // Compares the fields of two metas by the rules that fit their libraries' protocols. Entry order is not compared.
  //    0 they pass, or no rule fits (a TLV source with another destination; a table created in TLV without a TLV source)
  //   -2 the source library has no version; any other code comes from the rule that refused, with its text.
  // REQUIRES: no null; each meta lies in its library.
  int CompareValue(LPQMXMETA pst_srcMeta, LPQMXMETA pst_dstMeta, LPQMXMETALIB src_metalib, LPQMXMETALIB dst_metalib,
                   int init_qmx_version, LPVESKCATEGORYINST log_handle);

 private:
  // Keys and indexes: modify_table_keys.cpp, modify_table_index.cpp.
  int CheckWhetherPrimaryKey(const char* entry_name, LPQMXMETA meta, LPVESKCATEGORYINST log_handle);
  int CompareIndexColumn(LPQMXMETAINDEX pstIndex_old, LPQMXMETAINDEX pstIndex_new, LPQMXMETA pstoldMeta, LPQMXMETA pstnewMeta,
                         LPVESKCATEGORYINST log_handle);
  int CheckWhetherColumnField(const char* szFieldName, LPQMXMETAINDEX pstIndex_old, LPQMXMETA pstTabMeta,
                              LPVESKCATEGORYINST log_handle);
  LPQMXMETAINDEX CheckWhetherIndexField(LPQMXMETA pstTabMeta, const char* szIndexName);

  // Fields: modify_table_record.cpp, modify_table_entry.cpp, modify_table_tlv.cpp, modify_table_name.cpp.
  int CompareEntryValueField(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const;
  int CompareVersion(LPQMXMETA old_meta, LPQMXMETA new_meta, int old_metalib_version, LPVESKCATEGORYINST log_handle) const;
  int CompareOrder(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const;
  LPQMXMETAENTRY CheckWhetherExistEntry(const char* entry_name, LPQMXMETA meta, int& entry_offset,
                                        LPVESKCATEGORYINST log_handle) const;
  LPQMXMETAENTRY CheckWhetherExistEntryById(int entry_id, LPQMXMETA meta, LPVESKCATEGORYINST log_handle) const;
  int CompareEntryValueFieldTLV(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const;
  int CompareEntrySubMetaFieldTLV(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const;
  int CheckFieldNameValidate(LPQMXMETA meta, LPVESKCATEGORYINST log_handle);
  bool CheckWhetherExistEntryOfTLV(LPQMXMETAENTRY needCheckPstEntry, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const;

  // Texts of table types and sort rules: constant, never freed.
  char* GetDescStr(int table_type) const;
  char* GetOrderStr(int order) const;

  // Field lengths: modify_table_length.cpp.
  int CheckWhiteListFieldLen(const char* metaname, LPQMXMETALIB oldPstMetaLib, LPQMXMETALIB newPstMetaLib,
                             const std::string& svrMinVersion, const std::string& whiteliststr, LPVESKCATEGORYINST log_handle);
  bool CheckWhiteFieldIsModify(LPQMXMETA oldPstMeta, std::size_t new_len, const char* entry_name, std::size_t& old_len);

  // What was written last: the text of a failure, mostly. Const rules write it too.
  mutable char m_szErrorType[1024] = {};
  std::vector<PrintNode> printVec;                        // whitelisted fields that grew
  std::set<std::string> whiteVec;                         // the whitelist
  std::string m_svr_ver;                                  // server version of the last KorvelModifyTable
  mutable const korvel::RefusalRow* m_refusal = nullptr;  // see GetRefusal

  friend class korvel::Run;
};
