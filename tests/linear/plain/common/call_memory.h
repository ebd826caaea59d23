// The memory of a call that remembers nothing: every lookup walks from the first item, every entry is looked at, every pair is
// walked each time it is met. The rules compiled against this one are what those of the product must not be told from.
#pragma once

#include <cstdint>

#include "common/common_prefix.h"
#include "common/entry_match.h"
#include "common/first_index.h"
#include "common/refuse.h"
#include "qmx/qmx_types.h"

namespace korvel {

struct CallMemory {
  enum class List : std::uint8_t {
    kEntryNames,
    kEntryIds,
    kEntryIdsAndNames,
    kMissingEntries,
    kAttributedEntries,
    kPrimaryKey,
    kIndexes,
    kColumns
  };
  enum class Rule : std::uint8_t { kRecord, kTlv, kVersion, kOrder, kFieldSet };

  struct [[maybe_unused]] Scope {
    Scope() = default;
    explicit Scope(const void*) {}
    CallMemory* operator->() const { return nullptr; }
  };

  template <class Key, class KeyAt>
  static int FindFirst(List, const void*, int count, const Key& wanted, KeyAt key_at) {
    for (int i = 0; i < count; ++i) {
      if (key_at(i) == wanted) return i;
    }
    return -1;
  }

  template <class KeyAt, class MatchAt>
  static const CommonPrefix& FindPrefix(List, LPQMXMETA, int, LPQMXMETA, int, KeyAt, MatchAt) {
    static const CommonPrefix none;
    return none;
  }

  template <class Walk>
  static int Once(Rule, LPQMXMETA, LPQMXMETA, const char*, Walk walk) {
    return walk();
  }
};

}  // namespace korvel
