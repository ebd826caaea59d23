// Reads and matches both sides. diff_edits.cpp lists the edits, diff_needs.cpp finds their needs, diff_apply.cpp applies them.
// Tested by tests/report/diff_test.cpp and diff_law_test.cpp.
#include "analysis/diff/diff.h"

#include <utility>

#include "analysis/diff/diff_parts.h"

namespace korvel {
namespace {

std::vector<MetaNode> NodesOf(const Model& old_model, const Model& new_model, const RenamedMetas& renamed) {
  const bool id_first = old_model.protocol == qmx::Protocol::kTlv && new_model.protocol == qmx::Protocol::kTlv;
  std::vector<MetaNode> nodes;
  NameFinder old_metas(old_model.metas);
  std::vector<bool> is_common(old_model.metas.size(), false);
  for (const MetaModel& meta : new_model.metas) {
    MetaNode node{.name = meta.name, .new_meta = &meta};
    if (const std::size_t position = old_metas.Find(meta.name); position != kNowhere) {
      is_common[position] = true;
      node.old_meta = &old_model.metas[position];
      if (*node.old_meta != meta || renamed.contains(meta.name)) node.pair.emplace(*node.old_meta, meta, id_first);
    }
    nodes.push_back(std::move(node));
  }
  for (std::size_t i = 0; i < old_model.metas.size(); ++i) {
    if (!is_common[i]) nodes.push_back({.name = old_model.metas[i].name, .old_meta = &old_model.metas[i]});
  }
  return nodes;
}

}  // namespace

Difference::Difference(const Source& old_source, const Source& new_source, const std::string& table) {
  auto parts = std::make_shared<DifferenceParts>();
  parts->old_model = ModelOf(old_source, table);
  parts->new_model = ModelOf(new_source, table);
  parts->renamed = FindRenamedStructures(old_source, parts->old_model, new_source, parts->new_model);
  if (!parts->renamed.empty()) {
    parts->new_model_as_is = parts->new_model;
    UseOldNames(parts->renamed, parts->new_model);
  }
  parts->nodes = NodesOf(parts->old_model, parts->new_model, parts->renamed);
  ListEdits(old_source, new_source, *parts);
  FindNeeds(*parts);
  parts_ = std::move(parts);
}

const Model& Difference::old_model() const { return parts_->old_model; }
const Model& Difference::new_model() const { return parts_->new_model_as_is ? *parts_->new_model_as_is : parts_->new_model; }
const std::vector<Edit>& Difference::edits() const { return parts_->edits; }

std::vector<std::size_t> Difference::Needs(std::size_t edit) const { return ReachedFrom({edit}, parts_->needs); }

}  // namespace korvel
