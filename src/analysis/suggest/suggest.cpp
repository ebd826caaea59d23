// Merges the suggestions for several tables into one file. Alternatives are chosen by suggestions.cpp, text is changed by
// rewrite.cpp. Tested by tests/tool/suggest_test.cpp.
#include "analysis/suggest/suggest.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "analysis/findings/findings.h"
#include "analysis/findings/run_checker.h"
#include "analysis/suggest/rewrite.h"
#include "analysis/suggest/suggestions.h"
#include "schema/model.h"

namespace korvel {
namespace {

// Tables that share structures usually settle in two or three rounds.
constexpr int kMaxRounds = 8;

struct RefusedTable {
  const TableQuestion* question;
  Verdict verdict;
};

std::vector<RefusedTable> RefusedTables(const Source& old_source, const Source& source,
                                        const std::vector<TableQuestion>& questions) {
  std::vector<RefusedTable> refused;
  for (const TableQuestion& question : questions) {
    Verdict verdict = RunChecker(old_source.Library(), source.Library(), question.table, question.settings);
    if (verdict.Refused()) refused.push_back({&question, std::move(verdict)});
  }
  return refused;
}

// The models of several tables as one. If two tables want to change a structure, the first one wins; the next round checks the
// other table against the result.
class Merged {
 public:
  explicit Merged(MetaCache& present) : present_(present), model_(present.head()) {}

  void Add(Model wanted) {
    if (model_.protocol == present_.head().protocol) model_.protocol = wanted.protocol;
    if (model_.name == present_.head().name) model_.name = wanted.name;
    model_.version = std::max(model_.version, wanted.version);
    for (MetaModel& meta : wanted.metas) {
      const MetaModel* const present = present_.Find(meta.name);
      if (present != nullptr && *present == meta) continue;
      if (names_.insert(meta.name).second) model_.metas.push_back(std::move(meta));
    }
  }

  const Model& model() const { return model_; }

 private:
  MetaCache& present_;
  Model model_;
  std::set<std::string> names_;
};

// Whether a source has the metas of a model.
bool Matches(const Source& source, const Model& wanted) {
  MetaCache metas(source);
  return std::ranges::all_of(wanted.metas, [&](const MetaModel& meta) {
    const MetaModel* const found = metas.Find(meta.name);
    return found != nullptr && *found == meta;
  });
}

struct Round {
  std::optional<Source> next;  // nullopt if nothing needs to change, or the change cannot be written
  bool is_rewritten = true;
};

// Removes structures that the new source has but this table does not reach there: they belong to other tables. The next round
// checks whether the result is allowed.
void DropUnreached(const Source& source, const std::vector<MetaModel>& reached, Model& wanted) {
  std::set<std::string_view> names;
  for (const MetaModel& meta : reached) names.insert(meta.name);
  std::erase_if(wanted.metas, [&](const MetaModel& meta) { return source.HasMeta(meta.name) && !names.contains(meta.name); });
}

Suggestion SuggestFor(const TableContext& context, const Verdict& verdict, WorkLimit& work) {
  const Source& source = context.new_source;
  if (!source.HasMeta(context.table)) {
    Changes changes = FindRemovedTable(context, verdict);
    Suggestion suggestion = FindSuggestionsForRemovedTable(context, changes);
    DropUnreached(source, {}, suggestion.model);
    return suggestion;
  }
  const Difference difference(context.old_source, source, context.table);
  const Changes changes = FindChanges(context, difference, verdict, kMaxFindings);
  Suggestion suggestion = Suggest(context, difference, changes, work);
  DropUnreached(source, difference.new_model().metas, suggestion.model);
  return suggestion;
}

Round RunRound(const Source& old_source, const Source& source, const std::vector<RefusedTable>& refused, WorkLimit& work) {
  MetaCache present(source);
  Merged merged(present);
  for (const RefusedTable& one : refused) {
    const auto& [table, settings] = *one.question;
    Suggestion suggestion = SuggestFor({old_source, source, table, settings}, one.verdict, work);
    if (suggestion.allowed) merged.Add(std::move(suggestion.model));
  }
  const auto replacements = Rewriter(source, old_source).Rewrite(merged.model());
  if (!replacements) return {std::nullopt, false};
  if (replacements->empty()) return {};
  std::optional<Source> next = SourceOfText(source.name, ApplyReplacements(source.text->Bytes(), *replacements));
  if (!next || !Matches(*next, merged.model())) return {std::nullopt, false};
  return {std::move(next), true};
}

// The suggestion of each finding.
std::vector<std::string> SuggestionsFor(const TableContext& context, const Verdict& verdict, SuggestionWork& work) {
  Changes changes;
  if (context.new_source.HasMeta(context.table)) {
    const Difference difference(context.old_source, context.new_source, context.table);
    changes = FindChanges(context, difference, verdict, kMaxFindings);
    FindSuggestions(context, difference, changes, false, work);
  } else {
    changes = FindRemovedTable(context, verdict);
    FindSuggestionsForRemovedTable(context, changes);
  }
  std::vector<std::string> suggestions;
  for (Finding& finding : changes.findings) suggestions.push_back(std::move(finding.suggestion));
  return suggestions;
}

}  // namespace

SchemaSuggestion SuggestSchema(const Source& old_source, const Source& new_source, const std::vector<TableQuestion>& questions,
                               SuggestionWork work) {
  Source source = new_source;
  SchemaSuggestion suggestion;
  std::vector<RefusedTable> refused = RefusedTables(old_source, source, questions);
  for (int round = 0; round < kMaxRounds && !refused.empty(); ++round) {
    Round fixed = RunRound(old_source, source, refused, work.search);
    suggestion.is_rewritten = fixed.is_rewritten;
    if (!fixed.next) break;
    source = std::move(*fixed.next);
    refused = RefusedTables(old_source, source, questions);
  }
  suggestion.text = source.text->Bytes();
  suggestion.is_changed = suggestion.text != new_source.text->Bytes();
  for (const RefusedTable& one : refused) {
    const auto& [table, settings] = *one.question;
    suggestion.refused.push_back({table, one.verdict, SuggestionsFor({old_source, source, table, settings}, one.verdict, work)});
  }
  suggestion.reached_work_limit = work.is_reached();
  return suggestion;
}

}  // namespace korvel
