// Puts the suggestions for several tables into one file. How each change is mended is suggestions.cpp's concern, how it is
// written rewrite.cpp's. Held by tests/tool/suggest_test.cpp.
#include "analysis/suggest/suggest.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <utility>

#include "analysis/findings/ask_checker.h"
#include "analysis/findings/findings.h"
#include "analysis/suggest/meta_cache.h"
#include "analysis/suggest/rewrite.h"
#include "analysis/suggest/suggestions.h"
#include "schema/text_source.h"

namespace korvel {
namespace {

// Tables whose structures change each other's suggestion settle in two or three.
constexpr int kMaxRounds = 8;

struct Refused {
  const TableQuestion* question;
  Verdict verdict;
};

std::vector<Refused> AskAll(const Source& old_source, const Source& source, const std::vector<TableQuestion>& questions) {
  std::vector<Refused> refused;
  for (const TableQuestion& question : questions) {
    Verdict verdict = AskChecker(old_source.Library(), source.Library(), question.table, question.settings);
    if (verdict.Refused()) refused.push_back({&question, std::move(verdict)});
  }
  return refused;
}

// What several tables want of one library. Of a structure that two of them want to change the first one's wish counts; the other
// one is asked again with that.
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
  std::unordered_set<std::string> names_;
};

// Whether a source says what was wanted of it.
bool Says(const Source& source, const Model& wanted) {
  MetaCache book(source);
  return std::ranges::all_of(wanted.metas, [&](const MetaModel& meta) {
    const MetaModel* const said = book.Find(meta.name);
    return said != nullptr && *said == meta;
  });
}

struct Round {
  std::optional<Source> next;  // none if nothing is to be changed, or cannot be
  bool is_rewritten = true;
};

// A structure that comes back with what embeds it stays as the file has it for others; whether that is allowed, the next round
// asks.
void LeaveToOthers(const Source& source, const std::vector<MetaModel>& reached, Model& wanted) {
  std::unordered_set<std::string_view> names;
  for (const MetaModel& meta : reached) names.insert(meta.name);
  std::erase_if(wanted.metas, [&](const MetaModel& meta) { return source.HasMeta(meta.name) && !names.contains(meta.name); });
}

Suggestion Fixed(const Source& old_source, const Source& source, const Refused& refused, Changes& changes) {
  const auto& [table, settings] = *refused.question;
  if (!source.HasMeta(table)) {
    changes = FindRemovedTable(old_source, source, table, settings, refused.verdict);
    Suggestion suggestion = FindSuggestionsForRemovedTable(old_source, source, table, settings, changes);
    LeaveToOthers(source, {}, suggestion.model);
    return suggestion;
  }
  const Difference difference(old_source, source, table);
  changes = FindChanges(difference, old_source, source, table, settings, refused.verdict, kMaxFindings);
  Suggestion suggestion = Suggest(difference, old_source, table, settings, changes);
  LeaveToOthers(source, difference.new_model().metas, suggestion.model);
  return suggestion;
}

Round Fix(const Source& old_source, const Source& source, const std::vector<Refused>& refused) {
  MetaCache present(source);
  Merged merged(present);
  for (const Refused& one : refused) {
    Changes changes;
    Suggestion suggestion = Fixed(old_source, source, one, changes);
    if (suggestion.allowed) merged.Add(std::move(suggestion.model));
  }
  const auto replacements = Rewriter(source, old_source).Rewrite(merged.model());
  if (!replacements) return {std::nullopt, false};
  if (replacements->empty()) return {};
  std::optional<Source> next = SourceOfText(source.name, Replaced(source.text->bytes, *replacements));
  if (!next || !Says(*next, merged.model())) return {std::nullopt, false};
  return {std::move(next), true};
}

std::vector<std::string> WaysOut(const Source& old_source, const Source& source, const Refused& refused) {
  const auto& [table, settings] = *refused.question;
  Changes changes;
  if (source.HasMeta(table)) {
    const Difference difference(old_source, source, table);
    changes = FindChanges(difference, old_source, source, table, settings, refused.verdict, kMaxFindings);
    FindSuggestions(difference, old_source, source, table, settings, changes, false);
  } else {
    Fixed(old_source, source, refused, changes);
  }
  std::vector<std::string> ways;
  for (Finding& finding : changes.findings) ways.push_back(std::move(finding.suggestion));
  return ways;
}

}  // namespace

SchemaSuggestion SuggestSchema(const Source& old_source, const Source& new_source, const std::vector<TableQuestion>& questions) {
  Source source = new_source;
  SchemaSuggestion suggestion;
  std::vector<Refused> refused = AskAll(old_source, source, questions);
  for (int round = 0; round < kMaxRounds && !refused.empty(); ++round) {
    Round fixed = Fix(old_source, source, refused);
    suggestion.is_rewritten = fixed.is_rewritten;
    if (!fixed.next) break;
    source = std::move(*fixed.next);
    refused = AskAll(old_source, source, questions);
  }
  suggestion.text = source.text->bytes;
  for (const Refused& one : refused) {
    suggestion.refused.push_back({one.question->table, one.verdict, WaysOut(old_source, source, one)});
  }
  return suggestion;
}

}  // namespace korvel
