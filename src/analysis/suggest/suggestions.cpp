// Says what to do instead of refused edits. Tested by tests/report/suggestions_test.cpp.
#include "analysis/suggest/suggestions.h"

#include <algorithm>
#include <map>
#include <optional>
#include <utility>

#include "analysis/findings/refusal_location.h"
#include "analysis/findings/suggestion_text.h"
#include "analysis/suggest/alternatives.h"
#include "analysis/suggest/fixes.h"
#include "analysis/suggest/suggestion_finder.h"
#include "base/text.h"

namespace korvel {
namespace {

// Sets the suggestions and fixes of the findings of one table.
class SuggestionWriter {
 public:
  // `by_name`: whether fields are matched by name, not by id.
  SuggestionWriter(const SuggestionFinder& finder, bool by_name, Changes& changes)
      : finder_(finder), by_name_(by_name), changes_(changes) {
    for (const std::size_t edit : finder.ReplacedAlthoughAllowed()) also_[OwnerOf(edit)].push_back(edit);
  }

  // `fixes` is null if no fixes are wanted.
  void Write(FixMaker* fixes) {
    for (Finding& finding : changes_.findings) {
      if (HasAllowedEditsOnly(finding)) {
        finding.suggestion = "no allowed alternative: " + PreexistingSuggestion(finding.verdict);
        continue;
      }
      FillText(finding);
      if (fixes != nullptr) FillFix(finding, *fixes);
    }
  }

 private:
  bool HasAllowedEditsOnly(const Finding& finding) const {
    return std::ranges::all_of(finding.edits, [&](std::size_t i) { return changes_.status[i] == EditStatus::kAllowed; });
  }

  // The finding whose suggestion says what becomes of an allowed edit: the first one about the same structure, else the first.
  const Finding* OwnerOf(std::size_t edit) const {
    const Finding* owner = nullptr;
    for (const Finding& finding : changes_.findings) {
      if (HasAllowedEditsOnly(finding)) continue;
      if (owner == nullptr) owner = &finding;
      const auto is_about = [&](std::size_t i) { return changes_.edits[i].meta == changes_.edits[edit].meta; };
      if (std::ranges::any_of(finding.edits, is_about)) return &finding;
    }
    return owner;
  }

  // Whether an edit gives a field or structure another name, which makes it another one.
  bool IsRename(std::size_t edit) const {
    const EditKind kind = changes_.edits[edit].kind;
    return kind == EditKind::kMetaRenamed || (by_name_ && kind == EditKind::kEntryRenamed);
  }

  std::string WordsFor(std::size_t edit) const {
    const Alternative* const alternative = finder_.AlternativeOf(edit);
    if (alternative == nullptr && IsRename(edit)) return KeepingName(changes_.edits[edit].before, changes_.edits[edit].after);
    if (alternative == nullptr) return LeavingOut(changes_.edits[edit]);
    const bool is_unchanged = alternative->text.empty();
    return is_unchanged ? "keep it unchanged; it is allowed once the changes that it needs are replaced" : alternative->text;
  }

  // One line: what to do instead of the edits of a finding.
  void FillText(Finding& finding) const {
    std::string alternatives;
    std::string left_out;
    std::string fields;
    std::string structures;
    for (const std::size_t i : finding.edits) {
      if (changes_.status[i] == EditStatus::kAllowed) continue;
      const bool is_left_out = finder_.AlternativeOf(i) == nullptr;
      std::string& renamed = changes_.edits[i].kind == EditKind::kMetaRenamed ? structures : fields;
      AppendPart(!is_left_out ? alternatives : IsRename(i) ? renamed : left_out, "; ", WordsFor(i));
    }
    finding.has_fix = !alternatives.empty();
    finding.suggestion = alternatives;
    if (!structures.empty()) AppendPart(finding.suggestion, "; ", RenamedSuggestion("structures", structures));
    if (!fields.empty()) AppendPart(finding.suggestion, "; ", RenamedSuggestion("fields", fields));
    if (!left_out.empty()) AppendPart(finding.suggestion, "; ", "leave out the change: " + left_out);
    if (const auto also = also_.find(&finding); also != also_.end()) {
      const std::string words = Join(also->second, "; ", [&](std::size_t i) { return WordsFor(i); });
      AppendPart(finding.suggestion, "; ", "so that old records read back, also: " + words);
    }
  }

  void FillFix(Finding& finding, FixMaker& fixes) {
    std::vector<std::size_t> edits;
    for (const std::size_t i : finding.edits) {
      if (changes_.status[i] != EditStatus::kAllowed) edits.push_back(i);
    }
    if (const auto also = also_.find(&finding); also != also_.end()) {
      edits.insert(edits.end(), also->second.begin(), also->second.end());
    }
    finding.fix = fixes.Make(finder_.FixFor(edits, fixes));
  }

  const SuggestionFinder& finder_;
  bool by_name_;
  Changes& changes_;
  std::map<const Finding*, std::vector<std::size_t>> also_;  // allowed edits that a suggestion replaces, too
};

// Adds a removed table with all that it reaches. The library keeps its new name and at least its new version.
Suggestion PutBack(const TableContext& context) {
  Model model = ModelOf(context.old_source, context.table);
  model.name = context.new_source.LibraryName();
  model.version = std::max(model.version, context.new_source.Library()->iVersion);
  const bool allowed = IsAllowed(context, model, {});
  return {std::move(model), allowed};
}

}  // namespace

Suggestion Suggest(const TableContext& context, const Difference& difference, const Changes& changes, const KnownWarnings& known,
                   WorkLimit& work) {
  SuggestionFinder finder(context, difference, changes, known, work);
  finder.Run(false);
  std::optional<Model> model = finder.Compose();
  if (!model) return {difference.old_model(), false};  // no file can contain the allowed edits alone
  const bool allowed = IsAllowed(context, *model, known);
  return {std::move(*model), allowed};
}

void FindSuggestions(const TableContext& context, const Difference& difference, Changes& changes, bool with_fixes,
                     SuggestionWork& work) {
  const KnownWarnings known = WarningsOf(context, &changes);
  SuggestionFinder finder(context, difference, changes, known, work.search);
  finder.Run(true);
  std::optional<FixMaker> fixes;
  if (with_fixes && context.new_source.IsFromText()) fixes.emplace(context, difference, work.fixes);
  const bool by_id =
      difference.old_model().protocol == qmx::Protocol::kTlv && difference.new_model().protocol == qmx::Protocol::kTlv;
  SuggestionWriter(finder, !by_id, changes).Write(fixes ? &*fixes : nullptr);
}

void FindLintSuggestions(const TableContext& context, Changes& changes) {
  for (Finding& finding : changes.findings) {
    finding.suggestion = LintSuggestion(context.new_source, context.table, finding.verdict);
  }
}

Suggestion FindSuggestionsForRemovedTable(const TableContext& context, const std::string& renamed_to, Changes& changes) {
  Suggestion suggestion = PutBack(context);
  for (Finding& finding : changes.findings) {
    if (!suggestion.allowed) {
      finding.suggestion = "no allowed alternative: " + PreexistingSuggestion(finding.verdict);
    } else if (renamed_to.empty()) {
      finding.suggestion = "no allowed alternative: keep table " + OneLine(context.table) + ", even if it is unused";
    } else {
      finding.suggestion = RenamedSuggestion("tables", KeepingName(context.table, renamed_to));
    }
  }
  return suggestion;
}

}  // namespace korvel
