// Runs the checker on models with alternatives. Tested by tests/report/suggestions_test.cpp and suggestion_warnings_test.cpp.
#include "analysis/suggest/suggestion_finder.h"

#include <algorithm>
#include <utility>

#include "analysis/findings/run_checker.h"

namespace korvel {
namespace {

// For an edit that is not refused itself: the edits that it needs may have alternatives, so it may be allowed. Accesses the
// structure so that CanBeWritten checks it.
Alternative Unchanged(const Edit& edit) {
  return {true, [meta = edit.meta](ModelEditor& editor) { editor.FindMeta(meta); }, ""};
}

}  // namespace

bool IsAllowed(const TableContext& context, const Model& model, const KnownWarnings& known) {
  const std::optional<qmx::Metalib> built = Build(model);
  return built && !RunChecker(context.old_source.Library(), built->get(), context.table, context.settings).Refused() &&
         NewWarnings(context, built->get(), known).empty();
}

SuggestionFinder::SuggestionFinder(const TableContext& context, const Difference& difference, const Changes& changes,
                                   const KnownWarnings& known, WorkLimit& work)
    : context_(context),
      difference_(difference),
      changes_(changes),
      known_(known),
      work_(work),
      maker_(difference, context.settings, context.reserved),
      cost_(PartsOf(difference.old_model()) + PartsOf(difference.new_model())) {
  for (std::size_t i = 0; i < changes.edits.size(); ++i) {
    if (changes.status[i] == EditStatus::kAllowed) continue;
    open_edits_.emplace(i, OpenEdit{i, maker_.AlternativesOf(changes.edits[i])});
    if (changes.status[i] != EditStatus::kRefused) OfferUnchanged(i);
  }
}

void SuggestionFinder::Run(bool only_for_findings) {
  if (changes_.allowed_together.Refused()) return;
  OpenCausesOfWarnings();
  only_for_findings_ = only_for_findings;
  for (std::size_t rank = 0;; ++rank) {
    std::vector<OpenEdit*> open;
    for (auto& [i, edit] : open_edits_) {
      if (edit.chosen == kNone && edit.alternatives.size() > rank) open.push_back(&edit);
    }
    if (open.empty()) break;
    Try(open, rank);
  }
}

const Alternative* SuggestionFinder::AlternativeOf(std::size_t edit) const {
  const auto found = open_edits_.find(edit);
  return found == open_edits_.end() ? nullptr : found->second.Chosen();
}

std::vector<std::size_t> SuggestionFinder::ReplacedAlthoughAllowed() const {
  std::vector<std::size_t> replaced;
  for (const auto& [i, edit] : open_edits_) {
    if (changes_.status[i] == EditStatus::kAllowed && edit.chosen != 0) replaced.push_back(i);
  }
  return replaced;
}

FixEdits SuggestionFinder::FixFor(const std::vector<std::size_t>& edits, const FixMaker& fixes) const {
  FixEdits fix;
  for (const std::size_t edit : edits) {
    if (!open_edits_.contains(edit)) continue;
    const Alternative* const alternative = AlternativeOf(edit);
    fix.replaced.push_back(edit);
    if (alternative == nullptr || !alternative->makes_edit) fix.left_out.push_back(edit);
    if (alternative == nullptr) continue;
    fix.alternatives.push_back(alternative);
    fix.replaced.insert(fix.replaced.end(), alternative->left_out.begin(), alternative->left_out.end());
    fix.left_out.insert(fix.left_out.end(), alternative->left_out.begin(), alternative->left_out.end());
  }
  for (const std::size_t edit : fixes.DependentsOf(fix.left_out)) {
    if (changes_.status[edit] != EditStatus::kAllowed) fix.left_out.push_back(edit);
  }
  return fix;
}

// The first alternative of an edit that is not refused itself.
void SuggestionFinder::OfferUnchanged(std::size_t edit) {
  std::vector<Alternative>& alternatives = open_edits_.at(edit).alternatives;
  alternatives.insert(alternatives.begin(), Unchanged(changes_.edits[edit]));
}

// The allowed edits alone may bring warnings that the report does not show: about a field of which another edit is refused, or
// because a refused edit is missing. Then they get alternatives, too: first those of the field that a warning is about, then
// those of its structure, then all.
void SuggestionFinder::OpenCausesOfWarnings() {
  using IsCause = bool (*)(const KnownWarning&, const Edit&);
  constexpr IsCause kCauses[] = {
      [](const KnownWarning& warning, const Edit& edit) { return edit.meta == warning.meta && edit.item == warning.item; },
      [](const KnownWarning& warning, const Edit& edit) { return edit.meta == warning.meta; },
      [](const KnownWarning&, const Edit&) { return true; },
  };
  for (const IsCause is_cause : kCauses) {
    const std::vector<KnownWarning> warnings = WarningsOfAllowedEdits();
    if (warnings.empty()) return;
    for (std::size_t i = 0; i < changes_.edits.size(); ++i) {
      const Edit& edit = changes_.edits[i];
      if (std::ranges::any_of(warnings, [&](const KnownWarning& one) { return is_cause(one, edit); })) OpenAllowed(i);
    }
    OpenDependents();
  }
}

std::vector<KnownWarning> SuggestionFinder::WarningsOfAllowedEdits() const {
  std::vector<bool> chosen(changes_.edits.size());
  for (std::size_t i = 0; i < chosen.size(); ++i) chosen[i] = !open_edits_.contains(i);
  if (std::ranges::find(chosen, true) == chosen.end()) return {};
  const std::optional<qmx::Metalib> built = difference_.Build(chosen);
  return built ? NewWarnings(context_, built->get(), known_) : std::vector<KnownWarning>();
}

void SuggestionFinder::OpenAllowed(std::size_t i) {
  if (open_edits_.contains(i)) return;
  const Edit& edit = changes_.edits[i];
  const bool is_added = edit.kind == EditKind::kEntryAdded;
  open_edits_.emplace(i, OpenEdit{i, is_added ? maker_.AlternativesOf(edit) : std::vector<Alternative>()});
  OfferUnchanged(i);
}

void SuggestionFinder::OpenDependents() {
  for (std::size_t i = 0; i < changes_.edits.size(); ++i) {
    if (open_edits_.contains(i)) continue;
    const auto is_open = [&](std::size_t need) { return open_edits_.contains(need); };
    if (std::ranges::any_of(difference_.Needs(i), is_open)) OpenAllowed(i);
  }
}

// Whether no wanted edit gets an alternative any more if only the edits from `next` on are still tried at this rank.
bool SuggestionFinder::IsFinal(const OpenEdit& next, std::size_t rank) const {
  return std::ranges::all_of(open_edits_, [&](const auto& item) {
    const OpenEdit& edit = item.second;
    const EditStatus status = changes_.status[edit.edit];
    const bool is_wanted = !only_for_findings_ || status == EditStatus::kRefused || status == EditStatus::kAllowed;
    const std::size_t first_untried = edit.edit < next.edit ? rank + 1 : rank;
    return !is_wanted || edit.chosen != kNone || edit.alternatives.size() <= first_untried;
  });
}

void SuggestionFinder::Try(const std::vector<OpenEdit*>& open, std::size_t rank) {
  if (IsFinal(*open.front(), rank) || !work_.Take(cost_)) return;
  for (OpenEdit* edit : open) edit->chosen = rank;
  const std::optional<Model> model = Compose();
  if (model && IsAllowed(context_, *model, known_)) return;
  for (OpenEdit* edit : open) edit->chosen = kNone;
  if (open.size() == 1) return;
  const auto middle = open.begin() + static_cast<std::ptrdiff_t>(open.size() / 2);
  Try({open.begin(), middle}, rank);
  Try({middle, open.end()}, rank);
}

std::optional<Model> SuggestionFinder::Compose() const {
  std::vector<bool> chosen(changes_.edits.size(), true);
  std::vector<const Alternative*> alternatives;
  for (const auto& [i, open] : open_edits_) {
    const Alternative* const alternative = open.Chosen();
    if (alternative == nullptr || !alternative->makes_edit) chosen[i] = false;
    if (alternative == nullptr) continue;
    for (const std::size_t left_out : alternative->left_out) chosen[left_out] = false;
    alternatives.push_back(alternative);
  }
  return ApplyWith(difference_, chosen, alternatives);
}

}  // namespace korvel
