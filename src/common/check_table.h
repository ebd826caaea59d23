// Reads what kind of table a meta's attributes describe.
#pragma once

#include <string>

#include "qmx/qmx_types.h"
#include "vesk/vesk_category.h"

// Largest number of sort fields of a sorted list.
inline constexpr int KORVEL_MAX_LIST_SORT_NUM = 4;

// Table type codes as CheckTable derives them.
inline constexpr int TABLE_TYPE_GENERIC = 0;
inline constexpr int TABLE_TYPE_LIST = 1;
inline constexpr int TABLE_TYPE_SORTLIST = 2;

// Sort rule codes.
inline constexpr int SORT_RULE_INSC = 0;
inline constexpr int SORT_RULE_DESC = 1;

// Reads the attributes of a table ("TableType=LIST;ListNum=1024;DataProtocol=QMX") from its meta.
class CheckTable {
 public:
  CheckTable();
  explicit CheckTable(const std::string& svr_ver);
  ~CheckTable();

  // Derives the type of table `metaname` of `metalib`.
  //
  //    0                       the table carries TableType; all five outputs are set:
  //                            table_type      TABLE_TYPE_...
  //                            list_num        slots of a list; 0 when the attribute is absent
  //                            sort_field_num  sort fields of a sorted list, 1 to KORVEL_MAX_LIST_SORT_NUM; 0 for other types
  //                            sort_rule       SORT_RULE_...; SORT_RULE_INSC when the attribute is absent
  //                            data_protocol   "QMX", "TLV" or "" when the attribute is absent; a buffer of 8 bytes
  //   -46 ERROR_OLD_TABLE_DEFINE   defined in the old way, without TableType; the outputs are unchanged
  //   -1  CHECK_TABLE_ERROR_INVALID_PARAMETER   a null library or protocol buffer, a null or empty name
  //   -2  CHECK_TABLE_ERROR_SYSTEM_ERROR        no such table
  //   -50 ERROR_ATTEMPT_MODIFY_TABLE_CUSTOMATTR_STYLE   an attribute or a sort field is malformed
  // Below 0 but -46, m_szErrorType holds one line that says what is wrong and where, and the outputs are unchanged. The checker
  // uses that line as a format: a '%' of a name or attribute is doubled in it.
  // The flag has no effect. Nothing is logged: the caller reports.
  int CheckTableTypeByCustomAttr(LPQMXMETALIB metalib, const char* metaname, int& table_type, int& list_num, int& sort_field_num,
                                 int& sort_rule, char* data_protocol, bool flag, LPVESKCATEGORYINST log_handle);

  char m_szErrorType[1024];  // text of the last failure
  std::string m_svr_ver;     // server version the table is meant for; nothing depends on it today
};
