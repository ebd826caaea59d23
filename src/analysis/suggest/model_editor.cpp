// Edits models. Whether the result is allowed is not decided here. Tested by tests/report/suggestions_test.cpp.
#include "analysis/suggest/model_editor.h"

#include <algorithm>
#include <utility>

#include "base/name_finder.h"
#include "schema/declaration.h"

namespace korvel {
namespace {

void Replace(std::vector<std::string>& names, const std::string& name, const std::string& by) {
  std::ranges::replace(names, name, by);
}

// Whether every entry has an id, and all ids are different. REQUIRES: the meta has entries.
bool HaveUniqueIds(const MetaModel& meta) {
  std::vector<std::int32_t> ids;
  ids.reserve(meta.entries.size());
  for (const EntryModel& entry : meta.entries) ids.push_back(entry.id);
  std::ranges::sort(ids);
  return ids.front() >= 0 && std::ranges::adjacent_find(ids) == ids.end();
}

// The rules of the reader of schema files that alternatives can break. Saves runs of the checker on models that no file can
// contain; the final file is read again anyway.
bool CanBeWritten(const MetaModel& meta, bool needs_ids) {
  if (meta.entries.empty()) return false;
  if (!HaveUniqueNames(meta.entries) || (needs_ids && !HaveUniqueIds(meta))) return false;
  MetaDecl decl = DeclOf(meta);
  DropLooseReferences(decl);
  return ModelOf(decl) == meta;
}

}  // namespace

bool CanBeWritten(const Model& model) {
  const bool needs_ids = model.protocol == qmx::Protocol::kTlv;
  return std::ranges::all_of(model.metas, [&](const MetaModel& meta) { return CanBeWritten(meta, needs_ids); });
}

void ModelEditor::RaiseVersion(std::int32_t version) { model_.version = std::max(model_.version, version); }

ModelEditor::EditedMeta& ModelEditor::MetaFor(const std::string& name) {
  const auto [found, is_new] = edited_.try_emplace(name);
  EditedMeta& edited = found->second;
  if (!is_new) return edited;
  const auto meta = std::ranges::find(model_.metas, name, &MetaModel::name);
  if (meta == model_.metas.end()) return edited;
  edited.meta = static_cast<std::size_t>(meta - model_.metas.begin());
  for (std::size_t i = 0; i < meta->entries.size(); ++i) AddPosition(edited, i);
  return edited;
}

void ModelEditor::AddPosition(EditedMeta& edited, std::size_t position) {
  const std::vector<EntryModel>& entries = MetaOf(edited).entries;
  edited.positions.Add(entries[position].name, static_cast<std::uint32_t>(position), NamesOf(entries));
}

MetaModel* ModelEditor::FindMeta(const std::string& meta) {
  const EditedMeta& edited = MetaFor(meta);
  return edited.meta ? &MetaOf(edited) : nullptr;
}

EntryModel* ModelEditor::Find(const std::string& meta, const std::string& entry) {
  const EditedMeta& edited = MetaFor(meta);
  if (!edited.meta) return nullptr;
  std::vector<EntryModel>& entries = MetaOf(edited).entries;
  const std::optional<std::uint32_t> found = edited.positions.Find(entry, NamesOf(entries));
  return found ? &entries[*found] : nullptr;
}

void ModelEditor::Add(const std::string& meta, EntryModel entry) {
  EditedMeta& edited = MetaFor(meta);
  const EntryModel* const present = Find(meta, entry.name);
  if (!edited.meta || present != nullptr) {
    has_failed_ = has_failed_ || present == nullptr || *present != entry;
    return;
  }
  MetaOf(edited).entries.push_back(std::move(entry));
  AddPosition(edited, MetaOf(edited).entries.size() - 1);
}

void ModelEditor::ImportMeta(const Model& from, const std::string& type) {
  if (std::ranges::find(model_.metas, type, &MetaModel::name) != model_.metas.end()) return;
  const auto meta = std::ranges::find(from.metas, type, &MetaModel::name);
  if (meta == from.metas.end()) return;
  model_.metas.push_back(*meta);
  edited_.erase(type);
  for (const EntryModel& entry : meta->entries) ImportMeta(from, entry.type);
}

void ModelEditor::MoveToEnd(const std::string& meta, const std::string& entry) { MetaFor(meta).to_end.insert(entry); }

void ModelEditor::Rename(const std::string& meta, const std::string& entry, const std::string& name) {
  EntryModel* const renamed = Find(meta, entry);
  if (renamed == nullptr) return;
  EditedMeta& edited = MetaFor(meta);
  MetaModel& owner = MetaOf(edited);
  renamed->name = name;
  // The index compares present names, so the old one is no longer found.
  AddPosition(edited, static_cast<std::size_t>(renamed - owner.entries.data()));
  if (edited.to_end.erase(entry) > 0) edited.to_end.insert(name);
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

std::optional<Model> ModelEditor::Take() {
  if (has_failed_) return std::nullopt;
  for (const auto& item : edited_) {
    const EditedMeta& edited = item.second;
    if (!edited.meta) continue;
    MetaModel& meta = MetaOf(edited);
    std::stable_partition(meta.entries.begin(), meta.entries.end(),
                          [&](const EntryModel& entry) { return !edited.to_end.contains(entry.name); });
    if (!CanBeWritten(meta, model_.protocol == qmx::Protocol::kTlv)) return std::nullopt;
  }
  return std::move(model_);
}

}  // namespace korvel
