// Asks about sets of edits, and finds the smallest that is refused. Held by tests/report/search_test.cpp.
#include "analysis/findings/questions.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace korvel {

Questions::Questions(const SearchInput& input) : input_(input), preexisting_(input.preexisting) {
  const CheckAnswer nothing = Ask(EditSet(input.needs.size()));
  if (nothing && nothing->Refused()) preexisting_.push_back(*nothing);
}

EditSet Questions::With(const EditSet& base, const std::vector<std::size_t>& edits) const {
  EditSet set = base;
  for (const std::size_t edit : edits) {
    set[edit] = true;
    for (const std::size_t needed : input_.needs[edit]) set[needed] = true;
  }
  return set;
}

namespace {

// The rule that names all oversized fields in one text, and what stands in front of them there.
constexpr std::string_view kOversizedRule = "length.limit";
constexpr std::string_view kOversizedHead = "ERR_ENTRY_LEN;";

// "a|b|" of a refusal that names all oversized fields at once; empty for others.
std::string_view OversizedFields(const Verdict& verdict) {
  if (verdict.rule != kOversizedRule) return {};
  return std::string_view(verdict.text).substr(kOversizedHead.size());
}

// Whether a refusal names some of the oversized fields of another one and no more.
bool NamesNoOthers(const Verdict& known, const Verdict& verdict) {
  const std::string all = "|" + std::string(OversizedFields(known));
  std::string_view rest = OversizedFields(verdict);
  if (rest.empty() || all.size() == 1) return false;
  while (!rest.empty()) {
    const std::size_t length = rest.find('|') + 1;
    if (all.find("|" + std::string(rest.substr(0, length))) == std::string::npos) return false;
    rest.remove_prefix(length);
  }
  return true;
}

}  // namespace

bool Questions::Refuses(const CheckAnswer& answer) const {
  if (!answer || !answer->Refused()) return false;
  return std::ranges::none_of(preexisting_,
                              [&](const Verdict& known) { return SameRefusal(known, *answer) || NamesNoOthers(known, *answer); });
}

namespace {

// The part of a set that an edit is refused with.
class MinimalConflict {
 public:
  MinimalConflict(const Questions& questions, std::size_t edit) : questions_(questions), edit_(edit) {}

  // Whether the edit is refused on top of these, which pass without it.
  bool IsTriggeredBy(const std::vector<std::size_t>& edits) const {
    const EditSet set = questions_.Only(edits);
    return questions_.Refuses(questions_.Ask(questions_.With(set, {edit_}))) && questions_.Passes(questions_.Ask(set));
  }

  // The last edit of the shortest beginning of `candidates` that brings it about together with `known`; those behind it, and
  // itself, leave the candidates. REQUIRES: all candidates do, and none of them does not.
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

  // Leaves out what can be left out, one at a time.
  void LeaveOut(std::vector<std::size_t>& edits) const {
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
  const Questions& questions_;
  std::size_t edit_;
};

}  // namespace

std::vector<std::size_t> SmallestSetAgainst(const Questions& questions, std::vector<std::size_t> base, std::size_t edit) {
  const MinimalConflict conspiracy(questions, edit);
  std::vector<std::size_t> found;
  while (!base.empty() && !conspiracy.IsTriggeredBy(found)) found.push_back(conspiracy.TakeLast(found, base));
  conspiracy.LeaveOut(found);
  return found;
}

}  // namespace korvel
