// Chooses alternatives by running the checker on the resulting models. Tested by tests/report/suggestions_test.cpp.
#include "analysis/suggest/suggestions.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "analysis/findings/run_checker.h"
#include "analysis/suggest/alternatives.h"
#include "analysis/suggest/fixes.h"
#include "analysis/suggest/suggestion_text.h"
#include "base/text.h"

namespace korvel {
namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// An edit that cannot be made as it is, and its alternatives.
struct OpenEdit {
  std::size_t edit;
  std::vector<Alternative> alternatives;
  std::size_t chosen = kNone;  // left out

  const Alternative* Chosen() const { return chosen == kNone ? nullptr : &alternatives[chosen]; }
};

// For an edit that is not refused itself: the edits that it needs may have alternatives, so it may be allowed. Accesses the
// structure so that CanBeWritten checks it.
Alternative Unchanged(const Edit& edit) {
  return {true, [meta = edit.meta](ModelEditor& editor) { editor.FindMeta(meta); }, ""};
}

// Whether the checker allows the model after the old schema.
bool IsAllowed(const TableContext& context, const Model& model) {
  const std::optional<qmx::Metalib> built = Build(model);
  return built && !RunChecker(context.old_source.Library(), built->get(), context.table, context.settings).Refused();
}

// Chooses alternatives for the edits of one table.
class SuggestionFinder {
 public:
  SuggestionFinder(const TableContext& context, const Difference& difference, const Changes& changes, WorkLimit& work)
      : context_(context), difference_(difference), changes_(changes), work_(work) {
    cost_ = PartsOf(difference.old_model()) + PartsOf(difference.new_model());
    AlternativeMaker maker(difference, context.settings);
    for (std::size_t i = 0; i < changes.edits.size(); ++i) {
      if (changes.status[i] == EditStatus::kAllowed) continue;
      OpenEdit open{i, maker.AlternativesOf(changes.edits[i]), kNone};
      if (changes.status[i] != EditStatus::kRefused) {
        open.alternatives.insert(open.alternatives.begin(), Unchanged(changes.edits[i]));
      }
      positions_.emplace(i, open_edits_.size());
      open_edits_.push_back(std::move(open));
    }
  }

  // Chooses for each edit the first alternative that is allowed together with everything chosen before. Finds nothing if the
  // refusal is pre-existing: then every model is refused.
  // `only_for_findings`: stops when the choice is final for the edits of findings.
  void Run(bool only_for_findings) {
    if (changes_.allowed_together.Refused()) return;
    only_for_findings_ = only_for_findings;
    for (std::size_t rank = 0;; ++rank) {
      std::vector<OpenEdit*> open;
      for (OpenEdit& edit : open_edits_) {
        if (edit.chosen == kNone && edit.alternatives.size() > rank) open.push_back(&edit);
      }
      if (open.empty()) break;
      Try(open, rank);
    }
  }

  Suggestion Suggest() const {
    std::optional<Model> model = Compose();
    if (!model) return {difference_.old_model(), false};  // no file can contain the allowed edits alone
    const bool allowed = IsAllowed(context_, *model);
    return {std::move(*model), allowed};
  }

  // The chosen alternative; null if the edit is left out or allowed.
  const Alternative* AlternativeOf(std::size_t edit) const {
    const auto found = positions_.find(edit);
    return found == positions_.end() ? nullptr : open_edits_[found->second].Chosen();
  }

  // The fix after which only the edits of this finding have their alternatives.
  FixEdits FixFor(const Finding& finding, const FixMaker& fixes) const {
    FixEdits fix;
    for (const std::size_t edit : finding.edits) {
      if (changes_.status[edit] == EditStatus::kAllowed) continue;
      const Alternative* const alternative = AlternativeOf(edit);
      fix.replaced.push_back(edit);
      if (alternative != nullptr) fix.alternatives.push_back(alternative);
      if (alternative == nullptr || !alternative->makes_edit) fix.left_out.push_back(edit);
    }
    for (const std::size_t edit : fixes.DependentsOf(fix.left_out)) {
      if (changes_.status[edit] != EditStatus::kAllowed) fix.left_out.push_back(edit);
    }
    return fix;
  }

 private:
  // Whether no wanted edit gets an alternative any more if only the edits from `next` on are still tried at this rank.
  bool IsFinal(const OpenEdit& next, std::size_t rank) const {
    return std::ranges::all_of(open_edits_, [&](const OpenEdit& edit) {
      const bool is_wanted = !only_for_findings_ || changes_.status[edit.edit] == EditStatus::kRefused;
      const std::size_t first_untried = edit.edit < next.edit ? rank + 1 : rank;
      return !is_wanted || edit.chosen != kNone || edit.alternatives.size() <= first_untried;
    });
  }

  void Try(const std::vector<OpenEdit*>& open, std::size_t rank) {
    if (IsFinal(*open.front(), rank) || !work_.Take(cost_)) return;
    for (OpenEdit* edit : open) edit->chosen = rank;
    const std::optional<Model> model = Compose();
    if (model && IsAllowed(context_, *model)) return;
    for (OpenEdit* edit : open) edit->chosen = kNone;
    if (open.size() == 1) return;
    const auto middle = open.begin() + static_cast<std::ptrdiff_t>(open.size() / 2);
    Try({open.begin(), middle}, rank);
    Try({middle, open.end()}, rank);
  }

  std::optional<Model> Compose() const {
    std::vector<bool> chosen;
    for (const EditStatus status : changes_.status) chosen.push_back(status == EditStatus::kAllowed);
    std::vector<const Alternative*> alternatives;
    for (const OpenEdit& open : open_edits_) {
      const Alternative* const alternative = open.Chosen();
      if (alternative == nullptr) continue;
      chosen[open.edit] = alternative->makes_edit;
      alternatives.push_back(alternative);
    }
    return ApplyWith(difference_, chosen, alternatives);
  }

  const TableContext& context_;
  const Difference& difference_;
  const Changes& changes_;
  WorkLimit& work_;
  std::vector<OpenEdit> open_edits_;
  std::map<std::size_t, std::size_t> positions_;  // in open_edits_, by edit
  std::size_t cost_ = 0;                          // of one run of the checker
  bool only_for_findings_ = false;
};

// One line: what to do instead of the edits of a finding.
void FillText(const SuggestionFinder& finder, const Changes& changes, Finding& finding) {
  std::string alternatives;
  std::string left_out;
  for (const std::size_t i : finding.edits) {
    if (changes.status[i] == EditStatus::kAllowed) continue;
    const Alternative* const alternative = finder.AlternativeOf(i);
    std::string& text = alternative == nullptr ? left_out : alternatives;
    std::string words = alternative == nullptr ? LeavingOut(changes.edits[i]) : alternative->text;
    if (words.empty()) words = "keep it unchanged; it is allowed once the changes that it needs are replaced";
    AppendPart(text, "; ", words);
  }
  finding.has_fix = !alternatives.empty();
  finding.suggestion = alternatives;
  if (!left_out.empty()) AppendPart(finding.suggestion, "; ", "leave out the change: " + left_out);
}

bool HasAllowedEditsOnly(const Finding& finding, const Changes& changes) {
  return std::ranges::all_of(finding.edits, [&](std::size_t i) { return changes.status[i] == EditStatus::kAllowed; });
}

void FillPreexisting(Finding& finding) {
  finding.suggestion = "no allowed alternative: " + PreexistingSuggestion(finding.verdict);
}

// Adds a removed table with all that it reaches. The library keeps its new name and at least its new version.
Suggestion PutBack(const TableContext& context) {
  Model model = ModelOf(context.old_source, context.table);
  model.name = context.new_source.LibraryName();
  model.version = std::max(model.version, context.new_source.Library()->iVersion);
  const bool allowed = IsAllowed(context, model);
  return {std::move(model), allowed};
}

}  // namespace

Suggestion Suggest(const TableContext& context, const Difference& difference, const Changes& changes, WorkLimit& work) {
  SuggestionFinder finder(context, difference, changes, work);
  finder.Run(false);
  return finder.Suggest();
}

void FindSuggestions(const TableContext& context, const Difference& difference, Changes& changes, bool with_fixes,
                     SuggestionWork& work) {
  SuggestionFinder finder(context, difference, changes, work.search);
  finder.Run(true);
  std::optional<FixMaker> fixes;
  if (with_fixes && context.new_source.text) fixes.emplace(context, difference, work.fixes);
  for (Finding& finding : changes.findings) {
    if (HasAllowedEditsOnly(finding, changes)) {
      FillPreexisting(finding);
      continue;
    }
    FillText(finder, changes, finding);
    if (fixes) finding.fix = fixes->Make(finder.FixFor(finding, *fixes));
  }
}

Suggestion FindSuggestionsForRemovedTable(const TableContext& context, Changes& changes) {
  Suggestion suggestion = PutBack(context);
  for (Finding& finding : changes.findings) {
    finding.suggestion =
        "no allowed alternative: " + (suggestion.allowed ? "keep table " + OneLine(context.table) + ", even if it is unused"
                                                         : PreexistingSuggestion(finding.verdict));
  }
  return suggestion;
}

}  // namespace korvel
