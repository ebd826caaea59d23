// Checks sets of edits for the search, and finds minimal refused sets. Knows nothing about schemas.
#pragma once

#include <cstddef>
#include <vector>

#include "analysis/findings/search.h"

namespace korvel {

// Completes sets by what their edits need, checks them, and separates refusals caused by edits from pre-existing ones. Borrows
// the input. Const operations may run on several threads if `SearchInput::check` may.
class EditSetChecker {
 public:
  // Checks the empty set: if it is refused, that refusal is pre-existing.
  explicit EditSetChecker(const SearchInput& input);

  // `base` together with the edits and all that they need. REQUIRES: `base` is closed under needs.
  EditSet With(const EditSet& base, const std::vector<std::size_t>& edits) const;
  // The edits and all that they need.
  EditSet Only(const std::vector<std::size_t>& edits) const { return With(EditSet(input_.needs.size()), edits); }

  // One answer for each set. REQUIRES: the sets are closed under needs.
  std::vector<CheckAnswer> Check(const std::vector<EditSet>& sets) const { return input_.check(sets); }
  CheckAnswer Check(const EditSet& set) const { return input_.check({set}).front(); }

  // Whether a set is allowed, or refused only for a pre-existing reason. A set from which no schema can be built neither passes
  // nor is refused.
  bool Passes(const CheckAnswer& answer) const { return answer && !Refuses(answer); }
  bool Refuses(const CheckAnswer& answer) const;

 private:
  const SearchInput& input_;
  std::vector<Verdict> preexisting_;
};

// Whether two refusals have the same code and text.
inline bool SameRefusal(const Verdict& a, const Verdict& b) { return a.code == b.code && a.text == b.text; }

// A minimal subset of `base` that is refused together with `edit` and passes without it; no single edit can be left out of it.
// About log(base) checks for each edit in the result. REQUIRES: `base` passes, and is refused with the edit.
std::vector<std::size_t> MinimalConflictWith(const EditSetChecker& checker, std::vector<std::size_t> base, std::size_t edit);

}  // namespace korvel
