// The object, its text tables and the drivers that run the rules in order. The rules themselves stand in modify_table_*.cpp, a
// family a file. Held by tests/rules: driver_test, driver_protocol_test, compat_test and values_test.
#include "common/modify_table.h"

#include "common/call_memory.h"
#include "common/meta_view.h"
#include "common/refuse.h"

using namespace korvel;

namespace {

constexpr int kInitQmx = 1;
constexpr int kInitTlv = 2;

constexpr Message<Text, int, Text, Text, Text, int> kTrace("%s(%d)-<%s>:  m_svr_ver:%s table:'%s' type is :%d");
constexpr Message<Text> kSuccess("ModifyTable successed! table:'%s'");
constexpr Message<Text> kTlvFieldsFailed("CompareEntryValueFieldTLV failed! table:'%s'");

constexpr Message<Text> kCompatKeyFailed("ComparePrimaryKey failed! table:'%s'");
constexpr Message<Text> kCompatFieldsFailed("CompareEntryValueField failed! table:'%s'");
constexpr Message<Text> kCompatOrderFailed("CompareOrder failed! table:'%s'");
constexpr Message<Text> kCompatVersionFailed("CompareVersion failed! table:'%s'");

constexpr Message<int> kValuesTlvFailed("CompareEntryValueFieldTLV failed! ret:%d");
constexpr Message<int> kValuesFieldsFailed("CompareEntryValueField failed! ret:%d");
constexpr Message<int> kValuesVersionFailed("CompareVersion failed! ret:%d");

Text ProtocolName(bool is_tlv) { return is_tlv ? "TLV" : "QMX"; }

bool IsMissing(LPQMXMETALIB old_metalib, LPQMXMETALIB new_metalib, const char* metaname) {
  return new_metalib == nullptr || metaname == nullptr || old_metalib == nullptr || *metaname == '\0';
}

// The two text operations answer char*, as they always have; nobody may write through it.
char* ConstantText(const char* text) { return const_cast<char*>(text); }

}  // namespace

ModifyTable::ModifyTable() = default;

ModifyTable::~ModifyTable() = default;

const char* ModifyTable::GetErrType() const { return m_szErrorType; }

char* ModifyTable::GetDescStr(int table_type) const { return ConstantText(table_type == 0 ? "GENERIC" : "LIST"); }

// "INSC" is part of the interface.
char* ModifyTable::GetOrderStr(int order) const { return ConstantText(order == 0 ? "INSC" : "DESC"); }

// One function, because every record it logs carries its name: first the arguments, then the rules in their fixed order.
int ModifyTable::KorvelModifyTable(LPQMXMETALIB old_metalib, LPQMXMETALIB new_metalib, const char* metaname, const int table_type,
                                   const int init_qmx_version, LPVESKCATEGORYINST log_handle, const std::string& svrMinVersion,
                                   const std::string& whiteliststr, const int maybe_list_num) {
  m_svr_ver = svrMinVersion;
  if (IsMissing(old_metalib, new_metalib, metaname)) return Refuse(HERE, kArguments, metaname);

  const Site here = HERE;
  WriteText(here, kTrace, here.loc.loc_file, here.loc.loc_line, here.loc.loc_function, m_svr_ver.c_str(), metaname, table_type);
  LogBuffer(here, VESK_PRIORITY_INFO);

  if (table_type != 0 && table_type != 1) return Refuse(HERE, kTableType, table_type, metaname);
  if (init_qmx_version != kInitQmx && init_qmx_version != kInitTlv) return Refuse(HERE, kInitVersion, metaname);
  const bool old_is_tlv = IsTlv(old_metalib);
  const bool new_is_tlv = IsTlv(new_metalib);
  if (old_is_tlv && !new_is_tlv) return Refuse(HERE, kTlvToQmx, metaname);
  const int old_version = qmx_get_metalib_version(old_metalib);
  const int new_version = qmx_get_metalib_version(new_metalib);
  if (old_version > new_version) return Refuse(HERE, kLibVersion, new_version, old_version);
  const LPQMXMETA old_meta = qmx_get_meta_by_name(old_metalib, metaname);
  const LPQMXMETA new_meta = qmx_get_meta_by_name(new_metalib, metaname);
  if (old_meta == nullptr || new_meta == nullptr) return Refuse(HERE, kTableMissing, metaname);

  const CallMemory::Scope memory(this);
  if (const int ret = ComparePrimaryKey(old_meta, new_meta, log_handle); ret != 0) return ret;
  if (const int ret = CompareSplittableKey(old_meta, new_meta, log_handle); ret != 0) return ret;
  if (const int ret = CompareIndex(old_meta, new_meta, table_type, log_handle); ret != 0) return ret;
  if (CheckListMetaInfo(metaname, old_metalib, new_metalib, log_handle, table_type, maybe_list_num) != 0) {
    return CHECK_TABLE_ERROR_INVALID_PARAMETER;
  }

  // A table created in the record format whose libraries are TLV by now must satisfy both sets of field rules.
  const bool by_tlv_rules = old_is_tlv;  // so is the new one, then
  const bool by_record_rules = init_qmx_version == kInitQmx;
  if (by_tlv_rules) {
    if (const int ret = CompareEntryValueFieldTLV(old_meta, new_meta, log_handle); ret != 0) {
      LogOnly(HERE, VESK_PRIORITY_ERROR, kTlvFieldsFailed, metaname);
      return ret;
    }
  }
  if (by_record_rules) {
    if (const int ret = CompareEntryValueField(old_meta, new_meta, log_handle); ret != 0) return ret;
    if (const int ret = CompareOrder(old_meta, new_meta, log_handle); ret != 0) return ret;
    const int version = qmx_get_metalib_version(old_metalib);
    if (version < 0) return CHECK_TABLE_ERROR_SYSTEM_ERROR;  // without a text
    if (const int ret = CompareVersion(old_meta, new_meta, version, log_handle); ret != 0) return ret;
  }
  if (!by_tlv_rules && !by_record_rules) {
    return Refuse(HERE, kProtocolPair, ProtocolName(old_is_tlv), ProtocolName(new_is_tlv),
                  ProtocolName(init_qmx_version != kInitQmx), metaname);
  }

  if (const int ret = CheckFieldNameValidate(new_meta, log_handle); ret != 0) {
    Report(HERE, kFieldNames, metaname);
    return ret;
  }
  if (!svrMinVersion.empty()) {
    const int ret = CheckWhiteListFieldLen(metaname, old_metalib, new_metalib, svrMinVersion, whiteliststr, log_handle);
    if (ret != 0) return ret == ERROR_VALUE_FIELD ? ERROR_ENTRY_LENGTH_NOT_LEGAL : ret;
  }
  LogOnly(HERE, VESK_PRIORITY_INFO, kSuccess, metaname);
  return CHECK_TABLE_SUCCESS;
}

// Its own texts are only logged: the buffer keeps what the refusing rule wrote.
int ModifyTable::CheckTableMetaCompatible(LPQMXMETALIB old_metalib, LPQMXMETALIB new_metalib, const char* metaname,
                                          LPVESKCATEGORYINST log_handle) {
  if (IsMissing(old_metalib, new_metalib, metaname)) return RefuseInLog(HERE, kCompatArguments, metaname);
  const LPQMXMETA old_meta = qmx_get_meta_by_name(old_metalib, metaname);
  const LPQMXMETA new_meta = qmx_get_meta_by_name(new_metalib, metaname);
  if (old_meta == nullptr || new_meta == nullptr) return RefuseInLog(HERE, kTableMissing, metaname);

  const CallMemory::Scope memory(this);
  if (const int ret = ComparePrimaryKey(old_meta, new_meta, log_handle); ret != 0) {
    LogOnly(HERE, VESK_PRIORITY_ERROR, kCompatKeyFailed, metaname);
    return ret;
  }
  if (const int ret = CompareEntryValueField(old_meta, new_meta, log_handle); ret != 0) {
    LogOnly(HERE, VESK_PRIORITY_ERROR, kCompatFieldsFailed, metaname);
    return ret;
  }
  if (const int ret = CompareOrder(old_meta, new_meta, log_handle); ret != 0) {
    LogOnly(HERE, VESK_PRIORITY_ERROR, kCompatOrderFailed, metaname);
    return ret;
  }
  const int old_version = qmx_get_metalib_version(old_metalib);
  if (old_version < 0) return RefuseInLog(HERE, kCompatVersion, metaname);
  if (const int ret = CompareVersion(old_meta, new_meta, old_version, log_handle); ret != 0) {
    LogOnly(HERE, VESK_PRIORITY_ERROR, kCompatVersionFailed, metaname);
    return ret;
  }
  return CHECK_TABLE_SUCCESS;
}

int ModifyTable::CompareValue(LPQMXMETA pst_srcMeta, LPQMXMETA pst_dstMeta, LPQMXMETALIB src_metalib, LPQMXMETALIB dst_metalib,
                              int init_qmx_version, LPVESKCATEGORYINST log_handle) {
  if (IsTlv(src_metalib)) {
    if (!IsTlv(dst_metalib)) return CHECK_TABLE_SUCCESS;
    if (const int ret = CompareEntryValueFieldTLV(pst_srcMeta, pst_dstMeta, log_handle); ret != 0) {
      LogOnly(HERE, VESK_PRIORITY_ERROR, kValuesTlvFailed, ret);
      return ret;
    }
  }
  if (init_qmx_version != kInitQmx) return CHECK_TABLE_SUCCESS;
  if (const int ret = CompareEntryValueField(pst_srcMeta, pst_dstMeta, log_handle); ret != 0) {
    LogOnly(HERE, VESK_PRIORITY_ERROR, kValuesFieldsFailed, ret);
    return ret;
  }
  const int src_version = qmx_get_metalib_version(src_metalib);
  if (src_version < 0) return RefuseInLog(HERE, kValuesVersion, qmx_get_meta_name(pst_srcMeta));
  // The destination stands in the old place here and the source in the new one, while the version is the source's.
  if (const int ret = CompareVersion(pst_dstMeta, pst_srcMeta, src_version, log_handle); ret != 0) {
    LogOnly(HERE, VESK_PRIORITY_ERROR, kValuesVersionFailed, ret);
    return ret;
  }
  return CHECK_TABLE_SUCCESS;
}
