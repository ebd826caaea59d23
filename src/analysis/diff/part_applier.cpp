// Finds the meta that edits belong to, and what depends on them; meta_surroundings.cpp applies them. Tested by
// tests/report/fixes_test.cpp, which compares fixes with those of whole models.
#include "analysis/diff/part_applier.h"

#include <algorithm>
#include <unordered_set>

#include "analysis/diff/diff_parts.h"

namespace korvel {

PartApplier::PartApplier(const Difference& difference) : difference_(difference), dependents_(difference.edits().size()) {
  const DifferenceParts& parts = difference.parts();
  for (std::size_t i = 0; i < parts.nodes.size(); ++i) {
    if (parts.nodes[i].new_meta == nullptr) old_only_.emplace(parts.nodes[i].name, i);
  }
  for (std::size_t edit = 0; edit < parts.needs.size(); ++edit) {
    for (const std::size_t need : parts.needs[edit]) dependents_[need].push_back(edit);
  }
}

std::optional<AppliedPart> PartApplier::ApplyAllBut(const std::vector<std::size_t>& left_out,
                                                    const std::vector<std::size_t>& touched) {
  const std::optional<std::size_t> node = NodeOf(left_out, touched);
  const auto moves = [&](std::size_t edit) { return difference_.edits()[edit].kind == EditKind::kEntryMoved; };
  if (!node || std::ranges::any_of(left_out, moves)) return std::nullopt;
  AppliedPart part = SurroundingsOf(*node).Apply(left_out, touched);
  AddReached(part);
  return part;
}

// The meta to which all of these edits belong.
std::optional<std::size_t> PartApplier::NodeOf(const std::vector<std::size_t>& left_out,
                                               const std::vector<std::size_t>& touched) const {
  const std::vector<MetaNode>& nodes = difference_.parts().nodes;
  if (!difference_.parts().renamed.empty()) return std::nullopt;  // nodes have the old names
  std::optional<std::size_t> node;
  for (const std::vector<std::size_t>* edits : {&left_out, &touched}) {
    for (const std::size_t edit : *edits) {
      if (edit < nodes.front().first_edit) return std::nullopt;  // of the library
      const auto behind = std::ranges::upper_bound(nodes, edit, {}, &MetaNode::first_edit);
      const auto found = static_cast<std::size_t>(behind - nodes.begin()) - 1;
      if (node && *node != found) return std::nullopt;
      node = found;
    }
  }
  return node;
}

MetaSurroundings& PartApplier::SurroundingsOf(std::size_t node) {
  const MetaNode& meta = difference_.parts().nodes[node];
  std::unique_ptr<MetaSurroundings>& surroundings = surroundings_[meta.name];
  if (surroundings == nullptr) surroundings = std::make_unique<MetaSurroundings>(difference_.parts(), meta);
  return *surroundings;
}

// Adds the metas that are missing on the new side and embedded again, depth first in field order.
void PartApplier::AddReached(AppliedPart& part) const {
  std::vector<std::size_t> waiting;
  std::unordered_set<std::size_t> visited;
  const auto wait_for = [&](const MetaModel& meta) {
    for (std::size_t i = meta.entries.size(); i > 0; --i) {
      if (const auto found = old_only_.find(meta.entries[i - 1].type); found != old_only_.end()) waiting.push_back(found->second);
    }
  };
  wait_for(part.made);
  while (!waiting.empty()) {
    const std::size_t node = waiting.back();
    waiting.pop_back();
    if (!visited.insert(node).second) continue;
    part.added.push_back(*difference_.parts().nodes[node].old_meta);
    wait_for(part.added.back());
  }
}

bool PartApplier::HasNameOutside(const AppliedPart& part, const std::string& name) const {
  const Slot position = surroundings_.at(part.present.name)->FindName(name);
  return position != kNoSlot && !std::ranges::binary_search(part.positions, position);
}

bool PartApplier::HasIdOutside(const AppliedPart& part, std::int32_t id) const {
  const Slot position = surroundings_.at(part.present.name)->FindId(id);
  return position != kNoSlot && !std::ranges::binary_search(part.positions, position);
}

std::vector<std::size_t> PartApplier::DependentsOf(const std::vector<std::size_t>& edits) const {
  return ReachedFrom(edits, dependents_);
}

}  // namespace korvel
