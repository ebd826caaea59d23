// Questions about sets of edits: what the search asks by.
#pragma once

#include <cstddef>
#include <vector>

#include "analysis/findings/search.h"

namespace korvel {

// Knows which answers speak against the edits. The input outlives it.
class Questions {
 public:
  // Asks about no edit at all: a refusal of that is a standing one.
  explicit Questions(const SearchInput& input);

  // The edits with what they need, on top of `base`.
  EditSet With(const EditSet& base, const std::vector<std::size_t>& edits) const;
  EditSet Only(const std::vector<std::size_t>& edits) const { return With(EditSet(input_.needs.size()), edits); }

  std::vector<CheckAnswer> Ask(const std::vector<EditSet>& sets) const { return input_.ask(sets); }
  CheckAnswer Ask(const EditSet& set) const { return input_.ask({set}).front(); }

  // An answer that is neither is that about a set of which no schema can be made.
  bool Passes(const CheckAnswer& answer) const { return answer && !Refuses(answer); }
  bool Refuses(const CheckAnswer& answer) const;

 private:
  const SearchInput& input_;
  std::vector<Verdict> preexisting_;
};

// Whether two refusals say the same.
inline bool SameRefusal(const Verdict& a, const Verdict& b) { return a.code == b.code && a.text == b.text; }

// The fewest of `base` that `edit` is refused together with, as far as leaving out one at a time tells: without it they pass.
// REQUIRES: `base` passes and is refused with the edit.
std::vector<std::size_t> SmallestSetAgainst(const Questions& questions, std::vector<std::size_t> base, std::size_t edit);

}  // namespace korvel
