// What several models change about one source, as one model.
#pragma once

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "schema/model.h"

namespace korvel {

// Begins as the source without its metas. Borrows the cache of the source.
class MergedModel {
 public:
  explicit MergedModel(MetaCache& present) : present_(present), model_(present.head()) {}

  // Adds the metas that the source lacks or has otherwise. If several models change a meta, the first one counts.
  void AddChanged(std::vector<MetaModel> metas) {
    for (MetaModel& meta : metas) {
      const MetaModel* const present = present_.Find(meta.name);
      if (present != nullptr && *present == meta) continue;
      if (names_.insert(meta.name).second) model_.metas.push_back(std::move(meta));
    }
  }

  // Of the source.
  const Model& head() const { return present_.head(); }

  Model& model() { return model_; }

 private:
  MetaCache& present_;
  Model model_;
  std::set<std::string> names_;
};

}  // namespace korvel
