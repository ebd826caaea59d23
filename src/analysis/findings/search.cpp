// The search for refused edits. What is refused is not decided here. Held by tests/report/search_test.cpp.
#include "analysis/findings/search.h"

#include <algorithm>
#include <map>
#include <numeric>

#include "analysis/findings/questions.h"

namespace korvel {
namespace {

constexpr std::size_t kBatch = 64;   // sets that are asked about at once; the same on every machine
constexpr std::size_t kEnough = 32;  // edits that are judged before their share of refusals tells what is to come
constexpr int kMaxTrials = 8;        // rounds in which refused edits are tried again while each round lets some pass

// Edits by their positions in the order of the search.
struct Run {
  std::size_t begin;
  std::size_t end;
};

class Searcher {
 public:
  explicit Searcher(const SearchInput& input)
      : input_(input), questions_(input), base_(input.needs.size()), order_(input.needs.size()), position_(input.needs.size()) {
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    // What is needed comes before what needs it, and last what cannot pass, one by one.
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
      while (!pending_.empty() && !IsFull()) AskNext(passed);
      AddToBase(passed);
      TryRefusedAgain();
    } while (!pending_.empty() && !IsFull());
    stopped_ = stopped_ || !pending_.empty();
    CheckUnbuildable();
    return Result();
  }

 private:
  bool IsHopeless(std::size_t edit) const { return !input_.known_refused.empty() && input_.known_refused[edit]; }
  bool IsBlocked(std::size_t edit) const {
    return IsHopeless(edit) || std::ranges::any_of(input_.needs[edit], [&](std::size_t needed) { return IsHopeless(needed); });
  }

  // Whether nothing speaks against an edit but what it needs. Of edits that need each other the first one speaks for all.
  bool Blocked(std::size_t edit, const Verdict& verdict) const {
    return std::ranges::any_of(input_.needs[edit], [&](std::size_t needed) {
      const auto found = refused_.find(needed);
      if (found == refused_.end() || !SameRefusal(found->second.verdict, verdict)) return false;
      return needed < edit || !std::ranges::binary_search(input_.needs[needed], edit);
    });
  }

  // Whether there are enough refusals in front of what was not asked about yet.
  bool IsFull() const {
    if (refused_.size() < input_.max_refusals) return false;
    const std::size_t reached = pending_.empty() ? order_.size() : pending_.back().begin;
    const auto counts = [&](const auto& one) {
      return position_[one.first] < reached && !Blocked(one.first, one.second.verdict);
    };
    return static_cast<std::size_t>(std::ranges::count_if(refused_, counts)) >= input_.max_refusals;
  }

  std::vector<std::size_t> EditsOf(const Run& run) const {
    return {order_.begin() + static_cast<std::ptrdiff_t>(run.begin), order_.begin() + static_cast<std::ptrdiff_t>(run.end)};
  }

  // Asks about the next runs, each alone: the answers do not depend on each other.
  void AskNext(std::vector<std::size_t>& passed) {
    std::vector<Run> runs;
    std::vector<EditSet> sets;
    while (!pending_.empty() && runs.size() < kBatch) {
      runs.push_back(pending_.back());
      pending_.pop_back();
      sets.push_back(questions_.Only(EditsOf(runs.back())));
    }
    const std::vector<CheckAnswer> answers = questions_.Ask(sets);
    std::vector<Run> parts;
    for (std::size_t i = 0; i < runs.size(); ++i) Note(runs[i], answers[i], passed, parts);
    pending_.insert(pending_.end(), parts.rbegin(), parts.rend());
  }

  // Where most are refused, halves would only be asked about on the way to each.
  bool AreNearlyAllRefused() const { return checked_ >= kEnough && refused_.size() * 2 > checked_; }

  void Note(const Run& run, const CheckAnswer& answer, std::vector<std::size_t>& passed, std::vector<Run>& parts) {
    const std::vector<std::size_t> edits = EditsOf(run);
    if (questions_.Passes(answer) || edits.size() == 1) checked_ += edits.size();
    if (questions_.Passes(answer)) {
      if (!IsBlocked(edits.front())) passed.insert(passed.end(), edits.begin(), edits.end());
    } else if (edits.size() == 1) {
      NoteRefused(edits, answer);
    } else {
      const std::size_t step = AreNearlyAllRefused() ? 1 : edits.size() - edits.size() / 2;
      for (std::size_t i = run.begin; i < run.end; i += step) parts.push_back({i, std::min(i + step, run.end)});
    }
  }

  // The edit that is refused is the last one.
  void NoteRefused(std::vector<std::size_t> edits, const CheckAnswer& answer) {
    const std::size_t edit = edits.back();
    if (!answer) {
      unbuildable_.push_back(edit);
      return;
    }
    std::ranges::sort(edits);
    refused_.insert_or_assign(edit, RejectedSet{std::move(edits), *answer});
  }

  // Adds edits of which none was refused: all of them or, where only together they are refused, as many as may.
  void AddToBase(const std::vector<std::size_t>& edits) {
    if (edits.empty()) return;
    EditSet grown = questions_.With(base_, edits);
    const CheckAnswer answer = questions_.Ask(grown);
    if (questions_.Passes(answer)) {
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
    std::vector<std::size_t> edits = SmallestSetAgainst(questions_, std::move(base), edit);
    edits.push_back(edit);
    const CheckAnswer answer = questions_.Ask(questions_.Only(edits));
    NoteRefused(std::move(edits), answer);
  }

  // Edits that were refused may pass now that others are made, or together.
  void TryRefusedAgain() {
    for (int i = 0; i < kMaxTrials; ++i) {
      if (!TryEachAgain() && !TryClusters()) return;
    }
  }

  std::vector<std::size_t> MayBeTriedAgain() const {
    std::vector<std::size_t> edits = unbuildable_;
    for (const auto& [edit, refusal] : refused_) edits.push_back(edit);
    std::erase_if(edits, [&](std::size_t edit) { return base_[edit] || IsBlocked(edit); });
    return edits;
  }

  // Whether any passes. On top of nothing each was asked about before.
  bool TryEachAgain() {
    if (std::ranges::find(base_, true) == base_.end()) return false;
    const std::vector<std::size_t> edits = MayBeTriedAgain();
    bool any = false;
    for (std::size_t begin = 0; begin < edits.size(); begin += kBatch) {
      const std::size_t end = std::min(begin + kBatch, edits.size());
      std::vector<EditSet> sets;
      for (std::size_t i = begin; i < end; ++i) sets.push_back(questions_.With(base_, {edits[i]}));
      const std::vector<CheckAnswer> answers = questions_.Ask(sets);
      for (std::size_t i = begin; i < end; ++i) {
        if (questions_.Passes(answers[i - begin]) && TryAgain({edits[i]})) any = true;
      }
    }
    if (any) ForgetRefusalsOfBase();
    return any;
  }

  bool TryClusters() {
    EditSet open(input_.needs.size());
    for (const std::size_t edit : MayBeTriedAgain()) open[edit] = true;
    bool any = false;
    for (std::vector<std::size_t> edits : input_.clusters) {
      std::erase_if(edits, [&](std::size_t edit) { return !open[edit] || base_[edit]; });
      if (edits.size() > 1 && TryAgain(edits)) any = true;
    }
    if (any) ForgetRefusalsOfBase();
    return any;
  }

  bool TryAgain(const std::vector<std::size_t>& edits) {
    EditSet grown = questions_.With(base_, edits);
    if (!questions_.Passes(questions_.Ask(grown))) return false;
    base_ = std::move(grown);
    return true;
  }

  // What makes a schema with the others alone may be refused with them.
  void CheckUnbuildable() {
    for (const std::size_t edit : std::vector<std::size_t>(unbuildable_)) {
      if (IsBlocked(edit)) continue;
      const CheckAnswer answer = questions_.Ask(questions_.With(base_, {edit}));
      if (questions_.Refuses(answer)) NoteCombination(edit, answer);
    }
  }

  void ForgetRefusalsOfBase() {
    std::erase_if(refused_, [&](const auto& one) { return base_[one.first]; });
    std::erase_if(unbuildable_, [&](std::size_t edit) { return base_[edit]; });
  }

  SearchResult Result() {
    ForgetRefusalsOfBase();
    SearchResult result{base_, questions_.Ask(base_), {}, stopped_};
    for (const auto& [edit, refusal] : refused_) {
      if (!Blocked(edit, refusal.verdict)) result.refusals.push_back(refusal);
    }
    std::ranges::stable_sort(result.refusals, {}, &RejectedSet::edits);
    if (result.refusals.size() > input_.max_refusals) {
      result.refusals.resize(input_.max_refusals);
      result.stopped = true;
    }
    return result;
  }

  const SearchInput& input_;
  Questions questions_;
  EditSet base_;                                // what passes together so far
  std::vector<std::size_t> order_;              // of the search
  std::vector<std::size_t> position_;           // of each edit in it
  std::vector<Run> pending_;                    // runs to ask about, the next one last
  std::map<std::size_t, RejectedSet> refused_;  // by the edit that is not in the base for it
  std::vector<std::size_t> unbuildable_;        // edits that make no schema, alone or with the base
  std::size_t checked_ = 0;                     // edits that passed, or did not, as AskNext came to them
  bool stopped_ = false;
};

}  // namespace

SearchResult Search(const SearchInput& input) { return Searcher(input).Find(); }

}  // namespace korvel
