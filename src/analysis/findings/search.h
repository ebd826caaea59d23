// Divides edits into those that may go together and those that are refused, by asking about sets of them.
//
// Knows nothing of schemas: the answers decide. Works by halving, so that it asks about (refused edits) x log(edits) sets and not
// about every edit; one by one where most are refused.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "analysis/findings/finding.h"
#include "base/limits.h"

namespace korvel {

// Which of the edits are made.
using EditSet = std::vector<bool>;

// Nullopt: no schema can be laid out with these edits and no others.
using CheckAnswer = std::optional<Verdict>;

struct SearchInput {
  // Of each edit, those without which it cannot be made, transitively. Two edits may need each other.
  std::vector<std::vector<std::size_t>> needs;
  // Answers about sets, in their order. Each set holds whatever its edits need.
  std::function<std::vector<CheckAnswer>(const std::vector<EditSet>&)> ask;
  std::vector<Verdict> preexisting = {};  // refusals that the old schema is known to meet already: they speak against no edit
  EditSet known_refused = {};             // edits that are refused whatever the answers are; empty = none
  // Edits that may make up for each other: where none of a cluster may go alone, all of it is tried.
  std::vector<std::vector<std::size_t>> clusters = {};
  std::size_t max_refusals = kMaxFindings;
};

struct RejectedSet {
  // One edit that is refused alone; or several, ascending, which are refused together. Of the latter none can be left out: the
  // rest then is allowed, or refused without the last one found as well.
  std::vector<std::size_t> edits;
  Verdict verdict;  // about these edits and what they need
};

struct SearchResult {
  EditSet allowed;                    // closed under `needs`; no edit of a refusal could be added to it when it was tried last
  CheckAnswer together;               // about `allowed`: no refusal, or a standing one
  std::vector<RejectedSet> refusals;  // ordered by their edits
  bool stopped = false;               // at max_refusals: some edits are neither allowed nor refused because nobody asked
};

// Same input, same result, whatever the number of threads that answer.
SearchResult Search(const SearchInput& input);

}  // namespace korvel
