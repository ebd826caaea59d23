// Searches, and the indexes and prefixes that they share. Tested by tests/rules/lookup_test.cpp.
#include "common/lookup.h"

#include <algorithm>
#include <chrono>
#include <climits>

#include "common/entry_match.h"
#include "common/meta_view.h"

namespace korvel {
namespace {

// The keys of the entries of a meta. None of the operations throws.
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

// Compares the entries of two metas at a position. An id below `least_id` matches no other.
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

// A number that no schema file can know, so that none can be written whose keys collide: from the clock and an address.
std::uint64_t MakeSeed(const void* place) {
  const auto address = reinterpret_cast<std::uintptr_t>(place);
  const auto time = static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
  return FoldedProduct(address ^ kMix, time ^ kMix) | 1;
}

// What an index or a prefix of this kind is kept under: the address of a constant of its own.
const void* TopicOf(IndexKind kind) {
  static constexpr char kTopics[static_cast<std::size_t>(IndexKind::kNumberOfKinds)] = {};
  return &kTopics[static_cast<std::size_t>(kind)];
}

}  // namespace

std::uint64_t Lookup::Seed() {
  if (seed_ == 0) seed_ = MakeSeed(this);
  return seed_;
}

Lookup::List& Lookup::ListOf(IndexKind kind, const void* owner) {
  LastUsed& last = last_used_[static_cast<std::size_t>(kind)];
  if (last.owner != owner) last = {owner, &lists_.try_emplace({TopicOf(kind), owner, nullptr}).first->second};
  return *last.list;
}

template <class KeyAt, class MatchAt>
const CommonPrefix& Lookup::FindPrefix(IndexKind kind, LPQMXMETA old_meta, LPQMXMETA new_meta, KeyAt key_at, MatchAt match_at) {
  const auto [found, is_new] =
      prefixes_.try_emplace({TopicOf(kind), old_meta, new_meta}, CommonPrefix{0, std::pmr::vector<int>(memory_)});
  CommonPrefix& prefix = found->second;
  if (!is_new) return prefix;
  const int old_count = EntryCount(old_meta);
  const int new_count = EntryCount(new_meta);
  List* new_list = new_count > kShortList ? &ListOf(kind, new_meta) : nullptr;
  const bool is_indexed = new_list != nullptr && new_list->base == nullptr;
  const bool all_differ = is_indexed && IndexOf(*new_list, new_count, key_at).AllDiffer();
  for (int& i = prefix.end; i < std::min(old_count, new_count); ++i) {
    const EntryMatch match = match_at(i);
    if (match == EntryMatch::kDifferent) break;
    if (!all_differ && FindFirst(kind, new_meta, new_count, key_at(i), key_at) != i) break;
    if (match == EntryMatch::kSameComposite) prefix.composites.push_back(i);
  }
  // What is known of the new side's keys is true of the old side's too.
  if (is_indexed && old_count > kShortList) {
    List& old_list = ListOf(kind, old_meta);
    if (!old_list.index && old_list.base == nullptr) {
      old_list.base = &*new_list->index;
      old_list.shared = prefix.end;
    }
  }
  return prefix;
}

int Lookup::PositionByName(LPQMXMETA meta, int count, const char* name) {
  return FindName(IndexKind::kEntryNames, meta, count, name, NameAt{meta});
}

int Lookup::PositionBeforeMissing(LPQMXMETA meta, const char* name) {
  const int count = EntryCount(meta);
  const int position = PositionByName(meta, count, name);
  const int missing = FindFirst(IndexKind::kMissingEntries, meta, count, IdKey{0}, [meta](int i) noexcept {
    return IdKey{0, qmx_get_entry_by_index(meta, i) == nullptr};
  });
  return missing < 0 || position < missing ? position : -1;
}

int Lookup::PositionById(LPQMXMETA meta, int count, int id) {
  return FindFirst(IndexKind::kEntryIds, meta, count, IdKey{id}, IdAt{meta});
}

// The first of the id nearly always has the name.
int Lookup::PositionByIdAndName(LPQMXMETA meta, int count, int id, const char* name) {
  const int first = PositionById(meta, count, id);
  if (first < 0 || name == nullptr) return -1;
  if (SameName(qmx_get_entry_name(qmx_get_entry_by_index(meta, first)), name)) return first;
  return FindFirst(IndexKind::kEntryIdsAndNames, meta, count, IdAndNameKey{id, {name}}, IdAndNameAt{meta});
}

const CommonPrefix& Lookup::Prefix(LPQMXMETA old_meta, LPQMXMETA new_meta, MatchBy match_by) {
  if (match_by == MatchBy::kName) {
    return FindPrefix(IndexKind::kEntryNames, old_meta, new_meta, NameAt{new_meta}, MatchAt(old_meta, new_meta, INT_MIN));
  }
  // A negative id is no id: rules report it, and find nothing by it.
  return FindPrefix(IndexKind::kEntryIds, old_meta, new_meta, IdAt{new_meta}, MatchAt(old_meta, new_meta, 0));
}

bool Lookup::IsPrimaryKeyName(LPQMXMETA meta, const char* name) {
  const auto members = PrimaryKeyMembers(meta);
  return FindName(IndexKind::kPrimaryKey, meta, members.size(), name,
                  [&](int i) noexcept { return NameKey{MemberName(meta, members[i])}; }) >= 0;
}

LPQMXMETAINDEX Lookup::IndexByName(LPQMXMETA meta, const char* name) {
  const auto indexes = Indexes(meta);
  const int position = FindName(IndexKind::kIndexes, meta, indexes.size(), name,
                                [&](int i) noexcept { return NameKey{IndexName(meta, indexes[i])}; });
  return position < 0 ? nullptr : indexes[position];
}

bool Lookup::IsColumnName(LPQMXMETA meta, LPQMXMETAINDEX index, const char* name) {
  const auto columns = Columns(meta, index);
  return FindName(IndexKind::kColumns, index, columns.size(), name,
                  [&](int i) noexcept { return NameKey{MemberName(meta, columns[i])}; }) >= 0;
}

}  // namespace korvel
