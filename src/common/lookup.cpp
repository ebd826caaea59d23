// Lookups through the memory of the running call. Held by tests/linear/linear_test.cpp.
#include "common/lookup.h"

#include "common/meta_view.h"

namespace korvel {
namespace {

using List = CallMemory::List;
using Name = std::optional<std::string_view>;
using IdAndName = std::pair<int, std::string_view>;

Name NameKey(const char* name) { return name == nullptr ? Name() : Name(name); }

// The position in one of a meta's lists of names.
template <class NameAt>
int Position(List list, const void* owner, int count, const char* name, NameAt name_at) {
  if (name == nullptr) return -1;
  const CallMemory::Scope memory;
  return memory->FindFirst(list, owner, count, std::string_view(name), [&](int i) { return NameKey(name_at(i)); });
}

}  // namespace

int PositionByName(LPQMXMETA meta, int count, const char* name) {
  return Position(List::kEntryNames, meta, count, name, [meta](int i) { return EntryName(qmx_get_entry_by_index(meta, i)); });
}

int PositionUpToMissing(LPQMXMETA meta, const char* name) {
  const int count = EntryCount(meta);
  return Position(List::kEntriesUpToMissing, meta, count, name, [meta, end = count](int i) mutable -> const char* {
    const LPQMXMETAENTRY entry = qmx_get_entry_by_index(meta, i);
    if (entry == nullptr && i < end) end = i;
    return i < end ? EntryName(entry) : nullptr;
  });
}

int PositionById(LPQMXMETA meta, int count, int id) {
  const CallMemory::Scope memory;
  return memory->FindFirst(List::kEntryIds, meta, count, id, [meta](int i) {
    const LPQMXMETAENTRY entry = qmx_get_entry_by_index(meta, i);
    return entry == nullptr ? std::nullopt : std::optional<int>(qmx_get_entry_id(entry));
  });
}

int PositionByIdAndName(LPQMXMETA meta, int count, int id, const char* name) {
  if (name == nullptr) return -1;
  const CallMemory::Scope memory;
  return memory->FindFirst(List::kEntryIdsAndNames, meta, count, IdAndName(id, name), [meta](int i) {
    const LPQMXMETAENTRY entry = qmx_get_entry_by_index(meta, i);
    const char* found = EntryName(entry);
    return found == nullptr ? std::nullopt : std::optional<IdAndName>(std::in_place, qmx_get_entry_id(entry), found);
  });
}

bool IsPrimaryKeyName(LPQMXMETA meta, const char* name) {
  const auto members = PrimaryKeyMembers(meta);
  return Position(List::kPrimaryKey, meta, members.size(), name, [&](int i) { return MemberName(meta, members[i]); }) >= 0;
}

LPQMXMETAINDEX IndexByName(LPQMXMETA meta, const char* name) {
  const auto indexes = Indexes(meta);
  const int position = Position(List::kIndexes, meta, indexes.size(), name, [&](int i) { return IndexName(meta, indexes[i]); });
  return position < 0 ? nullptr : indexes[position];
}

bool IsColumnName(LPQMXMETA meta, LPQMXMETAINDEX index, const char* name) {
  const auto columns = Columns(meta, index);
  return Position(List::kColumns, index, columns.size(), name, [&](int i) { return MemberName(meta, columns[i]); }) >= 0;
}

}  // namespace korvel
