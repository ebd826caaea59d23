// Compares the warnings about two changes of a table. Tested by tests/report/suggestion_warnings_test.cpp.
#include "analysis/suggest/known_warnings.h"

#include <cstddef>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "analysis/warnings/advice_matches.h"
#include "analysis/warnings/warnings.h"
#include "common/meta_view.h"

namespace korvel {
namespace {

// An entry, whatever changes about it; or a kind of edit of the library, meta or index.
using Element = std::tuple<EditKind, std::string, std::string>;

Element ElementOf(const Edit& edit) { return {IsOfEntry(edit.kind) ? EditKind::kEntryAdded : edit.kind, edit.meta, edit.item}; }

// In an image, a name may be missing.
std::string TextOf(const char* name) { return name == nullptr ? "" : name; }

KnownWarning WarningAt(const AdviceMatch& match) {
  const LPQMXMETAENTRY entry = match.old_entry != nullptr ? match.old_entry : match.new_entry;
  return {match.rule->row.id, TextOf(qmx_get_meta_name(match.old_meta)), TextOf(EntryName(entry))};
}

}  // namespace

KnownWarnings WarningsOf(const TableContext& context, const Changes* changes) {
  std::set<Element> refused;
  for (std::size_t i = 0; changes != nullptr && i < changes->edits.size(); ++i) {
    if (changes->status[i] == EditStatus::kAllowed) continue;
    Element element = ElementOf(changes->edits[i]);
    refused.insert(element);
    if (changes->edits[i].kind != EditKind::kEntryRenamed) continue;
    std::get<2>(element) = changes->edits[i].after;  // a warning may be about either name
    refused.insert(std::move(element));
  }
  const Advice advice = FindWarnings(context, nullptr);
  KnownWarnings warnings;
  for (const Finding& finding : advice.findings) {
    const Edit& edit = advice.edits[finding.edits.front()];
    if (finding.level != Level::kWarning || refused.contains(ElementOf(edit))) continue;
    warnings.insert({finding.verdict.rule, edit.meta, edit.item});
  }
  return warnings;
}

std::vector<KnownWarning> NewWarnings(const TableContext& context, LPQMXMETALIB library, const KnownWarnings& known) {
  const LPQMXMETALIB old_library = context.old_source.Library();
  const char* const name = context.table.c_str();
  std::vector<KnownWarning> warnings;
  for (const AdviceMatch& match : FindAdviceMatches({old_library, library, qmx_get_meta_by_name(old_library, name),
                                                     qmx_get_meta_by_name(library, name), context.settings.created_as})) {
    if (match.rule->level != Level::kWarning) continue;
    KnownWarning warning = WarningAt(match);
    if (!known.contains(warning)) warnings.push_back(std::move(warning));
  }
  return warnings;
}

}  // namespace korvel
