// Lookups through the memory of the running call. Held by tests/linear/linear_test.cpp.
#include "common/lookup.h"

#include <climits>

#include "common/entry_match.h"
#include "common/meta_view.h"

namespace korvel {
namespace {

using List = CallMemory::List;

// What the entries of a meta are found by. None of the operations throws.
struct NameAt {
  NameKey operator()(int i) const noexcept { return {EntryName(qmx_get_entry_by_index(meta, i))}; }
  LPQMXMETA meta;
};

struct IdAt {
  IdKey operator()(int i) const noexcept {
    const LPQMXMETAENTRY entry = qmx_get_entry_by_index(meta, i);
    return entry == nullptr ? IdKey{{}, false} : IdKey{qmx_get_entry_id(entry)};
  }
  LPQMXMETA meta;
};

struct IdAndNameAt {
  IdAndNameKey operator()(int i) const noexcept {
    const LPQMXMETAENTRY entry = qmx_get_entry_by_index(meta, i);
    return entry == nullptr ? IdAndNameKey{} : IdAndNameKey{qmx_get_entry_id(entry), {qmx_get_entry_name(entry)}};
  }
  LPQMXMETA meta;
};

// The position in one of a meta's lists of names.
template <class KeyAt>
int Position(List list, const void* owner, int count, const char* name, KeyAt key_at) {
  if (name == nullptr) return -1;
  const CallMemory::Scope memory;
  return memory->FindFirst(list, owner, count, NameKey{name}, key_at);
}

// Compares the entries of two metas at a position. An id below the least one matches no other.
struct MatchAt {
  MatchAt(LPQMXMETA an_old_meta, LPQMXMETA a_new_meta, int a_least_id)
      : old_meta(an_old_meta),
        new_meta(a_new_meta),
        old_lib(OwnerOf(an_old_meta)),
        new_lib(OwnerOf(a_new_meta)),
        least_id(a_least_id) {}

  [[gnu::flatten]] EntryMatch operator()(int i) const {
    const LPQMXMETAENTRY new_entry = qmx_get_entry_by_index(new_meta, i);
    if (new_entry == nullptr || qmx_get_entry_id(new_entry) < least_id) return EntryMatch::kDifferent;
    return MatchEntries(old_lib, qmx_get_entry_by_index(old_meta, i), new_lib, new_entry);
  }

  LPQMXMETA old_meta;
  LPQMXMETA new_meta;
  LPQMXMETALIB old_lib;
  LPQMXMETALIB new_lib;
  int least_id;
};

}  // namespace

int PositionByName(LPQMXMETA meta, int count, const char* name) {
  return Position(List::kEntryNames, meta, count, name, NameAt{meta});
}

int PositionUpToMissing(LPQMXMETA meta, const char* name) {
  const int count = EntryCount(meta);
  const int position = PositionByName(meta, count, name);
  const CallMemory::Scope memory;
  const int missing = memory->FindFirst(List::kMissingEntries, meta, count, IdKey{0}, [meta](int i) noexcept {
    return IdKey{0, qmx_get_entry_by_index(meta, i) == nullptr};
  });
  return missing < 0 || position < missing ? position : -1;
}

int PositionById(LPQMXMETA meta, int count, int id) {
  const CallMemory::Scope memory;
  return memory->FindFirst(List::kEntryIds, meta, count, IdKey{id}, IdAt{meta});
}

// The first of the id nearly always has the name.
int PositionByIdAndName(LPQMXMETA meta, int count, int id, const char* name) {
  const int first = PositionById(meta, count, id);
  if (first < 0 || name == nullptr) return -1;
  if (SameName(qmx_get_entry_name(qmx_get_entry_by_index(meta, first)), name)) return first;
  const CallMemory::Scope memory;
  return memory->FindFirst(List::kEntryIdsAndNames, meta, count, IdAndNameKey{id, {name}}, IdAndNameAt{meta});
}

const CommonPrefix* PrefixByName(LPQMXMETA old_meta, LPQMXMETA new_meta) {
  const CallMemory::Scope memory;
  return &memory->FindPrefix(List::kEntryNames, old_meta, EntryCount(old_meta), new_meta, EntryCount(new_meta), NameAt{new_meta},
                             MatchAt(old_meta, new_meta, INT_MIN));
}

// A negative id is none, and found by none.
const CommonPrefix* PrefixById(LPQMXMETA old_meta, LPQMXMETA new_meta) {
  const CallMemory::Scope memory;
  return &memory->FindPrefix(List::kEntryIds, old_meta, EntryCount(old_meta), new_meta, EntryCount(new_meta), IdAt{new_meta},
                             MatchAt(old_meta, new_meta, 0));
}

bool IsPrimaryKeyName(LPQMXMETA meta, const char* name) {
  const auto members = PrimaryKeyMembers(meta);
  return Position(List::kPrimaryKey, meta, members.size(), name,
                  [&](int i) noexcept { return NameKey{MemberName(meta, members[i])}; }) >= 0;
}

LPQMXMETAINDEX IndexByName(LPQMXMETA meta, const char* name) {
  const auto indexes = Indexes(meta);
  const int position =
      Position(List::kIndexes, meta, indexes.size(), name, [&](int i) noexcept { return NameKey{IndexName(meta, indexes[i])}; });
  return position < 0 ? nullptr : indexes[position];
}

bool IsColumnName(LPQMXMETA meta, LPQMXMETAINDEX index, const char* name) {
  const auto columns = Columns(meta, index);
  return Position(List::kColumns, index, columns.size(), name,
                  [&](int i) noexcept { return NameKey{MemberName(meta, columns[i])}; }) >= 0;
}

}  // namespace korvel
