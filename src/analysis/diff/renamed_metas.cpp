// Compares what only one side has. Tested by tests/report/renamed_metas_test.cpp.
#include "analysis/diff/renamed_metas.h"

#include <algorithm>
#include <set>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "analysis/diff/nearby_pairs.h"
#include "base/similar_names.h"
#include "qmx/qmx_metalib_kernel.h"
#include "schema/declaration.h"

namespace korvel {
namespace {

// The tables of a source that the other one does not have, in declaration order.
std::vector<MetaModel> TablesOnlyIn(const Source& source, const Source& other) {
  std::vector<MetaModel> metas;
  for (const std::string_view table : source.tables) {
    const std::string name(table);
    if (!other.HasMeta(name)) metas.push_back(MetaOf(source.Library(), qmx_get_meta_by_name(source.Library(), name.c_str())));
  }
  return metas;
}

// The metas that a table of a source reaches and the other source does not have.
std::vector<MetaModel> ReachedOnlyIn(const Model& model, const Source& other) {
  std::vector<MetaModel> metas;
  for (const MetaModel& meta : std::span(model.metas).subspan(1)) {
    if (!other.HasMeta(meta.name)) metas.push_back(meta);
  }
  return metas;
}

// Whether two entries are equal, except that the structure of an entry may have been renamed, too.
bool AreEqual(const EntryModel& a, const EntryModel& b) {
  if (a.type == b.type || !IsCompositeType(a.type) || !IsCompositeType(b.type)) return a == b;
  EntryModel with_type = b;
  with_type.type = a.type;
  return a == with_type;
}

// The number of entries that both metas have.
std::size_t CommonEntries(const MetaModel& a, const MetaModel& b) {
  std::map<std::string_view, const EntryModel*> by_name;
  for (const EntryModel& entry : a.entries) by_name.emplace(entry.name, &entry);
  return static_cast<std::size_t>(std::ranges::count_if(b.entries, [&](const EntryModel& entry) {
    const auto found = by_name.find(entry.name);
    return found != by_name.end() && AreEqual(*found->second, entry);
  }));
}

using TypeChanges = std::set<std::pair<std::string_view, std::string_view>>;

// Adds the structures that an entry of both metas has: the old one and the new one. The entry has the same name, or a misspelled
// one at the same place.
void AddTypeChanges(const MetaModel& old_meta, const MetaModel& new_meta, TypeChanges& changes) {
  std::map<std::string_view, const EntryModel*> by_name;
  for (const EntryModel& entry : old_meta.entries) by_name.emplace(entry.name, &entry);
  for (std::size_t i = 0; i < new_meta.entries.size(); ++i) {
    const EntryModel& entry = new_meta.entries[i];
    const auto found = by_name.find(entry.name);
    if (found != by_name.end()) changes.emplace(found->second->type, entry.type);
    const bool is_misspelled = i < old_meta.entries.size() && SpellingDistance(old_meta.entries[i].name, entry.name);
    if (is_misspelled) changes.emplace(old_meta.entries[i].type, entry.type);
  }
}

// Those that an entry has under its old name in the old model and under its new name in the new one. Others are different
// structures with the same content.
RenamedMetas InSameEntries(const RenamedMetas& candidates, const Model& old_model, const Model& new_model) {
  if (candidates.empty()) return {};
  std::map<std::string_view, const MetaModel*> new_metas;
  for (const MetaModel& meta : new_model.metas) new_metas.emplace(meta.name, &meta);
  TypeChanges changes;
  for (const MetaModel& meta : old_model.metas) {
    const auto renamed = candidates.find(meta.name);
    const auto found = new_metas.find(renamed == candidates.end() ? meta.name : renamed->second);
    if (found != new_metas.end()) AddTypeChanges(meta, *found->second, changes);
  }
  RenamedMetas renamed = candidates;
  std::erase_if(renamed, [&](const auto& one) { return !changes.contains({one.first, one.second}); });
  return renamed;
}

RenamedMetas PairMetas(const std::vector<MetaModel>& old_metas, const std::vector<MetaModel>& new_metas) {
  const auto difference = [&](std::size_t i, std::size_t j) { return RenameDifference(old_metas[i], new_metas[j]); };
  RenamedMetas renamed;
  for (const NearbyPair& pair : PairNearby(old_metas.size(), new_metas.size(), difference)) {
    renamed.emplace(old_metas[pair.old_place].name, new_metas[pair.new_place].name);
  }
  return renamed;
}

}  // namespace

std::optional<std::size_t> RenameDifference(const MetaModel& old_meta, const MetaModel& new_meta) {
  constexpr std::size_t kOtherName = 3;  // after the number of edits of a misspelled name
  constexpr std::size_t kScale = 1000;
  if (old_meta.kind != new_meta.kind || old_meta.primary_key != new_meta.primary_key) return std::nullopt;
  const std::size_t all = std::max(old_meta.entries.size(), new_meta.entries.size());
  const std::size_t name = SpellingDistance(old_meta.name, new_meta.name).value_or(kOtherName);
  if (name == kOtherName && (all < 2 || HaveSameLetters(old_meta.name, new_meta.name))) return std::nullopt;
  const std::size_t fewest = name == kOtherName ? all - all / 4 : all - all / 2;
  if (std::min(old_meta.entries.size(), new_meta.entries.size()) < fewest) return std::nullopt;
  const std::size_t common = CommonEntries(old_meta, new_meta);
  if (common < fewest) return std::nullopt;
  return ((all - common) * kScale / all) * (kOtherName + 1) + name;
}

RenamedMetas FindRenamedTables(const Source& old_source, const Source& new_source) {
  return PairMetas(TablesOnlyIn(old_source, new_source), TablesOnlyIn(new_source, old_source));
}

RenamedMetas FindRenamedStructures(const Source& old_source, const Model& old_model, const Source& new_source,
                                   const Model& new_model) {
  return InSameEntries(PairMetas(ReachedOnlyIn(old_model, new_source), ReachedOnlyIn(new_model, old_source)), old_model,
                       new_model);
}

void UseOldNames(const RenamedMetas& renamed, Model& model) {
  std::map<std::string_view, std::string_view> old_names;
  for (const auto& [old_name, new_name] : renamed) old_names.emplace(new_name, old_name);
  const auto restore = [&](std::string& name) {
    if (const auto found = old_names.find(name); found != old_names.end()) name = found->second;
  };
  for (MetaModel& meta : model.metas) {
    restore(meta.name);
    for (EntryModel& entry : meta.entries) restore(entry.type);
  }
}

}  // namespace korvel
