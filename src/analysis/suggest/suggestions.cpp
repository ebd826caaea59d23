// Finds ways out by asking the checker about forms of the edits. Held by tests/report/ways_out_test.cpp.
#include "analysis/suggest/suggestions.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "analysis/findings/ask_checker.h"
#include "analysis/suggest/alternatives.h"
#include "analysis/suggest/rewrite.h"
#include "analysis/suggest/suggestion_text.h"
#include "base/one_line.h"
#include "schema/text_source.h"

namespace korvel {
namespace {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);

// An edit that cannot be made as it is, and what may come instead.
struct Choice {
  std::size_t edit;
  std::vector<Alternative> forms;
  std::size_t chosen = kNone;  // left out

  const Alternative* Chosen() const { return chosen == kNone ? nullptr : &forms[chosen]; }
};

// Nothing spoke against the edit but what it needs, which may have found a form. Whether that is enough shows in its structure.
Alternative Unchanged(const Edit& edit) {
  return {true, [meta = edit.meta](Draft& draft) { draft.FindMeta(meta); }, ""};
}

// Puts suggestions for one table together.
class Search {
 public:
  Search(const Source& old_source, const Difference& difference, const std::string& table, const Settings& settings,
         const Changes& changes)
      : old_source_(old_source), difference_(difference), table_(table), settings_(settings), changes_(changes) {
    cost_ = PartsOf(difference.old_model()) + PartsOf(difference.new_model());
    AlternativeMaker maker(difference, settings);
    for (std::size_t i = 0; i < changes.edits.size(); ++i) {
      if (changes.status[i] == EditStatus::kAllowed) continue;
      Choice choice{i, maker.AlternativesOf(changes.edits[i]), kNone};
      if (changes.status[i] == EditStatus::kBlocked) choice.forms.insert(choice.forms.begin(), Unchanged(changes.edits[i]));
      positions_.emplace(i, choices_.size());
      choices_.push_back(std::move(choice));
    }
  }

  // Chooses forms: the first of each edit that is allowed on top of everything chosen before. On top of a schema that is refused
  // as it stands nothing can be found out.
  void Run() {
    if (changes_.allowed_together.Refused()) return;
    for (std::size_t rank = 0;; ++rank) {
      std::vector<Choice*> open;
      for (Choice& choice : choices_) {
        if (choice.chosen == kNone && choice.forms.size() > rank) open.push_back(&choice);
      }
      if (open.empty()) break;
      Try(open, rank);
    }
  }

  std::size_t cost() const { return cost_; }

  Suggestion Suggest() const {
    std::optional<Model> model = Compose();
    if (!model) return {difference_.old_model(), false};  // no file can hold what may go
    const bool allowed = IsAllowed(*model);
    return {std::move(*model), allowed};
  }

  // Null: the edit is left out, or it was never refused.
  const Alternative* AlternativeOf(std::size_t edit) const {
    const auto found = positions_.find(edit);
    return found == positions_.end() ? nullptr : choices_[found->second].Chosen();
  }

  // The new model in which nothing is done but this finding's way out; nullopt if it cannot stand alone.
  std::optional<Model> Alone(const Finding& finding) const {
    std::vector<bool> chosen(changes_.edits.size(), true);
    std::vector<const Alternative*> forms;
    for (const std::size_t edit : finding.edits) {
      if (changes_.status[edit] == EditStatus::kAllowed) continue;
      const Alternative* const form = AlternativeOf(edit);
      chosen[edit] = form != nullptr && form->is_made;
      if (form != nullptr) forms.push_back(form);
    }
    LeaveOutDependents(chosen);
    std::optional<Model> model = Made(chosen, forms);
    return model && CanBeWritten(*model) ? std::move(model) : std::nullopt;
  }

 private:
  void Try(const std::vector<Choice*>& open, std::size_t rank) {
    if (work_ + cost_ > kMaxWork) return;
    work_ += cost_;
    for (Choice* choice : open) choice->chosen = rank;
    const std::optional<Model> model = Compose();
    if (model && IsAllowed(*model)) return;
    for (Choice* choice : open) choice->chosen = kNone;
    if (open.size() == 1) return;
    const auto middle = open.begin() + static_cast<std::ptrdiff_t>(open.size() / 2);
    Try({open.begin(), middle}, rank);
    Try({middle, open.end()}, rank);
  }

  bool IsAllowed(const Model& model) const {
    const auto library = Build(model);
    return library && !AskChecker(old_source_.Library(), library->get(), table_, settings_).Refused();
  }

  std::optional<Model> Compose() const {
    std::vector<bool> chosen;
    for (const EditStatus status : changes_.status) chosen.push_back(status == EditStatus::kAllowed);
    std::vector<const Alternative*> forms;
    for (const Choice& choice : choices_) {
      const Alternative* const form = choice.Chosen();
      if (form == nullptr) continue;
      chosen[choice.edit] = form->is_made;
      forms.push_back(form);
    }
    return Made(chosen, forms);
  }

  std::optional<Model> Made(const std::vector<bool>& chosen, const std::vector<const Alternative*>& forms) const {
    Draft draft(difference_.Apply(chosen));
    for (const Alternative* form : forms) {
      if (form->change) form->change(draft);
    }
    std::optional<Model> model = draft.Take();
    // What another protocol asks of structures may be missing in those that no form touched.
    const bool may_miss = difference_.old_model().protocol != difference_.new_model().protocol;
    return model && (!may_miss || CanBeWritten(*model)) ? std::move(model) : std::nullopt;
  }

  void LeaveOutDependents(std::vector<bool>& chosen) const {
    for (const Choice& choice : choices_) {
      const auto& needs = difference_.Needs(choice.edit);
      if (std::ranges::any_of(needs, [&](std::size_t need) { return !chosen[need]; })) chosen[choice.edit] = false;
    }
  }

  const Source& old_source_;
  const Difference& difference_;
  const std::string& table_;
  const Settings& settings_;
  const Changes& changes_;
  std::vector<Choice> choices_;
  std::map<std::size_t, std::size_t> positions_;  // of choices, by edit
  std::size_t cost_ = 0;                          // of one question
  std::size_t work_ = 0;
};

// One line: what to do instead of the edits of a finding.
void FillText(const Search& search, const Changes& changes, Finding& finding) {
  std::string forms;
  std::string left_out;
  for (const std::size_t i : finding.edits) {
    if (changes.status[i] == EditStatus::kAllowed) continue;
    const Alternative* const form = search.AlternativeOf(i);
    std::string& text = form == nullptr ? left_out : forms;
    std::string words = form == nullptr ? LeavingOut(changes.edits[i]) : form->text;
    if (words.empty()) words = "once what it needs has another form, it may go as it is";
    text.append(text.empty() ? "" : "; ").append(words);
  }
  finding.has_fix = !forms.empty();
  if (!left_out.empty()) left_out.insert(0, "leave the change out: ");
  finding.suggestion = forms + (forms.empty() || left_out.empty() ? "" : "; ") + left_out;
}

void FillFix(const Search& search, const Difference& difference, const Source& new_source, Rewriter& rewriter, Finding& finding) {
  const std::optional<Model> alone = search.Alone(finding);
  if (!alone) return;
  std::optional<std::vector<Replacement>> fix = rewriter.Rewrite(*alone);
  if (!fix) return;
  // Another protocol is that of all tables, and may ask of them what they have not.
  const bool concerns_all = alone->protocol != difference.new_model().protocol;
  if (concerns_all && !SourceOfText(new_source.name, Replaced(new_source.text->bytes, *fix))) return;
  finding.fix = std::move(*fix);
}

bool IsPreexisting(const Finding& finding, const Changes& changes) {
  return std::ranges::all_of(finding.edits, [&](std::size_t i) { return changes.status[i] == EditStatus::kAllowed; });
}

void FillPreexisting(Finding& finding) {
  finding.suggestion = "no form of this change is allowed: " + PreexistingSuggestion(finding.verdict);
}

// A table that is gone comes back with what it reaches. The library goes on as it is.
Suggestion PutBack(const Source& old_source, const Source& new_source, const std::string& table, const Settings& settings) {
  Model model = ModelOf(old_source, table);
  model.name = new_source.LibraryName();
  model.version = std::max(model.version, new_source.Library()->iVersion);
  const auto built = Build(model);
  const bool allowed = built && !AskChecker(old_source.Library(), built->get(), table, settings).Refused();
  return {std::move(model), allowed};
}

}  // namespace

Suggestion Suggest(const Difference& difference, const Source& old_source, const std::string& table, const Settings& settings,
                   const Changes& changes) {
  Search search(old_source, difference, table, settings, changes);
  search.Run();
  return search.Suggest();
}

void FindSuggestions(const Difference& difference, const Source& old_source, const Source& new_source, const std::string& table,
                     const Settings& settings, Changes& changes, bool with_fixes) {
  Search search(old_source, difference, table, settings, changes);
  search.Run();
  Rewriter rewriter(new_source, old_source);
  std::size_t work = 0;
  for (Finding& finding : changes.findings) {
    if (IsPreexisting(finding, changes)) {
      FillPreexisting(finding);
      continue;
    }
    FillText(search, changes, finding);
    work += search.cost();
    if (!with_fixes || !new_source.text || work > kMaxWork) continue;
    FillFix(search, difference, new_source, rewriter, finding);
  }
}

Suggestion FindSuggestionsForRemovedTable(const Source& old_source, const Source& new_source, const std::string& table,
                                          const Settings& settings, Changes& changes) {
  Suggestion suggestion = PutBack(old_source, new_source, table, settings);
  for (Finding& finding : changes.findings) {
    finding.suggestion =
        "no form of this change is allowed: " +
        (suggestion.allowed ? "keep table " + OneLine(table) + ", used or not" : PreexistingSuggestion(finding.verdict));
  }
  return suggestion;
}

}  // namespace korvel
