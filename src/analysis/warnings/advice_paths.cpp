// Tested by tests/cases/warnings.
#include "analysis/warnings/advice_paths.h"

#include <algorithm>
#include <vector>

namespace korvel {
namespace {

// The model of a table without the fields that no key contains.
Model OnlyKeys(Model model) {
  MetaModel& table = model.metas.front();
  const auto has = [](const std::vector<std::string>& key, const std::string& name) {
    return std::ranges::find(key, name) != key.end();
  };
  std::erase_if(table.entries, [&](const EntryModel& entry) {
    return !has(table.primary_key, entry.name) && !has(table.splittable_key, entry.name);
  });
  return model;
}

}  // namespace

bool TablePaths::AddTo(Edit& edit) const {
  const auto meta = std::ranges::find(model_.metas, edit.meta, &MetaModel::name);
  if (meta == model_.metas.end()) return false;
  const auto position = static_cast<std::size_t>(meta - model_.metas.begin());
  if (paths_.CountTo(position) == 0) return false;
  edit.paths = paths_.PathsTo(position);
  edit.path_count = paths_.CountTo(position);
  if (!IsOfEntry(edit.kind)) return true;
  for (std::string& path : edit.paths) path += "." + edit.item;
  return true;
}

void AdvicePaths::AddTo(Edit& edit, bool only_in_keys) {
  edit.path_count = 1;
  edit.paths = {edit.meta};  // of the library; in an image, a structure may be hidden by another one with its name
  if (edit.meta.empty()) return;
  if (only_in_keys && !in_keys_) in_keys_.emplace(OnlyKeys(model_));
  if (only_in_keys && in_keys_->AddTo(edit)) return;
  all_.AddTo(edit);
}

}  // namespace korvel
