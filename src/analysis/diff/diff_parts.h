// The private data of a Difference, shared by the files that implement it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "analysis/diff/diff.h"
#include "analysis/diff/matched_metas.h"
#include "analysis/diff/renamed_metas.h"

namespace korvel {

// A meta that either side reaches, by name. Points into the models.
struct MetaNode {
  std::string_view name;
  const MetaModel* old_meta = nullptr;    // null: only the new side has it
  const MetaModel* new_meta = nullptr;    // null: only the old side has it
  std::optional<MatchedMetas> pair = {};  // if both sides have the meta and it differs
  std::size_t first_edit = 0;             // its edits are [first_edit, end_edit)
  std::size_t end_edit = 0;
};

inline constexpr EditKinds kIndexKinds =
    Bit(EditKind::kIndexAdded) | Bit(EditKind::kIndexRemoved) | Bit(EditKind::kIndexColumns) | Bit(EditKind::kIndexMoved);

struct DifferenceParts {
  Model old_model;
  Model new_model;                       // renamed structures have their old names
  RenamedMetas renamed;                  // structures of which the new side has other names
  std::optional<Model> new_model_as_is;  // with the new names, if structures are renamed
  std::vector<MetaNode> nodes;           // metas of the new model in its order, then those of the old one only; the table first
  std::vector<Edit> edits;
  std::vector<Slot> slots;                      // of each edit: its entry or index in the pair; 0 if it has none
  std::vector<std::vector<std::size_t>> needs;  // of each edit: the edits that it needs directly
};

// Fills `edits`, `slots` and the edit ranges of the nodes.
void ListEdits(const Source& old_source, const Source& new_source, DifferenceParts& parts);

// Fills `needs`.
void FindNeeds(DifferenceParts& parts);

// A meta without its entries.
MetaModel HeadOf(const MetaModel& meta);

// The library after the chosen edits; see Difference::Build.
std::optional<qmx::Metalib> BuildLibrary(const DifferenceParts& parts, const std::vector<bool>& chosen);

// What `next` leads to from these edits, transitively, without them, ascending. `next` has a list for each edit, like
// DifferenceParts::needs.
std::vector<std::size_t> ReachedFrom(const std::vector<std::size_t>& edits, const std::vector<std::vector<std::size_t>>& next);

}  // namespace korvel
