// Finds the counterparts of entries in another meta: by name for packed records, by id for TLV.
#pragma once

#include <algorithm>
#include <cstring>
#include <vector>

#include "common/meta_view.h"

namespace korvel {

// How records identify their fields.
enum class RecordForm { kPacked, kTlv };

// Whether two entries are the same field. An entry without a name, or without an id, is no field of another schema.
inline bool IsSameField(RecordForm form, LPQMXMETAENTRY a, LPQMXMETAENTRY b) {
  if (a == nullptr || b == nullptr) return false;
  if (form == RecordForm::kTlv) return qmx_get_entry_id(a) >= 0 && qmx_get_entry_id(a) == qmx_get_entry_id(b);
  return SameName(qmx_get_entry_name(a), qmx_get_entry_name(b));
}

// Borrows the meta. The entries are sorted at the first search that the position does not answer. Not for several threads at
// once.
class EntryFinder {
 public:
  EntryFinder(RecordForm form, LPQMXMETA meta) : form_(form), meta_(meta) {}

  // The first entry that is the same field as `entry`, which has the position `hint` in its own meta; or null.
  LPQMXMETAENTRY Find(LPQMXMETAENTRY entry, int hint) {
    const LPQMXMETAENTRY likely = qmx_get_entry_by_index(meta_, hint);
    if (IsSameField(form_, entry, likely)) return likely;
    if (sorted_.empty()) Sort();
    const auto found = std::lower_bound(sorted_.begin(), sorted_.end(), entry,
                                        [this](LPQMXMETAENTRY one, LPQMXMETAENTRY other) { return IsLess(one, other); });
    return found != sorted_.end() && IsSameField(form_, entry, *found) ? *found : nullptr;
  }

 private:
  bool IsLess(LPQMXMETAENTRY a, LPQMXMETAENTRY b) const {
    if (form_ == RecordForm::kTlv) return qmx_get_entry_id(a) < qmx_get_entry_id(b);
    const char* const a_name = qmx_get_entry_name(a);
    const char* const b_name = qmx_get_entry_name(b);
    if (a_name == nullptr || b_name == nullptr) return a_name == nullptr && b_name != nullptr;
    return std::strcmp(a_name, b_name) < 0;
  }

  void Sort() {
    for (const auto [index, entry] : Entries(meta_)) sorted_.push_back(entry);
    std::stable_sort(sorted_.begin(), sorted_.end(), [this](LPQMXMETAENTRY a, LPQMXMETAENTRY b) { return IsLess(a, b); });
  }

  RecordForm form_;
  LPQMXMETA meta_;
  std::vector<LPQMXMETAENTRY> sorted_;
};

}  // namespace korvel
