// Compares tables and differences. Tested by tests/report/shared_searches_test.cpp.
#include "analysis/findings/shared_searches.h"

#include <algorithm>
#include <cstdint>
#include <set>
#include <string_view>
#include <tuple>
#include <utility>

#include "analysis/findings/change_checker.h"
#include "qmx/qmx_metalib_kernel.h"
#include "schema/declaration.h"

namespace korvel {
namespace {

// A list of texts as one: no two lists give the same.
class KeyText {
 public:
  KeyText& Add(std::string_view part) {
    text_.append(std::to_string(part.size())).append(":").append(part);
    return *this;
  }
  KeyText& AddOptional(const std::optional<std::string>& part) { return Add(std::string_view(part ? "=" + *part : "")); }
  KeyText& Add(std::int64_t number) { return Add(std::string_view(std::to_string(number))); }

  std::string Take() { return std::move(text_); }

 private:
  std::string text_;
};

MetaModel TableOf(const TableContext& context, const Source& source) {
  const LPQMXMETALIB library = source.Library();
  return MetaOf(library, qmx_get_meta_by_name(library, context.table.c_str()));
}

bool HasSameValues(const Edit& a, const Edit& b) {
  return a.kind == b.kind && a.meta == b.meta && a.item == b.item && a.before == b.before && a.after == b.after;
}

std::vector<std::string_view> StructuresOf(const Model& model) {
  std::vector<std::string_view> names;
  for (const MetaModel& meta : model.metas) names.push_back(meta.name);
  names.erase(names.begin());  // the table
  std::ranges::sort(names);
  return names;
}

// Whether an entry with a structure has the name or id of another entry.
bool IsAmbiguous(const MetaModel& table) {
  std::map<std::string_view, int> names;
  std::map<std::int32_t, int> ids;
  for (const EntryModel& entry : table.entries) {
    ++names[entry.name];
    if (entry.id >= 0) ++ids[entry.id];
  }
  return std::ranges::any_of(table.entries, [&](const EntryModel& entry) {
    return IsCompositeType(entry.type) && (names[entry.name] > 1 || (entry.id >= 0 && ids[entry.id] > 1));
  });
}

// Whether the checker refuses the first set of each rule and code, for the same reason.
bool ConfirmsRefusals(const ChangeChecker& checker, const Difference& difference, const std::vector<RejectedSet>& refusals) {
  std::set<std::tuple<std::string, int>> seen;
  std::vector<EditSet> sets;
  std::vector<const Verdict*> expected;
  for (const RejectedSet& refusal : refusals) {
    if (!seen.emplace(refusal.verdict.rule, refusal.verdict.code).second) continue;
    EditSet& set = sets.emplace_back(difference.edits().size());
    for (const std::size_t edit : refusal.edits) {
      set[edit] = true;
      for (const std::size_t need : difference.Needs(edit)) set[need] = true;
    }
    expected.push_back(&refusal.verdict);
  }
  const std::vector<CheckAnswer> answers = checker.Check(sets);
  return std::ranges::equal(answers, expected, [](const CheckAnswer& answer, const Verdict* verdict) {
    return answer && answer->rule == verdict->rule && answer->code == verdict->code;
  });
}

}  // namespace

std::optional<std::string> SearchKeyOf(const TableContext& context, std::size_t max_findings) {
  const bool are_files = context.old_source.IsFromText() && context.new_source.IsFromText();
  if (!are_files || !context.new_source.HasMeta(context.table)) return std::nullopt;
  const MetaModel table = TableOf(context, context.old_source);
  if (table != TableOf(context, context.new_source) || IsAmbiguous(table)) return std::nullopt;
  const Settings& settings = context.settings;
  KeyText key;
  key.Add(settings.type).Add(settings.created_as).Add(std::string_view(settings.server_version));
  key.Add(std::string_view(settings.whitelist)).Add(settings.list_num).Add(static_cast<std::int64_t>(max_findings));
  key.Add(table.kind).AddOptional(table.customattr);
  for (const EntryModel& entry : table.entries) {
    if (!IsCompositeType(entry.type)) continue;
    key.Add(std::string_view(entry.type)).Add(entry.count).Add(entry.version).AddOptional(entry.customattr2);
    key.Add(entry.refer.empty() ? 0 : 1).Add(entry.id < 0 ? 0 : 1);
    key.Add(std::ranges::count(table.primary_key, entry.name) + std::ranges::count(table.splittable_key, entry.name));
    if (!settings.whitelist.empty()) key.Add(std::string_view(entry.name));
  }
  return key.Take();
}

void SharedSearches::Add(const std::string& key, const SharedSearch& search) {
  const std::scoped_lock lock(mutex_);
  searches_.try_emplace(key, search);
}

const SharedSearch* SharedSearches::Find(const std::string& key, const Difference& difference) const {
  const std::scoped_lock lock(mutex_);
  const auto found = searches_.find(key);
  if (found == searches_.end()) return nullptr;
  const Difference& known = found->second.difference;
  const bool has_same_edits = std::ranges::equal(known.edits(), difference.edits(), HasSameValues);
  const bool has_same_structures = StructuresOf(known.old_model()) == StructuresOf(difference.old_model()) &&
                                   StructuresOf(known.new_model()) == StructuresOf(difference.new_model());
  return has_same_edits && has_same_structures ? &found->second : nullptr;
}

std::string SharedSearches::NewNameOf(const Source& old_source, const Source& new_source, const std::string& table) {
  const std::scoped_lock lock(mutex_);
  if (!renamed_) renamed_ = FindRenamedTables(old_source, new_source);
  const auto found = renamed_->find(table);
  return found == renamed_->end() ? "" : found->second;
}

std::optional<SearchResult> Confirmed(const TableContext& context, const Difference& difference, const SharedSearch& search) {
  const ChangeChecker checker(context, difference, ChangeChecker::Use::kWholeTables);
  const bool is_valid = checker.unchanged() && !checker.unchanged()->Refused();
  if (!is_valid || !ConfirmsRefusals(checker, difference, search.refusals)) return std::nullopt;
  CheckAnswer together = checker.CheckWhole(search.allowed);
  if (!together || together->Refused()) return std::nullopt;
  return SearchResult{search.allowed, std::move(together), search.refusals, search.stopped};
}

}  // namespace korvel
