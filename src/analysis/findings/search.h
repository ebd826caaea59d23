// Divides edits into those that are allowed together and those that are refused, by checking sets of edits.
//
// Knows nothing about schemas or rules: the answers to SearchInput::check decide. Works by halving, so it checks about
// (refused edits) x log(edits) sets; edits are checked one by one where most are refused.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "analysis/findings/finding.h"
#include "base/limits.h"

namespace korvel {

// For each edit, whether it is made.
using EditSet = std::vector<bool>;

// The verdict about a set of edits; nullopt if no schema can be built with these edits and no others.
using CheckAnswer = std::optional<Verdict>;

struct SearchInput {
  // For each edit, the edits without which it cannot be made, transitively, in ascending order. Two edits may need each other.
  std::vector<std::vector<std::size_t>> needs;
  // Returns one answer for each set, in order. Each set is closed under `needs`.
  std::function<std::vector<CheckAnswer>(const std::vector<EditSet>&)> check;
  std::vector<Verdict> preexisting = {};  // refusals that the old schema already gets: no edit causes them
  // Whether a pre-existing refusal includes a later one, though their texts differ; may be empty.
  std::function<bool(const Verdict& known, const Verdict& later)> covers = {};
  EditSet known_refused = {};  // edits that are refused whatever the answers are; empty = none
  // Edits that may compensate each other: if none of a cluster passes alone, the whole cluster is tried.
  std::vector<std::vector<std::size_t>> clusters = {};
  std::size_t max_refusals = kMaxFindings;
};

struct RejectedSet {
  // One edit that is refused alone; or several, ascending, that are refused in combination. No edit can be left out of a
  // combination: without it the rest is allowed, or is refused without the edit that was found last as well.
  std::vector<std::size_t> edits;
  Verdict verdict;  // about these edits and what they need
};

struct SearchResult {
  EditSet allowed;                    // closed under `needs`; adding any rejected edit was refused when it was tried last
  CheckAnswer together;               // about `allowed`: no refusal, or a pre-existing one
  std::vector<RejectedSet> refusals;  // ordered by their edits
  bool stopped = false;               // at max_refusals: edits in neither list were not checked
};

// The result depends only on the input, not on the number of threads that answer.
SearchResult Search(const SearchInput& input);

}  // namespace korvel
