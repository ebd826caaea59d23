// Whether an entry is the same on both sides. The rules skip the entries that two metas begin with and that match
// (common_prefix.h), so a member that is not compared here is a member that no rule sees change.
//
// Change this file together with the rules: a rule about a member that is not compared is never called for an entry that is
// otherwise the same.
//
//   member of tagQMXMetaEntry     compared   as
//   ptrName, ptrCustomAttr2       yes        texts; a missing attribute equals an empty one, as in the rules
//   iID, iVersion, iType, iCount  yes        numbers
//   iUnitSize                     yes        number
//   chDBFlag                      in part    the primary-key bit; no rule reads the other bits
//   ptrRefer                      in part    whether there is a refer; no rule reads which entry it names
//   ptrTypeMeta                   no         the structure of a composite entry is always descended into; a simple entry has none
//   ptrEntry                      no         says where the record is, not what it is
//   chReserved                    no         no operation reads it
//
// Tested by tests/rules/entry_match_test.cpp, which fails if a member is missing from its list, and by tests/model, where a
// change of what is not compared must change no answer.
#pragma once

#include <cstdint>

#include "common/meta_view.h"
#include "qmx/qmx_types.h"

namespace korvel {

enum class EntryMatch : std::uint8_t {
  kDifferent,
  kSame,
  kSameComposite  // but for the structure, which has not been compared
};

// Compares two entries, each with the library that owns it. Two missing entries do not match, nor do two without a name.
// Flattened, as it takes a dozen operations of the metadata library for every entry: where these can be inlined, they are.
// Static, so that a program with another copy still runs that of the checker, whose coverage is measured.
[[gnu::flatten]] static inline EntryMatch MatchEntries(LPQMXMETALIB old_lib, LPQMXMETAENTRY old_entry, LPQMXMETALIB new_lib,
                                                       LPQMXMETAENTRY new_entry) {
  if (old_entry == nullptr || new_entry == nullptr) return EntryMatch::kDifferent;
  const int type = qmx_get_entry_type(old_entry);
  const bool is_same =
      qmx_get_entry_id(old_entry) == qmx_get_entry_id(new_entry) &&
      qmx_get_entry_version(old_entry) == qmx_get_entry_version(new_entry) && type == qmx_get_entry_type(new_entry) &&
      qmx_get_entry_unitsize(old_entry) == qmx_get_entry_unitsize(new_entry) &&
      qmx_get_entry_count(old_entry) == qmx_get_entry_count(new_entry) &&
      IsPrimaryKeyMember(old_entry) == IsPrimaryKeyMember(new_entry) && HasRefer(old_entry) == HasRefer(new_entry) &&
      SameName(qmx_get_entry_name(old_entry), qmx_get_entry_name(new_entry)) &&
      SameCustomAttr2(old_lib, old_entry, new_lib, new_entry);
  if (!is_same) return EntryMatch::kDifferent;
  return IsComposite(type) ? EntryMatch::kSameComposite : EntryMatch::kSame;
}

}  // namespace korvel
