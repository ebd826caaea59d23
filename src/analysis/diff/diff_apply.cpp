// Applies chosen edits. Tested by tests/report/diff_law_test.cpp.
#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "analysis/diff/diff_parts.h"

namespace korvel {
namespace {

class Applier {
 public:
  Applier(const DifferenceParts& parts, const std::vector<bool>& chosen)
      : parts_(parts), chosen_(chosen), kinds_(LibraryKinds()), finder_(parts.nodes) {
    for (const MetaNode& node : parts.nodes) {
      if (IsRenamed(node)) new_names_.emplace(node.name, parts.renamed.at(std::string(node.name)));
    }
  }

  const Model& Side(EditKind kind) const { return (kinds_ & Bit(kind)) != 0 ? parts_.new_model : parts_.old_model; }

  // Calls `take` once with each meta that the table reaches, depth first in field order.
  template <class Take>
  void Walk(Take take) {
    std::vector<bool> is_visited(parts_.nodes.size(), false);
    std::vector<std::size_t> waiting{0};
    while (!waiting.empty()) {
      const std::size_t node = waiting.back();
      waiting.pop_back();
      if (is_visited[node]) continue;
      is_visited[node] = true;
      MetaDecl decl = Make(parts_.nodes[node]);
      const auto first = static_cast<std::ptrdiff_t>(waiting.size());
      for (const qmx::EntryDecl& entry : decl.entries) {
        if (!IsCompositeType(entry.type)) continue;
        if (const std::size_t inner = finder_.Find(entry.type); inner != kNowhere && !is_visited[inner]) waiting.push_back(inner);
      }
      std::reverse(waiting.begin() + first, waiting.end());
      UseNewNames(decl);
      take(decl);
    }
  }

 private:
  EditKinds LibraryKinds() const {
    EditKinds kinds = 0;
    for (std::size_t i = 0; i < parts_.nodes.front().first_edit; ++i) {
      if (chosen_[i]) kinds |= Bit(parts_.edits[i].kind);
    }
    return kinds;
  }

  // Whether one of the chosen edits gives the structure another name.
  bool IsRenamed(const MetaNode& node) const {
    for (std::size_t i = node.first_edit; i < node.end_edit && !parts_.renamed.empty(); ++i) {
      if (chosen_[i] && parts_.edits[i].kind == EditKind::kMetaRenamed) return true;
    }
    return false;
  }

  void UseNewNames(MetaDecl& decl) const {
    if (new_names_.empty()) return;
    const auto rename = [&](std::string_view& name) {
      if (const auto found = new_names_.find(name); found != new_names_.end()) name = found->second;
    };
    rename(decl.name);
    for (qmx::EntryDecl& entry : decl.entries) rename(entry.type);
  }

  MetaDecl Make(const MetaNode& node) const {
    const auto first = chosen_.begin() + static_cast<std::ptrdiff_t>(node.first_edit);
    const auto end = chosen_.begin() + static_cast<std::ptrdiff_t>(node.end_edit);
    if (std::find(first, end, true) == end) return DeclOf(node.old_meta == nullptr ? *node.new_meta : *node.old_meta);
    return node.pair->Make(ChosenOf(node));
  }

  ChosenEdits ChosenOf(const MetaNode& node) const {
    ChosenEdits chosen;
    chosen.entries.resize(node.pair->entries().slot_count());
    chosen.indexes.resize(node.pair->indexes().slot_count());
    for (std::size_t i = node.first_edit; i < node.end_edit; ++i) {
      if (!chosen_[i]) continue;
      const Edit& edit = parts_.edits[i];
      const EditKinds kind = Bit(edit.kind);
      if (IsOfEntry(edit.kind)) {
        chosen.entries[parts_.slots[i]] |= kind;
      } else if ((kind & kIndexKinds) != 0) {
        chosen.indexes[parts_.slots[i]] |= kind;
      } else if (edit.kind == EditKind::kTableAttribute) {
        chosen.attributes.push_back(edit.item);
      } else {
        chosen.meta |= kind;
      }
    }
    return chosen;
  }

  const DifferenceParts& parts_;
  const std::vector<bool>& chosen_;
  EditKinds kinds_;  // of the library
  NameFinder<MetaNode> finder_;
  std::map<std::string_view, std::string_view> new_names_;  // of renamed structures, by their old ones
};

}  // namespace

Model Difference::Apply(const std::vector<bool>& chosen) const {
  Applier applier(*parts_, chosen);
  Model model{applier.Side(EditKind::kLibraryName).name,
              applier.Side(EditKind::kLibraryVersion).version,
              applier.Side(EditKind::kLibraryProtocol).protocol,
              {}};
  applier.Walk([&](const MetaDecl& decl) { model.metas.push_back(ModelOf(decl)); });
  return model;
}

std::optional<qmx::Metalib> Difference::Build(const std::vector<bool>& chosen) const { return BuildLibrary(*parts_, chosen); }

std::optional<qmx::Metalib> BuildLibrary(const DifferenceParts& parts, const std::vector<bool>& chosen) {
  Applier applier(parts, chosen);
  qmx::MetalibBuilder builder(applier.Side(EditKind::kLibraryName).name, applier.Side(EditKind::kLibraryVersion).version,
                              applier.Side(EditKind::kLibraryProtocol).protocol);
  applier.Walk([&](MetaDecl& decl) {
    DropLooseReferences(decl);  // a duplicate name, while only some edits are made, refers to the first entry
    AddTo(builder, decl);
  });
  return builder.Finish().metalib;
}

}  // namespace korvel
