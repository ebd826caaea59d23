// Field lengths by server version, and the whitelist of fields that may exceed them.
// Tested by tests/rules: length_test and standalone/.
#include "common/meta_view.h"
#include "common/run.h"
#include "common/text_helpers.h"

namespace korvel {
namespace {

// Largest field in bytes, from the version named on.
constexpr std::size_t kMaxField = 131072;       // 128 KiB
constexpr std::size_t kMaxField329 = 262144;    // 256 KiB
constexpr std::size_t kMaxField339 = 10485760;  // 10 MiB

constexpr TextFormat<CString, std::size_t, std::size_t> kWhitelistTrace("entry %s old_len:%zu,new_len:%zu");
// The two texts are swapped relative to the limits, and a 3.39.0 server reports the first; part of the interface.
constexpr TextFormat<CString, std::size_t> kTooLong329("entry %s length(%zu) is greater than 128kB");
constexpr TextFormat<CString, std::size_t> kTooLong("entry %s length(%zu) is greater than 256KB");

// An empty name matches no field, whatever the whitelist was split into.
bool IsWhitelisted(const std::set<std::string>& whitelist, const char* name) {
  return name != nullptr && *name != '\0' && whitelist.contains(name);
}

bool IsAtLeast(const std::string& version, const char* other) { return RealCmpVersion(version.c_str(), other, false) >= 0; }

// The text behind "WARNING_WHITELIST:".
std::string GrownReport(const std::vector<PrintNode>& grown) {
  std::string report;
  for (const PrintNode& node : grown) {
    report +=
        "entry:" + node.entry_name + " size " + std::to_string(node.before_sz) + " -> " + std::to_string(node.after_sz) + " |";
  }
  return report;
}

}  // namespace

// Key fields are never tested. All oversized fields are collected before the check refuses.
int Run::CheckWhiteListFieldLen(const char* metaname, LPQMXMETALIB oldPstMetaLib, LPQMXMETALIB newPstMetaLib,
                                const std::string& svrMinVersion, const std::string& whiteliststr, WhitelistMembers whitelist) {
  if (metaname == nullptr || *metaname == '\0' || oldPstMetaLib == nullptr || newPstMetaLib == nullptr || log_ == nullptr) {
    return CHECK_TABLE_ERROR_INVALID_PARAMETER;
  }
  if (!whiteliststr.empty()) SplitString(whiteliststr.c_str(), ";", whitelist.names);
  const LPQMXMETA newPstMeta = qmx_get_meta_by_name(newPstMetaLib, metaname);
  const LPQMXMETA oldPstMeta = qmx_get_meta_by_name(oldPstMetaLib, metaname);
  const bool ge329 = IsAtLeast(svrMinVersion, "3.29.0");
  const bool ge339 = IsAtLeast(svrMinVersion, "3.39.0");
  const std::size_t limit = ge339 ? kMaxField339 : ge329 ? kMaxField329 : kMaxField;

  std::string oversized;  // the text behind "ERR_ENTRY_LEN;"
  const int new_entry_num = EntryCount(newPstMeta);
  for (int i = 0; i < new_entry_num; ++i) {
    const LPQMXMETAENTRY entry = qmx_get_entry_by_index(newPstMeta, i);
    if (entry == nullptr) return Refuse(HERE, kLengthEntryNull, i, metaname);
    if (IsPrimaryKeyMember(entry)) continue;
    const std::size_t size = EntrySize(entry);
    if (size <= limit) continue;
    const char* name = qmx_get_entry_name(entry);
    if (IsWhitelisted(whitelist.names, name)) {
      std::size_t old_len = 0;
      const bool isMod = CheckWhiteFieldIsModify(oldPstMeta, size, name, old_len);
      LogOnly(HERE, VESK_PRIORITY_INFO, kWhitelistTrace, name, old_len, size);
      if (isMod) whitelist.grown.push_back({name, old_len, size});
    } else {
      LogOnly(HERE, VESK_PRIORITY_ERROR, ge329 ? kTooLong329 : kTooLong, name, size);
      oversized += std::string(name == nullptr ? "" : name) + "|";
    }
  }

  if (!oversized.empty()) {
    WriteText(kOversized, oversized.c_str());
    return Refused(kOversized);
  }
  // Nodes of earlier calls count too: the list is never cleared.
  if (whitelist.grown.empty()) return CHECK_TABLE_SUCCESS;
  WriteText(kWhitelistGrown, GrownReport(whitelist.grown).c_str());
  LogBuffer(HERE, VESK_PRIORITY_WARN);
  return Refused(kWhitelistGrown);
}

// Whether the field is strictly smaller in the old meta; its size there goes to `old_len`. Entries behind a missing one are not
// searched.
bool Run::CheckWhiteFieldIsModify(LPQMXMETA oldPstMeta, std::size_t new_len, const char* entry_name, std::size_t& old_len) {
  const int position = lookup_.PositionBeforeMissing(oldPstMeta, entry_name);
  if (position < 0) return false;
  old_len = EntrySize(qmx_get_entry_by_index(oldPstMeta, position));
  return old_len < new_len;
}

}  // namespace korvel
