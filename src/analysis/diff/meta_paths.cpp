// Counts paths without walking each one. Tested by tests/report/diff_test.cpp.
#include "analysis/diff/meta_paths.h"

#include <algorithm>

#include "analysis/diff/edit.h"
#include "schema/declaration.h"

namespace korvel {

MetaPaths::MetaPaths(const Model& model)
    : model_(model), steps_(model.metas.size()), visits_of_(model.metas.size()), counts_(model.metas.size()) {
  FindSteps();
  Add({kNowhere, 0, 0});
  Count();
}

void MetaPaths::FindSteps() {
  NameFinder finder(model_.metas);
  for (std::size_t meta = 0; meta < steps_.size(); ++meta) {
    const std::vector<EntryModel>& entries = model_.metas[meta].entries;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      if (!IsCompositeType(entries[i].type)) continue;
      if (const std::size_t inner = finder.Find(entries[i].type); inner != kNowhere) steps_[meta].push_back({i, inner});
    }
  }
}

// Depth first, so in field order. Once a meta has been visited kMaxPaths times, so has everything below it.
void MetaPaths::Add(const Visit& visit) {
  const std::size_t meta = visit.meta;
  if (visits_of_[meta].size() == kMaxPaths) return;
  const std::size_t here = visits_.size();
  visits_of_[meta].push_back(here);
  visits_.push_back(visit);
  for (const Step& step : steps_[meta]) Add({here, step.meta, step.entry});
  if (visits_of_[meta].size() == 1) finished_.push_back(meta);
}

// In topological order: the count of a meta is complete before it is added to those of the metas that it embeds.
void MetaPaths::Count() {
  std::ranges::reverse(finished_);
  counts_.front() = 1;
  for (const std::size_t meta : finished_) {
    for (const Step& step : steps_[meta]) counts_[step.meta] = std::min(counts_[step.meta] + counts_[meta], kMaxPathCount);
  }
}

std::vector<std::string> MetaPaths::PathsTo(std::size_t meta) const {
  std::vector<std::string> paths;
  for (const std::size_t visit : visits_of_[meta]) paths.push_back(PathOf(visit));
  return paths;
}

std::string MetaPaths::PathOf(std::size_t visit) const {
  std::vector<const EntryModel*> entries;
  for (; visits_[visit].before != kNowhere; visit = visits_[visit].before) {
    const std::size_t outer = visits_[visits_[visit].before].meta;
    entries.push_back(&model_.metas[outer].entries[visits_[visit].entry]);
  }
  std::ranges::reverse(entries);
  std::string path = model_.metas.front().name;
  for (const EntryModel* entry : entries) path.append(".").append(entry->name).append(entry->count == 1 ? "" : "[]");
  return path;
}

}  // namespace korvel
