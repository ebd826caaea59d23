// The checks that run other rules in their fixed order, and the entry points of class ModifyTable. The rules are in
// modify_table_*.cpp, one family a file. Tested by tests/rules: driver_test, driver_protocol_test, compat_test and values_test.
#include "common/modify_table.h"

#include "common/meta_view.h"
#include "common/run.h"

namespace korvel {
namespace {

constexpr int kInitQmx = 1;
constexpr int kInitTlv = 2;

constexpr TextFormat<CString, int, CString, CString, CString, int> kTrace("%s(%d)-<%s>:  m_svr_ver:%s table:'%s' type is :%d");
constexpr TextFormat<CString> kSuccess("ModifyTable successed! table:'%s'");
constexpr TextFormat<CString> kTlvFieldsFailed("CompareEntryValueFieldTLV failed! table:'%s'");

constexpr TextFormat<CString> kCompatKeyFailed("ComparePrimaryKey failed! table:'%s'");
constexpr TextFormat<CString> kCompatFieldsFailed("CompareEntryValueField failed! table:'%s'");
constexpr TextFormat<CString> kCompatOrderFailed("CompareOrder failed! table:'%s'");
constexpr TextFormat<CString> kCompatVersionFailed("CompareVersion failed! table:'%s'");

constexpr TextFormat<int> kValuesTlvFailed("CompareEntryValueFieldTLV failed! ret:%d");
constexpr TextFormat<int> kValuesFieldsFailed("CompareEntryValueField failed! ret:%d");
constexpr TextFormat<int> kValuesVersionFailed("CompareVersion failed! ret:%d");

CString ProtocolName(bool is_tlv) { return is_tlv ? "TLV" : "QMX"; }

bool IsMissing(LPQMXMETALIB old_metalib, LPQMXMETALIB new_metalib, const char* metaname) {
  return new_metalib == nullptr || metaname == nullptr || old_metalib == nullptr || *metaname == '\0';
}

}  // namespace

// One function, because every record it logs carries its name: first the arguments, then the rules in their fixed order.
int Run::KorvelModifyTable(LPQMXMETALIB old_metalib, LPQMXMETALIB new_metalib, const char* metaname, int table_type,
                           int init_qmx_version, const std::string& svrMinVersion, const std::string& whiteliststr,
                           int maybe_list_num, WhitelistMembers whitelist) {
  if (IsMissing(old_metalib, new_metalib, metaname)) return Refuse(HERE, kArguments, metaname);

  const vesk_loc_info_t here = HERE;
  WriteText(kTrace, here.loc_file, here.loc_line, here.loc_function, svrMinVersion.c_str(), metaname, table_type);
  LogBuffer(here, VESK_PRIORITY_INFO);

  if (table_type != 0 && table_type != 1) return Refuse(HERE, kTableType, table_type, metaname);
  if (init_qmx_version != kInitQmx && init_qmx_version != kInitTlv) return Refuse(HERE, kInitVersion, metaname);
  const bool old_is_tlv = IsTlv(old_metalib);
  const bool new_is_tlv = IsTlv(new_metalib);
  if (old_is_tlv && !new_is_tlv) return Refuse(HERE, kTlvToQmx, metaname);
  const int old_version = qmx_get_metalib_version(old_metalib);
  const int new_version = qmx_get_metalib_version(new_metalib);
  if (old_version > new_version) return Refuse(HERE, kLibVersion, new_version, old_version);
  const MetaPair metas{qmx_get_meta_by_name(old_metalib, metaname), qmx_get_meta_by_name(new_metalib, metaname)};
  if (metas.AnyNull()) return Refuse(HERE, kTableMissing, metaname);

  if (const int ret = ComparePrimaryKey(metas); ret != 0) return ret;
  if (const int ret = CompareSplittableKey(metas); ret != 0) return ret;
  if (const int ret = CompareIndex(metas, table_type); ret != 0) return ret;
  if (CheckListMetaInfo(metaname, old_metalib, new_metalib, table_type, maybe_list_num) != 0) {
    return CHECK_TABLE_ERROR_INVALID_PARAMETER;
  }

  // A table created in the record format whose libraries are TLV by now must satisfy both sets of field rules.
  const bool by_tlv_rules = old_is_tlv;  // so is the new one, then
  const bool by_record_rules = init_qmx_version == kInitQmx;
  if (by_tlv_rules) {
    if (const int ret = CompareEntryValueFieldTLV(metas); ret != 0) {
      LogOnly(HERE, VESK_PRIORITY_ERROR, kTlvFieldsFailed, metaname);
      return ret;
    }
  }
  if (by_record_rules) {
    if (const int ret = CompareEntryValueField(metas); ret != 0) return ret;
    if (const int ret = CompareOrder(metas); ret != 0) return ret;
    const int version = qmx_get_metalib_version(old_metalib);
    if (version < 0) return CHECK_TABLE_ERROR_SYSTEM_ERROR;  // without a text
    if (const int ret = CompareVersion(metas, version); ret != 0) return ret;
  }
  if (!by_tlv_rules && !by_record_rules) {
    return Refuse(HERE, kProtocolPair, ProtocolName(old_is_tlv), ProtocolName(new_is_tlv),
                  ProtocolName(init_qmx_version != kInitQmx), metaname);
  }

  if (const int ret = CheckFieldNameValidate(metas.new_meta); ret != 0) {
    return RefuseWithCode(HERE, ret, kFieldNames, metaname);
  }
  if (!svrMinVersion.empty()) {
    const int ret = CheckWhiteListFieldLen(metaname, old_metalib, new_metalib, svrMinVersion, whiteliststr, whitelist);
    if (ret != 0) return ret == ERROR_VALUE_FIELD ? ERROR_ENTRY_LENGTH_NOT_LEGAL : ret;
  }
  LogOnly(HERE, VESK_PRIORITY_INFO, kSuccess, metaname);
  return CHECK_TABLE_SUCCESS;
}

// Its own texts are only logged: the buffer keeps what the refusing rule wrote.
int Run::CheckTableMetaCompatible(LPQMXMETALIB old_metalib, LPQMXMETALIB new_metalib, const char* metaname) {
  if (IsMissing(old_metalib, new_metalib, metaname)) return RefuseInLog(HERE, kCompatArguments, metaname);
  const MetaPair metas{qmx_get_meta_by_name(old_metalib, metaname), qmx_get_meta_by_name(new_metalib, metaname)};
  if (metas.AnyNull()) return RefuseInLog(HERE, kTableMissing, metaname);

  if (const int ret = ComparePrimaryKey(metas); ret != 0) {
    LogOnly(HERE, VESK_PRIORITY_ERROR, kCompatKeyFailed, metaname);
    return ret;
  }
  if (const int ret = CompareEntryValueField(metas); ret != 0) {
    LogOnly(HERE, VESK_PRIORITY_ERROR, kCompatFieldsFailed, metaname);
    return ret;
  }
  if (const int ret = CompareOrder(metas); ret != 0) {
    LogOnly(HERE, VESK_PRIORITY_ERROR, kCompatOrderFailed, metaname);
    return ret;
  }
  const int old_version = qmx_get_metalib_version(old_metalib);
  if (old_version < 0) return RefuseInLog(HERE, kCompatVersion, metaname);
  if (const int ret = CompareVersion(metas, old_version); ret != 0) {
    LogOnly(HERE, VESK_PRIORITY_ERROR, kCompatVersionFailed, metaname);
    return ret;
  }
  return CHECK_TABLE_SUCCESS;
}

int Run::CompareValue(MetaPair metas, LPQMXMETALIB src_metalib, LPQMXMETALIB dst_metalib, int init_qmx_version) {
  if (IsTlv(src_metalib)) {
    if (!IsTlv(dst_metalib)) return CHECK_TABLE_SUCCESS;
    if (const int ret = CompareEntryValueFieldTLV(metas); ret != 0) {
      LogOnly(HERE, VESK_PRIORITY_ERROR, kValuesTlvFailed, ret);
      return ret;
    }
  }
  if (init_qmx_version != kInitQmx) return CHECK_TABLE_SUCCESS;
  if (const int ret = CompareEntryValueField(metas); ret != 0) {
    LogOnly(HERE, VESK_PRIORITY_ERROR, kValuesFieldsFailed, ret);
    return ret;
  }
  const int src_version = qmx_get_metalib_version(src_metalib);
  if (src_version < 0) return RefuseInLog(HERE, kValuesVersion, qmx_get_meta_name(metas.old_meta));
  // Crossed on purpose: the destination is the old side here and the source the new one, while the version is the source's.
  const MetaPair crossed{metas.new_meta, metas.old_meta};
  if (const int ret = CompareVersion(crossed, src_version); ret != 0) {
    LogOnly(HERE, VESK_PRIORITY_ERROR, kValuesVersionFailed, ret);
    return ret;
  }
  return CHECK_TABLE_SUCCESS;
}

}  // namespace korvel

// --- Entry points: each operation of the object is one run ---

using korvel::Run;

ModifyTable::ModifyTable() = default;

ModifyTable::~ModifyTable() = default;

const char* ModifyTable::GetErrType() const { return m_szErrorType; }

const korvel::RefusalRow* ModifyTable::GetRefusal() const { return m_refusal; }

// The server version is kept whatever the arguments are.
int ModifyTable::KorvelModifyTable(LPQMXMETALIB old_metalib, LPQMXMETALIB new_metalib, const char* metaname, const int table_type,
                                   const int init_qmx_version, LPVESKCATEGORYINST log_handle, const std::string& svrMinVersion,
                                   const std::string& whiteliststr, const int maybe_list_num) {
  m_svr_ver = svrMinVersion;
  return Run(*this, log_handle)
      .KorvelModifyTable(old_metalib, new_metalib, metaname, table_type, init_qmx_version, svrMinVersion, whiteliststr,
                         maybe_list_num, {whiteVec, printVec});
}

int ModifyTable::CheckTableMetaCompatible(LPQMXMETALIB old_metalib, LPQMXMETALIB new_metalib, const char* metaname,
                                          LPVESKCATEGORYINST log_handle) {
  return Run(*this, log_handle).CheckTableMetaCompatible(old_metalib, new_metalib, metaname);
}

int ModifyTable::CompareValue(LPQMXMETA pst_srcMeta, LPQMXMETA pst_dstMeta, LPQMXMETALIB src_metalib, LPQMXMETALIB dst_metalib,
                              int init_qmx_version, LPVESKCATEGORYINST log_handle) {
  return Run(*this, log_handle).CompareValue({pst_srcMeta, pst_dstMeta}, src_metalib, dst_metalib, init_qmx_version);
}

int ModifyTable::ComparePrimaryKey(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) {
  return Run(*this, log_handle).ComparePrimaryKey({old_meta, new_meta});
}

int ModifyTable::CheckWhetherPrimaryKey(const char* entry_name, LPQMXMETA meta, LPVESKCATEGORYINST log_handle) {
  return Run(*this, log_handle).CheckWhetherPrimaryKey(entry_name, meta);
}

int ModifyTable::CompareSplittableKey(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) {
  return Run(*this, log_handle).CompareSplittableKey({old_meta, new_meta});
}

int ModifyTable::CompareIndex(LPQMXMETA old_meta, LPQMXMETA new_meta, int table_type, LPVESKCATEGORYINST log_handle) {
  return Run(*this, log_handle).CompareIndex({old_meta, new_meta}, table_type);
}

int ModifyTable::CompareIndexColumn(LPQMXMETAINDEX pstIndex_old, LPQMXMETAINDEX pstIndex_new, LPQMXMETA pstoldMeta,
                                    LPQMXMETA pstnewMeta, LPVESKCATEGORYINST log_handle) {
  return Run(*this, log_handle).CompareIndexColumn(pstIndex_old, pstIndex_new, {pstoldMeta, pstnewMeta});
}

int ModifyTable::CheckWhetherColumnField(const char* szFieldName, LPQMXMETAINDEX pstIndex_old, LPQMXMETA pstTabMeta,
                                         LPVESKCATEGORYINST log_handle) {
  return Run(*this, log_handle).CheckWhetherColumnField(szFieldName, pstIndex_old, pstTabMeta);
}

LPQMXMETAINDEX ModifyTable::CheckWhetherIndexField(LPQMXMETA pstTabMeta, const char* szIndexName) {
  return Run(*this, nullptr).CheckWhetherIndexField(pstTabMeta, szIndexName);
}

int ModifyTable::CompareTableField(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) {
  return Run(*this, log_handle).CompareTableField({old_meta, new_meta});
}

int ModifyTable::CompareEntryValueField(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const {
  return Run(*this, log_handle).CompareEntryValueField({old_meta, new_meta});
}

int ModifyTable::CompareVersion(LPQMXMETA old_meta, LPQMXMETA new_meta, int old_metalib_version,
                                LPVESKCATEGORYINST log_handle) const {
  return Run(*this, log_handle).CompareVersion({old_meta, new_meta}, old_metalib_version);
}

int ModifyTable::CompareOrder(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const {
  return Run(*this, log_handle).CompareOrder({old_meta, new_meta});
}

LPQMXMETAENTRY ModifyTable::CheckWhetherExistEntry(const char* entry_name, LPQMXMETA meta, int& entry_offset,
                                                   LPVESKCATEGORYINST log_handle) const {
  return Run(*this, log_handle).CheckWhetherExistEntry(entry_name, meta, entry_offset);
}

LPQMXMETAENTRY ModifyTable::CheckWhetherExistEntryById(int entry_id, LPQMXMETA meta, LPVESKCATEGORYINST log_handle) const {
  return Run(*this, log_handle).CheckWhetherExistEntryById(entry_id, meta);
}

int ModifyTable::CompareEntryValueFieldTLV(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const {
  return Run(*this, log_handle).CompareEntryValueFieldTLV({old_meta, new_meta});
}

int ModifyTable::CompareEntrySubMetaFieldTLV(LPQMXMETA old_meta, LPQMXMETA new_meta, LPVESKCATEGORYINST log_handle) const {
  return Run(*this, log_handle).CompareEntrySubMetaFieldTLV({old_meta, new_meta});
}

bool ModifyTable::CheckWhetherExistEntryOfTLV(LPQMXMETAENTRY needCheckPstEntry, LPQMXMETA new_meta,
                                              LPVESKCATEGORYINST log_handle) const {
  return Run(*this, log_handle).CheckWhetherExistEntryOfTLV(needCheckPstEntry, new_meta);
}

int ModifyTable::CheckFieldNameValidate(LPQMXMETA meta, LPVESKCATEGORYINST log_handle) {
  return Run(*this, log_handle).CheckFieldNameValidate(meta);
}

int ModifyTable::CheckListMetaInfo(const char* metaname, LPQMXMETALIB oldPstMetaLib, LPQMXMETALIB newPstMetaLib,
                                   LPVESKCATEGORYINST log_handle, int maybe_table_type, int maybe_list_num) const {
  return Run(*this, log_handle).CheckListMetaInfo(metaname, oldPstMetaLib, newPstMetaLib, maybe_table_type, maybe_list_num);
}

int ModifyTable::CompareSortListInfo(const char* srcMetaname, const char* dstMetaname, LPQMXMETALIB srcPstMetaLib,
                                     LPQMXMETALIB dstPstMetaLib, LPVESKCATEGORYINST log_handle) const {
  return Run(*this, log_handle).CompareSortListInfo(srcMetaname, dstMetaname, srcPstMetaLib, dstPstMetaLib);
}

int ModifyTable::CheckWhiteListFieldLen(const char* metaname, LPQMXMETALIB oldPstMetaLib, LPQMXMETALIB newPstMetaLib,
                                        const std::string& svrMinVersion, const std::string& whiteliststr,
                                        LPVESKCATEGORYINST log_handle) {
  return Run(*this, log_handle)
      .CheckWhiteListFieldLen(metaname, oldPstMetaLib, newPstMetaLib, svrMinVersion, whiteliststr, {whiteVec, printVec});
}

bool ModifyTable::CheckWhiteFieldIsModify(LPQMXMETA oldPstMeta, std::size_t new_len, const char* entry_name,
                                          std::size_t& old_len) {
  return Run(*this, nullptr).CheckWhiteFieldIsModify(oldPstMeta, new_len, entry_name, old_len);
}

// The two text operations return char*, as they always have; nobody may write through it.

char* ModifyTable::GetDescStr(int table_type) const { return const_cast<char*>(korvel::TableTypeText(table_type)); }

char* ModifyTable::GetOrderStr(int order) const { return const_cast<char*>(korvel::SortRuleText(order)); }
