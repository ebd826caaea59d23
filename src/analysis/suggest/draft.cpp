// Changes models. Whether the checker likes them is not asked here. Held by tests/report/ways_out_test.cpp.
#include "analysis/suggest/draft.h"

#include <algorithm>
#include <utility>

#include "schema/declaration.h"

namespace korvel {
namespace {

void Replace(std::vector<std::string>& names, const std::string& name, const std::string& by) {
  std::ranges::replace(names, name, by);
}

// Names of the reader's rules, asked here to spare the checker models that no file can hold; the file is read again in the end.
bool CanBeWritten(const MetaModel& meta, bool needs_ids) {
  if (meta.entries.empty()) return false;
  std::unordered_set<std::string_view> names;
  std::unordered_set<std::int32_t> ids;
  for (const EntryModel& entry : meta.entries) {
    if (!names.insert(entry.name).second) return false;
    if (needs_ids && (entry.id < 0 || !ids.insert(entry.id).second)) return false;
  }
  MetaDecl decl = DeclOf(meta);
  DropLooseReferences(decl);
  return ModelOf(decl) == meta;
}

}  // namespace

bool CanBeWritten(const Model& model) {
  const bool needs_ids = model.protocol == qmx::Protocol::kTlv;
  return std::ranges::all_of(model.metas, [&](const MetaModel& meta) { return CanBeWritten(meta, needs_ids); });
}

void Draft::RaiseVersion(std::int32_t version) { model_.version = std::max(model_.version, version); }

Draft::EditedMeta& Draft::MetaFor(const std::string& name) {
  const auto [found, is_new] = touched_.try_emplace(name);
  EditedMeta& touched = found->second;
  if (!is_new) return touched;
  const auto meta = std::ranges::find(model_.metas, name, &MetaModel::name);
  if (meta == model_.metas.end()) return touched;
  touched.meta = static_cast<std::size_t>(meta - model_.metas.begin());
  for (std::size_t i = 0; i < meta->entries.size(); ++i) touched.positions.emplace(meta->entries[i].name, i);
  return touched;
}

MetaModel* Draft::FindMeta(const std::string& meta) {
  const EditedMeta& touched = MetaFor(meta);
  return touched.meta ? &MetaOf(touched) : nullptr;
}

EntryModel* Draft::Find(const std::string& meta, const std::string& entry) {
  const EditedMeta& touched = MetaFor(meta);
  const auto found = touched.positions.find(entry);
  return found == touched.positions.end() ? nullptr : &MetaOf(touched).entries[found->second];
}

void Draft::Add(const std::string& meta, EntryModel entry) {
  EditedMeta& touched = MetaFor(meta);
  if (!touched.meta || touched.positions.contains(entry.name)) return;
  touched.positions.emplace(entry.name, MetaOf(touched).entries.size());
  MetaOf(touched).entries.push_back(std::move(entry));
}

void Draft::ImportMeta(const Model& from, const std::string& type) {
  if (std::ranges::find(model_.metas, type, &MetaModel::name) != model_.metas.end()) return;
  const auto meta = std::ranges::find(from.metas, type, &MetaModel::name);
  if (meta == from.metas.end()) return;
  model_.metas.push_back(*meta);
  touched_.erase(type);
  for (const EntryModel& entry : meta->entries) ImportMeta(from, entry.type);
}

void Draft::MoveToEnd(const std::string& meta, const std::string& entry) { MetaFor(meta).to_end.insert(entry); }

void Draft::Rename(const std::string& meta, const std::string& entry, const std::string& name) {
  EditedMeta& touched = MetaFor(meta);
  auto node = touched.positions.extract(entry);
  if (node.empty()) return;
  MetaModel& owner = MetaOf(touched);
  owner.entries[node.mapped()].name = name;
  node.key() = name;
  touched.positions.insert(std::move(node));
  if (touched.to_end.erase(entry) > 0) touched.to_end.insert(name);
  for (EntryModel& other : owner.entries) {
    if (!other.refer.empty() && other.refer == entry) other.refer = name;
  }
  Replace(owner.primary_key, entry, name);
  Replace(owner.splittable_key, entry, name);
  for (IndexModel& index : owner.indexes) {
    for (ColumnModel& column : index.columns) {
      if (column.entry == entry) column.entry = name;
    }
  }
}

std::optional<Model> Draft::Take() {
  for (const auto& item : touched_) {
    const EditedMeta& touched = item.second;
    if (!touched.meta) continue;
    MetaModel& meta = MetaOf(touched);
    std::stable_partition(meta.entries.begin(), meta.entries.end(),
                          [&](const EntryModel& entry) { return !touched.to_end.contains(entry.name); });
    if (!CanBeWritten(meta, model_.protocol == qmx::Protocol::kTlv)) return std::nullopt;
  }
  return std::move(model_);
}

}  // namespace korvel
