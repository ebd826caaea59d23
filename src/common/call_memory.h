// What one public call remembers, so that its cost stays linear in the size of the libraries and of what it logs: indexes of
// long lists, what both sides begin with, and the pairs of sub-structures that a rule has passed.
//
// None of it can be observed: a lookup answers as a walk from the first item would, and an entry or a pair is passed over only
// where judging it would leave the same buffer and no record. Held by tests/linear/linear_test.cpp.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <optional>
#include <string>
#include <tuple>
#include <unordered_map>

#include "common/common_prefix.h"
#include "common/entry_match.h"
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
    kMissingEntries,
    kAttributedEntries,
    kPrimaryKey,
    kIndexes,
    kColumns,
    kNumberOfLists
  };
  // Who passed a pair.
  enum class Rule : std::uint8_t { kRecord, kTlv, kVersion, kOrder, kFieldSet };

  class Scope;

  CallMemory(const CallMemory&) = delete;
  CallMemory& operator=(const CallMemory&) = delete;

  // Position of the first of `count` items whose key is `wanted`; -1 if there is none. `key_at(i)` is the key of item i.
  template <class Key, class KeyAt>
  int FindFirst(List list, const void* owner, int count, const Key& wanted, KeyAt key_at) {
    return count > kShortList ? IndexOf(list, owner, count).Find(wanted, key_at) : WalkTo(wanted, count, key_at);
  }

  // What two metas of `old_count` and `new_count` entries begin with: `match_at(i)` compares the entries at a position,
  // `key_at(i)` is a key of the new one, in `list`.
  template <class KeyAt, class MatchAt>
  const CommonPrefix& FindPrefix(List list, LPQMXMETA old_meta, int old_count, LPQMXMETA new_meta, int new_count, KeyAt key_at,
                                 MatchAt match_at) {
    const auto [found, is_new] = prefixes_.try_emplace(Ask(list, old_meta, new_meta));
    CommonPrefix& prefix = found->second;
    if (!is_new) return prefix;
    FirstIndex* index = new_count > kShortList ? &IndexOf(list, new_meta, new_count) : nullptr;
    for (int& i = prefix.end; i < std::min(old_count, new_count); ++i) {
      const EntryMatch match = match_at(i);
      if (match == EntryMatch::kDifferent) break;
      if (index != nullptr ? !index->IsFirst(i, key_at) : WalkTo(key_at(i), i + 1, key_at) != i) break;
      if (match == EntryMatch::kSameComposite) prefix.composites.push_back(i);
    }
    // What is known of the new side's keys is true of the old side's as well.
    if (index != nullptr && !index->SharesKeys()) {
      indexes_.try_emplace(Ask(list, old_meta), &arena_, old_count, *index, prefix.end);
    }
    return prefix;
  }

  // Walks a pair of sub-structures by `walk`, which returns a result code, or passes it over if the rule has passed it before:
  // then the buffer gets the text that it left there, if it left one. A pair that left a record is walked every time.
  template <class Walk>
  int Once(Rule rule, LPQMXMETA old_meta, LPQMXMETA new_meta, char* buffer, Walk walk) {
    const Question pair = Ask(rule, old_meta, new_meta);
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
  static constexpr int kShortList = 8;

  // Something asked about one record or two.
  using Question = std::tuple<int, const void*, const void*>;
  template <class Topic>
  static Question Ask(Topic topic, const void* old_record, const void* new_record = nullptr) {
    return {static_cast<int>(topic), old_record, new_record};
  }
  struct Hash {
    std::size_t operator()(const Question& question) const {
      const auto& [topic, old_record, new_record] = question;
      const auto a = reinterpret_cast<std::uintptr_t>(old_record);
      const auto b = reinterpret_cast<std::uintptr_t>(new_record);
      return FoldedProduct(FoldedProduct(a ^ kMix, static_cast<std::uint64_t>(topic) + kMix) ^ b, kMix);
    }
  };
  template <class Answer>
  using Answers = std::pmr::unordered_map<Question, Answer, Hash>;

  explicit CallMemory(const void* object) : object_(object) {}
  ~CallMemory() = default;

  template <class Key, class KeyAt>
  static int WalkTo(const Key& wanted, int count, KeyAt key_at) {
    for (int i = 0; i < count; ++i) {
      if (key_at(i) == wanted) return i;
    }
    return -1;
  }

  // Most lookups ask for the list of the one before.
  FirstIndex& IndexOf(List list, const void* owner, int count) {
    Used& used = used_[static_cast<std::size_t>(list)];
    if (used.owner != owner) {
      used = {owner, &indexes_.try_emplace(Ask(list, owner), &arena_, count).first->second};
    }
    return *used.index;
  }

  struct Used {
    const void* owner = nullptr;
    FirstIndex* index = nullptr;
  };

  const void* object_;  // whose call it is
  // Enough for a table of a hundred fields.
  alignas(std::max_align_t) std::array<std::byte, 4096> first_piece_;
  std::pmr::monotonic_buffer_resource arena_{first_piece_.data(), first_piece_.size()};
  std::array<Used, static_cast<std::size_t>(List::kNumberOfLists)> used_;
  Answers<FirstIndex> indexes_{&arena_};
  Answers<CommonPrefix> prefixes_{&arena_};
  Answers<std::optional<std::string>> passed_{&arena_};
};

// Joins the call that its object runs on this thread, or begins one that ends with the scope. Every operation that looks up or
// descends opens a scope, so the memory lives as long as the outermost of them, which is what the caller called. Another object
// that is asked in the midst of a call, by a log category, has a memory of its own meanwhile: objects share nothing.
class CallMemory::Scope {
 public:
  explicit Scope(const void* object);
  // Of a lookup: for the object that is running.
  Scope();
  ~Scope();
  Scope(const Scope&) = delete;
  Scope& operator=(const Scope&) = delete;
  CallMemory* operator->() const { return memory_; }

 private:
  CallMemory* interrupted_;  // the memory of the thread before; null if it had none
  CallMemory* memory_;
};

}  // namespace korvel
