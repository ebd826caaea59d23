// Merges the suggestions for several tables into one file. Alternatives are chosen by suggestions.cpp, text is changed by
// rewrite.cpp. Tested by tests/tool/suggest_test.cpp.
#include "analysis/suggest/suggest.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "analysis/diff/renamed_metas.h"
#include "analysis/findings/findings.h"
#include "analysis/findings/run_checker.h"
#include "analysis/suggest/known_warnings.h"
#include "analysis/suggest/merged_model.h"
#include "analysis/suggest/restored_names.h"
#include "analysis/suggest/rewrite.h"
#include "analysis/suggest/suggestions.h"
#include "schema/model.h"

namespace korvel {
namespace {

// Tables that share structures usually settle in two or three rounds.
constexpr int kMaxRounds = 8;

// Adds the model of a table. If two tables want to change a structure, the first one wins; the next round checks the other table
// against the result.
void Add(Model wanted, MergedModel& merged) {
  Model& model = merged.model();
  if (model.protocol == merged.head().protocol) model.protocol = wanted.protocol;
  if (model.name == merged.head().name) model.name = wanted.name;
  model.version = std::max(model.version, wanted.version);
  merged.AddChanged(std::move(wanted.metas));
}

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

// A table that needs another suggestion.
struct OpenTable {
  const TableQuestion* question;
  Verdict verdict;  // if it allows the change, this brings new warnings
};

std::vector<OpenTable> RefusedTables(const Source& old_source, const Source& source,
                                     const std::vector<TableQuestion>& questions) {
  std::vector<OpenTable> refused;
  for (const TableQuestion& question : questions) {
    Verdict verdict = RunChecker(old_source.Library(), source.Library(), question.table, question.settings);
    if (verdict.Refused()) refused.push_back({&question, std::move(verdict)});
  }
  return refused;
}

// Makes the suggestions for all tables, round by round. Borrows its arguments.
class Rounds {
 public:
  Rounds(const Source& old_source, const Source& new_source, const std::vector<TableQuestion>& questions,
         const ReservedFields& reserved, WorkLimit& work)
      : old_source_(old_source), new_source_(new_source), questions_(questions), reserved_(reserved), work_(work) {}

  Round Run(const Source& source, const std::vector<OpenTable>& tables) {
    MetaCache present(source);
    MergedModel merged(present);
    for (const OpenTable& table : tables) {
      Suggestion suggestion = SuggestFor(source, table);
      if (suggestion.allowed) Add(std::move(suggestion.model), merged);
    }
    const auto replacements = Rewriter(source, old_source_).Rewrite(merged.model());
    if (!replacements) return {std::nullopt, false};
    if (replacements->empty()) return {};
    std::optional<Source> next = SourceOfText(source.name, ApplyReplacements(source.text->Bytes(), *replacements));
    if (!next || !Matches(*next, merged.model())) return {std::nullopt, false};
    return {std::move(next), true};
  }

  // The tables that the checker refuses after a round, and those with new warnings: the suggestion for another table may have
  // changed a structure of theirs.
  std::vector<OpenTable> OpenTables(const Source& source) {
    std::vector<OpenTable> open = RefusedTables(old_source_, source, questions_);
    for (const TableQuestion& question : questions_) {
      const bool is_refused = std::ranges::any_of(open, [&](const OpenTable& one) { return one.question == &question; });
      if (!is_refused && HasNewWarnings(source, question)) open.push_back({&question, {}});
    }
    return open;
  }

 private:
  bool HasNewWarnings(const Source& source, const TableQuestion& question) {
    if (!source.HasMeta(question.table)) return false;
    const TableContext context{old_source_, source, question.table, question.settings};
    return !NewWarnings(context, source.Library(), KnownWarningsOf(question, nullptr)).empty();
  }

  // The warnings about the change of the author. `changes` are those of the first round if the table was refused in it.
  const KnownWarnings& KnownWarningsOf(const TableQuestion& question, const Changes* changes) {
    const auto [found, is_new] = known_.try_emplace(question.table);
    if (is_new && new_source_.HasMeta(question.table)) {
      found->second = WarningsOf({old_source_, new_source_, question.table, question.settings}, changes);
    }
    return found->second;
  }

  Suggestion SuggestFor(const Source& source, const OpenTable& table) {
    const TableContext context{old_source_, source, table.question->table, table.question->settings, &reserved_};
    if (!source.HasMeta(context.table)) {
      Changes changes = FindRemovedTable(context, table.verdict);
      Suggestion suggestion = FindSuggestionsForRemovedTable(context, "", changes);
      DropUnreached(source, {}, suggestion.model);
      return suggestion;
    }
    const Difference difference(old_source_, source, context.table);
    const Changes changes = FindChanges(context, difference, table.verdict, kMaxFindings);
    Suggestion suggestion = Suggest(context, difference, changes, KnownWarningsOf(*table.question, &changes), work_);
    DropUnreached(source, difference.new_model().metas, suggestion.model);
    return suggestion;
  }

  const Source& old_source_;
  const Source& new_source_;
  const std::vector<TableQuestion>& questions_;
  const ReservedFields& reserved_;
  WorkLimit& work_;
  std::map<std::string, KnownWarnings> known_;  // by table
};

// The suggestion of each finding.
std::vector<std::string> SuggestionsFor(const TableContext& context, const Verdict& verdict, SuggestionWork& work) {
  Changes changes;
  if (context.new_source.HasMeta(context.table)) {
    const Difference difference(context.old_source, context.new_source, context.table);
    changes = FindChanges(context, difference, verdict, kMaxFindings);
    FindSuggestions(context, difference, changes, false, work);
  } else {
    changes = FindRemovedTable(context, verdict);
    FindSuggestionsForRemovedTable(context, "", changes);
  }
  std::vector<std::string> suggestions;
  for (Finding& finding : changes.findings) suggestions.push_back(std::move(finding.suggestion));
  return suggestions;
}

// Without restoring names.
SchemaSuggestion SuggestFrom(const Source& old_source, const Source& new_source, const std::vector<TableQuestion>& questions,
                             const ReservedFields& reserved, SuggestionWork work) {
  Source source = new_source;
  SchemaSuggestion suggestion;
  Rounds rounds(old_source, new_source, questions, reserved, work.search);
  std::vector<OpenTable> open = RefusedTables(old_source, source, questions);
  for (int round = 0; round < kMaxRounds && !open.empty(); ++round) {
    Round fixed = rounds.Run(source, open);
    suggestion.is_rewritten = fixed.is_rewritten;
    if (!fixed.next) break;
    source = std::move(*fixed.next);
    open = rounds.OpenTables(source);
  }
  if (std::ranges::any_of(open, [](const OpenTable& one) { return !one.verdict.Refused(); })) {
    source = new_source;  // rather than a file that is allowed, but loses data
    open = RefusedTables(old_source, source, questions);
  }
  suggestion.text = source.text->Bytes();
  suggestion.is_changed = suggestion.text != new_source.text->Bytes();
  for (const OpenTable& one : open) {
    const auto& [table, settings] = *one.question;
    suggestion.refused.push_back(
        {table, one.verdict, SuggestionsFor({old_source, source, table, settings, &reserved}, one.verdict, work)});
  }
  suggestion.reached_work_limit = work.is_reached();
  return suggestion;
}

// Those of the tables that were probably renamed.
RenamedMetas RenamedTables(const Source& old_source, const Source& new_source, const std::vector<TableQuestion>& questions) {
  RenamedMetas renamed = FindRenamedTables(old_source, new_source);
  std::erase_if(renamed, [&](const auto& names) {
    return std::ranges::none_of(questions, [&](const TableQuestion& question) { return question.table == names.first; });
  });
  return renamed;
}

// The renamed structures of refused tables. Records in TLV do not depend on their names.
RenamedMetas RenamedStructures(const Source& old_source, const Source& new_source, const std::vector<TableQuestion>& questions) {
  RenamedMetas renamed;
  std::set<std::string> new_names;
  std::set<std::string> ambiguous;
  const auto is_tlv = [](const Source& source) { return HeadOf(source.Library()).protocol == qmx::Protocol::kTlv; };
  if (is_tlv(old_source) && is_tlv(new_source)) return renamed;
  for (const OpenTable& open : RefusedTables(old_source, new_source, questions)) {
    const std::string& table = open.question->table;
    if (!new_source.HasMeta(table)) continue;
    for (const auto& [old_name, new_name] :
         FindRenamedStructures(old_source, ModelOf(old_source, table), new_source, ModelOf(new_source, table))) {
      const auto [found, is_new] = renamed.try_emplace(old_name, new_name);
      const bool is_taken = is_new ? !new_names.insert(new_name).second : found->second != new_name;
      if (is_taken) ambiguous.insert(old_name);
    }
  }
  // Of two new names, neither is the one that replaced the old one.
  std::erase_if(renamed, [&](const auto& one) { return ambiguous.contains(one.first); });
  return renamed;
}

}  // namespace

SchemaSuggestion SuggestSchema(const Source& old_source, const Source& new_source, const std::vector<TableQuestion>& questions,
                               SuggestionWork work, const ReservedFields& reserved) {
  const RenamedMetas tables = RenamedTables(old_source, new_source, questions);
  std::optional<Source> restored = tables.empty() ? new_source : WithOldNames(new_source, tables);
  const RenamedMetas structures = restored ? RenamedStructures(old_source, *restored, questions) : RenamedMetas();
  if (!structures.empty()) restored = WithOldNames(*restored, structures);
  if (restored && !(tables.empty() && structures.empty())) {
    SchemaSuggestion suggestion = SuggestFrom(old_source, *restored, questions, reserved, work);
    suggestion.is_changed = true;
    const auto is_renamed = [&](const TableRefusal& refusal) { return tables.contains(refusal.table); };
    if (std::ranges::none_of(suggestion.refused, is_renamed)) return suggestion;
  }
  return SuggestFrom(old_source, new_source, questions, reserved, work);
}

}  // namespace korvel
