// Turns the refusals of the search into findings with locations. No rule is decided here.
// Tested by tests/report: findings_test, findings_law_test and findings_cases_test.
#include "analysis/findings/findings.h"

#include <algorithm>
#include <map>
#include <optional>

#include "analysis/findings/attribute_fault.h"
#include "analysis/findings/change_checker.h"
#include "analysis/findings/refusal_location.h"
#include "analysis/findings/run_checker.h"
#include "analysis/findings/search.h"
#include "common/refusals.h"

namespace korvel {
namespace {

Location LocationOf(const Source& source, const std::string& table, const Verdict& verdict) {
  return source.HasMeta(table) ? LocateRefusal(source, table, verdict) : Location{&source, {}, {}};
}

// The old schema against itself.
Verdict CheckUnchanged(const TableContext& context) {
  const LPQMXMETALIB library = context.old_source.Library();
  return RunChecker(library, library, context.table, context.settings);
}

// A finding without edits, about the table as a whole.
Finding AboutTable(const TableContext& context, const Verdict& verdict) {
  Finding finding;
  finding.verdict = verdict;
  finding.path = context.table;
  finding.old_location = LocationOf(context.old_source, context.table, verdict);
  finding.new_location = LocationOf(context.new_source, context.table, verdict);
  return finding;
}

Finding AboutEdits(const std::vector<Edit>& edits, std::vector<std::size_t> refused, const Verdict& verdict) {
  const Edit& first = edits[refused.front()];
  Finding finding;
  finding.edits = std::move(refused);
  finding.verdict = verdict;
  finding.path = first.paths.empty() ? "" : first.paths.front();
  finding.old_location = first.old_location;
  finding.new_location = first.new_location;
  return finding;
}

// A change of table attributes is refused because of one of them, if the new schema has the same fault.
void PointAtFaultyAttribute(const TableContext& context, const std::vector<Edit>& edits, Finding& finding) {
  const RefusalRow& row = kTableAttributes;
  if (finding.verdict.rule != row.id || edits[finding.edits.front()].kind != EditKind::kTableAttribute) return;
  const std::optional<AttributeFault> fault = FindAttributeFault(context.new_source, context.table, finding.verdict.text);
  if (fault) finding.new_location = fault->location;
}

// --- Names ---

std::vector<std::string> FieldNames(const Model& model) {
  std::vector<std::string> names;
  for (const EntryModel& entry : model.metas.front().entries) names.push_back(entry.name);
  return names;
}

// A field whose name is refused, and the edit that introduced the name; none if the old schema has it.
struct BadField {
  std::string name;
  Verdict verdict;
  std::optional<std::size_t> edit;
};

class EditsByName {
 public:
  EditsByName(const std::vector<Edit>& edits, const std::string& table) {
    for (std::size_t i = 0; i < edits.size(); ++i) {
      if (edits[i].meta != table) continue;
      if (edits[i].kind == EditKind::kEntryAdded) edits_.emplace(edits[i].item, i);
      if (edits[i].kind == EditKind::kEntryRenamed) edits_.emplace(edits[i].after, i);
    }
  }

  std::optional<std::size_t> Find(const std::string& name) const {
    const auto found = edits_.find(name);
    return found == edits_.end() ? std::nullopt : std::optional(found->second);
  }

 private:
  std::map<std::string, std::size_t> edits_;
};

std::vector<BadField> FindBadFields(const Difference& difference, const std::string& table, std::size_t limit) {
  const std::vector<std::string> names = FieldNames(difference.new_model());
  std::vector<BadField> fields;
  std::optional<EditsByName> edits;
  for (BadName& bad : FindBadNames(table, names, limit)) {
    if (!edits) edits.emplace(difference.edits(), table);
    fields.push_back({names[bad.position], std::move(bad.verdict), edits->Find(names[bad.position])});
  }
  return fields;
}

// Position of the first entry with a name; none if there is none.
std::optional<std::uint32_t> EntryPosition(const Model& model, const std::string& name) {
  const std::vector<EntryModel>& entries = model.metas.front().entries;
  const auto found = std::ranges::find(entries, name, &EntryModel::name);
  if (found == entries.end()) return std::nullopt;
  return static_cast<std::uint32_t>(found - entries.begin());
}

Location NameLocation(const Source& source, const Model& model, const std::string& name) {
  const std::optional<std::uint32_t> entry = EntryPosition(model, name);
  if (!entry) return {};
  const std::uint32_t meta = *PositionOf(source, model.metas.front().name);
  return {&source, {qmx::ElementId::Kind::kEntry, meta, *entry}, "name"};
}

Finding AboutBadField(const TableContext& context, const Difference& difference, const BadField& field) {
  if (field.edit) {
    Finding finding = AboutEdits(difference.edits(), {*field.edit}, field.verdict);
    finding.new_location.attribute = "name";
    return finding;
  }
  Finding finding = AboutTable(context, field.verdict);
  finding.path += "." + field.name;
  finding.old_location = NameLocation(context.old_source, difference.old_model(), field.name);
  finding.new_location = NameLocation(context.new_source, difference.new_model(), field.name);
  return finding;
}

// --- The search ---

// The edits of each structure, and the edits of each kind in each structure.
std::vector<std::vector<std::size_t>> ClustersOf(const std::vector<Edit>& edits) {
  std::map<std::string, std::vector<std::size_t>> of_meta;
  std::map<std::pair<std::string, EditKind>, std::vector<std::size_t>> of_kind;
  for (std::size_t i = 0; i < edits.size(); ++i) {
    of_meta[edits[i].meta].push_back(i);
    of_kind[{edits[i].meta, edits[i].kind}].push_back(i);
  }
  std::vector<std::vector<std::size_t>> clusters;
  clusters.reserve(of_meta.size() + of_kind.size());
  for (auto& [meta, cluster] : of_meta) clusters.push_back(std::move(cluster));
  for (auto& [kind, cluster] : of_kind) clusters.push_back(std::move(cluster));
  return clusters;
}

SearchInput InputFor(const TableContext& context, const Difference& difference, const std::vector<BadField>& bad_fields,
                     std::size_t limit) {
  SearchInput input;
  for (std::size_t i = 0; i < difference.edits().size(); ++i) input.needs.push_back(difference.Needs(i));
  for (BadName& bad : FindBadNames(context.table, FieldNames(difference.old_model()), limit)) {
    input.preexisting.push_back(std::move(bad.verdict));
  }
  input.covers = ListsNoOtherOversizedField;
  input.known_refused.resize(input.needs.size());
  for (const BadField& field : bad_fields) {
    if (field.edit) input.known_refused[*field.edit] = true;
  }
  input.clusters = ClustersOf(difference.edits());
  input.max_refusals = limit;
  return input;
}

// What is allowed together is checked with the whole table at the end. If the excerpts have missed a refusal, the search is
// repeated without them.
SearchResult SearchWith(ChangeChecker& checker, SearchInput& input) {
  input.check = [&](const std::vector<EditSet>& sets) { return checker.Check(sets); };
  SearchResult found = Search(input);
  if (!checker.has_excerpts()) return found;
  const CheckAnswer together = checker.CheckWhole(found.allowed);
  if (together && !together->Refused()) return found;
  checker.DropExcerpts();
  return Search(input);
}

// Searches, or takes over what was found for another table. Sets `is_borrowed` if the texts of the refusals are those of another
// table.
SearchResult SearchEdits(const TableContext& context, const Difference& difference, const std::vector<BadField>& bad_fields,
                         std::size_t limit, SharedSearches* shared, bool& is_borrowed) {
  SearchInput input = InputFor(context, difference, bad_fields, limit);
  const std::optional<std::string> key =
      shared != nullptr && bad_fields.empty() && input.preexisting.empty() ? SearchKeyOf(context, limit) : std::nullopt;
  if (const SharedSearch* const search = key ? shared->Find(*key, difference) : nullptr) {
    std::optional<SearchResult> confirmed = Confirmed(context, difference, *search);
    is_borrowed = confirmed.has_value();
    if (confirmed) return *std::move(confirmed);
  }
  const bool is_single = !key && difference.edits().size() == 1;
  ChangeChecker checker(context, difference, is_single ? ChangeChecker::Use::kWholeTables : ChangeChecker::Use::kExcerpts);
  SearchResult found = SearchWith(checker, input);
  if (key && checker.has_excerpts()) shared->Add(*key, {difference, found.allowed, found.refusals, found.stopped});
  return found;
}

// --- All findings ---

bool IsSame(const Finding& finding, const std::vector<std::size_t>& edits, const Verdict& verdict) {
  return finding.edits == edits && finding.verdict.code == verdict.code && finding.verdict.text == verdict.text;
}

// Replaces an equal finding: the new one knows that it is about the name.
void AddOrReplace(std::vector<Finding>& findings, Finding finding) {
  const auto same = std::ranges::find_if(findings, [&](const Finding& other) {
    return IsSame(other, finding.edits, finding.verdict) && other.path == finding.path;
  });
  same == findings.end() ? findings.push_back(std::move(finding)) : static_cast<void>(*same = std::move(finding));
}

// If the schema with the allowed edits is still refused, for a pre-existing reason, and no finding about a name says so, adds a
// finding about the table.
void AddPreexisting(const TableContext& context, const CheckAnswer& together, std::vector<Finding>& findings) {
  if (!together || !together->Refused()) return;
  const bool is_known = std::ranges::any_of(findings, [&](const Finding& one) { return IsSame(one, {}, *together); });
  if (!is_known) findings.insert(findings.begin(), AboutTable(context, *together));
}

// Edits that cause no other refusal than a pre-existing one (`is_hidden`) are not known to be allowed.
void SetStatuses(const Difference& difference, const EditSet& allowed, bool is_hidden, Changes& changes) {
  std::vector<EditStatus>& status = changes.status;
  status.assign(allowed.size(), changes.stopped ? EditStatus::kNotChecked : EditStatus::kBlocked);
  for (const Finding& finding : changes.findings) {
    for (const std::size_t edit : finding.edits) status[edit] = EditStatus::kRefused;
  }
  for (std::size_t i = 0; i < allowed.size(); ++i) {
    if (allowed[i]) status[i] = is_hidden ? EditStatus::kNotChecked : EditStatus::kAllowed;
  }
  if (!changes.stopped) return;
  const auto is_refused = [&](std::size_t edit) { return status[edit] == EditStatus::kRefused; };
  for (std::size_t i = 0; i < allowed.size(); ++i) {
    const bool is_left = status[i] == EditStatus::kNotChecked;
    if (is_left && std::ranges::any_of(difference.Needs(i), is_refused)) status[i] = EditStatus::kBlocked;
  }
}

std::vector<std::size_t> AllOf(const std::vector<Edit>& edits) {
  std::vector<std::size_t> all(edits.size());
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = i;
  return all;
}

// Images may contain more than schema files can express. The checker may refuse that although it is no edit.
void AddWholeChange(const TableContext& context, const Verdict& whole, Changes& changes) {
  changes.findings.push_back(changes.edits.empty() ? AboutTable(context, whole)
                                                   : AboutEdits(changes.edits, AllOf(changes.edits), whole));
  changes.status.assign(changes.edits.size(), EditStatus::kRefused);
  changes.allowed_together = CheckUnchanged(context);
}

void AddFindings(const TableContext& context, const Difference& difference, const Verdict& whole, std::size_t limit,
                 SharedSearches* shared, Changes& changes) {
  const std::vector<BadField> bad_fields = FindBadFields(difference, context.table, limit);
  SearchResult found = SearchEdits(context, difference, bad_fields, limit, shared, changes.borrows_texts);
  for (RejectedSet& refusal : found.refusals) {
    changes.findings.push_back(AboutEdits(changes.edits, std::move(refusal.edits), refusal.verdict));
    PointAtFaultyAttribute(context, changes.edits, changes.findings.back());
  }
  for (const BadField& field : bad_fields) AddOrReplace(changes.findings, AboutBadField(context, difference, field));
  std::ranges::stable_sort(changes.findings, {}, &Finding::edits);
  AddPreexisting(context, found.together, changes.findings);
  changes.stopped = found.stopped || changes.findings.size() > limit;
  if (changes.findings.size() > limit) changes.findings.resize(limit);
  SetStatuses(difference, found.allowed, found.together && found.together->Refused(), changes);
  if (found.together) changes.allowed_together = *found.together;
  if (changes.findings.empty()) AddWholeChange(context, whole, changes);
}

}  // namespace

Changes FindChanges(const TableContext& context, const Difference& difference, const Verdict& whole, std::size_t max_findings,
                    SharedSearches* shared) {
  Changes changes;
  changes.edits = difference.edits();
  if (whole.Refused()) {
    AddFindings(context, difference, whole, max_findings, shared, changes);
  } else {
    changes.status.assign(changes.edits.size(), EditStatus::kAllowed);
  }
  const std::string& file = context.new_source.path_in_project;
  for (Finding& finding : changes.findings) {
    finding.fingerprint = FingerprintOf(file, context.old_source.LibraryName(), finding, changes.edits);
  }
  return changes;
}

Changes FindRemovedTable(const TableContext& context, const Verdict& whole) {
  Changes changes;
  changes.findings.push_back(AboutTable(context, whole));
  changes.allowed_together = CheckUnchanged(context);
  Finding& finding = changes.findings.front();
  finding.fingerprint = FingerprintOf(context.new_source.path_in_project, context.old_source.LibraryName(), finding, {});
  return changes;
}

}  // namespace korvel
