// What one public call remembers, so that its cost stays linear in the size of the libraries and of what it logs: indexes of
// long lists, and the pairs of sub-structures that a rule has passed.
//
// None of it can be observed: a lookup answers as a walk from the first item would, and a pair is passed over only where walking
// it again would leave the same buffer and no record. Held by tests/linear/linear_test.cpp.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <utility>

#include "common/first_index.h"
#include "common/refuse.h"
#include "qmx/qmx_types.h"

namespace korvel {

class CallMemory {
 public:
  // What is looked up, beside the record that owns the list.
  enum class List : std::uint8_t {
    kEntryNames,
    kEntryIds,
    kEntryIdsAndNames,
    kEntriesUpToMissing,
    kAttributedEntries,
    kPrimaryKey,
    kIndexes,
    kColumns
  };
  // Who passed a pair.
  enum class Rule : std::uint8_t { kRecord, kTlv, kVersion, kOrder, kFieldSet };

  class Scope;

  // Position of the first of `count` items whose key is `wanted`; -1 if there is none. `key_at(i)` is the key of item i or
  // nullopt.
  template <class Key, class KeyAt>
  int FindFirst(List list, const void* owner, int count, const Key& wanted, KeyAt key_at) {
    if (count <= kShortList) {
      for (int i = 0; i < count; ++i) {
        if (key_at(i) == wanted) return i;
      }
      return -1;
    }
    const auto id = std::pair(list, owner);
    auto found = indexes_.find(id);
    if (found == indexes_.end()) found = indexes_.emplace(id, FirstIndex(count, key_at)).first;
    return found->second.Find(wanted, key_at);
  }

  // Walks a pair of sub-structures by `walk`, which returns a result code, or passes it over if the rule has passed it before:
  // then the buffer gets the text that it left there, if it left one. A pair that left a record is walked every time.
  template <class Walk>
  int Once(Rule rule, LPQMXMETA old_meta, LPQMXMETA new_meta, char* buffer, Walk walk) {
    const auto pair = std::tuple(rule, old_meta, new_meta);
    if (const auto found = passed_.find(pair); found != passed_.end()) {
      if (found->second) FormatText(buffer, "%s", found->second->c_str());
      return 0;
    }
    const Traces before = TracesOfThread();
    const int ret = walk();
    const Traces after = TracesOfThread();
    if (ret == 0 && after.records == before.records) {
      passed_.emplace(pair, after.texts == before.texts ? std::nullopt : std::optional<std::string>(buffer));
    }
    return ret;
  }

 private:
  // Up to this length a walk is faster than an index.
  static constexpr int kShortList = 16;

  std::map<std::pair<List, const void*>, FirstIndex> indexes_;
  std::map<std::tuple<Rule, LPQMXMETA, LPQMXMETA>, std::optional<std::string>> passed_;
};

// Joins the call that runs on this thread, or begins one that ends with the scope. Every operation that looks up or descends
// opens a scope, so the memory lives as long as the outermost of them, which is what the caller called.
class CallMemory::Scope {
 public:
  Scope();
  ~Scope();
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;
  CallMemory* operator->() const { return memory_; }

 private:
  CallMemory* memory_;
  std::optional<CallMemory> own_;  // of the outermost scope
};

}  // namespace korvel
