// Searches for refused edits by halving. What is refused is decided by SearchInput::check. Tested by
// tests/report/search_test.cpp.
#include "analysis/findings/search.h"

#include <algorithm>
#include <map>
#include <numeric>

#include "analysis/findings/edit_set_checker.h"

namespace korvel {
namespace {

constexpr std::size_t kBatch = 64;       // sets that are checked at once; the same on every machine
constexpr std::size_t kMinChecked = 32;  // edits that are checked before the share of refused ones predicts the rest
constexpr int kMaxTrials = 8;            // rounds in which refused edits are tried again, as long as each round lets some pass

// Edits [begin, end) in the order of the search.
struct EditRange {
  std::size_t begin;
  std::size_t end;
};

class Searcher {
 public:
  explicit Searcher(const SearchInput& input)
      : input_(input), checker_(input), base_(input.needs.size()), order_(input.needs.size()), position_(input.needs.size()) {
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    // Needed edits come before those that need them. Edits that cannot pass come last and are checked one by one.
    const auto blocked = std::stable_partition(order_.begin(), order_.end(), [&](std::size_t edit) { return !IsBlocked(edit); });
    std::stable_sort(order_.begin(), blocked,
                     [&](std::size_t a, std::size_t b) { return input_.needs[a].size() < input_.needs[b].size(); });
    const auto free = static_cast<std::size_t>(blocked - order_.begin());
    for (std::size_t i = 0; i < order_.size(); ++i) position_[order_[i]] = i;
    for (std::size_t i = order_.size(); i > free; --i) pending_.push_back({i - 1, i});
    if (free > 0) pending_.push_back({0, free});
  }

  SearchResult Find() {
    do {
      std::vector<std::size_t> passed;
      while (!pending_.empty() && !IsFull()) CheckNext(passed);
      AddToBase(passed);
      TryRefusedAgain();
    } while (!pending_.empty() && !IsFull());
    stopped_ = stopped_ || !pending_.empty();
    CheckUnbuildable();
    return Result();
  }

 private:
  bool IsKnownRefused(std::size_t edit) const { return !input_.known_refused.empty() && input_.known_refused[edit]; }
  bool IsBlocked(std::size_t edit) const {
    return IsKnownRefused(edit) ||
           std::ranges::any_of(input_.needs[edit], [&](std::size_t needed) { return IsKnownRefused(needed); });
  }

  // Whether an edit has the refusal of an edit that it needs. Of edits that need each other the first one keeps the refusal.
  bool HasRefusalOfNeeded(std::size_t edit, const Verdict& verdict) const {
    return std::ranges::any_of(input_.needs[edit], [&](std::size_t needed) {
      const auto found = refused_.find(needed);
      if (found == refused_.end() || !SameRefusal(found->second.verdict, verdict)) return false;
      return needed < edit || !std::ranges::binary_search(input_.needs[needed], edit);
    });
  }

  // Whether enough refusals come before the first edit that was not checked yet.
  bool IsFull() const {
    if (refused_.size() < input_.max_refusals) return false;
    const std::size_t reached = pending_.empty() ? order_.size() : pending_.back().begin;
    const auto counts = [&](const auto& one) {
      return position_[one.first] < reached && !HasRefusalOfNeeded(one.first, one.second.verdict);
    };
    return static_cast<std::size_t>(std::ranges::count_if(refused_, counts)) >= input_.max_refusals;
  }

  std::vector<std::size_t> EditsOf(const EditRange& range) const {
    return {order_.begin() + static_cast<std::ptrdiff_t>(range.begin), order_.begin() + static_cast<std::ptrdiff_t>(range.end)};
  }

  // Checks the next ranges, each alone: the answers are independent.
  void CheckNext(std::vector<std::size_t>& passed) {
    std::vector<EditRange> ranges;
    std::vector<EditSet> sets;
    while (!pending_.empty() && ranges.size() < kBatch) {
      ranges.push_back(pending_.back());
      pending_.pop_back();
      sets.push_back(checker_.Only(EditsOf(ranges.back())));
    }
    const std::vector<CheckAnswer> answers = checker_.Check(sets);
    std::vector<EditRange> parts;
    for (std::size_t i = 0; i < ranges.size(); ++i) Note(ranges[i], answers[i], passed, parts);
    pending_.insert(pending_.end(), parts.rbegin(), parts.rend());
  }

  // Where most edits are refused, checking halves first would be wasted.
  bool AreNearlyAllRefused() const { return checked_ >= kMinChecked && refused_.size() * 2 > checked_; }

  void Note(const EditRange& range, const CheckAnswer& answer, std::vector<std::size_t>& passed, std::vector<EditRange>& parts) {
    const std::vector<std::size_t> edits = EditsOf(range);
    if (checker_.Passes(answer) || edits.size() == 1) checked_ += edits.size();
    if (checker_.Passes(answer)) {
      if (!IsBlocked(edits.front())) passed.insert(passed.end(), edits.begin(), edits.end());
    } else if (edits.size() == 1) {
      NoteRefused(edits, answer);
    } else {
      const std::size_t step = AreNearlyAllRefused() ? 1 : edits.size() - edits.size() / 2;
      for (std::size_t i = range.begin; i < range.end; i += step) parts.push_back({i, std::min(i + step, range.end)});
    }
  }

  // The last edit is the one that is refused.
  void NoteRefused(std::vector<std::size_t> edits, const CheckAnswer& answer) {
    const std::size_t edit = edits.back();
    if (!answer) {
      unbuildable_.push_back(edit);
      return;
    }
    std::ranges::sort(edits);
    refused_.insert_or_assign(edit, RejectedSet{std::move(edits), *answer});
  }

  // Adds edits that passed alone to the base. If they are refused in combination, adds as many as possible.
  void AddToBase(const std::vector<std::size_t>& edits) {
    if (edits.empty()) return;
    EditSet grown = checker_.With(base_, edits);
    const CheckAnswer answer = checker_.Check(grown);
    if (checker_.Passes(answer)) {
      base_ = std::move(grown);
    } else if (IsFull()) {
      stopped_ = true;
    } else if (edits.size() == 1) {
      NoteCombination(edits.front(), answer);
    } else {
      const auto middle = edits.begin() + static_cast<std::ptrdiff_t>(edits.size() / 2);
      AddToBase({edits.begin(), middle});
      AddToBase({middle, edits.end()});
    }
  }

  void NoteCombination(std::size_t edit, const CheckAnswer& with_base) {
    if (!with_base) return NoteRefused({edit}, with_base);
    std::vector<std::size_t> base;
    for (std::size_t i = 0; i < base_.size(); ++i) {
      if (base_[i]) base.push_back(i);
    }
    std::vector<std::size_t> edits = MinimalConflictWith(checker_, std::move(base), edit);
    edits.push_back(edit);
    const CheckAnswer answer = checker_.Check(checker_.Only(edits));
    NoteRefused(std::move(edits), answer);
  }

  // Refused edits may pass now that others are made, or together.
  void TryRefusedAgain() {
    for (int i = 0; i < kMaxTrials; ++i) {
      if (!TryEachAgain() && !TryClusters()) return;
    }
  }

  std::vector<std::size_t> EditsToTryAgain() const {
    std::vector<std::size_t> edits = unbuildable_;
    for (const auto& [edit, refusal] : refused_) edits.push_back(edit);
    std::erase_if(edits, [&](std::size_t edit) { return base_[edit] || IsBlocked(edit); });
    return edits;
  }

  // Whether any passes. With an empty base each was checked before.
  bool TryEachAgain() {
    if (std::ranges::find(base_, true) == base_.end()) return false;
    const std::vector<std::size_t> edits = EditsToTryAgain();
    bool any = false;
    for (std::size_t begin = 0; begin < edits.size(); begin += kBatch) {
      const std::size_t end = std::min(begin + kBatch, edits.size());
      std::vector<EditSet> sets;
      for (std::size_t i = begin; i < end; ++i) sets.push_back(checker_.With(base_, {edits[i]}));
      const std::vector<CheckAnswer> answers = checker_.Check(sets);
      for (std::size_t i = begin; i < end; ++i) {
        if (checker_.Passes(answers[i - begin]) && TryAgain({edits[i]})) any = true;
      }
    }
    if (any) ForgetRefusalsOfBase();
    return any;
  }

  bool TryClusters() {
    EditSet open(input_.needs.size());
    for (const std::size_t edit : EditsToTryAgain()) open[edit] = true;
    bool any = false;
    for (std::vector<std::size_t> edits : input_.clusters) {
      std::erase_if(edits, [&](std::size_t edit) { return !open[edit] || base_[edit]; });
      if (edits.size() > 1 && TryAgain(edits)) any = true;
    }
    if (any) ForgetRefusalsOfBase();
    return any;
  }

  bool TryAgain(const std::vector<std::size_t>& edits) {
    EditSet grown = checker_.With(base_, edits);
    if (!checker_.Passes(checker_.Check(grown))) return false;
    base_ = std::move(grown);
    return true;
  }

  // An edit that makes a schema only with others may be refused with them.
  void CheckUnbuildable() {
    for (const std::size_t edit : std::vector<std::size_t>(unbuildable_)) {
      if (IsBlocked(edit)) continue;
      const CheckAnswer answer = checker_.Check(checker_.With(base_, {edit}));
      if (checker_.Refuses(answer)) NoteCombination(edit, answer);
    }
  }

  void ForgetRefusalsOfBase() {
    std::erase_if(refused_, [&](const auto& one) { return base_[one.first]; });
    std::erase_if(unbuildable_, [&](std::size_t edit) { return base_[edit]; });
  }

  SearchResult Result() {
    ForgetRefusalsOfBase();
    SearchResult result{base_, checker_.Check(base_), {}, stopped_};
    for (const auto& [edit, refusal] : refused_) {
      if (!HasRefusalOfNeeded(edit, refusal.verdict)) result.refusals.push_back(refusal);
    }
    std::ranges::stable_sort(result.refusals, {}, &RejectedSet::edits);
    if (result.refusals.size() > input_.max_refusals) {
      result.refusals.resize(input_.max_refusals);
      result.stopped = true;
    }
    return result;
  }

  const SearchInput& input_;
  EditSetChecker checker_;
  EditSet base_;                                // edits that pass together so far
  std::vector<std::size_t> order_;              // of the search
  std::vector<std::size_t> position_;           // of each edit in it
  std::vector<EditRange> pending_;              // ranges to check, the next one last
  std::map<std::size_t, RejectedSet> refused_;  // by the edit that is not in the base because of it
  std::vector<std::size_t> unbuildable_;        // edits from which no schema can be built, alone or with the base
  std::size_t checked_ = 0;                     // edits that CheckNext has decided
  bool stopped_ = false;
};

}  // namespace

SearchResult Search(const SearchInput& input) { return Searcher(input).Find(); }

}  // namespace korvel
