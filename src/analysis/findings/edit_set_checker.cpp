// Checks sets of edits, and finds minimal refused sets by halving. Tested by tests/report/search_test.cpp.
#include "analysis/findings/edit_set_checker.h"

#include <algorithm>

namespace korvel {

EditSetChecker::EditSetChecker(const SearchInput& input) : input_(input), preexisting_(input.preexisting) {
  const CheckAnswer unchanged = Check(EditSet(input.needs.size()));
  if (unchanged && unchanged->Refused()) preexisting_.push_back(*unchanged);
}

EditSet EditSetChecker::With(const EditSet& base, const std::vector<std::size_t>& edits) const {
  EditSet set = base;
  for (const std::size_t edit : edits) {
    set[edit] = true;
    for (const std::size_t needed : input_.needs[edit]) set[needed] = true;
  }
  return set;
}

bool EditSetChecker::Refuses(const CheckAnswer& answer) const {
  if (!answer || !answer->Refused()) return false;
  return std::ranges::none_of(preexisting_, [&](const Verdict& known) {
    return SameRefusal(known, *answer) || (input_.covers && input_.covers(known, *answer));
  });
}

namespace {

// Finds the part of a set together with which an edit is refused.
class MinimalConflict {
 public:
  MinimalConflict(const EditSetChecker& checker, std::size_t edit) : checker_(checker), edit_(edit) {}

  // Whether the edit is refused together with these edits, which pass without it.
  bool IsTriggeredBy(const std::vector<std::size_t>& edits) const {
    const EditSet set = checker_.Only(edits);
    return checker_.Refuses(checker_.Check(checker_.With(set, {edit_}))) && checker_.Passes(checker_.Check(set));
  }

  // The last edit of the shortest prefix of `candidates` that triggers the refusal together with `known`. Removes this edit and
  // all behind it from the candidates. REQUIRES: `known` with all candidates triggers it, `known` alone does not.
  std::size_t TakeLast(const std::vector<std::size_t>& known, std::vector<std::size_t>& candidates) const {
    std::size_t too_few = 0;
    std::size_t enough = candidates.size();
    while (enough - too_few > 1) {
      const std::size_t middle = too_few + (enough - too_few) / 2;
      std::vector<std::size_t> tried = known;
      tried.insert(tried.end(), candidates.begin(), candidates.begin() + static_cast<std::ptrdiff_t>(middle));
      (IsTriggeredBy(tried) ? enough : too_few) = middle;
    }
    const std::size_t last = candidates[enough - 1];
    candidates.resize(enough - 1);
    return last;
  }

  // Removes edits without which the refusal is still triggered, one at a time.
  void Minimize(std::vector<std::size_t>& edits) const {
    for (std::size_t i = 0; i < edits.size();) {
      std::vector<std::size_t> rest = edits;
      rest.erase(rest.begin() + static_cast<std::ptrdiff_t>(i));
      if (!IsTriggeredBy(rest)) {
        ++i;
        continue;
      }
      edits = std::move(rest);
      i = 0;
    }
  }

 private:
  const EditSetChecker& checker_;
  std::size_t edit_;
};

}  // namespace

std::vector<std::size_t> MinimalConflictWith(const EditSetChecker& checker, std::vector<std::size_t> base, std::size_t edit) {
  const MinimalConflict conflict(checker, edit);
  std::vector<std::size_t> found;
  while (!base.empty() && !conflict.IsTriggeredBy(found)) found.push_back(conflict.TakeLast(found, base));
  conflict.Minimize(found);
  return found;
}

}  // namespace korvel
