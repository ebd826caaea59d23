// Finds entries, key members, indexes and columns by name or id, and what two metas begin with.
//
// A lookup answers as a walk from the first item would: the position of the first item that matches, -1 if there is none. A
// missing name matches nothing, and a missing entry is skipped. Lists longer than a few items are indexed when they are first
// searched, so that the cost of a run stays linear in the size of the libraries.
//
// Only for class Run: what a Lookup has found is valid while the libraries do not change, and it lives no longer than one run.
// Tested by tests/rules/lookup_test.cpp, and by tests/model, which searches by walking.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <optional>
#include <tuple>
#include <unordered_map>

#include "common/common_prefix.h"
#include "common/key_index.h"
#include "qmx/qmx_types.h"

namespace korvel {

// By what the entries of two metas are matched.
enum class MatchBy : std::uint8_t { kName, kId };

// Lists that are searched. Each has an index for each record that owns such a list.
enum class IndexKind : std::uint8_t {
  kEntryNames,
  kEntryIds,
  kEntryIdsAndNames,
  kMissingEntries,
  kAttributedEntries,
  kPrimaryKey,
  kIndexes,
  kColumns,
  kNumberOfKinds
};

// One or two records, and what is remembered about them. Records are told apart by their addresses.
using RecordKey = std::tuple<const void*, const void*, const void*>;

struct RecordKeyHash {
  std::size_t operator()(const RecordKey& key) const {
    const auto number = [](const void* record) { return reinterpret_cast<std::uintptr_t>(record); };
    const auto& [topic, old_record, new_record] = key;
    return FoldedProduct(FoldedProduct(number(old_record) ^ kMix, number(topic) + kMix) ^ number(new_record), kMix);
  }
};

template <class Value>
using RecordMap = std::pmr::unordered_map<RecordKey, Value, RecordKeyHash>;

class Lookup {
 public:
  // Allocates from `memory`, which must outlive it; nothing before the first search of a long list.
  explicit Lookup(std::pmr::memory_resource* memory) : memory_(memory), lists_(memory), prefixes_(memory) {}
  Lookup(const Lookup&) = delete;
  Lookup& operator=(const Lookup&) = delete;

  // `count` is the meta's number of entries.
  int PositionByName(LPQMXMETA meta, int count, const char* name);
  int PositionById(LPQMXMETA meta, int count, int id);
  int PositionByIdAndName(LPQMXMETA meta, int count, int id, const char* name);

  // By name among the entries before the first missing one.
  int PositionBeforeMissing(LPQMXMETA meta, const char* name);

  // The entries that two metas begin with (common_prefix.h). Valid until this object ends. REQUIRES: no null.
  const CommonPrefix& Prefix(LPQMXMETA old_meta, LPQMXMETA new_meta, MatchBy match_by);

  // Whether an entry of that name is a member of the primary key. REQUIRES: the meta has one.
  bool IsPrimaryKeyName(LPQMXMETA meta, const char* name);

  // The first index of that name; null if there is none.
  LPQMXMETAINDEX IndexByName(LPQMXMETA meta, const char* name);

  // Whether an entry of that name is a column of the index.
  bool IsColumnName(LPQMXMETA meta, LPQMXMETAINDEX index, const char* name);

  // Position of the first of `count` items whose key equals `wanted`; -1 if there is none. `key_at(i)` is the key of item i
  // (key_index.h), and the same in every search of the list that `kind` and `owner` stand for.
  template <class Key, class KeyAt>
  int FindFirst(IndexKind kind, const void* owner, int count, const Key& wanted, KeyAt key_at) {
    int begin = 0;
    if (count > kShortList) {
      List& list = ListOf(kind, owner);
      begin = list.shared;
      if (const int position = list.base == nullptr ? -1 : list.base->Find(wanted, begin, key_at); position >= 0) return position;
      if (count - begin > kShortList) return IndexOf(list, count, key_at).Find(wanted, count, key_at);
    }
    for (int i = begin; i < count; ++i) {
      if (key_at(i) == wanted) return i;
    }
    return -1;
  }

 private:
  // Up to this length a walk is faster than an index.
  static constexpr int kShortList = 8;
  // A long list. Its first `shared` items have the keys of those of another list, which is indexed, and each a key of its own;
  // only the items behind them are indexed here.
  struct List {
    std::optional<KeyIndex> index = std::nullopt;
    const KeyIndex* base = nullptr;
    int shared = 0;
  };
  struct LastUsed {
    const void* owner = nullptr;
    List* list = nullptr;
  };

  template <class KeyAt>
  int FindName(IndexKind kind, const void* owner, int count, const char* name, KeyAt key_at) {
    return name == nullptr ? -1 : FindFirst(kind, owner, count, NameKey{name}, key_at);
  }

  template <class KeyAt, class MatchAt>
  const CommonPrefix& FindPrefix(IndexKind kind, LPQMXMETA old_meta, LPQMXMETA new_meta, KeyAt key_at, MatchAt match_at);

  List& ListOf(IndexKind kind, const void* owner);
  std::uint64_t Seed();

  template <class KeyAt>
  const KeyIndex& IndexOf(List& list, int count, KeyAt key_at) {
    if (!list.index) list.index.emplace(memory_, Seed(), list.shared, count, key_at);
    return *list.index;
  }

  std::pmr::memory_resource* memory_;
  std::uint64_t seed_ = 0;                                                               // of all indexes; 0 = there is none yet
  std::array<LastUsed, static_cast<std::size_t>(IndexKind::kNumberOfKinds)> last_used_;  // most searches repeat the list before
  RecordMap<List> lists_;
  RecordMap<CommonPrefix> prefixes_;
};

}  // namespace korvel
